#include "host/text/story_flow.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <set>
#include <string>

#include "host/text/text_style.h"
#include "tests/host/text/compose_kit.h"

namespace tarnova {
namespace {

constexpr float tolerance = 0.02F;
constexpr float ascent = 7.29F, descent = 2.71F;  // Helvetica 10

CharFormat sized(double size, double leading = -1) {
    CharFormat format;
    format.pointSize = size;
    format.leading = leading;
    return format;
}

TEST(StoryFlow, LeadingIsTheLargestOnTheLine) {
    ComposeKit kit;
    kit.text(U"first\u2028", sized(10));
    kit.text(U"auto ", sized(10));
    kit.text(U"larger\u2028", sized(20));
    kit.text(U"fixed\u2028", sized(10, 15));
    kit.text(U"smaller than it was", sized(8));
    kit.column(300);
    expectBaselines(kit.compose(), {ascent, ascent + 24, ascent + 24 + 15, ascent + 24 + 15 + 9.6F}, "leading");
}

TEST(StoryFlow, SpaceStandsBetweenParagraphsAndNotAtTheTop) {
    ComposeKit kit;
    kit.paragraph.spaceBefore = 5;
    kit.paragraph.spaceAfter = 3;
    kit.text(U"one\rtwo\rthree");
    kit.column(PMRect{10, 100, 110, 100 + 35});
    kit.column(PMRect{10, 200, 110, 300});
    const ComposedStory story = kit.compose();
    expectBaselines(story, {100 + ascent, 100 + ascent + 20, 200 + ascent}, "spaces");
}

TEST(StoryFlow, EmptyParagraphsHaveTheHeightOfTheirReturn) {
    ComposeKit kit;
    kit.text(U"a\r");
    kit.text(U"\r", sized(20));
    kit.text(U"b");
    kit.column(100);
    expectBaselines(kit.compose(), {ascent, ascent + 24, ascent + 36}, "empty paragraph");
}

TEST(StoryFlow, TextFlowsFromColumnToColumn) {
    ComposeKit kit;
    kit.text(U"one two three four five six seven eight nine ten");
    kit.column(PMRect{0, 0, 45, 24});
    kit.column(PMRect{0, 0, 0, 24});  // no width: nothing can stand in it
    kit.column(PMRect{60, 0, 160, 14});
    kit.column(PMRect{0, 50, 200, 100});
    const ComposedStory story = kit.compose();
    const std::vector<std::u32string> expected = {U"one two ", U"three four ", U"five six seven eight ", U"nine ten\r"};
    EXPECT_EQ(kit.lines(story), expected);
    ASSERT_EQ(story.columns.size(), 4u);
    const std::uint32_t lineCounts[] = {2, 0, 1, 1};
    const std::int32_t limits[] = {19, 19, 40, 49};
    std::int32_t start = 0;
    for (std::size_t i = 0; i < 4; ++i) {
        EXPECT_EQ(story.columns[i].lineCount, lineCounts[i]) << i;
        EXPECT_EQ(story.columns[i].start, start) << i;
        EXPECT_EQ(story.columns[i].limit, limits[i]) << i;
        EXPECT_EQ(story.columns[i].frame, 100 + i);
        start = limits[i];
    }
    EXPECT_EQ(story.columnOf(0), 0);
    EXPECT_EQ(story.columnOf(18), 0);
    EXPECT_EQ(story.columnOf(19), 2) << "the empty column shows nothing";
    EXPECT_EQ(story.columnOf(48), 3);
    EXPECT_EQ(story.columnOf(49), -1);
    EXPECT_EQ(story.columnOf(-1), -1);
    EXPECT_NEAR(story.lines[2].left, 60, tolerance);
    EXPECT_NEAR(story.lines[3].baseline, 50 + ascent, tolerance);
    EXPECT_FALSE(story.overset);
}

TEST(StoryFlow, WhatDoesNotFitIsTold) {
    struct Row {
        const char* name;
        std::u32string_view text;
        PMRect box;
        bool overset;
        std::int32_t shown;
    };
    constexpr double oneLine = 10, twoLines = 22;
    const Row rows[] = {
        {"fits exactly", U"one", {0, 0, 100, oneLine}, false, 4},
        {"a little too low", U"one", {0, 0, 100, oneLine - 0.1}, true, 0},
        {"second line", U"one two", {0, 0, 20, oneLine}, true, 4},
        {"both lines", U"one two", {0, 0, 20, twoLines}, false, 8},
        {"only the closing mark", U"one\r", {0, 0, 100, oneLine}, false, 4},
        {"an empty paragraph and the closing mark", U"one\r\r", {0, 0, 100, oneLine}, true, 4},
        {"empty story", U"", {0, 0, 100, oneLine}, false, 1},
        {"empty story in a frame too low", U"", {0, 0, 100, 3}, false, 0},
        {"no width", U"one", {0, 0, 0, 100}, true, 0},
        {"turned inside out", U"one", {50, 50, 0, 0}, true, 0},
    };
    for (const Row& row : rows) {
        ComposeKit kit(row.text, row.box);
        const ComposedStory story = kit.compose();
        EXPECT_EQ(story.overset, row.overset) << row.name;
        EXPECT_EQ(story.isOverset(), row.overset) << row.name;
        EXPECT_EQ(story.shownLimit, row.shown) << row.name;
        EXPECT_EQ(story.composedThrough(), static_cast<std::int32_t>(kit.characters.size())) << row.name;
        EXPECT_EQ(story.columnOf(row.shown), -1) << row.name;
    }
    ComposeKit homeless;
    homeless.text(U"text without a frame");
    EXPECT_TRUE(homeless.compose().overset);
}

TEST(StoryFlow, FormatsShapeTheirRuns) {
    CharFormat format = sized(10);
    ComposeKit kit;
    const auto with = [&](auto change) {
        CharFormat changed = format;
        change(changed);
        kit.text(U"nAn", changed);
    };
    with([](CharFormat& f) { f.position = TextPosition::superscript; });
    with([](CharFormat& f) { f.position = TextPosition::subscript; });
    with([](CharFormat& f) { f.baselineShift = 4; });
    with([](CharFormat& f) { f.horizontalScale = 0.5; });
    with([](CharFormat& f) { f.verticalScale = 2; });
    with([](CharFormat& f) { f.tracking = 100; });
    with([](CharFormat& f) { f.caps = CharFormat::Caps::allCaps; });
    with([](CharFormat& f) { f.caps = CharFormat::Caps::smallCaps; });
    kit.column(500);
    const ComposedStory story = kit.compose();
    struct Row {
        float size, scale, rise, width;
    };
    // "n" is 5.56 wide, "A" 6.67, "N" 7.22.
    const float plain = 2 * 5.56F + 6.67F, capital = 2 * 7.22F + 6.67F;
    const Row rows[] = {
        {5.83F, 1, 3.33F, plain * 0.583F},
        {5.83F, 1, -3.33F, plain * 0.583F},
        {10, 1, 4, plain},
        {10, 0.5F, 0, plain / 2},
        {20, 0.5F, 0, plain},
        {10, 1, 0, plain + 3},
        {10, 1, 0, capital},
        {7, 1, 0, 7.22F * 0.7F},
        {10, 1, 0, 6.67F},
        {7, 1, 0, 7.22F * 0.7F},
    };
    ASSERT_EQ(story.lines.size(), 1u);
    ASSERT_EQ(story.runs.size(), std::size(rows));
    const float baseline = story.lines[0].baseline;
    EXPECT_NEAR(baseline, 2 * ascent, tolerance) << "the font at its full height counts";
    float x = 0;
    for (std::size_t i = 0; i < std::size(rows); ++i) {
        const GlyphRun& run = story.runs[i];
        EXPECT_NEAR(run.size, rows[i].size, 1e-4) << i;
        EXPECT_NEAR(run.horizontalScale, rows[i].scale, 1e-4) << i;
        EXPECT_NEAR(baseline - run.y, rows[i].rise, tolerance) << i;
        EXPECT_NEAR(run.width, rows[i].width, 0.3) << i << " (kerning aside)";
        EXPECT_NEAR(run.x, x, tolerance) << i;
        x = run.x + run.width;
    }
}

TEST(StoryFlow, CapitalsThatGrowKeepTheirPositions) {
    ComposeKit kit;
    kit.format.caps = CharFormat::Caps::allCaps;
    kit.text(U"gro\u00DF i");
    kit.column(500);
    const ComposedStory story = kit.compose();
    const std::uint32_t positions[] = {0, 1, 2, 3, 3, 4, 5};
    const std::vector<PlacedCharacter> set = charactersOf(story, story.lines[0]);
    ASSERT_EQ(set.size(), std::size(positions));
    for (std::size_t i = 0; i < set.size(); ++i)
        EXPECT_EQ(set[i].position, positions[i]);
    const Font& font = *FontService::instance().find("Helvetica", "Regular");
    EXPECT_EQ(set[3].glyph, font.glyphOf(U'S'));
    EXPECT_EQ(set[6].glyph, font.glyphOf(U'I'));
    EXPECT_EQ(story.lines[0].limit, 7);
}

TEST(StoryFlow, CharactersThatAFontLacksComeFromAnother) {
    struct Row {
        const char* name;
        std::u32string_view text;
        std::set<std::string> fonts;
    };
    const Row rows[] = {
        {"armenian", U"a \u0531\u0532 b", {"NimbusSans-Regular", "DejaVuSans"}},
        {"composed from base and mark", U"cafe\u0301", {"NimbusSans-Regular"}},
        {"direction mark alone", U"a\u200Eb", {"NimbusSans-Regular"}},
        {"wide space", U"a\u2003b \u05D0", {"NimbusSans-Regular", "DejaVuSans"}},
    };
    for (const Row& row : rows) {
        ComposeKit kit(row.text, 300);
        const ComposedStory story = kit.compose();
        std::set<std::string> fonts;
        for (const GlyphRun& run : story.runs)
            fonts.insert(run.font->postScriptName());
        EXPECT_EQ(fonts, row.fonts) << row.name;
        for (const PlacedGlyph& glyph : story.glyphs)
            EXPECT_NE(glyph.glyph, 0) << row.name;
    }
}

/// A character of the kinds that decide how text is cut, ordered and set, and now and then one that is none.
char32_t anyCharacter(std::mt19937& random) {
    using namespace std::string_view_literals;
    constexpr std::u32string_view kinds =
        U"aifl1 "
        U"-.\t\r\u2028\u00AD\u00A0\u0301\u05D0\u0645\u0661\u200D\u200F\u202E\u2066\u4E2D\u0E01\uFFFC\U0001F468\u0000\n"sv;
    if (random() % 8 != 0) return kinds[random() % kinds.size()];
    return static_cast<char32_t>(random() % 0x120000);  // surrogates and numbers beyond Unicode too
}

TEST(StoryFlow, NoTextIsLostWhateverItIs) {
    std::mt19937 random(7);
    for (int round = 0; round < 1500; ++round) {
        ComposeKit kit;
        kit.paragraph.alignment = static_cast<Alignment>(random() % 5);
        kit.paragraph.leftIndent = static_cast<double>(random() % 30);
        kit.format.pointSize = static_cast<double>(random() % 20);
        if (random() % 4 == 0) kit.paragraph.tabs = {{20, TabStop::Kind::right}, {50, TabStop::Kind::decimal}};
        for (int runs = 0; runs < 3; ++runs) {
            std::u32string text;
            for (std::size_t length = random() % 20; text.size() < length;)
                text += anyCharacter(random);
            kit.format.caps = static_cast<CharFormat::Caps>(random() % 3);
            kit.format.tracking = random() % 3 == 0 ? 50 : 0;
            kit.text(text);
        }
        for (int columns = 0; columns < 3; ++columns)
            kit.column(PMRect{0, 0, static_cast<double>(random() % 100), static_cast<double>(random() % 100)},
                       {.verticalAlignment = static_cast<VerticalAlignment>(random() % 4)});
        const ComposedStory story = kit.compose();
        std::int32_t at = 0;
        for (const ComposedColumn& column : story.columns) {
            ASSERT_EQ(column.start, at);
            for (std::uint32_t i = 0; i < column.lineCount; ++i) {
                const ComposedLine& line = story.lines[column.firstLine + i];
                ASSERT_EQ(line.start, at);
                at = line.limit;
                ASSERT_LE(line.baseline + line.descent, column.box.bottom + 0.02);
                for (const PlacedCharacter& c : charactersOf(story, line)) {
                    ASSERT_GE(static_cast<std::int32_t>(c.position), line.start);
                    ASSERT_LT(static_cast<std::int32_t>(c.position), line.limit);
                    ASSERT_TRUE(std::isfinite(c.x));
                }
            }
            ASSERT_EQ(column.limit, at);
        }
        ASSERT_EQ(story.shownLimit, at);
        ASSERT_EQ(story.overset, at < static_cast<std::int32_t>(kit.characters.size()) - 1);
    }
}

TEST(StoryFlow, VeryLongWordIsSetWhole) {
    for (char32_t letter : {U'm', U'\u05D0'}) {
        ComposeKit kit;
        kit.text(std::u32string(60000, letter));
        kit.column(100, 1e6);
        const ComposedStory story = kit.compose();
        EXPECT_FALSE(story.overset);
        EXPECT_EQ(story.glyphs.size(), 60000u);
    }
}

TEST(StoryFlow, ComposingAgainGivesTheSame) {
    const auto compose = [](StoryFlow& flow) {
        ComposeKit kit;
        kit.paragraph.alignment = Alignment::justifyLeft;
        kit.text(U"The office filed \u201Cfifty\u201D affidavits in the difficult case of \u05D0\u05D1\u05D2 & Co.\r");
        kit.text(U"Small Capitals ", [] {
            CharFormat format;
            format.caps = CharFormat::Caps::smallCaps;
            return format;
        }());
        kit.text(U"and a tab\there.");
        kit.column(90);
        const ComposedStory story = kit.compose(flow);
        std::string out;
        for (const ComposedLine& line : story.lines)
            out += shownLine(story, line) + "\n";
        return out;
    };
    StoryFlow used, fresh, plain({.tables = false, .cache = false});
    const std::string first = compose(used);
    for (StoryFlow* flow : {&used, &fresh, &plain})
        EXPECT_EQ(compose(*flow), first);
}

}  // namespace
}  // namespace tarnova
