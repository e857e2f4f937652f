#include <cstdlib>
#include <fstream>
#include <sstream>

#include "source_folder.h"
#include "tests/definitions/definition_fixture.h"

namespace tarnova {

namespace {

std::string fileText(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    EXPECT_TRUE(file.good()) << path;
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

class DdfWrite : public DefinitionTest {
 protected:
    /// A definition that holds something in every field.
    void makeOrders() {
        recordDefRec& definition = *add("Orders");
        fillSource(definition);
        fillAccess(definition);
        fillCriteria(definition);
        fillLink(definition);
        fillStyle(definition);
    }

    static void fillSource(recordDefRec& definition) {
        std::strcpy(definition.databasePath, "C:\\index files\\orders list");
        pstrSet(definition.odbcDataSourceName, "Warehouse");
        pstrSet(definition.odbcUserId, "reader");
        pstrSet(definition.odbcPassword, "semi;colon");
        pstrSet(definition.httpUserId, "web");
        pstrSet(definition.httpPassword, "p'w\"");
        definition.lastUpdate = 4000000000u;
        insertFieldName(definition, 1, Pascal("Name"));
        insertFieldName(definition, 2, Pascal("City"));
        insertFieldName(definition, 3, Pascal("Street and number, \"c/o\""));
        insertFieldName(definition, 65535, Pascal("A name of just thirty-one bytes"));
        pstrSet(definition.keyField, "Name");
        definition.useKeyfieldCase = 0;
    }

    static void fillAccess(recordDefRec& definition) {
        definition.sqlPrologue.enable = 1;
        pstrSet(definition.sqlPrologue.string, "SET x='a\\b'");
        definition.dataAccessMode = dataAccessOdbc;
        definition.dataType = dataTypeFromBytes;
        definition.fileType = fileTypeCustom;
        pstrSet(definition.fDelimiter, "\t;");
        definition.vtTranslation.enable = 1;
        pstrSet(definition.vtTranslation.string, " ");
        definition.exportTransTable.enable = 1;
        pstrSet(definition.exportTransTable.string, "out");
        pstrSet(definition.importTransTable.string, "in");
        pstrSet(definition.exportSrSet.string, "sr out");
        definition.importSrSet.enable = 1;
        pstrSet(definition.importSrSet.string, "sr in");
        definition.ruleSet.enable = 1;
        pstrSet(definition.ruleSet.string, "rules");
        std::string bytes;
        for (int byte = 0; byte < 45; ++byte)
            bytes += static_cast<char>(byte * 6);
        EXPECT_EQ(setRuleData(definition.ruleSetData, nullptr, 0, 0), 0);
        EXPECT_EQ(setRuleData(definition.ruleSetData2, bytes.data(), bytes.size(), 0), 0);
        definition.osType = osTypeFromFile;
        definition.pictureSearch.enable = 1;
        std::strcpy(definition.pictureSearch.searchPath, "/pictures/spring");
    }

    void fillCriteria(recordDefRec& definition) {
        searchCriteriaRec* criteria = nullptr;
        ASSERT_EQ(insertSearchCriteria(*set_, definition, Pascal("By city"), criteria, 0), 0);
        criteria->prefix = {1, {2, 'N', 'o'}};
        criteria->suffix = {0, {1, 'x'}};
        criteria->context = searchContextOr;
        criteria->caseSense = 1;
        pstrSet(criteria->sqlFragment.string, "WHERE");
        pstrSet(criteria->fieldSearch[0].field, "City");
        pstrSet(criteria->fieldSearch[0].string, "Graz");
        criteria->fieldSearch[0].enable = 1;
        pstrSet(criteria->fieldSearch[1].field, "Name");
    }

    void fillLink(recordDefRec& definition) {
        extractionRec* link = nullptr;
        ASSERT_EQ(insertExtraction(*set_, definition, Pascal("Photo"), link, 0), 0);
        link->useColorAttr = 1;
        link->colorRed = 65535;
        link->colorBlue = 7;
        link->locked = link->mailMerge = link->ignoreLink = link->associateMe = link->shared = 1;
        link->nodata = nodataCustom;
        link->deleteline = 2;
        pstrSet(link->nodatastring, "n/a");
        link->missingasset = missingAssetSubstitute;
        std::strcpy(link->missingassetstring, "/pictures/none.tif");
        pstrSet(link->notes, "front");
        link->type = linkTypePicture;
        link->magicKeyNumbers[0] = 1;
        link->magicKeyNumbers[2] = -3;
        pstrSet(link->magicKey, "key");
        link->prefix = {1, {0}};
        link->suffix = {1, {1, '.'}};
        link->importFilter = importFilterTaggedText;
        link->isafile = 1;
        pstrSet(link->dataFunction, "date");
        link->useDataFormat = 1;
        pstrSet(link->dataFormat, "EAN13");
        link->picturePosition = 8;
        pstrSet(link->field, "Name");
        pstrSet(link->reqFragment.string, "q=1");
        link->addPicBoxToGroup = 1;
        link->importPosition = 4;
    }

    void fillStyle(recordDefRec& definition) {
        styleRec* style = nullptr;
        ASSERT_EQ(insertStyle(*set_, definition, Pascal("Sale"), style, 0), 0);
        priceGroupRec& group = style->groups[1];
        group.price.format = priceFormatCents;
        group.price.useRadix = 1;
        group.price.underline = 1;
        group.price.specialCents = 1;
        group.price.centsSize = 0x8000;
        group.price.centsShift = -5;
        group.price.kernCents = 1;
        group.price.centsKerning = 9;
        pstrSet(group.price.xpressTagString, "<B>");
        group.currency.enable = group.currency.insAfter = group.currency.superior = group.currency.kernSymbol = 1;
        pstrSet(group.currency.string, "\xE2\x82\xAC");
        group.currency.symbolKerning = -70000;
    }
};

TEST_F(DdfWrite, EveryStatementStandsAsInTheKeptFile) {
    makeOrders();
    recordDefRec& plain = *add("Plain");
    ASSERT_EQ(recordDefSetSignature(*set_, plain, Pascal(""), 0), 0);
    plain.fDelimiter[0] = plain.httpDataSourceName[0] = 0;
    const std::string path = std::string(TARNOVA_SOURCE_FOLDER) + "/tests/definitions/kept/orders.ddf";
    const std::string text = write(*set_);
    if (std::getenv("TARNOVA_KEEP_RESULTS") != nullptr) std::ofstream(path, std::ios::binary) << text;
    EXPECT_EQ(text, fileText(path));
}

TEST_F(DdfWrite, ReadingTheKeptFileAndWritingItGivesTheSameBytes) {
    const std::string kept = fileText(std::string(TARNOVA_SOURCE_FOLDER) + "/tests/definitions/kept/orders.ddf");
    ASSERT_EQ(read(kept), 0);
    EXPECT_TRUE(report_.remarks.empty());
    // Two things that a read doesn't bring back: the flag of vtTranslation, and an emptied HTTP source, which starts
    // anew.
    find("Orders")->vtTranslation.enable = 1;
    find("Plain")->httpDataSourceName[0] = find("Plain")->fDelimiter[0] = 0;
    EXPECT_EQ(write(*set_), kept);
}

TEST_F(DdfWrite, FieldLinesStayBelowTheirLimit) {
    // An item `10:"name",` has six bytes more than its name, and a blank stands between two: 37 + 1 + 31 + 1 + the
    // third.
    struct testRow {
        const char* name;
        std::string third;
        const char* between[3];
    };
    const testRow rows[] = {
        {"80 bytes with its comma", "cccc", {" ", " ", "\r\n\t"}},
        {"81 bytes with its comma", "ccccc", {" ", "\r\n\t", " "}},
    };
    for (const auto& [name, third, between] : rows) {
        startOver();
        recordDefRec& definition = *add("d");
        const std::string names[] = {std::string(31, 'a'), std::string(25, 'b'), third, std::string(31, 'd')};
        std::string list = "\r\n\t";
        for (std::size_t index = 0; index < std::size(names); ++index) {
            insertFieldName(definition, 10, Pascal(names[index]));
            list += "10:\"" + names[index] + "\"" + (index < 3 ? std::string(",") + between[index] : " fieldName;\r\n");
        }
        EXPECT_NE(write(*set_).find(list), std::string::npos) << name << write(*set_).substr(0, 300);
    }
}

TEST_F(DdfWrite, FieldsOfOneNameKeepTheirOrder) {
    recordDefRec& definition = *add("d");
    for (std::uint16_t number : {3, 1, 2})
        insertFieldName(definition, number, Pascal("Name"));
    insertFieldName(definition, 9, Pascal("Zip"));
    const std::string text = write(*set_);
    EXPECT_NE(text.find("2:\"Name\", 1:\"Name\", 3:\"Name\", 9:\"Zip\" fieldName;"), std::string::npos);
    startOver();
    ASSERT_EQ(read(text), 0);
    EXPECT_EQ(fieldNumberOf(*find("d"), Pascal("Name")), 3);
    EXPECT_EQ(write(*set_), text);
}

TEST_F(DdfWrite, BytesThatQuotesCannotHoldAreLeftOut) {
    // Quotes inside a word stay in it as 0 bytes.
    ASSERT_EQ(read("d recordDefinition; T signature; a\"b\"c keyField; '\"'\" searchCriteria; p prefix;"), 0);
    const std::string text = write(*set_);
    EXPECT_NE(text.find("\t\"abc\" keyField;"), std::string::npos);
    EXPECT_EQ(text.find("searchCriteria"), std::string::npos) << "a name of quotes alone is none";
    startOver();
    ASSERT_EQ(read(text), 0);
    EXPECT_EQ(write(*set_), text);
}

TEST_F(DdfWrite, SignatureAndPathAreQuotedWhenTheyMustBe) {
    struct testRow {
        const char* value;
        const char* written;
    };
    const testRow rows[] = {
        {"TARNOVAJNT", "TARNOVAJNT"}, {"a b", "\"a b\""},   {"a\tb", "\"a\tb\""},   {"a,b", "\"a,b\""},
        {"a;b", "\"a;b\""},           {"a'b", "\"a\\'b\""}, {"a\\b", "\"a\\\\b\""}, {"", "\"\""},
    };
    for (const auto& [value, written] : rows) {
        startOver();
        ASSERT_EQ(recordDefSetSignature(*set_, *add("d"), Pascal(value), 0), 0);
        std::strcpy(find("d")->databasePath, value);
        const std::string text = write(*set_);
        EXPECT_NE(text.find("\r\n\t" + std::string(written) + " signature;\r\n"), std::string::npos) << value;
        EXPECT_EQ(text.find("\r\n\t" + std::string(written) + " databasePath;\r\n") != std::string::npos, *value != 0)
            << value;
        startOver();
        ASSERT_EQ(read(text), 0);
        EXPECT_EQ(pstrView(find("d")->signature), value);
        EXPECT_STREQ(find("d")->databasePath, value);
    }
}

TEST_F(DdfWrite, AppendsToAHandleAndWritesAFileAtOnce) {
    makeOrders();
    const handlePtr handle(newHandle(3));
    std::memcpy(*handle, "abc", 3);
    const std::string path = testing::TempDir() + "both.ddf";
    static_cast<void>(fileDelete(path.c_str(), nullptr, 0));
    ASSERT_EQ(fileCreate(path.c_str(), 0), 0);
    fileHandle file = noFile;
    ASSERT_EQ(fileOpen(path.c_str(), fileWriteOnly, &file, nullptr, 0), 0);
    ASSERT_EQ(ddfWriteDefinition(*find("Orders"), {file, handle.get()}, 0), 0);
    fileClose(file);
    const std::string inHandle(reinterpret_cast<const char*>(*handle), handleSize(handle.get()));
    EXPECT_EQ(inHandle, "abc" + fileText(path));
    EXPECT_EQ(inHandle.substr(3), write(*set_));
    EXPECT_EQ(ddfWriteDefinition(*find("Orders"), {noFile, handle.get()}, 64), 64);
    EXPECT_EQ(handleSize(handle.get()), inHandle.size());
}

TEST_F(DdfWrite, FailuresLeaveTheTargetAsItWas) {
    makeOrders();
    const handlePtr handle(newHandle(0));
    {
        const ScarceMemory none(0);
        EXPECT_EQ(ddfWriteDefinition(*find("Orders"), {noFile, handle.get()}, 0), errDdfGrowHandle);
    }
    const std::string path = testing::TempDir() + "kept.ddf";
    ASSERT_EQ(ddfWriteFile(path.c_str(), *set_, 0), 0);
    const std::string before = fileText(path);
    EXPECT_EQ(before, write(*set_));
    EXPECT_EQ(fileIsPlain((testing::TempDir() + "rds.tmp").c_str()), 0);

    fileHandle file = noFile;
    ASSERT_EQ(fileOpen(path.c_str(), fileReadOnly, &file, nullptr, 0), 0);
    EXPECT_EQ(ddfWriteDefinition(*find("Orders"), {file, nullptr}, 0), errDdfWrite);
    fileClose(file);
    set_->dirty = 1;
    EXPECT_EQ(ddfWriteFile("/nowhere/at/all.ddf", *set_, 0), errDdfCreateTemporary);
    EXPECT_EQ(ddfWriteFile(testing::TempDir().c_str(), *set_, 0), errDdfExchange);
    EXPECT_EQ(set_->dirty, 1);
    EXPECT_EQ(fileText(path), before);
}

TEST_F(DdfWrite, AFileComesBackAsASetOfItsName) {
    makeOrders();
    const std::string path = testing::TempDir() + "spring jobs.ddf";
    set_->dirty = 1;
    ASSERT_EQ(ddfWriteFile(path.c_str(), *set_, 0), 0);
    EXPECT_EQ(set_->dirty, 0);
    recordDefSetRec* list = nullptr;
    recordDefSetRec* set = nullptr;
    ASSERT_EQ(ddfReadFile(path.c_str(), list, set, nullptr, 0), 0);
    EXPECT_EQ(pstrView(set->setName), "spring jobs.ddf");
    EXPECT_EQ(set->setPath, path);
    EXPECT_EQ(recordDefCount(set), 1);
    recordDefSetDiscard(list, set);

    EXPECT_EQ(ddfReadFile("/nowhere/at/all.ddf", list, set, nullptr, 0), errDdfOpen);
    EXPECT_EQ(set, nullptr);
    EXPECT_EQ(list, nullptr);
    const ScarceMemory none(0);
    EXPECT_EQ(ddfReadFile(path.c_str(), list, set, nullptr, 0), errDdfNoMemorySet);
}

}  // namespace

}  // namespace tarnova
