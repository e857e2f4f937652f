// Every string key and message number that the sources use has a text, and the texts are fit to be shown.
#if defined(__GNUC__) && !defined(__clang__)
// g++ 12 with sanitizers takes a std::function inside <regex> for uninitialized (GCC bug 105562).
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <regex>

#include "engine/toolkit/messages.h"
#include "engine/toolkit/pstring.h"
#include "engine/toolkit/strings.h"
#include "source_folder.h"
#include "tests/engine/toolkit/temp_folder.h"

namespace tarnova {
namespace {

namespace fs = std::filesystem;

// All sources below src/, by path, without their comments.
std::map<std::string, std::string> readSources() {
    const std::regex comment(R"(//[^\n]*)");
    std::map<std::string, std::string> sources;
    for (const auto& entry : fs::recursive_directory_iterator(fs::path(TARNOVA_SOURCE_FOLDER) / "src")) {
        const std::string path = entry.path().string();
        if (!path.ends_with(".cpp") && !path.ends_with(".h")) continue;
        std::string text;
        EXPECT_EQ(fileReadWhole(path.c_str(), text, 16 << 20, 0), 0) << path;
        sources[path] = std::regex_replace(text, comment, "");
    }
    return sources;
}

const std::map<std::string, std::string>& sources() {
    static const auto all = readSources();
    return all;
}

// Calls `visit` with the path and the match of each place where `pattern` stands in the sources.
template <typename Visit>
int forEachMatch(const std::regex& pattern, Visit visit) {
    int count = 0;
    for (const auto& [path, text] : sources()) {
        for (std::sregex_iterator at(text.begin(), text.end(), pattern), end; at != end; ++at, ++count)
            visit(path, *at);
    }
    return count;
}

// The numbers behind named constants: `constexpr errorWord errX = 64;`.
std::map<std::string, int> namedNumbers() {
    std::map<std::string, int> numbers;
    const std::regex constant(R"(constexpr\s+(?:errorWord|std::uint16_t|int)\s+(\w+)\s*=\s*(\d{1,3})\s*;)");
    forEachMatch(constant, [&](const std::string&, const std::smatch& m) { numbers[m[1]] = std::stoi(m[2]); });
    return numbers;
}

TEST(StringKeys, TheFileCanBeRead) {
    ASSERT_EQ(stringLoadError(), "");
}

TEST(StringKeys, EveryKeyInTheSourcesHasAText) {
    // A key is a whole literal; a literal that only begins one is put together with a number at run time.
    const std::regex literal(R"re("(?:0x[0-9A-Fa-f]+)?(k(?:Zavo|Zv|Vx)[A-Za-z0-9]+)")re");
    const std::string begins[] = {"kZavoMsgStr", "kZavoErrStr"};
    const int found = forEachMatch(literal, [&](const std::string& path, const std::smatch& match) {
        const std::string key = match[1];
        if (std::find(std::begin(begins), std::end(begins), key) != std::end(begins)) return;
        EXPECT_TRUE(hasString(key)) << path << ": " << key << " has no text in resources/strings/en-US.txt";
    });
    EXPECT_GT(found, 3) << "the search finds nothing";
}

TEST(StringKeys, EveryNumberInTheSourcesHasAText) {
    const std::map<std::string, int> named = namedNumbers();
    const auto check = [&](const std::string& path, const std::string& argument, const char* table) {
        const auto constant = named.find(argument);
        const bool isNumber = argument.find_first_not_of("0123456789") == std::string::npos;
        if (!isNumber && constant == named.end()) return;  // a variable
        const int number = isNumber ? std::stoi(argument) : constant->second;
        if (number == 0) return;
        const std::string key = table + std::to_string(number) + "Key";
        EXPECT_TRUE(hasString(key)) << path << ": " << argument << " needs " << key;
    };
    forEachMatch(std::regex(R"(message(?:Text\(\s*\w+\s*,|String\()\s*(\w+)\s*\))"),
                 [&](const std::string& path, const std::smatch& m) { check(path, m[1], "kZavoMsgStr"); });
    forEachMatch(std::regex(R"((?:reportError(?:Params)?\(\s*nullptr\s*,|errorString\()\s*(\w+)\s*[,)])"),
                 [&](const std::string& path, const std::smatch& m) { check(path, m[1], "kZavoErrStr"); });
    // Error words with a name and a positive number are meant to be shown.
    for (const auto& [name, number] : named) {
        if (name.starts_with("err") && name.size() > 3 && std::isupper(static_cast<unsigned char>(name[3])) != 0) {
            check("constant " + name, std::to_string(number), "kZavoErrStr");
        }
    }
}

TEST(StringKeys, TextsAreFitToBeShown) {
    for (const std::string& key : stringKeys()) {
        const std::string text(stringOfKey(key));
        EXPECT_FALSE(text.empty()) << key;
        EXPECT_EQ(text.find("  "), std::string::npos) << key << ": two blanks";
        const bool isMessage = key.starts_with("kZavoMsgStr"), isError = key.starts_with("kZavoErrStr");
        for (std::size_t at = text.find('^'); at != std::string::npos; at = text.find('^', at + 1)) {
            const char digit = at + 1 < text.size() ? text[at + 1] : '\0';
            EXPECT_TRUE(digit >= (isMessage || isError ? '1' : '0') && digit <= '3') << key << ": " << text;
        }
        if (!isMessage && !isError) continue;
        // Numbered texts are read out as Pascal strings, and nothing may be lost there.
        EXPECT_LE(text.size(), pstrMaxLength) << key;
        const int number = std::stoi(key.substr(11));
        EXPECT_TRUE(key == (isMessage ? messageKey(static_cast<std::uint16_t>(number))
                                      : errorKey(static_cast<errorWord>(number))))
            << key << " is outside its table";
        EXPECT_TRUE(!isError || text.ends_with('.') || text.ends_with("^1")) << key << ": no whole sentence";
    }
}

TEST(StringKeys, DefaultNamesMayBeUsedAsNames) {
    for (const std::uint16_t number : {18, 19, 20, 32}) {
        const std::string name = messageString(number).bytes();
        EXPECT_LE(name.size(), 31u) << name;
        EXPECT_TRUE(std::none_of(name.begin(), name.end(), [](char c) {
            return isNameSpecialChar(static_cast<std::uint8_t>(c));
        })) << name;
    }
}

TEST(StringKeys, NoKeywordHidesALaterOne) {
    const char* const order[] = {"TimeStart",         "Time",
                                 "DateLong",          "Date",
                                 "CurDocName",        "PageName",
                                 "PageNum",           "RecordNum",
                                 "ConsecutiveNumber", "PageSetPageNumber",
                                 "PageSetPageCount",  "JobCount",
                                 "JobsToProcess",     "Day",
                                 "MonthName",         "Month",
                                 "YearLong",          "Year",
                                 "Read2DBarcodeData", "SheetCounter",
                                 "JobSheetCounter",   "BarcodePostnet",
                                 "BarcodeUSPSIM",     "BarcodeQelPostnet"};
    std::vector<std::string> earlier;
    for (const char* name : order) {
        const std::string keyword(stringOfKey(std::string("kZavoKeywordLinks") + name + "KeywordStringKey"));
        EXPECT_TRUE(keyword.starts_with('_')) << keyword;
        for (const std::string& other : earlier)
            EXPECT_FALSE(keyword.starts_with(other)) << keyword << " after " << other;
        earlier.push_back(keyword);
    }
}

}  // namespace
}  // namespace tarnova
