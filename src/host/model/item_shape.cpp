#include "host/model/item_shape.h"

#include <algorithm>
#include <cmath>

namespace tarnova {

namespace {

PathSegment lineTo(PMPoint to) {
    return {PathSegment::Kind::line, {}, {}, to};
}

SubPath rectanglePath(const PMRect& b) {
    return {{b.left, b.top}, {lineTo({b.right, b.top}), lineTo({b.right, b.bottom}), lineTo({b.left, b.bottom})}, true};
}

SubPath ellipsePath(const PMRect& b) {
    constexpr double kappa = 0.5522847498307936;  // control points of a quarter circle of radius 1
    const double cx = (b.left + b.right) / 2, cy = (b.top + b.bottom) / 2;
    const double dx = b.width() / 2 * kappa, dy = b.height() / 2 * kappa;
    const auto curve = [](PMPoint c1, PMPoint c2, PMPoint to) {
        return PathSegment{PathSegment::Kind::curve, c1, c2, to};
    };
    return {{cx, b.top},
            {curve({cx + dx, b.top}, {b.right, cy - dy}, {b.right, cy}),
             curve({b.right, cy + dy}, {cx + dx, b.bottom}, {cx, b.bottom}),
             curve({cx - dx, b.bottom}, {b.left, cy + dy}, {b.left, cy}),
             curve({b.left, cy - dy}, {cx - dx, b.top}, {cx, b.top})},
            true};
}

double curveAt(double t, double p0, double p1, double p2, double p3) {
    const double u = 1 - t;
    return u * u * u * p0 + 3 * u * u * t * p1 + 3 * u * t * t * p2 + t * t * t * p3;
}

/// Widens [low, high] by the extremes of one coordinate of a curve: the zeros of its derivative inside (0, 1).
void widenByCurve(double p0, double p1, double p2, double p3, double& low, double& high) {
    const auto widen = [&](double t) {
        if (!(t > 0 && t < 1)) return;
        const double value = curveAt(t, p0, p1, p2, p3);
        low = std::min(low, value);
        high = std::max(high, value);
    };
    const double a = -p0 + 3 * p1 - 3 * p2 + p3, b = 2 * (p0 - 2 * p1 + p2), c = p1 - p0;
    if (a == 0) {
        if (b != 0) widen(-c / b);
        return;
    }
    const double root = b * b - 4 * a * c;
    if (root < 0) return;
    widen((-b + std::sqrt(root)) / (2 * a));
    widen((-b - std::sqrt(root)) / (2 * a));
}

}  // namespace

std::vector<SubPath> pathOf(pathInfoRec::Kind kind, const PMRect& bounds) {
    switch (kind) {
        case pathInfoRec::Kind::rectangle:
            return {rectanglePath(bounds)};
        case pathInfoRec::Kind::ellipse:
            return {ellipsePath(bounds)};
        case pathInfoRec::Kind::line:
            return {{{bounds.left, bounds.top}, {lineTo({bounds.right, bounds.bottom})}, false}};
        case pathInfoRec::Kind::polygon:
        case pathInfoRec::Kind::none:
            break;
    }
    return {};
}

PMRect boundsOfPath(const std::vector<SubPath>& path) {
    if (path.empty()) return {};
    PMRect out{path[0].start.x, path[0].start.y, path[0].start.x, path[0].start.y};
    for (const SubPath& sub : path) {
        PMPoint from = sub.start;
        out = out.united({from.x, from.y, from.x, from.y});
        for (const PathSegment& s : sub.segments) {
            out = out.united({s.to.x, s.to.y, s.to.x, s.to.y});
            if (s.kind == PathSegment::Kind::curve) {
                widenByCurve(from.x, s.control1.x, s.control2.x, s.to.x, out.left, out.right);
                widenByCurve(from.y, s.control1.y, s.control2.y, s.to.y, out.top, out.bottom);
            }
            from = s.to;
        }
    }
    return out;
}

double strokeReach(const ItemShape& shape) {
    if (shape.stroke.paint.swatch == swatchNone) return 0;
    const bool spikes = shape.stroke.join == Stroke::Join::miter && shape.kind == pathInfoRec::Kind::polygon;
    return shape.stroke.weight / 2 * (spikes ? std::max(shape.stroke.miterLimit, 1.5) : 1.5);
}

bool touches(const PMRect& a, const PMRect& b) {
    return a.left <= b.right && b.left <= a.right && a.top <= b.bottom && b.top <= a.bottom;
}

}  // namespace tarnova
