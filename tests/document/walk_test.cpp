#include "document/walk.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>

#include "tests/document/fake_document.h"
#include "tests/engine/toolkit/recording_alerts.h"

namespace tarnova {
namespace {

using ::testing::ElementsAre;

/// Writes down what it is shown, and may do something at an item.
class Recorder final : public ZavoFrameCallback {
 public:
    explicit Recorder(std::vector<UID>& itsVisits) : visits(itsVisits) {}
    std::int32_t FrameEnd() override {
        visits.push_back(frameRef.uid);
        return atItem ? atItem(frameRef, *cancel) : 0;
    }
    std::function<std::int32_t(UIDRef& frame, std::uint16_t& cancel)> atItem;

 private:
    std::vector<UID>& visits;
};

class StoryRecorder final : public ZavoStoryCallback {
 public:
    explicit StoryRecorder(std::vector<UID>& itsVisits) : visits(itsVisits) {}
    bool StoryBegin(UIDRef story) override {
        visits.push_back(story.uid);
        return true;
    }

 private:
    std::vector<UID>& visits;
};

class Walk : public ::testing::Test {
 protected:
    void SetUp() override { installWalkState(&state); }
    void TearDown() override { installWalkState(nullptr); }

    std::int32_t walk(WalkScope scope = WalkScope::everything, std::int32_t firstPage = 0, std::int32_t lastPage = 0,
                      bool skipHidden = false, bool skipPasteboard = false, bool visitHidden = false) {
        visits.clear();
        StoryRecorder stories(visits);
        return walkDocument(document, &frames, &stories, firstPage, lastPage, scope, skipHidden, skipPasteboard,
                            &itemCount, &textCount, &cancel, visitHidden);
    }

    FakeDocument document;
    walkStateRec state;
    std::vector<UID> visits;
    Recorder frames{visits};
    std::int32_t itemCount = -1;
    std::int32_t textCount = -1;
    std::uint16_t cancel = 0;
};

TEST_F(Walk, FrontmostFirstSpreadsBeforeMasters) {
    const UID master = document.addMaster();
    const UID first = document.addSpread(), second = document.addSpread();
    const UID onMaster = document.addFrame(document.node(master));
    const UID back = document.addFrame(document.node(first));
    const UID group = document.addItem(document.node(first), ItemClass::group);
    const UID inGroupBack = document.addFrame(group);
    const UID inGroupFront = document.addFrame(group);
    const UID onSecond = document.addFrame(document.node(second));
    EXPECT_EQ(walk(), 0);
    EXPECT_THAT(visits, ElementsAre(group, inGroupFront, inGroupBack, back, onSecond, onMaster));
    EXPECT_EQ(itemCount, 6);
    EXPECT_EQ(textCount, 0);
}

TEST_F(Walk, AThreadedStoryIsVisitedOnceThroughItsFirstColumn) {
    const UID spread = document.addSpread();
    const UID story = document.addStory(U"Text\r");
    const UID one = document.addTextFrame(document.node(spread), story);
    const UID two = document.addTextFrame(document.node(spread), story);
    const UID secondColumn = document.addItem(one, ItemClass::textColumnItem);
    document.items[secondColumn].story = story;
    document.items[secondColumn].column = 1;
    EXPECT_EQ(walk(), 0);
    EXPECT_THAT(visits, ElementsAre(two, one, story));
    EXPECT_EQ(textCount, 4);
}

TEST_F(Walk, AnchoredItemsAndTextOnAPathFollowTheirFrame) {
    const UID spread = document.addSpread();
    const UID story = document.addStory(U"a\uFFFC\uFFFC\r"), pathStory = document.addStory(U"path\r");
    const UID frame = document.addTextFrame(document.node(spread), story);
    const UID early = document.addFrame(kInvalidUID), late = document.addFrame(kInvalidUID);
    document.items[early].page = document.items[late].page = document.items[frame].page;
    document.storiesByUid[story].owned = {{1, early}, {2, late}};
    const UID onPath = document.addItem(kInvalidUID, ItemClass::none);
    document.items[onPath].story = pathStory;
    document.items[frame].pathText = onPath;
    EXPECT_EQ(walk(), 0);
    EXPECT_THAT(visits, ElementsAre(frame, pathStory, story, early, late));
}

TEST_F(Walk, ScopesPagesAndPasteboard) {
    const UID used = document.addMaster(), unused = document.addMaster();
    document.mastersInUse = {used};
    std::vector<UID> onPages;
    for (int i = 0; i < 4; ++i)
        onPages.push_back(document.addFrame(document.node(document.addSpread())));
    const UID beside = document.addFrame(document.node(document.spreads[0]));
    document.moveToPasteboard(beside);
    const UID onUsed = document.addFrame(document.node(used)), onUnused = document.addFrame(document.node(unused));
    const UID besideMaster = document.addFrame(document.node(used));
    document.moveToPasteboard(besideMaster);

    struct testRow {
        const char* name;
        WalkScope scope;
        std::int32_t firstPage, lastPage;
        bool skipPasteboard;
        std::vector<UID> expected;
    };
    const testRow rows[] = {
        {"no masters", WalkScope::pagesOnly, 0, 0, false, {beside, onPages[0], onPages[1], onPages[2], onPages[3]}},
        {"masters only", WalkScope::mastersOnly, 0, 0, true, {besideMaster, onUsed, onUnused}},
        {"all",
         WalkScope::everything,
         0,
         0,
         true,
         {onPages[0], onPages[1], onPages[2], onPages[3], besideMaster, onUsed, onUnused}},
        {"used masters",
         WalkScope::pagesAndUsedMasters,
         0,
         0,
         true,
         {onPages[0], onPages[1], onPages[2], onPages[3], besideMaster, onUsed}},
        {"pages 2 to 3", WalkScope::pagesOnly, 2, 3, false, {beside, onPages[1], onPages[2]}},
        {"pages 2 to 3, no pasteboard", WalkScope::pagesOnly, 2, 3, true, {onPages[1], onPages[2]}},
        {"a range leaves masters alone",
         WalkScope::pagesAndUsedMasters,
         4,
         4,
         true,
         {onPages[3], besideMaster, onUsed}},
    };
    for (const auto& [name, scope, firstPage, lastPage, skipPasteboard, expected] : rows) {
        EXPECT_EQ(walk(scope, firstPage, lastPage, false, skipPasteboard), 0) << name;
        EXPECT_EQ(visits, expected) << name;
    }
}

TEST_F(Walk, HiddenAndLockedLayers) {
    document.addLayer();
    const UID spread = document.addSpread();
    const UID lower = document.addFrame(document.node(spread, 1));
    const UID upper = document.addFrame(document.node(spread, 2));
    document.layers[1].visible = false;
    document.layers[1].locked = true;

    walk(WalkScope::everything, 0, 0, true);
    EXPECT_THAT(visits, ElementsAre(upper));
    walk(WalkScope::everything, 0, 0, true, false, true);
    EXPECT_THAT(visits, ElementsAre(lower, upper)) << "visiting wins over skipping";

    document.log.clear();
    frames.atItem = [&](UIDRef&, std::uint16_t& word) {
        EXPECT_FALSE(document.layers[1].locked);
        word = 1;
        return 0;
    };
    walk();
    EXPECT_THAT(visits, ElementsAre(lower)) << "cancel ends the walk";
    EXPECT_TRUE(document.layers[1].locked) << "also behind a cancel";
    EXPECT_THAT(document.log, ElementsAre("begin Visit Locked Layer", "unlock", "lock", "end"));
}

TEST_F(Walk, OnlyThePagesLayerGivesNoVisit) {
    document.layers.pop_back();
    const UID spread = document.addSpread();
    document.nodes[{spread, document.layers[0].uid}] = document.addItem(kInvalidUID, ItemClass::node);
    document.addFrame(document.nodes.begin()->second);
    EXPECT_EQ(walk(), 0);
    EXPECT_TRUE(visits.empty());
}

TEST_F(Walk, AResultEndsTheWalk) {
    const UID spread = document.addSpread();
    document.addFrame(document.node(spread));
    const UID front = document.addFrame(document.node(spread));
    frames.atItem = [](UIDRef&, std::uint16_t&) { return 17; };
    EXPECT_EQ(walk(), 17);
    EXPECT_THAT(visits, ElementsAre(front));
}

// A visit that puts items behind the visited one: they are seen, and nothing is seen twice, also from below a group.
TEST_F(Walk, InsertedItemsAreVisitedOnce) {
    const UID spread = document.addSpread();
    const UID back = document.addFrame(document.node(spread));
    const UID group = document.addItem(document.node(spread), ItemClass::group);
    const UID member = document.addFrame(group);
    const UID front = document.addFrame(document.node(spread));
    std::vector<UID> inserted;
    frames.atItem = [&](UIDRef& frame, std::uint16_t&) {
        if (frame.uid != member && frame.uid != front) return 0;
        const UID parent = document.parent(frame.uid);
        std::vector<UID>& siblings = document.items[parent].children;
        for (int i = 0; i < 2; ++i) {
            const UID added = document.addFrame(parent);
            siblings.pop_back();
            siblings.insert(std::find(siblings.begin(), siblings.end(), frame.uid), added);
            inserted.push_back(added);
        }
        state.insertedItems = 2;
        return 0;
    };
    EXPECT_EQ(walk(), 0);
    ASSERT_EQ(inserted.size(), 4U);
    EXPECT_THAT(visits, ElementsAre(front, inserted[1], inserted[0], group, member, inserted[3], inserted[2], back));
}

TEST_F(Walk, AVisitMayReplaceOrDeleteTheItem) {
    const UID spread = document.addSpread();
    const UID back = document.addFrame(document.node(spread));
    const UID story = document.addStory(U"in\r");
    const UID deleted = document.addTextFrame(document.node(spread), story);
    const UID replaced = document.addFrame(document.node(spread));
    const UID otherStory = document.addStory(U"other\r");
    frames.atItem = [&](UIDRef& frame, std::uint16_t&) {
        if (frame.uid == deleted) return static_cast<std::int32_t>(document.deleteItem(deleted));
        if (frame.uid != replaced) return 0;
        const UID fresh = document.addTextFrame(document.node(spread), otherStory);
        static_cast<void>(document.deleteItem(replaced));
        frame.uid = fresh;
        return 0;
    };
    EXPECT_EQ(walk(), 0);
    EXPECT_THAT(visits, ElementsAre(replaced, otherStory, deleted, back));
}

TEST_F(Walk, DeferredItemsComeLastAndCloneObjectsNever) {
    const UID spread = document.addSpread(), master = document.addMaster();
    const UID parked = document.addItem(document.node(spread), ItemClass::group);
    document.addFrame(parked);
    const UID onMaster = document.addFrame(document.node(master));
    const UID late = document.addItem(document.node(spread), ItemClass::group);
    const UID inLate = document.addFrame(late);
    const UID added = document.addItem(document.node(spread), ItemClass::group);
    state.storedObjects = {{parked, kInvalidUID}};
    state.deferredItems = UIDList{&document, {late}};
    frames.atItem = [&](UIDRef& frame, std::uint16_t&) {
        // A group that is brought in while the walk is on.
        if (frame.uid == inLate) state.deferredItems->uids.push_back(added);
        return 0;
    };
    document.items[document.node(spread)].children.pop_back();
    EXPECT_EQ(walk(), 0);
    EXPECT_THAT(visits, ElementsAre(onMaster, late, inLate, added));

    const std::uint8_t off = 0;
    state.walkDeferredStories = &off;
    walk();
    EXPECT_THAT(visits, ElementsAre(onMaster));
}

TEST_F(Walk, CountsWithoutVisitorsAndWordsOfItsOwn) {
    const UID spread = document.addSpread();
    document.addTextFrame(document.node(spread), document.addStory(U"12345\r"));
    EXPECT_EQ(walkDocument(document, nullptr, nullptr, 0, 0, WalkScope::everything, false, false, &itemCount,
                           &textCount, nullptr, false),
              0);
    EXPECT_EQ(itemCount, 1);
    EXPECT_EQ(textCount, 5);
    EXPECT_EQ(walkDocument(document, &frames, nullptr, 0, 0, WalkScope::everything, false, false, nullptr, nullptr,
                           nullptr, false),
              0);
}

TEST_F(Walk, ASelectedGroupHandsOverItsMembers) {
    const UID spread = document.addSpread();
    const UID outer = document.addItem(document.node(spread), ItemClass::group);
    const UID back = document.addFrame(outer);
    const UID inner = document.addItem(outer, ItemClass::group);
    const UID story = document.addStory(U"text\r");
    const UID member = document.addTextFrame(inner, story);
    const UID gone = document.addFrame(inner);
    const UID front = document.addFrame(inner);
    StoryRecorder stories(visits);
    frames.atItem = [&](UIDRef& frame, std::uint16_t&) {
        return frame.uid == front ? static_cast<std::int32_t>(document.deleteItem(gone)) : 0;
    };
    EXPECT_EQ(processItem({&document, outer}, &frames, &stories, &cancel), 0);
    EXPECT_THAT(visits, ElementsAre(front, member, story, back)) << "and not the groups";

    frames.atItem = [](UIDRef&, std::uint16_t& word) { return static_cast<std::int32_t>(word = 1) - 1; };
    visits.clear();
    EXPECT_EQ(processItem({&document, outer}, &frames, &stories, nullptr), 0);
    EXPECT_THAT(visits, ElementsAre(front)) << "cancel ends it, also with a word of its own";
    frames.atItem = [](UIDRef&, std::uint16_t&) { return 9; };
    EXPECT_EQ(processItem({&document, outer}, &frames, &stories, &cancel), 9);
    EXPECT_EQ(processItem(kInvalidUIDRef, &frames, &stories, &cancel), 0);
}

/// A pair that writes the tags of a document anew: those of "old" data become "new", all others go.
class Rewrite {
 public:
    class Frames final : public ZavoFrameCallback {
     public:
        bool TagIsMine(std::string_view) override { return true; }
        std::int32_t TagProcess() override {
            if (tagBytes() == "old") return replaceTagData("new");
            return replaceTagData(std::nullopt);
        }
    };
    class Stories final : public ZavoStoryCallback {
     public:
        explicit Stories(std::u32string itsText) : text(std::move(itsText)) {}
        bool TagIsMine(UIDRef, const TagAttribute& attribute) override {
            isOld = attribute.data() == "old";
            return true;
        }
        std::int32_t TagProcess(UIDRef story) override {
            errors |= isOld ? replaceTagData(story, "new") : removeTag(story);
            errors |= replaceTagText(story, text, true);
            return 0;
        }
        errorWord errors = 0;

     private:
        std::u32string text;
        bool isOld = false;
    };
};

TEST_F(Walk, APairRewritesTagsAndTheirText) {
    const UID spread = document.addSpread();
    const UID story = document.addStory(U"aa.bb.ccdd\r");
    const UID frame = document.addTextFrame(document.node(spread), story);
    document.setTag(story, 0, 2, 1, "old");
    document.setTag(story, 3, 2, 2, "other");
    document.setTag(story, 6, 2, 3, "old");
    document.setTag(story, 8, 3, 4, "old");  // to the closing mark
    const UIDRef item{&document, frame};
    itemDataSet(item, ItemDataPlace::pageItem, itemDataFrameTag, "old", 3, 0);
    const auto rewrite = [&](std::u32string text) {
        Rewrite::Frames onFrames;
        Rewrite::Stories onStories(std::move(text));
        walkDocument(document, &onFrames, &onStories, 0, 0, WalkScope::everything, false, false, nullptr, nullptr,
                     &cancel, false);
        EXPECT_EQ(onStories.errors, 0);
        std::string tags;
        for (std::int32_t at = 0; at < document.totalLength(story);) {
            const attributeRunRec run = document.attributeRunAt(story, at);
            const auto* tag =
                static_cast<const TagAttribute*>(run.attributes->QueryByClassID(TextAttributeClass::kelvaneTag));
            if (tag != nullptr) tags += std::to_string(tag->tagId()) + tag->data() + std::to_string(run.length) + " ";
            at += run.length;
        }
        return tags;
    };
    EXPECT_EQ(rewrite(U"longer"), "1new6 3new6 4new7 ");
    EXPECT_EQ(document.textRead(story, 0, 99), U"longer.longer.longerlonger\r");
    EXPECT_EQ(*itemDataView(item, ItemDataPlace::pageItem, itemDataFrameTag, 0), "new");
    EXPECT_EQ(rewrite(U""), "") << "not old any more: tags and text go";
    EXPECT_EQ(document.textRead(story, 0, 99), U".longer.\r");
    EXPECT_FALSE(itemDataView(item, ItemDataPlace::pageItem, itemDataFrameTag, 0));
}

TEST(WalkProgress, MovesAtTenths) {
    RecordingAlerts alerts;
    FakeDocument document;
    const UID spread = document.addSpread();
    UIDRef frame{&document, document.addFrame(document.node(spread))};
    std::uint16_t cancel = 0;
    {
        ZavoFrameCallback frames(true, PMString("Frames"));
        frames.SetTotal(16);
        for (int i = 0; i < 8; ++i)
            frames.Process(frame, &cancel);
    }
    EXPECT_EQ(alerts.status, "open Frames;12;25;37;50;close;");
    alerts.status.clear();
    {
        ZavoStoryCallback stories(true, PMString("Texts"));
        stories.SetTotal(100);
        for (int i = 0; i < 3; ++i) {
            const UID story = document.addStory(std::u32string(12, U'x'));
            document.setLook(story, 4, 4, 1);
            std::int32_t start = 0, length = 12;
            stories.Process({&document, story}, start, length, kInvalidUIDRef, &cancel);
        }
    }
    EXPECT_EQ(alerts.status, "open Texts;10;20;30;close;");
}

TEST(FrameCallback, ReadsTheEntryOfItsSignatureInTheModesStore) {
    class Reader final : public ZavoFrameCallback {
     public:
        bool TagIsMine(std::string_view data) override { return data != "foreign"; }
        std::int32_t TagProcess() override {
            static_cast<void>(frameRef.database->setItemDataBlock(frameRef.uid, 0, std::nullopt));
            read = tagBytes();  // a copy, which the change above leaves alone
            return 5;
        }
        std::string read;
    };
    FakeDocument document;
    UIDRef frame{&document, document.addFrame(document.node(document.addSpread()))};
    std::uint16_t cancel = 0;
    const auto readWith = [&](std::uint32_t signature, std::string_view data) {
        itemDataSet(frame, ItemDataPlace::pageItem, itemDataFrameTag, data.data(), data.size(), 0);
        itemDataSet(frame, ItemDataPlace::pageItem, itemDataChartTag, "chart", 5, 0);
        Reader reader;
        reader.SetSignature(signature);
        EXPECT_EQ(reader.Process(frame, &cancel), 0) << "the result of TagProcess is ignored";
        return reader.read;
    };
    EXPECT_EQ(readWith(itemDataFrameTag, "tag"), "tag");
    EXPECT_EQ(readWith(itemDataChartTag, "tag"), "chart");
    EXPECT_EQ(readWith(itemDataFrameTag, "foreign"), "");
    walkStateRec priceMode;
    priceMode.engineMode = 1;
    installWalkState(&priceMode);
    EXPECT_EQ(readWith(itemDataFrameTag, "tag"), "");
    installWalkState(nullptr);
}

}  // namespace
}  // namespace tarnova
