// Draws a display list with cairo.

#pragma once

#include <cairo.h>

#include <vector>

#include "host/render/display_list.h"

namespace tarnova {

class Font;

/// Paints on a context whose units are points with the origin at the page's top left. Glyphs are filled as outlines:
/// cairo's own glyph images would jump to whole pixels and spoil the spacing.
class CairoPainter {
 public:
    CairoPainter(cairo_t* target, const DisplayList& page);
    ~CairoPainter();
    CairoPainter(const CairoPainter&) = delete;
    CairoPainter& operator=(const CairoPainter&) = delete;

    void paintPage();

 private:
    struct FontFace {
        const Font* font;
        cairo_font_face_t* face;
    };

    void paintShape(const DisplayItem& item);
    void paintText(const DisplayItem& item);
    void paintRun(const ComposedStory& text, const GlyphRun& run);
    void tracePath(const SubPath& path);
    void setStroke(const Stroke& stroke);
    /// False when the paint is "None".
    bool setPaint(const Paint& paint);
    [[nodiscard]] cairo_font_face_t* faceOf(const Font& font);

    cairo_t* cairo;
    const DisplayList& list;
    std::vector<FontFace> faces;
    std::vector<cairo_glyph_t> glyphs;
};

}  // namespace tarnova
