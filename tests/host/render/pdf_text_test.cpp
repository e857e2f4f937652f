// Text in PDF files: that it looks as composed is checked by positions, that it says what it says by extraction.

#include <gtest/gtest.h>

#include "host/render/pdf_writer.h"
#include "host/render/text_rules.h"
#include "tests/host/render/page_kit.h"

namespace tarnova {
namespace {

using namespace tarnova::testing;

struct WordBox {
    double left, top, right, bottom;
};

class PdfText : public ::testing::Test {
 protected:
    void write() {
        PdfWriter writer;
        ASSERT_TRUE(writer.open(path, {})) << writer.error();
        ASSERT_TRUE(writer.addPage(kit.list)) << writer.error();
        ASSERT_TRUE(writer.finish()) << writer.error();
        ASSERT_EQ(complaintsAbout(path), "");
    }
    [[nodiscard]] std::string extracted() const {
        std::string text = runCommand("pdftotext '" + path + "' -").output;
        while (!text.empty() && (text.back() == '\f' || text.back() == '\n'))
            text.pop_back();
        return text;
    }
    /// Boxes of words by pdftotext, which reads the widths and moves of the file and nothing of ours.
    [[nodiscard]] WordBox boxOf(const std::string& word) const {
        const std::string boxes = runCommand("pdftotext -bbox '" + path + "' -").output;
        const std::size_t end = boxes.find(">" + word + "<");
        WordBox box{};
        if (end == std::string::npos) return box;
        const std::size_t start = boxes.rfind("<word", end);
        std::sscanf(boxes.c_str() + start, "<word xMin=\"%lf\" yMin=\"%lf\" xMax=\"%lf\" yMax=\"%lf\"", &box.left,
                    &box.top, &box.right, &box.bottom);
        return box;
    }

    ScratchFolder folder;
    std::string path = folder.path("text.pdf");
    PageKit kit{400, 300};
};

CharFormat formatOf(const char* family, double size = 12) {
    CharFormat format;
    format.family = family;
    format.pointSize = size;
    return format;
}

TEST_F(PdfText, ADrawnHyphenIsASoftOne) {
    const auto addBroken = [this](std::u32string_view text, double baseline) {
        kit.line(text, 20, baseline);
        kit.lastLine().lines[0].limit = static_cast<std::int32_t>(text.size()) - 1;  // the hyphen isn't in the story
    };
    addBroken(U"Zeilen-", 50);
    write();
    EXPECT_EQ(extracted(), "Zeilen\u00AD");
    kit.line(U"Nord-Ost", 20, 70);
    addBroken(U"West-", 90);
    write();
    EXPECT_EQ(extracted(), "Zeilen\u00AD\nNord-Ost\nWest\u00AD");
}

TEST_F(PdfText, IsFoundAgainInEveryScript) {
    struct TestRow {
        const char* name;
        const char* family;
        std::u32string_view text;
        const char* expected;
        hb_direction_t direction;
    };
    const TestRow rows[] = {
        {"ligatures", "Nimbus Sans", U"Springfield office, flat", "Springfield office, flat", HB_DIRECTION_LTR},
        {"kerning is no space", "Liberation Sans", U"AVATAR To Ty. WAVE", "AVATAR To Ty. WAVE", HB_DIRECTION_LTR},
        {"brackets and backslash", "Nimbus Sans", U"(a)\\b( [c]", "(a)\\b( [c]", HB_DIRECTION_LTR},
        {"Greek", "DejaVu Sans", U"Καλημέρα κόσμε", "Καλημέρα κόσμε", HB_DIRECTION_LTR},
        {"Cyrillic", "DejaVu Sans", U"Объявление", "Объявление", HB_DIRECTION_LTR},
        {"Hebrew", "DejaVu Sans", U"שלום עולם", "‫שלום עולם‬", HB_DIRECTION_RTL},
        {"no glyph in the font", "Nimbus Sans", U"漢字", "漢字", HB_DIRECTION_LTR},
        {"beyond the first plane", "DejaVu Sans", U"set 𝔸𝕏 here", "set 𝔸𝕏 here", HB_DIRECTION_LTR},
        {"no-break space", "Nimbus Sans", U"10\u00A0000 and 5 000", "10 000 and 5 000", HB_DIRECTION_LTR},
    };
    for (const auto& [name, family, text, expected, direction] : rows) {
        kit.list.items.clear();
        kit.line(text, 20, 100, formatOf(family), {}, direction);
        write();
        EXPECT_EQ(extracted(), expected) << name;
    }
}

/// The strings are literal: bytes that end them or are read as a line end need an escape. Every glyph of a font with
/// over 3,000 of them has all bytes in both places.
TEST_F(PdfText, EveryGlyphIdSurvives) {
    kit.line(U"x", 10, 50, formatOf("DejaVu Sans", 4));
    ComposedStory& line = kit.lastLine();
    const PlacedGlyph model = line.glyphs[0];
    const Font& font = *line.runs[0].font;
    line.glyphs.clear();
    for (std::uint16_t glyph = 1; glyph < 3400; ++glyph) {
        line.glyphs.push_back(model);
        line.glyphs.back().glyph = glyph;
        line.glyphs.back().advance = font.nominalAdvance(glyph);
    }
    line.runs[0].glyphCount = static_cast<std::uint32_t>(line.glyphs.size());
    write();
    // qpdf writes content streams anew with strings of its own form; what it understood is compared glyph by glyph.
    const std::string pdf = runCommand("qpdf --qdf --normalize-content=y '" + path + "' -").output;
    const std::size_t start = pdf.find("BDC");
    ASSERT_NE(start, std::string::npos);
    const std::string_view show = std::string_view(pdf).substr(start, pdf.find("ET", start) - start);
    std::string expectedHex, foundHex;
    char buffer[8];
    for (const PlacedGlyph& glyph : line.glyphs) {
        std::snprintf(buffer, sizeof buffer, "%04x", static_cast<unsigned>(glyph.glyph));
        expectedHex += buffer;
    }
    for (std::size_t at = show.find('<'); at != std::string_view::npos; at = show.find('<', at + 1)) {
        foundHex += show.substr(at + 1, show.find('>', at) - at - 1);
    }
    EXPECT_TRUE(foundHex == expectedHex) << foundHex.size() << " of " << expectedHex.size();
}

TEST_F(PdfText, AGlyphThatStandsForTwoTextsSaysWhichWhereItDiffers) {
    // Latin A, Greek Alpha and Cyrillic A share one glyph in Liberation Sans.
    kit.line(U"A", 20, 40, formatOf("Liberation Sans"));
    kit.line(U"\u0391", 20, 60, formatOf("Liberation Sans"));
    const bool shared = kit.lastLine().glyphs[0].glyph == kit.lastLine().runs[0].font->glyphOf(U'A');
    kit.lastLine().glyphs[0].glyph = kit.lastLine().runs[0].font->glyphOf(U'A');
    kit.line(U"A", 20, 80, formatOf("Liberation Sans"));
    write();
    EXPECT_EQ(extracted(), "A\nΑ\nA") << (shared ? "" : "(made to share a glyph)");
    EXPECT_EQ(countOf(unpackedPdf(path), "/ActualText"), 1u);
}

TEST_F(PdfText, CapitalsAreFoundAsTheyAreSeen) {
    CharFormat format = formatOf("Nimbus Sans");
    kit.line(U"Straße", 20, 40, format);
    format.caps = CharFormat::Caps::allCaps;
    kit.line(U"Tax", 20, 60, format);
    ComposedStory& line = kit.lastLine();
    const Font& font = *line.runs[0].font;
    const char32_t shown[] = {U'T', U'A', U'X'};
    for (std::size_t i = 0; i < 3; ++i)
        line.glyphs[i].glyph = font.glyphOf(shown[i]);
    write();
    EXPECT_EQ(extracted(), "Straße\nTAX");
    EXPECT_EQ(countOf(unpackedPdf(path), "/ActualText"), 0u);
}

TEST_F(PdfText, StandsWhereItWasComposed) {
    struct TestRow {
        const char* name;
        const char* family;
        double scale;
        double tracking;  // thousandths of an em, fractions on purpose
    };
    const TestRow rows[] = {
        {"plain", "Nimbus Sans", 1, 0},
        {"TrueType with 2048 units", "Liberation Serif", 1, 0},
        {"narrow", "Nimbus Sans", 0.8, 0},
        {"wide with tracking", "Liberation Sans", 1.25, 33.37},
        {"tracking that never rounds up", "Nimbus Sans", 1, 0.3},
    };
    const std::u32string text = U"To-the-very-last-letter-of-a-long-line-AVAVAVAVAV";
    for (const auto& [name, family, scale, tracking] : rows) {
        kit.list.items.clear();
        CharFormat format = formatOf(family, 9);
        format.horizontalScale = scale;
        kit.line(text, 20, 100, format);
        ComposedStory& line = kit.lastLine();
        double width = 0;
        for (PlacedGlyph& glyph : line.glyphs) {
            glyph.advance += static_cast<float>(tracking);
            width += static_cast<double>(glyph.advance) * 9 / 1000 * scale;
        }
        write();
        const WordBox box = boxOf(std::string(text.begin(), text.end()));
        EXPECT_NEAR(box.left, 20, 0.01) << name;
        EXPECT_NEAR(box.right, 20 + width - tracking * 9 / 1000 * scale, 0.01) << name;
        EXPECT_LT(box.top, 100) << name;
        EXPECT_GT(box.bottom, 100) << name;
    }
}

TEST_F(PdfText, TurnedTextStandsInItsPlace) {
    kit.line(U"Turned", 10, 20, formatOf("Nimbus Sans", 10), {0, -1, 1, 0, 200, 150});
    kit.line(U"Upright", 10, 20, formatOf("Nimbus Sans", 10));
    write();
    const WordBox turned = boxOf("Turned");
    EXPECT_NEAR(turned.bottom, 140, 0.01) << "the line begins 10 below the corner and runs upward";
    EXPECT_LT(turned.left, 220);
    EXPECT_GT(turned.right, 220);
    EXPECT_NEAR(boxOf("Upright").left, 10, 0.01);
}

TEST_F(PdfText, MarksAreRaisedAndLoweredByTheirOffsets) {
    kit.line(U"ab", 10, 50, formatOf("Nimbus Sans", 10));
    ComposedStory& line = kit.lastLine();
    line.glyphs[1].offsetX = -200;
    line.glyphs[1].offsetY = 150;
    write();
    const std::string pdf = unpackedPdf(path);
    EXPECT_NE(pdf.find("[<0042>200]TJ\n1.5 Ts\n <0043>Tj\n0 Ts\n"), std::string::npos) << pdf;
}

TEST_F(PdfText, RulesFollowTheFontsMetrics) {
    CharFormat format = formatOf("Nimbus Sans", 20);
    format.underline = format.strikeThrough = true;
    format.color = {PageKit::red, 1};
    kit.line(U"word", 10, 50, format);
    const GlyphRun& run = kit.lastLine().runs[0];
    const double middle = 250 + static_cast<double>(run.font->underlinePosition()) * 20 / 1000;
    const double thickness = static_cast<double>(run.font->underlineThickness()) * 20 / 1000;
    write();
    const std::string pdf = unpackedPdf(path);
    const std::size_t at = pdf.find("ET\n10 ");
    ASSERT_NE(at, std::string::npos) << pdf;
    double under[3] = {}, through[3] = {};
    ASSERT_EQ(std::sscanf(pdf.c_str() + at, "ET 10 %lf %lf %lf re f 10 %lf %lf %lf re f", under, under + 1, under + 2,
                          through, through + 1, through + 2),
              6);
    EXPECT_NEAR(under[0], middle - thickness / 2, 0.002);
    EXPECT_NEAR(under[1], static_cast<double>(run.width), 0.002);
    EXPECT_NEAR(under[2], thickness, 0.002);
    EXPECT_GT(through[0], 252) << "through the letters";
    EXPECT_LT(through[0], 258);
}

/// Small capitals, and characters that another font has, interrupt no rule.
TEST_F(PdfText, RulesKeepTheirHeight) {
    CharFormat format = formatOf("Nimbus Sans", 20);
    format.underline = format.strikeThrough = true;
    GlyphRun run;
    run.format = &format;
    run.font = FontService::instance().find("Nimbus Sans", "Regular");
    run.size = 20;
    const TextRules usual = textRulesOf(run);
    run.size = 14;
    run.font = FontService::instance().find("DejaVu Sans", "Regular");
    const TextRules reduced = textRulesOf(run);
    ASSERT_EQ(reduced.count, 2);
    for (int i : {0, 1})
        EXPECT_EQ(reduced.rules[i], usual.rules[i]);
    EXPECT_GT(usual.rules[0].height(), 0);
}

TEST_F(PdfText, FontsAreEmbeddedAsSmallSubsets) {
    kit.line(U"CFF outlines", 10, 50, formatOf("Nimbus Sans"));
    kit.line(U"TrueType outlines", 10, 80, formatOf("DejaVu Sans"));
    write();
    const std::string fonts = runCommand("pdffonts '" + path + "'").output;
    EXPECT_NE(fonts.find("CID Type 0C       Identity-H       yes yes yes"), std::string::npos) << fonts;
    EXPECT_NE(fonts.find("CID TrueType      Identity-H       yes yes yes"), std::string::npos) << fonts;
    EXPECT_LT(std::filesystem::file_size(path), 30'000u) << "DejaVu Sans alone has 750,000 bytes";
}

TEST_F(PdfText, AFontMayShowNothingButSpaces) {
    for (const char* family : {"Nimbus Sans", "Liberation Sans", "DejaVu Sans"}) {
        kit.line(U"   ", 10, 50, formatOf(family));
    }
    write();
    EXPECT_EQ(countOf(runCommand("pdffonts '" + path + "'").output, "yes yes yes"), 3u);
}

TEST_F(PdfText, TextWithoutColourIsNotShown) {
    CharFormat format = formatOf("Nimbus Sans");
    format.color = {swatchNone, 1};
    kit.line(U"invisible", 10, 50, format);
    write();
    EXPECT_EQ(countOf(unpackedPdf(path), "Tj"), 0u);
}

}  // namespace
}  // namespace tarnova
