#include "host/text/font.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace tarnova {
namespace {

TEST(FontService, FindsFacesByNameAndStyle) {
    struct Row {
        const char *family, *style, *postScriptName;
        bool substituted;
    };
    const Row rows[] = {
        {"Helvetica", "Regular", "NimbusSans-Regular", false},
        {"helvetica", "Bold Italic", "NimbusSans-BoldItalic", false},
        {"Nimbus Sans", "Bold", "NimbusSans-Bold", false},
        {"Times", "Italic", "NimbusRoman-Italic", false},
        {"Courier", "Regular", "NimbusMonoPS-Regular", false},
        {"Arial", "Bold", "LiberationSans-Bold", false},
        {"Times New Roman", "Regular", "LiberationSerif", false},
        {"Courier New", "Bold Italic", "LiberationMono-BoldItalic", false},
        {"DejaVu Sans", "Regular", "DejaVuSans", false},
        {"Bookman", "Regular", "URWBookman-Light", false},
        {"Helvetica", "No Such Style", "NimbusSans-Regular", false},
        {"No Such Family", "Bold", "NimbusSans-Bold", true},
        {"", "", "NimbusSans-Regular", true},
    };
    for (const Row& row : rows) {
        bool substituted = !row.substituted;
        const Font* font = FontService::instance().find(row.family, row.style, &substituted);
        ASSERT_NE(font, nullptr);
        EXPECT_EQ(font->postScriptName(), row.postScriptName) << row.family << " " << row.style;
        EXPECT_EQ(substituted, row.substituted) << row.family;
        EXPECT_EQ(FontService::instance().find(row.family, row.style), font) << row.family;
        EXPECT_TRUE(font->path().ends_with(".otf") || font->path().ends_with(".ttf")) << font->path();
    }
}

TEST(FontService, MetricsAreThoseOfTheFile) {
    const Font* nimbus = FontService::instance().find("Helvetica", "Regular");
    EXPECT_TRUE(nimbus->isCff());
    EXPECT_EQ(nimbus->family(), "Nimbus Sans");
    EXPECT_EQ(nimbus->ascent(), 729);
    EXPECT_EQ(nimbus->descent(), 271);
    EXPECT_EQ(nimbus->capHeight(), 718);
    EXPECT_LT(nimbus->underlinePosition(), 0);
    EXPECT_EQ(nimbus->underlineThickness(), 50);
    // The widths of the AFM files, which a printer's own Helvetica has too.
    const std::pair<char32_t, float> widths[] = {{U' ', 278}, {U'A', 667}, {U'W', 944}, {U'm', 833}, {U'i', 222}};
    for (const auto& [character, width] : widths)
        EXPECT_EQ(nimbus->nominalAdvance(nimbus->glyphOf(character)), width) << static_cast<char>(character);
    EXPECT_EQ(nimbus->glyphOf(0x4E2D), 0);
    const Font* liberation = FontService::instance().find("Arial", "Regular");
    EXPECT_FALSE(liberation->isCff());
    EXPECT_NE(liberation->index(), nimbus->index());
}

TEST(FontService, FallbackHasTheCharacterAndTheStyle) {
    FontService& service = FontService::instance();
    const Font* regular = service.find("Helvetica", "Regular");
    const Font* bold = service.find("Times", "Bold");
    for (char32_t character : {U'\u05D0', U'\u0645', U'\u0416', U'\u2713'}) {
        const Font* font = service.fallback(regular, character);
        EXPECT_NE(font->glyphOf(character), 0) << static_cast<unsigned>(character);
        EXPECT_EQ(service.fallback(regular, character), font);
    }
    EXPECT_EQ(service.fallback(regular, U'\u0531')->postScriptName(), "DejaVuSans");
    EXPECT_EQ(service.fallback(bold, U'\u0531')->postScriptName(), "DejaVuSerif-Bold");
    EXPECT_EQ(service.fallback(regular, 0x10FFFD), regular) << "no font has a private character";
}

}  // namespace
}  // namespace tarnova
