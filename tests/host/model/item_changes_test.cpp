// Changes of items: content, place, copies and groups, each with the way back.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

#include "host/model/document_builder.h"
#include "host/model/limits.h"

namespace tarnova {
namespace {

using ::testing::ElementsAre;

class ItemChanges : public ::testing::Test {
 protected:
    void SetUp() override {
        DocumentBuilder builder;
        builder.setLayers({{kInvalidUID, "Back"}, {kInvalidUID, "Front"}});
        page = builder.addSinglePage(200, 200);
        back = builder.addRectangle(page, {10, 10, 30, 30}, {swatchBlack, 1});
        frame = builder.addTextFrame(page, {40, 10, 100, 50}, U"text");
        middle = builder.addRectangle(page, {50, 50, 70, 60}, {});
        PageItem onFront;
        onFront.shape = std::make_shared<ItemShape>();
        front = builder.addItem(builder.layerNode(builder.spreadOf(page), 2), onFront);
        document = builder.finish();
        backNode = document->parent(back);
        frontNode = document->parent(front);
    }
    [[nodiscard]] std::vector<UID> childrenOf(UID item) const { return document->item(item)->children; }
    [[nodiscard]] std::uint64_t stampOf(UID item) const { return document->item(item)->stamp; }
    UID group(const std::vector<UID>& items) {
        UID made = kInvalidUID;
        EXPECT_EQ(document->groupItems(items, made), 0);
        return made;
    }
    static void expectNear(const PMRect& a, const PMRect& b) {
        EXPECT_NEAR(a.left, b.left, 1e-9);
        EXPECT_NEAR(a.top, b.top, 1e-9);
        EXPECT_NEAR(a.right, b.right, 1e-9);
        EXPECT_NEAR(a.bottom, b.bottom, 1e-9);
    }

    UID page = kInvalidUID, back = kInvalidUID, frame = kInvalidUID, middle = kInvalidUID, front = kInvalidUID;
    UID backNode = kInvalidUID, frontNode = kInvalidUID;
    std::unique_ptr<DocumentModel> document;
};

TEST_F(ItemChanges, AGroupStandsWhereItsFrontmostMemberStood) {
    const UID made = group({middle, back});
    EXPECT_THAT(childrenOf(backNode), ElementsAre(frame, made));
    EXPECT_THAT(childrenOf(made), ElementsAre(back, middle)) << "in their order, whatever the list's";
    EXPECT_EQ(document->parent(back), made);
    EXPECT_EQ(document->boundsInSpread(made), (PMRect{10, 10, 70, 60}));
    EXPECT_EQ(document->boundsInSpread(back), (PMRect{10, 10, 30, 30}));
    ASSERT_EQ(document->undo(), "Group Items");
    EXPECT_THAT(childrenOf(backNode), ElementsAre(back, frame, middle));
    EXPECT_FALSE(document->itemExists(made));
    ASSERT_EQ(document->redo(), "Group Items");
    EXPECT_THAT(childrenOf(made), ElementsAre(back, middle));
}

TEST_F(ItemChanges, MembersOfOtherLayersComeToTheFrontmost) {
    const UID made = group({front, back});
    EXPECT_THAT(childrenOf(frontNode), ElementsAre(made));
    EXPECT_THAT(childrenOf(backNode), ElementsAre(frame, middle));
    EXPECT_THAT(childrenOf(made), ElementsAre(back, front));
}

TEST_F(ItemChanges, WhatCantBeGrouped) {
    const UID column = document->childAt(frame, 0);
    const UID made = group({back, middle});
    ASSERT_EQ(document->addPages(1), 0);
    ASSERT_EQ(document->duplicateSpread(document->spreadAt(0)), 0);
    const UID elsewhere = document->childAt(document->spreadLayerNode(document->spreadAt(2), document->layerAt(1)), 0);
    const std::pair<const char*, std::vector<UID>> rows[] = {
        {"none", {}},
        {"one", {frame}},
        {"one twice", {frame, frame}},
        {"a group and its member", {made, back}},
        {"of two levels", {frame, back}},
        {"of two spreads", {frame, elsewhere}},
        {"a column", {frame, column}},
        {"nodes", {backNode, frontNode}},
        {"no item", {frame, page}},
        {"nothing", {frame, kInvalidUID}},
    };
    for (const auto& [name, items] : rows) {
        UID out = 77;
        EXPECT_NE(document->groupItems(items, out), 0) << name;
        EXPECT_EQ(out, kInvalidUID) << name;
    }
    std::vector<UID> members;
    EXPECT_NE(document->ungroup(frame, members), 0);
    EXPECT_NE(document->ungroup(backNode, members), 0);
}

TEST_F(ItemChanges, GroupsAreNestedAsDeepAsAFileTakesThem) {
    UID made = group({back, middle});
    for (std::size_t depth = 1; depth < groupDepthLimit; ++depth) {
        UID partner = kInvalidUID;
        ASSERT_EQ(document->duplicateItem(frame, partner), 0);
        made = group({made, partner});
    }
    UID out = kInvalidUID;
    EXPECT_NE(document->groupItems({made, frame}, out), 0) << "from outside";
    EXPECT_NE(document->groupItems(childrenOf(document->parent(back)), out), 0) << "from inside";
}

TEST_F(ItemChanges, UngroupingKeepsPlaceAndOrderAndWhatTheGroupSaid) {
    const UID inner = group({back, middle});
    const UID outer = group({inner, frame});
    ASSERT_EQ(document->rotateBy(outer, 30), 0);
    ASSERT_EQ(document->moveBy(inner, 5, 7), 0);
    const PMRect was = document->boundsInSpread(middle);
    const std::uint64_t stamp = stampOf(middle);
    std::vector<UID> members;
    ASSERT_EQ(document->ungroup(outer, members), 0);
    EXPECT_THAT(members, ElementsAre(frame, inner));
    EXPECT_THAT(childrenOf(backNode), ElementsAre(frame, inner));
    EXPECT_FALSE(document->itemExists(outer));
    ASSERT_EQ(document->ungroup(inner, members), 0);
    EXPECT_THAT(childrenOf(backNode), ElementsAre(frame, back, middle));
    expectNear(document->boundsInSpread(middle), was);
    EXPECT_NE(stampOf(middle), stamp);
    EXPECT_NEAR(document->transformValues(frame).rotationDegrees, 30, 1e-9);
}

TEST_F(ItemChanges, MovesAreInTheSpreadsCoordinatesAtAnyDepth) {
    const UID inner = group({back, middle});
    const UID outer = group({inner, frame});
    ASSERT_EQ(document->rotateBy(outer, 90), 0);
    const PMRect was = document->boundsInSpread(back);
    const std::uint64_t outerStamp = stampOf(outer), frameStamp = stampOf(frame);
    ASSERT_EQ(document->moveBy(back, 10, -3), 0);
    expectNear(document->boundsInSpread(back), {was.left + 10, was.top - 3, was.right + 10, was.bottom - 3});
    EXPECT_NE(stampOf(outer), outerStamp) << "a group draws something else when a member moves";
    EXPECT_EQ(stampOf(frame), frameStamp);
    ASSERT_EQ(document->moveBy(outer, 1, 1), 0);
    EXPECT_NE(stampOf(frame), frameStamp) << "a member goes where its group goes";
}

TEST_F(ItemChanges, AMovedItemLiesOnAnotherPage) {
    EXPECT_EQ(document->pageOfItem(back).page, page);
    ASSERT_EQ(document->moveBy(back, 500, 0), 0);
    EXPECT_EQ(document->pageOfItem(back).page, kInvalidUID);
    document->undo();
    EXPECT_EQ(document->pageOfItem(back).page, page);
}

TEST_F(ItemChanges, TurnsGoAroundTheMiddleAndComeBack) {
    const UID made = group({back, frame});
    ASSERT_EQ(document->rotateBy(back, 45), 0);
    for (const UID item : {back, frame, made}) {
        const PMRect was = document->boundsInSpread(item);
        const double turn = document->transformValues(item).rotationDegrees;
        ASSERT_EQ(document->rotateBy(item, 33), 0);
        EXPECT_NEAR(document->transformValues(item).rotationDegrees, turn + 33, 1e-9);
        ASSERT_EQ(document->rotateBy(item, -33), 0);
        expectNear(document->boundsInSpread(item), was);
    }
}

TEST_F(ItemChanges, PlacesThatNoFileTakesAreRefused) {
    for (const double distance :
         {2e7, -1e300, std::numeric_limits<double>::infinity(), std::numeric_limits<double>::quiet_NaN()}) {
        EXPECT_NE(document->moveBy(back, distance, 0), 0) << distance;
        EXPECT_NE(document->moveBy(back, 0, distance), 0) << distance;
    }
    EXPECT_NE(document->rotateBy(back, std::numeric_limits<double>::quiet_NaN()), 0);
    for (const UID item : {document->childAt(frame, 0), backNode, page, kInvalidUID}) {
        EXPECT_NE(document->moveBy(item, 1, 1), 0);
        EXPECT_NE(document->rotateBy(item, 1), 0);
    }
    EXPECT_FALSE(document->undo()) << "a refused change is no step";
}

TEST_F(ItemChanges, ACopyStandsInFrontOfItsOriginalWithATextOfItsOwn) {
    ASSERT_EQ(document->setItemDataBlock(frame, 0, "data"), 0);
    UID copy = kInvalidUID;
    ASSERT_EQ(document->duplicateItem(frame, copy), 0);
    EXPECT_THAT(childrenOf(backNode), ElementsAre(back, frame, copy, middle));
    EXPECT_EQ(*document->itemDataBlock(copy, 0), "data");
    const UID story = document->textOfFrame(copy);
    ASSERT_NE(story, document->textOfFrame(frame));
    EXPECT_EQ(document->framesOfStory(story), std::vector<UID>{copy});
    ASSERT_EQ(document->textReplace(story, 0, 4, U"other", true), 0);
    EXPECT_EQ(document->textRead(document->textOfFrame(frame), 0, 4), U"text");
    EXPECT_EQ(document->boundsInSpread(copy), document->boundsInSpread(frame));
    document->undo();
    ASSERT_EQ(document->undo(), "Duplicate Item");
    EXPECT_FALSE(document->itemExists(copy));
    EXPECT_FALSE(document->itemExists(story));
    UID none = 7;
    EXPECT_NE(document->duplicateItem(document->childAt(frame, 0), none), 0);
    EXPECT_EQ(none, kInvalidUID);
}

TEST_F(ItemChanges, ContentKinds) {
    using enum ContentKind;
    EXPECT_EQ(document->setContentKind(back, graphic), 0);
    EXPECT_TRUE(document->isGraphicFrame(back));
    EXPECT_EQ(document->setContentKind(back, unassigned), 0);
    EXPECT_NE(document->setContentKind(frame, graphic), 0) << "its text would be lost";
    ASSERT_EQ(document->convertToTextFrame(middle), 0);
    EXPECT_TRUE(document->isTextFrame(middle));
    EXPECT_EQ(document->contentKind(middle), text);
    EXPECT_EQ(document->childCount(middle), 1);
    const UID story = document->textOfFrame(document->childAt(middle, 0));
    EXPECT_EQ(document->totalLength(story), 1);
    ASSERT_EQ(document->linkFrames(frame, middle), 0);
    EXPECT_EQ(document->setContentKind(frame, unassigned), 0) << "the text flows on in the other frame";
    EXPECT_EQ(document->framesOfStory(document->textOfFrame(middle)), std::vector<UID>{middle});
    EXPECT_EQ(document->childCount(frame), 0);
    while (document->undo()) {
    }
    EXPECT_FALSE(document->isTextFrame(middle));
    EXPECT_TRUE(document->isTextFrame(frame));
    EXPECT_EQ(document->totalLength(document->textOfFrame(frame)), 5);
}

TEST(ItemContent, LinesTakeNoText) {
    DocumentBuilder builder;
    const UID page = builder.addSinglePage(100, 100);
    PageItem item;
    auto shape = std::make_shared<ItemShape>();
    shape->kind = pathInfoRec::Kind::line;
    item.shape = shape;
    const UID line = builder.addItem(builder.layerNode(builder.spreadOf(page), 1), item);
    const auto document = builder.finish();
    EXPECT_NE(document->convertToTextFrame(line), 0);
    EXPECT_NE(document->convertToTextFrame(document->parent(line)), 0);
    EXPECT_EQ(document->setContentKind(line, ContentKind::graphic), 0);
}

/// A frame of 100 by 50 points at (10, 20) that shows a picture of 40 by 40.
class Pictures : public ::testing::Test {
 protected:
    void SetUp() override {
        DocumentBuilder builder;
        const UID page = builder.addSinglePage(200, 200);
        frame = builder.addRectangle(page, {10, 20, 110, 70}, {});
        PageItem item;
        item.itemClass = ItemClass::graphic;
        PlacedGraphic graphic;
        graphic.filePath = "a.tif";
        graphic.bounds = {0, 0, 40, 40};
        graphic.pdfPage = 2;
        item.graphic = std::make_shared<PlacedGraphic>(graphic);
        picture = builder.addItem(frame, item);
        document = builder.finish();
    }
    UID frame = kInvalidUID, picture = kInvalidUID;
    std::unique_ptr<DocumentModel> document;
};

TEST_F(Pictures, FitOperations) {
    struct testRow {
        const char* name;
        errorWord (DocumentPictures::*fit)(UID);
        PMRect expected;  // of the picture, on the spread
    };
    const testRow rows[] = {
        {"centre", &DocumentPictures::fitOperation2, {40, 25, 80, 65}},
        {"in proportion", &DocumentPictures::fitOperation3, {10, 20, 60, 70}},
        {"to the frame", &DocumentPictures::fitOperation4, {10, 20, 110, 70}},
        {"fill", &DocumentPictures::fitOperation5, {10, 20, 110, 120}},
        {"frame to picture", &DocumentPictures::fitOperation6, {10, 20, 50, 60}},
    };
    for (const auto& [name, fit, expected] : rows) {
        ASSERT_EQ((*document.*fit)(picture), 0) << name;
        EXPECT_EQ(document->boundsInSpread(picture), expected) << name;
        EXPECT_TRUE(document->undo()) << name;
        EXPECT_NE((*document.*fit)(frame), 0) << name;
    }
    ASSERT_EQ(document->fitOperation1(picture, {3, 4}), 0);
    EXPECT_EQ(document->boundsInSpread(picture), (PMRect{13, 24, 53, 64}));
    ASSERT_EQ(document->fitOperation6(picture), 0);
    EXPECT_EQ(document->boundsInSpread(frame), (PMRect{13, 24, 53, 64}));
}

TEST_F(Pictures, GoWithTheirFrame) {
    EXPECT_EQ(document->linkPath(picture), "a.tif");
    EXPECT_EQ(document->placedPdfPage(picture), 2);
    EXPECT_EQ(document->pageOfItem(picture).page, document->pageAt(0));
    clipSettingsRec clip;
    clip.type = clipSettingsRec::Type::detectedEdges;
    ASSERT_EQ(document->setClipSettings(picture, clip), 0);
    UID copy = kInvalidUID;
    ASSERT_EQ(document->duplicateItem(frame, copy), 0);
    const UID copied = document->childAt(copy, 0);
    EXPECT_EQ(document->clipSettings(copied), clip);
    ASSERT_EQ(document->moveBy(frame, 5, 5), 0);
    EXPECT_EQ(document->boundsInSpread(picture), (PMRect{15, 25, 55, 65}));
    EXPECT_EQ(document->boundsInSpread(copied), (PMRect{10, 20, 50, 60}));
    ASSERT_EQ(document->convertToTextFrame(frame), 0);
    EXPECT_FALSE(document->itemExists(picture));
    ASSERT_EQ(document->deleteItem(copied), 0);
    EXPECT_EQ(document->childCount(copy), 0);
    EXPECT_NE(document->setClipSettings(frame, clip), 0);
}

}  // namespace
}  // namespace tarnova
