// Shapes of page items: the path that a kind and its bounds stand for, and the bounds of a path.

#pragma once

#include <vector>

#include "host/model/page_item.h"

namespace tarnova {

/// The path of a rectangle, an ellipse in four curves, or a line from the top left to the bottom right corner. A
/// polygon has no path of its own: the result is empty.
[[nodiscard]] std::vector<SubPath> pathOf(pathInfoRec::Kind kind, const PMRect& bounds);

/// The exact bounds of a path, curves at their extremes; an empty path gives an empty rectangle.
[[nodiscard]] PMRect boundsOfPath(const std::vector<SubPath>& path);

/// How far a stroke can reach beyond the path.
[[nodiscard]] double strokeReach(const ItemShape& shape);

/// True when the two share at least a point.
[[nodiscard]] bool touches(const PMRect& a, const PMRect& b);

}  // namespace tarnova
