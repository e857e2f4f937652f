#include "document/story_callback.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>

#include "document/walk_state.h"
#include "engine/toolkit/toolkit_state.h"
#include "tests/document/fake_document.h"

namespace tarnova {
namespace {

using ::testing::ElementsAre;

struct foundTagRec {
    std::string data;
    std::int32_t start, length, tail;
    friend bool operator==(const foundTagRec&, const foundTagRec&) = default;
};

std::ostream& operator<<(std::ostream& out, const foundTagRec& tag) {
    return out << tag.data << " " << tag.start << "+" << tag.length << (tag.tail != 0 ? " tail" : "");
}

class Collector final : public ZavoStoryCallback {
 public:
    bool TagIsMine(UIDRef, const TagAttribute& attribute) override {
        opened = attribute.data();
        return opened != "foreign";
    }
    std::int32_t TagProcess(UIDRef story) override {
        tags.push_back({opened, tagStart, tagLength, tagTail});
        return atTag ? atTag(story) : 0;
    }
    std::int32_t StoryEnd(UIDRef) override {
        ++ends;
        return 0;
    }
    /// Replaces the open tag's text and keeps the scan behind it, as a merge does.
    void replace(UIDRef story, std::u32string_view text) {
        static_cast<void>(story.database->textReplace(story.uid, tagStart, tagLength, text, true));
        const auto difference = static_cast<std::int32_t>(text.size()) - tagLength;
        position += difference;
        storyEnd += difference;
    }
    void setCancel() { *cancel = 1; }
    [[nodiscard]] UIDRef frame() const { return frameRef; }

    std::function<std::int32_t(UIDRef)> atTag;
    std::vector<foundTagRec> tags;
    int ends = 0;

 private:
    std::string opened;
};

class StoryScan : public ::testing::Test {
 protected:
    void TearDown() override {
        toolkitState().engineError = 0;
        installWalkState(nullptr);
    }
    std::int32_t scan(std::int32_t from, std::int32_t count) {
        start = from;
        length = count;
        return collector.Process({&document, story}, start, length, kInvalidUIDRef, &cancel);
    }
    std::int32_t scan() { return scan(0, document.totalLength(story)); }

    FakeDocument document;
    UID story = kInvalidUID;
    Collector collector;
    std::int32_t start = 0, length = 0;
    std::uint16_t cancel = 0;
};

TEST_F(StoryScan, OneTagAcrossOtherAttributesAndTwoThatTouch) {
    story = document.addStory(U"aaAAbbccdd\r");
    document.setTag(story, 2, 4, 7, "first");
    document.setLook(story, 2, 2, 9);
    document.setTag(story, 6, 2, 8, "second");
    EXPECT_EQ(scan(), 0);
    EXPECT_THAT(collector.tags, ElementsAre(foundTagRec{"first", 2, 4, 0}, foundTagRec{"second", 6, 2, 0}));
    EXPECT_EQ(collector.ends, 1);
}

TEST_F(StoryScan, TypingInTheMiddleSplitsATag) {
    story = document.addStory(U"aabaa\r");
    document.setTag(story, 0, 2, 7, "split");
    document.setTag(story, 3, 2, 7, "split");
    scan();
    EXPECT_THAT(collector.tags, ElementsAre(foundTagRec{"split", 0, 2, 0}, foundTagRec{"split", 3, 2, 0}));
}

TEST_F(StoryScan, AThreadEndsATag) {
    story = document.addStory(U"main\rcell\r", {5, 5});
    document.setTag(story, 2, 8, 7, "both");
    scan();
    EXPECT_THAT(collector.tags, ElementsAre(foundTagRec{"both", 2, 3, 1}, foundTagRec{"both", 5, 5, 1}));
}

TEST_F(StoryScan, ForeignTagsAndTheOtherStore) {
    story = document.addStory(U"aabbccdd\r");
    document.setTag(story, 0, 2, 1, "foreign");
    document.setTag(story, 2, 2, 2, "mine");
    document.setTag(story, 4, 2, 3, "price", "Tallyra");
    scan();
    EXPECT_THAT(collector.tags, ElementsAre(foundTagRec{"mine", 2, 2, 0}));
    walkStateRec priceMode;
    priceMode.engineMode = 1;
    installWalkState(&priceMode);
    collector.tags.clear();
    scan();
    EXPECT_THAT(collector.tags, ElementsAre(foundTagRec{"price", 4, 2, 0}));
}

TEST_F(StoryScan, ARangeIsKeptToAndGivenBackAsItIsAfterwards) {
    story = document.addStory(U"aabbccddee\r");
    document.setTag(story, 0, 4, 1, "a");
    document.setTag(story, 6, 4, 2, "d");
    collector.atTag = [&](UIDRef ref) {
        collector.replace(ref, U"longer text");
        return 0;
    };
    EXPECT_EQ(scan(1, 7), 0);
    EXPECT_THAT(collector.tags, ElementsAre(foundTagRec{"a", 1, 3, 0}, foundTagRec{"d", 14, 4, 0}));
    EXPECT_EQ(start, 1);
    EXPECT_EQ(length, 7 + 8 + 7) << "the last tag is worked on whole, also past the range";
}

TEST_F(StoryScan, TextThatGrowsOrGoesLeavesTheNextTagInReach) {
    story = document.addStory(U"aabbbbcc\r");
    document.setTag(story, 0, 2, 1, "one");
    document.setTag(story, 2, 4, 2, "two");
    document.setTag(story, 6, 2, 3, "three");
    collector.atTag = [&](UIDRef ref) {
        collector.replace(ref, collector.tags.size() == 1 ? U"aaaaaaaaaaaa" : U"");
        return 0;
    };
    scan();
    EXPECT_THAT(collector.tags,
                ElementsAre(foundTagRec{"one", 0, 2, 0}, foundTagRec{"two", 12, 4, 0}, foundTagRec{"three", 12, 2, 0}));
    EXPECT_EQ(document.storiesByUid[story].text, U"aaaaaaaaaaaa\r");
}

TEST_F(StoryScan, AResultEndsTheStoryAtOnce) {
    story = document.addStory(U"aabbcc\r");
    document.setTag(story, 0, 2, 1, "one");
    document.setTag(story, 4, 2, 2, "two");
    collector.atTag = [&](UIDRef ref) {
        collector.replace(ref, U"changed");
        return 33;
    };
    EXPECT_EQ(scan(), 33);
    EXPECT_EQ(collector.tags.size(), 1U);
    EXPECT_EQ(collector.ends, 0);
    EXPECT_EQ(length, 7) << "the caller's range stays";
}

TEST_F(StoryScan, CancelAndAnErrorEndTheScanButNotTheStory) {
    story = document.addStory(U"aabb\r");
    document.setTag(story, 0, 2, 1, "one");
    document.setTag(story, 2, 2, 2, "two");
    collector.atTag = [&](UIDRef) {
        collector.setCancel();
        return 0;
    };
    EXPECT_EQ(scan(), 0);
    EXPECT_EQ(collector.tags.size(), 1U);
    EXPECT_EQ(collector.ends, 1);

    cancel = 0;
    collector.tags.clear();
    collector.atTag = [](UIDRef) {
        toolkitState().engineError = 55;
        return 0;
    };
    EXPECT_EQ(scan(), 0);
    EXPECT_EQ(collector.tags.size(), 1U);
    EXPECT_EQ(collector.ends, 2);
}

TEST_F(StoryScan, TheFrameOfTheFirstCharacter) {
    story = document.addStory(U"aa\r");
    document.setTag(story, 0, 2, 1, "one");
    UIDRef seen;
    collector.atTag = [&](UIDRef) {
        seen = collector.frame();
        return 0;
    };
    scan();
    EXPECT_EQ(seen.uid, kInvalidUID) << "overset";
    const UID frame = document.addTextFrame(document.node(document.addSpread()), story);
    scan();
    EXPECT_EQ(seen, (UIDRef{&document, frame}));
    EXPECT_EQ(collector.Process(kInvalidUIDRef, start, length, kInvalidUIDRef, &cancel), 1);
}

}  // namespace
}  // namespace tarnova
