#include <gtest/gtest.h>

#include <cmath>

#include "document/walk.h"
#include "host/model/document_builder.h"

namespace tarnova {
namespace {

/// A page with a rectangle, a text frame and a group, and a master with a rectangle.
class PathTextTest : public testing::Test {
 protected:
    void SetUp() override {
        DocumentBuilder builder;
        const UID master = builder.addMaster("A");
        masterBox = builder.addRectangle(builder.addPage(master, {0, 0, 100, 100}), {0, 0, 9, 9}, {});
        page = builder.addPage(builder.addSpread(), {0, 0, 100, 100}, master);
        box = builder.addRectangle(page, {10, 10, 90, 90}, {swatchBlack, 1});
        frame = builder.addTextFrame(page, {20, 20, 80, 80}, U"inside");
        PageItem item;
        item.itemClass = ItemClass::group;
        group = builder.addItem(builder.layerNode(builder.spreadOf(page), 1), item);
        document = builder.finish();
    }

    UID putText(UID on, std::u32string_view text) {
        EXPECT_EQ(document->setPathText(on, PathTextOptions{}), 0);
        const UID story = document->textOfFrame(document->textOnPath(on));
        EXPECT_EQ(document->textReplace(story, 0, 0, text, false), 0);
        return story;
    }
    std::u32string textOnPath(UID on) const {
        const UID story = document->textOfFrame(document->textOnPath(on));
        return document->textRead(story, 0, document->totalLength(story) - 1);
    }
    void undoSteps(int count) {
        for (int i = 0; i < count; ++i)
            EXPECT_TRUE(document->undo());
    }

    std::unique_ptr<DocumentModel> document;
    UID masterBox = 0, page = 0, box = 0, frame = 0, group = 0;
};

TEST_F(PathTextTest, StandsBesideTheTextInTheFrame) {
    const UID onPath = putText(frame, U"around");
    EXPECT_EQ(textOnPath(frame), U"around");
    EXPECT_NE(document->textOfFrame(frame), onPath);
    EXPECT_EQ(document->framesOfStory(onPath), std::vector<UID>{frame});
    EXPECT_EQ(document->soleFrame(onPath), frame);
    EXPECT_FALSE(document->isTextFrame(putText(box, U"x") == kInvalidUID ? kInvalidUID : box))
        << "text on its path makes no text frame";
    EXPECT_NE(document->linkFrames(frame, box), 0);
}

TEST_F(PathTextTest, OptionsTextAndRemovalCanBeUndoneAndDoneAgain) {
    const UID story = putText(box, U"around");
    const std::uint64_t stamp = document->story(story)->stamp;
    ASSERT_EQ(document->setPathText(box, PathTextOptions{.start = 7, .flip = true}), 0);
    EXPECT_EQ(textOnPath(box), U"around") << "the text stays";
    EXPECT_EQ(document->story(story)->onPath->start, 7);
    EXPECT_NE(document->story(story)->stamp, stamp) << "it draws something else";
    ASSERT_EQ(document->setPathText(box, std::nullopt), 0);
    EXPECT_EQ(document->textOnPath(box), kInvalidUID);
    EXPECT_EQ(document->story(story), nullptr);
    undoSteps(1);
    EXPECT_EQ(document->story(story)->onPath->start, 7);
    undoSteps(3);
    EXPECT_EQ(document->textOnPath(box), kInvalidUID);
    for (int i = 0; i < 3; ++i)
        EXPECT_TRUE(document->redo());
    EXPECT_EQ(textOnPath(box), U"around");
    EXPECT_EQ(document->story(story)->onPath->start, 7);
}

TEST_F(PathTextTest, GoesWithItsItemAndComesBackWithIt) {
    const UID story = putText(box, U"around");
    ASSERT_EQ(document->deleteItem(box), 0);
    EXPECT_EQ(document->story(story), nullptr);
    undoSteps(1);
    EXPECT_EQ(textOnPath(box), U"around");
}

TEST_F(PathTextTest, CopiesHaveTheirOwn) {
    putText(box, U"around");
    putText(masterBox, U"of the master");
    ASSERT_EQ(document->duplicateSpread(document->spreadOfPage(page)), 0);
    const UID node = document->spreadLayerNode(document->spreadAt(1), document->layerAt(1));
    const UID copy = document->childAt(node, 0);
    EXPECT_EQ(textOnPath(copy), U"around");
    const UID copied = document->textOnPath(copy);
    EXPECT_EQ(document->story(copied)->frames, std::vector<UID>{copy});
    EXPECT_EQ(document->story(copied)->stamp, document->story(document->textOnPath(box))->stamp);
    ASSERT_EQ(document->textReplace(copied, 0, 0, U"all ", false), 0);
    EXPECT_EQ(textOnPath(box), U"around");
    EXPECT_EQ(textOnPath(copy), U"all around");

    ASSERT_EQ(document->overrideMasterItems({page}), 0);
    const UID own = document->childAt(document->spreadLayerNode(document->spreadAt(0), document->layerAt(1)), 0);
    EXPECT_EQ(textOnPath(own), U"of the master");
    EXPECT_NE(document->textOnPath(own), document->textOnPath(masterBox));
}

TEST_F(PathTextTest, IsCountedByAWalk) {
    putText(box, U"around");
    std::int32_t items = 0, characters = 0;
    walkDocument(*document, nullptr, nullptr, 0, 0, WalkScope::pagesOnly, false, false, &items, &characters, nullptr,
                 false);
    EXPECT_EQ(characters, 6 + 6) << "\"inside\" and \"around\"";
}

TEST_F(PathTextTest, HoldsItems) {
    const UID story = putText(box, U"around");
    ASSERT_EQ(document->anchorItem(frame, story, 3), 0);
    EXPECT_EQ(document->inlinePosition(frame), std::pair(story, 3));
    EXPECT_EQ(document->pageOfItem(frame).page, page);
    EXPECT_NE(document->setItemFlow(frame, {{.kind = AnchorOptions::Kind::aboveLine}, {}}), 0) << "there is one line";
    EXPECT_NE(document->anchorItem(box, document->textOfFrame(frame), 0), 0) << "the frame that shows the text around it";
    std::int32_t items = 0;
    walkDocument(*document, nullptr, nullptr, 0, 0, WalkScope::pagesOnly, false, false, &items, nullptr, nullptr, false);
    EXPECT_EQ(items, 3) << "the box, the group and the frame on the path";
    ASSERT_EQ(document->setPathText(box, std::nullopt), 0);
    EXPECT_FALSE(document->itemExists(frame));
    undoSteps(1);
    EXPECT_EQ(document->inlinePosition(frame), std::pair(story, 3));
    ASSERT_EQ(document->releaseItem(frame), 0);
    EXPECT_EQ(textOnPath(box), U"around");
}

TEST_F(PathTextTest, WhatHasNoPathOrCantBeSavedIsRefused) {
    const PathTextOptions far{.offset = 2e7}, nowhere{.start = std::nan("")};
    const std::pair<UID, PathTextOptions> rows[] = {
        {group, {}}, {kInvalidUID, {}}, {document->childAt(frame, 0), {}}, {box, far}, {box, nowhere}};
    for (const auto& [item, options] : rows) {
        EXPECT_NE(document->setPathText(item, options), 0) << &options - &rows[0].second;
        EXPECT_EQ(document->textOnPath(item), kInvalidUID);
    }
    EXPECT_EQ(document->undo(), std::nullopt) << "a refusal leaves no step";
    EXPECT_EQ(document->setPathText(box, std::nullopt), 0) << "nothing to take away";
}

}  // namespace
}  // namespace tarnova
