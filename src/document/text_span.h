// A range of a story.

#pragma once

#include <cstdint>

namespace tarnova {

/// Code points from `start` on.
struct textSpanRec {
    std::int32_t start = 0;
    std::int32_t length = 0;
    friend bool operator==(const textSpanRec&, const textSpanRec&) = default;
};

}  // namespace tarnova
