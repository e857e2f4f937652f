#include "host/model/story_text.h"

#include <gtest/gtest.h>

#include <random>
#include <set>

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

    static std::u32string textOf(const StoryText& story) { return charactersOf(story, 0, story.length()); }

    static std::string shown(const StoryText& story) {
        std::string out;
        for (char32_t c : textOf(story))
            out += c == returnCharacter ? '/' : static_cast<char>(c);
        return out;
    }

    /// Runs as letters: U upper, l lower, . plain, one a character.
    std::string runs(const StoryText& story) {
        std::string out;
        for (std::int32_t at = 0; at < story.length();) {
            const RunSpan run = runAt(story, at);
            const char name = run.attributes == upper ? 'U' : run.attributes == lower ? 'l' : '.';
            out.append(static_cast<std::size_t>(run.limit - at), name);
            at = run.limit;
        }
        return out;
    }

    static std::string styles(const StoryText& story) {
        std::string out;
        for (std::int32_t at = 0; at < story.length(); at = paragraphAt(story, at).limit())
            out += std::to_string(paragraphAt(story, at).attributes->style);
        return out;
    }

    /// Leaves, and nodes, of a tree that the content doesn't hold.
    static std::pair<int, int> nodesOnlyIn(const StoryNode& tree, const StoryText& content) {
        std::set<const StoryNode*> known;
        collect(*content.tree, known);
        std::set<const StoryNode*> all;
        collect(tree, all);
        std::pair<int, int> out;
        for (const StoryNode* node : all) {
            if (known.count(node) > 0) continue;
            ++out.second;
            if (node->height == 0) ++out.first;
        }
        return out;
    }
    static void collect(const StoryNode& node, std::set<const StoryNode*>& out) {
        out.insert(&node);
        if (node.height == 0) return;
        collect(*static_cast<const StoryBranch&>(node).left, out);
        collect(*static_cast<const StoryBranch&>(node).right, out);
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
        const std::int32_t threads = story.threadCount();
        ASSERT_TRUE(storyIsConsistent(story)) << row.name;
        ASSERT_TRUE(mayReplace(story, row.start, row.count)) << row.name;
        replaceCharacters(story, row.start, row.count, row.text);
        EXPECT_TRUE(storyIsConsistent(story)) << row.name;
        EXPECT_EQ(shown(story), row.shown) << row.name;
        EXPECT_EQ(runs(story), row.runs) << row.name;
        EXPECT_EQ(styles(story), row.styles) << row.name;
        EXPECT_EQ(story.threadCount(), threads) << row.name;
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
    noteAnchor(story, 3, 70);
    noteAnchor(story, 1, 70);
    noteAnchor(story, 3, 71);
    replaceCharacters(story, 0, 1, U"abc");
    std::vector<ownedItemRec> owned = allOwned(story);
    ASSERT_EQ(owned.size(), 2u);
    EXPECT_EQ(owned[0].position, 3);
    EXPECT_TRUE(storyIsConsistent(story));
    replaceCharacters(story, 3, 1, U"");
    owned = allOwned(story);
    ASSERT_EQ(owned.size(), 1u);
    EXPECT_EQ(owned[0].item, 71u);
    EXPECT_TRUE(storyIsConsistent(story));
}

TEST_F(StoryTextTest, InconsistenciesAreFound) {
    using Damage = void (*)(StoryChunk&);
    const std::pair<const char*, Damage> rows[] = {
        {"runs too long", [](StoryChunk& c) { c.runs[0].length += 1; }},
        {"equal neighbours", [](StoryChunk& c) { c.runs[1].attributes = c.runs[0].attributes; }},
        {"paragraphs past their returns",
         [](StoryChunk& c) { c.paragraphs[0].length -= 1, c.paragraphs[1].length += 1; }},
        {"the last paragraph ends no thread", [](StoryChunk& c) { c.paragraphs.back().endsThread = false; }},
        {"a return inside", [](StoryChunk& c) { c.text[1] = returnCharacter; }},
        {"an anchor on a letter", [](StoryChunk& c) { c.owned.push_back({0, 9}); }},
        {"no text", [](StoryChunk& c) { c = {}; }},
    };
    for (const auto& [name, damage] : rows) {
        StoryText story = make(U"AB/cd|");
        StoryChunk chunk = leafAt(*story.tree, 0).leaf->chunk;
        EXPECT_TRUE(storyIsConsistent({treeOf(StoryChunk(chunk))})) << name;
        damage(chunk);
        EXPECT_FALSE(storyIsConsistent({treeOf(std::move(chunk))})) << name;
    }
}

/// A story's changes beside a plain string and, for runs, one attribute list a character.
struct ShadowedStory {
    StoryText story;
    std::u32string text;
    std::vector<const RunAttributes*> runs;

    explicit ShadowedStory(const StoryText& its) : story(its), text(charactersOf(its, 0, its.length())) {
        for (std::int32_t at = 0; at < story.length(); ++at)
            runs.push_back(runAt(story, at).attributes);
    }

    void replace(std::int32_t start, std::int32_t count, std::u32string_view added) {
        const bool takesFront = count == 0 && start > threadAt(story, start).start;
        const RunAttributes* list = runs[static_cast<std::size_t>(takesFront ? start - 1 : start)];
        replaceCharacters(story, start, count, added);
        text.replace(static_cast<std::size_t>(start), static_cast<std::size_t>(count), added);
        runs.erase(runs.begin() + start, runs.begin() + start + count);
        runs.insert(runs.begin() + start, added.size(), list);
    }
    void setRuns(std::int32_t start, std::int32_t count, const RunAttributes* list) {
        changeRuns(story, start, count, [list](const RunAttributes&) { return list; });
        std::fill_n(runs.begin() + start, count, list);
    }

    /// Look-ups at a position, from scratch and by a reader that has been elsewhere.
    void probe(StoryReader& reader, std::int32_t position) const {
        std::int32_t limit = position;
        while (limit < story.length() && runs[static_cast<std::size_t>(limit)] == runs[static_cast<std::size_t>(position)])
            ++limit;
        for (const RunSpan& run : {runAt(story, position), reader.runAt(position)}) {
            EXPECT_EQ(run.attributes, runs[static_cast<std::size_t>(position)]);
            EXPECT_EQ(run.limit, limit);
        }
        const std::size_t before = position == 0 ? std::u32string::npos
                                                 : text.rfind(returnCharacter, static_cast<std::size_t>(position) - 1);
        const StoryParagraph paragraph = reader.paragraphAt(position);
        EXPECT_EQ(paragraph.start, static_cast<std::int32_t>(before + 1));  // npos + 1 is 0
        EXPECT_EQ(paragraph.limit(),
                  static_cast<std::int32_t>(text.find(returnCharacter, static_cast<std::size_t>(position)) + 1));
    }
};

/// Thousands of changes of a text of one chunk and of one of many; in both, long paragraphs come and go.
TEST_F(StoryTextTest, RandomChanges) {
    const std::u32string many = [] {
        std::u32string out = U"Hello 1/world/Abc|cell|second cell|";
        for (int i = 0; i < 300; ++i)
            out += i % 70 == 0 ? U"The next/Cell|" : U"Some Words in a paragraph of 1 text that Is long/";
        return out + U"|";
    }();
    for (const std::u32string_view source : {std::u32string_view(U"Hello 1/world/Abc|cell|second cell|"),
                                             std::u32string_view(many)}) {
        std::mt19937 random(7);
        ShadowedStory shadowed(make(source));
        const std::size_t most = source.size() * 2;
        const std::u32string longText(700, U'L'), block = longText + U'\r' + longText + U'\r' + longText;
        for (int i = 0; i < 5000; ++i) {
            const auto length = static_cast<std::int32_t>(shadowed.text.size());
            const auto start = static_cast<std::int32_t>(random() % shadowed.text.size());
            const auto count = static_cast<std::int32_t>(random() % (random() % 50 == 0 ? 3000 : 6));
            if (random() % 3 == 0) {
                shadowed.setRuns(start, std::min(count, length - start), random() % 2 == 0 ? upper : lower);
            } else if (mayReplace(shadowed.story, start, count)) {
                const std::u32string_view choices[] = {U"", U"x", U"xy\rz", U"\r", block};
                const bool mayGrow = shadowed.text.size() < most;
                shadowed.replace(start, count, mayGrow ? choices[random() % (source.size() > 99 ? 5 : 4)] : U"");
            }
            if (source.size() < 99 || i % 50 == 0) {
                ASSERT_TRUE(storyIsConsistent(shadowed.story)) << i;
                ASSERT_EQ(textOf(shadowed.story), shadowed.text) << i;
            }
            StoryReader reader(shadowed.story);
            for (int probe = 0; probe < 3; ++probe)
                shadowed.probe(reader, static_cast<std::int32_t>(random() % shadowed.text.size()));
            if (HasFailure()) FAIL() << "step " << i;
        }
    }
}

TEST_F(StoryTextTest, ThreadsAreFoundByPositionAndNumber) {
    std::u32string source = U"main text/of two paragraphs|";
    for (int i = 0; i < 900; ++i)
        source += i % 3 == 0 ? U"cell|" : U"A cell/of two|";
    const StoryText story = make(source);
    ASSERT_EQ(story.threadCount(), 901);
    std::int32_t start = 0;
    for (std::int32_t i = 0; i < story.threadCount(); ++i) {
        const textSpanRec thread = threadNumber(story, i);
        ASSERT_EQ(thread.start, start) << i;
        for (const std::int32_t at : {start, start + thread.length - 1})
            ASSERT_EQ(threadAt(story, at).start, start) << i;
        start += thread.length;
    }
    EXPECT_EQ(start, story.length());
    EXPECT_EQ(threadAt(story, start).length, 0);
}

/// The difference of two contents is as large as the edit that made it, to the borders of paragraphs.
TEST_F(StoryTextTest, DifferencesAreFoundWhereTheEditWas) {
    std::u32string source;
    for (int i = 0; i < 900; ++i)
        source += U"Some Words in a paragraph of 1 text that Is long/";  // 49 characters
    const StoryText before = make(source + U"|");
    struct testRow {
        const char* name;
        std::int32_t start, count;
        std::u32string_view text;
        std::int32_t sameStart, sameAtEnd;
    };
    const std::int32_t length = before.length();
    const testRow rows[] = {
        {"inside a paragraph", 49 * 400 + 9, 2, U"x", 49 * 400, length - 49 * 401},
        {"at the start", 0, 0, U"x", 0, length - 49},
        {"at the end", length - 1, 0, U"x", length - 1, 0},
        {"a paragraph more", 49 * 300, 0, U"x\r", 49 * 300, length - 49 * 300},
        {"over paragraphs", 49 * 300 + 1, 49 * 2, U"y", 49 * 300, length - 49 * 303},
    };
    for (const testRow& row : rows) {
        StoryText after = before;
        replaceCharacters(after, row.start, row.count, row.text);
        const StoryDifference difference = differenceOf(before, after);
        EXPECT_EQ(difference.start, row.sameStart) << row.name;
        EXPECT_EQ(difference.sameAtEnd, row.sameAtEnd) << row.name;
    }
    StoryText after = before;
    changeRuns(after, 49 * 100 + 20, 1, [this](const RunAttributes&) { return upper; });
    EXPECT_EQ(differenceOf(before, after).start, 49 * 100);
    EXPECT_EQ(differenceOf(before, after).sameAtEnd, length - 49 * 101);
    EXPECT_EQ(differenceOf(before, before).start, length);
}

/// What an edit of a long text makes anew: the touched chunk, and nodes by the depth of the tree.
TEST_F(StoryTextTest, AnEditSharesAllOtherChunks) {
    std::u32string source;
    while (source.size() < 1'000'000)
        source += U"Some Words in a paragraph of 1 text that Is long enough for a line or two of any column/";
    const StoryText before = make(source + U"|");
    const std::int32_t length = before.length();
    for (const std::int32_t start : {0, length / 2, length - 1}) {
        StoryText after = before;
        replaceCharacters(after, start, 0, U"x");
        EXPECT_LE(nodesOnlyIn(*after.tree, before).first, 2) << "chunks, at " << start;
        EXPECT_LE(nodesOnlyIn(*after.tree, before).second, 40) << "nodes, at " << start;
    }
}

}  // namespace
}  // namespace tarnova
