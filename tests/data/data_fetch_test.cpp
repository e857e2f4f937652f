#include "data/data_source.h"

#include "tests/data/data_fixture.h"

namespace tarnova {
namespace {

class DataFetch : public DataTest {
 protected:
    dataSourceRec* use(std::string_view bytes) {
        definition = makeDefinition({"Key", "A", "B", "C"});
        useData(*definition, bytes);
        dataSourceRec* const source = open(*definition);
        EXPECT_NE(source, nullptr) << error;
        return source;
    }
    std::unique_ptr<recordDefRec> definition;
};

void setTest(fieldSearchRec& test, std::string_view field, std::string_view text) {
    test.enable = 1;
    pstrSet(test.field, field);
    pstrSet(test.string, text);
}

TEST_F(DataFetch, StatusOfEachOutcome) {
    dataSourceRec* const source = use("k,one,\"\"\nshort\n");
    pstrSet(appPrefs().textDefaults.noMatch.string, "nobody");
    pstrSet(appPrefs().textDefaults.noData.string, "nothing");
    pstrSet(appPrefs().pictureDefaults.badTag.string, "bad");
    struct row {
        const char* name;
        std::int32_t number;
        const char* field;
        std::string value;
        std::int16_t status;
    };
    const row rows[] = {
        {"value", 0, "A", "one", fetchFound},
        {"pair of qualifiers", 0, "B", "nothing", fetchNoData},
        {"missing field", 1, "C", "nothing", fetchNoData},
        {"unknown field", 0, "Z", "nothing", fetchNoData},
        {"empty record behind the last", 2, "A", "nothing", fetchNoData},
        {"number behind the last", 3, "A", "nobody", fetchNoMatch},
    };
    for (const auto& [name, number, field, value, expected] : rows) {
        EXPECT_EQ(fetchNumber(source, number, field), value) << name;
        EXPECT_EQ(status, expected) << name;
    }
    appPrefs().textDefaults.noData.enable = 0;
    EXPECT_EQ(fetchNumber(source, 1, "C"), "") << "flag off: no text";
    EXPECT_EQ(status, fetchNoData);

    fetchRequest request{};
    request.defaultSet = defaultSetFrame;
    request.criteriaNamed = 1;
    EXPECT_EQ(fetch(source, request, "A"), "bad");
    EXPECT_EQ(status, fetchBadTag);
    void* value = nullptr;
    std::uint32_t length = 0;
    request.criteriaNamed = 0;
    EXPECT_EQ(dataSourceFetch(source, &request, 0, value, length, status, 0), 0);
    EXPECT_EQ(status, fetchBadTag) << "no link";
    freeBlock(value);

    request.recordNumber = -1;
    EXPECT_EQ(fetch(source, request, "A"), "") << "neither number nor key";
    EXPECT_EQ(status, fetchFound);
}

TEST_F(DataFetch, CustomNoDataTextOfTheLink) {
    dataSourceRec* const source = use("k,\n");
    extractionRec link{};
    pstrSet(link.field, "A");
    link.nodata = nodataCustom;
    pstrSet(link.nodatastring, "n/a");
    fetchRequest request{};
    request.extraction = &link;
    void* value = nullptr;
    std::uint32_t length = 0;
    ASSERT_EQ(dataSourceFetch(source, &request, 1, value, length, status, 0), 0);
    EXPECT_EQ(std::string(static_cast<char*>(value), length), "n/a");
    EXPECT_EQ(status, fetchNoData);
    freeBlock(value);
}

TEST_F(DataFetch, KeysWithAffixesAndCase) {
    dataSourceRec* source = use("abc,1\nABC,2\npre-x-post,3\n" + std::string(64, 'k') + "zz,4\n");
    EXPECT_EQ(fetchKey(source, "ABC", "A"), "2");
    EXPECT_EQ(fetchKey(source, std::string(64, 'k'), "A"), "4") << "found by its first 64 bytes";
    EXPECT_EQ(fetchKey(source, std::string(64, 'k') + "zz", "A").size(),
              pstrView(appPrefs().textDefaults.noMatch.string).size());
    EXPECT_EQ(status, fetchNoMatch);

    searchCriteriaRec criteria{};
    criteria.prefix.enable = criteria.suffix.enable = 1;
    pstrSet(criteria.prefix.string, "pre-");
    pstrSet(criteria.suffix.string, "-post");
    EXPECT_EQ(fetchKey(source, "x", "A", &criteria), "3");
    criteria.suffix.enable = 0;
    fetchKey(source, "x", "A", &criteria);
    EXPECT_EQ(status, fetchNoMatch);

    definition->useKeyfieldCase = 0;
    source = open(*definition);
    for (const char* key : {"abc", "ABC", "aBc"})
        EXPECT_EQ(fetchKey(source, key, "A"), "1") << key << ": one group, its first record";
    bool found = false;
    Str255 key;
    ASSERT_EQ(dataSourceKeyAt(source, 1, key, found, 0), 0);
    EXPECT_EQ(pstrView(key), "abc") << "the form that sorted first";
    std::int32_t number = 9;
    pstrSet(key, "Abc");
    ASSERT_EQ(dataSourceFindKey(source->keyIndex, key, number, found, 0), 0);
    EXPECT_TRUE(found);
    EXPECT_EQ(number, 0);
    ASSERT_EQ(dataSourceKeyAt(source, 4, key, found, 0), 0);
    EXPECT_FALSE(found);
}

TEST_F(DataFetch, NoKeyFieldMakesOneGroup) {
    use("a,1\nb,2\n");
    definition->keyField[0] = 0;
    dataSourceRec* const source = open(*definition);
    EXPECT_EQ(keyIndexKeyCount(*source->keyIndex), 1u);
    EXPECT_EQ(fetchNumber(source, 1, "A"), "2");
}

TEST_F(DataFetch, FieldTests) {
    dataSourceRec* const source = use("k,red,1,\"x\"\"y\"\nk,RED,2,\nk,blue,2,\"x\"\n");
    struct testRow {
        const char* field;
        const char* text;
    };
    struct row {
        const char* name;
        std::int16_t context;
        std::uint8_t caseSense;
        std::vector<testRow> tests;
        std::int32_t found;  // -1: none
    };
    const row rows[] = {
        {"no test", searchContextAnd, 1, {}, 0},
        {"no test, or", searchContextOr, 1, {}, -1},
        {"case", searchContextNone, 1, {{"A", "RED"}}, 1},
        {"without case", searchContextNone, 0, {{"A", "RED"}}, 0},
        {"and", searchContextAnd, 0, {{"A", "red"}, {"B", "2"}}, 1},
        {"or", searchContextOr, 1, {{"A", "blue"}, {"B", "2"}}, 1},
        {"forward only", searchContextAnd, 1, {{"B", "2"}, {"A", "blue"}}, -1},
        {"forward", searchContextAnd, 1, {{"A", "blue"}, {"B", "2"}}, 2},
        {"the same field twice", searchContextOr, 1, {{"A", "green"}, {"A", "blue"}}, 2},
        {"unknown field, and", searchContextAnd, 1, {{"Z", ""}, {"A", "red"}}, -1},
        {"unknown field, or", searchContextOr, 1, {{"Z", ""}, {"a", "blue"}}, 2},
        {"qualifiers don't count", searchContextAnd, 1, {{"C", "x"}}, 2},
        {"doubled qualifier counts once", searchContextAnd, 1, {{"C", "x\"y"}}, 0},
        {"empty field", searchContextAnd, 1, {{"C", ""}}, 1},
        {"a part isn't enough", searchContextAnd, 1, {{"A", "re"}}, -1},
        {"more isn't either", searchContextAnd, 1, {{"A", "redd"}}, -1},
    };
    for (const auto& [name, context, caseSense, tests, found] : rows) {
        searchCriteriaRec criteria{};
        criteria.context = context;
        criteria.caseSense = caseSense;
        for (std::size_t i = 0; i < tests.size(); ++i)
            setTest(criteria.fieldSearch[i], tests[i].field, tests[i].text);
        fetchKey(source, "k", "A", &criteria);
        EXPECT_EQ(foundNumber, found) << name;
        EXPECT_EQ(status, found < 0 ? fetchNoMatch : fetchFound) << name;
    }
    searchCriteriaRec gap{};
    setTest(gap.fieldSearch[1], "A", "blue");
    fetchKey(source, "k", "A", &gap);
    EXPECT_EQ(foundNumber, 0) << "a first test that is off ends the tests";
}

// A field behind the record's last: its test is false, and no walk leaves the record.
TEST_F(DataFetch, TestBehindTheLastField) {
    dataSourceRec* const source = use("k\nk,x\n");
    searchCriteriaRec criteria{};
    setTest(criteria.fieldSearch[0], "A", "");
    fetchKey(source, "k", "Key", &criteria);
    EXPECT_EQ(status, fetchNoMatch);
    setTest(criteria.fieldSearch[0], "A", "x");
    EXPECT_EQ(fetchKey(source, "k", "Key", &criteria), "k");
    EXPECT_EQ(foundNumber, 1);
}

TEST_F(DataFetch, NumbersIgnoreFieldTests) {
    dataSourceRec* const source = use("k,red\n");
    searchCriteriaRec criteria{};
    setTest(criteria.fieldSearch[0], "A", "blue");
    fetchRequest request{};
    request.criteria = &criteria;
    EXPECT_EQ(fetch(source, request, "A"), "red");
}

}  // namespace
}  // namespace tarnova
