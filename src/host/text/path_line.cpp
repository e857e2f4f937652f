#include "host/text/path_line.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace tarnova {

namespace {

constexpr double flatness = 0.01;               // points between a curve and its pieces
constexpr std::size_t curvePieceLimit = 1000;   // of one curve
constexpr std::size_t pathPieceLimit = 200000;  // of all curves of a path, one for each at least

PMPoint between(PMPoint a, PMPoint b, double t) {
    return {a.x + (b.x - a.x) * t, a.y + (b.y - a.y) * t};
}

double distance(PMPoint a, PMPoint b) {
    return std::hypot(b.x - a.x, b.y - a.y);
}

/// How far the middle one of three control points lies from where it would be on a straight line, doubled.
double bend(PMPoint a, PMPoint b, PMPoint c) {
    return std::hypot(a.x - 2 * b.x + c.x, a.y - 2 * b.y + c.y);
}

}  // namespace

PathLine::PathLine(const SubPath& path, bool reversed) {
    std::vector<Curve> all;
    all.reserve(path.segments.size() + 1);
    PMPoint from = path.start;
    for (const PathSegment& s : path.segments) {
        const bool isCurve = s.kind == PathSegment::Kind::curve;
        all.push_back({{from, isCurve ? s.control1 : between(from, s.to, 1.0 / 3),
                        isCurve ? s.control2 : between(from, s.to, 2.0 / 3), s.to}});
        from = s.to;
    }
    if (path.closed && from != path.start) {
        all.push_back({{from, between(from, path.start, 1.0 / 3), between(from, path.start, 2.0 / 3), path.start}});
    }
    if (reversed) {
        std::reverse(all.begin(), all.end());
        for (Curve& curve : all)
            std::reverse(std::begin(curve.p), std::end(curve.p));
    }
    const std::size_t pieces = pathPieceLimit / std::max<std::size_t>(all.size(), 1);
    for (const Curve& curve : all)
        addCurve(curve, std::clamp<std::size_t>(pieces, 1, curvePieceLimit));
}

/// Cuts a curve into pieces that are as good as straight. Their number is Wang's bound for a cubic curve.
void PathLine::addCurve(const Curve& curve, std::size_t pieceLimit) {
    const double most = std::max(bend(curve.p[0], curve.p[1], curve.p[2]), bend(curve.p[1], curve.p[2], curve.p[3]));
    const double wanted = std::ceil(std::sqrt(0.75 * most / flatness));
    const auto count = static_cast<std::size_t>(std::clamp(wanted, 1.0, static_cast<double>(pieceLimit)));
    double reached = length();
    PMPoint from = curve.p[0];
    for (std::size_t i = 1; i <= count; ++i) {
        const double t = static_cast<double>(i) / static_cast<double>(count);
        const PMPoint to = pointAt(curve, t);
        const double piece = distance(from, to);
        from = to;
        if (!(piece > 0)) continue;
        reached += piece;
        steps.push_back({reached, curves.size(), t});
    }
    curves.push_back(curve);
}

PMPoint PathLine::pointAt(const Curve& curve, double t) {
    const PMPoint a = between(curve.p[0], curve.p[1], t), b = between(curve.p[1], curve.p[2], t),
                  c = between(curve.p[2], curve.p[3], t);
    return between(between(a, b, t), between(b, c, t), t);
}

/// Where control points lie on each other, a curve has no derivative at its end: the way to the next point that lies
/// elsewhere is taken.
PMPoint PathLine::directionAt(const Curve& curve, double t) {
    const PMPoint a = between(curve.p[0], curve.p[1], t), b = between(curve.p[1], curve.p[2], t),
                  c = between(curve.p[2], curve.p[3], t);
    const std::pair<PMPoint, PMPoint> ways[] = {{between(a, b, t), between(b, c, t)}, {a, c}, {curve.p[0], curve.p[3]}};
    for (const auto& [from, to] : ways) {
        const double length = distance(from, to);
        if (length > 1e-9) return {(to.x - from.x) / length, (to.y - from.y) / length};
    }
    return {1, 0};
}

PathLine::Place PathLine::at(double distance) const {
    const double inside = std::clamp(distance, 0.0, length());
    const auto step = std::lower_bound(steps.begin(), steps.end() - 1, inside,
                                       [](const Step& s, double reached) { return s.length < reached; });
    const bool isFirst = step == steps.begin();
    const double before = isFirst ? 0 : (step - 1)->length;
    const double from = isFirst || (step - 1)->curve != step->curve ? 0 : (step - 1)->t;
    const double t = from + (step->t - from) * (inside - before) / (step->length - before);
    Place out{pointAt(curves[step->curve], t), directionAt(curves[step->curve], t)};
    out.point.x += out.direction.x * (distance - inside);
    out.point.y += out.direction.y * (distance - inside);
    return out;
}

}  // namespace tarnova
