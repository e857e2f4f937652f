#include "data/label_sort.h"

#include <cstring>
#include <numeric>

#include "data/record_range.h"
#include "document/item_data.h"
#include "engine/session/session.h"

namespace tarnova {

namespace {

bool isUsable(const labelSortRec& sort) {
    return sort.columns > 0 && sort.rows > 0 && sort.columns <= recordListLimit / sort.rows;
}

/// The sheets as one pile a label place: a pile is a run of `sheets` indexes of the padded list, and piles follow each
/// other along a row or down a column. `across` counts the places that follow each other, `lines` the rows or columns.
struct pileRec {
    std::size_t lines;
    std::size_t across;
    std::size_t sheets;

    [[nodiscard]] std::size_t index(std::size_t line, std::size_t sheet, std::size_t place) const {
        return (line * sheets + sheet) * across + place;
    }
    [[nodiscard]] std::size_t size() const { return lines * across * sheets; }
};

/// Marks the indexes that stay blank, the last first. `spread`: on all sheets, in the last line of each; else on the
/// last sheet, where they are taken from all lines in turn.
std::vector<bool> blankPlaces(const pileRec& pile, std::size_t blanks, bool spread) {
    std::vector<bool> isBlank(pile.size());
    const std::size_t outer = spread ? pile.sheets : pile.across, inner = spread ? pile.across : pile.lines;
    for (std::size_t i = outer; i-- > 0;) {
        for (std::size_t j = inner; j-- > 0 && blanks > 0; --blanks)
            isBlank[spread ? pile.index(pile.lines - 1, i, j) : pile.index(j, pile.sheets - 1, i)] = true;
    }
    return isBlank;
}

/// The records in front of and between the blanks; where these are too few, what is left over at the end is blank.
std::vector<std::int32_t> padded(const std::vector<std::int32_t>& list, const std::vector<bool>& isBlank) {
    std::vector<std::int32_t> all(isBlank.size(), recordListPad);
    auto next = list.begin();
    for (std::size_t i = 0; i < all.size() && next != list.end(); ++i)
        if (!isBlank[i]) all[i] = *next++;
    return all;
}

}  // namespace

errorWord documentLabelSort(UIDRef document, labelSortRec& sort, errorWord priorError) {
    if (priorError != 0) return priorError;
    const auto stored = itemDataView(document, ItemDataPlace::document, itemDataLabelSort, modeMerge);
    if (!stored || stored->size() != sizeof sort) return errLabelSort;
    std::memcpy(&sort, stored->data(), sizeof sort);
    return isUsable(sort) ? errorWord{0} : errLabelSort;
}

std::vector<std::int32_t> labelSorted(const std::vector<std::int32_t>& list, const labelSortRec& sort) {
    const std::size_t columns = sort.columns, rows = sort.rows, labels = columns * rows;
    const std::size_t sheets = (list.size() + labels - 1) / labels;
    const bool alongRows = sort.order != 0;
    const pileRec pile = alongRows ? pileRec{rows, columns, sheets} : pileRec{columns, rows, sheets};
    const std::vector<std::int32_t> all =
        padded(list, blankPlaces(pile, pile.size() - list.size(), sort.blanksOnLastSheet == 0));
    std::vector<std::int32_t> sorted;
    sorted.reserve(all.size());
    const bool reverse = sort.reverseOrder != 0;
    for (std::size_t s = 0; s < pile.sheets; ++s) {
        const std::size_t sheet = reverse ? pile.sheets - 1 - s : s;
        for (std::size_t l = 0; l < pile.lines; ++l) {
            // Sheets that are turned over are mirrored from left to right: columns change, rows stay.
            const std::size_t line = reverse && !alongRows ? pile.lines - 1 - l : l;
            for (std::size_t p = 0; p < pile.across; ++p)
                sorted.push_back(all[pile.index(line, sheet, reverse && alongRows ? pile.across - 1 - p : p)]);
        }
    }
    return sorted;
}

errorWord applyLabelSort(const labelSortRec* sort, errorWord priorError) {
    if (priorError != 0) return priorError;
    const labelSortRec& used = sort != nullptr ? *sort : appPrefs().labelSort;
    if (!isUsable(used)) return errLabelSort;
    sessionRec& run = session();
    if (run.recordList.empty() && run.rangeFirst > 0 && run.rangeFirst <= run.rangeLast) {
        run.recordList.resize(std::size_t{run.rangeLast} - run.rangeFirst + 1);
        std::iota(run.recordList.begin(), run.recordList.end(), static_cast<std::int32_t>(run.rangeFirst) - 1);
    }
    run.recordList = labelSorted(run.recordList, used);
    run.rangeFirst = 1;
    run.rangeLast = run.totalRecords = static_cast<std::uint32_t>(run.recordList.size());
    return 0;
}

}  // namespace tarnova
