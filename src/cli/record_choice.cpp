#include "cli/record_choice.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>
#include <filesystem>
#include <limits>
#include <optional>
#include <string_view>

#include "cli/job_setup.h"
#include "cli/verb.h"
#include "data/record_filter.h"
#include "data/record_range.h"
#include "data/record_selection.h"
#include "definitions/definition_state.h"
#include "document/item_data.h"
#include "engine/session/session.h"
#include "engine/toolkit/strings.h"

namespace tarnova {
namespace {

/// The whole of `text` as a number of at least 1.
std::optional<std::uint32_t> numberOf(std::string_view text) {
    std::uint32_t value = 0;
    const auto [behind, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || behind != text.data() + text.size() || value == 0) return std::nullopt;
    return value;
}

/// "10-": the tenth and all behind it.
bool isOpenRange(std::string_view text) {
    return text.ends_with('-') && numberOf(text.substr(0, text.size() - 1));
}

rangeFault readRecords(std::string_view text, recordRangeRec& range) {
    range = {};
    if (text.empty()) return rangeFault::none;
    if (!isOpenRange(text)) return readRangeText(text, range);
    range.first = *numberOf(text.substr(0, text.size() - 1));
    range.last = std::numeric_limits<std::uint32_t>::max();
    return rangeFault::none;
}

/// "3x8,rows,spread,reverse". Nothing when it can't be read.
std::optional<labelSortRec> readLabelSort(std::string_view text) {
    labelSortRec sort{.columns = 0,
                      .rows = 0,
                      .order = 0,
                      .blanksOnLastSheet = 1,
                      .reverseOrder = 0,
                      .labelSortOn = 1,
                      .reserved = 0};
    const std::size_t sideLimit = std::min(text.find(','), text.size());
    const std::size_t by = text.find('x');
    if (by == std::string_view::npos || by > sideLimit) return std::nullopt;
    const auto columns = numberOf(text.substr(0, by)), rows = numberOf(text.substr(by + 1, sideLimit - by - 1));
    if (!columns || !rows || *columns > recordListLimit / *rows) return std::nullopt;
    sort.columns = *columns;
    sort.rows = *rows;
    for (std::string_view rest = text.substr(sideLimit); !rest.empty();) {
        rest.remove_prefix(1);
        const std::string_view word = rest.substr(0, rest.find(','));
        rest.remove_prefix(word.size());
        if (word == "rows") {
            sort.order = 1;
        } else if (word == "spread") {
            sort.blanksOnLastSheet = 0;
        } else if (word == "reverse") {
            sort.reverseOrder = 1;
        } else {
            return std::nullopt;
        }
    }
    return sort;
}

/// A file by its path, else a table by its name, in the place of the definition's own.
bool takeImportTable(const std::string& table) {
    if (table.empty()) return true;
    std::error_code failure;
    const bool isFile = std::filesystem::is_regular_file(table, failure);
    const std::string name = isFile ? std::filesystem::absolute(table, failure).string() : table;
    if (reselectCurrentRecordDef(0) != 0 || session().currentRecordDef == nullptr) return false;
    flaggedStr255Rec& place = session().currentRecordDef->importTransTable;
    place.enable = 1;
    pstrSet(place.string, name);
    if (pstrView(place.string) == name) return true;
    sayError(fmt::format("--import-table {}: a path has at most {} bytes", table, pstrMaxLength));
    return false;
}

/// The records of `found`, counted from 0, that the range takes.
void keepThoseInRange(const recordRangeRec& range, std::vector<std::int32_t>& found) {
    if (range.first == 0) return;
    std::erase_if(found, [&](std::int32_t value) {
        if (!range.list.empty()) return !std::binary_search(range.list.begin(), range.list.end(), value);
        return std::cmp_less(value + 1, range.first) || std::cmp_greater(value + 1, range.last);
    });
}

/// The filter goes over all records; the range then takes of what it found.
bool takeFiltered(const std::string& filter, recordRangeRec& range) {
    if (filter.empty()) return true;
    const std::size_t equals = filter.find('=');
    const std::string_view link = std::string_view(filter).substr(0, equals);
    const std::string_view text = equals == std::string::npos ? "" : std::string_view(filter).substr(equals + 1);
    const filterType type = equals == std::string::npos ? filterType::data
                            : text.empty()              ? filterType::noData
                                                        : filterType::contains;
    PMString foundText;
    bool cancelled = false;
    const std::uint32_t count =
        filterRecords(link, type, text, appPrefs().hasHeaderRecord != 0 ? 1 : 0, foundText, cancelled);
    recordRangeRec found;
    if (count > 0 && readRangeText(foundText.view(), found, true) != rangeFault::none) {
        sayError(fmt::format("--filter {}: more than {} records; take fewer with --records", filter, recordListLimit));
        return false;
    }
    keepThoseInRange(range, found.list);
    if (found.list.empty()) {
        sayError(fmt::format("--filter {}: no record found", filter));
        return false;
    }
    range = {1, static_cast<std::uint32_t>(found.list.size()), std::move(found.list)};
    return true;
}

bool takeLabelSort(const std::string& text, UIDRef layout, std::uint32_t step) {
    if (text.empty()) return true;
    const labelSortRec sort = *readLabelSort(text);
    countLinks(layout);
    const std::uint32_t labels = step != 0 ? step : session().highestSequence;
    if (sort.columns * sort.rows != labels) {
        sayError(fmt::format("--sort-labels {}: {} A sheet of this layout has {}.", text,
                             stringOfKey("kZavoLabelSortDialogInvalidRowColumnComboMsgKey"), labels));
        return false;
    }
    appPrefs().labelSort = sort;
    return itemDataSet(layout, ItemDataPlace::document, itemDataLabelSort, &sort, sizeof sort, modeMerge) != 0;
}

}  // namespace

void addRecordOptions(CLI::App& verb, recordChoiceRec& choice) {
    verb.add_option("--records", choice.records, "Which records: 5, 10-20, 10- or 1-5,8,10-12 (all)");
    verb.add_option("--filter", choice.filter,
                    "Only records in which a link has data (LINK), has none (LINK=) or contains a text (LINK=TEXT)");
    verb.add_option("--sort-labels", choice.sortLabels,
                    "Sort for sheets of labels that are cut and stacked: COLSxROWS, then ,rows (the piles go along a "
                    "row first), ,spread (blank labels on all sheets), ,reverse (the last sheet first)");
    verb.add_option("--import-table", choice.importTable,
                    "A translation table for the bytes of the data: a file, or a table's name");
}

bool recordChoiceFits(const recordChoiceRec& choice, verbContext& context) {
    recordRangeRec range;
    const rangeFault fault = readRecords(choice.records, range);
    if (fault != rangeFault::none) {
        failVerb(context, fmt::format("--records {}: {}", choice.records, stringOfKey(rangeFaultKey(fault))),
                 exitUsage);
        return false;
    }
    if (choice.sortLabels.empty() || readLabelSort(choice.sortLabels)) return true;
    failVerb(context,
             fmt::format("--sort-labels {}: give the labels across and down, as 3x8, then as wanted ,rows ,spread "
                         ",reverse",
                         choice.sortLabels),
             exitUsage);
    return false;
}

bool takeRecordChoice(const recordChoiceRec& choice, UIDRef layout, std::uint32_t step) {
    recordRangeRec range;
    static_cast<void>(readRecords(choice.records, range));
    useRecordRange({});
    if (!takeImportTable(choice.importTable) || !takeFiltered(choice.filter, range)) return false;
    useRecordRange(std::move(range));
    return takeLabelSort(choice.sortLabels, layout, step);
}

}  // namespace tarnova
