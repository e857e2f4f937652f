// How far the spaces of a justified line may give and take.

#pragma once

#include <cstddef>

#include "host/model/format.h"

namespace tarnova {

struct SpaceSum {
    std::size_t count = 0;
    float width = 0;  // points, as the font has them
};

/// The limits of a paragraph's word spaces, as parts of the font's own space: least <= wanted <= greatest.
struct WordSpaces {
    float least = 1;
    float wanted = 1;
    float greatest = 1;
    bool choosesLines = false;  // the end of a line depends on them

    /// Of a paragraph that isn't justified: spaces are as the font has them.
    explicit WordSpaces(const ParaFormat& format);

    /// How far a line with this slack, in points, lies from the wanted space: 0 is just right, 1 is at a limit. A line
    /// without a space to stretch is the worst there is.
    [[nodiscard]] float deviation(float slack, float spaceWidth) const;
    /// Points by which all the spaces of a line that isn't filled change.
    [[nodiscard]] float unfilled(float slack, float spaceWidth) const;
    /// Points by which all the spaces of a filled line change: to the least, but to any width.
    [[nodiscard]] float filled(float slack, float spaceWidth) const;
};

}  // namespace tarnova
