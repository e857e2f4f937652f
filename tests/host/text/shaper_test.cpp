#include "host/text/shaper.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>

#include "tests/host/text/compose_kit.h"

namespace tarnova {
namespace {

constexpr std::u32string_view realText =
    U"The office of the chief officer in Springfield filed fifty-five affidavits; AVAWA, Tovey & Yates (Ltd.) paid "
    U"£1,234.50 — or €1.499,00 — for “Wolfgang’s fjord”. L’été à Orléans, Köln und Zürich: «Größe», ½ Maß, "
    U"Łódź, Kraków, Şişli. Visit https://www.example.com/fi/fl?To=Ty&AV=1 or write to va.ny@tax.example, P.T.O. "
    U"f fi fl ff ffi ffl fj tt ti Qu gg ry 1/2 11 77 '\"' -> <- == != -- ... W. A. Y, \u2026 r. f\u2019 T\u00E4";

void expectEqualGlyphs(const std::vector<PlacedGlyph>& a, const std::vector<PlacedGlyph>& b, const std::string& what) {
    ASSERT_EQ(a.size(), b.size()) << what;
    for (std::size_t i = 0; i < a.size(); ++i) {
        EXPECT_EQ(a[i].glyph, b[i].glyph) << what << " glyph " << i;
        EXPECT_EQ(a[i].advance, b[i].advance) << what << " glyph " << i << " position " << a[i].position;
        EXPECT_EQ(a[i].offsetX, b[i].offsetX) << what << " glyph " << i;
        EXPECT_EQ(a[i].offsetY, b[i].offsetY) << what << " glyph " << i;
        EXPECT_EQ(a[i].position, b[i].position) << what << " glyph " << i;
    }
}

std::vector<PlacedGlyph> shaped(Shaper& shaper, const Font& font, const FontFeatures& features,
                                std::u32string_view text) {
    std::vector<PlacedGlyph> out;
    EXPECT_TRUE(shaper.shapeLatin(shaper.face(font, features), text, 7, out)) << font.postScriptName();
    return out;
}

TEST(Shaper, AllWaysGiveTheSameGlyphs) {
    const std::pair<const char*, const char*> fonts[] = {
        {"Helvetica", "Regular"},    {"Times", "Italic"},        {"Courier", "Regular"},   {"Arial", "Regular"},
        {"Times New Roman", "Bold"}, {"DejaVu Sans", "Regular"}, {"DejaVu Serif", "Bold"}, {"Palatino", "Regular"},
    };
    const FontFeatures featureSets[] = {{true, true, "en-US"}, {false, true, "de"}, {true, false, "tr"}};
    Shaper full, cached({.tables = false, .cache = true}), plain({.tables = false, .cache = false});
    for (const auto& [family, style] : fonts) {
        const Font& font = *FontService::instance().find(family, style);
        for (const FontFeatures& features : featureSets) {
            const std::string what = font.postScriptName() + " " + features.language;
            const std::vector<PlacedGlyph> expected = shaped(plain, font, features, realText);
            for (int round = 0; round < 2; ++round) {  // the second finds everything learned
                expectEqualGlyphs(shaped(full, font, features, realText), expected, what + " tables");
                expectEqualGlyphs(shaped(cached, font, features, realText), expected, what + " cache");
            }
        }
    }
}

TEST(Shaper, AllWaysAgreeOnRandomWords) {
    std::mt19937 random(6);
    Shaper full, plain({.tables = false, .cache = false});
    for (const char* family : {"Helvetica", "Arial", "DejaVu Sans"}) {
        const Font& font = *FontService::instance().find(family, "Regular");
        for (int i = 0; i < 2000; ++i) {
            std::u32string word;
            for (std::size_t length = 1 + random() % 6; word.size() < length;)
                word += random() % 4 == 0 ? U"fijlt"[random() % 5] : static_cast<char32_t>(0x20 + random() % 0x5F);
            expectEqualGlyphs(shaped(full, font, {}, word), shaped(plain, font, {}, word),
                              std::string(word.begin(), word.end()));
        }
    }
}

TEST(Shaper, LigaturesKernAndKeepPositions) {
    const Font& font = *FontService::instance().find("Helvetica", "Regular");
    Shaper shaper;
    const std::vector<PlacedGlyph> joined = shaped(shaper, font, {true, true, ""}, U"afib");
    ASSERT_EQ(joined.size(), 3u);
    EXPECT_EQ(joined[1].position, 7u + 1);
    EXPECT_EQ(joined[2].position, 7u + 3) << "the ligature stands for two characters";
    EXPECT_EQ(shaped(shaper, font, {true, false, ""}, U"afib").size(), 4u);
    const float loose = shaped(shaper, font, {false, true, ""}, U"AV")[0].advance;
    const float kerned = shaped(shaper, font, {true, true, ""}, U"AV")[0].advance;
    EXPECT_EQ(loose, font.nominalAdvance(font.glyphOf(U'A')));
    EXPECT_LT(kerned, loose - 30);
}

TEST(Shaper, MissingCharacterLeavesTheGlyphsAsTheyWere) {
    const Font& font = *FontService::instance().find("Courier", "Regular");
    constexpr std::u32string_view text = U"  ab\u0220";
    ASSERT_EQ(font.glyphOf(text.back()), 0);
    Shaper shaper;
    std::vector<PlacedGlyph> out(3);
    EXPECT_FALSE(shaper.shapeLatin(shaper.face(font, {}), text, 0, out));
    EXPECT_EQ(out.size(), 3u);
}

TEST(WordCache, ForgetsWhatIsOldAndKeepsWhatIsAskedFor) {
    WordCache cache;
    const auto word = [](std::size_t i) {
        const std::string digits = "w" + std::to_string(i);
        return std::u32string(digits.begin(), digits.end());
    };
    const std::size_t count = wordCacheCapacity * 3;
    const PlacedGlyph kept{9, 500, 0, 0, 0};
    cache.store(1, U"kept", &kept, 1);
    for (std::size_t i = 0; i < count; ++i) {
        const PlacedGlyph glyph{static_cast<std::uint16_t>(i), 1, 2, 3, 0};
        ASSERT_EQ(cache.find(1, word(i)).glyphs, nullptr);
        cache.store(1, word(i), &glyph, 1);
        ASSERT_NE(cache.find(1, U"kept").glyphs, nullptr) << i;
    }
    EXPECT_EQ(cache.find(1, U"kept").glyphs->glyph, 9);
    EXPECT_EQ(cache.find(1, word(0)).glyphs, nullptr) << "long not asked for";
    ASSERT_NE(cache.find(1, word(count - 1)).glyphs, nullptr);
    EXPECT_EQ(cache.find(1, word(count - 1)).glyphs->glyph, static_cast<std::uint16_t>(count - 1));
    EXPECT_EQ(cache.find(2, word(count - 1)).glyphs, nullptr) << "another font's word";
    const std::u32string tooLong(cachedWordLength + 1, U'x');
    cache.store(1, tooLong, &kept, 1);
    EXPECT_EQ(cache.find(1, tooLong).glyphs, nullptr);
}

}  // namespace
}  // namespace tarnova
