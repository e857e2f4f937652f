#include "data/record_range.h"

#include <gtest/gtest.h>

#include <random>

#include "engine/toolkit/alerts.h"

namespace tarnova {
namespace {

using List = std::vector<std::int32_t>;

TEST(RecordRange, ReadsWhatPeopleWrite) {
    struct testRow {
        const char* text;
        rangeFault fault;
        std::uint32_t first, last;
        List list;
    };
    const testRow rows[] = {
        {"5", rangeFault::none, 5, 5, {}},
        {" 5 - 9 ", rangeFault::none, 5, 9, {}},
        {"5,", rangeFault::none, 1, 1, {4}},
        {"5-9,", rangeFault::none, 1, 5, {4, 5, 6, 7, 8}},
        {"1-3,,8, 10-11", rangeFault::none, 1, 6, {0, 1, 2, 7, 9, 10}},
        {"7-7", rangeFault::none, 7, 7, {}},
        {"2147483646-2147483647", rangeFault::none, 2147483646, 2147483647, {}},
        {"", rangeFault::empty, 0, 0, {}},
        {"1;2", rangeFault::characters, 0, 0, {}},
        {"a", rangeFault::characters, 0, 0, {}},
        {"1-", rangeFault::sequence, 0, 0, {}},
        {"-1", rangeFault::sequence, 0, 0, {}},
        {"1-2-3", rangeFault::sequence, 0, 0, {}},
        {"3,2", rangeFault::order, 0, 0, {}},
        {"2-1", rangeFault::order, 0, 0, {}},
        {"1 2", rangeFault::number, 0, 0, {}},
        {"2147483648", rangeFault::number, 0, 0, {}},
        {"1-2147483647", rangeFault::number, 0, 0, {}},
        {"3,3", rangeFault::duplicate, 0, 0, {}},
        {",", rangeFault::noNumbers, 0, 0, {}},
        {"0", rangeFault::recordZero, 0, 0, {}},
        {"0-3", rangeFault::recordZero, 0, 0, {}},
    };
    for (const auto& [text, fault, first, last, list] : rows) {
        recordRangeRec range;
        EXPECT_EQ(parseRangeText(text, range), fault) << text;
        EXPECT_EQ(range.first, first) << text;
        EXPECT_EQ(range.last, last) << text;
        EXPECT_EQ(range.list, list) << text;
    }
    recordRangeRec forced;
    EXPECT_EQ(parseRangeText("5-6", forced, true), rangeFault::none);
    EXPECT_EQ(forced.list, (List{4, 5}));
}

TEST(RecordRange, TheTextOfAListReadsBack) {
    EXPECT_EQ(rangeTextOf({1, 2, 3, 5, 7, 8}).bytes(), "1-3,5,7,8");
    EXPECT_EQ(rangeTextOf({}).bytes(), "");
    EXPECT_EQ(rangeTextOf({4}).bytes(), "4");
    std::mt19937 random(1);
    for (int round = 0; round < 300; ++round) {
        List list;
        std::int32_t value = 0;
        for (unsigned count = 1 + random() % 40; count > 0; --count)
            list.push_back(value += static_cast<std::int32_t>(random() % 3 != 0 ? 1 : 1 + random() % 1000));
        recordRangeRec range;
        const PMString text = rangeTextOf(list);
        ASSERT_EQ(readRangeText(text.view(), range, true), rangeFault::none) << text.bytes();
        for (std::int32_t& each : range.list)
            ++each;
        ASSERT_EQ(range.list, list) << text.bytes();
    }
}

}  // namespace
}  // namespace tarnova
