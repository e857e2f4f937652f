#include "host/text/line_stretch.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/host/text/compose_kit.h"

namespace tarnova {
namespace {

constexpr float spaceWidth = 2.78F;  // Helvetica 10
constexpr float tolerance = 0.02F;

/// Spaces of a line as parts of the font's own, all of which must be alike; 0 for a line without.
float spacesIn(const ComposeKit& kit, const ComposedStory& story, const ComposedLine& line) {
    const std::vector<PlacedCharacter> characters = charactersOf(story, line);
    float found = 0;
    for (std::size_t i = 0; i + 1 < characters.size(); ++i) {
        if (kit.characters[characters[i].position] != U' ') continue;
        const float space = (characters[i + 1].x - characters[i].x) / spaceWidth;
        if (found > 0) {
            EXPECT_NEAR(space, found, tolerance);
        }
        found = space;
    }
    return found;
}

struct Set {
    std::vector<std::u32string> lines;
    std::vector<float> spaces;
    std::vector<float> rights;
};

Set setIn(double width, std::u32string_view text, const ParaFormat& paragraph) {
    ComposeKit kit;
    kit.format.pairKerning = false;
    kit.paragraph = paragraph;
    kit.text(text);
    kit.column(width);
    const ComposedStory story = kit.compose();
    Set set{kit.lines(story), {}, {}};
    for (const ComposedLine& line : story.lines) {
        set.spaces.push_back(spacesIn(kit, story, line));
        set.rights.push_back(line.right);
    }
    return set;
}

ParaFormat justified(double least, double wanted, double greatest, bool hyphenate = false) {
    return {.alignment = Alignment::justifyLeft,
            .hyphenate = hyphenate,
            .wordSpaceLeast = least,
            .wordSpaceWanted = wanted,
            .wordSpaceGreatest = greatest};
}

TEST(WordSpaces, LinesEndWhereSpacesComeClosest) {
    // "nn " is 13.9 wide; four of them need 52.82 with the font's spaces, three need 38.92.
    constexpr std::u32string_view text = U"nn nn nn nn nn nn";
    struct Row {
        const char* name;
        double width;
        ParaFormat format;
        std::size_t firstLine;  // characters
        float space;
    };
    const Row rows[] = {
        {"font's spaces, four fit", 53, justified(100, 100, 133), 12, 1 + 0.18F / 3 / spaceWidth},
        {"font's spaces, three fit", 51, justified(100, 100, 133), 9, 1 + 12.08F / 2 / spaceWidth},
        {"four squeezed", 51, justified(70, 100, 133), 12, 1 - 1.82F / 3 / spaceWidth},
        {"four would be too tight", 50, justified(70, 100, 133), 9, 1 + 11.08F / 2 / spaceWidth},
        {"three stretched are closer", 47.9, justified(40, 100, 10000), 9, 1 + 8.98F / 2 / spaceWidth},
        {"four squeezed are closer", 47.9, justified(40, 100, 110), 12, 1 - 4.92F / 3 / spaceWidth},
        {"wide spaces wanted", 53, justified(100, 200, 400), 9, 1 + 14.08F / 2 / spaceWidth},
    };
    for (const Row& row : rows) {
        const Set set = setIn(row.width, text, row.format);
        EXPECT_EQ(set.lines[0].size(), row.firstLine) << row.name;
        EXPECT_NEAR(set.spaces[0], row.space, tolerance) << row.name;
        EXPECT_NEAR(set.rights[0], row.width, tolerance) << row.name;
    }
}

TEST(WordSpaces, LastLinesHaveTheWantedSpace) {
    struct Row {
        const char* name;
        double width;
        ParaFormat format;
        float space;
    };
    const Row rows[] = {
        {"as the font has it", 100, justified(50, 100, 133), 1},
        {"narrower", 100, justified(50, 80, 133), 0.8F},
        {"wider", 100, justified(50, 150, 200), 1.5F},
        {"as wide as there is room", 40, justified(50, 150, 200), 1 + 1.08F / 2 / spaceWidth},
        {"squeezed to fit", 37, justified(50, 100, 133), 1 - 1.92F / 2 / spaceWidth},
        {"not justified", 100, {.wordSpaceLeast = 50, .wordSpaceWanted = 150}, 1},
    };
    for (const Row& row : rows) {
        const Set set = setIn(row.width, U"nn nn nn", row.format);
        ASSERT_EQ(set.lines.size(), 1u) << row.name;
        EXPECT_NEAR(set.spaces[0], row.space, tolerance) << row.name;
    }
}

TEST(WordSpaces, AHyphenWhereSpacesWouldBeTooWide) {
    constexpr std::u32string_view text = U"to a hyphenation of it";
    EXPECT_EQ(setIn(62, text, justified(100, 100, 133, true)).lines[0], U"to a hyphen");
    EXPECT_EQ(setIn(62, text, justified(100, 100, 10000, true)).lines[0], U"to a ") << "wide spaces are welcome";
    EXPECT_EQ(setIn(62, text, justified(100, 100, 133, false)).lines[0], U"to a ");
    EXPECT_NEAR(setIn(62, text, justified(100, 100, 133, false)).rights[0], 62, tolerance) << "stretched all the same";
}

/// A line of "nnn nnn nnn", justified in full: three words of 16.68 points, two spaces of 2.78.
struct StretchedLine {
    float space, letterSpace, scale, right;
};

StretchedLine stretched(double width, const ParaFormat& limits) {
    ComposeKit kit;
    kit.format.pairKerning = false;
    kit.paragraph = limits;
    kit.paragraph.alignment = Alignment::justifyAll;
    kit.text(U"nnn nnn nnn");
    kit.column(width);
    const ComposedStory story = kit.compose();
    EXPECT_EQ(story.lines.size(), 1u) << width;
    const std::vector<PlacedCharacter> set = charactersOf(story, story.lines[0]);
    const GlyphRun& run = story.runs[0];
    const float advance = 5.56F * run.horizontalScale;
    const float letterSpace = set[1].x - set[0].x - advance;
    EXPECT_NEAR(set[2].x - set[1].x, advance + letterSpace, tolerance);
    EXPECT_NEAR(run.x + run.width, set[10].x + advance, tolerance) << "no letter space behind the last letter";
    return {set[4].x - set[3].x, letterSpace, run.horizontalScale, set[10].x + advance};
}

TEST(LetterSpaces, GiveTogetherWithWordSpaces) {
    constexpr float natural = 9 * 5.56F + 2 * spaceWidth;  // 55.6
    struct Row {
        const char* name;
        double width;
        ParaFormat limits;
        float letterSpace, scale;
    };
    const ParaFormat words, letters{.wordSpaceGreatest = 100, .letterSpaceGreatest = 10};
    const ParaFormat both{.wordSpaceGreatest = 200, .letterSpaceLeast = -2, .letterSpaceGreatest = 10};
    const ParaFormat scaled{.wordSpaceGreatest = 100, .glyphScaleLeast = 95, .glyphScaleGreatest = 110};
    const Row rows[] = {
        {"word spaces alone", natural + 5, words, 0, 1},
        {"letter spaces alone", natural + 5, letters, 0.5F, 1},  // ten gaps of at most 1 point
        {"letter spaces at their greatest", natural + 20, letters, 1, 1},
        {"halfway of both", natural + 5 + spaceWidth, both, 0.5F, 1},
        {"squeezed", natural - 1, both, -0.1F, 1},
        {"wider letters", natural * 1.05, scaled, 0, 1.05F},
        {"wider letters at their greatest", natural * 1.2, scaled, 0, 1.1F},
        {"narrower letters", natural * 0.96, scaled, 0, 0.96F},
    };
    for (const Row& row : rows) {
        const StretchedLine line = stretched(row.width, row.limits);
        EXPECT_NEAR(line.letterSpace, row.letterSpace, tolerance) << row.name;
        EXPECT_NEAR(line.scale, row.scale, 0.002F) << row.name;
        EXPECT_NEAR(line.right, row.width, tolerance) << row.name;
    }
}

TEST(LetterSpaces, FillALineOfOneWordAsFarAsTheyMay) {
    for (const auto& [width, right] : {std::pair{30.0, 30.0F}, {60.0, 5 * 5.56F + 4}}) {
        ComposeKit kit;
        kit.format.pairKerning = false;
        kit.paragraph = {.alignment = Alignment::justifyAll, .letterSpaceGreatest = 10};
        kit.text(U"nnnnn");
        kit.column(width);
        const ComposedStory story = kit.compose();
        EXPECT_NEAR(story.lines[0].right, right, tolerance) << width;
    }
}

TEST(LetterSpaces, LeaveJoinedLettersAlone) {
    const auto widthOf = [](std::u32string_view text, double letterSpace) {
        ComposeKit kit;
        kit.paragraph = {.alignment = Alignment::justifyLeft,
                         .letterSpaceLeast = letterSpace,
                         .letterSpaceWanted = letterSpace,
                         .letterSpaceGreatest = letterSpace};
        kit.text(text);
        kit.column(300);
        const ComposedStory story = kit.compose();
        return story.lines[0].right - story.lines[0].left;
    };
    EXPECT_FLOAT_EQ(widthOf(U"\u0633\u0644\u0627\u0645", 10), widthOf(U"\u0633\u0644\u0627\u0645", 0));
    EXPECT_NEAR(widthOf(U"\u05D0\u05D1\u05D2", 10), widthOf(U"\u05D0\u05D1\u05D2", 0) + 2, tolerance);
    EXPECT_NEAR(widthOf(U"nnn", 10), widthOf(U"nnn", 0) + 2, tolerance);
}

TEST(WordSpaces, SpacesInFrontOfATabStay) {
    ParaFormat format = justified(50, 100, 133);
    format.tabs = {{60, TabStop::Kind::left}};
    ComposeKit kit(U"n n\tnn nn nn nn", 100, format);
    const ComposedStory story = kit.compose();
    EXPECT_EQ(kit.lines(story)[0], U"n n\tnn nn nn ");
    const std::vector<PlacedCharacter> characters = charactersOf(story, story.lines[0]);
    EXPECT_NEAR(characters[2].x, 5.56F + spaceWidth, tolerance);
    EXPECT_NEAR(characters[3].x, 60, tolerance);
    EXPECT_NEAR(story.lines[0].right, 100, tolerance);
}

}  // namespace
}  // namespace tarnova
