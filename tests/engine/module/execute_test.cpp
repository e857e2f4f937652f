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
        {"not yet available", 1273, true, -1, -6023},
        {"not yet available in this mode", 1240, true, 0, -1},
        {"not yet available, first stage", 2021, true, 0, -1},
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

/// Answers with the command's number and a status.
class EchoModule final : public IZavoKelvaneModule {
 public:
    void Execute(commandBlock& block) override {
        block.result = 0;
        block.reply->outValue = static_cast<std::int32_t>(block.command) + 1;
        block.reply->status = status;
    }
    std::int32_t status = 0;
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
    EXPECT_EQ(send(1400), 0);
    echo.status = -6046;
    EXPECT_EQ(send(596), -6046) << "what the rules module answers: no such rule";
    EXPECT_EQ(reply.outValue, 597);
    registerModule(signature, nullptr);
    EXPECT_EQ(call(), -1018);
}

TEST_F(Execute, WhatACommandNeedsAndDoesntFind) {
    EXPECT_EQ(send(1400), 0);
    EXPECT_EQ(send(1401), 0);
    std::vector<valueGroup> groups;
    std::vector<PMString> list;
    session().currentDefName[0] = 0;
    for (const std::uint32_t number :
         {503U, 512U, 525U, 528U, 529U, 559U, 584U, 590U, 593U, 595U, 1209U, 1254U, 1292U, 2025U})
        EXPECT_EQ(send(number, {}), -6002) << number;
    EXPECT_EQ(send(1234, {&groups, nullptr, nullptr, &list}), -6002);
    session().runStage = runStageRunning;
    session().priceActive = 1;
    for (const std::uint32_t number : {506U, 508U, 560U, 561U, 610U, 1205U, 1212U})
        EXPECT_EQ(send(number, {}), -6022) << number;
}

// The allocator of blocks that get out of memory at once.
TEST_F(Execute, WithoutMemoryForItsAnswer) {
    char* folder = nullptr;
    EXPECT_EQ(send(537, {&folder}), 0);
    EXPECT_EQ(folder, session().dataFolder + "/Ostreon Tag Display/TempFiles");
    freeBlock(folder);
    allocatorService service = defaultAllocator();
    service.allocate = [](std::size_t) -> void* { return nullptr; };
    installAllocator(&service);
    EXPECT_EQ(send(537, {&folder}), -6007);
    installAllocator(nullptr);
}

TEST_F(Execute, PlacesWithoutARecordHaveNoValue) {
    IDFile ddf(home.file("c.ddf",
                         "\"C\" recordDefinition; T signature; 1:\"Code\" fieldName; \"Code\" keyField; 1 "
                         "fileType; 2 osType; \"Code\" extractionRecord; \"Code\" field;"));
    IDFile data(home.file("c.csv", "Code\nA1\nB2\n"));
    Str255 name;
    pstrSet(name, "C");
    ASSERT_EQ(send(1400), 0);
    ASSERT_EQ(send(1405, {&ddf}), 0);
    ASSERT_EQ(send(1207, {nullptr, name}), 0);
    ASSERT_EQ(send(1209, {&data}), 0);
    session().recordList = {1, recordListPad, 0};
    PMString link("Code"), value;
    for (const auto& [number, expected] : {std::pair{1U, "B2"}, {2U, ""}, {3U, "A1"}}) {
        std::uint32_t record = number;
        EXPECT_EQ(send(1208, {&record, &link, nullptr, nullptr, &value}), 0);
        EXPECT_EQ(value.bytes(), expected) << number;
    }
}

TEST_F(Execute, DamagedStoreLeavesTheSessionAsItIs) {
    const std::string before(pstrView(session().currentDefName));
    std::filesystem::create_directories(std::filesystem::path(definitionStorePath()).parent_path());
    ASSERT_EQ(fileWriteWhole(definitionStorePath().c_str(), "no signature", 0), 0);
    EXPECT_EQ(openDefinitionStore(false, nullptr, 0), 108);
    EXPECT_EQ(pstrView(session().currentDefName), before);
    EXPECT_NE(session().currentDefSet, nullptr);
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

}  // namespace
}  // namespace tarnova
