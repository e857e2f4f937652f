#include "data/record_selection.h"

#include "data/range_file.h"
#include "data/recent_ranges.h"
#include "data/record_filter.h"
#include "engine/session/session.h"
#include "tests/data/data_fixture.h"

namespace tarnova {
namespace {

using List = std::vector<std::int32_t>;

class RecordSelection : public DataTest {
 protected:
    RecordSelection() { sessionReset(); }
    void SetUp() override {
        DataTest::SetUp();
        toolkit.unattended = 1;
        toolkit.runLogPath = folder + "log";
    }
    ~RecordSelection() override { sessionReset(); }
    /// What was shown since the last call.
    std::string shown() {
        const std::string text = readFile(toolkit.runLogPath);
        std::filesystem::remove(toolkit.runLogPath);
        return text;
    }
};

TEST_F(RecordSelection, PositionsGoThroughTheList) {
    EXPECT_EQ(recordOfPosition(4, 1), 4);
    session().recordList = {2, recordListPad, 4};
    const std::pair<std::int32_t, std::int32_t> rows[] = {{-1, -1}, {0, 0}, {1, 3}, {2, recordListPad}, {3, 5}, {4, 4}};
    for (const auto& [position, record] : rows)
        EXPECT_EQ(recordOfPosition(position, 1), record) << position;
    EXPECT_EQ(recordOfPosition(0, 0), 2);
}

TEST_F(RecordSelection, IsFittedToTheData) {
    struct testRow {
        const char* name;
        std::uint32_t first, last;
        List list;
        std::uint32_t records;
        errorWord err;
        std::uint32_t lastNow, total;
        std::size_t length;
    };
    const testRow rows[] = {
        {"all", 0, 0, {}, 7, 0, 7, 7, 0},
        {"cut", 3, 9, {}, 7, 0, 7, 7, 0},
        {"behind", 8, 9, {}, 7, errRangeBehindFile, 9, 7, 0},
        {"empty data", 0, 0, {}, 0, errRangeBehindFile, 0, 0, 0},
        {"list cut", 1, 3, {0, 6, 7}, 7, 0, 2, 2, 2},
        {"list behind", 1, 2, {7, 8}, 7, errRangeBehindFile, 2, 7, 2},
    };
    for (const auto& [name, first, last, list, records, err, lastNow, total, length] : rows) {
        useRecordRange({first, last, list});
        EXPECT_EQ(fitRangeToData(records, 0), err) << name;
        EXPECT_EQ(session().rangeLast, lastNow) << name;
        EXPECT_EQ(session().totalRecords, total) << name;
        EXPECT_EQ(session().recordList.size(), length) << name;
    }
}

TEST_F(RecordSelection, FiltersByALink) {
    Str255 setName;
    pstrSet(setName, "set");
    ASSERT_EQ(recordDefSetNew(setName, nullptr, sets, definitions.currentDefSet, 0), 0);
    const auto made = makeDefinition({"Name", "City"});
    useData(*made, "Name,City\nAnn,Graz\nBob,\nCy,M\xFCnchen\nDi,Wien\n");
    recordDefRec* definition = nullptr;
    ASSERT_EQ(recordDefCopy(*definitions.currentDefSet, *made, made->name, definition, 0), 0);
    Str31 field;
    pstrSet(field, "City");
    extractionRec* link = nullptr;
    ASSERT_EQ(insertExtraction(*definitions.currentDefSet, *definition, field, link, 0), 0);
    pstrSet(link->field, "City");
    link->nodata = nodataCustom;  // with an empty text: nothing at all is delivered

    struct testRow {
        const char* name;
        const char* link;
        filterType type;
        const char* wanted;
        std::uint32_t skipFirst;
        std::uint32_t count;
        const char* range;
        const char* message;
    };
    const testRow rows[] = {
        {"no definition", "City", filterType::data, "", 1, 0, "", "The DDF was not found."},
        {"no name", "", filterType::data, "", 1, 0, "", "The variable link name is empty."},
        {"no link", "Town", filterType::data, "", 1, 0, "", "The specified variable link name was not found."},
        {"data", "City", filterType::data, "", 1, 3, "1,3,4", ""},
        {"no data", "city", filterType::noData, "", 1, 1, "2", ""},
        {"header counts", "City", filterType::data, "", 0, 4, "1,2,4,5", ""},
        {"contains", "City", filterType::contains, "M\xC3\x9CN", 1, 1, "3", ""},
        {"contains nothing", "City", filterType::contains, "Rom", 1, 0, "", ""},
    };
    PMString range;
    bool cancelled = false;
    for (const testRow& row : rows) {
        pstrSet(definitions.currentDefName, row.name == std::string_view("no definition") ? "Other" : "Test");
        EXPECT_EQ(filterRecords(row.link, row.type, row.wanted, row.skipFirst, range, cancelled), row.count)
            << row.name;
        EXPECT_EQ(range.bytes(), row.range) << row.name;
        EXPECT_NE(shown().find(row.message), std::string::npos) << row.name;
    }
    session().recordList = {3, recordListPad, 1};  // Di, a pad, Bob
    EXPECT_EQ(filterRecords("City", filterType::data, "", 1, range, cancelled), 2U);
    EXPECT_EQ(range.bytes(), "1,4") << "positions; behind the list they are the records";
    session().recordList.clear();

    definition->importTransTable.enable = 1;
    pstrSet(definition->importTransTable.string, "gone");
    EXPECT_EQ(filterRecords("City", filterType::data, "", 1, range, cancelled), 0U);
    EXPECT_NE(shown().find("Unable to load the import transtable."), std::string::npos);
    std::filesystem::remove(folder + "data.csv");
    dataSourceCloseAll();
    std::filesystem::remove_all(folder + "indexes");
    EXPECT_EQ(filterRecords("City", filterType::data, "", 1, range, cancelled), 0U);
    EXPECT_NE(shown().find("The specified database file was not found."), std::string::npos);
}

TEST_F(RecordSelection, ReadsRangeFiles) {
    const std::string fits = "1" + std::string(1023, ','), over = fits + ',';
    struct testRow {
        const char* name;
        std::string bytes;
        errorWord err;
        std::string text;
        const char* message;
    };
    const testRow rows[] = {
        {"lines", "1-3\r\n5\n", 0, "1-3,,5,", ""},
        {"as long as may be", fits, 0, fits, ""},
        {"one too long", over, errFailed, "", "1024"},
        {"refused", "3\n2\n", errFailed, "", "backward"},
    };
    for (const testRow& row : rows) {
        writeFile(folder + "range.txt", row.bytes);
        PMString text;
        EXPECT_EQ(readRangeFile(folder + "range.txt", text, 0), row.err) << row.name;
        EXPECT_EQ(text.bytes(), row.text) << row.name;
        EXPECT_NE(shown().find(row.message), std::string::npos) << row.name;
    }
    PMString text;
    EXPECT_EQ(readRangeFile(folder + "none.txt", text, 0), errFileOpen);
    bool cancelled = false;
    EXPECT_EQ(importRangeFile(text, cancelled, 0), 0);
    EXPECT_TRUE(cancelled) << "nobody chooses";
}

TEST_F(RecordSelection, RemembersTenRanges) {
    const auto& ranges = appPrefs().recentRanges;
    for (std::uint32_t from = 1; from <= 11; ++from)
        rememberRange({0, from, 20, 1, 1, 1});
    EXPECT_EQ(ranges[0].from, 11U);
    EXPECT_EQ(ranges[9].from, 2U) << "the oldest fell away";
    rememberRange({0, 9, 20, 1, 1, 1});
    rememberRange({0, 9, 20, 1, 1, 1});
    const std::uint32_t order[] = {9, 11, 10, 8, 7, 6, 5, 4, 3, 2};
    for (std::size_t i = 0; i < std::size(order); ++i)
        EXPECT_EQ(ranges[i].from, order[i]) << i;
    EXPECT_EQ(ranges[0].used, 1U);

    const std::pair<recentRangeRec, const char*> texts[] = {
        {{1, 1, 50, 2, 1, 1}, "Records 1 to 50, step 2, first record skipped"},
        {{1, 0, 0, 1, 0, 2}, "All records, first record included"},
        {{1, 0, 0, 1, 0, 6}, "All records, label sort, first record included"},
    };
    for (const auto& [range, text] : texts)
        EXPECT_EQ(rangeSummary(range).bytes(), text);
    std::string numbers;
    for (int i = 1; i < 400; ++i)
        numbers += std::to_string(i) + ",";
    rememberRangeText(numbers, {1, 1, 399, 4, 1, 5});
    EXPECT_TRUE(numbers.starts_with(std::string(appPrefs().rangeTextLong) + ","));
    EXPECT_GT(std::strlen(appPrefs().rangeTextLong), 1015U);
    EXPECT_EQ(appPrefs().rangeLongPass, 5U);
}

}  // namespace
}  // namespace tarnova
