#include <fstream>
#include <random>
#include <sstream>

#include "source_folder.h"
#include "tests/definitions/definition_fixture.h"

namespace tarnova {

namespace {

/// Random definitions out of all that a definition may hold. The seed is fixed, so that a failure comes again.
class RandomDefinitions {
 public:
    explicit RandomDefinitions(unsigned seed) : random_(seed) {}

    void fill(recordDefSetRec& set) {
        for (int number = upTo(3); number >= 0; --number) {
            recordDefRec* definition = nullptr;
            ASSERT_EQ(recordDefNew(set, Pascal(name()), definition, 0), 0);
            fillFixed(set, *definition);
            for (int count = upTo(4); count > 0; --count)
                fillCriteria(set, *definition);
            for (int count = upTo(6); count > 0; --count)
                fillLink(set, *definition);
            for (int count = upTo(2); count > 0; --count)
                fillStyle(set, *definition);
        }
    }

 private:
    int upTo(int limit) { return static_cast<int>(random_() % static_cast<unsigned>(limit + 1)); }
    std::uint8_t flag() { return static_cast<std::uint8_t>(upTo(1)); }
    std::int16_t word() { return static_cast<std::int16_t>(random_()); }
    std::int32_t longWord() { return static_cast<std::int32_t>(random_()); }

    /// All bytes may stand in a text but 0 and line ends, with the bytes that mean something more often than others.
    std::string text(std::size_t capacity, std::size_t least = 0) {
        const std::size_t length = least + random_() % (capacity + 1 - least);
        std::string made;
        while (made.size() < length) {
            constexpr std::string_view special = "\"'\\;:, \ttrue5";
            const char c = upTo(2) == 0 ? special[random_() % special.size()] : static_cast<char>(32 + random_() % 95);
            made += c;
        }
        return made;
    }
    std::string name() { return text(31, 1); }

    template <std::size_t size>
    void put(std::uint8_t (&field)[size], std::size_t least = 0) {
        std::memset(field, 0, size);  // what a new definition starts with may be longer
        pstrSet(field, text(size - 1, least));
    }
    template <typename Flagged>
    void putFlagged(Flagged& field) {
        field.enable = flag();
        put(field.string);
    }
    /// A text that is written only with its flag.
    template <typename Flagged>
    void putIfSet(Flagged& field) {
        if (flag() == 0) return;
        field.enable = 1;
        put(field.string);
    }
    void putPath(char (&field)[definitionPathSize]) { std::strcpy(field, text(1023).c_str()); }

    void fillFixed(recordDefSetRec& set, recordDefRec& d) {
        ASSERT_EQ(recordDefSetSignature(set, d, Pascal(text(255)), 0), 0);
        d.lastUpdate = static_cast<std::uint32_t>(random_());
        putPath(d.databasePath);
        put(d.odbcPassword);
        put(d.httpDataSourceName, 1);
        for (int count = upTo(40); count > 0; --count) {
            insertFieldName(d, static_cast<std::uint16_t>(random_()), Pascal(name()));
        }
        put(d.keyField);
        d.useKeyfieldCase = flag();
        for (std::int16_t* number : {&d.dataAccessMode, &d.dataType, &d.fileType, &d.osType})
            *number = word();
        put(d.fDelimiter, 1);
        for (flaggedStr31Rec* field : {&d.textQualifier, &d.importSrSet, &d.exportSrSet, &d.ruleSet})
            putFlagged(*field);
        put(d.vtTranslation.string);
        for (flaggedStr255Rec* field : {&d.importTransTable, &d.exportTransTable, &d.sqlPrologue, &d.sqlEpilogue,
                                        &d.sqlRowCount, &d.reqPrologue, &d.reqEpilogue, &d.reqRowCount}) {
            putFlagged(*field);
        }
        const std::string first = text(100);
        const std::string second = text(100, 1);
        if (flag() != 0) {
            ASSERT_EQ(setRuleData(d.ruleSetData, first.data(), first.size(), 0), 0);
        }
        ASSERT_EQ(setRuleData(d.ruleSetData2, second.data(), second.size(), 0), 0);
        d.pictureSearch.enable = flag();
        putPath(d.pictureSearch.searchPath);
        d.pictureSearch.subDirs = flag();
    }

    void fillCriteria(recordDefSetRec& set, recordDefRec& definition) {
        searchCriteriaRec* c = nullptr;
        ASSERT_EQ(insertSearchCriteria(set, definition, Pascal(name()), c, 0), 0);
        putIfSet(c->prefix);
        putIfSet(c->suffix);
        putFlagged(c->sqlFragment);
        putFlagged(c->reqFragment);
        c->context = static_cast<std::int16_t>(upTo(2));
        c->caseSense = flag();
        const int tests = upTo(3);
        for (int test = 0; test < tests; ++test) {
            put(c->fieldSearch[test].field, 1);
            put(c->fieldSearch[test].string);
            c->fieldSearch[test].enable = flag();
        }
    }

    void fillLink(recordDefSetRec& set, recordDefRec& definition) {
        extractionRec* l = nullptr;
        ASSERT_EQ(insertExtraction(set, definition, Pascal(name()), l, 0), 0);
        for (std::uint8_t* field :
             {&l->useColorAttr, &l->locked, &l->associateMe, &l->shared, &l->mailMerge, &l->ignoreLink, &l->resetStyles,
              &l->isafile, &l->useDataFormat, &l->addPicBoxToGroup}) {
            *field = flag();
        }
        for (std::int16_t* field :
             {&l->type, &l->pdfExportType, &l->nodata, &l->deleteline, &l->magicKeyNumbers[0], &l->magicKeyNumbers[1],
              &l->magicKeyNumbers[2], &l->missingasset, &l->importFilter, &l->picturePosition, &l->hAlign, &l->vAlign,
              &l->pictureBoxAction, &l->importPosition}) {
            *field = word();
        }
        l->colorRed = static_cast<std::uint16_t>(random_());
        for (flaggedStr255Rec* field : {&l->sqlFragment, &l->reqFragment})
            putFlagged(*field);
        putIfSet(l->prefix);
        putIfSet(l->suffix);
        put(l->field);
        put(l->notes);
        put(l->nodatastring);
        put(l->magicKey);
        put(l->dataFunction);
        put(l->dataFormat);
        putPath(l->missingassetstring);
    }

    void fillStyle(recordDefSetRec& set, recordDefRec& definition) {
        styleRec* s = nullptr;
        ASSERT_EQ(insertStyle(set, definition, Pascal(name()), s, 0), 0);
        s->checkPrice = flag();
        for (auto& [price, currency] : s->groups) {
            price.format = static_cast<std::int16_t>(upTo(3));
            price.useRadix = word();
            for (std::uint8_t* field :
                 {&price.underline, &price.specialCents, &price.kernCents, &currency.enable, &currency.insAfter,
                  &currency.superior, &currency.sizeSymbol, &currency.kernSymbol}) {
                *field = flag();
            }
            for (std::int32_t* field : {&price.centsSize, &price.centsShift, &price.centsKerning, &currency.symbolSize,
                                        &currency.symbolShift, &currency.symbolKerning}) {
                *field = longWord();
            }
            put(price.xpressTagString);
            put(currency.string);
        }
    }

    std::mt19937 random_;
};

class DdfRoundTrip : public DefinitionTest {
 protected:
    template <typename Record>
    static void expectSameRecords(Record* const* a, Record* const* b, std::size_t count) {
        for (std::size_t index = 0; index < count; ++index) {
            ASSERT_TRUE(a[index] != nullptr && b[index] != nullptr) << index;
            EXPECT_EQ(std::memcmp(a[index], b[index], sizeof(Record)), 0) << "record " << index;
        }
    }

    static void expectSameData(blockHandle a, blockHandle b) {
        ASSERT_EQ(a == nullptr, b == nullptr);
        ASSERT_EQ(handleSize(a), handleSize(b));
        if (a != nullptr) {
            EXPECT_EQ(std::memcmp(*a, *b, handleSize(a)), 0);
        }
    }

    static void expectSame(const recordDefRec& a, const recordDefRec& b) {
        EXPECT_EQ(pstrView(a.signature), pstrView(b.signature));
        // From lastUpdate to the rule data, and from there to the end, nothing is a reference.
        const auto* bytesOfA = reinterpret_cast<const std::byte*>(static_cast<const recordDefFixedRec*>(&a));
        const auto* bytesOfB = reinterpret_cast<const std::byte*>(static_cast<const recordDefFixedRec*>(&b));
        constexpr std::size_t data = offsetof(recordDefFixedRec, ruleSetData2);
        constexpr std::size_t start = offsetof(recordDefFixedRec, lastUpdate);
        constexpr std::size_t behind = offsetof(recordDefFixedRec, osType);
        constexpr std::size_t limit = offsetof(recordDefFixedRec, pictureSearch) + sizeof(pictureSearchRec);
        EXPECT_EQ(std::memcmp(bytesOfA + start, bytesOfB + start, data - start), 0);
        EXPECT_EQ(std::memcmp(bytesOfA + behind, bytesOfB + behind, limit - behind), 0);
        expectSameData(a.ruleSetData, b.ruleSetData);
        expectSameData(a.ruleSetData2, b.ruleSetData2);
        ASSERT_EQ(searchCriteriaCount(a), searchCriteriaCount(b));
        ASSERT_EQ(extractionCount(a), extractionCount(b));
        ASSERT_EQ(styleCount(a), styleCount(b));
        expectSameRecords(a.searchCriteria, b.searchCriteria, searchCriteriaCount(a));
        expectSameRecords(a.extractions, b.extractions, extractionCount(a));
        expectSameRecords(a.styles, b.styles, styleCount(a));
    }
};

TEST_F(DdfRoundTrip, WhatIsWrittenIsReadBackByteForByte) {
    for (unsigned seed = 1; seed <= 40; ++seed) {
        recordDefSetRec* list = nullptr;
        recordDefSetRec* original = nullptr;
        ASSERT_EQ(recordDefSetNew(Pascal("original"), nullptr, list, original, 0), 0);
        RandomDefinitions(seed).fill(*original);
        startOver();
        const std::string text = write(*original);
        ASSERT_EQ(read(text), 0) << seed;
        EXPECT_TRUE(report_.remarks.empty()) << seed << report_.remarks[0].text;
        ASSERT_EQ(recordDefCount(set_), recordDefCount(original)) << seed;
        for (std::int32_t index = 0; index < recordDefCount(original); ++index) {
            recordDefRec* a = nullptr;
            recordDefRec* b = nullptr;
            ASSERT_EQ(recordDefAt(original, index, a, 0), 0);
            ASSERT_EQ(recordDefAt(set_, index, b, 0), 0);
            expectSame(*a, *b);
        }
        EXPECT_EQ(write(*set_), text) << seed;
        recordDefSetDiscard(list, original);
    }
}

TEST_F(DdfRoundTrip, AFileCutAtAnyByteIsReadUpToThere) {
    std::ifstream file(std::string(TARNOVA_SOURCE_FOLDER) + "/tests/definitions/kept/orders.ddf", std::ios::binary);
    std::ostringstream whole;
    whole << file.rdbuf();
    const std::string text = whole.str();
    const std::size_t signatureEnd = text.find("signature;") + 10;
    ASSERT_GT(text.size(), 3000u);
    for (std::size_t length = 0; length < text.size(); ++length) {
        startOver();
        ASSERT_EQ(read(std::string_view(text).substr(0, length)), length < signatureEnd ? errDdfNoSignature : 0)
            << length;
        // What was read is whole: it comes back from being written.
        const std::string once = write(*set_);
        if (length < signatureEnd) continue;
        startOver();
        ASSERT_EQ(read(once), 0) << length;
        EXPECT_EQ(recordDefCount(set_), length > text.find("\"Plain\" recordDefinition;") + 24 ? 2 : 1) << length;
    }
}

TEST_F(DdfRoundTrip, TheExampleOfTheManualIsReadWithoutARemark) {
    std::ifstream manual(std::string(TARNOVA_SOURCE_FOLDER) + "/docs/ddf.md", std::ios::binary);
    std::ostringstream whole;
    whole << manual.rdbuf();
    const std::string text = whole.str();
    const std::string fence = "```ddf\n";
    const std::size_t start = text.find(fence);
    ASSERT_NE(start, std::string::npos);
    const std::size_t end = text.find("```", start + fence.size());
    ASSERT_NE(end, std::string::npos);
    ASSERT_EQ(read(text.substr(start + fence.size(), end - start - fence.size())), 0);
    EXPECT_TRUE(report_.remarks.empty());
    const recordDefRec& definition = *find("Spring mailing");
    EXPECT_EQ(fieldNumberOf(definition, Pascal("City")), 3);
    ASSERT_EQ(extractionCount(definition), 2);
    EXPECT_EQ(definition.extractions[1]->type, linkTypePicture);
    EXPECT_EQ(searchCriteriaCount(definition), 1);
    EXPECT_EQ(styleCount(definition), 1);
}

}  // namespace

}  // namespace tarnova
