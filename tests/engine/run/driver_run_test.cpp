// Runs through a driver that behaves as asked: the protocol, the tables, the working copy, and what goes wrong.

#include "engine/run/driver_run.h"

#include <functional>

#include "engine/module/driver_protocol.h"
#include "engine/module/execute.h"
#include "engine/run/run_stages.h"
#include "engine/session/preferences_file.h"
#include "host/files/open_documents.h"
#include "output/build_document.h"
#include "output/working_copy.h"
#include "tests/merge/merge_fixture.h"

namespace tarnova {
namespace {

using testing::ElementsAre;

constexpr std::uint32_t oddSignature = signatureOf("Odd!");

/// Does at each turn what its test says.
class OddDriver final : public IZavoKelvaneModule {
 public:
    OddDriver() { registerModule(oddSignature, this); }
    ~OddDriver() override { registerModule(oddSignature, nullptr); }
    OddDriver(const OddDriver&) = delete;
    OddDriver& operator=(const OddDriver&) = delete;

    void Execute(commandBlock& block) override {
        block.result = 0;
        if (block.command == driverStart) {
            start = *reinterpret_cast<driverStartRec*>(block.reply);
            sequences = reinterpret_cast<driverArgsRec*>(block.args)->sequencesInUse;
            reinterpret_cast<driverStartRec*>(block.reply)->status = refuses ? -1 : 0;
        } else if (block.command == driverDone) {
            answers.push_back(reinterpret_cast<driverAnswerRec*>(block.reply)->command);
            answered = reinterpret_cast<driverAnswerRec*>(block.reply)->document;
        } else if (onTick) {
            onTick(*reinterpret_cast<driverArgsRec*>(block.args));
        }
    }

    std::function<void(driverArgsRec&)> onTick;
    bool refuses = false;
    driverStartRec start{};
    std::uint32_t sequences = 0;
    std::vector<std::uint32_t> answers;
    UIDRef answered;
};

class DriverRunTest : public MergeTest {
 protected:
    DriverRunTest() {
        settleDataFolder((folder / "app").string(), (folder / "home").string());
        session().documentHost = &documents;
        driverRegistrationRec registration{};
        registration.driverId = 11001;
        registration.driverModule = oddSignature;
        pstrFromView(registration.driverName, sizeof registration.driverName, "Odd");
        std::memcpy(&reply, &registration, sizeof registration);
        send(1400);
        send(243);
        std::string data = "A\n";
        for (int i = 1; i <= 10; ++i)
            data += "r" + std::to_string(i) + "\n";
        useData(data);
    }
    ~DriverRunTest() override { session().documentHost = nullptr; }

    /// A saved layout of one page with two places, in front, and a run of it to the driver, started.
    void startRun() {
        useTemplate("{A};{2:A}.");
        appPrefs().textDefaults.endOfFile.string[0] = 0;
        auto* const model = dynamic_cast<DocumentModel*>(document.release());
        layout = &documents.add(std::unique_ptr<DocumentModel>(model), true);
        ASSERT_EQ(documents.documentSaveAs(layout->ref(),
                                           (folder / ("layout" + std::to_string(documents.count()) + ".tvd")).string()),
                  0);
        args = {};
        ASSERT_EQ(send(508), 0);
        ASSERT_EQ(send(1210), 0);
        ASSERT_EQ(session().armedState, armedReady);
    }

    std::int32_t send(std::uint32_t number) {
        block = {resultNobodyAnswered, number, &reply, &args};
        reply.callerSignature = oddSignature;
        door.Execute(block);
        return reply.status;
    }
    std::int32_t send(std::uint32_t number, std::initializer_list<void*> items) {
        args = {};
        unsigned index = 0;
        for (void* const item : items)
            itemAt(args, index++) = item;
        return send(number);
    }

    /// Saves and opens the working copy.
    void openCopy() {
        UIDRef source = driver.start.document;
        ASSERT_EQ(send(530, {&source}), 0);
        ASSERT_EQ(send(531, {&copy}), 0);
        ASSERT_NE(copy.database, nullptr);
    }
    /// Builds up to `slots` slots from record `first` on; gives how many.
    std::uint32_t build(std::uint32_t slots) {
        args = {};
        args.item0 = &copy;
        args.num0 = slots;
        args.flag2 = args.flag3 = args.flag4 = 1;
        EXPECT_EQ(send(573), 0);
        return args.num0;
    }
    std::uint32_t merge(std::uint32_t first, std::uint32_t limit, std::int32_t status = 0) {
        std::uint32_t done = 0;
        args = {};
        args.item0 = &copy;
        args.item1 = &done;
        args.num0 = first;
        args.num1 = limit;
        args.num2 = 2;
        args.num3 = passModeStep;
        args.flag0 = 1;
        EXPECT_EQ(send(1203), status);
        return done;
    }
    void closeAll() {
        send(532, {&copy});
        EXPECT_EQ(documents.count(), 1U);
    }

    OpenDocuments documents{nullptr};
    OddDriver driver;
    DocumentModel* layout = nullptr;
    UIDRef copy;
    ZavoKelvaneModule door;
    commandBlock block{};
    commandReply reply{};
    commandArgs args{};
};

TEST_F(DriverRunTest, ADriverThatEndsAtItsFirstTurnEndsTheRun) {
    startRun();
    push();
    EXPECT_EQ(driver.start.firstRecord, 1);
    EXPECT_EQ(driver.start.recordLimit, 11);
    EXPECT_EQ(driver.start.stepBy, 2);
    EXPECT_EQ(driver.start.slotTarget, 5);
    EXPECT_EQ(driver.start.stackLast, 10);
    EXPECT_EQ(driver.start.unattended, 1);
    EXPECT_EQ(driver.sequences, 2U);
    EXPECT_EQ(session().armedState, armedNot);
    EXPECT_EQ(session().jobFailed + session().unattended + session().inRun, 0);

    driver.refuses = true;
    startRun();
    push();
    EXPECT_EQ(session().jobFailed, 1);
    driver.refuses = false;
    registerModule(oddSignature, nullptr);
    startRun();
    push();
    EXPECT_EQ(session().jobFailed, 1) << "a driver that is gone";
}

TEST_F(DriverRunTest, ChunksGoThroughAWorkingCopyWithTheirTables) {
    std::vector<std::string> texts;
    std::vector<std::uint32_t> chunkSlots;
    driver.onTick = [&](driverArgsRec& tick) {
        if (copy.database == nullptr) openCopy();
        const std::uint32_t first = 1 + 2 * static_cast<std::uint32_t>(texts.size());
        const std::uint32_t slots = build(5 - static_cast<std::uint32_t>(texts.size()));
        chunkSlots.push_back(slots);
        EXPECT_EQ(merge(first, std::min(first + 2 * slots, 11U)), std::min(2 * slots, 11 - first));
        for (const std::string& text : textsOf(*copy.database))
            texts.push_back(text);

        std::int32_t one = 1, many = 100, outside = 100, all = 0, window = 0, printed = 0, slot = 0, in = 0, from = 0;
        EXPECT_EQ(send(539, {&one, &many, &all, &window, &printed}), 0);
        EXPECT_EQ(all, static_cast<std::int32_t>(slots));
        EXPECT_EQ(window, all - 1);
        std::vector<std::int32_t> pages, flags;
        UIDRef about;
        EXPECT_EQ(send(540, {&one, &many, &pages, &flags, &about}), 0);
        EXPECT_EQ(pages.size(), slots - 1);
        EXPECT_EQ(about, copy);
        EXPECT_EQ(send(543, {&one, &slot, &in, &from}), 0);
        EXPECT_EQ(slot, 1);
        EXPECT_EQ(from, static_cast<std::int32_t>(first) + 2);
        for (const std::uint32_t command : {539U, 541U, 542U, 543U, 579U})
            EXPECT_EQ(send(command, {&outside}), 1) << command << " out of range";
        EXPECT_EQ(send(586, {&driver.start.document}), 1) << "not the working copy";
        EXPECT_EQ(send(586, {&copy}), 0);
        EXPECT_EQ(copy.database->pageCount(), 1);
        EXPECT_THAT(textsOf(*copy.database), ElementsAre("A;A."));
        *tick.keepRunning = texts.size() < 5 ? 1 : 0;
        *tick.jobPercent = 40;
        if (*tick.keepRunning == 0) closeAll();
    };
    appPrefs().chunkRecords = 3;
    startRun();
    push();
    EXPECT_THAT(chunkSlots, ElementsAre(3, 2)) << "at most three pages a chunk";
    EXPECT_THAT(texts, ElementsAre("r1;r2.", "r3;r4.", "r5;r6.", "r7;r8.", "r9;r10."));
    EXPECT_THAT(driver.answers, ElementsAre(530, 531, 532));
    EXPECT_EQ(session().jobPercent, 40U) << "a driver's own";
    EXPECT_EQ(layout->pageCount(), 1);
    EXPECT_THAT(textsOf(*layout), ElementsAre("A;A."));
}

/// The next chunk reads what the file says by then; what it lacks by then is told and never taken from elsewhere.
TEST_F(DriverRunTest, DataThatChangesInMidRunIsReadAnew) {
    struct testRow {
        const char* name;
        const char* data;  // null: the file goes
        std::vector<std::string> texts;
        errorWord error;
    };
    const testRow rows[] = {
        {"other values", "A\nlonger than r1\ns2\ns3\ns4\ns5\ns6\ns7\ns8\ns9\ns10\n", {"s5;s6.", "s7;s8."}, 0},
        {"fewer records", "A\ns1\ns2\ns3\ns4\ns5\ns6\ns7\n", {"s5;s6.", "s7;[No Data]."}, 0},
        {"no file", nullptr, {"A;A.", "A;A."}, errDataFileDate},
    };
    for (const testRow& row : rows) {
        SCOPED_TRACE(row.name);
        session().showAlertsUnattended = 1;
        useData("A\nr1\nr2\nr3\nr4\nr5\nr6\nr7\nr8\nr9\nr10\n");
        std::vector<std::string> texts;
        driver.onTick = [&](driverArgsRec&) {
            openCopy();
            build(2);
            EXPECT_EQ(merge(1, 5), 4U);
            EXPECT_THAT(textsOf(*copy.database), ElementsAre("r1;r2.", "r3;r4."));
            EXPECT_EQ(send(586, {&copy}), 0);
            const std::filesystem::path file = folder / ("data" + std::to_string(fileCount) + ".csv");
            std::filesystem::remove(file);
            if (row.data != nullptr) {
                std::ofstream(file) << row.data;
                std::filesystem::last_write_time(file,
                                                 std::filesystem::file_time_type::clock::now() + std::chrono::hours(1));
            }
            build(2);
            static_cast<void>(merge(5, 9, row.error == 0 ? 0 : -1));
            texts = textsOf(*copy.database);
            EXPECT_EQ(send(532, {&copy}), 0);
        };
        alerts.shown.clear();
        startRun();
        push();
        EXPECT_THAT(texts, testing::ElementsAreArray(row.texts));
        EXPECT_EQ(alerts.shown.empty() ? 0 : alerts.shown[0].number, row.error);
    }
}

TEST_F(DriverRunTest, PagesAreFlaggedAndRemoved) {
    pstrFromView(link("A").dataFunction, sizeof(Str31), "_PAGE_SET_PAGE_NUMBER");
    driver.onTick = [&](driverArgsRec&) {
        openCopy();
        ASSERT_EQ(build(4), 4U);
        std::int32_t page = 1, flagged = 2;
        std::uint16_t bits = 5;
        EXPECT_EQ(send(579, {&page}), 0);
        EXPECT_EQ(send(541, {&flagged, &bits}), 0);
        EXPECT_EQ(merge(1, 9), 8U);
        EXPECT_EQ(copy.database->pageCount(), 3) << "the marked page went behind the merge";
        EXPECT_THAT(textsOf(*copy.database), ElementsAre("1;1.", "OMITTED(1);OMITTED(1).", "1;1."));
        EXPECT_EQ(pageMapAt(1)->pageFlags, 5);
        EXPECT_EQ(pageMapAt(3), nullptr);
        std::int32_t first = 0, many = 9;
        std::vector<std::int32_t> pages, flags;
        EXPECT_EQ(send(540, {&first, &many, &pages, &flags}), 0);
        EXPECT_THAT(flags, ElementsAre(0, 1, 0));
        EXPECT_EQ(session().pageTotal, 2U) << "a flagged page isn't counted";
        EXPECT_EQ(send(621), 0);
        EXPECT_EQ(session().pageTotalOfFile, 0U);
        closeAll();
    };
    startRun();
    push();
    ASSERT_NE(driver.answers.size(), 0U);
}

TEST_F(DriverRunTest, ADriverSeesACancelOnceAndTheNextRunWorks) {
    int turns = 0;
    driver.onTick = [&](driverArgsRec& tick) {
        ++turns;
        *tick.keepRunning = 1;
        EXPECT_EQ(*tick.jobCancelled, turns == 2 ? 1 : 0);
        std::uint16_t cancel = 1;
        if (turns == 1) send(1206, {&cancel});
    };
    startRun();
    push();
    EXPECT_EQ(turns, 2);
    EXPECT_EQ(session().jobCancelled, 1);
    driver.onTick = {};
    startRun();
    push();
    EXPECT_EQ(session().jobCancelled, 0);
}

TEST_F(DriverRunTest, WhatCannotBeSavedOrOpenedGivesItsError) {
    driver.onTick = [&](driverArgsRec&) {
        UIDRef none, source = driver.start.document, opened;
        struct testRow {
            const char* name;
            std::uint32_t command;
            UIDRef* about;
            errorWord error;
        };
        const testRow rows[] = {
            {"no document", 530, &none, errWorkingCopySave},
            {"no copy was made", 531, &opened, errWorkingCopyOpen},
            {"no source was saved", 534, &opened, errSourceReopen},
            {"no document to save", 533, &none, errSourceSave},
        };
        session().showAlertsUnattended = 1;
        for (const testRow& row : rows) {
            alerts.shown.clear();
            EXPECT_NE(send(row.command, {row.about}), 0) << row.name;
            ASSERT_EQ(alerts.shown.size(), 1U) << row.name;
            EXPECT_EQ(alerts.shown[0].number, row.error) << row.name;
        }
        EXPECT_EQ(send(532, {&opened}), 0) << "nothing to close";
        // A file stands where the folder of temporary files would be.
        std::filesystem::remove_all(tempFilesFolder());
        std::filesystem::create_directories(std::filesystem::path(tempFilesFolder()).parent_path());
        std::ofstream(tempFilesFolder()) << "taken";
        alerts.shown.clear();
        EXPECT_NE(send(530, {&source}), 0);
        ASSERT_EQ(alerts.shown.size(), 1U);
        EXPECT_THAT(alerts.shown[0].text, testing::HasSubstr("TempFiles")) << "with the reason";
        EXPECT_EQ(send(533, {&source}), 0);
        EXPECT_EQ(documents.documentClose(source), 0);
        EXPECT_EQ(send(534, {&opened}), 0);
        EXPECT_TRUE(documents.documentHasWindow(opened));
    };
    startRun();
    push();
    EXPECT_EQ(driver.answers.size(), 8U);
}

}  // namespace
}  // namespace tarnova
