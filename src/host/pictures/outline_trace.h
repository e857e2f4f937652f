// Outlines around the visible points of a mask.

#pragma once

#include <vector>

#include "document/geometry.h"
#include "host/pictures/visible_mask.h"

namespace tarnova {

inline constexpr std::size_t tracedContourLimit = 2000;  // the largest stay

/// A closed line around an area of visible points, or around a hole in one. Corners are those of points of the mask.
struct TracedContour {
    std::vector<PMPoint> corners;
    double area = 0;
};

/// Outlines that leave the sides of the points by at most `tolerance`. The largest come first.
[[nodiscard]] std::vector<TracedContour> traceMask(const VisibleMask& mask, double tolerance);

}  // namespace tarnova
