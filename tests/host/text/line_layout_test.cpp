#include "host/text/line_layout.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "tests/host/text/compose_kit.h"

namespace tarnova {
namespace {

constexpr float tolerance = 0.02F;
constexpr std::u32string_view prose =
    U"A line is set to its width by its alignment, and only the last one of a paragraph is left just as it comes to be";

/// Left and right of the glyphs of a line as they stand, not as the line says.
std::pair<float, float> inkOf(const ComposedStory& story, const ComposedLine& line) {
    float left = 1e9F, right = -1e9F;
    for (std::uint32_t i = 0; i < line.runCount; ++i) {
        const GlyphRun& run = story.runs[line.firstRun + i];
        float advance = 0;
        for (std::uint32_t g = 0; g < run.glyphCount; ++g)
            advance += story.glyphs[run.firstGlyph + g].advance * run.size * run.horizontalScale / 1000;
        EXPECT_NEAR(run.width, advance, tolerance);
        left = std::min(left, run.x);
        right = std::max(right, run.x + advance);
    }
    return {left, right};
}

float xOf(const ComposedStory& story, std::size_t line, std::uint32_t position) {
    for (const PlacedCharacter& c : charactersOf(story, story.lines[line]))
        if (c.position == position) return c.x;
    ADD_FAILURE() << "no glyph for position " << position;
    return -1;
}

TEST(LineLayout, AlignmentsPlaceTheLine) {
    struct Row {
        const char* name;
        Alignment alignment;
        float full, last;  // where the slack in front of a line goes, as a part of it; -1: there is none left
    };
    const Row rows[] = {
        {"left", Alignment::left, 0, 0},
        {"center", Alignment::center, 0.5F, 0.5F},
        {"right", Alignment::right, 1, 1},
        {"justify left", Alignment::justifyLeft, -1, 0},
        {"justify all", Alignment::justifyAll, -1, -1},
        {"justify center", Alignment::justifyCenter, -1, 0.5F},
        {"justify right", Alignment::justifyRight, -1, 1},
    };
    constexpr float left = 30, width = 137;
    for (const Row& row : rows) {
        ComposeKit kit;
        kit.paragraph.alignment = row.alignment;
        kit.paragraph.leftIndent = 5;
        kit.paragraph.rightIndent = 8;
        kit.text(prose);
        kit.column(PMRect{left - 5, 0, left + width + 8, 500});
        const ComposedStory story = kit.compose();
        ASSERT_GT(story.lines.size(), 3u);
        for (std::size_t i = 0; i < story.lines.size(); ++i) {
            const ComposedLine& line = story.lines[i];
            const float part = i + 1 == story.lines.size() ? row.last : row.full;
            const auto [inkLeft, inkRight] = inkOf(story, line);
            const float slack = width - (inkRight - inkLeft);
            if (part < 0) {
                EXPECT_NEAR(slack, 0, tolerance) << row.name << " line " << i;
            }
            EXPECT_NEAR(inkLeft, left + std::max(part, 0.0F) * slack, tolerance) << row.name << " line " << i;
            EXPECT_NEAR(line.left, inkLeft, tolerance) << row.name;
            EXPECT_NEAR(line.right, inkRight, tolerance) << row.name;
        }
    }
}

TEST(LineLayout, ForcedLineEndsAndSingleWordsAreNotStretched) {
    ComposeKit kit(U"one two\u2028\u2028three\u2028", 200, {.alignment = Alignment::justifyLeft});
    const ComposedStory story = kit.compose();
    const std::vector<std::u32string> expected = {U"one two\u2028", U"\u2028", U"three\u2028", U"\r"};
    EXPECT_EQ(kit.lines(story), expected);
    EXPECT_LT(story.lines[0].right, 60);
    EXPECT_EQ(story.lines[1].runCount, 0u);
}

TEST(LineLayout, IndentsMoveTheFirstLineApart) {
    ComposeKit kit(prose, 150, {.leftIndent = 20, .firstLineIndent = -12});
    const ComposedStory story = kit.compose();
    EXPECT_NEAR(story.lines[0].left, 8, tolerance);
    EXPECT_NEAR(story.lines[1].left, 20, tolerance);
}

TEST(LineLayout, SpacesHangAtTheEnd) {
    ComposeKit kit(U"alpha     beta   ", 32, {.alignment = Alignment::right});
    const ComposedStory story = kit.compose();
    const std::vector<std::u32string> expected = {U"alpha     ", U"beta   \r"};
    EXPECT_EQ(kit.lines(story), expected);
    for (const ComposedLine& line : story.lines)
        EXPECT_NEAR(inkOf(story, line).second, 32, tolerance);
}

TEST(LineLayout, WordLongerThanTheLineIsCutAndNotLost) {
    struct Row {
        const char* name;
        std::u32string text;
        double width;
    };
    const Row rows[] = {
        {"latin", std::u32string(50, U'm') + U" end", 60},
        {"one letter a line", U"WWW", 3},
        {"marks stay with their base", U"e\u0301e\u0301e\u0301e\u0301e\u0301e\u0301e\u0301e\u0301", 12},
        {"hebrew", U"\u05D0\u05D1\u05D2\u05D3\u05D4\u05D5\u05D6\u05D7\u05D8\u05D9", 15},
        {"capitals", U"stra\u00DFenbahnhaltestelle", 30},
    };
    for (const Row& row : rows) {
        ComposeKit kit;
        if (std::string(row.name) == "capitals") kit.format.caps = CharFormat::Caps::smallCaps;
        kit.text(row.text);
        kit.column(row.width);
        const ComposedStory story = kit.compose();
        EXPECT_FALSE(story.overset) << row.name;
        EXPECT_GT(story.lines.size(), 2u) << row.name;
        std::int32_t at = 0;
        for (const ComposedLine& line : story.lines) {
            EXPECT_EQ(line.start, at) << row.name;
            EXPECT_GT(line.runCount, 0u) << row.name;
            const char32_t first = kit.characters[static_cast<std::size_t>(line.start)];
            EXPECT_NE(first, U'\u0301') << row.name;
            if (row.width > 10) {
                EXPECT_LE(line.right - line.left, row.width + tolerance) << row.name;
            }
            at = line.limit;
        }
        EXPECT_EQ(at, static_cast<std::int32_t>(kit.characters.size())) << row.name;
    }
}

TEST(LineLayout, TabsReachTheirStops) {
    struct Row {
        const char* name;
        std::vector<TabStop> stops;
        std::u32string text;
        std::uint32_t position;  // of a character
        float left;              // where it stands
    };
    using Kind = TabStop::Kind;
    // Helvetica 10: "1" and the other digits are 5.56 wide, "." and "," 2.78.
    const Row rows[] = {
        {"default stop", {}, U"a\tb", 2, 36},
        {"default stop behind a wide word", {}, U"wide word here\tb", 15, 72},
        {"second default stop", {}, U"\t\tb", 2, 72},
        {"left", {{50, Kind::left}}, U"a\tb", 2, 50},
        {"behind the last stop", {{50, Kind::left}}, U"a\tb\tc", 4, 72},
        {"right", {{100, Kind::right}}, U"a\t12", 2, 100 - 2 * 5.56F},
        {"center", {{100, Kind::center}}, U"a\t1111", 2, 100 - 2 * 5.56F},
        {"decimal", {{100, Kind::decimal}}, U"a\t12.345", 4, 100},
        {"decimal without a point", {{100, Kind::decimal}}, U"a\t12", 2, 100 - 2 * 5.56F},
        {"right, text behind it up to the next tab", {{60, Kind::right}, {80, Kind::left}}, U"\t12\tb", 4, 80},
        {"right, text too long for the gap", {{20, Kind::right}}, U"12\t3456", 3, 2 * 5.56F},
    };
    for (const Row& row : rows) {
        ComposeKit kit(row.text, 300, {.tabs = row.stops});
        const ComposedStory story = kit.compose();
        ASSERT_EQ(story.lines.size(), 1u) << row.name;
        EXPECT_NEAR(xOf(story, 0, row.position), row.left, tolerance) << row.name;
    }
}

TEST(LineLayout, TabsAndOtherLayout) {
    ComposeKit hanging(U"1.\tAn item of a list that goes on over its line", 120, {.leftIndent = 18, .firstLineIndent = -18});
    const ComposedStory list = hanging.compose();
    EXPECT_NEAR(xOf(list, 0, 3), 18, tolerance) << "the hanging indent is a stop";
    EXPECT_NEAR(list.lines[1].left, 18, tolerance);

    ComposeKit wrapped(U"Some words\tunbreakable", 90);
    EXPECT_EQ(wrapped.compose().lines.size(), 2u) << "what doesn't fit behind the stop goes to the next line";
}

TEST(LineLayout, SoftHyphenShowsAtALineEndOnly) {
    const Font& font = *FontService::instance().find("Helvetica", "Regular");
    for (std::u32string_view text : {U"garden\u00ADchairs", U"garden\u00ADchairs \u05D0"}) {
        ComposeKit narrow, wide;
        narrow.text(text);
        narrow.column(45);
        const ComposedStory cut = narrow.compose();
        ASSERT_GE(cut.lines.size(), 2u);
        EXPECT_EQ(cut.lines[0].limit, 7);
        const std::vector<PlacedCharacter> first = charactersOf(cut, cut.lines[0]);
        ASSERT_EQ(first.size(), 7u);
        EXPECT_TRUE(first.back().glyph == font.glyphOf(U'-') || first.back().glyph == font.glyphOf(0x2010));
        EXPECT_EQ(first.back().position, 6u);
        EXPECT_LE(cut.lines[0].right, 45);
        wide.text(text);
        wide.column(200);
        const ComposedStory whole = wide.compose();
        ASSERT_EQ(whole.lines.size(), 1u);
        EXPECT_EQ(charactersOf(whole, whole.lines[0]).size(), text.size() - 1);
        ComposeKit plain(U"gardenchairs", 200);
        EXPECT_NEAR(xOf(whole, 0, 12), xOf(plain.compose(), 0, 11), tolerance);
    }
}

TEST(LineLayout, BidirectionalTextStandsInVisualOrder) {
    struct Row {
        const char* name;
        std::u32string_view text;
        std::vector<std::uint32_t> order;  // positions from left to right
    };
    const Row rows[] = {
        {"name in a sentence", U"to \u05D0\u05D1 ok", {0, 1, 2, 4, 3, 5, 6, 7}},
        {"sentence that a name begins", U"\u05D0\u05D1 lives here", {1, 0, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}},
        {"two names", U"a \u05D0 \u05D1 b", {0, 1, 4, 3, 2, 5, 6}},
        {"number between names", U"\u05D0\u05D1 12 \u05D2", {6, 5, 3, 4, 2, 1, 0}},
        {"full stop of a right-to-left sentence", U"\u05D0\u05D1.", {2, 1, 0}},
    };
    for (const Row& row : rows) {
        ComposeKit kit(row.text, 300);
        const ComposedStory story = kit.compose();
        ASSERT_EQ(story.lines.size(), 1u);
        std::vector<std::uint32_t> order;
        for (const PlacedCharacter& c : charactersOf(story, story.lines[0]))
            order.push_back(c.position);
        EXPECT_EQ(order, row.order) << row.name;
    }
}

TEST(LineLayout, ArabicLettersJoin) {
    ComposeKit joined, apart;
    joined.text(U"\u0628\u0628\u0628");
    joined.column(200);
    apart.text(U"\u0628 \u0628 \u0628");
    apart.column(200);
    const ComposedStory story = joined.compose(), single = apart.compose();
    const std::vector<PlacedCharacter> word = charactersOf(story, story.lines[0]);
    const std::vector<PlacedCharacter> letters = charactersOf(single, single.lines[0]);
    ASSERT_EQ(word.size(), 3u);
    EXPECT_EQ(word.front().position, 2u) << "the last letter is the leftmost";
    EXPECT_NE(word[0].glyph, word[1].glyph);
    EXPECT_NE(word[1].glyph, letters[0].glyph);
}

}  // namespace
}  // namespace tarnova
