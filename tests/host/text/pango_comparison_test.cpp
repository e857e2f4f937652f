// Line breaks and widths beside those of a general layout library, with the same font files.

#include <gtest/gtest.h>
#include <pango/pangocairo.h>
#include <pango/pangofc-fontmap.h>

#include <cmath>
#include <memory>
#include <string>
#include <vector>

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

    std::vector<SeenLine> lines(std::u32string_view text, const std::string& font, double width) const {
        const Owned<PangoLayout> layout(pango_layout_new(context.get()));
        PangoFontDescription* description = pango_font_description_from_string(font.c_str());
        pango_layout_set_font_description(layout.get(), description);
        pango_font_description_free(description);
        pango_layout_set_wrap(layout.get(), PANGO_WRAP_WORD_CHAR);
        pango_layout_set_width(layout.get(), static_cast<int>(std::lround(width * PANGO_SCALE)));
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
                           visibleWidth(layout.get(), *line, bytes)});
        }
        return out;
    }

 private:
    /// The distance between the line's left edge and its last character that is no space.
    static double visibleWidth(PangoLayout* layout, const PangoLayoutLine& line, const std::string& bytes) {
        int end = line.start_index + line.length;
        while (end > line.start_index && bytes[static_cast<std::size_t>(end) - 1] == ' ')
            --end;
        PangoRectangle last;
        const char* const lastCharacter = g_utf8_prev_char(bytes.c_str() + end);
        pango_layout_index_to_pos(layout, static_cast<int>(lastCharacter - bytes.c_str()), &last);
        return static_cast<double>(last.x + last.width) / PANGO_SCALE;
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

TEST(BesidePango, SameBreaksAndWidths) {
    struct Face {
        const char *family, *style, *pango;
    };
    const Face faces[] = {
        {"Helvetica", "Regular", "Nimbus Sans"},   {"Times", "Bold", "Nimbus Roman, Bold"},
        {"Arial", "Regular", "Liberation Sans"},   {"Times New Roman", "Italic", "Liberation Serif, Italic"},
        {"DejaVu Sans", "Regular", "DejaVu Sans"},
    };
    const PangoSide pango;
    for (const Face& face : faces) {
        for (double size : {8.0, 10.5}) {
            for (double width : {90.0, 151.0, 240.0, 468.0}) {
                for (std::u32string_view text : texts) {
                    const std::string what = std::string(face.pango) + " " + std::to_string(size) + " in " +
                                             std::to_string(width) + ": " + utf8(text.substr(0, 20));
                    const auto theirs = pango.lines(text, face.pango + (" " + std::to_string(size)), width);
                    const auto ours = ourLines(text, face.family, face.style, size, width);
                    ASSERT_EQ(ours.size(), theirs.size()) << what;
                    for (std::size_t i = 0; i < ours.size(); ++i) {
                        EXPECT_EQ(ours[i].limit, theirs[i].limit) << what << " line " << i;
                        EXPECT_NEAR(ours[i].width, theirs[i].width, 0.1) << what << " line " << i;
                    }
                }
            }
        }
    }
}

}  // namespace
}  // namespace tarnova
