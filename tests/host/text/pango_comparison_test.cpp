// Line breaks and widths beside those of a general layout library, with the same font files.

#include <gtest/gtest.h>
#include <pango/pangocairo.h>
#include <pango/pangofc-fontmap.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "engine/toolkit/text_encoding.h"
#include "source_folder.h"
#include "tests/host/text/compose_kit.h"

namespace tarnova {
namespace {

struct ObjectCloser {
    void operator()(void* object) const { g_object_unref(object); }
};
template <typename T>
using Owned = std::unique_ptr<T, ObjectCloser>;

std::string utf8(std::u32string_view text) {
    std::string out;
    for (char32_t c : text) {
        char bytes[6];
        out.append(bytes, static_cast<std::size_t>(g_unichar_to_utf8(c, bytes)));
    }
    return out;
}

/// A line as either side sees it: characters from the paragraph's start, and the width without spaces at its end.
struct SeenLine {
    long limit;
    double width;
};

class PangoSide {
 public:
    PangoSide() : map(pango_cairo_font_map_new_for_font_type(CAIRO_FONT_TYPE_FT)) {
        const char* const text =
            "<fontconfig><dir>/usr/share/fonts/opentype/urw-base35</dir><dir>/usr/share/fonts/truetype/liberation2</"
            "dir>"
            "<dir>/usr/share/fonts/truetype/dejavu</dir><cachedir>/var/cache/fontconfig</cachedir></fontconfig>";
        FcConfig* config = FcConfigCreate();
        FcConfigParseAndLoadFromMemory(config, reinterpret_cast<const FcChar8*>(text), FcTrue);
        FcConfigBuildFonts(config);
        pango_fc_font_map_set_config(reinterpret_cast<PangoFcFontMap*>(map.get()), config);
        // Else Pango loads the machine's configuration besides.
        FcConfigSetCurrent(config);
        FcConfigDestroy(config);
        context.reset(pango_font_map_create_context(map.get()));
        cairo_font_options_t* options = cairo_font_options_create();
        cairo_font_options_set_hint_metrics(options, CAIRO_HINT_METRICS_OFF);
        cairo_font_options_set_hint_style(options, CAIRO_HINT_STYLE_NONE);
        pango_cairo_context_set_font_options(context.get(), options);
        cairo_font_options_destroy(options);
        pango_cairo_context_set_resolution(context.get(), 72);
        pango_context_set_round_glyph_positions(context.get(), FALSE);
    }

    std::vector<SeenLine> lines(std::u32string_view text, const std::string& font, double size, double width) const {
        const Owned<PangoLayout> layout(pango_layout_new(context.get()));
        PangoFontDescription* description = pango_font_description_from_string(font.c_str());
        pango_font_description_set_size(description, static_cast<int>(std::lround(size * enlarged * PANGO_SCALE)));
        pango_layout_set_font_description(layout.get(), description);
        pango_font_description_free(description);
        pango_layout_set_wrap(layout.get(), PANGO_WRAP_WORD_CHAR);
        pango_layout_set_width(layout.get(), static_cast<int>(std::lround(width * enlarged * PANGO_SCALE)));
        // A word that must be cut shows no hyphen with us.
        PangoAttrList* attributes = pango_attr_list_new();
        pango_attr_list_insert(attributes, pango_attr_insert_hyphens_new(FALSE));
        pango_layout_set_attributes(layout.get(), attributes);
        pango_attr_list_unref(attributes);
        const std::string bytes = utf8(text);
        pango_layout_set_text(layout.get(), bytes.c_str(), static_cast<int>(bytes.size()));
        std::vector<SeenLine> out;
        for (int i = 0; i < pango_layout_get_line_count(layout.get()); ++i) {
            const PangoLayoutLine* line = pango_layout_get_line_readonly(layout.get(), i);
            out.push_back({g_utf8_pointer_to_offset(bytes.c_str(), bytes.c_str() + line->start_index + line->length),
                           visibleWidth(*line, bytes)});
        }
        return out;
    }

 private:
    /// Pango counts in 1024ths of a point; so that their rounding doesn't add up, all is set so much larger.
    static constexpr double enlarged = 64;

    /// The advances of the line's characters without the spaces at its end.
    static double visibleWidth(const PangoLayoutLine& line, const std::string& bytes) {
        int end = line.start_index + line.length;
        while (end > line.start_index && bytes[static_cast<std::size_t>(end) - 1] == ' ')
            --end;
        double width = 0;
        for (const GSList* at = line.runs; at != nullptr; at = at->next) {
            const auto& run = *static_cast<const PangoGlyphItem*>(at->data);
            for (int i = 0; i < run.glyphs->num_glyphs; ++i)
                if (run.item->offset + run.glyphs->log_clusters[i] < end) width += run.glyphs->glyphs[i].geometry.width;
        }
        return width / PANGO_SCALE / enlarged;
    }

    Owned<PangoFontMap> map;
    Owned<PangoContext> context;
};

std::vector<SeenLine> ourLines(std::u32string_view text, const std::string& family, const std::string& style,
                               double size, double width) {
    ComposeKit kit;
    kit.format.family = family;
    kit.format.fontStyle = style;
    kit.format.pointSize = size;
    kit.text(text);
    kit.column(width, 10000);
    const ComposedStory story = kit.compose();
    std::vector<SeenLine> out;
    for (const ComposedLine& line : story.lines)
        out.push_back({std::min<long>(line.limit, static_cast<long>(text.size())), line.right - line.left});
    return out;
}

constexpr std::u32string_view texts[] = {
    U"Dear Ms Tovey, your order of twelve garden chairs left our warehouse in Portland on Monday and will reach you by "
    U"the end of this week. The number 1-800-555-0199 lets you follow the parcel; ask for Mr. Yates (office hours "
    U"9/17).",
    U"Five affluent officers filed a difficult affidavit: AVATAR, WAVE & Tyre Ltd. won $1,234.50 (or 12.5%) in "
    U"2019/20.",
    U"Über die Brücke führt ein schöner Weg nach Köln-Mülheim – „Größe“ und «Maß» kosten 1.499,00 €, so groß…",
    U"L’été dernier, à Orléans, l’œuvre complète fut présentée; où sont-elles passées ? Nous l’ignorons encore.",
    U"Address: 17th Floor, Donaudampfschifffahrtsgesellschaftskapitänshaus 3, "
    U"www.example.com/a/long/path/to/a/page.html",
};

struct Face {
    const char *family, *style, *pango;
};

std::string nameOf(const Face& face, double size, double width, std::u32string_view text) {
    return std::string(face.pango) + " " + std::to_string(size) + " in " + std::to_string(width) + ": " +
           utf8(text.substr(0, 20));
}

/// Compares the lines of a text in both ways. `perCharacter` is how far a character's advance may be off, in ems. A
/// word that fits by less than that may end a line with one of them only: then the rest isn't compared and the result
/// is 1.
int expectSame(const PangoSide& pango, const Face& face, double size, double width, std::u32string_view text,
               double perCharacter) {
    const std::string what = nameOf(face, size, width, text);
    const auto theirs = pango.lines(text, face.pango, size, width);
    const auto ours = ourLines(text, face.family, face.style, size, width);
    long start = 0;
    for (std::size_t i = 0; i < std::min(ours.size(), theirs.size()); ++i) {
        const auto characters = static_cast<double>(std::max(ours[i].limit, theirs[i].limit) - start);
        const double rounding = perCharacter * size * characters;
        if (ours[i].limit != theirs[i].limit) {
            EXPECT_GT(std::max(ours[i].width, theirs[i].width), width - rounding) << what << " line " << i;
            return 1;
        }
        EXPECT_NEAR(ours[i].width, theirs[i].width, 0.01 + rounding) << what << " line " << i;
        start = ours[i].limit;
    }
    EXPECT_EQ(ours.size(), theirs.size()) << what;
    return 0;
}

std::u32string corpusText(const std::string& language) {
    std::ifstream file(std::string(TARNOVA_SOURCE_FOLDER "/tests/host/text/corpus/") + language + ".txt");
    std::string line;
    std::getline(file, line);
    EXPECT_FALSE(line.empty()) << language;
    return utf8ToUtf32(line);
}

constexpr double sizes[] = {8.0, 10.5};
constexpr double widths[] = {90.0, 151.0, 240.0, 468.0};

TEST(BesidePango, SameBreaksAndWidthsInFontsOfAThousandUnits) {
    const Face faces[] = {{"Helvetica", "Regular", "Nimbus Sans"}, {"Times", "Bold", "Nimbus Roman, Bold"}};
    const PangoSide pango;
    std::vector<std::u32string> all(std::begin(texts), std::end(texts));
    for (const char* language : {"en", "de", "fr", "pl", "el", "ru"})
        all.push_back(corpusText(language));
    for (const Face& face : faces)
        for (double size : sizes)
            for (double width : widths)
                for (const std::u32string& text : all)
                    EXPECT_EQ(expectSame(pango, face, size, width, text, 0), 0);
}

/// Such fonts have 2048 units to the em. Our advances are whole thousandths, as a PDF has them.
TEST(BesidePango, SameBreaksAndWidthsButForTheRoundingOfAdvancesToThousandthsOfAnEm) {
    const Face faces[] = {{"Arial", "Regular", "Liberation Sans"},
                          {"Times New Roman", "Italic", "Liberation Serif, Italic"},
                          {"DejaVu Sans", "Regular", "DejaVu Sans"}};
    const PangoSide pango;
    std::vector<std::u32string> all(std::begin(texts), std::end(texts));
    for (const char* language : {"en", "de", "fr", "pl", "el", "ru"})
        all.push_back(corpusText(language));
    int parted = 0;
    for (const Face& face : faces)
        for (double size : sizes)
            for (double width : widths)
                for (const std::u32string& text : all)
                    parted += expectSame(pango, face, size, width, text, 0.0005);
    EXPECT_LE(parted, 3) << "of 264 texts";
}

TEST(BesidePango, SameBreaksAndWidthsFromRightToLeftButForTheRoundingOfAdvances) {
    const Face face{"DejaVu Sans", "Regular", "DejaVu Sans"};
    const PangoSide pango;
    for (const char* language : {"ar", "he"})
        for (double size : sizes)
            for (double width : widths)
                EXPECT_EQ(expectSame(pango, face, size, width, corpusText(language), 0.0005), 0);
}

}  // namespace
}  // namespace tarnova
