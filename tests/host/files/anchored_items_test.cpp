#include <gtest/gtest.h>

#include "tests/host/files/layout_kit.h"

namespace tarnova {
namespace {

const char* const anchoredLayout = R"({"tarnovaLayout": 1, "pageSize": [200, 100], "pages": [{"items": [
  {"name": "wrapped", "bounds": [150, 0, 20, 20], "wrap": {"side": "largest", "offsets": [1, 2, 3, "1in"]}},
  {"name": "frame", "bounds": [0, 0, 100, 100], "ignoreWrap": true, "text": [
    {"text": ["See ", {"size": 8, "item": {"name": "rule", "bounds": [0, 0, 12, 2], "fill": "Black"}}, " and"]},
    {"text": [
      {"tag": {"link": "A"}, "item": {"at": [3, 4], "anchor": {"kind": "custom", "x": -5, "xFrom": "frame",
        "align": "right", "yFrom": "column"}, "group": [
          {"bounds": [0, 0, 5, 5], "stroke": "Black"},
          {"name": "in", "bounds": [5, 0, 20, 20], "text": ["{{Name}}", {"text": [
             {"item": {"bounds": [0, 0, 3, 3], "anchor": "above"}}]}]},
          {"bounds": [30, 0, 20, 20], "flowsFrom": "in"}]}},
      " behind"]}]}]}]})";

UID storyOf(const DocumentModel& document, std::int32_t top) {
    return document.textOfFrame(document.childAt(document.spreadLayerNode(document.spreadAt(0), document.layerAt(1)), top));
}

TEST(AnchoredItemsFile, AreReadAndWritten) {
    const auto document = opened(anchoredLayout);
    ASSERT_NE(document, nullptr);
    expectStable(*document);
    const UID story = storyOf(*document, 1);
    const std::vector<ownedItemRec> owned = document->ownedItems(story, 0, 100);
    ASSERT_EQ(owned.size(), 2u);
    EXPECT_EQ(document->textRead(story, 0, 100), U"See \uFFFC and\r\uFFFC behind\r");
    EXPECT_EQ(owned[0].position, 4);
    EXPECT_EQ(document->item(owned[0].item)->name, "rule");
    EXPECT_EQ(document->item(owned[0].item)->flow, nullptr);
    EXPECT_TRUE(document->isGroup(owned[1].item));
    const AnchorOptions wanted{.kind = AnchorOptions::Kind::custom,
                               .x = -5,
                               .align = AnchorOptions::Align::right,
                               .xFrom = AnchorOptions::Edge::frame,
                               .yFrom = AnchorOptions::Edge::column};
    EXPECT_EQ(document->item(owned[1].item)->flow->anchor, wanted);
    const UID inner = document->textOfFrame(document->childAt(owned[1].item, 1));
    EXPECT_EQ(document->framesOfStory(inner).size(), 2u);
    EXPECT_EQ(document->ownedItems(inner, 0, 100).size(), 1u);
    const TextWrap wrap{TextWrap::Kind::bounds, TextWrap::Side::largest, 1, 2, 3, 72};
    const UID wrapped = document->childAt(document->spreadLayerNode(document->spreadAt(0), document->layerAt(1)), 0);
    EXPECT_EQ(document->item(wrapped)->flow->wrap, wrap);
    EXPECT_TRUE(document->item(document->framesOfStory(story)[0])->shape->text.ignoresWrap);
}

/// Each change undone gives the first bytes, and done again the last.
TEST(AnchoredItemsFile, UndoGivesTheSameFile) {
    const auto document = opened(anchoredLayout);
    ASSERT_NE(document, nullptr);
    const UID story = storyOf(*document, 1), wrapped = document->childAt(document->parent(document->framesOfStory(story)[0]), 0);
    const auto withoutCounter = [&] {
        const std::string bytes = writeLayout(*document);
        return bytes.substr(bytes.find("\"pageSize\""));
    };
    const std::string before = withoutCounter();
    ASSERT_EQ(document->BeginCommandSequence("Changes", true), 0);
    EXPECT_EQ(document->setItemFlow(wrapped, {}), 0);
    EXPECT_EQ(document->anchorItem(wrapped, story, 2), 0);
    EXPECT_EQ(document->releaseItem(document->ownedItems(story, 0, 100)[1].item), 0);
    EXPECT_EQ(document->duplicateSpread(document->spreadAt(0)), 0);
    EXPECT_EQ(document->textDelete(story, 0, 6), 0);
    document->EndCommandSequence();
    expectStable(*document);
    const std::string after = withoutCounter();
    ASSERT_TRUE(document->undo());
    EXPECT_EQ(withoutCounter(), before);
    ASSERT_TRUE(document->redo());
    EXPECT_EQ(withoutCounter(), after);
}

TEST(AnchoredItemsFile, TextsStandInTextsThreeDeep) {
    const auto document = opened(frameWith(inTexts(3)));
    ASSERT_NE(document, nullptr);
    expectStable(*document);
}

}  // namespace
}  // namespace tarnova
