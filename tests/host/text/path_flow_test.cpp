#include "host/text/path_flow.h"

#include <gtest/gtest.h>

#include <cmath>

#include "host/text/composer.h"
#include "tests/host/files/layout_kit.h"

namespace tarnova {
namespace {

/// A layout whose one item carries text on its path, composed.
class PathFlowTest : public testing::Test {
 protected:
    /// `path` are the members that say where the item is, `options` those of its `pathText` besides the text.
    const ComposedStory& compose(const std::string& path, const std::string& text, const std::string& options = "") {
        document = opened(pageWith("{" + path + ", \"pathText\": {\"text\": " + text + options + "}}"));
        document->setComposer(makeComposer());
        story = document->stories().at(0);
        return dynamic_cast<const ComposedStory&>(*document->layoutOf(story, document->totalLength(story)));
    }
    /// The point in the middle under the glyphs of a run.
    static PMPoint middleOf(const GlyphRun& run) {
        const double half = static_cast<double>(run.width) / 2;
        return {static_cast<double>(run.x) + half * static_cast<double>(run.directionX),
                static_cast<double>(run.y) + half * static_cast<double>(run.directionY)};
    }

    std::unique_ptr<DocumentModel> document;
    UID story = kInvalidUID;
};

constexpr const char* levelLine = R"("path": "M 0 50 L 100 50")";
constexpr const char* circle = R"("kind": "ellipse", "bounds": [0, 0, 100, 100])";

TEST_F(PathFlowTest, OnALevelLineItIsALineOfText) {
    const ComposedStory& onPath = compose(levelLine, "\"To Avery\"");
    ASSERT_EQ(onPath.lines.size(), 1u);
    const std::vector<GlyphRun> runs = onPath.runs;
    const auto flat = opened(pageWith(R"({"bounds": [0, 0, 100, 100], "text": "To Avery"})"));
    flat->setComposer(makeComposer());
    const UID other = flat->stories().at(0);
    const auto& line = dynamic_cast<const ComposedStory&>(*flat->layoutOf(other, flat->totalLength(other)));
    float x = 0;
    ASSERT_EQ(runs.size(), line.glyphs.size()) << "each glyph by itself";
    for (std::size_t i = 0; i < runs.size(); ++i) {
        EXPECT_NEAR(runs[i].x, x, 0.001) << i << ": kerning and all";
        EXPECT_EQ(runs[i].y, 50);
        EXPECT_EQ(runs[i].directionX, 1);
        x += line.glyphs[i].advance * line.runs[0].size / 1000;
    }
}

TEST_F(PathFlowTest, AlignmentFollowsTheFreeLength) {
    struct testRow {
        const char* align;
        const char* options;
        double left;  // of the text, less its width times `share`
        double share;
    };
    const testRow rows[] = {{"left", ", \"start\": 20, \"end\": 10", 20, 0},
                            {"center", ", \"start\": 20, \"end\": 10", 55, 0.5},
                            {"right", ", \"start\": 20, \"end\": 10", 90, 1},
                            {"right", ", \"flip\": true, \"end\": 10", 90, 1}};
    for (const testRow& row : rows) {
        const ComposedStory& onPath =
            compose(levelLine, std::string(R"([{"align": ")") + row.align + R"(", "text": "Dear"}])", row.options);
        const ComposedLine& line = onPath.lines.at(0);
        EXPECT_NEAR(line.left, row.left - row.share * (line.right - line.left), 0.01) << row.align << row.options;
        const bool flipped = std::string(row.options).find("flip") != std::string::npos;
        EXPECT_NEAR(onPath.runs[0].x, flipped ? 100 - line.left : line.left, 0.01) << row.align << row.options;
        EXPECT_EQ(onPath.runs[0].directionX, flipped ? -1 : 1);
    }
}

/// Around a circle each glyph stands over the line at its middle and points along it, on the right side of it.
TEST_F(PathFlowTest, GlyphsTurnWithTheCircle) {
    struct testRow {
        const char* options;
        double radius;  // at which the baseline's middles lie
        double sense;   // 1 clockwise
    };
    const ComposedStory& flat = compose(levelLine, "\"round\"");
    const double ascent = static_cast<double>(flat.lines[0].ascent), descent = static_cast<double>(flat.lines[0].descent);
    const testRow rows[] = {{"", 50, 1},
                            {", \"offset\": 4", 54, 1},
                            {", \"flip\": true", 50, -1},
                            {", \"flip\": true, \"offset\": 4", 46, -1},
                            {", \"align\": \"ascender\"", 50 - ascent, 1},
                            {", \"align\": \"descender\"", 50 + descent, 1},
                            {", \"align\": \"center\", \"flip\": true", 50 + (ascent - descent) / 2, -1}};
    for (const testRow& row : rows) {
        const ComposedStory& onPath = compose(circle, "\"all around the world\"", row.options);
        ASSERT_EQ(onPath.runs.size(), 20u) << row.options;
        for (const GlyphRun& run : onPath.runs) {
            const PMPoint middle = middleOf(run);
            const double x = (middle.x - 50) / row.radius, y = (middle.y - 50) / row.radius;
            EXPECT_NEAR(std::hypot(x, y), 1, 0.002) << row.options;
            EXPECT_NEAR(run.directionX, -y * row.sense, 0.01) << row.options;
            EXPECT_NEAR(run.directionY, x * row.sense, 0.01) << row.options;
        }
        EXPECT_GT(middleOf(onPath.runs[0]).x * row.sense, 50 * row.sense) << "it begins at the top";
    }
}

TEST_F(PathFlowTest, UprightGlyphsStandOverTheirPlace) {
    const ComposedStory& onPath = compose(circle, "\"all around\"", ", \"effect\": \"upright\"");
    for (const GlyphRun& run : onPath.runs) {
        EXPECT_EQ(run.directionX, 1);
        EXPECT_EQ(run.directionY, 0);
        const PMPoint middle = middleOf(run);
        EXPECT_NEAR(std::hypot(middle.x - 50, middle.y - 50), 50, 0.1);
    }
}

/// An item stands with its middle over the path, between the letters around it, and turns as they do.
TEST_F(PathFlowTest, ItemsStandInTheLine) {
    const auto text = [](int width) {
        return R"([{"text": ["all around ", {"item": {"bounds": [0, 0, )" + std::to_string(width) + R"(, 6]}}, "x"]}])";
    };
    struct testRow {
        const char* options;
        double foot, top;  // distances of the middles of its sides from the circle's centre
    };
    const testRow rows[] = {{"", 50, 56}, {", \"offset\": 4", 54, 60}, {", \"flip\": true", 50, 44}};
    for (const auto& [options, foot, top] : rows) {
        const ComposedStory& onPath = compose(circle, text(10), options);
        ASSERT_EQ(onPath.anchors.size(), 1u) << options;
        const PMMatrix toSpread = document->toSpread(*document->item(document->ownedItems(story, 0, 99)[0].item));
        const auto radius = [&](double x, double y) {
            const PMPoint at = toSpread.map({x, y});
            return std::hypot(at.x - 50, at.y - 50);
        };
        EXPECT_NEAR(radius(5, 6), foot, 0.05) << options;
        EXPECT_NEAR(radius(5, 0), top, 0.05) << options;
        const PMPoint right = toSpread.map({10, 6});
        EXPECT_NEAR(std::hypot(onPath.runs.back().x - right.x, onPath.runs.back().y - right.y), 0, 2) << options;
    }
    compose(circle, text(10), ", \"effect\": \"upright\"");
    const PMRect upright = document->boundsInSpread(document->ownedItems(story, 0, 99)[0].item);
    EXPECT_NEAR(upright.height(), 6, 1e-6);
    EXPECT_NEAR(std::hypot((upright.left + upright.right) / 2 - 50, upright.bottom - 50), 50, 0.05);
    EXPECT_TRUE(compose(levelLine, text(101)).isOverset()) << "wider than the line";
}

/// Marks stay with their base, and the clusters of a ligature together.
TEST_F(PathFlowTest, ClustersStayTogether) {
    const ComposedStory& onPath = compose(circle, "\"x\xCC\x88" "x\"");
    ASSERT_EQ(onPath.runs.size(), 2u);
    EXPECT_EQ(onPath.runs[0].glyphCount + onPath.runs[1].glyphCount, onPath.glyphs.size());
    EXPECT_EQ(onPath.glyphs[onPath.runs[1].firstGlyph].position, 2u);
}

TEST_F(PathFlowTest, WhatDoesntFitIsOverset) {
    struct testRow {
        const char* text;
        const char* options;
        std::int32_t shown;  // characters, -1: all
    };
    const testRow rows[] = {
        {"\"fits well\"", "", -1},
        {"\"\"", "", -1},
        {"\"this text is longer than its line\"", "", 25},
        {"\"extraordinarily-long-words-are-cut\"", "", 21},
        {"\"one\\ntwo\"", "", 4},
        {"[{\"text\": \"one\\\\\\ntwo\"}]", "", 4},
        {"\"text\"", ", \"start\": 60, \"end\": 40", 0},
        {"\"text\"", ", \"start\": 1000", 0},
    };
    for (const testRow& row : rows) {
        const ComposedStory& onPath = compose(levelLine, row.text, row.options);
        const bool whole = row.shown < 0;
        const std::int32_t limit = whole ? document->totalLength(story) : row.shown;
        EXPECT_EQ(onPath.isOverset(), !whole) << row.text << row.options;
        EXPECT_EQ(document->frameAt(story, document->totalLength(story) - 1) == kInvalidUID, !whole) << row.text;
        EXPECT_EQ(onPath.shownLimit, limit) << row.text << row.options;
        for (const GlyphRun& run : onPath.runs)
            EXPECT_LT(run.x, 100) << row.text;
    }
    compose(R"("path": "M 5 5 L 5 5", "inner": [0, 0, 9, 9])", "\"nowhere\"");
    EXPECT_TRUE(document->isOverset(story)) << "a path without extent";
}

}  // namespace
}  // namespace tarnova
