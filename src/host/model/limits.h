// What a document keeps to, so that what was saved can always be opened again.

#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <iterator>

#include "document/geometry.h"

namespace tarnova {

/// Coordinates and lengths lie between minus and plus this many points, which leaves all sums finite and exact enough.
inline constexpr double coordinateLimit = 1e7;

/// True when all numbers of the matrix are coordinates that a document may have.
[[nodiscard]] inline bool withinCoordinates(const PMMatrix& m) {
    const double values[] = {m.a, m.b, m.c, m.d, m.tx, m.ty};
    return std::all_of(std::begin(values), std::end(values), [](double v) { return std::abs(v) <= coordinateLimit; });
}

/// How many groups may lie in each other.
inline constexpr std::size_t groupDepthLimit = 24;

/// How many texts may lie in each other by items that are anchored in them.
inline constexpr std::size_t anchorDepthLimit = 3;

}  // namespace tarnova
