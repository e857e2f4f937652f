#include <gtest/gtest.h>

#include <string>

#include "host/text/composed_story.h"
#include "host/text/composer.h"
#include "tests/host/files/layout_kit.h"

namespace tarnova {
namespace {

constexpr double tolerance = 0.02;
constexpr double ascent = 7.29, descent = 2.71, leading = 12;  // Helvetica 10

/// A page of 400 by 400 points; `items` are JSON, those without a font in Helvetica 10.
struct AnchoredText : testing::Test {
    void load(const std::string& items) {
        document = opened("{\"tarnovaLayout\": 1, \"pageSize\": [400, 400], \"pages\": [{\"items\": [" + items + "]}]}");
        ASSERT_NE(document, nullptr);
        document->setComposer(makeComposer());
    }
    UID top(std::int32_t index, std::int32_t spread = 0) const {
        return document->childAt(document->spreadLayerNode(document->spreadAt(spread), document->layerAt(1)), index);
    }
    const ComposedStory& lines(UID frame) const {
        const UID story = document->textOfFrame(frame);
        return dynamic_cast<const ComposedStory&>(*document->layoutOf(story, document->totalLength(story)));
    }
    UID anchored(UID frame, std::size_t index = 0) const {
        return document->ownedItems(document->textOfFrame(frame), 0, 10000).at(index).item;
    }
    static void expectRect(const PMRect& actual, const PMRect& expected) {
        EXPECT_NEAR(actual.left, expected.left, tolerance);
        EXPECT_NEAR(actual.top, expected.top, tolerance);
        EXPECT_NEAR(actual.right, expected.right, tolerance);
        EXPECT_NEAR(actual.bottom, expected.bottom, tolerance);
    }

    std::unique_ptr<DocumentModel> document;
};

/// A frame at (100, 50) whose second line begins with an item of 30 by 20 points.
std::string frameWithItem(const std::string& anchor, const std::string& frame = "") {
    return R"({"bounds": [100, 50, 200, 100])" + frame + R"(, "text": [{"text": ["first\\\n", {"item":
        {"bounds": [0, 0, 30, 20], "fill": "Black")" + anchor + R"(}}, "second\\\nthird"]}]})";
}

TEST_F(AnchoredText, KindsTakeTheirPlaceAndRoom) {
    struct testRow {
        const char* name;
        std::string anchor;
        double secondBaseline, thirdBaseline, textLeft;
        PMRect bounds;
    };
    const double first = 50 + ascent, plain = first + leading;
    const testRow rows[] = {
        {"in the line", "", plain + 20 - ascent, plain + 20 - ascent + leading, 30,
         {100, plain - ascent, 130, plain - ascent + 20}},
        {"lowered in the line", R"(, "anchor": {"y": 6})", plain + 14 - ascent, plain + 14 - ascent + leading + 6 - descent,
         30, {100, plain - ascent, 130, plain - ascent + 20}},
        {"above the line", R"(, "anchor": {"kind": "above", "align": "right", "spaceBefore": 3, "spaceAfter": 4})",
         plain + 27, plain + 27 + leading, 0, {270, plain - ascent + 3, 300, plain - ascent + 23}},
        {"beside its character", R"(, "anchor": {"kind": "custom", "x": -40, "y": -5})", plain, plain + leading, 0,
         {60, plain - 5, 90, plain + 15}},
        {"from the frame", R"(, "anchor": {"kind": "custom", "xFrom": "frame", "align": "right", "yFrom": "frame"})",
         plain, plain + leading, 0, {270, 50, 300, 70}},
    };
    for (const auto& [name, anchor, secondBaseline, thirdBaseline, textLeft, bounds] : rows) {
        SCOPED_TRACE(name);
        load(frameWithItem(anchor));
        const ComposedStory& story = lines(top(0));
        ASSERT_EQ(story.lines.size(), 3u);
        EXPECT_NEAR(story.lines[1].baseline + 50, secondBaseline, tolerance);
        EXPECT_NEAR(story.lines[2].baseline + 50, thirdBaseline, tolerance);
        EXPECT_NEAR(story.runs[story.lines[1].firstRun].x, textLeft, tolerance);
        expectRect(document->boundsInSpread(anchored(top(0))), bounds);
        EXPECT_EQ(document->frameAt(document->textOfFrame(top(0)), 6), top(0));
    }
}

TEST_F(AnchoredText, LinesBreakAtItems) {
    load(R"({"bounds": [0, 0, 70, 300], "text": [{"text": [{"item": {"bounds": [0, 0, 30, 5]}},
        {"item": {"bounds": [0, 0, 30, 5]}}, {"item": {"bounds": [0, 0, 30, 5]}}, "x"]}]})");
    ASSERT_EQ(lines(top(0)).lines.size(), 2u);
    EXPECT_NEAR(document->boundsInSpread(anchored(top(0), 1)).left, 30, tolerance);
    EXPECT_NEAR(document->boundsInSpread(anchored(top(0), 2)).left, 0, tolerance);
}

TEST_F(AnchoredText, WhatDoesNotFitIsOverset) {
    const char* const sizes[] = {"[0, 0, 201, 5]", "[0, 0, 5, 101]"};
    for (const char* size : sizes) {
        for (const char* anchor : {"inline", "above"}) {
            load(R"({"bounds": [0, 0, 200, 100], "text": [{"text": ["a", {"item": {"anchor": ")" + std::string(anchor) +
                 R"(", "bounds": )" + size + R"(}}, "b"]}]})");
            const UID story = document->textOfFrame(top(0));
            EXPECT_TRUE(document->isOverset(story)) << size << anchor;
            EXPECT_EQ(document->frameAt(story, 1), kInvalidUID) << size << anchor;
            EXPECT_NEAR(document->boundsInSpread(anchored(top(0))).left, 0, tolerance);
            EXPECT_EQ(document->pageOfItem(anchored(top(0))).page, document->pageAt(0));
        }
    }
}

TEST_F(AnchoredText, ItemsFollowTheirTextAndItsFrame) {
    load(R"({"bounds": [100, 100, 100, 50], "rotate": 90, "text": [{"text": ["ab ", {"item": {"bounds": [0, 0, 20, 10],
        "text": ["x ", {"text": [{"item": {"bounds": [0, 0, 4, 4]}}]}]}}]}]},
        {"name": "next", "bounds": [300, 300, 50, 50], "text": ""})");
    const UID outer = anchored(top(0)), inner = anchored(outer);
    const PMRect before = document->boundsInSpread(outer);
    EXPECT_NEAR(before.width(), 10, tolerance) << "it turns with its frame";
    EXPECT_NEAR(before.height(), 20, tolerance);
    const PMRect innerBefore = document->boundsInSpread(inner);
    EXPECT_TRUE(before.united(innerBefore) == before) << "what is in it lies in it";
    ASSERT_EQ(document->textReplace(document->textOfFrame(top(0)), 0, 0, U"mmm", false), 0);
    EXPECT_LT(document->boundsInSpread(outer).top, before.top - 20) << "text runs upward";
    EXPECT_NEAR(document->boundsInSpread(inner).top - innerBefore.top, document->boundsInSpread(outer).top - before.top,
                tolerance);
    ASSERT_EQ(document->moveBy(top(0), 7, 0), 0);
    EXPECT_NEAR(document->boundsInSpread(inner).left, innerBefore.left + 7, tolerance);
}

TEST_F(AnchoredText, AThreadTellsTheFrameThatShowsAnItem) {
    load(R"({"name": "one", "bounds": [0, 0, 50, 13], "text": [{"text": ["first ", {"item": {"bounds": [0, 0, 40, 8]}}]}]},
        {"bounds": [200, 200, 50, 40], "flowsFrom": "one"})");
    expectRect(document->boundsInSpread(anchored(top(0))), {200, 200, 240, 208});
    ASSERT_EQ(document->textDelete(document->textOfFrame(top(0)), 0, 6), 0);
    EXPECT_NEAR(document->boundsInSpread(anchored(top(0))).left, 0, tolerance);
}

TEST_F(AnchoredText, ALargerItemMovesItsText) {
    load(R"({"bounds": [0, 0, 200, 100], "text": [{"text": [{"item": {"group": [{"bounds": [0, 0, 10, 5]},
        {"bounds": [0, 0, 30, 5]}]}}, "x"]}]})");
    EXPECT_NEAR(lines(top(0)).runs[0].x, 30, tolerance);
    ASSERT_EQ(document->deleteItem(document->childAt(anchored(top(0)), 1)), 0);
    EXPECT_NEAR(lines(top(0)).runs[0].x, 10, tolerance);
    ASSERT_TRUE(document->undo());
    EXPECT_NEAR(lines(top(0)).runs[0].x, 30, tolerance);
}

}  // namespace
}  // namespace tarnova
