#include "host/text/composed_story.h"

#include <algorithm>

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

}  // namespace tarnova
