#include "data/translation_table.h"

#include "tests/data/data_fixture.h"

namespace tarnova {
namespace {

class TranslationTable : public DataTest {
 protected:
    void SetUp() override {
        DataTest::SetUp();
        std::filesystem::create_directories(folder + "TransTable");
        toolkit.unattended = 1;
        toolkit.runLogPath = folder + "log";
    }
    void write(std::string_view bytes) { writeFile(folder + "TransTable/table", bytes); }
    static std::int16_t load(std::string_view name) {
        Str255 table;
        pstrSet(table, name);
        return loadImportTable(table);
    }
    static std::string applied(std::string text) {
        auto length = static_cast<std::uint32_t>(text.size());
        applyImportTable(reinterpret_cast<std::uint8_t*>(text.data()), length);
        return text.substr(0, length);
    }
};

TEST_F(TranslationTable, Lines) {
    const std::string longest = "65\t66" + std::string(250, ' '), longer = longest + ' ';
    struct testRow {
        const char* name;
        std::string line;
        std::uint32_t fault;
        const char* applied;  // "ABC" through the table
    };
    const testRow rows[] = {
        {"removes", "65", 0, "BC"},
        {"nothing behind the tab removes", "65\t", 0, "BC"},
        {"decimal", "65\t66", 0, "BBC"},
        {"hexadecimal", "$41\t$42", 0, "BBC"},
        {"lower case", "<A>\t$6a", 0, "jBC"},
        {"literal", "<A>\t<B>", 0, "BBC"},
        {"behind a literal nothing counts", "<A> stays\t<B>x", 0, "BBC"},
        {"several tabs", "65\t\t67", 0, "CBC"},
        {"ends are trimmed",
         " \xCA"
         "65\t66\xCA\r",
         0, "BBC"},
        {"later lines win", "65\n65\t67", 0, "CBC"},
        {"CR", "65\t66\r66\t67", 0, "BCC"},
        {"CR LF", "65\t66\r\n66\t67\r\n", 0, "BCC"},
        {"blank and empty lines", "\n \n65", 0, "BC"},
        {"comment", ";65\n", 0, "ABC"},
        {"the longest line", longest, 0, "BBC"},
        {"a longer one", longer, 1, nullptr},
        {"a blank doesn't separate", "1\t1\n65 66", 2, nullptr},
        {"256", "256\t1", 1, nullptr},
        {"four digits", "1000", 1, nullptr},
        {"a comment behind an entry", "65\t66;", 1, nullptr},
        {"one hexadecimal digit", "$4\t66", 1, nullptr},
        {"a literal without its end", "<A\t66", 1, nullptr},
        {"a number with a sign", "-1", 1, nullptr},
    };
    for (const auto& [name, line, fault, result] : rows) {
        transTableRec table = identityTransTable();
        EXPECT_EQ(readTransTable(line, table), fault) << name;
        if (result == nullptr) continue;
        pstrSet(table.tableName, "t");
        state.importTable = table;
        EXPECT_EQ(applied("ABC"), result) << name;
    }
}

TEST_F(TranslationTable, IsReadAgainOnlyWhenItChanged) {
    const std::string path = folder + "TransTable/table";
    write("65\t66");
    setDate(path, 1000);
    EXPECT_EQ(load("table"), transTableLoaded);
    EXPECT_EQ(applied("A"), "B");
    write("65\t67");
    setDate(path, 1000);
    EXPECT_EQ(load("table"), transTableLoaded);
    EXPECT_EQ(applied("A"), "B") << "name and date are the same";
    setDate(path, 2000);
    EXPECT_EQ(load("table"), transTableLoaded);
    EXPECT_EQ(applied("A"), "C");
    write("65\n6 6");
    setDate(path, 3000);
    EXPECT_EQ(load("table"), transTableLoaded) << "a table is used in full or not at all";
    EXPECT_EQ(applied("A"), "A");
    EXPECT_NE(readFile(toolkit.runLogPath).find("\"table\" has an error in line 2"), std::string::npos);
    EXPECT_EQ(load("gone"), transTableMissing);
    EXPECT_EQ(load("gone"), transTableMissing);
    EXPECT_EQ(applied("A"), "A");
    write("65\t66");
    EXPECT_EQ(load("table"), transTableLoaded);
    EXPECT_EQ(load(""), transTableLoaded);
    EXPECT_EQ(applied("A"), "A");
}

TEST_F(TranslationTable, ValuesGoThroughIt) {
    const auto definition = makeDefinition({"Name"});
    useData(*definition, "A,x\nBA\n");
    dataSourceRec* const source = open(*definition);
    write("65\n66\t67");
    EXPECT_EQ(load("table"), transTableLoaded);
    EXPECT_EQ(fetchNumber(source, 1, "Name"), "C");
    fetchNumber(source, 0, "Name");
    EXPECT_EQ(status, fetchNoData) << "nothing of the value is left";

    definition->exportTransTable.enable = 1;
    pstrSet(definition->exportTransTable.string, "gone");
    EXPECT_EQ(loadTablesOf(*definition, 0), errExportTranslation);
    EXPECT_EQ(pstrView(state.importTable.tableName), "") << "a table whose flag is off is none";
    definition->importTransTable = definition->exportTransTable;
    EXPECT_EQ(loadTablesOf(*definition, 0), errImportTranslation);
    EXPECT_EQ(loadTablesOf(*definition, 7), 7);
}

TEST_F(TranslationTable, TheTemplateComesWithItsFolder) {
    EXPECT_EQ(writeTransTableTemplate(0), 0);
    EXPECT_TRUE(std::filesystem::is_empty(folder + "TransTable"));
    std::filesystem::remove_all(folder + "TransTable");
    EXPECT_EQ(writeTransTableTemplate(0), 0);
    const std::string text = readFile(folder + "TransTable/Standard Template");
    EXPECT_TRUE(text.starts_with(";\r\n; Kelvane Translation Table\r\n"));
    EXPECT_TRUE(text.ends_with("\r\n;\r\n;\r\n0\t0\r\n" + text.substr(text.find("1\t1\r\n"))));
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 23 + 256);
    transTableRec table = identityTransTable();
    EXPECT_EQ(readTransTable(text, table), 0U);
    EXPECT_EQ(std::memcmp(table.map, identityTransTable().map, sizeof table.map), 0);
}

}  // namespace
}  // namespace tarnova
