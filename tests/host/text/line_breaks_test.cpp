#include "host/text/line_breaks.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

namespace tarnova {
namespace {

/// The text with `|` at each opportunity and `!` at each forced line end.
std::string marked(std::u32string_view text, const std::vector<LineBreak>& breaks) {
    std::string out;
    for (std::size_t i = 0; i < text.size(); ++i) {
        out += text[i] < 0x80 ? std::string(1, static_cast<char>(text[i])) : "<" + std::to_string(text[i]) + ">";
        if (breaks[i] != LineBreak::none) out += breaks[i] == LineBreak::allowed ? "|" : "!";
    }
    return out;
}

std::u32string randomText(std::mt19937& random, std::u32string_view alphabet) {
    std::u32string text;
    for (std::size_t length = 1 + random() % 9; text.size() < length;) {
        // Every third character is of the kinds whose neighbourhood the rules look at most.
        text += random() % 3 == 0 ? U"a1 1a."[random() % 6] : alphabet[random() % alphabet.size()];
    }
    return text;
}

TEST(LineBreaks, LatinRulesAgreeWithIcu) {
    std::u32string ascii, latin;
    for (char32_t c = 0x20; c < 0x7F; ++c)
        ascii += c;
    for (char32_t c = 0xA0; c < 0x250; ++c)
        if (isPlainLatin(std::u32string_view(&c, 1))) latin += c;
    latin += U"\t-.,;:!?()[]{}\"'/%$+\\|";
    std::u32string punctuation = U"a1 -.,\u00A0\u00AD\u00AB\u00BB\u00B4\u00BF\u00B0\u2028\t";
    for (char32_t c = 0x2010; c < 0x20C0; ++c)
        if (isPlainLatin(std::u32string_view(&c, 1))) punctuation += c;
    std::mt19937 random(20);
    std::vector<LineBreak> ours, icu;
    for (const std::u32string& alphabet : {ascii, latin, punctuation}) {
        for (int i = 0; i < 20000; ++i) {
            const std::u32string text = randomText(random, alphabet);
            findLatinBreaks(text, ours);
            findBreaks(text, icu);
            ASSERT_EQ(marked(text, ours), marked(text, icu));
        }
    }
}

TEST(LineBreaks, WhatIsPlainLatin) {
    for (std::u32string_view text : {U"Zażółć gęślą jaźń", U"„Ja“ – 5 € …", U"a\tb\u2028c", U""})
        EXPECT_TRUE(isPlainLatin(text)) << std::string(text.begin(), text.end());
    for (char32_t c : {U'\u05D0', U'\u0645', U'\u0301', U'\u4E2D', U'\u0E01', U'\u200F', U'\u202B', U'\n', U'\u200B'})
        EXPECT_FALSE(isPlainLatin(std::u32string_view(&c, 1))) << static_cast<unsigned>(c);
}

TEST(LineBreaks, OtherTextByIcu) {
    const std::pair<std::u32string_view, std::size_t> rows[] = {
        {U"\u4E2D\u6587\u5B57\u3002", 2},  // between ideographs, not in front of the full stop
        {U"\u0E2A\u0E27\u0E31\u0E2A\u0E14\u0E35\u0E0A\u0E32\u0E27\u0E42\u0E25\u0E01", 2},  // Thai words, by dictionary
        {U"a\u200Bb", 1},
        {U"\U0001F600\U0001F600", 1},
    };
    std::vector<LineBreak> breaks;
    for (const auto& [text, opportunities] : rows) {
        findBreaks(text, breaks);
        ASSERT_EQ(breaks.size(), text.size());
        EXPECT_EQ(std::count(breaks.begin(), breaks.end(), LineBreak::allowed), static_cast<long>(opportunities))
            << marked(text, breaks);
    }
}

TEST(LineBreaks, GraphemeBorders) {
    struct Row {
        std::u32string_view text;
        std::size_t limit, border;
    };
    const Row rows[] = {
        {U"abc", 2, 2},      {U"abc", 0, 1},      {U"abc", 9, 3},
        {U"e\u0301x", 1, 2}, {U"xe\u0301", 2, 1}, {U"\U0001F468\u200D\U0001F469", 2, 3},
    };
    for (const Row& row : rows)
        EXPECT_EQ(graphemeBorder(row.text, row.limit), row.border) << row.limit;
}

}  // namespace
}  // namespace tarnova
