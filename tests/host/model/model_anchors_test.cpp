#include <gtest/gtest.h>

#include <functional>

#include "document/walk.h"
#include "host/model/anchor_place.h"
#include "host/model/document_builder.h"
#include "host/model/story_text.h"

namespace tarnova {
namespace {

/// Two boxes in front of a frame with text, on a page of 200 by 100 points. With nobody to compose, anchored items lie
/// at the top left of their frame.
class AnchoredItems : public testing::Test {
 protected:
    void SetUp() override {
        DocumentBuilder builder;
        page = builder.addSinglePage(200, 100);
        frame = builder.addTextFrame(page, {50, 10, 90, 60}, U"Dear Name");
        box = builder.addRectangle(page, {10, 10, 30, 25}, {swatchBlack, 1});
        other = builder.addTextFrame(page, {100, 10, 190, 60}, U"other");
        document = builder.finish();
        story = document->textOfFrame(frame);
        node = document->parent(frame);
    }

    std::u32string text(UID of) const { return document->textRead(of, 0, document->totalLength(of)); }
    void expectSound() const {
        for (UID uid : document->stories()) {
            EXPECT_TRUE(storyIsConsistent(*document->story(uid)->content));
            for (const ownedItemRec& owned : document->ownedItems(uid, 0, document->totalLength(uid))) {
                EXPECT_EQ(document->parent(owned.item), uid);
            }
        }
    }

    std::unique_ptr<DocumentModel> document;
    UID page = 0, frame = 0, box = 0, other = 0, story = 0, node = 0;
};

TEST_F(AnchoredItems, AnItemGoesIntoATextAndComesBack) {
    ASSERT_EQ(document->anchorItem(box, story, 5), 0);
    EXPECT_EQ(text(story), U"Dear \uFFFCName\r");
    EXPECT_EQ(document->childCount(node), 2);
    EXPECT_EQ(document->inlinePosition(box), std::pair(story, 5));
    EXPECT_EQ(document->boundsInSpread(box), (PMRect{50, 10, 70, 25}));
    EXPECT_EQ(document->pageOfItem(box).page, page);
    expectSound();

    ASSERT_EQ(document->textReplace(story, 0, 4, U"To", false), 0);
    EXPECT_EQ(document->inlinePosition(box), std::pair(story, 3));
    std::int32_t items = 0;
    walkDocument(*document, nullptr, nullptr, 1, 1, WalkScope::pagesOnly, true, true, &items, nullptr, nullptr, false);
    EXPECT_EQ(items, 3) << "the walk visits what is anchored";

    ASSERT_EQ(document->releaseItem(box), 0);
    EXPECT_EQ(text(story), U"To Name\r");
    EXPECT_EQ(document->parent(box), node);
    EXPECT_EQ(document->childAt(node, 2), box);
    EXPECT_EQ(document->boundsInSpread(box), (PMRect{50, 10, 70, 25}));
    EXPECT_EQ(document->inlinePosition(box), std::nullopt);
    for (int i = 0; i < 3; ++i)
        EXPECT_TRUE(document->undo());
    EXPECT_EQ(text(story), U"Dear Name\r");
    EXPECT_EQ(document->boundsInSpread(box), (PMRect{10, 10, 30, 25}));
    expectSound();
}

TEST_F(AnchoredItems, ItemAndCharacterGoTogether) {
    ASSERT_EQ(document->anchorItem(other, story, 0), 0);
    ASSERT_EQ(document->anchorItem(box, document->textOfFrame(other), 2), 0);
    const std::function<void()> deletions[] = {
        [this] { EXPECT_EQ(document->textDelete(story, 0, 3), 0); },
        [this] { EXPECT_EQ(document->deleteItem(other), 0); },
        [this] { EXPECT_EQ(document->deleteItem(frame), 0); },
    };
    for (const auto& remove : deletions) {
        remove();
        EXPECT_FALSE(document->itemExists(other));
        EXPECT_FALSE(document->itemExists(box));
        expectSound();
        ASSERT_TRUE(document->undo());
        EXPECT_EQ(text(story), U"\uFFFCDear Name\r");
        EXPECT_EQ(document->inlinePosition(box), std::pair(document->textOfFrame(other), 2));
        expectSound();
    }
}

TEST_F(AnchoredItems, CopiesHaveItemsOfTheirOwn) {
    ASSERT_EQ(document->anchorItem(other, story, 4), 0);
    ASSERT_EQ(document->anchorItem(box, document->textOfFrame(other), 0), 0);
    ASSERT_EQ(document->duplicateSpread(document->spreadAt(0)), 0);
    const UID copiedFrame = document->childAt(document->spreadLayerNode(document->spreadAt(1), document->layerAt(1)), 0);
    const UID copiedStory = document->textOfFrame(copiedFrame);
    const std::vector<ownedItemRec> owned = document->ownedItems(copiedStory, 0, 100);
    ASSERT_EQ(owned.size(), 1u);
    EXPECT_NE(owned[0].item, other);
    EXPECT_EQ(document->item(owned[0].item)->stamp, document->item(other)->stamp);
    EXPECT_EQ(document->story(copiedStory)->stamp, document->story(story)->stamp);
    EXPECT_EQ(document->pageOfItem(owned[0].item).page, document->pageAt(1));
    EXPECT_EQ(document->ownedItems(document->textOfFrame(owned[0].item), 0, 100).size(), 1u) << "what is in it too";
    expectSound();
    ASSERT_EQ(document->deleteItem(owned[0].item), 0);
    EXPECT_TRUE(document->itemExists(other));
    EXPECT_EQ(text(story), U"Dear\uFFFC Name\r");
}

TEST_F(AnchoredItems, WhatIsRefused) {
    const UID inner = document->textOfFrame(other);
    UID copy = 0, group = 0;
    ASSERT_EQ(document->duplicateItem(box, copy), 0);
    ASSERT_EQ(document->groupItems({box, copy}, group), 0);
    EXPECT_NE(document->anchorItem(box, story, 0), 0) << "a member of a group";
    EXPECT_NE(document->anchorItem(frame, story, 0), 0) << "a frame in its own text";
    EXPECT_NE(document->anchorItem(group, story, 10), 0) << "behind the closing mark";
    EXPECT_NE(document->anchorItem(page, story, 0), 0) << "no item";
    EXPECT_NE(document->anchorItem(group, frame, 0), 0) << "no text";
    EXPECT_NE(document->releaseItem(box), 0) << "not in a text";
    ASSERT_EQ(document->anchorItem(other, story, 0), 0);
    EXPECT_NE(document->anchorItem(other, story, 0), 0) << "in a text already";
    EXPECT_NE(document->anchorItem(frame, inner, 0), 0) << "a frame that holds the text";
    EXPECT_NE(document->linkFrames(frame, other), 0) << "into an item of its text";
    EXPECT_NE(document->setItemFlow(frame, {{.kind = AnchorOptions::Kind::aboveLine}, {}}), 0) << "not anchored";
    EXPECT_NE(document->setItemFlow(other, {{.x = 1e9}, {}}), 0) << "too far";
    EXPECT_EQ(document->setItemFlow(other, {{.kind = AnchorOptions::Kind::aboveLine}, {}}), 0);
}

TEST_F(AnchoredItems, TextsStandInTextsToALimit) {
    UID copies[4] = {};
    for (UID& copy : copies)
        ASSERT_EQ(document->duplicateItem(other, copy), 0);
    for (int i = 2; i >= 0; --i)
        ASSERT_EQ(document->anchorItem(copies[i + 1], document->textOfFrame(copies[i]), 0), 0);
    EXPECT_NE(document->anchorItem(copies[0], story, 0), 0) << "four deep";
    EXPECT_NE(document->anchorItem(box, document->textOfFrame(copies[3]), 0), 0);
    EXPECT_EQ(document->anchorItem(copies[1], story, 0), errFailed) << "it is anchored";
    ASSERT_EQ(document->releaseItem(copies[1]), 0);
    EXPECT_EQ(document->anchorItem(copies[1], story, 0), 0);
    expectSound();
}

TEST_F(AnchoredItems, AnAnchorJoinsALinkOnlyInside) {
    const auto tag = std::make_shared<const TagAttribute>(TextAttributeClass::kelvaneTag,
                                                          TagAttribute::Content{"Kelvane", "", "", "", 7, "data"});
    ASSERT_EQ(document->attributeApply(story, 5, 4, tag), 0);
    ASSERT_EQ(document->anchorItem(box, story, 9), 0);
    ASSERT_EQ(document->anchorItem(other, story, 7), 0);
    const auto isLinked = [&](std::int32_t at) {
        return document->attributeRunAt(story, at).attributes->QueryByClassID(TextAttributeClass::kelvaneTag) != nullptr;
    };
    EXPECT_TRUE(isLinked(7));
    EXPECT_TRUE(isLinked(9));
    EXPECT_FALSE(isLinked(10)) << "behind the link";
    EXPECT_EQ(document->attributeRunAt(story, 5).length, 5);
}

TEST(AnchorPlace, FollowsKindAndEdges) {
    using O = AnchorOptions;
    const AnchorPoint point{0, {10, 20, 110, 220}, 40, 100, 70};
    const PMRect frame{0, 0, 300, 400};
    struct testRow {
        const char* name;
        O options;
        PMPoint place;
    };
    const testRow rows[] = {
        {"on the baseline", {}, {40, 85}},
        {"lowered", {.y = 5}, {40, 90}},
        {"above the line", {.kind = O::Kind::aboveLine}, {40, 70}},
        {"from the character", {.kind = O::Kind::custom, .x = -8, .y = 4}, {32, 104}},
        {"at the column's left", {.kind = O::Kind::custom, .x = 2, .xFrom = O::Edge::column}, {12, 100}},
        {"in the column's middle",
         {.kind = O::Kind::custom, .align = O::Align::center, .xFrom = O::Edge::column, .yFrom = O::Edge::column},
         {50, 20}},
        {"beside the frame's right",
         {.kind = O::Kind::custom, .x = 20, .align = O::Align::right, .xFrom = O::Edge::frame, .yFrom = O::Edge::frame},
         {300, 0}},
    };
    for (const auto& [name, options, place] : rows)
        EXPECT_EQ(placeOfAnchor(options, point, frame, {20, 15}), place) << name;
}

}  // namespace
}  // namespace tarnova
