#include "host/text/line_around.h"

#include <algorithm>

namespace tarnova {

bool LineAround::find() {
    const std::size_t firstLimit = std::min(task_.piece + 1, task_.paragraph.pieces.size());
    const LineMeasure& whole = task_.measure;
    height = heightOfParts({{whole, {.first = task_.piece, .limit = firstLimit}}});
    float moved = 0;
    for (int tries = 0; tries < tryLimit; ++tries) {
        baseline = cursor_.baselineFor(height, task_.spaceBefore, task_.onGrid, moved);
        const float top = baseline - height.ascent, bottom = baseline + height.descent;
        if (!cursor_.fits(baseline, height) || cursor_.rooms().isOverAt(bottom)) return false;
        fill(cursor_.rooms().between(top, bottom, left() + whole.left, left() + whole.left + whole.width));
        if (parts.empty()) {
            const float next = cursor_.rooms().below(top, bottom);
            if (next <= top) return false;
            moved += next - top;
            continue;
        }
        const LineHeight needed = heightOfParts(parts);
        const bool isEnough =
            needed.ascent <= height.ascent && needed.descent <= height.descent && needed.leading <= height.leading;
        height.include(needed);
        height.above = needed.above;
        height.below = needed.below;
        if (isEnough) return true;
    }
    return false;
}

LineMeasure LineAround::measureOf(const LineRoom& room, std::int32_t hyphensAbove) const {
    const LineMeasure& whole = task_.measure;
    LineMeasure out = whole;
    out.left = room.left - left();
    out.width = room.right - room.left;
    const float fromRight = left() + whole.left + whole.width - room.right;
    out.start = whole.start + (task_.paragraph.isRightToLeft() ? fromRight : out.left - whole.left);
    out.hyphensAbove = hyphensAbove;
    return out;
}

/// Puts as much as fits into the stretches, in reading order. A stretch too narrow for a word stays empty, unless it is
/// the whole width.
void LineAround::fill(const std::vector<LineRoom>& rooms) {
    parts.clear();
    std::size_t piece = task_.piece;
    std::int32_t hyphensAbove = task_.measure.hyphensAbove;
    for (std::size_t i = 0; i < rooms.size(); ++i) {
        const LineRoom& room = rooms[task_.paragraph.isRightToLeft() ? rooms.size() - 1 - i : i];
        const LineMeasure measure = measureOf(room, hyphensAbove);
        const LineExtent extent = breakLine(task_.paragraph, piece, measure, task_.format, task_.input.text);
        const bool isNarrowed = measure.width < task_.measure.width;
        if (isNarrowed && extent.cutsWord) continue;
        if (widestAnchor(task_.paragraph, extent) > measure.width + widthTolerance) continue;
        parts.push_back({measure, extent});
        if (extent.isForced) return;
        piece = extent.limit;
        hyphensAbove = extent.showsHyphen ? hyphensAbove + 1 : 0;
    }
    if (!parts.empty()) task_.paragraph.rejoin(parts.back().extent.limit);
}

LineHeight LineAround::heightOfParts(const std::vector<LinePart>& of) const {
    LineHeight out;
    if (task_.emptyStyle != nullptr) out.include(*task_.emptyStyle);
    for (const LinePart& part : of)
        out.include(heightOf(task_.paragraph, part.extent));
    return out;
}

}  // namespace tarnova
