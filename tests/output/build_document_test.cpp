#include "output/build_document.h"

#include <gtest/gtest.h>

#include <memory>

#include "engine/session/preferences.h"
#include "engine/session/session.h"
#include "host/model/document_builder.h"
#include "output/build_tables.h"

namespace tarnova {
namespace {

class BuildTest : public testing::Test {
 protected:
    BuildTest() {
        sessionReset();
        session().recordPassMode = passModeStep;
    }
    ~BuildTest() override { freeBuildTables(); }

    /// A document of spreads with so many pages each, a text frame on every page.
    void makeTemplate(std::initializer_list<int> spreads) {
        DocumentBuilder builder;
        for (const int pageCount : spreads) {
            const UID spread = builder.addSpread();
            for (int i = 0; i < pageCount; ++i) {
                const double left = 100.0 * i;
                const UID page = builder.addPage(spread, {left, 0, left + 100, 100});
                builder.addTextFrame(page, {left + 10, 10, left + 90, 90}, U"text");
            }
        }
        document = builder.finish();
    }

    void setRange(std::uint32_t first, std::uint32_t last, std::uint32_t total, std::uint32_t step,
                  std::uint32_t mode = passModeStep) {
        auto& run = session();
        run.rangeFirst = first;
        run.rangeLast = last;
        run.totalRecords = total;
        run.stepBy = step;
        run.recordPassMode = mode;
        computeSlots();
        run.runStage = 2;
    }

    errorWord build() {
        const errorWord error = resetBuildTables(document->ref(), 0);
        return buildDocument(document->ref(), {.replicateSections = true}, error);
    }

    std::unique_ptr<DocumentModel> document;
};

TEST_F(BuildTest, SlotsOfEachPassMode) {
    struct testRow {
        const char* name;
        std::uint32_t mode, first, last, total, step;
        std::int32_t slots;
        std::uint32_t toDo, stackFirst, stackLast;
    };
    const testRow rows[] = {
        {"step, last slot short", passModeStep, 1, 10, 10, 4, 3, 10, 0, 10},
        {"step of one", passModeStep, 3, 7, 10, 1, 5, 5, 2, 10},
        {"cut and stack", passModeCutAndStack, 1, 10, 10, 4, 3, 3, 0, 10},
        {"stack range", passModeStackRange, 2, 4, 10, 2, 3, 3, 0, 10},
        {"stack subset", passModeStackSubset, 3, 9, 10, 2, 4, 4, 2, 9},
    };
    for (const testRow& row : rows) {
        setRange(row.first, row.last, row.total, row.step, row.mode);
        EXPECT_EQ(session().slotTarget, row.slots) << row.name;
        EXPECT_EQ(session().recordsToDo, row.toDo) << row.name;
        EXPECT_EQ(session().stackFirst, row.stackFirst) << row.name;
        EXPECT_EQ(session().stackLast, row.stackLast) << row.name;
    }
}

TEST_F(BuildTest, ExpandsWholeSpreadsAndMapsEachPage) {
    makeTemplate({1, 2});
    setRange(1, 3, 3, 1);
    ASSERT_EQ(build(), 0);
    EXPECT_EQ(document->pageCount(), 9);
    EXPECT_EQ(document->spreadCount(), 6);
    EXPECT_EQ(session().slotCount, 3);
    for (std::int32_t i = 0; i < 9; ++i) {
        ASSERT_NE(pageMapAt(i), nullptr) << i;
        EXPECT_EQ(pageMapAt(i)->slot, i / 3) << i;
        EXPECT_EQ(pageMapAt(i)->pageInSlot, i % 3) << i;
        // Each copied page has its own frame, on the page and nowhere else.
        EXPECT_EQ(document->pageIndex(document->pageAt(i)), i);
    }
    EXPECT_EQ(pageMapAt(9), nullptr);
    EXPECT_EQ(recordSlotAt(3), nullptr);
}

TEST_F(BuildTest, TablesGrowPastTheirFirstBlocks) {
    makeTemplate({1});
    setRange(1, 600, 600, 1);
    ASSERT_EQ(build(), 0);
    EXPECT_EQ(session().slotCount, 600);
    EXPECT_EQ(recordSlotAt(599)->slotIndex, 599);
    EXPECT_EQ(pageMapAt(599)->slot, 599);
}

TEST_F(BuildTest, RecordNumbersByPageAndSequence) {
    makeTemplate({1});
    session().skipFirst = 1;
    setRange(5, 16, 20, 4);
    ASSERT_EQ(build(), 0);
    EXPECT_EQ(recordNumberOfPage(0), 5);  // record 5 behind a header lies at position 5
    EXPECT_EQ(recordNumberOfLink(0, 4), 8);
    EXPECT_EQ(recordNumberOfLink(2, 1), 13);

    makeTemplate({1});
    session().skipFirst = 0;
    setRange(1, 10, 10, 4, passModeCutAndStack);
    ASSERT_EQ(build(), 0);
    EXPECT_EQ(recordNumberOfLink(0, 1), 0);
    EXPECT_EQ(recordNumberOfLink(0, 2), 3);  // ten records on stacks of three
    EXPECT_EQ(recordNumberOfLink(2, 4), 11);
}

TEST_F(BuildTest, RequestsPastTheEndGetFillersAndAreListedOnce) {
    makeTemplate({1});
    session().sequencesInUse = 4;
    setRange(1, 10, 10, 4);
    ASSERT_EQ(build(), 0);
    const defaultStringSet& defaults = appPrefs().textDefaults;
    recordRequestRec request;
    ASSERT_EQ(noteRecordRequest(2, 9, defaults, request, 0), 0);
    EXPECT_FALSE(request.pastEnd);
    EXPECT_EQ(recordSlotAt(2)->hasData, 1);
    EXPECT_EQ(recordSlotAt(2)->firstRecord, 9);

    for (const std::int32_t record : {10, 11, 10}) {
        ASSERT_EQ(noteRecordRequest(2, record, defaults, request, 0), 0);
        EXPECT_TRUE(request.pastEnd);
        EXPECT_EQ(request.filler, defaults.endOfFile.string);
    }
    EXPECT_EQ(recordSlotAt(2)->pastEnd, 1);
    EXPECT_EQ(recordSlotAt(2)->lastRecord, 11);
    const auto* const padded = reinterpret_cast<const std::int32_t*>(*recordSlotAt(2)->paddedRecords);
    EXPECT_EQ(padded[0], 10);
    EXPECT_EQ(padded[1], 11);
    EXPECT_EQ(padded[2], noPaddedRecord);
    EXPECT_EQ(noteRecordRequest(2, 12, defaults, request, 0), 0);
    EXPECT_EQ(noteRecordRequest(2, 13, defaults, request, 0), 0);
    EXPECT_EQ(noteRecordRequest(2, 14, defaults, request, 0), errTooManyPadded);
    EXPECT_EQ(noteRecordRequest(2, 9, defaults, request, 113), 113);

    appPrefs().textDefaults.endOfFile.enable = 0;
    ASSERT_EQ(noteRecordRequest(1, 10, defaults, request, 0), 0);
    EXPECT_EQ(request.filler, nullptr);
    session().recordPassMode = passModeCutAndStack;
    ASSERT_EQ(noteRecordRequest(1, 10, defaults, request, 0), 0);
    EXPECT_EQ(request.filler, defaults.stackPad.string);
}

TEST_F(BuildTest, PruningKeepsTheFirstSlotFlaggedPagesAndErrors) {
    makeTemplate({1});
    setRange(1, 5, 5, 1);
    ASSERT_EQ(build(), 0);
    recordSlotAt(2)->hasData = 1;
    recordSlotAt(3)->hasMergeError = 1;
    pageMapAt(4)->pageFlags = 8;
    const UID pages[] = {document->pageAt(0), document->pageAt(1), document->pageAt(2), document->pageAt(3),
                         document->pageAt(4)};
    ASSERT_EQ(pruneUnusedPages(document->ref(), 0), 0);
    EXPECT_EQ(document->pageCount(), 4);
    EXPECT_EQ(document->pageIndex(pages[1]), -1);
    for (const int kept : {0, 2, 3, 4})
        EXPECT_GE(document->pageIndex(pages[kept]), 0) << kept;
}

}  // namespace
}  // namespace tarnova
