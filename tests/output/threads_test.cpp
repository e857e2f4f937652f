#include "output/threads.h"

#include <gtest/gtest.h>

#include <memory>

#include "document/walk_state.h"
#include "engine/session/preferences.h"
#include "engine/session/session.h"
#include "host/model/document_builder.h"
#include "output/build_document.h"
#include "output/build_tables.h"

namespace tarnova {
namespace {

/// Three spreads of one page with two frames each, "text" in the first of each page.
class ThreadsTest : public testing::Test {
 protected:
    ThreadsTest() {
        sessionReset();
        DocumentBuilder builder;
        for (int i = 0; i < 3; ++i) {
            const UID page = builder.addSinglePage(100, 100);
            builder.addTextFrame(page, {0, 0, 50, 50}, U"text");
            builder.addTextFrame(page, {50, 50, 100, 100}, U"");
        }
        document = builder.finish();
        const UID emptied = document->textOfFrame(frameOn(1, 0));
        EXPECT_EQ(document->textDelete(emptied, 0, 4), 0);
    }
    ~ThreadsTest() override { freeBuildTables(); }

    UID frameOn(std::int32_t page, std::int32_t index) const {
        return document->childAt(document->spreadLayerNode(document->spreadAt(page), document->layerAt(1)), index);
    }
    void link(UID before, UID behind) { ASSERT_EQ(document->linkFrames(before, behind), 0); }

    errorWord build(std::int32_t slots) {
        const errorWord error = resetBuildTables(document->ref(), 0);
        session().slotTarget = slots;
        return buildDocument(document->ref(), {.replicateSections = true}, error);
    }
    /// The mark as thread and position; -1 without one.
    std::pair<std::int32_t, std::int32_t> markOf(UID frame, std::uint16_t store = 0) {
        const auto mark = itemDataView({document.get(), frame}, ItemDataPlace::pageItem, itemDataThreadCopies, store);
        if (!mark) return {-1, -1};
        EXPECT_EQ(mark->size(), threadMarkBytes);
        return {static_cast<unsigned char>((*mark)[3]), static_cast<unsigned char>((*mark)[7])};
    }

    std::unique_ptr<DocumentModel> document;
};

/// A thread that leaves a spread and comes back, and one that begins behind where its copy will stand.
TEST_F(ThreadsTest, RunOnInEverySlot) {
    link(frameOn(0, 0), frameOn(1, 0));
    link(frameOn(1, 0), frameOn(0, 1));
    link(frameOn(2, 0), frameOn(1, 1));
    link(frameOn(1, 1), frameOn(2, 1));
    ASSERT_EQ(build(4), 0);
    ASSERT_EQ(document->pageCount(), 12);
    for (std::int32_t slot = 0; slot < 4; ++slot) {
        const std::int32_t first = 3 * slot;
        const UID story = document->textOfFrame(frameOn(first, 0)),
                  other = document->textOfFrame(frameOn(first + 2, 0));
        EXPECT_EQ(document->framesOfStory(story),
                  (std::vector<UID>{frameOn(first, 0), frameOn(first + 1, 0), frameOn(first, 1)}))
            << slot;
        EXPECT_EQ(document->framesOfStory(other),
                  (std::vector<UID>{frameOn(first + 2, 0), frameOn(first + 1, 1), frameOn(first + 2, 1)}))
            << slot;
        EXPECT_EQ(document->textRead(story, 0, 9), U"text\r");
        EXPECT_EQ(document->textRead(other, 0, 9), U"text\r");
        EXPECT_EQ(markOf(frameOn(first, 0)), std::pair(-1, -1)) << "a mark has served";
    }
    EXPECT_EQ(document->stories().size(), 8u) << "no story is left without frames";
}

TEST_F(ThreadsTest, MarksAreThoseOfThreadsOverSeveralPages) {
    const std::string stale(threadMarkBytes, '\0');
    for (const UID frame : {frameOn(1, 0), frameOn(2, 0)}) {
        ASSERT_EQ(itemDataSet({document.get(), frame}, ItemDataPlace::pageItem, itemDataThreadCopies, stale.data(),
                              stale.size(), 0),
                  1);
    }
    link(frameOn(0, 0), frameOn(0, 1));
    link(frameOn(2, 0), frameOn(1, 0));
    link(frameOn(1, 0), frameOn(2, 1));
    std::int32_t count = 0;
    ASSERT_EQ(markThreads(document->ref(), count, 0), 0);
    EXPECT_EQ(count, 1);
    EXPECT_EQ(markOf(frameOn(2, 0)), std::pair(0, 0));
    EXPECT_EQ(markOf(frameOn(1, 0)), std::pair(0, 1));
    EXPECT_EQ(markOf(frameOn(2, 1)), std::pair(0, 2));
    EXPECT_EQ(markOf(frameOn(0, 0)), std::pair(-1, -1)) << "one page only";
    EXPECT_EQ(markOf(frameOn(1, 1)), std::pair(-1, -1));
    EXPECT_EQ(markOf(frameOn(2, 0), 1), std::pair(-1, -1)) << "in the store of the mode only";
    EXPECT_EQ(markThreads(document->ref(), count, 113), 113);
    EXPECT_EQ(rebuildThreads(document->ref(), 113), 113);
}

TEST_F(ThreadsTest, AThreadEndsWhereAPositionIsMissing) {
    link(frameOn(0, 0), frameOn(1, 0));
    link(frameOn(1, 0), frameOn(2, 1));
    ASSERT_EQ(build(2), 0);
    const UID start = document->textOfFrame(frameOn(3, 0));
    ASSERT_EQ(document->framesOfStory(start).size(), 3u);
    std::int32_t count = 0;
    ASSERT_EQ(markThreads(document->ref(), count, 0), 0);
    // Taken apart again, without the frame in the middle.
    ASSERT_EQ(document->deleteItem(frameOn(4, 0)), 0);
    ASSERT_EQ(document->deleteItem(frameOn(5, 1)), 0);
    ASSERT_EQ(document->duplicateSpread(document->spreadAt(2)), 0);
    ASSERT_EQ(rebuildThreads(document->ref(), 0), 0);
    EXPECT_EQ(document->framesOfStory(start), std::vector<UID>{frameOn(3, 0)});
}

TEST_F(ThreadsTest, SectionsStartInEveryCopy) {
    const auto addSections = [this] {
        EXPECT_EQ(document->createSection({document->pageAt(0), "A-", "m", 5, 2, true, true}), 0);
        EXPECT_EQ(document->createSection({document->pageAt(1), "", "", 1, 0, true, false}), 0);
    };
    addSections();
    const auto before = document->documentCopy();
    ASSERT_EQ(build(3), 0);
    const std::vector<sectionRec> sections = document->sections();
    ASSERT_EQ(sections.size(), 6u);
    for (const std::size_t i : {2, 4}) {
        EXPECT_EQ(document->pageIndex(sections[i].startPage), i == 2 ? 3 : 6);
        EXPECT_EQ(sections[i].prefix, "A-");
        EXPECT_EQ(sections[i].marker, "m");
        EXPECT_EQ(sections[i].startNumber, 5);
        EXPECT_EQ(sections[i].numberingStyle, 2);
        EXPECT_TRUE(sections[i].includePrefix);
        EXPECT_FALSE(sections[i].continues) << "of the first spread";
        EXPECT_TRUE(sections[i + 1].continues);
        EXPECT_EQ(document->pageIndex(sections[i + 1].startPage), i == 2 ? 4 : 7);
    }
    EXPECT_TRUE(sections[0].continues) << "the template's own stays";

    struct testRow {
        const char* name;
        bool asked;
        std::uint8_t preference;
    };
    for (const auto& [name, asked, preference] : {testRow{"not asked", false, 1}, testRow{"preference off", true, 0}}) {
        const auto copy = before->documentCopy();
        appPrefs().replicateSections = preference;
        session().slotTarget = 2;
        const errorWord error = resetBuildTables(copy->ref(), 0);
        ASSERT_EQ(buildDocument(copy->ref(), {.replicateSections = asked}, error), 0) << name;
        EXPECT_EQ(copy->sections().size(), 2u) << name;
    }
}

}  // namespace
}  // namespace tarnova
