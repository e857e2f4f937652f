#include "engine/module/execute.h"

#include "engine/toolkit/memory.h"
#include "tests/engine/module/command_fixture.h"

namespace tarnova {
namespace {

class Execute : public CommandTest {};

TEST_F(Execute, StagesAndMissingRecords) {
    struct testRow {
        const char* name;
        std::uint32_t number;
        bool withReply;
        std::int32_t result;
        std::int32_t status;
    };
    const testRow rows[] = {
        {"unknown number", 4711, true, 0, 0},
        {"unknown number without a reply", 4711, false, -1, 0},
        {"does nothing", 1306, true, 0, 0},
        {"second stage without a reply", 1256, false, -1, 0},
        {"first stage without a reply", 545, false, 0, 0},
        {"mode in force", 1263, true, 0, 0},
        {"mode that isn't attached", 1262, true, 0, -6023},
        {"command of a mode that isn't attached", 560, true, -1, -6023},
        {"not yet available", 562, true, -1, -6023},
        {"not yet available in this mode", 1211, true, 0, -1},
        {"not yet available, first stage", 546, true, 0, -1},
    };
    for (const testRow& row : rows) {
        reply = {};
        reply.status = 77;
        block = {resultNobodyAnswered, row.number, row.withReply ? &reply : nullptr, nullptr};
        door.Execute(block);
        EXPECT_EQ(block.result, row.result) << row.name;
        if (row.withReply) {
            EXPECT_EQ(reply.status, row.status) << row.name;
        }
    }
    EXPECT_EQ(session().engineMode, modeMerge);
}

TEST_F(Execute, ModesAttachAndSwitch) {
    ZavoTallyraModule priceDoor;
    EXPECT_EQ(send(545), 0);
    EXPECT_EQ(reply.isSubset, 0);
    EXPECT_EQ(send(1400), 0);
    EXPECT_EQ(send(1401), 0);
    EXPECT_EQ(session().engineMode, modeMerge) << "merge mode is attached and price mode wasn't last";
    EXPECT_EQ(send(545), 0);
    EXPECT_EQ(reply.isSubset, 1);
    block = {resultNobodyAnswered, 560, &reply, &args};
    priceDoor.Execute(block);
    EXPECT_EQ(session().engineMode, modePrice) << "a command of price mode switches, by either door";
    EXPECT_EQ(send(1288), 0);
    EXPECT_EQ(session().engineMode, modePrice) << "a command of no mode doesn't";
    std::uint16_t mode = 9;
    EXPECT_EQ(send(1256, {nullptr, &mode}), 0);
    EXPECT_EQ(mode, modePrice);

    // The next session finds price mode as the one last used.
    sessionReset();
    settleDataFolder(home.path("app"), home.path("roaming"));
    loadPreferences();
    EXPECT_EQ(send(1401), 0);
    EXPECT_EQ(session().engineMode, modePrice);
    EXPECT_EQ(send(506), -6023) << "merge mode isn't attached";
    EXPECT_EQ(block.result, -1);
    EXPECT_EQ(session().engineMode, modePrice);
}

TEST_F(Execute, OutItemsAreClearedAndNullOnesSkipped) {
    PMString text("old");
    std::int32_t number = 5;
    EXPECT_EQ(send(595, {&number, &text}), -6048) << "in and out items keep what came in";
    EXPECT_EQ(text.bytes(), "old");
    std::int16_t type = 9;
    PMString link("none");
    EXPECT_EQ(send(584, {&link, &type}), -6006);
    EXPECT_EQ(type, 0);
    EXPECT_EQ(send(1256, {}), 0);
}

TEST_F(Execute, ErrorIsShownAndClearedAtTheEnd) {
    session().engineError = errDataFileMissing;
    pstrSet(session().pendingErrorParam, "orders.csv");
    EXPECT_EQ(send(1306), 0);
    ASSERT_EQ(alerts.shown.size(), 1U);
    EXPECT_EQ(alerts.shown[0].number, 64);
    EXPECT_NE(alerts.shown[0].text.find("orders.csv"), std::string::npos) << alerts.shown[0].text;
    EXPECT_EQ(session().engineError, 0);
    EXPECT_EQ(session().pendingErrorParam[0], 0);

    // Nobody watches: it goes to the run log.
    const std::string log = home.path("run.log");
    std::string path = log;
    EXPECT_EQ(send(1204, {path.data()}), 0);
    session().unattended = 1;
    session().engineError = errDataFileMissing;
    EXPECT_EQ(send(1306), 0);
    EXPECT_EQ(alerts.shown.size(), 1U);
    EXPECT_NE(home.bytesOf("run.log").find("\r\n"), std::string::npos);
    std::uint8_t show = 1;
    EXPECT_EQ(send(1213, {&show}), 0);
    session().engineError = errDataFileMissing;
    EXPECT_EQ(send(1306), 0);
    EXPECT_EQ(alerts.shown.size(), 2U);
    EXPECT_EQ(send(1204, {path.data()}), 0);
    EXPECT_EQ(home.bytesOf("run.log"), "(no file)") << "a new log begins without the old one's lines";
}

class EchoModule final : public IZavoKelvaneModule {
 public:
    void Execute(commandBlock& block) override {
        block.result = 0;
        block.reply->outValue = static_cast<std::int32_t>(block.command) + 1;
    }
};

TEST_F(Execute, BrokerFindsModulesBySignature) {
    EchoModule echo;
    const std::uint32_t signature = signatureOf("AQMw");
    EXPECT_EQ(signature, 0x41514D77U);
    const auto call = [&] {
        block = {resultNobodyAnswered, 41, &reply, &args};
        moduleCall(signature, 0, block);
        return block.result;
    };
    EXPECT_EQ(call(), -1018);
    registerModule(signature, &echo);
    EXPECT_EQ(call(), 0);
    EXPECT_EQ(reply.outValue, 42);
    registerModule(signature, nullptr);
    EXPECT_EQ(call(), -1018);
    EXPECT_EQ(send(596), -6050) << "no rules module";
}

TEST_F(Execute, AnnouncedModulesAreRemembered) {
    reply.count = 12;
    for (const std::uint32_t number : {556U, 569U, 585U, 609U, 619U})
        EXPECT_EQ(send(number), 0);
    EXPECT_EQ(session().announcedCount, 12U);
    sessionReset();
    settleDataFolder(home.path("app"), home.path("roaming"));
    loadPreferences();
    const auto* const bytes = reinterpret_cast<const std::uint8_t*>(&appPrefs());
    for (const std::size_t offset : {19641, 19642, 19646, 19647, 19648, 19649})
        EXPECT_EQ(bytes[offset], 1) << offset;
    EXPECT_EQ(bytes[19643], 0);
}

TEST_F(Execute, VersionsTextsAndFolders) {
    EXPECT_EQ(send(401), 0);
    EXPECT_EQ(args.versionMajor, 5U);
    EXPECT_EQ(args.versionMinor, 12U);
    const char* version = nullptr;
    EXPECT_EQ(send(1408, {&version}), 0);
    EXPECT_STREQ(version, "18.8.0.2");
    char* folder = nullptr;
    EXPECT_EQ(send(537, {&folder}), 0);
    const blockPtr<char> owned(folder);
    EXPECT_EQ(folder, session().dataFolder + "/Ostreon Tag Display/TempFiles");
    EXPECT_TRUE(std::filesystem::is_directory(folder));
    EXPECT_EQ(send(537, {}), -1);
    EXPECT_EQ(send(1274), 0);
    EXPECT_EQ(session().panelsStale, 1);
}

TEST_F(Execute, OutputNames) {
    struct testRow {
        std::uint16_t position;
        const char *format, *first, *second, *base, *name;
    };
    const testRow rows[] = {
        {2, "PDF", "1", "50", "mailing", "mailing_1-50.pdf"},    {2, "pdf", "1", "", "mailing", "mailing_1.pdf"},
        {1, "PostScript", "", "50", "mailing", "50_mailing.ps"}, {3, "PDF", "1", "50", "mailing", "mailing.pdf"},
        {2, "VIPP", "1", "2", "mailing", "mailing_1-2"},         {2, "None", "1", "2", "mailing", "mailing_1-2"},
        {2, "something", "1", "2", "mailing", "mailing_1-2"},
    };
    for (const testRow& row : rows) {
        appPrefs().fileAffixPosition = row.position;
        Str255 format, first, second, name;
        pstrSet(format, row.format);
        pstrSet(first, row.first);
        pstrSet(second, row.second);
        pstrSet(name, row.base);
        EXPECT_EQ(send(538, {format, first, second, name}), 0) << row.name;
        EXPECT_EQ(pstrView(name), row.name);
    }
    for (fileExtensionRec& entry : appPrefs().extensionTable)
        entry.fileType = 1;
    Str255 format, name;
    pstrSet(format, "PDF");
    pstrSet(name, "x");
    EXPECT_EQ(send(538, {format, nullptr, nullptr, name}), 1) << "ten rows and none is it";
}

TEST_F(Execute, DriversRegister) {
    const auto enter = [&](std::uint32_t id, const char* name) {
        driverRegistrationRec registration{};
        registration.driverId = id;
        registration.driverFlagB = 3;
        pstrSet(reinterpret_cast<Str63&>(registration.driverName), name);
        registration.driverModule = signatureOf("AqmD");
        std::memcpy(&reply, &registration, sizeof registration);
        EXPECT_EQ(send(243), 0);
    };
    const auto idAt = [](std::size_t row) { return appPrefs().driverTable[row].driverId; };
    enter(11007, "PDF");
    EXPECT_EQ(idAt(0), 1000U);
    EXPECT_EQ(idAt(1), 11007U);
    enter(11011, "PostScript");
    EXPECT_EQ(idAt(0), 11011U) << "takes the first row whatever it holds";
    enter(11005, "VIPP");
    EXPECT_EQ(idAt(2), 11005U);
    EXPECT_EQ(idAt(3), 1003U);
    EXPECT_EQ(pstrView(appPrefs().driverTable[3].driverName), "Xerox VIPP (Database Mode)");
    EXPECT_EQ(appPrefs().driverTable[3].driverModule, 0U);
    EXPECT_EQ(appPrefs().driverTable[3].driverFlagB, 3);
    enter(11005, "VIPP");
    EXPECT_EQ(idAt(5), 0U) << "there is an entry 1003 already";
    enter(3000, "Xeikon");
    EXPECT_EQ(idAt(5), 1009U);
    for (int i = 0; i < 9; ++i)
        enter(11001, "PPML");
    EXPECT_EQ(idAt(9), 11001U);
    EXPECT_EQ(appPrefs().driverTable[9].driverModule, signatureOf("AqmD"));
}

TEST_F(Execute, LogLines) {
    std::string path = home.path("lines.log"), line = "first line";
    EXPECT_EQ(send(1204, {path.data()}), 0);
    std::uint32_t length = 5;
    EXPECT_EQ(send(1214, {line.data(), &length}), 0);
    length = 5000;
    EXPECT_EQ(send(1214, {line.data(), &length}), 0) << "held to the text";
    EXPECT_EQ(home.bytesOf("lines.log"), "first\r\nfirst line\r\n");
    EXPECT_EQ(send(1214, {}), -1);
}

}  // namespace
}  // namespace tarnova
