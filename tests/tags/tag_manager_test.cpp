#include "tags/tag_manager.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <set>

#include "document/item_data.h"
#include "document/walk_state.h"
#include "tags/link_check.h"
#include "tags/smart_tags.h"
#include "tests/document/fake_document.h"
#include "tests/engine/toolkit/recording_alerts.h"

namespace tarnova {
namespace {

using namespace std::string_view_literals;

class TagManager : public ::testing::Test {
 protected:
    void SetUp() override {
        installWalkState(&state);
        tagStringsInit(strings, 0);
    }
    void TearDown() override { installWalkState(nullptr); }

    UID addStory(std::u32string text, std::vector<std::int32_t> threads = {}) {
        story = {&document, document.addStory(std::move(text), std::move(threads))};
        return story.uid;
    }
    std::int32_t tagText(std::int32_t position, std::int32_t length, std::string_view data) {
        return manager.TagText(story, strings, data, position, length);
    }
    /// Data of the tag at a place, with its extent left in `found` and `foundLength`; empty without one.
    std::string tagAt(std::int32_t position, std::int32_t length) {
        std::byte* data = nullptr;
        EXPECT_EQ(manager.GetTextTag(story, nullptr, position, length, &data, found, foundLength), 0);
        return take(data);
    }
    static std::string take(std::byte* data) {
        const blockPtr<> owned(data);
        return {reinterpret_cast<const char*>(data), blockSize(data)};
    }
    [[nodiscard]] textTagRec at(std::int32_t position, std::int32_t length) const {
        return findTextTag(document, story.uid, position, length);
    }

    FakeDocument document;
    walkStateRec state;
    tagStrings strings;
    IZavoDataTagManager& manager = dataTagManager();
    UIDRef story;
    std::int32_t found = 0, foundLength = 0;
};

void expectTag(const textTagRec& tag, std::int32_t start, std::int32_t length, const char* where) {
    EXPECT_EQ(tag.start, start) << where;
    EXPECT_EQ(tag.length, length) << where;
    EXPECT_EQ(tag.attribute != nullptr, start >= 0) << where;
}

TEST_F(TagManager, StringsOfANewTagAndItsLabel) {
    tagStrings fresh;
    fresh.ownerName = "as it was";
    tagStringsInit(fresh, 2);
    EXPECT_EQ(fresh.ownerName, "as it was");
    tagStringsInit(fresh, 1);
    EXPECT_EQ(fresh.ownerName, "Tallyra");
    addStory(U"text\r");
    tagText(0, 4, "data");
    EXPECT_EQ(at(0, 1).attribute->label(), "<Kelvane_Highlight_Green_Spare>");
    tagStrings read;
    std::int32_t position = 1, length = 1;
    manager.GetTextTag(story, &read, position, length, nullptr, found, foundLength);
    EXPECT_EQ(read.highlightColour + read.spare, "GreenSpare");
    EXPECT_EQ(position, 0);
    EXPECT_EQ(length, 4);
}

TEST_F(TagManager, TheExtentFromEveryPlace) {
    addStory(U"..aaaa..\r");
    document.setTag(story.uid, 2, 4, 7, "a");
    document.setLook(story.uid, 3, 2, 9);
    struct testRow {
        std::int32_t position, length;
        bool found;
    };
    const testRow rows[] = {{1, 0, false}, {2, 0, true},  {5, 0, true},  {6, 0, true},  {7, 0, false},
                            {0, 2, false}, {0, 3, true},  {0, 9, true},  {5, 99, true}, {6, 2, false},
                            {8, 0, false}, {9, 0, false}, {-1, 0, false}};
    for (const testRow& row : rows) {
        const std::string where = std::to_string(row.position) + "+" + std::to_string(row.length);
        expectTag(at(row.position, row.length), row.found ? 2 : -1, row.found ? 4 : -1, where.c_str());
    }
    EXPECT_EQ(tagAt(7, 1), "");
    EXPECT_EQ(found, -1);
    EXPECT_EQ(foundLength, -1);
}

TEST_F(TagManager, WhatIsNoTag) {
    addStory(U"aaXaa\rcell\r", {6, 5});
    document.setTag(story.uid, 0, 11, 7, "all");
    document.setLook(story.uid, 2, 1, 1);
    document.storiesByUid[story.uid].owned = {{2, 500}};
    expectTag(at(0, 1), 0, 2, "in front of an anchored item");
    expectTag(at(2, 1), -1, -1, "the anchored item");
    expectTag(at(4, 1), 3, 3, "behind it, to the thread's end");
    expectTag(at(7, 1), 6, 5, "a cell is a thread of its own");
    expectTag(at(5, 1), -1, -1, "a closing mark alone");
    expectTag(at(5, 0), -1, -1, "a caret at a thread's very end");
}

TEST_F(TagManager, AnAttributeOfAForeignOwnerIsNone) {
    addStory(U"aabb\r");
    document.setTag(story.uid, 0, 2, 7, "mine");
    document.setTag(story.uid, 2, 2, 8, "other", "Tallyra");
    EXPECT_EQ(tagAt(0, 4), "mine");
    state.engineMode = 1;
    EXPECT_EQ(tagAt(0, 4), "other");
    EXPECT_EQ(found, 2);
}

TEST_F(TagManager, TouchingTagsStayTwo) {
    addStory(U"aabbcc\r");
    ASSERT_EQ(tagText(0, 2, "same"), 0);
    ASSERT_EQ(tagText(2, 2, "same"), 0);
    expectTag(at(1, 1), 0, 2, "first");
    expectTag(at(2, 0), 2, 2, "second, from the caret between them");
    EXPECT_NE(at(0, 1).attribute->tagId(), at(2, 1).attribute->tagId());
}

TEST_F(TagManager, TagTextReplacesWholeTagsAndSparesTheClosingMark) {
    addStory(U"aabbcc\r");
    tagText(0, 4, "old");
    std::int32_t position = 2, length = 5;
    ASSERT_EQ(manager.TagText(story, strings, "new", position, length), 0);
    EXPECT_EQ(length, 4);
    expectTag(at(0, 2), -1, -1, "the old tag is gone from its whole extent");
    expectTag(at(2, 1), 2, 4, "the new tag");
    EXPECT_EQ(tagText(3, 1, ""), 0);
    expectTag(at(0, 6), -1, -1, "no data only removes");
    EXPECT_EQ(manager.TagText(kInvalidUIDRef, strings, "x", position, length), 1);
}

TEST_F(TagManager, RemovingByCaretAndByRange) {
    addStory(U"aabbccdd\r");
    tagText(0, 2, "a");
    tagText(2, 2, "b");
    tagText(4, 2, "c");
    std::int32_t position = 1, length = 0;
    EXPECT_EQ(manager.RemoveTextTag(story, strings, position, length), 0);
    EXPECT_EQ(position, 0);
    EXPECT_EQ(length, 2);
    expectTag(at(0, 8), 2, 2, "the next one stays");
    position = 3;
    length = 2;
    EXPECT_EQ(manager.RemoveTextTag(story, strings, position, length), 0);
    expectTag(at(0, 8), -1, -1, "both that the range touches");
}

TEST_F(TagManager, NextAndPrevious) {
    addStory(U"aa.bbb.cc\r");
    tagText(0, 2, "a");
    tagText(3, 3, "b");
    tagText(7, 2, "c");
    struct testRow {
        std::int32_t position, length;
        const char *next, *previous;
    };
    const testRow rows[] = {{0, 2, "b", ""},  {3, 3, "c", "a"}, {7, 2, "", "b"},
                            {4, 1, "c", "a"}, {2, 0, "b", "a"}, {9, 0, "", "c"}};
    for (const testRow& row : rows) {
        std::byte* data = nullptr;
        std::int32_t position = row.position, length = row.length;
        manager.GetNextTextTag(story, nullptr, position, length, &data, found, foundLength);
        EXPECT_EQ(take(data), row.next) << row.position;
        position = row.position;
        length = row.length;
        manager.GetPreviousTextTag(story, nullptr, position, length, &data, found, foundLength);
        EXPECT_EQ(take(data), row.previous) << row.position;
    }
}

TEST_F(TagManager, WithTextTagFollowsTheChange) {
    addStory(U"..aa\r");
    document.setTag(story.uid, 2, 3, 7, "to the closing mark");
    std::int32_t position = 2, length = 0;
    const auto grow = [&](UIDRef ref, std::int32_t start, std::int32_t count) {
        EXPECT_EQ(start, 2);
        EXPECT_EQ(count, 2) << "without the closing mark";
        static_cast<void>(document.textReplace(ref.uid, start, count, U"longer", true));
        return 5;
    };
    EXPECT_EQ(manager.WithTextTag(story, grow, "Grow", position, length), 5);
    EXPECT_EQ(position, 2);
    EXPECT_EQ(length, 6);
    EXPECT_THAT(document.log, ::testing::ElementsAre("begin Grow", "end"));
    EXPECT_EQ(manager.RunTagSequence(
                  story, story, [](UIDRef) { return 8; }, "Run"),
              8);
}

TEST_F(TagManager, ADocumentThatRefusesIsTold) {
    RecordingAlerts alerts;
    addStory(U"aa\r");
    tagText(0, 2, "a");
    document.refusesChanges = true;
    std::int32_t position = 0, length = 2;
    EXPECT_EQ(tagText(0, 2, "b"), 1);
    EXPECT_EQ(manager.RemoveTextTag(story, strings, position, length), 1);
    const auto never = [](UIDRef, std::int32_t, std::int32_t) { return 9; };
    EXPECT_EQ(manager.WithTextTag(story, never, "Title", position, length), 0);
    EXPECT_EQ(manager.RunTagSequence(
                  story, story, [](UIDRef) { return 9; }, "Title"),
              0);
    EXPECT_THAT(alerts.keys(),
                ::testing::ElementsAre("kZavoErrorRemoveSequenceFailed", "kZavoErrorRemoveSequenceFailed",
                                       "kZavoErrorMergeSequenceFailed", "kZavoErrorMergeSequenceFailed"));
    EXPECT_EQ(tagAt(0, 2), "a");
}

TEST_F(TagManager, FrameEntriesAndTheirStores) {
    const UIDRef frame{&document, document.addFrame(document.node(document.addSpread()))};
    std::byte* data = nullptr;
    EXPECT_EQ(manager.GetFrameTag(frame, strings, &data), 1);
    EXPECT_EQ(manager.SetFrameTag(frame, strings, "frame"), 0);
    EXPECT_EQ(manager.SetChartTag(frame, strings, "chart"), 0);
    state.engineMode = 1;
    EXPECT_EQ(manager.GetFrameTag(frame, strings, &data), 1) << "the other store has none";
    EXPECT_EQ(manager.SetActionFrameAttr(frame, strings, "{}"), 0);
    state.engineMode = 0;
    EXPECT_EQ(manager.GetFrameTag(frame, strings, &data), 0);
    EXPECT_EQ(take(data), "frame");
    EXPECT_EQ(manager.GetChartTag(frame, strings, &data), 0);
    EXPECT_EQ(take(data), "chart");
    EXPECT_EQ(manager.GetActionFrameAttr(frame, strings, &data), 0);
    EXPECT_EQ(take(data), "{}") << "one store for both modes";
    EXPECT_EQ(manager.RemoveActionFrameAttr(frame), 0);
    EXPECT_EQ(manager.GetActionFrameAttr(frame, strings, &data), 0);
    EXPECT_EQ(data, nullptr);
    EXPECT_EQ(manager.RemoveFrameTag(frame), 0);
    EXPECT_EQ(manager.RemoveChartTag(frame), 0);
    EXPECT_EQ(manager.GetFrameTag(frame, strings, &data), 1);
    document.refusesChanges = true;
    EXPECT_EQ(manager.SetFrameTag(frame, strings, "x"), 1);
}

TEST_F(TagManager, ReservedOperations) {
    const UIDRef item{&document, document.addFrame(document.node(document.addSpread()))};
    std::byte mark{};
    for (const auto reserved : {&IZavoDataTagManager::Reserved9, &IZavoDataTagManager::Reserved10,
                                &IZavoDataTagManager::Reserved15, &IZavoDataTagManager::Reserved16}) {
        std::byte* data = &mark;
        EXPECT_EQ((manager.*reserved)(item, strings, &data), 1);
        EXPECT_EQ(data, nullptr);
    }
}

TEST_F(TagManager, Tables) {
    const UIDRef table{&document, document.newUid()}, none{&document, document.newUid()};
    FakeTable& model = document.tables[table.uid];
    std::byte mark{};
    std::byte* data = &mark;
    EXPECT_EQ(manager.GetTableTag(table, nullptr, &data), 1);
    EXPECT_EQ(data, nullptr);
    EXPECT_EQ(manager.TagTable(table, strings, ""), 0);
    EXPECT_EQ(model.attribute, nullptr) << "without data nothing is done";
    ASSERT_EQ(manager.TagTable(table, strings, "{}"), 0);
    const auto first = std::static_pointer_cast<const NokDataTagTableAttr>(model.attribute);
    tagStrings read;
    ASSERT_EQ(manager.GetTableTag(table, &read, &data), 0);
    EXPECT_EQ(take(data), "{}");
    EXPECT_EQ(read.ownerName + read.highlightMode + read.highlightColour + read.spare, "KelvaneHighlightGreenSpare");
    ASSERT_EQ(manager.TagTableCommands(&model, strings), 0);
    EXPECT_EQ(model.attribute->dataSize(), 0U);
    EXPECT_NE(std::static_pointer_cast<const NokDataTagTableAttr>(model.attribute)->tagId(), first->tagId());
    EXPECT_EQ(manager.RemoveTableTag(table, strings), 0);
    EXPECT_EQ(model.attribute, nullptr);
    EXPECT_THAT(document.log, ::testing::ElementsAre("begin Clear Table Overrides", "end"));

    EXPECT_EQ(manager.TagTable(none, strings, "x"), 1);
    EXPECT_EQ(manager.TagTable(none, strings, ""), 0);
    EXPECT_EQ(manager.TagTableCommands(nullptr, strings), 1);
    EXPECT_EQ(manager.RemoveTableTag(none, strings), 1);
    model.canApply = false;
    EXPECT_EQ(manager.TagTable(table, strings, "x"), 1);
    EXPECT_EQ(manager.TagTableCommands(&model, strings), 1);
    EXPECT_EQ(manager.RemoveTableTag(table, strings), 1);
    EXPECT_EQ(manager.RemoveTableTag(kInvalidUIDRef, strings), 1);
    model.canApply = true;
    document.refusesChanges = true;
    EXPECT_EQ(manager.RemoveTableTag(table, strings), 1) << "no sequence can be begun";
}

TEST_F(TagManager, RangesPastAllNumbers) {
    addStory(U"aabb\r");
    tagText(2, 2, "b");
    constexpr std::int32_t most = std::numeric_limits<std::int32_t>::max();
    std::int32_t position = 2, length = most;
    manager.GetNextTextTag(story, nullptr, position, length, nullptr, found, foundLength);
    EXPECT_EQ(found, -1);
    position = 1;
    length = most;
    EXPECT_EQ(manager.RemoveTextTag(story, strings, position, length), 0);
    expectTag(at(0, most), -1, -1, "removed");
    position = most;
    EXPECT_EQ(manager.TagText(story, strings, "x", position, length), 0);
    expectTag(at(0, most), -1, -1, "nothing behind the end");
}

TEST_F(TagManager, RecordsOnFrames) {
    const UIDRef frame{&document, document.addFrame(document.node(document.addSpread()))};
    tagDataRec tag{};
    EXPECT_EQ(readFrameTag(frame, tag, 0), 0);
    EXPECT_EQ(tag.tagStatus, tagStatusNone);
    pstrSet(tag.searchKey, "12");
    ASSERT_EQ(writeFrameTag(frame, tag, 0), 0);
    tagDataRec read{};
    EXPECT_EQ(readFrameTag(frame, read, 0), 0);
    EXPECT_EQ(read.tagStatus, tagStatusRead);
    EXPECT_EQ(pstrView(read.searchKey), "12");
    manager.SetFrameTag(frame, strings, "broken");
    EXPECT_EQ(readFrameTag(frame, read, 0), errTagRefused);
    EXPECT_EQ(read.tagStatus, tagStatusNone);
}

// Ids must be new against each other, against those of earlier sessions in both stores, and without waiting for a
// clock.
TEST_F(TagManager, IdsAreNewInTheirDocument) {
    const std::uint32_t next = newTagId(document);
    FakeDocument other;
    const UID full = other.addStory(std::u32string(300, U'x') + U"\r");
    for (std::int32_t i = 0; i < 300; ++i)
        other.setTag(full, i, 1, next + static_cast<std::uint32_t>(i), "x", i % 2 == 0 ? "Kelvane" : "Tallyra");
    std::set<std::uint32_t> given;
    for (int i = 0; i < 10000; ++i)
        given.insert(newTagId(other));
    EXPECT_EQ(given.size(), 10000U);
    for (std::uint32_t id = next; id < next + 300; ++id)
        EXPECT_FALSE(given.contains(id)) << id;
}

std::string recordWithKey(std::string_view key) {
    tagDataRec tag{};
    pstrSet(tag.searchKey, key);
    std::byte* block = nullptr;
    EXPECT_EQ(tagRecordEncode(&tag, &block, 0), 0);
    const blockPtr<> owned(block);
    return {reinterpret_cast<const char*>(block), blockSize(block)};
}

TEST_F(TagManager, LinksInsideAnItem) {
    const UID spread = document.addSpread();
    const UID group = document.addItem(document.node(spread), ItemClass::group);
    const UID plain = document.addStory(U"plain\r"), tagged = document.addStory(U"tagged\r");
    document.addTextFrame(group, plain);
    EXPECT_FALSE(itemHasLinks({&document, group}));
    const UID member = document.addTextFrame(group, tagged);
    document.setTag(tagged, 0, 3, 1, "x");
    EXPECT_TRUE(itemHasLinks({&document, group}));
    EXPECT_TRUE(itemHasLinks({&document, member}));
    const UID framed = document.addFrame(document.node(spread));
    manager.SetFrameTag({&document, framed}, strings, "x");
    EXPECT_TRUE(itemHasLinks({&document, framed}));
    state.engineMode = 1;
    EXPECT_FALSE(itemHasLinks({&document, group}));
}

TEST_F(TagManager, CountingKeyNumbers) {
    const UID text = document.addStory(U"aabbccd\r");
    document.addTextFrame(document.node(document.addSpread()), text);
    document.setTag(text, 0, 2, 1, recordWithKey("7"));
    document.setTag(text, 2, 2, 2, recordWithKey(" 12 of 40"));
    document.setTag(text, 4, 2, 3, recordWithKey("none"));
    document.setTag(text, 6, 1, 4, recordWithKey("99"));  // one character
    std::int32_t count = -1, highest = -1;
    countSmartTags(document, count, highest);
    EXPECT_EQ(count, 3);
    EXPECT_EQ(highest, 12);
}

}  // namespace
}  // namespace tarnova
