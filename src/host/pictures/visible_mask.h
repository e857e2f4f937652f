// Which points of a picture are visible, on a raster of a bounded size.

#pragma once

#include <cstdint>
#include <vector>

#include "host/pictures/picture.h"

namespace tarnova {

/// Points by rows from the top; outside of it nothing is visible.
struct VisibleMask {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::vector<std::uint8_t> points;  // 1 visible, 0 hidden

    [[nodiscard]] bool at(std::int64_t x, std::int64_t y) const {
        return x >= 0 && y >= 0 && x < width && y < height &&
               points[static_cast<std::size_t>(y) * width + static_cast<std::size_t>(x)] != 0;
    }
};

/// Lightness of the pixels over white (0 to 255), averaged to at most `sideLimit` points a side, is below `limit`.
[[nodiscard]] VisibleMask maskOfSamples(const PictureSamples& samples, double limit, std::uint32_t sideLimit);

/// The middles of the points inside an outline (even-odd), whose coordinates are points of the raster.
[[nodiscard]] VisibleMask maskOfOutline(const PictureOutline& outline, std::uint32_t width, std::uint32_t height);

/// Shows the hidden points that no way over hidden ones, corners included, joins with the raster's edge.
void fillHoles(VisibleMask& mask);

/// Hides the points whose distance from a hidden one, or from the raster's edge, is `distance` at most; with a negative
/// distance shows those that are so far from a visible one.
void shrinkMask(VisibleMask& mask, double distance);

}  // namespace tarnova
