#include "engine/toolkit/pm_string.h"

#include <gtest/gtest.h>

#include "engine/toolkit/id_file.h"
#include "engine/toolkit/pstring.h"

namespace tarnova {
namespace {

TEST(PMString, TranslationReplacesAKeyOnce) {
    PMString key("kZavoMonthMarch", true);
    EXPECT_EQ(key.translate().bytes(), "March");
    EXPECT_FALSE(key.translatable());
    EXPECT_EQ(PMString("kZavoMonthMarch").translate().bytes(), "kZavoMonthMarch") << "plain text stays";

    Str255 field = {};
    pstrFromKey("0x1B9E00kZavoMonthMay", field);
    EXPECT_EQ(pstrView(field), "May");
    pmFromPstr(key, field, true);
    EXPECT_TRUE(key.translatable());
    EXPECT_EQ(key.bytes(), "May");
}

TEST(PMString, ReplaceDoesNotSearchWhatItPutIn) {
    struct testRow {
        std::string_view text, what, by, result;
        std::size_t count;
    };
    const testRow rows[] = {
        {"a.b.c", ".", "..", "a..b..c", 2}, {"aaa", "aa", "a", "aa", 1}, {"abc", "", "x", "abc", 0},
        {"abc", "x", "y", "abc", 0},        {"x", "x", "", "", 1},       {"éé", "é", "e", "ee", 2},
    };
    for (const auto& [text, what, by, result, count] : rows) {
        PMString s(text);
        EXPECT_EQ(pmReplaceAll(s, what, by), count) << text;
        EXPECT_EQ(s.bytes(), result) << text;
    }
}

TEST(PMString, JoinLeavesEmptyItemsOut) {
    const auto join = [](std::initializer_list<const char*> texts) {
        std::vector<PMString> list;
        for (const char* text : texts)
            list.emplace_back(text);
        return pmJoin(list, ", ").bytes();
    };
    EXPECT_EQ(join({"a", "b"}), "a, b");
    EXPECT_EQ(join({"", "a", "", "b", ""}), "a, b");
    EXPECT_EQ(join({}), "");
}

TEST(PMString, TrimCountsWhatWent) {
    struct testRow {
        trimMode mode;
        std::string_view result;
        std::size_t count;
    };
    const testRow rows[] = {
        {trimMode::leftEnd, "a \x01 b\t ", 2},
        {trimMode::rightEnd, " \ta \x01 b", 2},
        {trimMode::bothEnds, "a \x01 b", 4},
        {trimMode::everywhere, "ab", 7},
    };
    for (const auto& [mode, result, count] : rows) {
        PMString s(" \ta \x01 b\t ");
        EXPECT_EQ(pmTrim(s, mode), count);
        EXPECT_EQ(s.bytes(), result);
    }
    PMString blanks(" \t ");
    EXPECT_EQ(pmTrim(blanks, trimMode::bothEnds), 3u);
    EXPECT_TRUE(blanks.empty());
}

TEST(PMString, SubstituteFillsMarkersInOrder) {
    const PMString a("A"), b("B"), marker("^0^1");
    struct testRow {
        const char* text;
        const PMString *p0, *p1, *p2;
        const char* result;
    };
    const testRow rows[] = {
        {"^0 and ^1", &a, &b, nullptr, "A and B"},
        {"^1 and ^0", &a, &b, nullptr, "B and A"},
        {"^0 and ^1", nullptr, &b, nullptr, "B and ^1"},  // a null shifts the later ones down
        {"^2 only", &a, &b, nullptr, "A only"},
        {"^0 ^0", &a, &b, nullptr, "A B"},
        {"^0 ^4 ^", &a, nullptr, nullptr, "A ^4 ^"},
        {"^0 then ^1", &marker, &b, nullptr, "^0^1 then B"},
        {"nothing", &a, &b, &a, "nothing"},
    };
    for (const auto& [text, p0, p1, p2, result] : rows) {
        PMString s(text);
        pmSubstitute(s, p0, p1, p2);
        EXPECT_EQ(s.bytes(), result) << text;
    }
}

TEST(PMString, NumberTakesTheWholeText) {
    struct testRow {
        const char* text;
        std::optional<std::int32_t> value;
    };
    const testRow rows[] = {
        {"12", 12},
        {" 12\t", 12},
        {"-3", -3},
        {"+4", 4},
        {"1 2", std::nullopt},
        {"12x", std::nullopt},
        {"", std::nullopt},
        {"+-1", std::nullopt},
        {"+", std::nullopt},
        {"2147483648", std::nullopt},
    };
    for (const auto& [text, value] : rows)
        EXPECT_EQ(PMString(text).number(), value) << text;
}

TEST(IDFile, PartsOfAPath) {
    struct testRow {
        const char *path, *folder, *name, *extension;
    };
    const testRow rows[] = {
        {"/jobs/card.v2.tvd", "/jobs", "card.v2.tvd", "tvd"},
        {"/card", "/", "card", ""},
        {"card.csv", "", "card.csv", "csv"},
        {"/jobs/.hidden", "/jobs", ".hidden", ""},
    };
    for (const auto& [path, folder, name, extension] : rows) {
        const IDFile file{std::string_view(path)};
        EXPECT_EQ(file.folder(), folder) << path;
        EXPECT_EQ(file.fileName(), name) << path;
        EXPECT_EQ(file.extension(), extension) << path;
    }
    EXPECT_EQ(IDFile("/jobs").child("a.csv").path(), "/jobs/a.csv");
    EXPECT_EQ(IDFile("/").child("a.csv").path(), "/a.csv");
    EXPECT_EQ(IDFile("/jobs").child("/else/a.csv").path(), "/else/a.csv");
}

}  // namespace
}  // namespace tarnova
