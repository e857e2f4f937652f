#include "host/render/cairo_painter.h"

#include <hb.h>

#include <algorithm>

#include "host/render/cairo_pictures.h"
#include "host/render/stroke_dash.h"
#include "host/render/text_rules.h"
#include "host/text/font.h"

namespace tarnova {

namespace {

/// Adds the outline of a glyph to the path of a context.
struct GlyphPen {
    cairo_t* cairo;
    PMMatrix toItem;  // from thousandths of an em, upward

    void trace(const Font& font, std::uint16_t glyph) {
        hb_font_get_glyph_shape(font.shaper(), glyph, callbacks(), this);
    }

 private:
    static hb_draw_funcs_t* callbacks() {
        static hb_draw_funcs_t* const shared = makeCallbacks();
        return shared;
    }
    /// Without one for quadratic curves: HarfBuzz then makes them cubic.
    static hb_draw_funcs_t* makeCallbacks() {
        hb_draw_funcs_t* funcs = hb_draw_funcs_create();
        hb_draw_funcs_set_move_to_func(funcs, moveTo, nullptr, nullptr);
        hb_draw_funcs_set_line_to_func(funcs, lineTo, nullptr, nullptr);
        hb_draw_funcs_set_cubic_to_func(funcs, curveTo, nullptr, nullptr);
        hb_draw_funcs_set_close_path_func(funcs, closePath, nullptr, nullptr);
        hb_draw_funcs_make_immutable(funcs);
        return funcs;
    }

    [[nodiscard]] PMPoint at(float x, float y) const { return toItem.map({x, y}); }

    static void moveTo(hb_draw_funcs_t*, void* data, hb_draw_state_t*, float x, float y, void*) {
        const auto& pen = *static_cast<GlyphPen*>(data);
        const PMPoint to = pen.at(x, y);
        cairo_move_to(pen.cairo, to.x, to.y);
    }
    static void lineTo(hb_draw_funcs_t*, void* data, hb_draw_state_t*, float x, float y, void*) {
        const auto& pen = *static_cast<GlyphPen*>(data);
        const PMPoint to = pen.at(x, y);
        cairo_line_to(pen.cairo, to.x, to.y);
    }
    static void curveTo(hb_draw_funcs_t*, void* data, hb_draw_state_t*, float x1, float y1, float x2, float y2, float x,
                        float y, void*) {
        const auto& pen = *static_cast<GlyphPen*>(data);
        const PMPoint first = pen.at(x1, y1), second = pen.at(x2, y2), to = pen.at(x, y);
        cairo_curve_to(pen.cairo, first.x, first.y, second.x, second.y, to.x, to.y);
    }
    static void closePath(hb_draw_funcs_t*, void* data, hb_draw_state_t*, void*) {
        cairo_close_path(static_cast<GlyphPen*>(data)->cairo);
    }
};

}  // namespace

void CairoPainter::paintPage() {
    for (const DisplayItem& item : list.items) {
        cairo_save(cairo);
        // A matrix without an inverse leaves no area to paint and would put the context out of order.
        if (item.toPage.inverse()) {
            transform(item.toPage);
            paintItem(item);
        }
        cairo_restore(cairo);
    }
}

void CairoPainter::transform(const PMMatrix& m) {
    const cairo_matrix_t matrix = {m.a, m.b, m.c, m.d, m.tx, m.ty};
    cairo_transform(cairo, &matrix);
}

void CairoPainter::paintItem(const DisplayItem& item) {
    if (item.text != nullptr) {
        paintText(item);
    } else if (item.picture != nullptr) {
        paintPicture(item);
    } else {
        paintShape(item);
    }
}

void CairoPainter::paintPicture(const DisplayItem& item) {
    const PlacedGraphic& graphic = *item.picture->graphic;
    if (!item.picture->toParent.inverse() || !(graphic.bounds.width() > 0 && graphic.bounds.height() > 0)) return;
    if (frameClips(item)) clipTo(item.shape->path, CAIRO_FILL_RULE_WINDING);
    transform(item.picture->toParent);
    if (!graphic.clipPath.empty()) clipTo(graphic.clipPath, CAIRO_FILL_RULE_EVEN_ODD);
    const OpenedPicture opened = openGraphic(graphic, list.pictureFolder);
    if (opened.picture == nullptr) {
        notePicture(problems, graphic, opened.reason);
        return paintPlaceholder(graphic);
    }
    cairo_save(cairo);
    transform(pictureToItem(graphic, opened.picture->size()));
    const bool isDrawn = drawPicture(cairo, *opened.picture);
    cairo_restore(cairo);
    if (isDrawn) return;
    notePicture(problems, graphic, unreadablePicture);
    paintPlaceholder(graphic);
}

void CairoPainter::clipTo(const std::vector<SubPath>& path, cairo_fill_rule_t rule) {
    cairo_new_path(cairo);
    for (const SubPath& part : path)
        tracePath(part);
    cairo_set_fill_rule(cairo, rule);
    cairo_clip(cairo);
    cairo_set_fill_rule(cairo, CAIRO_FILL_RULE_WINDING);
}

void CairoPainter::paintPlaceholder(const PlacedGraphic& graphic) {
    const PMRect& box = graphic.bounds;
    cairo_rectangle(cairo, box.left, box.top, box.width(), box.height());
    cairo_clip_preserve(cairo);
    cairo_set_source_rgb(cairo, placeholderGround, placeholderGround, placeholderGround);
    cairo_fill(cairo);
    cairo_move_to(cairo, box.left, box.top);
    cairo_line_to(cairo, box.right, box.bottom);
    cairo_move_to(cairo, box.right, box.top);
    cairo_line_to(cairo, box.left, box.bottom);
    cairo_set_source_rgb(cairo, placeholderCross, placeholderCross, placeholderCross);
    cairo_set_line_width(cairo, placeholderLine);
    cairo_stroke(cairo);
}

void CairoPainter::paintShape(const DisplayItem& item) {
    cairo_new_path(cairo);
    for (const SubPath& path : item.shape->path)
        tracePath(path);
    if (item.part != ShapePart::stroke && setPaint(item.shape->fill)) cairo_fill_preserve(cairo);
    if (item.part != ShapePart::fill && item.shape->stroke.weight > 0 && setPaint(item.shape->stroke.paint)) {
        setStroke(*item.shape);
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

void CairoPainter::setStroke(const ItemShape& shape) {
    const Stroke& stroke = shape.stroke;
    static constexpr cairo_line_join_t joins[] = {CAIRO_LINE_JOIN_MITER, CAIRO_LINE_JOIN_ROUND, CAIRO_LINE_JOIN_BEVEL};
    static constexpr cairo_line_cap_t caps[] = {CAIRO_LINE_CAP_BUTT, CAIRO_LINE_CAP_ROUND, CAIRO_LINE_CAP_SQUARE};
    cairo_set_line_width(cairo, stroke.weight);
    cairo_set_line_join(cairo, joins[static_cast<int>(stroke.join)]);
    cairo_set_line_cap(cairo, caps[static_cast<int>(stroke.cap)]);
    cairo_set_miter_limit(cairo, std::max(stroke.miterLimit, 1.0));
    if (stroke.dash.empty()) return;
    const std::vector<double> dash = drawnDash(shape);
    cairo_set_dash(cairo, dash.data(), static_cast<int>(dash.size()), 0);
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
    if (isTurned(run)) {
        cairo_save(cairo);
        transform(turnOf(run));
        fillRun(text, run);
        cairo_restore(cairo);
    } else {
        fillRun(text, run);
    }
}

/// Fills a run from its origin to the right.
void CairoPainter::fillRun(const ComposedStory& text, const GlyphRun& run) {
    const double emY = static_cast<double>(run.size) / 1000;
    const double emX = emY * static_cast<double>(run.horizontalScale);
    double x = static_cast<double>(run.x);
    cairo_new_path(cairo);
    for (std::uint32_t g = run.firstGlyph; g < run.firstGlyph + run.glyphCount; ++g) {
        const PlacedGlyph& placed = text.glyphs[g];
        const double glyphX = x + static_cast<double>(placed.offsetX) * emX;
        const double glyphY = static_cast<double>(run.y) - static_cast<double>(placed.offsetY) * emY;
        GlyphPen{cairo, {emX, 0, 0, -emY, glyphX, glyphY}}.trace(*run.font, placed.glyph);
        x += static_cast<double>(placed.advance) * emX;
    }
    const TextRules rules = textRulesOf(run);
    cairo_fill(cairo);
    for (int i = 0; i < rules.count; ++i) {
        const PMRect& rule = rules.rules[i];
        cairo_rectangle(cairo, rule.left, rule.top, rule.width(), rule.height());
        cairo_fill(cairo);
    }
}

}  // namespace tarnova
