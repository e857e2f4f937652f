#include "engine/toolkit/memory.h"
#include "tests/engine/module/command_fixture.h"

namespace tarnova {
namespace {

class DataCommands : public CommandTest {
 protected:
    void SetUp() override {
        CommandTest::SetUp();
        EXPECT_EQ(send(1400), 0);
        EXPECT_EQ(send(1401), 0);
    }
    /// Command 525; the value, or "(none)".
    std::string fieldValue(const char* link, std::uint32_t record, const char* key, std::int32_t expected) {
        args = {};
        reply = {};
        char* value = nullptr;
        args.item0 = &value;
        args.num0 = record;
        pstrSet(args.text0, key);
        pstrSet(reinterpret_cast<Str255&>(reply.text), link);
        EXPECT_EQ(send(525), expected) << link << " " << record << " " << key;
        const blockPtr<char> owned(value);
        if (value == nullptr) return "(none)";
        EXPECT_EQ(args.num0, std::strlen(value));
        return value;
    }
};

TEST_F(DataCommands, OpeningCountsAndRefuses) {
    IDFile data(home.file("customers.csv", customersData));
    session().currentDefName[0] = 0;
    EXPECT_EQ(send(503), -6002);
    useCustomers();
    EXPECT_EQ(send(529), -6018) << "no data file is chosen";
    data.path().copy(reinterpret_cast<char*>(reply.text), replyTextBytes - 1);
    EXPECT_EQ(send(503), 0);
    EXPECT_EQ(reply.count, 3U);
    EXPECT_EQ(reply.hasHeader, 1);
    EXPECT_EQ(session().unattended, 0);
    reply = {};
    EXPECT_EQ(send(529), 0);
    EXPECT_EQ(reply.count, 3U);
    EXPECT_EQ(send(1292), 0);
    EXPECT_EQ(pstrView(reply.text), "custome");

    std::uint32_t count = 9;
    IDFile missing(home.path("missing.csv"));
    EXPECT_EQ(send(1209, {&missing, &count}), -6018);
    EXPECT_EQ(count, 0U);
    EXPECT_EQ(session().unattended, 0);
    EXPECT_EQ(send(559, {&data, &count}), 0);
    EXPECT_EQ(count, 3U);
    EXPECT_EQ(session().unattended, 1) << "559 leaves it set";
    EXPECT_EQ(send(1209, {nullptr, &count}), 0) << "the file that the definition has";
    EXPECT_EQ(count, 3U);
}

TEST_F(DataCommands, FieldValues) {
    openCustomers();
    EXPECT_EQ(fieldValue("City", 1, "", 0), "Graz");
    EXPECT_EQ(fieldValue("City", 2, "", 0), "M\u00fcnchen");
    EXPECT_EQ(fieldValue("City", 3, "", 0), "") << "no data is no error";
    EXPECT_EQ(fieldValue("City", 4, "", -6042), "(none)") << "behind the file";
    EXPECT_EQ(fieldValue("City", 0xFFFFFFFF, "", -6042), "(none)");
    EXPECT_EQ(fieldValue("City", 0, "B2", 0), "M\u00fcnchen");
    EXPECT_EQ(fieldValue("City", 0, "Z9", -6042), "(none)");
    EXPECT_EQ(fieldValue("Street", 1, "", -6006), "(none)");
    session().rangeLast = 1;
    EXPECT_EQ(fieldValue("City", 2, "", 0), "") << "behind the run's range nothing is fetched";
    session().rangeLast = 0;
    session().recordList = {1, recordListPad, 0};
    EXPECT_EQ(fieldValue("Code", 1, "", 0), "B2");
    EXPECT_EQ(fieldValue("Code", 2, "", 0), "");
    EXPECT_EQ(fieldValue("Code", 3, "", 0), "A1");
    session().recordList.clear();
    appPrefs().hasHeaderRecord = 0;
    EXPECT_EQ(fieldValue("Code", 1, "", 0), "Code") << "without a header the first line is a record";
    appPrefs().hasHeaderRecord = 1;

    session().currentRecordDef->importTransTable.enable = 1;
    pstrSet(session().currentRecordDef->importTransTable.string, "Mac");
    EXPECT_EQ(fieldValue("City", 1, "", -6015), "(none)");
    session().currentDefName[0] = 0;
    EXPECT_EQ(fieldValue("City", 1, "", -6002), "(none)");
}

TEST_F(DataCommands, WindowsBytesComeOutAsUtf8) {
    useCustomers();
    session().currentRecordDef->dataType = dataTypeEightBit;
    IDFile data(home.file("old.csv", "Code,City\nA1,K\xF6ln\n"));
    std::uint32_t count = 0;
    ASSERT_EQ(send(1209, {&data, &count}), 0);
    EXPECT_EQ(fieldValue("City", 1, "", 0), "K\u00f6ln");
}

TEST_F(DataCommands, RecordAndKeyValues) {
    openCustomers();
    struct testRow {
        std::uint32_t record;
        const char *link, *style;
        std::int32_t status;
        const char* value;
    };
    const testRow rows[] = {
        {1, "City", "", 0, "Graz"}, {3, "City", "", 0, ""},     {4, "City", "", -6042, ""},
        {0, "City", "", -6042, ""}, {1, "Town", "", -6006, ""}, {1, "City", "Sale", -6029, ""},
        {1, "Nowhere", "", 0, ""},
    };
    for (testRow row : rows) {
        PMString link(row.link), style(row.style), value("old");
        std::uint32_t length = 9;
        EXPECT_EQ(send(1208, {&row.record, &link, &style, nullptr, &value, &length}), row.status) << row.link;
        EXPECT_EQ(value.bytes(), row.value);
        EXPECT_EQ(length, std::strlen(row.value));
        EXPECT_EQ(session().unattended, 0);
    }
    Str255 key;
    pstrSet(key, "B2");
    PMString link("Code"), value;
    EXPECT_EQ(send(1242, {key, &link, nullptr, nullptr, &value}), 0);
    EXPECT_EQ(value.bytes(), "B2");
    EXPECT_EQ(session().engineMode, modePrice);
}

TEST_F(DataCommands, ListsOfValues) {
    openCustomers();
    PMString link("Code"), empty, unknown("Town"), secondLink("City");
    std::vector<PMString> list, secondList;
    EXPECT_EQ(send(1258, {&empty, &list}), -6072);
    EXPECT_EQ(send(1258, {&unknown, &list}), -6073);
    EXPECT_EQ(send(1258, {&link, &list, &unknown, &secondList}), -6074);
    EXPECT_EQ(send(1258, {&link, &list, &secondLink, &secondList}), 0);
    EXPECT_EQ(list, (std::vector<PMString>{PMString("A1"), PMString("B2"), PMString("C3")}));
    EXPECT_EQ(secondList, (std::vector<PMString>{PMString("Graz"), PMString("M\u00fcnchen"), PMString("")}));

    std::vector<valueGroup> groups(2);
    for (const auto& [group, name] : {std::pair{0, "Code"}, {0, "City"}, {1, "City"}}) {
        linkAndStyleRec pair{};
        pstrSet(pair.linkName, name);
        groups[static_cast<std::size_t>(group)].push_back(pair);
    }
    std::int32_t first = 2, last = 3;
    EXPECT_EQ(send(1234, {&groups, &first, &last, &list}), 0);
    EXPECT_EQ(list, (std::vector<PMString>{PMString("B2M\u00fcnchen"), PMString("M\u00fcnchen"), PMString("C3"),
                                           PMString("")}));
    last = 4;
    EXPECT_EQ(send(1234, {&groups, &first, &last, &list}), -6028) << "a record behind the file";
    pstrSet(groups[0][0].linkName, "Town");
    EXPECT_EQ(send(1234, {&groups, &first, &last, &list}), -6029);
    session().currentRecordDef->databasePath[0] = 0;
    EXPECT_EQ(send(1258, {&link, &list}), -6018);
}

TEST_F(DataCommands, DefinitionsAndLinks) {
    useCustomers();
    Str255 file = {};
    reply.auxPointer = file;
    EXPECT_EQ(send(528), 0);
    EXPECT_EQ(pstrView(reply.text), "Customers");
    EXPECT_EQ(pstrView(file), "Record Definitions");

    reply.inValue = 0;
    EXPECT_EQ(send(512), 0);
    EXPECT_EQ(pstrView(reply.text), "City");
    EXPECT_EQ(reply.outValue, 2);
    EXPECT_EQ(reply.outFlag, 1);
    EXPECT_EQ(reply.outWord, 2U);
    reply.inValue = 2;
    EXPECT_EQ(send(512), 0);
    EXPECT_EQ(reply.outValue, -1) << "its field isn't in the list";
    reply.inValue = 3;
    EXPECT_EQ(send(512), -6006);
    reply.inValue = 0xFFFFFFFF;
    EXPECT_EQ(send(512), -6006);

    std::int32_t number = 2;
    PMString name;
    EXPECT_EQ(send(595, {&number, &name}), 0);
    EXPECT_EQ(name.bytes(), "City");
    number = 3;
    EXPECT_EQ(send(595, {&number, &name}), -6048);
    number = 0;
    name.set("code");
    EXPECT_EQ(send(1237, {&number, &name}), 0);
    EXPECT_EQ(number, 1);
    EXPECT_EQ(name.bytes(), "Code");
    number = 0;
    name.set("Street");
    EXPECT_EQ(send(1237, {&number, &name}), -6049);

    std::uint32_t count = 0;
    EXPECT_EQ(send(594, {nullptr, nullptr, nullptr, nullptr, &count}), 0);
    EXPECT_EQ(count, 3U);
    PMString link("city"), linkName, notes, prefix;
    std::int16_t nodata = 0;
    EXPECT_EQ(send(594, {nullptr, nullptr, &link, nullptr, &count, &linkName, nullptr, nullptr, nullptr, &nodata,
                         nullptr, &notes, nullptr, &prefix}),
              0);
    EXPECT_EQ(linkName.bytes(), "City");
    EXPECT_EQ(notes.bytes(), "of \"A\"");
    EXPECT_EQ(prefix.bytes(), "Dear ");
    EXPECT_EQ(nodata, 2);
    number = 3;
    EXPECT_EQ(send(594, {&number}), -6006);

    std::int16_t type = 0, access = 9;
    PMString code("Code"), definition("Customers"), unknown("Others"), keyField, qualifier;
    EXPECT_EQ(send(584, {&code, &type}), 0);
    EXPECT_EQ(type, 1);
    EXPECT_EQ(send(593, {nullptr, &unknown}), -6002);
    EXPECT_EQ(send(593, {&name, &definition, &access, &keyField, nullptr, nullptr, nullptr, &qualifier}), 0);
    EXPECT_EQ(access, 0);
    EXPECT_EQ(keyField.bytes(), "Code");
    EXPECT_EQ(qualifier.bytes(), "\"");
}

TEST_F(DataCommands, DefinitionFilesComeAndGo) {
    useCustomers();
    IDFile missing(home.path("missing.ddf")), bad(home.file("bad.ddf", "nothing")), out(home.path("out.ddf"));
    EXPECT_EQ(send(1405, {&missing}), 45);
    EXPECT_EQ(alerts.shown.back().number, 45);
    EXPECT_EQ(send(1405, {&bad}), 108);
    EXPECT_EQ(send(528), 0);
    EXPECT_EQ(pstrView(reply.text), "Customers") << "a failed import leaves what was there";
    EXPECT_EQ(send(1404, {&out}), 0);
    EXPECT_NE(home.bytesOf("out.ddf").find("\"Customers\" recordDefinition;"), std::string::npos);
    IDFile nowhere(home.path("no folder/out.ddf"));
    EXPECT_EQ(send(1404, {&nowhere}), 49);

    // The next session reads what this one imported, and begins with the default definition.
    sessionReset();
    settleDataFolder(home.path("app"), home.path("roaming"));
    loadPreferences();
    ASSERT_EQ(openDefinitionStore(0), 0);
    EXPECT_EQ(recordDefCount(session().currentDefSet), 2);
    Str31 defaultName;
    defaultDefName(defaultName);
    EXPECT_EQ(pstrView(session().currentDefName), pstrView(defaultName));
    appPrefs().alwaysUseDocumentDDF = 0;
    ASSERT_EQ(openDefinitionStore(0), 0);
    Str255 name;
    pstrSet(name, "nobody");
    EXPECT_EQ(send(1207, {nullptr, name}), -6002);
    EXPECT_EQ(send(1207, {}), -6005);
}

TEST_F(DataCommands, DamagedStoreLeavesTheSessionAsItIs) {
    useCustomers();
    ASSERT_EQ(fileWriteWhole(definitionStorePath().c_str(), "no signature", 0), 0);
    EXPECT_EQ(openDefinitionStore(0), 108);
    EXPECT_EQ(pstrView(session().currentDefName), "Customers");
}

}  // namespace
}  // namespace tarnova
