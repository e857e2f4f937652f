// Whole runs through the idle task: every pass mode against a pile of paper, undo, cancel, the types of runs.

#include "engine/run/run_stages.h"

#include <sstream>

#include "data/record_selection.h"
#include "engine/run/merge_pass.h"
#include "engine/run/price_run.h"
#include "host/files/layout_file.h"
#include "output/build_document.h"
#include "tests/merge/merge_fixture.h"

namespace tarnova {
namespace {

using testing::ElementsAre;
using Sheets = std::vector<std::vector<std::string>>;  // by sheet, from the top; by place on the sheet

/// Asks to stop at the item with this number.
class StoppingAlerts final : public AlertService {
 public:
    explicit StoppingAlerts(int itsItem) : item(itsItem) { installAlertService(this); }
    int ask(const alertRec& alert) override { return alert.defaultButton; }
    pictureAnswer askPicture(const pictureProblemRec&, std::string&) override { return pictureAnswer::goOn; }
    void openStatus(const std::string&) override {}
    void moveStatus(int) override {}
    void closeStatus() override {}
    void showStatusDetail() override {}
    bool cancelAsked() override { return ++asked >= item; }

 private:
    int item;
    int asked = 0;
};

class RunTest : public MergeTest {
 protected:
    /// Records "r1" to "r<count>" behind a line "A", which is a header or the first record.
    void useRecords(int count, bool header) {
        std::string data = "A\n";
        for (int i = 1; i <= count; ++i)
            data += "r" + std::to_string(i) + "\n";
        useData(data);
        appPrefs().hasHeaderRecord = header ? 1 : 0;
    }

    /// A page with a place for each record of the step, parted by ";".
    void usePlaces(std::uint32_t places) {
        std::string text = "{1:A}";
        for (std::uint32_t i = 2; i <= places; ++i)
            text += ";{" + std::to_string(i) + ":A}";
        useTemplate(text + ".");
        appPrefs().textDefaults.endOfFile.string[0] = 0;
        appPrefs().textDefaults.stackPad.string[0] = 0;
    }

    /// The layout's bytes, but for the next UID: those that a run took aren't given out again.
    [[nodiscard]] std::string bytes() const {
        const std::string all = writeLayout(dynamic_cast<const DocumentModel&>(*document));
        const std::size_t start = all.find("\"nextUid\"");
        return all.substr(0, start) + all.substr(all.find('\n', start));
    }

    Sheets print(std::uint32_t mode) {
        appPrefs().recordPassMode = mode;
        Sheets sheets;
        for (std::string text : merge()) {
            text.pop_back();
            sheets.emplace_back();
            std::stringstream places(text + ";");
            for (std::string place; std::getline(places, place, ';');)
                sheets.back().push_back(place);
        }
        return sheets;
    }
};

std::vector<std::string> recordsOf(int first, int last, bool header) {
    std::vector<std::string> records;
    for (int i = first; i <= last; ++i)
        records.push_back(header ? "r" + std::to_string(i) : i == 1 ? "A" : "r" + std::to_string(i - 1));
    return records;
}

/// The pile is cut into stacks, and these are laid on each other, the first place on top; blank pieces are thrown away.
std::vector<std::string> cutAndStack(const Sheets& pile) {
    std::vector<std::string> pieces;
    for (std::size_t place = 0; place < pile.front().size(); ++place)
        for (const auto& sheet : pile)
            if (!sheet[place].empty()) pieces.push_back(sheet[place]);
    return pieces;
}

std::vector<std::string> leafThrough(const Sheets& pile) {
    std::vector<std::string> pieces;
    for (const auto& sheet : pile)
        for (const std::string& piece : sheet)
            if (!piece.empty()) pieces.push_back(piece);
    return pieces;
}

TEST_F(RunTest, ThePilesOfEveryModeComeOutInOrder) {
    for (const bool header : {true, false}) {
        for (const int count : {1, 2, 6, 7, 12, 13}) {
            useRecords(header ? count : count - 1, header);
            for (const std::uint32_t places : {1U, 2U, 3U, 5U}) {
                const std::string where = std::to_string(count) + " records, " + std::to_string(places) + " places" +
                                          (header ? "" : ", no header");
                const auto print = [&](std::uint32_t mode, int first, int last) {
                    usePlaces(places);
                    step = places;
                    firstRecord = static_cast<std::uint32_t>(first);
                    lastRecord = static_cast<std::uint32_t>(last);
                    return RunTest::print(mode);
                };
                EXPECT_EQ(leafThrough(print(passModeStep, 0, 0)), recordsOf(1, count, header)) << where;
                const Sheets pile = print(passModeCutAndStack, 0, 0);
                EXPECT_EQ(cutAndStack(pile), recordsOf(1, count, header)) << where;
                EXPECT_EQ(pile.size(), (static_cast<std::size_t>(count) + places - 1) / places) << where;
                const int last = std::max(count - 1, 1), first = std::min(3, last);
                EXPECT_EQ(cutAndStack(print(passModeStackSubset, first, last)), recordsOf(first, last, header))
                    << where;
                const int lastRow = std::max(static_cast<int>(pile.size()) - 1, 1), firstRow = std::min(2, lastRow);
                EXPECT_EQ(print(passModeStackRange, firstRow, lastRow),
                          Sheets(pile.begin() + firstRow - 1, pile.begin() + lastRow))
                    << where << ": rows of the same pile";
            }
        }
    }
}

TEST_F(RunTest, WithoutSteppingEveryPlaceShowsThePagesRecord) {
    useRecords(3, true);
    usePlaces(2);
    appPrefs().recordPassMode = passModeNoStepping;
    EXPECT_THAT(merge(), ElementsAre("r1;r1.", "r2;r2.", "r3;r3."));
}

TEST_F(RunTest, ARecordListGivesItsRecordsAndPads) {
    const struct {
        const char* keyword;  // in place of the field
        std::vector<std::string> texts;
    } rows[] = {{"", {"r2;pad.", "r5;r8."}},
                {"_RECORD_NUMBER", {"2;[Stack Pad].", "5;8."}},
                {"_CONSECUTIVE_NUMBER", {"0;[Stack Pad].", "3;6."}}};
    for (const auto& row : rows) {
        useRecords(9, true);
        pstrFromView(link("A").dataFunction, sizeof(Str31), row.keyword);
        usePlaces(2);
        pstrFromView(appPrefs().textDefaults.stackPad.string, sizeof(Str255), "pad");
        beginJob(document->ref());
        session().recordList = {1, recordListPad, 4, 7, 99};
        session().rangeFirst = 1;
        session().rangeLast = 5;
        session().stepBy = 0;
        ASSERT_EQ(fitRangeToData(9, 0), 0);
        EXPECT_EQ(session().totalRecords, 4U);
        session().skipFirst = 1;
        session().recordPassMode = passModeStep;
        ASSERT_EQ(startScriptedRun(mergeRunBuildDocument, 0), 0);
        push();
        EXPECT_THAT(textsOf(*document), testing::ElementsAreArray(row.texts)) << row.keyword;
    }
}

TEST_F(RunTest, StartsThatAreRefusedLeaveTheSessionIdle) {
    struct testRow {
        const char* name;
        const char* text;
        std::uint16_t linkKinds;
        std::uint32_t first;
        errorWord want;
    };
    const testRow rows[] = {
        {"no links", "plain", linkKindsBoth, 0, errNoLinks},
        {"no text links", "plain", linkKindsText, 0, errNoTextLinks},
        {"no frame links", "{A}.", linkKindsFrames, 0, errNoFrameLinks},
        {"behind the file", "{A}.", linkKindsBoth, 4, errRangeBehindEnd},
    };
    useRecords(3, true);
    for (const testRow& row : rows) {
        useTemplate(row.text);
        appPrefs().linkKinds = row.linkKinds;
        firstRecord = lastRecord = row.first;
        merge();
        EXPECT_EQ(error, row.want) << row.name;
        EXPECT_EQ(session().runStage, runStageIdle) << row.name;
    }
    EXPECT_EQ(startMergeRun(0, false), errNoDocument);
    EXPECT_EQ(startMergeRun(77, false), 77);
}

TEST_F(RunTest, ACancelAtAnyPlaceLeavesADocumentThatUndoMends) {
    useRecords(5, true);
    for (int item = 1; item <= 8; ++item) {
        useTemplate("{A}.");
        const std::string before = bytes();
        {
            const StoppingAlerts stopping(item);
            merge();
        }
        installAlertService(&alerts);
        const bool stopped = session().jobCancelled != 0;
        EXPECT_EQ(stopped, item <= 6) << item << ": once a turn and once a text";
        EXPECT_EQ(session().inRun + session().cancelRun + session().mergePassActive, 0) << item;
        document->undoNamedStep(PMString::ofKey("kZavoKelvaneMergeResultsFileBuildDocKey").view());
        EXPECT_EQ(bytes(), before) << item;
        EXPECT_THAT(merge(), ElementsAre("r1.", "r2.", "r3.", "r4.", "r5.")) << item << ": a second run works";
    }
}

TEST_F(RunTest, OtherTypesOfRunsWorkOnTheDocumentItself) {
    useRecords(5, true);
    firstRecord = 2;
    struct testRow {
        std::uint32_t runType;
        const char* want;
    };
    const testRow rows[] = {{mergeRunCurrentDocument, "r2 r3."},
                            {mergeRunPreview, "r2 r3."},
                            {mergeRunProof, "{{A}} {{2:A}}."},
                            {mergeRunLinkReport, "A A."}};
    for (const testRow& row : rows) {
        useTemplate("{A} {2:A}.");
        lastRecord = 5;
        run(row.runType);
        EXPECT_EQ(error, 0);
        EXPECT_THAT(textsOf(*document), ElementsAre(row.want)) << row.runType;
        EXPECT_EQ(session().jobPercent, 100U);
        const bool undoable = document->undoNamedStep(PMString::ofKey("kZavoKelvaneMergeResultsProofLinksKey").view());
        EXPECT_EQ(undoable, row.runType == mergeRunProof);
    }
}

TEST_F(RunTest, AScriptedRunPutsItsRunTypeBack) {
    useRecords(1, true);
    useTemplate("{A}.");
    session().savedRunType = mergeRunProof;
    EXPECT_THAT(merge(), ElementsAre("r1."));
    EXPECT_EQ(appPrefs().mergeRunType, mergeRunProof);
    EXPECT_EQ(session().savedRunType, -1);
}

TEST_F(RunTest, APriceRunFillsEachLinkByItsKey) {
    useData("A,B\nk1,one\nk2,two\n");
    session().mergeAttached = session().priceAttached = 1;
    ASSERT_EQ(switchEngineMode(modePrice, true), 0);
    useTemplate("{k2:B} {k1:B} {k2:B}.");
    EXPECT_FALSE(startPriceRun(kInvalidUIDRef));
    ASSERT_TRUE(startPriceRun(document->ref()));
    session().priceStart = 1;
    idleStep();
    EXPECT_EQ(session().engineError, 0);
    EXPECT_THAT(textsOf(*document), ElementsAre("two one two."));
    EXPECT_EQ(session().jobFailed + session().priceActive + session().inRun, 0);
    ASSERT_TRUE(document->undoNamedStep(PMString::ofKey("kZavoPriceDocumentStringKey").view()));
    EXPECT_THAT(textsOf(*document), ElementsAre("B B B."));

    selectionRec selection;
    std::uint16_t cancel = 0;
    selection.story = document->stories()[0];
    selection.range = {2, 1};
    EXPECT_EQ(priceSelection(document->ref(), selection, cancel, 0), 0);
    EXPECT_THAT(textsOf(*document), ElementsAre("B one B."));
    ASSERT_TRUE(document->undoNamedStep(PMString::ofKey("kZavoPriceRangeStringKey").view()));
    EXPECT_EQ(priceSelection(document->ref(), {}, cancel, 0), 0);
    EXPECT_THAT(textsOf(*document), ElementsAre("B B B.")) << "nothing is selected";
    selection.items = document->framesOfStory(selection.story);
    selection.story = kInvalidUID;
    EXPECT_EQ(priceSelection(document->ref(), selection, cancel, 0), 0);
    EXPECT_THAT(textsOf(*document), ElementsAre("two one two."));
    EXPECT_EQ(cancel + session().inRun, 0);

    session().priceStart = 1;
    idleStep();
    EXPECT_EQ(session().engineError, errNoDocument) << "nothing is armed and nothing is in front";
    EXPECT_EQ(session().jobFailed, 1);
}

}  // namespace
}  // namespace tarnova
