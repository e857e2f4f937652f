#include "host/pictures/outline_trace.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace tarnova {

namespace {

struct Step {
    std::int64_t dx, dy;
};
constexpr Step steps[] = {{1, 0}, {0, 1}, {-1, 0}, {0, -1}};  // each to the right of the one before

/// The point ahead of a corner of the raster, to the right or the left of the way. A corner has the point of its own
/// coordinates below and right of it.
bool visibleAhead(const VisibleMask& mask, std::int64_t x, std::int64_t y, std::size_t way, bool onRight) {
    constexpr Step right[] = {{0, 0}, {-1, 0}, {-1, -1}, {0, -1}}, left[] = {{0, -1}, {0, 0}, {-1, 0}, {-1, -1}};
    const Step& to = onRight ? right[way] : left[way];
    return mask.at(x + to.dx, y + to.dy);
}

/// Walks along the sides of visible points, which lie on the right, from the corner at the upper left of a point back
/// to it. Upper sides that are passed are marked in `passed`.
TracedContour walk(const VisibleMask& mask, std::uint32_t startX, std::uint32_t startY, std::vector<bool>& passed) {
    TracedContour out;
    std::int64_t x = startX, y = startY;
    std::size_t way = 0;
    double twice = 0;
    do {
        if (way == 0) passed[static_cast<std::size_t>(y) * mask.width + static_cast<std::size_t>(x)] = true;
        const auto [dx, dy] = steps[way];
        twice += double(x) * double(y + dy) - double(x + dx) * double(y);
        x += dx;
        y += dy;
        const std::size_t before = way;
        if (!visibleAhead(mask, x, y, way, true)) {
            way = (way + 1) % 4;
        } else if (visibleAhead(mask, x, y, way, false)) {
            way = (way + 3) % 4;
        }
        if (way != before) out.corners.push_back({double(x), double(y)});
    } while (x != startX || y != startY || way != 0);
    out.area = std::abs(twice) / 2;
    return out;
}

double distanceFromLine(PMPoint p, PMPoint a, PMPoint b) {
    const double dx = b.x - a.x, dy = b.y - a.y, length = std::hypot(dx, dy);
    if (length == 0) return std::hypot(p.x - a.x, p.y - a.y);
    return std::abs(dx * (p.y - a.y) - dy * (p.x - a.x)) / length;
}

/// Keeps the corners of [first, last] that a line between the two would miss by more than the tolerance (Ramer, Douglas
/// and Peucker).
void keepCorners(const std::vector<PMPoint>& line, std::size_t first, std::size_t last, double tolerance,
                 std::vector<bool>& kept) {
    std::vector<std::pair<std::size_t, std::size_t>> todo{{first, last}};
    while (!todo.empty()) {
        const auto [from, to] = todo.back();
        todo.pop_back();
        double worst = tolerance;
        std::size_t at = from;
        for (std::size_t i = from + 1; i < to; ++i) {
            const double away = distanceFromLine(line[i], line[from], line[to]);
            if (away > worst) {
                worst = away;
                at = i;
            }
        }
        if (at == from) continue;
        kept[at] = true;
        todo.push_back({from, at});
        todo.push_back({at, to});
    }
}

/// In pieces, so that the time stays in proportion to the corners.
std::vector<PMPoint> simplified(std::vector<PMPoint> corners, double tolerance) {
    if (tolerance <= 0) return corners;
    constexpr std::size_t piece = 512;
    const std::size_t count = corners.size();
    corners.push_back(corners.front());
    std::vector<bool> kept(corners.size());
    const std::size_t length = std::min(piece, std::max<std::size_t>(count / 2, 1));
    for (std::size_t first = 0; first < count; first += length) {
        kept[first] = true;
        keepCorners(corners, first, std::min(first + length, count), tolerance, kept);
    }
    std::vector<PMPoint> out;
    for (std::size_t i = 0; i < count; ++i) {
        if (kept[i]) out.push_back(corners[i]);
    }
    return out;
}

}  // namespace

std::vector<TracedContour> traceMask(const VisibleMask& mask, double tolerance) {
    std::vector<TracedContour> out;
    std::vector<bool> passed(mask.points.size());
    const auto isLarger = [](const TracedContour& a, const TracedContour& b) { return a.area > b.area; };
    for (std::uint32_t y = 0; y < mask.height; ++y) {
        for (std::uint32_t x = 0; x < mask.width; ++x) {
            const bool isUpperSide = mask.at(x, y) && !mask.at(x, std::int64_t{y} - 1);
            if (!isUpperSide || passed[std::size_t{y} * mask.width + x]) continue;
            TracedContour contour = walk(mask, x, y, passed);
            contour.corners = simplified(std::move(contour.corners), tolerance);
            if (contour.corners.size() > 2) out.push_back(std::move(contour));
            if (out.size() < 2 * tracedContourLimit) continue;
            std::ranges::nth_element(out, out.begin() + tracedContourLimit, isLarger);
            out.resize(tracedContourLimit);
        }
    }
    std::ranges::stable_sort(out, isLarger);
    if (out.size() > tracedContourLimit) out.resize(tracedContourLimit);
    return out;
}

}  // namespace tarnova
