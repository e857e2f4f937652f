// Draws a display list with cairo.

#pragma once

#include <cairo.h>

#include <vector>

#include "host/render/display_list.h"
#include "host/render/shown_picture.h"

namespace tarnova {

/// Paints on a context whose units are points with the origin at the page's top left. Glyphs are filled as the outlines
/// of their font: cairo's own glyph images would jump to whole pixels and spoil the spacing, and its outlines are
/// rounded to 1/64 of a unit, which shows in a drawing that is enlarged.
class CairoPainter {
 public:
    ///
    /// Pictures that can't be drawn are appended to `pictureProblems`.
    CairoPainter(cairo_t* target, const DisplayList& page, std::vector<PictureProblem>& pictureProblems)
        : cairo(target), list(page), problems(pictureProblems) {}

    void paintPage();

 private:
    void paintItem(const DisplayItem& item);
    void paintShape(const DisplayItem& item);
    void paintPicture(const DisplayItem& item);
    void clipTo(const std::vector<SubPath>& path, cairo_fill_rule_t rule);
    void paintPlaceholder(const PlacedGraphic& graphic);
    void transform(const PMMatrix& matrix);
    void paintText(const DisplayItem& item);
    void paintRun(const ComposedStory& text, const GlyphRun& run);
    void fillRun(const ComposedStory& text, const GlyphRun& run);
    void tracePath(const SubPath& path);
    void setStroke(const ItemShape& shape);
    /// False when the paint is "None".
    bool setPaint(const Paint& paint);

    cairo_t* cairo;
    const DisplayList& list;
    std::vector<PictureProblem>& problems;
};

}  // namespace tarnova
