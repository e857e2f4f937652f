// A paragraph of 10 points that Pango lays out, as what our own composition is measured against.

#pragma once

#include <pango/pangocairo.h>

#include <memory>
#include <string_view>

namespace tarnova::bench {

class PangoParagraph {
 public:
    explicit PangoParagraph(double widthPt, bool justified = false)
        : map(pango_cairo_font_map_new_for_font_type(CAIRO_FONT_TYPE_FT)),
          context(pango_font_map_create_context(map.get())),
          layout(pango_layout_new(context.get())) {
        pango_cairo_context_set_resolution(context.get(), 72);
        pango_context_set_round_glyph_positions(context.get(), FALSE);
        PangoFontDescription* const font = pango_font_description_from_string("Nimbus Sans, 10");
        pango_layout_set_font_description(layout.get(), font);
        pango_font_description_free(font);
        pango_layout_set_width(layout.get(), static_cast<int>(widthPt * PANGO_SCALE));
        pango_layout_set_justify(layout.get(), justified ? TRUE : FALSE);
    }

    /// Lays out a text; UTF-8.
    void set(std::string_view text) {
        pango_layout_set_text(layout.get(), text.data(), static_cast<int>(text.size()));
        pango_layout_get_line_count(layout.get());
    }

 private:
    struct Unref {
        void operator()(void* object) const { g_object_unref(object); }
    };
    std::unique_ptr<PangoFontMap, Unref> map;
    std::unique_ptr<PangoContext, Unref> context;
    std::unique_ptr<PangoLayout, Unref> layout;
};

}  // namespace tarnova::bench
