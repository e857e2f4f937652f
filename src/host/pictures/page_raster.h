// PDF pages drawn to pixels, and what of a page is painted at all. For looking at a page only: outputs take the page
// itself.

#pragma once

#include <cstdint>
#include <memory>
#include <string_view>

#include "host/pictures/picture.h"

namespace tarnova {

/// The picture's page over white, at most `sideLimit` pixels a side. Null when it can't be drawn.
[[nodiscard]] std::shared_ptr<const PictureSamples> drawPage(const Picture& picture, std::uint32_t sideLimit);

/// The bounds of what a page (from 0) paints, in points from the upper left corner of its crop box as it is turned;
/// empty when it paints nothing or can't be drawn.
[[nodiscard]] PMRect paintedBounds(std::string_view pdf, std::int32_t page, bool onAllLayers);

}  // namespace tarnova
