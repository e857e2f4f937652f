#include "host/pictures/visible_mask.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace tarnova {

namespace {

constexpr double opaque = 255;

/// Rec. 601, of the pixel over white.
double lightnessAt(const PictureSamples& samples, std::size_t pixel) {
    const std::uint8_t* v = samples.values.data() + pixel * componentsOf(samples.color);
    double light = v[0];
    if (samples.color == PictureColor::rgb) light = 0.299 * v[0] + 0.587 * v[1] + 0.114 * v[2];
    if (samples.color == PictureColor::cmyk) {
        light = (opaque - (0.299 * v[0] + 0.587 * v[1] + 0.114 * v[2])) * (opaque - v[3]) / opaque;
    }
    const double alpha = samples.alpha.empty() ? opaque : samples.alpha[pixel];
    return opaque - (opaque - light) * alpha / opaque;
}

/// Squared distances from the points where `from` is 0, along one line: the lower envelope of parabolas (Felzenszwalb
/// and Huttenlocher, "Distance transforms of sampled functions").
class LineDistance {
 public:
    explicit LineDistance(std::size_t length) : vertex(length), border(length + 1), result(length) {}

    const std::vector<double>& of(const std::vector<double>& from) {
        const std::size_t n = result.size();
        std::size_t last = 0;
        vertex[0] = 0;
        border[0] = -unreached;
        border[1] = unreached;
        for (std::size_t q = 1; q < n; ++q) {
            double crossing = meet(from, q, vertex[last]);
            while (last > 0 && crossing <= border[last])
                crossing = meet(from, q, vertex[--last]);
            vertex[++last] = q;
            border[last] = crossing;
            border[last + 1] = unreached;
        }
        for (std::size_t q = 0, k = 0; q < n; ++q) {
            while (border[k + 1] < double(q))
                ++k;
            const double away = double(q) - double(vertex[k]);
            result[q] = away * away + from[vertex[k]];
        }
        return result;
    }

    static constexpr double unreached = 1e15;

 private:
    static double meet(const std::vector<double>& f, std::size_t q, std::size_t v) {
        const double a = double(q), b = double(v);
        return (f[q] + a * a - f[v] - b * b) / (2 * (a - b));
    }
    std::vector<std::size_t> vertex;
    std::vector<double> border;
    std::vector<double> result;
};

/// Squared distances of all points of a raster from those that are 0 in it.
void squareDistances(std::vector<double>& field, std::size_t width, std::size_t height) {
    std::vector<double> line(height);
    LineDistance columns(height), rows(width);
    for (std::size_t x = 0; x < width; ++x) {
        for (std::size_t y = 0; y < height; ++y)
            line[y] = field[y * width + x];
        const std::vector<double>& far = columns.of(line);
        for (std::size_t y = 0; y < height; ++y)
            field[y * width + x] = far[y];
    }
    for (std::size_t y = 0; y < height; ++y) {
        const auto begin = field.begin() + static_cast<std::ptrdiff_t>(y * width);
        line.assign(begin, begin + static_cast<std::ptrdiff_t>(width));
        std::ranges::copy(rows.of(line), begin);
    }
}

/// The mask with a border of hidden points, as 0 where `value` is and far away elsewhere.
std::vector<double> distanceField(const VisibleMask& mask, bool value) {
    const std::size_t width = mask.width + 2u, height = mask.height + 2u;
    std::vector<double> out(width * height);
    for (std::size_t y = 0; y < height; ++y) {
        for (std::size_t x = 0; x < width; ++x) {
            const bool visible = mask.at(static_cast<std::int64_t>(x) - 1, static_cast<std::int64_t>(y) - 1);
            out[y * width + x] = visible == value ? 0 : LineDistance::unreached;
        }
    }
    squareDistances(out, width, height);
    return out;
}

/// A curve as short lines, appended to `out` behind its start.
void flatten(const OutlineKnot& from, const OutlineKnot& to, std::vector<PMPoint>& out) {
    constexpr int steps = 16;
    for (int i = 1; i <= steps; ++i) {
        const double t = double(i) / steps, u = 1 - t;
        const double a = u * u * u, b = 3 * u * u * t, c = 3 * u * t * t, d = t * t * t;
        out.push_back({a * from.at.x + b * from.out.x + c * to.in.x + d * to.at.x,
                       a * from.at.y + b * from.out.y + c * to.in.y + d * to.at.y});
    }
}

/// Where the outline crosses the middle of each row.
std::vector<std::vector<double>> crossings(const PictureOutline& outline, std::uint32_t height) {
    std::vector<std::vector<double>> rows(height);
    std::vector<PMPoint> line;
    for (const PictureContour& contour : outline) {
        line.assign(1, contour.front().at);
        for (std::size_t i = 0; i < contour.size(); ++i)
            flatten(contour[i], contour[(i + 1) % contour.size()], line);
        for (std::size_t i = 1; i < line.size(); ++i) {
            const PMPoint &up = line[i].y < line[i - 1].y ? line[i] : line[i - 1],
                          &low = line[i].y < line[i - 1].y ? line[i - 1] : line[i];
            const double first = std::clamp(std::ceil(up.y - 0.5), 0.0, double(height));
            const double limit = std::clamp(std::ceil(low.y - 0.5), 0.0, double(height));
            for (auto row = static_cast<std::size_t>(first); row < static_cast<std::size_t>(limit); ++row) {
                const double share = (double(row) + 0.5 - up.y) / (low.y - up.y);
                rows[row].push_back(up.x + share * (low.x - up.x));
            }
        }
    }
    return rows;
}

}  // namespace

VisibleMask maskOfSamples(const PictureSamples& samples, double limit, std::uint32_t sideLimit) {
    const std::uint32_t longer = std::max(samples.width, samples.height);
    const std::uint32_t step = (longer + sideLimit - 1) / sideLimit;
    VisibleMask out{(samples.width + step - 1) / step, (samples.height + step - 1) / step, {}};
    out.points.reserve(std::size_t{out.width} * out.height);
    for (std::uint32_t top = 0; top < samples.height; top += step) {
        for (std::uint32_t left = 0; left < samples.width; left += step) {
            const std::uint32_t right = std::min(left + step, samples.width);
            const std::uint32_t bottom = std::min(top + step, samples.height);
            double sum = 0;
            for (std::uint32_t y = top; y < bottom; ++y) {
                for (std::uint32_t x = left; x < right; ++x)
                    sum += lightnessAt(samples, std::size_t{y} * samples.width + x);
            }
            out.points.push_back(sum / (double(right - left) * (bottom - top)) < limit ? 1 : 0);
        }
    }
    return out;
}

VisibleMask maskOfOutline(const PictureOutline& outline, std::uint32_t width, std::uint32_t height) {
    VisibleMask out{width, height, std::vector<std::uint8_t>(std::size_t{width} * height)};
    std::vector<std::vector<double>> rows = crossings(outline, height);
    for (std::uint32_t y = 0; y < height; ++y) {
        std::vector<double>& at = rows[y];
        std::ranges::sort(at);
        for (std::size_t i = 0; i + 1 < at.size(); i += 2) {
            const auto first = static_cast<std::uint32_t>(std::clamp(std::ceil(at[i] - 0.5), 0.0, double(width)));
            const auto end = static_cast<std::uint32_t>(std::clamp(std::ceil(at[i + 1] - 0.5), 0.0, double(width)));
            const auto row = out.points.begin() + static_cast<std::ptrdiff_t>(std::size_t{y} * width);
            std::fill(row + first, row + std::max(first, end), std::uint8_t{1});
        }
    }
    return out;
}

void fillHoles(VisibleMask& mask) {
    constexpr std::uint8_t outside = 2;
    std::vector<std::pair<std::uint32_t, std::uint32_t>> todo;
    const auto visit = [&](std::int64_t x, std::int64_t y) {
        if (x < 0 || y < 0 || x >= mask.width || y >= mask.height) return;
        std::uint8_t& point = mask.points[static_cast<std::size_t>(y) * mask.width + static_cast<std::size_t>(x)];
        if (point != 0) return;
        point = outside;
        todo.emplace_back(x, y);
    };
    for (std::uint32_t y = 0; y < mask.height; ++y) {
        const bool wholeRow = y == 0 || y + 1 == mask.height;
        for (std::uint32_t x = 0; x < mask.width; x += wholeRow ? 1 : std::max(mask.width - 1, 1u))
            visit(x, y);
    }
    while (!todo.empty()) {
        const auto [x, y] = todo.back();
        todo.pop_back();
        for (std::int64_t dy = -1; dy <= 1; ++dy) {
            for (std::int64_t dx = -1; dx <= 1; ++dx)
                visit(x + dx, y + dy);
        }
    }
    for (std::uint8_t& point : mask.points)
        point = point == outside ? 0 : 1;
}

void shrinkMask(VisibleMask& mask, double distance) {
    if (distance == 0) return;
    const bool grows = distance < 0;
    const std::vector<double> field = distanceField(mask, grows);
    for (std::uint32_t y = 0; y < mask.height; ++y) {
        for (std::uint32_t x = 0; x < mask.width; ++x) {
            const double away = field[(y + 1) * (mask.width + std::size_t{2}) + x + 1];
            std::uint8_t& point = mask.points[std::size_t{y} * mask.width + x];
            if (away <= distance * distance) point = grows ? 1 : 0;
        }
    }
}

}  // namespace tarnova
