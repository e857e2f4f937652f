#include "data/quick_setup.h"

#include "tests/data/data_fixture.h"

namespace tarnova {
namespace {

class QuickSetup : public DataTest {
 protected:
    quickSetupAnalysis analyze(std::string_view bytes, const quickSetupKnown& known = {}) {
        writeFile(folder + "data", bytes);
        quickSetupAnalysis analysis;
        error = quickSetupAnalyzeAs((folder + "data").c_str(), known, analysis, 0);
        return analysis;
    }
    static std::vector<std::string> namesOf(const quickSetupAnalysis& analysis) {
        std::vector<std::string> names;
        for (const quickSetupField& field : analysis.fields)
            names.push_back(field.name);
        return names;
    }
};

TEST_F(QuickSetup, AnalysesTheFirstLine) {
    using strings = std::vector<std::string>;
    const std::string empty = PMString::ofKey("kZavoQuickSetupEmptyFieldNameKey").bytes();
    struct row {
        const char* name;
        std::string bytes;
        char delimiter, qualifier;
        std::int16_t osType;
        strings fields;
    };
    const row rows[] = {
        {"comma, LF", "a,b c\n1,2\n", ',', 0, osTypeLf, {"a", "b c"}},
        {"tab wins", "a,b\tc\r\n", '\t', 0, osTypeCrLf, {"a,b", "c"}},
        {"semicolon", "a;b c;d\r1;2", ';', 0, osTypeCr, {"a", "b c", "d"}},
        {"caret", "a^b^c;d\n", '^', 0, osTypeLf, {"a", "b", "c_d"}},
        {"one field", "name of it\n", '\t', 0, osTypeLf, {"name of it"}},
        {"double quotes", "\"a,x\",\"b \"\"c\"\"\"\n'1',2\n", ',', '"', osTypeLf, {"a,x", "b \"c\""}},
        {"single quotes", "'a,x',b\n'1','2'\n\"3\",4\n", ',', '\'', osTypeLf, {"a,x", "b"}},
        {"qualifier only further on", "a,b\n\"1,2\",3\n", ',', '"', osTypeLf, {"a", "b"}},
        {"mark and odd start", "\xEF\xBB\xBF\r\nna\xC3\xAFve,b\n", ',', 0, osTypeLf, {"na\xC3\xAFve", "b"}},
        {"8-bit names", "na\xEFve,b\n", ',', 0, osTypeLf, {"na\xC3\xAFve", "b"}},
        {"special characters, equal and empty names",
         " a:b ,A_B,a_b1,,\n",
         ',',
         0,
         osTypeLf,
         {"a_b", "A_B1", "a_b11", empty, empty + "1"}},
        {"no line end", "a,b", ',', 0, osTypeLf, {"a", "b"}},
    };
    for (const auto& [name, bytes, delimiter, qualifier, osType, fields] : rows) {
        const quickSetupAnalysis analysis = analyze(bytes);
        EXPECT_EQ(error, 0) << name;
        EXPECT_EQ(analysis.delimiter, static_cast<std::uint8_t>(delimiter)) << name;
        EXPECT_EQ(analysis.qualifier, static_cast<std::uint8_t>(qualifier)) << name;
        EXPECT_EQ(analysis.osType, osType) << name;
        EXPECT_EQ(namesOf(analysis), fields) << name;
    }
}

TEST_F(QuickSetup, LongNamesAreCutAndStayUnique) {
    const std::string name(40, 'n');
    const quickSetupAnalysis analysis = analyze(name + "," + name + "\n");
    EXPECT_EQ(namesOf(analysis), (std::vector<std::string>{std::string(31, 'n'), std::string(30, 'n') + "1"}));
    std::string accents;
    for (int i = 0; i < 20; ++i)
        accents += "\xC3\xA9";
    EXPECT_EQ(analyze(accents + ",b\n").fields[0].name, accents.substr(0, 30)) << "cut between characters";
}

TEST_F(QuickSetup, QualifierIsFoundAcrossPieces) {
    std::string text = "a,b\n" + std::string((4 << 20) - 5, 'x') + "\n\"1,2\",3";
    for (int i = 0; i < 3; ++i, text.insert(4, "x"))
        EXPECT_EQ(analyze(text).qualifier, '"') << i;
}

TEST_F(QuickSetup, FieldCapacityAndRefusals) {
    std::string line = "f";
    for (int i = 1; i < fieldNameCapacity; ++i)
        line += ",f";
    EXPECT_FALSE(analyze(line + "\n").tooManyFields);
    const quickSetupAnalysis over = analyze(line + ",f\n");
    EXPECT_TRUE(over.tooManyFields);
    EXPECT_EQ(over.fields.size(), fieldNameCapacity);
    analyze(
        "\xFF\xFE"
        "a");
    EXPECT_EQ(error, errSetupUtf16);
    EXPECT_EQ(pstrView(toolkit.pendingErrorParam), folder + "data");
    EXPECT_EQ(analyze("a;b,c\n", {';', std::uint8_t{0}, {}}).fields.size(), 2u) << "told, not found out";
}

TEST_F(QuickSetup, MakesDefinitionAndLinks) {
    Str31 name;
    pstrSet(name, "Shop");
    ASSERT_EQ(recordDefSetNew(name, nullptr, sets, definitions.currentDefSet, 0), 0);
    recordDefSetRec& set = *definitions.currentDefSet;
    recordDefRec* definition = nullptr;
    quickSetupChoices choices;
    choices.nodata = nodataDelete;
    choices.selected = {true, false, true};
    const quickSetupAnalysis analysis = analyze("\"Code\";@Photo;@Logo\n1;2;3\n");
    for (int round = 0; round < 2; ++round) {
        ASSERT_EQ(quickSetupDefinition(set, name, analysis, choices, definition, 0), 0);
        EXPECT_EQ(pstrView(definition->keyField), "Code");
        EXPECT_EQ(definition->fileType, fileTypeSemicolon);
        EXPECT_EQ(pstrView(definition->fDelimiter), ";");
        EXPECT_EQ(definition->osType, osTypeFromFile);
        EXPECT_EQ(definition->textQualifier.enable, 1);
        Str31 field;
        pstrSet(field, "Logo");
        EXPECT_EQ(fieldNumberOf(*definition, field), 3);
        ASSERT_EQ(extractionCount(*definition), 2) << "the temporary link is gone";
        EXPECT_EQ(pstrView(definition->extractions[0]->name), "Code");
        EXPECT_EQ(definition->extractions[0]->type, linkTypeText);
        EXPECT_EQ(definition->extractions[0]->nodata, nodataDelete);
        EXPECT_EQ(pstrView(definition->extractions[1]->field), "Logo");
        EXPECT_EQ(definition->extractions[1]->type, linkTypePicture);
        EXPECT_EQ(definition->extractions[1]->picturePosition, 2);
    }

    choices.isNew = false;
    pstrSet(definition->sqlRowCount.string, "kept");
    ASSERT_EQ(quickSetupDefinition(set, name, analyze("Code,Other\n"), choices, definition, 0), 0);
    EXPECT_EQ(pstrView(definition->sqlRowCount.string), "kept");
    EXPECT_EQ(extractionCount(*definition), 2) << "a remap keeps the links";
    EXPECT_EQ(unmappedExtractions(*definition), std::vector<std::size_t>{1});
    EXPECT_EQ(quickSetupDefinition(set, name, analyze("\n"), choices, definition, 0), errFailed);
}

TEST_F(QuickSetup, IndexFolderKeepsTheNewest) {
    std::filesystem::create_directories(state.indexFolder);
    for (int i = 0; i < 5; ++i) {
        writeFile(state.indexFolder + "/old" + std::to_string(i), "");
        setDate(state.indexFolder + "/old" + std::to_string(i), 1000 + i);
    }
    writeFile(state.indexFolder + "/.hidden", "");
    setDate(state.indexFolder + "/.hidden", 1);
    std::filesystem::create_directory(state.indexFolder + "/folder");
    appPrefs().dataAccessLimit = 3;
    appPrefs().alwaysUseDocumentDDF = 0;
    char path[pathCapacity] = {};
    writeFile(folder + "data", "a\n");
    ASSERT_EQ(makeIndexFile(*makeDefinition({}), (folder + "data").c_str(), path, 0), 0);
    EXPECT_EQ(path, state.indexFolder + "/Test");
    std::vector<std::string> left;
    for (const auto& entry : std::filesystem::directory_iterator(state.indexFolder))
        left.push_back(entry.path().filename());
    std::sort(left.begin(), left.end());
    EXPECT_EQ(left, (std::vector<std::string>{".hidden", "Test", "folder", "old3", "old4"}));

    const auto definition = makeDefinition({"A", "B"});
    const std::string stable = stableIndexPath(*definition, folder + "data");
    EXPECT_EQ(stable, stableIndexPath(*definition, folder + "./data"));
    pstrSet(definition->keyField, "B");
    EXPECT_NE(stable, stableIndexPath(*definition, folder + "data")) << "another way of reading";
    EXPECT_EQ(stableIndexPath(*definition, folder + "nowhere"), "");
}

}  // namespace
}  // namespace tarnova
