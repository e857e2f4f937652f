#include "engine/toolkit/pstring.h"

#include <gtest/gtest.h>

#include <limits>

namespace tarnova {
namespace {

// A Pascal string of a text, for the arguments of a test.
struct pstr {
    explicit pstr(std::string_view text) { pstrSet(bytes, text); }
    operator std::uint8_t*() { return bytes; }
    std::string_view text() const { return pstrView(bytes); }
    Str255 bytes = {};
};

TEST(PascalString, LengtheningClipsAtTheField) {
    const std::string long250(250, 'x'), ten(10, 'y');
    pstr joined(long250);
    pstrAppend(joined, pstr(ten));
    EXPECT_EQ(joined.text(), long250 + "yyyyy");
    pstrAppendC(joined, "z");
    EXPECT_EQ(joined.text().size(), 255u);

    pstr unchanged("keep");
    pstrFromC(unchanged, nullptr);
    pstrAppendC(unchanged, nullptr);
    EXPECT_EQ(unchanged.text(), "keep");
    pstrFromC(unchanged, std::string(300, 'c').c_str());
    EXPECT_EQ(unchanged.text(), std::string(255, 'c'));
}

TEST(PascalString, BoundedCopiesKeepCharactersWhole) {
    struct testRow {
        const char* name;
        std::string_view text;
        std::size_t size;
        std::string_view kept;
    };
    const testRow rows[] = {
        {"fits", "abc", 4, "abc"},
        {"one too many", "abcd", 4, "abc"},
        {"empty", "", 4, ""},
        {"no room at all", "abc", 1, ""},
        {"two bytes on the edge", "ab\xC3\xA9", 4, "ab"},
        {"four bytes on the edge", "\xF0\x9F\x98\x80", 4, ""},
        {"8-bit text", "ab\xE9\xE8", 4, "ab\xE9"},
    };
    for (const auto& [name, text, size, kept] : rows) {
        Str255 field = {};
        field[size] = 0x55;
        pstrCopyBounded(field, pstr(text), size);
        EXPECT_EQ(pstrView(field), kept) << name;
        EXPECT_EQ(field[size], 0x55) << name << ": byte behind the field";
    }
}

TEST(PascalString, EqualityFoldsAsciiOnly) {
    struct testRow {
        const char *a, *b;
        std::int16_t result;
    };
    const testRow rows[] = {
        {"AbC", "aBc", 0}, {"Abc", "Abcd", -1},  {"", "", 0},
        {"a[", "A{", -1},  {"\xC9", "\xE9", -1}, {"\xE9Z", "\xE9z", 0},
    };
    for (const auto& [a, b, result] : rows) {
        EXPECT_EQ(pstrEqualNoCase(pstr(a), pstr(b)), result) << a << " " << b;
        EXPECT_EQ(cstrEqualPstrNoCase(a, pstr(b)), result) << a << " " << b;
    }
    EXPECT_EQ(cstrEqualPstrNoCase(nullptr, pstr("")), -1);
    EXPECT_EQ(cstrEqualPstrNoCase("", nullptr), -1);
}

TEST(PascalString, OrderIsByUnsignedBytes) {
    struct testRow {
        std::string_view a, b;
        std::int16_t result;
    };
    const testRow rows[] = {
        {"a", "b", -1},      {"b", "a", 1},
        {"ab", "a", 1},      {"", "a", -1},
        {"z", "\xE9", -1},   {"B", "a", -1},
        {"same", "same", 0}, {std::string_view("a\0x", 3), "a", 0},  // a zero byte ends the text
    };
    for (const auto& [a, b, result] : rows)
        EXPECT_EQ(pstrCompare(pstr(a), pstr(b)), result) << a << " " << b;
    EXPECT_EQ(cstrComparePstr("abc", pstr("abd")), -1);
}

TEST(PascalString, CountedRunsCompareByPrefix) {
    const auto compare = [](bool exact, const char* a, std::size_t lenA, const char* b, std::size_t lenB) {
        return pstrPrefixCompare(exact, reinterpret_cast<const std::uint8_t*>(a), lenA,
                                 reinterpret_cast<const std::uint8_t*>(b), lenB);
    };
    EXPECT_EQ(compare(false, "ABC", 3, "abcd", 4), -1);
    EXPECT_EQ(compare(true, "ABC", 3, "abc", 3), -1);
    EXPECT_EQ(compare(false, "ABC", 3, "abc", 3), 0);
    EXPECT_EQ(compare(false, "abcd", 4, "ABC", 3), 1);
    EXPECT_EQ(compare(true, "", 0, "", 0), 0);
    EXPECT_EQ(compare(true, "", 0, "a", 1), -1);
    EXPECT_EQ(compare(true, nullptr, 3, "a", 1), 0);
    EXPECT_EQ(compare(true, "a", 1, nullptr, 0), 0);
}

TEST(PascalString, Cleaning) {
    using operation = void (*)(std::uint8_t*);
    const operation stripLineEnds = [](std::uint8_t* s) { pstrStripLineEnds(s, s); };
    struct testRow {
        const char* name;
        operation run;
        std::string_view text, result;
    };
    const testRow rows[] = {
        {"blanks and stored blanks only", pstrTrim, " \xCA\t\xCA ", ""},
        {"both ends, not inside", pstrTrim, "\t a b \r\n", "a b"},
        {"stored blank at the ends", pstrTrim,
         "\xCA"
         "abc\xCA",
         "abc"},
        {"a character that begins CA", pstrTrim, " \xCA\x80x ", "\xCA\x80x"},
        {"cut before CR", pstrCutAtLineEnd, "one\r\ntwo", "one"},
        {"cut before LF", pstrCutAtLineEnd, "\ntwo", ""},
        {"nothing to cut", pstrCutAtLineEnd, "one", "one"},
        {"line ends go", stripLineEnds, "a\r\nb\nc\r", "abc"},
        {"escapes go", pstrStripEscapes, "a<0x20>b<1234>", "ab"},
        {"an escape that closes up", pstrStripEscapes, "x<0<0x20>041>y", "xy"},
        {"too short for an escape", pstrStripEscapes, "<123>", "<123>"},
        {"only escapes", pstrStripEscapes, "<0x20><0x21>", ""},
    };
    for (const auto& [name, run, text, result] : rows) {
        pstr s(text);
        run(s);
        EXPECT_EQ(s.text(), result) << name;
    }
}

TEST(PascalString, Numbers) {
    struct testRow {
        std::string_view text;
        std::int32_t value;
    };
    const testRow rows[] = {
        {"42", 42},
        {" \t-7x9", -7},
        {"+3", 3},
        {"", 0},
        {"x1", 0},
        {"- 5", 0},
        {"2147483647", 2147483647},
        {"99999999999999999999999", 2147483647},
        {"-99999999999999999999", std::numeric_limits<std::int32_t>::min()},
    };
    for (const auto& [text, value] : rows) {
        std::int32_t out = 99;
        pstrToLong(pstr(text), &out);
        EXPECT_EQ(out, value) << text;
    }
    pstr digits("");
    pstrFromLong(std::numeric_limits<std::int32_t>::min(), digits);
    EXPECT_EQ(digits.text(), "-2147483648");
}

TEST(PascalString, NamesRefuseTheCharactersOfTags) {
    std::string special;
    for (int c = 0; c < 256; ++c) {
        if (isNameSpecialChar(static_cast<std::uint8_t>(c))) special += static_cast<char>(c);
    }
    EXPECT_EQ(special, "\r!&/:;<>^");
}

TEST(CString, ModuleHelpers) {
    EXPECT_EQ(strrev(nullptr), nullptr);
    struct testRow {
        const char *text, *reversed;
    };
    for (const auto& [text, reversed] : {testRow{"abcd", "dcba"}, {"abc", "cba"}, {"ab", "ab"}, {"", ""}}) {
        char buffer[8];
        pstrToC(buffer, pstr(text));
        EXPECT_STREQ(strrev(buffer), reversed);
    }
    char mixed[] = "aZ\xE9{z";
    EXPECT_STREQ(strupr(mixed), "AZ\xE9{Z");
    cstrRemoveChar('Z', mixed);
    EXPECT_STREQ(mixed, "A\xE9{");
    cstrReplaceChar('{', mixed, '-');
    EXPECT_STREQ(mixed, "A\xE9-");
}

}  // namespace
}  // namespace tarnova
