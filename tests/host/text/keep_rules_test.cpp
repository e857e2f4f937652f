#include "host/text/keep_rules.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

#include "host/model/special_characters.h"
#include "tests/host/text/compose_kit.h"

namespace tarnova {
namespace {

constexpr double lineHeight = 12;  // of 10 point text

/// A column that has room for so many lines of 10 points.
PMRect roomFor(int lines) {
    return {0, 0, 100, lineHeight * lines};
}

/// Adds a paragraph of so many lines behind the others; the last one gets the closing mark.
void addLines(ComposeKit& kit, int lines, const ParaFormat& format) {
    if (!kit.characters.empty()) kit.text(U"\r");
    kit.paragraph = format;
    std::u32string text = U"n";
    for (int i = 1; i < lines; ++i)
        text += U"\u2028n";
    kit.text(text);
}

std::vector<int> linesOf(const ComposedStory& story) {
    std::vector<int> out;
    for (const ComposedColumn& column : story.columns)
        out.push_back(static_cast<int>(column.lineCount));
    return out;
}

struct TestParagraph {
    int lines;
    ParaFormat format;
};

TEST(KeepRules, ColumnsEndWhereLinesMayPart) {
    const ParaFormat plain, all{.keepLines = KeepLines::all};
    const ParaFormat ends{.keepLines = KeepLines::ends};
    const auto withNext = [](std::int32_t lines) { return ParaFormat{.keepWithNext = lines}; };
    struct Row {
        const char* name;
        std::vector<TestParagraph> paragraphs;
        std::vector<int> lines;  // of the columns, each with room for four
    };
    const Row rows[] = {
        {"nothing is kept", {{3, plain}, {3, plain}}, {4, 2, 0}},
        {"a paragraph stays whole", {{3, plain}, {3, all}}, {3, 3, 0}},
        {"one that is longer than a column", {{1, plain}, {6, all}}, {1, 4, 2}},
        {"a single first line", {{3, plain}, {4, ends}}, {3, 4, 0}},
        {"two first lines may part from two last", {{2, plain}, {4, ends}}, {4, 2, 0}},
        {"a single last line", {{1, plain}, {4, ends}}, {3, 2, 0}},
        {"neither first nor last line alone", {{2, plain}, {3, ends}}, {2, 3, 0}},
        {"one last line is enough", {{1, plain}, {4, {.keepLines = KeepLines::ends, .keepLastLines = 1}}}, {4, 1, 0}},
        {"three first lines", {{2, plain}, {5, {.keepLines = KeepLines::ends, .keepFirstLines = 3}}}, {2, 3, 2}},
        {"last lines in the third column", {{7, ends}}, {4, 3, 0}},
        {"a heading goes with its text", {{3, plain}, {1, withNext(1)}, {3, plain}}, {3, 4, 0}},
        {"two lines of the text", {{2, plain}, {1, withNext(2)}, {3, plain}}, {2, 4, 0}},
        {"a heading of two lines keeps its last", {{2, plain}, {2, withNext(1)}, {3, plain}}, {3, 4, 0}},
        {"headings one after the other", {{2, plain}, {1, withNext(1)}, {1, withNext(1)}, {1, plain}}, {2, 3, 0}},
        {"a heading in front of a whole paragraph", {{1, plain}, {1, withNext(1)}, {3, all}}, {1, 4, 0}},
        {"all hang together: given up", {{2, withNext(1)}, {3, withNext(1)}, {4, withNext(1)}}, {4, 4, 1}},
        {"given up but for the ends",
         {{3, {.keepLines = KeepLines::ends, .keepWithNext = 9}},
          {3, {.keepLines = KeepLines::ends, .keepWithNext = 9}}},
         {3, 3, 0}},
        {"kept with nothing", {{2, withNext(3)}}, {2, 0, 0}},
    };
    for (const Row& row : rows) {
        ComposeKit kit;
        for (const TestParagraph& paragraph : row.paragraphs)
            addLines(kit, paragraph.lines, paragraph.format);
        for (int i = 0; i < 3; ++i)
            kit.column(roomFor(4));
        EXPECT_EQ(linesOf(kit.compose()), row.lines) << row.name;
    }
}

TEST(KeepRules, WhatWasTakenBackIsSetAnewForTheNextColumn) {
    ComposeKit kit;
    kit.paragraph.hyphenate = true;
    kit.paragraph.keepWithNext = 1;
    kit.text(U"one two\rrepresentative representative representative hyphenation\r");
    kit.paragraph.keepLines = KeepLines::all;
    kit.text(U"last\u2028line\r");
    kit.column(PMRect{0, 0, 45, lineHeight * 6});
    kit.column(PMRect{0, 0, 90, lineHeight * 6});
    const ComposedStory story = kit.compose();
    std::u32string all;
    for (const std::u32string& line : kit.lines(story))
        all += line;
    EXPECT_EQ(all, kit.characters);
    std::uint32_t glyphs = 0;
    for (const GlyphRun& run : story.runs) {
        EXPECT_EQ(run.firstGlyph, glyphs);
        glyphs += run.glyphCount;
    }
    EXPECT_EQ(glyphs, story.glyphs.size());
}

/// Frames two by two on pages.
class TwoFramesAPage final : public FramePlaces {
 public:
    [[nodiscard]] UID pageOf(UID frame) const override { return 1000 + frame / 2; }
    [[nodiscard]] std::optional<BaselineGrid> gridOf(UID) const override { return {}; }
};

TEST(ColumnBreaks, TextGoesOnWhereItIsWanted) {
    constexpr std::u32string_view column = U"\x0E", frame = U"\x0F", page = U"\x0C";
    struct Row {
        const char* name;
        std::u32string text;
        ParagraphStart second;  // where the second paragraph begins
        std::vector<int> lines;
    };
    // Frames of two columns each, two frames a page.
    const Row rows[] = {
        {"nothing", U"a\rb", ParagraphStart::anywhere, {2, 0, 0, 0, 0, 0}},
        {"paragraph in next column", U"a\rb", ParagraphStart::nextColumn, {1, 1, 0, 0, 0, 0}},
        {"paragraph in next frame", U"a\rb", ParagraphStart::nextFrame, {1, 0, 1, 0, 0, 0}},
        {"paragraph on next page", U"a\rb", ParagraphStart::nextPage, {1, 0, 0, 0, 1, 0}},
        {"next frame from its second column", U"a\u2028b\u2028c\rb", ParagraphStart::nextFrame, {2, 1, 1, 0, 0, 0}},
        {"column break", U"a" + std::u32string(column) + U"b\rc", ParagraphStart::anywhere, {1, 2, 0, 0, 0, 0}},
        {"frame break", U"a" + std::u32string(frame) + U"b", ParagraphStart::anywhere, {1, 0, 1, 0, 0, 0}},
        {"page break", U"a" + std::u32string(page) + U"b", ParagraphStart::anywhere, {1, 0, 0, 0, 1, 0}},
        {"two column breaks",
         U"a" + std::u32string(column) + std::u32string(column) + U"b",
         ParagraphStart::anywhere,
         {1, 1, 1, 0, 0, 0}},
        {"break and start agree",
         U"a" + std::u32string(column) + U"\rb",
         ParagraphStart::nextColumn,
         {1, 1, 1, 0, 0, 0}},
        {"no page left",
         U"a" + std::u32string(page) + std::u32string(page) + U"b",
         ParagraphStart::anywhere,
         {1, 0, 0, 0, 1, 0}},
    };
    const TwoFramesAPage places;
    for (const Row& row : rows) {
        ComposeKit kit;
        const std::size_t first = row.text.find(U'\r') + 1;
        kit.text(std::u32string_view(row.text).substr(0, first));
        kit.paragraph.startIn = row.second;
        kit.text(std::u32string_view(row.text).substr(first));
        for (int i = 0; i < 6; ++i) {
            kit.column(roomFor(2));
            kit.input.columns.back().frame = static_cast<UID>(i / 2);
            kit.input.columns.back().frameIndex = i / 2;
        }
        kit.input.places = &places;
        const ComposedStory story = kit.compose();
        EXPECT_EQ(linesOf(story), row.lines) << row.name;
        EXPECT_EQ(story.overset, std::string(row.name) == "no page left") << row.name;
        const bool asksForPages = row.second == ParagraphStart::nextPage || row.text.find(page) != row.text.npos;
        EXPECT_EQ(story.dependsOnPlaces(), asksForPages) << row.name;
    }
}

TEST(KeepRules, NoTextIsLostAndNothingLoops) {
    std::mt19937 random(11);
    const auto any = [&](std::uint32_t limit) { return static_cast<std::int32_t>(random() % limit); };
    const TwoFramesAPage places;
    for (int round = 0; round < 400; ++round) {
        ComposeKit kit;
        for (int i = 0; i < 6; ++i) {
            kit.paragraph = {.hyphenate = any(2) == 0,
                             .keepLines = static_cast<KeepLines>(any(3)),
                             .keepFirstLines = 1 + any(4),
                             .keepLastLines = 1 + any(4),
                             .keepWithNext = any(4),
                             .startIn = static_cast<ParagraphStart>(any(40) < 4 ? any(4) : 0),
                             .gridLines = static_cast<GridLines>(any(3))};
            std::u32string text;
            for (int words = any(30); words > 0; --words)
                text += any(50) == 0 ? U"\x0E" : any(3) == 0 ? U"hyphenation " : U"of ";
            kit.text(text + U"\r");
        }
        for (int i = 0; i < 8; ++i)
            kit.column(PMRect{0, 0, 20.0 + any(80), 5.0 + any(90)},
                       {.verticalAlignment = static_cast<VerticalAlignment>(any(4)),
                        .firstBaseline = static_cast<FirstBaseline>(any(5)),
                        .grid = BaselineGrid{static_cast<double>(any(20)), 7.0 + any(9)}});
        kit.input.places = &places;
        const ComposedStory story = kit.compose();
        std::int32_t at = 0;
        for (const ComposedLine& line : story.lines) {
            ASSERT_EQ(line.start, at);
            at = line.limit;
            for (const PlacedCharacter& c : charactersOf(story, line))
                ASSERT_TRUE(static_cast<std::int32_t>(c.position) >= line.start &&
                            static_cast<std::int32_t>(c.position) <= line.limit);
        }
        ASSERT_EQ(story.shownLimit, at);
        ASSERT_EQ(story.overset, at < static_cast<std::int32_t>(kit.characters.size()) - 1);
    }
}

}  // namespace
}  // namespace tarnova
