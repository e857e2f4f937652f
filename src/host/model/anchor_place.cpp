#include "host/model/anchor_place.h"

namespace tarnova {

namespace {

using Edge = AnchorOptions::Edge;

/// Left side of a custom item: its left, middle or right at that of what it is measured from.
double customLeft(const AnchorOptions& options, const AnchorPoint& point, const PMRect& frame, double width) {
    if (options.xFrom == Edge::anchor) return point.x + options.x;
    const PMRect& from = options.xFrom == Edge::column ? point.column : frame;
    const double room = from.width() - width;
    const double share = options.align == AnchorOptions::Align::left     ? 0
                         : options.align == AnchorOptions::Align::center ? 0.5
                                                                         : 1;
    return from.left + room * share + options.x;
}

double customTop(const AnchorOptions& options, const AnchorPoint& point, const PMRect& frame) {
    if (options.yFrom == Edge::anchor) return point.baseline + options.y;
    return (options.yFrom == Edge::column ? point.column : frame).top + options.y;
}

}  // namespace

PMPoint placeOfAnchor(const AnchorOptions& options, const AnchorPoint& point, const PMRect& frame, PMPoint size) {
    switch (options.kind) {
        case AnchorOptions::Kind::inLine:
            return {point.x, point.baseline + options.y - size.y};
        case AnchorOptions::Kind::aboveLine:
            return {point.x, point.top};
        default:
            return {customLeft(options, point, frame, size.x), customTop(options, point, frame)};
    }
}

}  // namespace tarnova
