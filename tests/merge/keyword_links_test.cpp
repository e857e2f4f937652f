// Keywords through a merge, and at their odd values.

#include "merge/keyword_links.h"

#include <gtest/gtest.h>

#include <ctime>

#include "engine/toolkit/clock.h"
#include "tests/merge/merge_fixture.h"

namespace tarnova {
namespace {

std::uint32_t now = 0;

std::uint32_t localSeconds(int year, int month, int day, int hour, int minute) {
    std::tm time{};
    time.tm_year = year - 1900;
    time.tm_mon = month - 1;
    time.tm_mday = day;
    time.tm_hour = hour;
    time.tm_min = minute;
    time.tm_isdst = -1;
    return static_cast<std::uint32_t>(std::mktime(&time));
}

class KeywordTest : public MergeTest {
 protected:
    KeywordTest() {
        installClock([] { return now; });
        now = localSeconds(2026, 7, 4, 9, 5);
    }
    ~KeywordTest() override {
        installClock(nullptr);
        keywordThaw();
        keywordState() = {};
    }

    /// The value of a keyword where the data has nothing.
    std::string valueOf(std::string_view keyword, const keywordPlaceRec& place) {
        extractionRec link{};
        pstrFromView(link.dataFunction, sizeof(link.dataFunction), keyword);
        tagValueRec value;
        value.status = fetchNoData;
        EXPECT_EQ(keywordValue(link, value, place, 0), 0);
        if (!value.bytes) return "(none)";
        EXPECT_EQ(value.status, fetchFound);
        return {value.bytes.get(), value.length};
    }

    /// What a merge of one record makes of a keyword.
    std::string merged(std::string_view keyword) {
        pstrFromView(link("A").dataFunction, sizeof(link("A").dataFunction), keyword);
        useTemplate("{A}");
        const std::vector<std::string> texts = merge();
        return texts.size() == 1 ? texts[0] : "(no page)";
    }
};

TEST_F(KeywordTest, TellsTheTime) {
    const struct {
        std::uint32_t seconds;
        const char* texts[7];
    } cases[] = {
        {localSeconds(2026, 7, 4, 9, 5), {"9:05 AM", "7/4/2026", "July 4, 2026", "4", "7", "July", "26"}},
        {localSeconds(2026, 12, 31, 12, 0),
         {"12:00 PM", "12/31/2026", "December 31, 2026", "31", "12", "December", "26"}},
        {localSeconds(2000, 2, 29, 0, 0), {"0:00 AM", "2/29/2000", "February 29, 2000", "29", "2", "February", "00"}},
        {localSeconds(2026, 1, 1, 23, 59), {"11:59 PM", "1/1/2026", "January 1, 2026", "1", "1", "January", "26"}},
    };
    const char* const keywords[] = {"_TIME", "_DATE", "_DATE_LONG", "_DAY", "_MONTH", "_MONTH_NAME", "_YEAR"};
    useData("A,B\n,x\n");
    for (const auto& expected : cases) {
        now = expected.seconds;
        for (std::size_t i = 0; i < std::size(keywords); ++i)
            EXPECT_EQ(merged(keywords[i]), expected.texts[i]) << keywords[i];
    }
    EXPECT_EQ(merged("_TIME_START"), "11:59 PM");
    EXPECT_EQ(merged("_JOBS_TO_PROCESS"), "1");
    EXPECT_EQ(merged("_PAGE_NAME"), "1");
    EXPECT_EQ(merged("_PAGE_SET_PAGE_COUNT"), "1");
    EXPECT_EQ(merged("_YEAR_LONGER"), "2026");  // a keyword goes on as it likes
    EXPECT_EQ(valueOf("_date", {}), "(none)");  // but not in another case
    EXPECT_EQ(valueOf("_Custom", {}), "(none)");
    EXPECT_EQ(valueOf("_READ_2D_BARCODE_DATA", {}), "(none)");
}

TEST_F(KeywordTest, HoldsDatesAndTheStartButNotTheTime) {
    keywordFreeze({});
    now = localSeconds(2027, 8, 5, 10, 6);
    EXPECT_EQ(valueOf("_TIME_START", {}), "9:05 AM");
    EXPECT_EQ(valueOf("_TIME", {}), "10:06 AM");
    EXPECT_EQ(valueOf("_DATE", {}), "7/4/2026");
    EXPECT_EQ(valueOf("_YEAR_LONG", {}), "2026");
    keywordThaw();
    EXPECT_EQ(valueOf("_TIME_START", {}), "10:06 AM");
    EXPECT_EQ(valueOf("_DATE", {}), "8/5/2027");
}

TEST_F(KeywordTest, NumbersRecordsAsTheirUserDoes) {
    numberingOptionsRec options{100, 0, 5, {}, {}};
    pstrFromView(options.prefix, sizeof(options.prefix), "A-");
    setNumberingOptions(options);
    session().rangeFirst = 1;
    session().skipFirst = 1;
    EXPECT_EQ(valueOf("_CONSECUTIVE_NUMBER", {{}, 3}), "A-00102");
    EXPECT_EQ(valueOf("_RECORD_NUMBER", {{}, 3}), "3");
    session().recordList = {6, recordListPad, 9};
    EXPECT_EQ(valueOf("_RECORD_NUMBER", {{}, 1}), "7");
    EXPECT_EQ(valueOf("_RECORD_NUMBER", {{}, 2}), "[Stack Pad]");
    EXPECT_EQ(valueOf("_CONSECUTIVE_NUMBER", {{}, 2}), "[Stack Pad]");
    EXPECT_EQ(valueOf("_CONSECUTIVE_NUMBER", {{}, 3}), "A-00103");  // counted from the list's first
    options.start = 123456;
    setNumberingOptions(options);
    EXPECT_EQ(valueOf("_CONSECUTIVE_NUMBER", {{}, 1}), "A-123456");  // wider than its width
}

TEST_F(KeywordTest, CountsPagesAndSheetsOverOmittedPages) {
    useTemplate("text");
    ASSERT_EQ(resetBuildTables(document->ref(), 0), 0);
    for (int slot = 0; slot < 2; ++slot) {
        for (int page = 0; page < 4; ++page)
            ASSERT_EQ(appendPageEntry(page, 0), 0);
        ASSERT_EQ(appendSlot(0), 0);
    }
    pageMapAt(2)->pageFlags = 1;
    keywordState().sheetBase = 10;
    keywordState().jobSheetBase = 100;
    keywordState().sheetWeights = {2, 3};
    keywordState().jobsToProcess = 7;
    const UIDRef ref = document->ref();
    const struct {
        std::int32_t page;
        const char *inSet, *count, *sheets, *jobSheets;
    } cases[] = {{0, "1", "3", "12", "102"}, {2, "OMITTED(3)", "3", "14", "104"}, {3, "3", "3", "16", "106"},
                 {4, "1", "4", "19", "109"}, {7, "4", "4", "28", "118"},          {8, "PP", "0", "10", "100"}};
    for (const auto& expected : cases) {
        const keywordPlaceRec place{ref, 0, expected.page};
        SCOPED_TRACE(expected.page);
        EXPECT_EQ(valueOf("_PAGE_SET_PAGE_NUMBER", place), expected.inSet);
        EXPECT_EQ(valueOf("_PAGE_SET_PAGE_COUNT", place), expected.count);
        EXPECT_EQ(valueOf("_SHEET_COUNTER", place), expected.sheets);
        EXPECT_EQ(valueOf("_JOB_SHEET_COUNTER", place), expected.jobSheets);
    }
    EXPECT_EQ(valueOf("_JOBS_TO_PROCESS", {}), "7");
}

TEST_F(KeywordTest, StandInForTheFieldOfALink) {
    useData("A,B\n1,\n2,x\n");
    pstrFromView(link("A").dataFunction, sizeof(link("A").dataFunction), "_RECORD_NUMBER");
    pstrFromView(link("B").dataFunction, sizeof(link("B").dataFunction), "_PAGE_NUMBER");
    link("B").prefix.enable = 1;
    pstrFromView(link("B").prefix.string, sizeof(link("B").prefix.string), "p. ");
    appPrefs().textDefaults.noData.enable = 0;
    useTemplate("{A}: {B}");
    EXPECT_EQ(merge(), (std::vector<std::string>{"1: p. 1", "2: p. 2"}));
}

TEST_F(KeywordTest, KnowTheirFunctionNames) {
    EXPECT_EQ(keywordToFunctionName("_DATE"), "Date");
    EXPECT_EQ(functionNameToKeyword("Record Number"), "_RECORD_NUMBER");
    EXPECT_EQ(keywordToFunctionName("_DATES"), "");
    extractionRec link{};
    pstrFromView(link.name, sizeof(link.name), "_YEAR");
    EXPECT_FALSE(keywordIsKnown(link));
    pstrFromView(link.name, sizeof(link.name), "_DATE");
    EXPECT_TRUE(keywordIsKnown(link));
}

}  // namespace
}  // namespace tarnova
