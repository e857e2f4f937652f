#include "host/text/hyphen_patterns.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

namespace tarnova {
namespace {

struct HyphenPatternsTest : testing::Test {
    std::string path = testing::TempDir() + "hyphen_patterns_test.dic";
    ~HyphenPatternsTest() override { std::filesystem::remove(path); }

    std::unique_ptr<HyphenPatterns> opened(const std::string& content) const {
        std::ofstream(path, std::ios::binary) << content;
        return HyphenPatterns::open(path);
    }

    /// The word with a hyphen at each place.
    static std::string hyphenated(const HyphenPatterns& patterns, std::u32string_view word) {
        const std::uint64_t points = patterns.pointsOf(word);
        std::string out;
        for (std::size_t i = 0; i < word.size(); ++i) {
            out += word[i] < 0x80 ? static_cast<char>(word[i]) : '?';
            if ((points >> i & 1) != 0) out += '-';
        }
        return out;
    }
};

TEST_F(HyphenPatternsTest, PatternsSayWhereAHyphenStands) {
    struct Row {
        const char* name;
        std::string patterns;
        std::u32string_view word;
        std::string expected;
    };
    const Row rows[] = {
        {"odd allows", "a1b", U"xxabxx", "xxa-bxx"},
        {"even forbids", "a2b", U"xxabxx", "xxabxx"},
        {"the highest holds", "a1b\nxa2bx\nxxa3bxx", U"xxabxx", "xxa-bxx"},
        {"the highest of another pattern holds", "a1bx\nxa2b", U"xxabxx", "xxabxx"},
        {"the word's start", ".xx1a\nb1xx", U"xxabxx", "xx-ab-xx"},
        {"only there", ".ab1c", U"xxabcxx", "xxabcxx"},
        {"the word's end", "b1xx.", U"xxabxx", "xxab-xx"},
        {"comments and empty lines", "% a1b\n\n# a1b\r\nb1x", U"xxabxx", "xxab-xx"},
        {"two letters on each side unless it says more", "x1a\nb1x\nx1x", U"xxabxx", "xx-ab-xx"},
        {"more of them", "LEFTHYPHENMIN 3\nRIGHTHYPHENMIN 3\nx1a\na1b\nb1x", U"xxabxx", "xxa-bxx"},
        {"fewer of them", "LEFTHYPHENMIN 1\nRIGHTHYPHENMIN 1\nx1x", U"xxabxx", "x-xabx-x"},
        {"other spelling", "a1b/aab=b,1,1", U"xxabxx", "xxabxx"},
        {"letters beyond Latin",
         "\xC3\xA9"
         "1\xD0\xB6",
         U"xx\u00E9\u0436xx", "xx?-?xx"},
        {"compounds, then words", "xx1aa\nNEXTLEVEL\nx1b\na1b", U"xxaabb", "xx-aa-bb"},
        {"parts are words", "xx1aa\nNEXTLEVEL\n.aa1b\nxx.", U"xxaabb", "xx-aa-bb"},
        {"letters in parts", "COMPOUNDLEFTHYPHENMIN 3\nxx1aa\nNEXTLEVEL\na1b", U"xxaabb", "xx-aabb"},
        {"no pattern", "", U"xxabxx", "xxabxx"},
        {"no word", "a1b", U"", ""},
    };
    for (const Row& row : rows) {
        const auto patterns = opened("UTF-8\n" + row.patterns + "\n");
        ASSERT_NE(patterns, nullptr) << row.name;
        EXPECT_EQ(hyphenated(*patterns, row.word), row.expected) << row.name;
    }
}

TEST_F(HyphenPatternsTest, FilesOfAllKinds) {
    EXPECT_EQ(HyphenPatterns::open(path + ".missing"), nullptr);
    EXPECT_EQ(opened(""), nullptr);
    EXPECT_EQ(opened("no such character set\na1b\n"), nullptr);
    const auto latin = opened(
        "ISO8859-1\n\xE9"
        "1b");
    ASSERT_NE(latin, nullptr);
    EXPECT_EQ(hyphenated(*latin, U"xx\u00E9bxx"), "xx?-bxx") << "the last line has no end";
    const auto odd = opened(
        "UTF-8\n\xFF\xFE"
        "1\n" +
        std::string(100000, 'a') + "1b\nLEFTHYPHENMIN 99999999999\na1b\n");
    ASSERT_NE(odd, nullptr);
    EXPECT_EQ(odd->pointsOf(std::u32string(64, U'a')), 0u);
    const auto all = opened("UTF-8\nLEFTHYPHENMIN 1\nRIGHTHYPHENMIN 1\na1a\n");
    EXPECT_EQ(all->pointsOf(std::u32string(64, U'a')), ~std::uint64_t{0} >> 1);
    EXPECT_EQ(all->pointsOf(std::u32string(65, U'a')), 0u);
}

}  // namespace
}  // namespace tarnova
