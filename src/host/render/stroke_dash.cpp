#include "host/render/stroke_dash.h"

#include <algorithm>
#include <cmath>

namespace tarnova {

namespace {

double distance(PMPoint a, PMPoint b) {
    return std::hypot(b.x - a.x, b.y - a.y);
}

/// Of a curve that of the lines through its control points, which is never less.
double lengthAtMost(const SubPath& path) {
    double out = 0;
    PMPoint at = path.start;
    for (const PathSegment& segment : path.segments) {
        const bool isCurve = segment.kind == PathSegment::Kind::curve;
        out += isCurve ? distance(at, segment.control1) + distance(segment.control1, segment.control2) +
                             distance(segment.control2, segment.to)
                       : distance(at, segment.to);
        at = segment.to;
    }
    return path.closed ? out + distance(at, path.start) : out;
}

}  // namespace

std::vector<double> drawnDash(const ItemShape& shape) {
    std::vector<double> dash;
    double total = 0;
    for (const double length : shape.stroke.dash) {
        dash.push_back(std::max(length, 0.0));
        total += dash.back();
    }
    double length = 0;
    for (const SubPath& path : shape.path)
        length += lengthAtMost(path);
    const double dashes = static_cast<double>(dash.size()) * length / total;
    if (!(total > 0) || dashes > dashCountLimit) dash.clear();
    return dash;
}

}  // namespace tarnova
