#include "data/data_source.h"

#include "tests/data/data_fixture.h"
#include "tests/engine/toolkit/recording_alerts.h"

namespace tarnova {
namespace {

class DataSource : public DataTest {
 protected:
    // The date of the index file tells whether an open built it anew.
    bool rebuilds(const recordDefRec& definition) {
        setDate(definition.databasePath, 5000);
        EXPECT_NE(open(definition), nullptr) << error;
        return std::filesystem::last_write_time(definition.databasePath) != dateOf5000(definition);
    }

 private:
    static std::filesystem::file_time_type dateOf5000(const recordDefRec& definition) {
        const std::string probe = std::string(definition.databasePath) + ".probe";
        writeFile(probe, "");
        setDate(probe, 5000);
        const auto date = std::filesystem::last_write_time(probe);
        std::filesystem::remove(probe);
        return date;
    }
};

TEST_F(DataSource, CountsRecords) {
    struct row {
        const char* name;
        std::string bytes;
        std::uint32_t trimmed, whole;
    };
    const row rows[] = {
        {"final delimiter", "a,1\nb,2\n", 2, 3},
        {"without it", "a,1\nb,2", 2, 2},
        {"only delimiters", "\n\n\n", 0, 4},
        {"empty", "", 0, 1},
        {"empty line in the middle", "a\n\nb\n", 3, 4},
        {"delimiters are no content", "a,1\n,\n", 1, 3},
        {"quotes are content", "a\n\"\"\n", 2, 3},
    };
    for (const auto& [name, bytes, trimmed, whole] : rows) {
        const auto definition = makeDefinition({"Key", "Value"});
        useData(*definition, bytes, name);
        dataSourceRec* const source = open(*definition);
        ASSERT_NE(source, nullptr) << name;
        EXPECT_EQ(count(source), trimmed) << name;
        EXPECT_EQ(count(source, false), whole) << name;
    }
    EXPECT_EQ(count(nullptr), 0u);
}

TEST_F(DataSource, OpenRebuildsWhenTheIndexNoLongerFits) {
    const auto definition = makeDefinition({"Key", "Value", "Other"});
    const std::string data = useData(*definition, "a,1,x\nb,2,y\n");
    setDate(data, 1000);
    EXPECT_TRUE(rebuilds(*definition)) << "a placeholder";
    EXPECT_FALSE(rebuilds(*definition));
    dataSourceCloseAll();
    EXPECT_FALSE(rebuilds(*definition)) << "loaded again from the file";

    setDate(data, 2000);
    EXPECT_TRUE(rebuilds(*definition)) << "newer data";
    setDate(data, 500);
    EXPECT_FALSE(rebuilds(*definition)) << "older data";

    struct row {
        const char* name;
        void (*change)(recordDefRec&);
        bool rebuilt;
    };
    const row rows[] = {
        {"key field renamed",
         [](recordDefRec& d) { pstrSet(d.fields[0].fieldName, "Code"), pstrSet(d.keyField, "Code"); }, false},
        {"key field moved", [](recordDefRec& d) { pstrSet(d.keyField, "Value"); }, true},
        {"custom delimiter that isn't used", [](recordDefRec& d) { pstrSet(d.fDelimiter, "|"); }, false},
        {"custom delimiter in use", [](recordDefRec& d) { d.fileType = fileTypeCustom; }, true},
        {"another custom delimiter", [](recordDefRec& d) { pstrSet(d.fDelimiter, ","); }, true},
        {"case", [](recordDefRec& d) { d.useKeyfieldCase = 0; }, true},
        {"encoding", [](recordDefRec& d) { d.dataType = dataTypeFromBytes; }, true},
        {"record delimiter", [](recordDefRec& d) { d.osType = osTypeFromFile; }, true},
        {"qualifier", [](recordDefRec& d) { pstrSet(d.textQualifier.string, "'"); }, true},
        {"qualifier off", [](recordDefRec& d) { d.textQualifier.enable = 0; }, true},
        {"qualifier that is off", [](recordDefRec& d) { pstrSet(d.textQualifier.string, "*"); }, false},
        {"no key field", [](recordDefRec& d) { d.keyField[0] = 0; }, true},
    };
    for (const auto& [name, change, rebuilt] : rows) {
        change(*definition);
        EXPECT_EQ(rebuilds(*definition), rebuilt) << name;
        EXPECT_FALSE(rebuilds(*definition)) << name << ", opened again";
    }
    EXPECT_EQ(state.dataSourceList->next, state.dataSourceList.get()) << "one source all the time";
}

TEST_F(DataSource, DefinitionEditedInPlaceTakesEffect) {
    const auto definition = makeDefinition({"Key", "Value"});
    useData(*definition,
            "a,1\x0B"
            "2\n");
    EXPECT_EQ(fetchKey(open(*definition), "a", "Value"),
              "1\x0B"
              "2");
    definition->vtTranslation.enable = 1;
    pstrSet(definition->vtTranslation.string, "\\n");
    EXPECT_EQ(fetchKey(open(*definition), "a", "Value"), "1\r2");
    pstrSet(definition->fields[1].fieldName, "Worth");
    dataSourceRec* const source = open(*definition);
    EXPECT_EQ(fetchKey(source, "a", "Worth"), "1\r2");
    fetchKey(source, "a", "Value");
    EXPECT_EQ(status, fetchNoData);

    Str31 alias;
    pstrSet(alias, "Zed");
    insertFieldName(*definition, 1, alias);
    EXPECT_EQ(fetchKey(open(*definition), "a", "Zed"), "a");
}

TEST_F(DataSource, ChangedDataComesWithTheNextOpen) {
    const auto definition = makeDefinition({"Key", "Value"});
    const std::string data = useData(*definition, "a,1\n");
    setDate(data, 1000);
    EXPECT_EQ(fetchKey(open(*definition), "a", "Value"), "1");
    writeFile(data, "a,22\nb,3\n");
    dataSourceRec* const source = open(*definition);
    EXPECT_EQ(fetchKey(source, "a", "Value"), "22");
    EXPECT_EQ(count(source), 2u);
    EXPECT_STREQ(state.currentDataFilePath, data.c_str());
}

TEST_F(DataSource, OpenTellsWhatIsMissing) {
    const auto definition = makeDefinition({"Key"});
    EXPECT_EQ(open(*definition), nullptr);
    EXPECT_EQ(openStatus, openStatusNothing) << "no path";
    EXPECT_EQ(error, 0);

    (folder + "no-index").copy(definition->databasePath, pathCapacity - 1);
    EXPECT_EQ(open(*definition), nullptr);
    EXPECT_EQ(openStatus, openStatusNoIndex);

    writeFile(folder + "no-index", "short");
    EXPECT_EQ(open(*definition), nullptr);
    EXPECT_EQ(openStatus, openStatusBadIndex);

    const std::string data = useData(*definition, "a\n");
    std::filesystem::remove(data);
    EXPECT_EQ(open(*definition), nullptr);
    EXPECT_EQ(openStatus, openStatusBadIndex) << "data file gone before it was indexed";

    writeFile(data, "a\n");
    EXPECT_NE(open(*definition), nullptr);
    std::filesystem::remove(data);
    EXPECT_EQ(open(*definition), nullptr);
    EXPECT_EQ(error, errDataFileDate);
    EXPECT_EQ(pstrView(toolkit.pendingErrorParam), data);
    EXPECT_STREQ(state.currentDataFilePath, "");
    EXPECT_EQ(state.dataSourceList, nullptr) << "what can't be opened isn't kept";

    dataSourceRec* source = nullptr;
    EXPECT_EQ(dataSourceOpen(definition.get(), 1, 0, 0, source, openStatus, nullptr, nullptr, nullptr, 42), 42);
}

TEST_F(DataSource, GivesTheEncodingOfTheIndex) {
    const auto definition = makeDefinition({"Key"});
    definition->dataType = dataTypeFromBytes;
    useData(*definition, "\xC3\xA4\n");
    dataSourceRec* source = nullptr;
    std::uint16_t encoding = 9;
    EXPECT_EQ(dataSourceOpen(definition.get(), 1, 0, 0, source, openStatus, &encoding, nullptr, nullptr, 0), 0);
    EXPECT_EQ(encoding, resolvedUtf8);
    EXPECT_EQ(dataSourceOpen(nullptr, 1, 0, 0, source, openStatus, &encoding, nullptr, nullptr, 0), errNoEncoding);
}

TEST_F(DataSource, ModesWithoutTheirModuleReadTheTextFile) {
    const auto definition = makeDefinition({"Key", "Value"});
    definition->dataAccessMode = dataAccessOdbc;
    pstrSet(definition->odbcDataSourceName, "shop");
    useData(*definition, "a,1\n");
    EXPECT_EQ(fetchKey(open(*definition), "a", "Value"), "1");

    state.sourceModuleAnswers = [](std::int16_t) { return true; };
    EXPECT_EQ(open(*definition), nullptr);
    EXPECT_EQ(error, errOdbcUnavailable);
    definition->dataAccessMode = dataAccessHttp;
    EXPECT_EQ(open(*definition), nullptr);
    EXPECT_EQ(error, 0) << "no base address: nothing to open";
    EXPECT_EQ(openStatus, openStatusNothing);
    pstrSet(definition->httpDataSourceName, "URL");
    open(*definition);
    EXPECT_EQ(error, errHttpUnavailable);
}

TEST_F(DataSource, SaysWhetherItIsInSyncWithoutOpening) {
    const auto definition = makeDefinition({"Key", "Value"});
    const std::string data = useData(*definition, "a,1\n");
    setDate(data, 1000);
    bool exists = false, inSync = true;
    char path[pathCapacity];
    const auto ask = [&] {
        EXPECT_EQ(dataSourceInSync(definition.get(), exists, inSync, path, nullptr, nullptr, 0), 0);
        return std::pair(exists, inSync);
    };
    EXPECT_EQ(ask(), std::pair(true, false)) << "a placeholder";
    EXPECT_EQ(path, data);
    open(*definition);
    EXPECT_EQ(ask(), std::pair(true, true));
    definition->useKeyfieldCase = 0;
    EXPECT_EQ(ask(), std::pair(true, false)) << "another definition";
    definition->useKeyfieldCase = 1;
    setDate(data, 2000000000);
    EXPECT_EQ(ask(), std::pair(true, false)) << "newer data";
    std::filesystem::remove(data);
    EXPECT_EQ(ask(), std::pair(false, false));
    definition->databasePath[0] = 0;
    EXPECT_EQ(ask(), std::pair(false, false));
}

class ChosenSource : public DataSource {
 protected:
    void SetUp() override {
        DataSource::SetUp();
        Str31 setName;
        pstrSet(setName, "set");
        ASSERT_EQ(recordDefSetNew(setName, nullptr, sets, definitions.currentDefSet, 0), 0);
        pstrSet(name, "Shop");
        ASSERT_EQ(recordDefNew(*definitions.currentDefSet, name, definition, 0), 0);
        recordDefRec& made = *definition;
        const auto plain = makeDefinition({"Key", "Value"});
        std::memcpy(made.fields, plain->fields, sizeof made.fields);
        pstrCopy(made.keyField, plain->keyField);
        made.fileType = fileTypeComma;
        made.osType = osTypeLf;
        appPrefs().alwaysUseDocumentDDF = 0;
        data = folder + "chosen.csv";
        writeFile(data, "a,1\n");
    }
    dataSourceRec* openWith(std::uint8_t force, const char* givenPath) {
        dataSourceRec* source = nullptr;
        error = dataSourceOpen(definition, 0, 0, force, source, openStatus, nullptr, nullptr, givenPath, 0);
        return source;
    }
    Str31 name;
    recordDefRec* definition = nullptr;
    std::string data;
};

TEST_F(ChosenSource, AsksForADataFileAndKeepsItsIndex) {
    EXPECT_EQ(openWith(0, nullptr), nullptr) << "nobody to ask counts as cancelled";
    EXPECT_EQ(openStatus, openStatusNothing);
    EXPECT_EQ(error, 0);

    dataSourceRec* source = openWith(0, data.c_str());
    ASSERT_NE(source, nullptr) << error;
    EXPECT_EQ(fetchKey(source, "a", "Value"), "1");
    EXPECT_EQ(source->indexPath, state.indexFolder + "/Shop") << "the index has the definition's name";

    recordDefRec* synced = nullptr;
    static int saves = 0;
    saves = 0;
    state.saveDefinitionToDocument = [](errorWord err) -> errorWord { return ++saves, err; };
    ASSERT_EQ(syncDefinitionWithSource(name, source, synced, 0), 0);
    ASSERT_NE(synced, nullptr);
    EXPECT_EQ(synced->databasePath, state.indexFolder + "/Shop");
    EXPECT_EQ(pstrView(synced->keyField), "Key");
    recordDefRec* again = nullptr;
    ASSERT_EQ(syncDefinitionWithSource(name, source, again, 0), 0);
    EXPECT_EQ(again, synced) << "nothing to save the second time";
    EXPECT_EQ(saves, 1);
}

TEST_F(ChosenSource, ForceReplacesTheIndex) {
    const std::string other = folder + "other.csv";
    writeFile(other, "b,2\n");
    dataSourceRec* source = openWith(0, data.c_str());
    ASSERT_EQ(syncDefinitionWithSource(name, source, definition, 0), 0);
    static std::string picked;
    picked = other;
    state.pickDataFile = [](const PMString& prompt, std::string& path) {
        EXPECT_NE(prompt.bytes().find("Shop"), std::string::npos);
        path = picked;
        return true;
    };
    source = openWith(1, nullptr);
    ASSERT_NE(source, nullptr) << error;
    EXPECT_EQ(fetchKey(source, "b", "Value"), "2");
    EXPECT_EQ(state.currentDataFilePath, other);
    EXPECT_TRUE(state.indexDeleteQueue.empty());
}

TEST_F(ChosenSource, PresetFileIsTakenWhileNobodyWatches) {
    toolkit.unattended = 1;
    data.copy(state.presetDataFilePath, pathCapacity - 1);
    EXPECT_NE(openWith(0, nullptr), nullptr);
    definition->databasePath[0] = 0;
    std::memcpy(state.presetDataFilePath, "/nowhere", 9);
    EXPECT_EQ(openWith(0, nullptr), nullptr);
    EXPECT_EQ(error, errPresetFileMissing);
}

TEST_F(ChosenSource, RefusedEncodingTouchesNothing) {
    RecordingAlerts alerts;
    alerts.answer = 2;
    writeFile(data,
              "\xFF\xFE"
              "a");
    EXPECT_EQ(openWith(0, data.c_str()), nullptr);
    EXPECT_EQ(openStatus, openStatusUtf16Refused);
    EXPECT_FALSE(std::filesystem::exists(state.indexFolder + "/Shop"));
}

}  // namespace
}  // namespace tarnova
