// Points, rectangles and affine matrices in points (1/72 inch). The y axis runs downward, as in a spread.

#pragma once

#include <algorithm>
#include <cmath>
#include <optional>

namespace tarnova {

struct PMPoint {
    double x = 0;
    double y = 0;
    friend bool operator==(const PMPoint&, const PMPoint&) = default;
};

struct PMRect {
    double left = 0;
    double top = 0;
    double right = 0;
    double bottom = 0;

    [[nodiscard]] double width() const { return right - left; }
    [[nodiscard]] double height() const { return bottom - top; }
    /// True when the two share an area.
    [[nodiscard]] bool overlaps(const PMRect& other) const {
        return left < other.right && other.left < right && top < other.bottom && other.top < bottom;
    }
    /// The smallest rectangle that holds both.
    [[nodiscard]] PMRect united(const PMRect& other) const {
        return {std::min(left, other.left), std::min(top, other.top), std::max(right, other.right),
                std::max(bottom, other.bottom)};
    }
    friend bool operator==(const PMRect&, const PMRect&) = default;
};

/// x' = a x + c y + tx, y' = b x + d y + ty: the order of the operands of a PDF "cm" (ISO 32000-2, 8.3.4).
struct PMMatrix {
    double a = 1;
    double b = 0;
    double c = 0;
    double d = 1;
    double tx = 0;
    double ty = 0;

    [[nodiscard]] PMPoint map(PMPoint p) const { return {a * p.x + c * p.y + tx, b * p.x + d * p.y + ty}; }
    /// This matrix first, then `next`.
    [[nodiscard]] PMMatrix then(const PMMatrix& next) const {
        return {next.a * a + next.c * b,
                next.b * a + next.d * b,
                next.a * c + next.c * d,
                next.b * c + next.d * d,
                next.a * tx + next.c * ty + next.tx,
                next.b * tx + next.d * ty + next.ty};
    }
    /// The bounds of the mapped rectangle.
    [[nodiscard]] PMRect mapBounds(const PMRect& r) const {
        const PMPoint p[4] = {map({r.left, r.top}), map({r.right, r.top}), map({r.left, r.bottom}),
                              map({r.right, r.bottom})};
        PMRect out{p[0].x, p[0].y, p[0].x, p[0].y};
        for (const PMPoint& q : p)
            out = out.united({q.x, q.y, q.x, q.y});
        return out;
    }
    /// The way back; nothing for a matrix that flattens areas.
    [[nodiscard]] std::optional<PMMatrix> inverse() const {
        const double det = a * d - b * c;
        if (det == 0 || !std::isfinite(1 / det)) return std::nullopt;
        return PMMatrix{d / det, -b / det, -c / det, a / det, (c * ty - d * tx) / det, (b * tx - a * ty) / det};
    }
    [[nodiscard]] bool isIdentity() const { return *this == PMMatrix{}; }
    friend bool operator==(const PMMatrix&, const PMMatrix&) = default;
};

/// A turn to the left around a point.
[[nodiscard]] inline PMMatrix turnAround(PMPoint middle, double degrees) {
    const double angle = degrees / 57.29577951308232;
    const PMMatrix turn{std::cos(angle), -std::sin(angle), std::sin(angle), std::cos(angle), 0, 0};
    return PMMatrix{1, 0, 0, 1, -middle.x, -middle.y}.then(turn).then({1, 0, 0, 1, middle.x, middle.y});
}

}  // namespace tarnova
