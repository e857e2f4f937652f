#include "host/render/cairo_painter.h"

#include <cairo-ft.h>
#include <fontconfig/fontconfig.h>

#include <algorithm>

#include "host/render/text_rules.h"
#include "host/text/font.h"

namespace tarnova {

CairoPainter::CairoPainter(cairo_t* target, const DisplayList& page) : cairo(target), list(page) {
    cairo_font_options_t* options = cairo_font_options_create();
    cairo_font_options_set_hint_style(options, CAIRO_HINT_STYLE_NONE);
    cairo_font_options_set_hint_metrics(options, CAIRO_HINT_METRICS_OFF);
    cairo_set_font_options(cairo, options);
    cairo_font_options_destroy(options);
}

CairoPainter::~CairoPainter() {
    for (const FontFace& known : faces)
        cairo_font_face_destroy(known.face);
}

void CairoPainter::paintPage() {
    for (const DisplayItem& item : list.items) {
        cairo_save(cairo);
        const PMMatrix& m = item.toPage;
        const cairo_matrix_t matrix = {m.a, m.b, m.c, m.d, m.tx, m.ty};
        // A matrix without an inverse leaves no area to paint and would put the context out of order.
        if (m.a * m.d - m.b * m.c != 0) {
            cairo_transform(cairo, &matrix);
            item.text != nullptr ? paintText(item) : paintShape(item);
        }
        cairo_restore(cairo);
    }
}

void CairoPainter::paintShape(const DisplayItem& item) {
    cairo_new_path(cairo);
    for (const SubPath& path : item.shape->path)
        tracePath(path);
    if (setPaint(item.shape->fill)) cairo_fill_preserve(cairo);
    if (item.shape->stroke.weight > 0 && setPaint(item.shape->stroke.paint)) {
        setStroke(item.shape->stroke);
        cairo_stroke_preserve(cairo);
    }
    cairo_new_path(cairo);
}

void CairoPainter::tracePath(const SubPath& path) {
    cairo_move_to(cairo, path.start.x, path.start.y);
    for (const PathSegment& segment : path.segments) {
        if (segment.kind == PathSegment::Kind::curve) {
            cairo_curve_to(cairo, segment.control1.x, segment.control1.y, segment.control2.x, segment.control2.y,
                           segment.to.x, segment.to.y);
        } else {
            cairo_line_to(cairo, segment.to.x, segment.to.y);
        }
    }
    if (path.closed) cairo_close_path(cairo);
}

void CairoPainter::setStroke(const Stroke& stroke) {
    static constexpr cairo_line_join_t joins[] = {CAIRO_LINE_JOIN_MITER, CAIRO_LINE_JOIN_ROUND, CAIRO_LINE_JOIN_BEVEL};
    static constexpr cairo_line_cap_t caps[] = {CAIRO_LINE_CAP_BUTT, CAIRO_LINE_CAP_ROUND, CAIRO_LINE_CAP_SQUARE};
    cairo_set_line_width(cairo, stroke.weight);
    cairo_set_line_join(cairo, joins[static_cast<int>(stroke.join)]);
    cairo_set_line_cap(cairo, caps[static_cast<int>(stroke.cap)]);
    cairo_set_miter_limit(cairo, std::max(stroke.miterLimit, 1.0));
    std::vector<double> dash;
    double total = 0;
    for (const double length : stroke.dash) {
        dash.push_back(std::max(length, 0.0));
        total += dash.back();
    }
    if (total > 0) cairo_set_dash(cairo, dash.data(), static_cast<int>(dash.size()), 0);
}

bool CairoPainter::setPaint(const Paint& paint) {
    const PaintColor color = resolvePaint(paint, *list.swatches);
    const double* v = color.values;
    if (color.space == Swatch::Space::none) return false;
    if (color.space == Swatch::Space::rgb) {
        cairo_set_source_rgb(cairo, v[0], v[1], v[2]);
    } else {
        cairo_set_source_rgb(cairo, (1 - v[0]) * (1 - v[3]), (1 - v[1]) * (1 - v[3]), (1 - v[2]) * (1 - v[3]));
    }
    return true;
}

void CairoPainter::paintText(const DisplayItem& item) {
    const ComposedStory& text = *item.text;
    for (std::uint32_t c = item.firstColumn; c < item.firstColumn + item.columnCount; ++c) {
        const ComposedColumn& column = text.columns[c];
        for (std::uint32_t l = column.firstLine; l < column.firstLine + column.lineCount; ++l) {
            const ComposedLine& line = text.lines[l];
            for (std::uint32_t r = line.firstRun; r < line.firstRun + line.runCount; ++r)
                paintRun(text, text.runs[r]);
        }
    }
}

void CairoPainter::paintRun(const ComposedStory& text, const GlyphRun& run) {
    if (run.glyphCount == 0 || !(run.size > 0) || !(run.horizontalScale > 0) || !setPaint(run.format->color)) return;
    const double emY = static_cast<double>(run.size) / 1000;
    const double emX = emY * static_cast<double>(run.horizontalScale);
    glyphs.clear();
    double x = static_cast<double>(run.x);
    for (std::uint32_t g = run.firstGlyph; g < run.firstGlyph + run.glyphCount; ++g) {
        const PlacedGlyph& placed = text.glyphs[g];
        glyphs.push_back({placed.glyph, x + static_cast<double>(placed.offsetX) * emX,
                          static_cast<double>(run.y) - static_cast<double>(placed.offsetY) * emY});
        x += static_cast<double>(placed.advance) * emX;
    }
    cairo_matrix_t size;
    cairo_matrix_init_scale(&size, emX * 1000, emY * 1000);
    cairo_set_font_face(cairo, faceOf(*run.font));
    cairo_set_font_matrix(cairo, &size);
    cairo_new_path(cairo);
    cairo_glyph_path(cairo, glyphs.data(), static_cast<int>(glyphs.size()));
    const TextRules rules = textRulesOf(run);
    cairo_fill(cairo);
    for (int i = 0; i < rules.count; ++i) {
        const PMRect& rule = rules.rules[i];
        cairo_rectangle(cairo, rule.left, rule.top, rule.width(), rule.height());
        cairo_fill(cairo);
    }
}

/// By file, so that no font configuration has a say.
cairo_font_face_t* CairoPainter::faceOf(const Font& font) {
    for (const FontFace& known : faces) {
        if (known.font == &font) return known.face;
    }
    FcPattern* pattern = FcPatternCreate();
    FcPatternAddString(pattern, FC_FILE, reinterpret_cast<const FcChar8*>(font.path().c_str()));
    FcPatternAddInteger(pattern, FC_INDEX, font.faceIndex());
    faces.push_back({&font, cairo_ft_font_face_create_for_pattern(pattern)});
    FcPatternDestroy(pattern);
    return faces.back().face;
}

}  // namespace tarnova
