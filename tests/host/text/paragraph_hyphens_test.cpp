#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "host/text/font.h"
#include "tests/host/text/compose_kit.h"

namespace tarnova {
namespace {

/// The lines as a reader sees them: a hyphen that was drawn behind the text of its line is shown as "=".
std::u32string seen(const ComposeKit& kit, const ComposedStory& story) {
    std::u32string out;
    for (const ComposedLine& line : story.lines) {
        out += kit.characters.substr(static_cast<std::size_t>(line.start),
                                     static_cast<std::size_t>(line.limit - line.start));
        const std::vector<PlacedCharacter> characters = charactersOf(story, line);
        if (!characters.empty() && characters.back().position == static_cast<std::uint32_t>(line.limit)) out += U'=';
        out += U'|';
    }
    return out;
}

std::u32string hyphenatedAt(double width, std::u32string_view text, const ParaFormat& paragraph,
                            const char* language = "en-US") {
    ComposeKit kit;
    kit.format.language = language;
    kit.paragraph = paragraph;
    kit.text(text);
    kit.column(width);
    return seen(kit, kit.compose());
}

TEST(ParagraphHyphens, WordsAtLineEnds) {
    struct Row {
        const char* name;
        std::u32string_view text;
        double width;
        ParaFormat format;
        std::u32string_view expected;
    };
    const ParaFormat on{.hyphenate = true};
    const Row rows[] = {
        {"off", U"a hyphenation", 45, {}, U"a |hyphenati|on\r|"},
        {"as far as fits", U"a hyphenation", 45, on, U"a hyphen=|ation\r|"},
        {"the hyphen must fit too", U"a hyphenation", 44, on, U"a hy=|phenation\r|"},
        {"word too long for its line", U"hyphenation", 27, on, U"hy=|phen=|ation\r|"},
        {"whole word fits", U"hyphenation", 60, on, U"hyphenation\r|"},
        {"punctuation stays", U"a “hyphenation”, b", 52, on, U"a “hyphen=|ation”, b\r|"},
        {"letters before", U"a hyphenation", 45, {.hyphenate = true, .hyphenLettersBefore = 7}, U"a |hyphenati|on\r|"},
        {"letters after", U"a hyphenation", 45, {.hyphenate = true, .hyphenLettersAfter = 6}, U"a hy=|phenation\r|"},
        {"word too short", U"a hyphenation", 55, {.hyphenate = true, .hyphenWordLetters = 12}, U"a |hyphenation\r|"},
        {"word just long enough",
         U"a hyphenation",
         55,
         {.hyphenate = true, .hyphenWordLetters = 11},
         U"a hyphen=|ation\r|"},
        {"address", U"a hyphenation@example.com", 66, on, U"a |hyphenation@|example.com\r|"},
        {"author's hyphens only", U"a hyphena\u00ADtion", 55, on, U"a hyphena\u00AD=|tion\r|"},
        {"author's hyphens only, too far", U"a hyphena\u00ADtion", 45, on, U"a |hyphena\u00AD=|tion\r|"},
        {"tab in front", U"a\thyphenation", 75, on, U"a\thyphen=|ation\r|"},
        {"numbers", U"x hyphenation2000", 45, on, U"x |hyphenati|on2000\r|"},
    };
    for (const Row& row : rows) {
        // A soft hyphen's glyph stands at the soft hyphen itself.
        std::u32string expected(row.expected);
        for (std::size_t at = 0; (at = expected.find(U"\u00AD=", at)) != std::u32string::npos;)
            expected.erase(at + 1, 1);
        EXPECT_EQ(hyphenatedAt(row.width, row.text, row.format), expected) << row.name;
    }
}

TEST(ParagraphHyphens, HyphensInARow) {
    const std::u32string text(U"representation representation representation representation");
    ParaFormat format{.hyphenate = true};
    const auto longestRow = [&] {
        const std::u32string lines = hyphenatedAt(47, text, format);
        int longest = 0, row = 0;
        for (std::size_t end = lines.find(U'|'); end != std::u32string::npos; end = lines.find(U'|', end + 1)) {
            row = lines[end - 1] == U'=' ? row + 1 : 0;
            longest = std::max(longest, row);
        }
        return longest;
    };
    format.hyphensInARow = 0;
    EXPECT_GT(longestRow(), 3) << "any number";
    for (int limit : {1, 2, 3}) {
        format.hyphensInARow = limit;
        EXPECT_EQ(longestRow(), limit);
    }
}

TEST(ParagraphHyphens, ThePlacesOfALanguage) {
    const ParaFormat on{.hyphenate = true};
    EXPECT_EQ(hyphenatedAt(32, U"histories", on, "en-GB"), U"histor=|ies\r|");
    EXPECT_EQ(hyphenatedAt(32, U"histories", on, "en-US"), U"histo=|ries\r|");
    EXPECT_EQ(hyphenatedAt(32, U"histories", on, "tlh"), U"histori|es\r|");
}

TEST(ParagraphHyphens, ChangesOfFormatAndCapitals) {
    ComposeKit kit;
    kit.paragraph.hyphenate = true;
    CharFormat bold = kit.format, capitals = kit.format;
    bold.fontStyle = "Bold";
    capitals.caps = CharFormat::Caps::allCaps;
    kit.text(U"a hyph");
    kit.text(U"en", bold);  // the hyphen stands at the border of two formats
    kit.text(U"ation\r");
    kit.text(U"a hyphenation", capitals);
    kit.column(48);
    const ComposedStory story = kit.compose();
    EXPECT_EQ(seen(kit, story), U"a hyphen=|ation\r|a hy=|phen=|ation\r|");
    const GlyphRun& last = story.runs[story.lines[0].firstRun + story.lines[0].runCount - 1];
    EXPECT_EQ(last.font->style(), "Bold") << "it looks like the letters in front of it";
}

TEST(ParagraphHyphens, AlignedWithItsHyphen) {
    for (Alignment alignment : {Alignment::right, Alignment::justifyLeft, Alignment::justifyAll}) {
        ComposeKit kit(U"to a hyphenation of it", 62, {.alignment = alignment, .hyphenate = true});
        const ComposedStory story = kit.compose();
        EXPECT_EQ(seen(kit, story).substr(0, 14), U"to a hyphen=|a");
        const GlyphRun& run = story.runs[story.lines[0].firstRun + story.lines[0].runCount - 1];
        EXPECT_NEAR(run.x + run.width, 62, 0.02);
    }
}

TEST(ParagraphHyphens, AWordMovesWholeIntoAWiderColumn) {
    ComposeKit kit;
    kit.paragraph.hyphenate = true;
    kit.text(U"hyphenation");
    kit.column(30, 8);  // too low for a line, which is tried all the same
    kit.column(100, 20);
    const ComposedStory story = kit.compose();
    EXPECT_EQ(seen(kit, story), U"hyphenation\r|");
    ComposeKit plain;
    plain.text(U"hyphenation");
    plain.column(100, 20);
    EXPECT_FLOAT_EQ(story.lines[0].right, plain.compose().lines[0].right) << "put together with its kerning";
}

}  // namespace
}  // namespace tarnova
