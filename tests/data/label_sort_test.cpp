#include "data/label_sort.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>

#include "engine/session/session.h"

namespace tarnova {
namespace {

using List = std::vector<std::int32_t>;

/// Labels as they leave the printer, for scissors and hands: sheets of rows of labels.
using Sheet = std::vector<List>;

std::vector<Sheet> printed(const List& list, const labelSortRec& sort) {
    std::vector<Sheet> sheets(list.size() / (sort.columns * sort.rows), Sheet(sort.rows, List(sort.columns)));
    auto next = list.begin();
    for (Sheet& sheet : sheets) {
        for (std::uint32_t label = 0; label < sort.columns * sort.rows; ++label) {
            const std::uint32_t row = sort.order != 0 ? label / sort.columns : label % sort.rows;
            const std::uint32_t column = sort.order != 0 ? label % sort.columns : label / sort.rows;
            sheet[row][column] = *next++;
        }
    }
    return sheets;
}

/// The pile turned over when the sheets came out the other way round, then cut into strips that are read one pile after
/// the other.
List readBack(std::vector<Sheet> sheets, const labelSortRec& sort) {
    if (sort.reverseOrder != 0) {
        std::reverse(sheets.begin(), sheets.end());
        for (Sheet& sheet : sheets)
            for (List& row : sheet)
                std::reverse(row.begin(), row.end());
    }
    List labels;
    const std::uint32_t strips = sort.order != 0 ? sort.rows : sort.columns;
    for (std::uint32_t strip = 0; strip < strips; ++strip)
        for (const Sheet& sheet : sheets)
            for (std::uint32_t i = 0; i < sort.columns * sort.rows / strips; ++i)
                labels.push_back(sort.order != 0 ? sheet[strip][i] : sheet[i][strip]);
    return labels;
}

std::int64_t padsOf(const Sheet& sheet) {
    return std::accumulate(sheet.begin(), sheet.end(), std::int64_t{0}, [](std::int64_t sum, const List& row) {
        return sum + std::count(row.begin(), row.end(), recordListPad);
    });
}

void expectOrder(std::int32_t count, const labelSortRec& sort) {
    SCOPED_TRACE(testing::Message() << sort.columns << "x" << sort.rows << " order " << sort.order << " last "
                                    << sort.blanksOnLastSheet << " reverse " << sort.reverseOrder << ": " << count);
    List records(static_cast<std::size_t>(count));
    std::iota(records.begin(), records.end(), 100);
    const List sorted = labelSorted(records, sort);
    const std::uint32_t labels = sort.columns * sort.rows, last = static_cast<std::uint32_t>(count) + labels - 1;
    ASSERT_EQ(sorted.size(), last / labels * labels);
    std::vector<Sheet> sheets = printed(sorted, sort);
    List back = readBack(sheets, sort);
    const auto blanks = static_cast<std::int64_t>(sorted.size()) - count;
    const std::int64_t pileEnds = static_cast<std::int64_t>(sheets.size()) *
                                  (sort.order != 0 ? sort.columns : sort.rows);  // labels of all last strips
    if (sort.blanksOnLastSheet != 0) {
        EXPECT_EQ(padsOf(sort.reverseOrder != 0 ? sheets.front() : sheets.back()), blanks);
    } else if (blanks <= pileEnds) {
        EXPECT_TRUE(std::all_of(back.end() - blanks, back.end(), [](std::int32_t v) { return v == recordListPad; }));
    }
    std::erase(back, recordListPad);
    EXPECT_EQ(back, records);
}

TEST(LabelSort, CutPilesStandInOrder) {
    labelSortRec sort{};
    for (sort.columns = 1; sort.columns <= 5; ++sort.columns)
        for (sort.rows = 1; sort.rows <= 4; ++sort.rows)
            for (std::uint16_t options = 0; options < 8; ++options)
                for (const std::int32_t count : {1, 2, 3, 4, 5, 7, 10, 12, 19, 20, 21, 39, 40, 41, 60, 97}) {
                    sort.order = options & 1;
                    sort.blanksOnLastSheet = options >> 1 & 1;
                    sort.reverseOrder = options >> 2 & 1;
                    expectOrder(count, sort);
                }
}

TEST(LabelSort, TakesTheRangeOrTheList) {
    sessionReset();
    sessionRec& run = session();
    run.rangeFirst = 3;
    run.rangeLast = 12;
    const labelSortRec sort{2, 2, 1, 1, 0, 1, 0};
    EXPECT_EQ(applyLabelSort(&sort, 0), 0);
    EXPECT_EQ(run.recordList, (List{2, 3, 7, 8, 4, 5, 9, 10, 6, recordListPad, 11, recordListPad}));
    EXPECT_EQ(run.rangeFirst, 1U);
    EXPECT_EQ(run.rangeLast, 12U);
    const labelSortRec none{0, 2, 1, 1, 0, 1, 0}, vast{1U << 31, 1U << 31, 0, 1, 0, 1, 0};
    EXPECT_EQ(applyLabelSort(&none, 0), errLabelSort);
    EXPECT_EQ(applyLabelSort(&vast, 0), errLabelSort);
    sessionReset();
}

}  // namespace
}  // namespace tarnova
