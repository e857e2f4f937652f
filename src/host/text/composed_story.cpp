#include "host/text/composed_story.h"

#include <algorithm>
#include <utility>

namespace tarnova {

std::int32_t ComposedStory::columnOf(std::int32_t position) const {
    if (position < 0 || position >= shownLimit) return -1;
    const auto behind =
        std::upper_bound(columns.begin(), columns.end(), position,
                         [](std::int32_t at, const ComposedColumn& column) { return at < column.limit; });
    return behind == columns.end() ? -1 : static_cast<std::int32_t>(behind - columns.begin());
}

std::optional<AnchorPoint> ComposedStory::anchorAt(std::int32_t position) const {
    const auto found =
        std::lower_bound(anchors.begin(), anchors.end(), position,
                         [](const PlacedAnchor& anchor, std::int32_t at) { return anchor.position < at; });
    const std::int32_t column = columnOf(position);
    if (column < 0 || found == anchors.end() || found->position != position) return std::nullopt;
    const ComposedColumn& shows = columns[static_cast<std::size_t>(column)];
    const auto baseline = static_cast<double>(lines[found->line].baseline + found->y);
    return AnchorPoint{shows.frameIndex,
                       shows.box,
                       static_cast<double>(found->x),
                       baseline,
                       baseline - static_cast<double>(found->above),
                       {static_cast<double>(found->directionX), static_cast<double>(found->directionY)}};
}

namespace {

/// The bounds of the glyphs of a run that show [start, limit); nothing when none does.
std::optional<PMRect> boundsInRun(const ComposedStory& text, const ComposedLine& line, const GlyphRun& run,
                                  std::int32_t start, std::int32_t limit) {
    const double scale = static_cast<double>(run.size) * static_cast<double>(run.horizontalScale) / 1000;
    double pen = 0, left = 0, right = -1;
    for (std::uint32_t i = 0; i < run.glyphCount; ++i) {
        const PlacedGlyph& glyph = text.glyphs[run.firstGlyph + i];
        const double behind = pen + static_cast<double>(glyph.advance) * scale;
        if (std::cmp_greater_equal(glyph.position, start) && std::cmp_less(glyph.position, limit)) {
            if (right < left) left = pen;
            right = std::max(behind, left);
        }
        pen = behind;
    }
    if (right < left) return std::nullopt;
    const bool isTurned = run.directionY != 0 || run.directionX != 1;
    const double raised = isTurned ? 0 : static_cast<double>(line.baseline - run.y);
    const auto along = static_cast<double>(run.directionX), across = static_cast<double>(run.directionY);
    const PMMatrix turn{along, across, -across, along, static_cast<double>(run.x), static_cast<double>(run.y)};
    return turn.mapBounds(
        {left, raised - static_cast<double>(line.ascent), right, raised + static_cast<double>(line.descent)});
}

}  // namespace

void ComposedStory::addBoundsOf(std::size_t firstColumn, std::size_t columnCount, std::int32_t textStart,
                                std::int32_t start, std::int32_t limit, std::vector<LineBounds>& out) const {
    start -= textStart;
    limit -= textStart;
    for (std::size_t c = firstColumn; c < firstColumn + columnCount; ++c) {
        const ComposedColumn& column = columns[c];
        for (std::uint32_t i = column.firstLine; i < column.firstLine + column.lineCount; ++i) {
            const ComposedLine& line = lines[i];
            if (line.limit <= start || line.start >= limit) continue;
            for (std::uint32_t r = line.firstRun; r < line.firstRun + line.runCount; ++r) {
                const auto bounds = boundsInRun(*this, line, runs[r], start, limit);
                if (bounds) out.push_back({column.frameIndex, *bounds});
            }
        }
    }
}

}  // namespace tarnova
