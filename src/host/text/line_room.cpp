#include "host/text/line_room.h"

#include <algorithm>
#include <limits>

namespace tarnova {

namespace {

constexpr float everywhere = std::numeric_limits<float>::max();
constexpr float edgeTolerance = 0.01F;  // points that rounding may add to where a line and an item meet

bool standsBetween(const WrapArea& area, float top, float bottom) {
    return static_cast<float>(area.box.top) < bottom - edgeTolerance &&
           static_cast<float>(area.box.bottom) > top + edgeTolerance;
}

}  // namespace

void LineRooms::enter(const std::vector<WrapBox>& wraps, const ColumnBox& column) {
    areas_.clear();
    for (const WrapBox& wrap : wraps) {
        if (wrap.frameIndex == column.frameIndex && wrap.area.box.overlaps(column.box)) areas_.push_back(wrap.area);
    }
    column_ = {static_cast<float>(column.box.left), static_cast<float>(column.box.right)};
}

/// What an area takes of a line beside it.
LineRoom LineRooms::blockedBy(const WrapArea& area) const {
    const auto left = static_cast<float>(area.box.left), right = static_cast<float>(area.box.right);
    if (area.kind != TextWrap::Kind::bounds) return {-everywhere, everywhere};
    switch (area.side) {
        case TextWrap::Side::left:
            return {left, everywhere};
        case TextWrap::Side::right:
            return {-everywhere, right};
        case TextWrap::Side::largest:
            return left - column_.left >= column_.right - right ? LineRoom{left, everywhere}
                                                                : LineRoom{-everywhere, right};
        default:
            return {left, right};
    }
}

void LineRooms::block(const LineRoom& blocked) {
    static thread_local std::vector<LineRoom> left;
    left.clear();
    for (const LineRoom& room : rooms_) {
        if (blocked.right <= room.left || blocked.left >= room.right) {
            left.push_back(room);
            continue;
        }
        const LineRoom before{room.left, blocked.left}, behind{blocked.right, room.right};
        if (before.right - before.left >= leastLineRoom) left.push_back(before);
        if (behind.right - behind.left >= leastLineRoom) left.push_back(behind);
    }
    rooms_.swap(left);
}

const std::vector<LineRoom>& LineRooms::between(float top, float bottom, float left, float right) {
    rooms_.assign(1, {left, right});
    for (const WrapArea& area : areas_) {
        if (standsBetween(area, top, bottom)) block(blockedBy(area));
    }
    return rooms_;
}

float LineRooms::below(float top, float bottom) const {
    float next = everywhere;
    for (const WrapArea& area : areas_) {
        if (standsBetween(area, top, bottom)) next = std::min(next, static_cast<float>(area.box.bottom));
    }
    return next == everywhere ? top : next;
}

bool LineRooms::isOverAt(float bottom) const {
    return std::any_of(areas_.begin(), areas_.end(), [bottom](const WrapArea& area) {
        return area.kind == TextWrap::Kind::jumpColumn && static_cast<float>(area.box.top) < bottom - edgeTolerance;
    });
}

}  // namespace tarnova
