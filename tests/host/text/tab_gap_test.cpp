#include "host/text/tab_gap.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "host/model/special_characters.h"
#include "host/text/font.h"
#include "tests/host/text/compose_kit.h"

namespace tarnova {
namespace {

constexpr float tolerance = 0.02F;
constexpr float dotWidth = 2.78F;  // Helvetica 10; a digit is 5.56

/// The x of each glyph of a line that stands for one of the characters.
std::vector<float> placesOf(const ComposeKit& kit, const ComposedStory& story, std::size_t line, char32_t character) {
    std::vector<float> out;
    for (const PlacedCharacter& c : charactersOf(story, story.lines[line]))
        if (kit.characters[c.position] == character) out.push_back(c.x);
    return out;
}

TEST(TabLeaders, FillTheGapInStep) {
    ComposeKit kit;
    kit.paragraph.tabs = {{100, TabStop::Kind::right, U"."}};
    kit.text(U"n\t1\rnnnnn\t12\rnn\t345");
    kit.column(PMRect{30, 0, 230, 100});
    const ComposedStory story = kit.compose();
    const float widths[] = {5.56F, 5 * 5.56F, 2 * 5.56F}, numbers[] = {5.56F, 2 * 5.56F, 3 * 5.56F};
    for (std::size_t line = 0; line < 3; ++line) {
        const std::vector<float> dots = placesOf(kit, story, line, U'\t');
        const float from = 30 + widths[line], limit = 130 - numbers[line];
        ASSERT_GE(dots.size(), 10u) << line;
        EXPECT_GE(dots.front(), from - tolerance) << line;
        EXPECT_LE(dots.front(), from + dotWidth) << line;
        EXPECT_LE(dots.back() + dotWidth, limit + tolerance) << line;
        EXPECT_GE(dots.back() + dotWidth, limit - dotWidth) << line;
        for (float dot : dots) {
            const float steps = (dot - 30) / dotWidth;
            EXPECT_NEAR(steps, std::round(steps), 0.01F) << line;
        }
        EXPECT_NEAR(story.lines[line].right, 130, tolerance) << line;
    }
}

TEST(TabLeaders, AreTextOfAnyLength) {
    struct Row {
        const char* name;
        std::u32string leader;
        double stop;
        std::size_t glyphs;  // in the gap behind "n"
    };
    const Row rows[] = {
        {"none", U"", 50, 0},
        {"two characters", U". ", 50, 2 * 7},  // 5.56 wide, from 5.56 on
        {"gap too narrow", U"MMMM", 30, 0},
        {"not in the font", U"\u0531", 50, 5},
    };
    for (const Row& row : rows) {
        ComposeKit kit(U"n\tx", 200, {.tabs = {{row.stop, TabStop::Kind::left, row.leader}}});
        const ComposedStory story = kit.compose();
        const std::vector<float> glyphs = placesOf(kit, story, 0, U'\t');
        EXPECT_NEAR(static_cast<double>(glyphs.size()), static_cast<double>(row.glyphs), row.glyphs == 0 ? 0 : 1)
            << row.name;
        EXPECT_NEAR(placesOf(kit, story, 0, U'x').at(0), row.stop, tolerance) << row.name;
        for (const PlacedGlyph& glyph : story.glyphs)
            EXPECT_NE(glyph.glyph, 0) << row.name;
    }
}

TEST(Tabs, DecimalTabsStandOnTheirCharacter) {
    struct Row {
        const char* name;
        const char* language;
        char32_t alignedOn;
        std::u32string_view text;
        std::uint32_t onStop;  // the character that begins at the stop
    };
    const Row rows[] = {
        {"English", "en-US", 0, U"\t1,234.5", 6},
        {"German", "de-DE", 0, U"\t1.234,5", 6},
        {"set for the stop", "de-DE", U'.', U"\t12.34,5", 3},
        {"a letter", "en-US", U'x', U"\t10x50", 3},
    };
    for (const Row& row : rows) {
        ComposeKit kit;
        kit.format.language = row.language;
        kit.paragraph.tabs = {{100, TabStop::Kind::decimal, U"", row.alignedOn}};
        kit.text(row.text);
        kit.column(200);
        const ComposedStory story = kit.compose();
        for (const PlacedCharacter& c : charactersOf(story, story.lines[0])) {
            if (c.position == row.onStop) {
                EXPECT_NEAR(c.x, 100, tolerance) << row.name;
            }
        }
    }
}

TEST(Tabs, CountFromTheRightInTextFromRightToLeft) {
    constexpr std::u32string_view alef = U"\u05D0";
    struct Row {
        const char* name;
        TabStop stop;
        std::u32string_view text;
        float left, right;  // of the text behind the tab, from the column's right edge to the left
    };
    const auto widthOf = [](std::u32string_view text) {
        ComposeKit kit(text, 500);
        const ComposedStory story = kit.compose();
        return story.lines[0].right - story.lines[0].left;
    };
    const float two = widthOf(U"\u05D1\u05D1"), digit = 5.56F;
    const Row rows[] = {
        {"left", {100, TabStop::Kind::left}, U"\u05D1\u05D1", 100 + two, 100},
        {"right", {100, TabStop::Kind::right}, U"\u05D1\u05D1", 100, 100 - two},
        {"center", {100, TabStop::Kind::center}, U"\u05D1\u05D1", 100 + two / 2, 100 - two / 2},
        {"decimal", {100, TabStop::Kind::decimal}, U"12.5", 100 + 2 * digit + dotWidth, 100 - digit},
        {"usual stops", {10, TabStop::Kind::left}, U"\u05D1\u05D1", 36 + two, 36},
    };
    for (const Row& row : rows) {
        ComposeKit kit;
        kit.paragraph.alignment = Alignment::right;
        kit.paragraph.tabs = {row.stop};
        kit.text(std::u32string(alef) + std::u32string(alef) + std::u32string(alef) + U"\t" + std::u32string(row.text));
        kit.column(PMRect{20, 0, 320, 50});
        const ComposedStory story = kit.compose();
        float left = 1e9F, right = 0;
        for (std::uint32_t r = 0; r < story.lines[0].runCount; ++r) {
            const GlyphRun& run = story.runs[story.lines[0].firstRun + r];
            if (story.glyphs[run.firstGlyph].position < 4) continue;
            left = std::min(left, run.x);
            right = std::max(right, run.x + run.width);
        }
        EXPECT_NEAR(320 - left, row.left, tolerance) << row.name;
        EXPECT_NEAR(320 - right, row.right, tolerance) << row.name;
        EXPECT_NEAR(story.lines[0].right, 320, tolerance) << row.name;
    }
}

TEST(SpecialCharacters, ATabToTheFarSide) {
    ComposeKit kit(std::u32string(U"nn") + rightIndentTab + U"12\rnn\t" + rightIndentTab + U"345", 200, {.rightIndent = 10, .tabs = {{30, TabStop::Kind::left, U"."}}});
    const ComposedStory story = kit.compose();
    ASSERT_EQ(story.lines.size(), 2u);
    EXPECT_NEAR(placesOf(kit, story, 0, U'1').at(0), 190 - 2 * 5.56F, tolerance);
    EXPECT_NEAR(placesOf(kit, story, 1, U'3').at(0), 190 - 3 * 5.56F, tolerance);
    EXPECT_GT(placesOf(kit, story, 0, rightIndentTab).size(), 55u) << "the leader of the last stop";
}

TEST(SpecialCharacters, IndentToHereHoldsForTheFurtherLines) {
    ComposeKit kit(std::u32string(U"nn ") + indentToHere + U"nnn nnn nnn nnn nnn nnn\rnnn nnn", 60, {.firstLineIndent = 7});
    const ComposedStory story = kit.compose();
    ASSERT_EQ(story.lines.size(), 4u);
    const float indent = 7 + 2 * 5.56F + dotWidth;
    EXPECT_NEAR(placesOf(kit, story, 0, U'n').at(2), indent, tolerance);
    EXPECT_NEAR(story.lines[1].left, indent, tolerance);
    EXPECT_NEAR(story.lines[2].left, indent, tolerance);
    EXPECT_NEAR(story.lines.back().left, 7, tolerance) << "the next paragraph begins as ever";
}

TEST(SpecialCharacters, SpacesOfFixedWidthAndHyphensThatDoNotBreak) {
    struct Row {
        const char* name;
        char32_t character;
        float em;  // width; below 0: that of the font's hyphen or space
    };
    const Row rows[] = {{"em space", 0x2003, 1},      {"en space", 0x2002, 0.5F},
                        {"thin space", 0x2009, 0.2F}, {"figure space", 0x2007, 0.556F},
                        {"no break space", 0xA0, -1}, {"no break hyphen", 0x2011, -2}};
    for (const char* family : {"Helvetica", "Times", "Arial", "DejaVu Sans"}) {
        const Font& font = *FontService::instance().find(family, "Regular");
        for (const Row& row : rows) {
            ComposeKit kit;
            kit.format.family = family;
            kit.format.pairKerning = false;
            kit.text(std::u32string(U"n") + row.character + U"n");
            kit.column(4);
            const ComposedStory narrow = kit.compose();
            if (row.em < 0) {
                EXPECT_EQ(kit.lines(narrow)[0], U"n") << row.name << ": no border but by force";
            }
            ComposeKit wide = kit;
            wide.input.columns.back().box.right = 300;
            const ComposedStory story = wide.compose();
            const std::vector<PlacedCharacter> set = charactersOf(story, story.lines[0]);
            ASSERT_EQ(set.size(), 3u) << family << ' ' << row.name;
            const float usual = font.nominalAdvance(font.glyphOf(row.em == -1 ? U' ' : U'-')) / 1000;
            const float expected = row.em >= 0 ? row.em : usual;
            const bool ofFont = row.character == 0x2007;
            EXPECT_NEAR((set[2].x - set[1].x) / 10, expected, ofFont ? 0.1F : 0.002F) << family << ' ' << row.name;
            EXPECT_NE(set[1].glyph, 0) << family << ' ' << row.name;
            EXPECT_EQ(story.runs.size(), 1u) << family << ' ' << row.name << ": no other font";
        }
    }
}

}  // namespace
}  // namespace tarnova
