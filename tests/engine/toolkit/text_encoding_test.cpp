#include "engine/toolkit/text_encoding.h"

#include <gtest/gtest.h>

namespace tarnova {
namespace {

TEST(TextEncoding, EveryCodePointGoesThereAndBack) {
    std::u32string all;
    for (char32_t c = 0; c <= 0x10FFFF; ++c) {
        if (c < 0xD800 || c > 0xDFFF) all.push_back(c);
    }
    const std::string utf8 = utf32ToUtf8(all);
    EXPECT_TRUE(isUtf8(utf8));
    EXPECT_TRUE(utf8ToUtf32(utf8) == all);
    EXPECT_EQ(codePointCount(utf8), all.size());
}

// Expected by the practice of Unicode 15, 3.9: one U+FFFD for each longest part of a character.
TEST(TextEncoding, BadBytesBecomeReplacements) {
    struct testRow {
        const char* name;
        std::string_view bytes;
        std::u32string_view text;
    };
    const testRow rows[] = {
        {"lone continuation",
         "a\x80"
         "b",
         U"a\uFFFDb"},
        {"overlong slash", "\xC0\xAF", U"\uFFFD\uFFFD"},
        {"overlong three", "\xE0\x9F\xBF", U"\uFFFD\uFFFD\uFFFD"},
        {"surrogate", "\xED\xA0\x80", U"\uFFFD\uFFFD\uFFFD"},
        {"above the last", "\xF4\x90\x80\x80", U"\uFFFD\uFFFD\uFFFD\uFFFD"},
        {"cut in the middle", "\xE2\x82", U"\uFFFD"},
        {"cut, then a character",
         "\xF0\x9F\x98"
         "A",
         U"\uFFFD"
         U"A"},
        {"lead without followers", "\xC3\xC3\xA9", U"\uFFFD\u00E9"},
        {"bad byte in long text", "0123456789ABCDEF\xFFghijkl", U"0123456789ABCDEF\uFFFDghijkl"},
    };
    for (const auto& [name, bytes, text] : rows) {
        EXPECT_TRUE(utf8ToUtf32(bytes) == text) << name;
        EXPECT_EQ(codePointCount(bytes), text.size()) << name;
        EXPECT_FALSE(isUtf8(bytes)) << name;
    }
    EXPECT_TRUE(isUtf8("a real \xEF\xBF\xBD"));
    EXPECT_EQ(utf32ToUtf8({U"\xD800", 1}), "\xEF\xBF\xBD");
}

TEST(TextEncoding, Windows1252) {
    std::string all;
    for (int byte = 0; byte < 256; ++byte)
        all.push_back(static_cast<char>(byte));
    EXPECT_EQ(utf8ToWindows1252(windows1252ToUtf8(all)), all);
    EXPECT_TRUE(utf8ToUtf32(windows1252ToUtf8(all)) == windows1252ToUtf32(all));
    EXPECT_EQ(windows1252ToUtf8("10 \x80, \x84"
                                "a\x93 \xFC"),
              "10 €, „a“ ü");
    EXPECT_EQ(utf8ToWindows1252("Ω€"), "?\x80");
}

TEST(TextEncoding, CutsBetweenCharacters) {
    const std::string text = "aé€😀";  // 1, 2, 3 and 4 bytes
    const std::size_t cuts[] = {0, 1, 1, 3, 3, 3, 6, 6, 6, 6, 10, 10};
    for (std::size_t max = 0; max < std::size(cuts); ++max)
        EXPECT_EQ(utf8CutLength(text, max), cuts[max]) << max;
    EXPECT_EQ(utf8CutLength("\x80\x80\x80\x80\x80\x80", 5), 5u) << "no UTF-8: cut where asked";
}

}  // namespace
}  // namespace tarnova
