// What is free of a column beside the items that text runs around.

#pragma once

#include <vector>

#include "host/text/compose_input.h"

namespace tarnova {

/// A stretch of a line that text may fill, in the coordinates of the column's frame.
struct LineRoom {
    float left = 0;
    float right = 0;
};

/// Narrower stretches beside an item stay empty, in points.
inline constexpr float leastLineRoom = 12;

class LineRooms {
 public:
    /// Takes what stands in a column.
    void enter(const std::vector<WrapBox>& wraps, const ColumnBox& column);
    /// Nothing does: lines are as wide as the column.
    [[nodiscard]] bool isWhole() const { return areas_.empty(); }

    /// What is free between two heights and two sides, from left to right.
    [[nodiscard]] const std::vector<LineRoom>& between(float top, float bottom, float left, float right);
    /// The first height below `top` at which more may be free for a line from `top` to `bottom`; `top` itself when
    /// nothing stands beside it.
    [[nodiscard]] float below(float top, float bottom) const;
    /// The column ends above a line whose bottom is here.
    [[nodiscard]] bool isOverAt(float bottom) const;

 private:
    [[nodiscard]] LineRoom blockedBy(const WrapArea& area) const;
    void block(const LineRoom& blocked);

    std::vector<WrapArea> areas_;
    std::vector<LineRoom> rooms_;
    LineRoom column_;
};

}  // namespace tarnova
