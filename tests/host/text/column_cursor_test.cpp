#include "host/text/column_cursor.h"

#include <gtest/gtest.h>

#include "host/text/font.h"
#include "tests/host/text/compose_kit.h"

namespace tarnova {
namespace {

TEST(FirstBaselines, FollowTheFramesRule) {
    const Font& font = *FontService::instance().find("Helvetica", "Regular");
    const float ascent = font.ascent() / 50, caps = font.capHeight() / 50, lower = font.xHeight() / 50;
    ASSERT_GT(caps, lower);
    ASSERT_GT(lower, 8);
    struct Row {
        const char* name;
        FirstBaseline rule;
        double least;
        float first;
    };
    const Row rows[] = {
        {"ascent", FirstBaseline::ascent, 0, ascent},
        {"capitals", FirstBaseline::capHeight, 0, caps},
        {"lower case", FirstBaseline::xHeight, 0, lower},
        {"leading", FirstBaseline::leading, 0, 31},
        {"fixed", FirstBaseline::fixed, 7, 7},
        {"fixed at the top", FirstBaseline::fixed, 0, 0},
        {"at least", FirstBaseline::xHeight, 40, 40},
        {"more than the least", FirstBaseline::leading, 9, 31},
    };
    for (const Row& row : rows) {
        ComposeKit kit;
        kit.format.pointSize = 20;
        kit.format.leading = 31;
        kit.text(U"one\rtwo");
        kit.column({0, 100, 200, 300}, {.firstBaseline = row.rule, .leastFirstBaseline = row.least});
        expectBaselines(kit.compose(), {100 + row.first, 100 + row.first + 31}, row.name);
    }
}

/// A grid of the document that lies 3 points lower in each further frame.
class GridOfPage final : public FramePlaces {
 public:
    [[nodiscard]] UID pageOf(UID) const override { return kInvalidUID; }
    [[nodiscard]] std::optional<BaselineGrid> gridOf(UID frame) const override {
        return BaselineGrid{-7 + 3.0 * (frame - 100), 16};
    }
};

TEST(BaselineGrids, LinesStandOnThem) {
    struct Row {
        const char* name;
        GridLines lines;
        TextFrameOptions options;
        double height;
        std::u32string_view text;
        std::vector<float> baselines;
    };
    const float first = FontService::instance().find("Helvetica", "Regular")->ascent() / 100;
    const float half = (100 - 12 - 10) / 2.0F;  // of the room below two lines in 100 points
    constexpr std::u32string_view four = U"a\u2028b\u2028c\u2028d", two = U"a\u2028b";
    const TextFrameOptions plain, own{.grid = BaselineGrid{2, 10}};
    const TextFrameOptions bottom{.verticalAlignment = VerticalAlignment::bottom};
    const TextFrameOptions center{.verticalAlignment = VerticalAlignment::center};
    const TextFrameOptions justify{.verticalAlignment = VerticalAlignment::justify};
    const Row rows[] = {
        {"no line", GridLines::none, plain, 32, four, {first, first + 12, first, first + 12}},
        {"all lines", GridLines::all, plain, 32, four, {9, 25, 12, 28}},
        {"first lines of paragraphs", GridLines::first, plain, 32, four, {9, 21, first, first + 12}},
        {"a grid of the frame", GridLines::all, own, 36, four, {12, 32, 12, 32}},
        {"down by whole steps", GridLines::all, bottom, 60, two, {9 + 32, 25 + 32}},
        {"never spread", GridLines::all, justify, 60, two, {9, 25}},
        {"down to the middle", GridLines::none, center, 100, two, {first + half, first + 12 + half}},
        {"down to the bottom", GridLines::none, bottom, 100, two, {first + 2 * half, first + 12 + 2 * half}},
    };
    const GridOfPage places;
    for (const Row& row : rows) {
        ComposeKit kit;
        kit.paragraph.gridLines = row.lines;
        kit.text(row.text);
        for (int i = 0; i < 2; ++i)
            kit.column({0, 0, 200, row.height}, row.options);
        kit.input.places = &places;
        const ComposedStory story = kit.compose();
        expectBaselines(story, row.baselines, row.name);
        EXPECT_EQ(story.dependsOnPlaces(), row.lines != GridLines::none && !row.options.grid) << row.name;
    }
}

TEST(VerticalJustification, SpreadsParagraphsAndThenLines) {
    const Font& font = *FontService::instance().find("Helvetica", "Regular");
    const float first = font.ascent() / 100, descent = font.descent() / 100;
    struct Row {
        const char* name;
        std::u32string_view text;
        double limit;
        std::vector<float> gaps;  // beside the leading, with 30 points of room
    };
    const Row rows[] = {
        {"lines alone", U"a\rb\rc\u2028d", 0, {10, 10, 10}},
        {"paragraphs alone", U"a\rb\rc\u2028d", 15, {15, 15, 0}},
        {"more than enough", U"a\rb\rc\u2028d", 1000, {15, 15, 0}},
        {"up to the limit", U"a\rb\rc\u2028d", 6, {12, 12, 6}},
        {"one paragraph", U"a\u2028b\u2028c\u2028d", 6, {10, 10, 10}},
    };
    for (const Row& row : rows) {
        ComposeKit kit;
        kit.text(row.text);
        const double height = static_cast<double>(first + 36 + descent) + 30;
        kit.column({0, 0, 100, height},
                   {.verticalAlignment = VerticalAlignment::justify, .paragraphSpaceLimit = row.limit});
        std::vector<float> expected = {first};
        for (float gap : row.gaps)
            expected.push_back(expected.back() + 12 + gap);
        expectBaselines(kit.compose(), expected, row.name);
    }
    ComposeKit single;
    single.text(U"a");
    single.column({0, 0, 100, 100}, {.verticalAlignment = VerticalAlignment::justify});
    expectBaselines(single.compose(), {first}, "a single line stays at the top");
}

}  // namespace
}  // namespace tarnova
