// The dash pattern with which a stroke is really drawn.

#pragma once

#include <vector>

#include "host/model/page_item.h"

namespace tarnova {

/// More dashes than this on one path are drawn as a solid line: nobody sees them, and a renderer would never end.
inline constexpr double dashCountLimit = 200'000;

/// Lengths on, off, on and so on; empty for a solid line, which a pattern without any length is too.
[[nodiscard]] std::vector<double> drawnDash(const ItemShape& shape);

}  // namespace tarnova
