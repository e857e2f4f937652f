#include "host/model/story_text.h"

#include <gtest/gtest.h>

#include <random>

#include "host/model/attribute_pool.h"

namespace tarnova {
namespace {

class StoryTextTest : public testing::Test {
 protected:
    /// A story from paragraphs, "A" to "Z" and "a" to "z" in two run formats, digits plain; "|" ends a thread.
    StoryText make(std::u32string_view source) {
        StoryTextBuilder builder;
        std::int32_t style = 0;
        for (char32_t c : source) {
            if (c == U'/' || c == U'|') builder.endParagraph(paragraph(style++), plain);
            if (c == U'|') builder.endThread();
            if (c != U'/' && c != U'|') builder.append(std::u32string_view(&c, 1), runOf(c));
        }
        return *builder.finish();
    }

    const RunAttributes* runOf(char32_t c) {
        if (c >= U'A' && c <= U'Z') return upper;
        return c >= U'a' && c <= U'z' ? lower : plain;
    }

    const ParagraphAttributes* paragraph(std::int32_t style) { return pool.paragraph({style, {}, {}}); }

    static std::string shown(const StoryText& story) {
        std::string out;
        for (char32_t c : story.text)
            out += c == returnCharacter ? '/' : static_cast<char>(c);
        return out;
    }

    /// Runs as letters: U upper, l lower, . plain, one a character.
    std::string runs(const StoryText& story) {
        std::string out;
        for (const AttributeRun& run : story.runs) {
            const char name = run.attributes == upper ? 'U' : run.attributes == lower ? 'l' : '.';
            out.append(static_cast<std::size_t>(run.length), name);
        }
        return out;
    }

    static std::string styles(const StoryText& story) {
        std::string out;
        for (const ParagraphRun& p : story.paragraphs)
            out += std::to_string(p.attributes->style);
        return out;
    }

    static RunDescription sized(double size) {
        RunDescription out;
        out.overrides.pointSize = size;
        return out;
    }

    AttributePool pool;
    const RunAttributes* plain = pool.plainRun();
    const RunAttributes* upper = pool.run(sized(20));
    const RunAttributes* lower = pool.run(sized(5));
};

TEST_F(StoryTextTest, Replace) {
    struct testRow {
        const char* name;
        const char32_t* source;
        std::int32_t start, count;
        const char32_t* text;
        const char *shown, *runs, *styles;
    };
    const testRow rows[] = {
        {"inside a run", U"ABCD|", 1, 2, U"xyz", "AxyzD/", "UUUUU.", "0"},
        {"takes the first character's", U"ABcd|", 1, 2, U"xy", "Axyd/", "UUUl.", "0"},
        {"over three runs", U"AB1cd|", 1, 3, U"x", "Axd/", "UUl.", "0"},
        {"whole run", U"1AB2|", 1, 2, U"x", "1x2/", ".U..", "0"},
        {"whole run deleted joins its neighbours", U"1AB2|", 1, 2, U"", "12/", "...", "0"},
        {"insertion takes what is in front", U"ABcd|", 2, 0, U"x", "ABxcd/", "UUUll.", "0"},
        {"insertion at the start takes what is behind", U"ABcd|", 0, 0, U"x", "xABcd/", "UUUll.", "0"},
        {"insertion before the closing mark", U"AB|", 2, 0, U"x", "ABx/", "UUU.", "0"},
        {"insertion at a thread's start takes what is behind", U"AB|cd|", 3, 0, U"x", "AB/xcd/", "UU.lll.", "01"},
        {"into the empty story", U"|", 0, 0, U"x", "x/", "..", "0"},
        {"a return splits a paragraph", U"ABCD|", 2, 0, U"\r", "AB/CD/", "UUUUU.", "00"},
        {"two returns", U"ABCD/ef|", 1, 2, U"x\ry\rz", "Ax/y/zD/ef/", "UUUUUUU.ll.", "0001"},
        {"a deleted return joins into the first", U"AB/cd|", 2, 1, U"", "ABcd/", "UUll.", "0"},
        {"a whole deleted paragraph leaves the next as it was", U"AB/cd|", 0, 3, U"", "cd/", "ll.", "1"},
        {"a whole replaced paragraph too", U"AB/cd|", 0, 3, U"x\r", "x/cd/", "UUll.", "01"},
        {"three paragraphs into one", U"AB/cd/EF|", 1, 6, U"-", "A-F/", "UUU.", "0"},
        {"the second thread alone grows", U"AB|cd|", 4, 1, U"xyz", "AB/cxyz/", "UU.llll.", "01"},
    };
    for (const testRow& row : rows) {
        StoryText story = make(row.source);
        const std::size_t threads = story.threads.size();
        ASSERT_TRUE(storyIsConsistent(story)) << row.name;
        ASSERT_TRUE(mayReplace(story, row.start, row.count)) << row.name;
        replaceCharacters(story, row.start, row.count, row.text);
        EXPECT_TRUE(storyIsConsistent(story)) << row.name;
        EXPECT_EQ(shown(story), row.shown) << row.name;
        EXPECT_EQ(runs(story), row.runs) << row.name;
        EXPECT_EQ(styles(story), row.styles) << row.name;
        EXPECT_EQ(story.threads.size(), threads) << row.name;
    }
}

TEST_F(StoryTextTest, RefusesClosingMarksAndPlacesOutside) {
    const StoryText story = make(U"AB|cd|");  // closing marks at 2 and 5
    struct testRow {
        std::int32_t start, count;
        bool allowed;
    };
    const testRow rows[] = {{0, 2, true},           {2, 0, true},          {3, 2, true},   {5, 0, true},
                            {2, 1, false},          {0, 3, false},         {1, 3, false},  {5, 1, false},
                            {6, 0, false},          {-1, 1, false},        {0, -1, false}, {3, 4, false},
                            {0, 2147483647, false}, {2147483647, 1, false}};
    for (const auto& [start, count, allowed] : rows) {
        EXPECT_EQ(mayReplace(story, start, count), allowed) << start << ", " << count;
    }
}

TEST_F(StoryTextTest, CharactersAreMadeFit) {
    EXPECT_EQ(storyCharacters(U"a\r\nb\nc\rd", false), U"a\rb\rc\rd");
    EXPECT_EQ(storyCharacters(U"a\r\nb\nc", true), U"a\r\nb\nc");
    const char32_t bad[] = {0xD800, 0x110000, U'x'};
    EXPECT_EQ(storyCharacters({bad, 3}, true), U"\uFFFD\uFFFDx");
}

TEST_F(StoryTextTest, AnchorsMoveWithTheText) {
    StoryText story = make(U"1\uFFFC2\uFFFC3|");
    story.owned = {{1, 70}, {3, 71}};
    replaceCharacters(story, 0, 1, U"abc");
    ASSERT_EQ(story.owned.size(), 2u);
    EXPECT_EQ(story.owned[0].position, 3);
    EXPECT_TRUE(storyIsConsistent(story));
    replaceCharacters(story, 3, 1, U"");
    ASSERT_EQ(story.owned.size(), 1u);
    EXPECT_EQ(story.owned[0].item, 71u);
    EXPECT_TRUE(storyIsConsistent(story));
}

TEST_F(StoryTextTest, InconsistenciesAreFound) {
    const auto damaged = [this](void (*damage)(StoryText&)) {
        StoryText story = make(U"AB/cd|");
        damage(story);
        return !storyIsConsistent(story);
    };
    EXPECT_TRUE(damaged([](StoryText& s) { s.runs[0].length += 1; }));
    EXPECT_TRUE(damaged([](StoryText& s) { s.runs[1].attributes = s.runs[0].attributes; }));
    EXPECT_TRUE(damaged([](StoryText& s) { s.paragraphs[0].length -= 1, s.paragraphs[1].length += 1; }));
    EXPECT_TRUE(damaged([](StoryText& s) { s.threads[0].length -= 1; }));
    EXPECT_TRUE(damaged([](StoryText& s) { s.text[1] = returnCharacter; }));
    EXPECT_TRUE(damaged([](StoryText& s) { s.owned.push_back({0, 9}); }));
    EXPECT_TRUE(damaged([](StoryText& s) { s.text.clear(); }));
}

/// Thousands of changes, checked against a plain string and, for the runs, one attribute list a character.
TEST_F(StoryTextTest, RandomChanges) {
    std::mt19937 random(7);
    StoryText story = make(U"Hello 1/world/Abc|cell|second cell|");
    std::vector<const RunAttributes*> expected;
    for (const AttributeRun& run : story.runs) {
        expected.insert(expected.end(), static_cast<std::size_t>(run.length), run.attributes);
    }
    std::u32string text = story.text;
    for (int i = 0; i < 5000; ++i) {
        const auto start = static_cast<std::int32_t>(random() % text.size());
        const auto count = static_cast<std::int32_t>(random() % 6);
        if (random() % 3 == 0) {
            const std::int32_t some = std::min<std::int32_t>(count, static_cast<std::int32_t>(text.size()) - start);
            const RunAttributes* list = random() % 2 == 0 ? upper : lower;
            changeRuns(story, start, some, [list](const RunAttributes&) { return list; });
            std::fill_n(expected.begin() + start, some, list);
        } else if (mayReplace(story, start, count)) {
            const std::u32string_view choices[] = {U"", U"x", U"xy\rz", U"\r"};
            const std::u32string_view chosen = text.size() > 300 ? U"" : choices[random() % 4];
            const bool takesFront = count == 0 && start > threadAt(story, start).start;
            const RunAttributes* list = expected[static_cast<std::size_t>(takesFront ? start - 1 : start)];
            replaceCharacters(story, start, count, chosen);
            text.replace(static_cast<std::size_t>(start), static_cast<std::size_t>(count), chosen);
            expected.erase(expected.begin() + start, expected.begin() + start + count);
            expected.insert(expected.begin() + start, chosen.size(), list);
        }
        ASSERT_TRUE(storyIsConsistent(story)) << i;
        ASSERT_EQ(story.text, text) << i;
        const auto probe = static_cast<std::int32_t>(random() % text.size());
        ASSERT_EQ(story.runs[runAt(story, probe).index].attributes, expected[static_cast<std::size_t>(probe)]) << i;
        const RunCursor at = paragraphRunAt(story, probe);
        ASSERT_LE(at.start, probe);
        ASSERT_GT(at.start + story.paragraphs[at.index].length, probe);
    }
}

}  // namespace
}  // namespace tarnova
