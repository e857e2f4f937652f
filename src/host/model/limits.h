// What a document keeps to, so that what was saved can always be opened again.

#pragma once

#include <cstddef>

namespace tarnova {

/// Coordinates and lengths lie between minus and plus this many points, which leaves all sums finite and exact enough.
inline constexpr double coordinateLimit = 1e7;

/// How many groups may lie in each other.
inline constexpr std::size_t groupDepthLimit = 24;

/// How many texts may lie in each other by items that are anchored in them.
inline constexpr std::size_t anchorDepthLimit = 3;

}  // namespace tarnova
