#include "host/text/hyphenation.h"

#include <gtest/gtest.h>

#include <string>

namespace tarnova {
namespace {

std::u32string hyphenated(Hyphenator& hyphenator, std::string_view language, std::u32string_view word) {
    const std::uint64_t points = hyphenator.pointsOf(language, word);
    std::u32string out;
    for (std::size_t i = 0; i < word.size(); ++i) {
        out += word[i];
        if (i < 64 && ((points >> i) & 1) != 0) out += U'-';
    }
    return out;
}

TEST(Hyphenation, WordsByTheirLanguage) {
    const std::pair<const char*, std::u32string_view> rows[] = {
        {"en-US", U"hy-phen-ation"},
        {"en-US", U"Hy-Phen-ATION"},
        {"en-GB", U"his-tor-ies"},
        {"en-US", U"his-to-ries"},
        {"en", U"his-to-ries"},
        {"en-Latn-GB-oxendict", U"his-tor-ies"},
        {"en-NZ", U"his-to-ries"},
        {"de-DE", U"Stra-ßen-bahn-hal-te-stel-le"},
        {"de", U"Über-prü-fung"},
        {"DE-at", U"Über-prü-fung"},
        {"fr-FR", U"dé-ve-lop-pe-ment"},
        {"de-DE", U"Łódźfahr-ten"},  // the dictionary knows nothing of some of its letters
        {"de", U"Aus-ga-be-nach-rich-ten"},
        {"de", U"Do-nau-dampf-schiff-fahrts-ge-sell-schaft"},
        {"x", U"hyphenation"},
        {"", U"hyphenation"},
        {"../en", U"hyphenation"},
        {"tlh", U"hyphenation"},
        {"en-US", U""}};
    Hyphenator hyphenator;
    for (const auto& [language, expected] : rows) {
        std::u32string word(expected);
        std::erase(word, U'-');
        for (int time = 0; time < 2; ++time)  // learned, then remembered
            EXPECT_EQ(hyphenated(hyphenator, language, word), expected) << language;
    }
}

TEST(Hyphenation, LongAndManyWords) {
    Hyphenator hyphenator;
    std::u32string longest;
    while (longest.size() < longestHyphenatedWord)
        longest += U"hyphenation"[longest.size() % 11];
    EXPECT_NE(hyphenator.pointsOf("en-US", longest), 0u);
    EXPECT_EQ(hyphenator.pointsOf("en-US", longest + U"x"), 0u);
    const std::uint64_t points = hyphenator.pointsOf("en-US", U"hyphenation");
    for (std::size_t i = 0; i <= hyphenatedWordsKept; ++i) {
        const std::u32string word{static_cast<char32_t>(U'a' + i % 26), static_cast<char32_t>(U'a' + i / 26 % 26),
                                  static_cast<char32_t>(U'a' + i / 676)};
        EXPECT_LT(hyphenator.pointsOf("en-US", word), 4u);
    }
    EXPECT_EQ(hyphenator.pointsOf("en-US", U"hyphenation"), points) << "forgotten and learned again";
}

}  // namespace
}  // namespace tarnova
