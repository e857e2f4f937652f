#include "host/text/path_line.h"

#include <gtest/gtest.h>

#include <cmath>

#include "host/model/item_shape.h"

namespace tarnova {
namespace {

SubPath lines(std::vector<PMPoint> points, bool closed) {
    SubPath out{points.front(), {}, closed};
    for (std::size_t i = 1; i < points.size(); ++i)
        out.segments.push_back({PathSegment::Kind::line, {}, {}, points[i]});
    return out;
}

void expectPlace(const PathLine::Place& place, PMPoint point, PMPoint direction, double within, const char* name) {
    EXPECT_NEAR(place.point.x, point.x, within) << name;
    EXPECT_NEAR(place.point.y, point.y, within) << name;
    EXPECT_NEAR(place.direction.x, direction.x, within) << name;
    EXPECT_NEAR(place.direction.y, direction.y, within) << name;
}

TEST(PathLine, PlacesOnStraightLines) {
    const SubPath corner = lines({{0, 0}, {30, 0}, {30, 40}}, false);
    const PathLine open(corner, false), back(corner, true), closed(lines({{0, 0}, {30, 0}, {30, 40}}, true), false);
    EXPECT_DOUBLE_EQ(open.length(), 70);
    EXPECT_DOUBLE_EQ(closed.length(), 120) << "with the way back to the start";
    expectPlace(open.at(10), {10, 0}, {1, 0}, 1e-9, "on the first line");
    expectPlace(open.at(50), {30, 20}, {0, 1}, 1e-9, "on the second");
    expectPlace(back.at(10), {30, 30}, {0, -1}, 1e-9, "from the end");
    expectPlace(closed.at(95), {15, 20}, {-0.6, -0.8}, 1e-9, "on the closing line");
    expectPlace(open.at(-5), {-5, 0}, {1, 0}, 1e-9, "in front of the start");
    expectPlace(open.at(75), {30, 45}, {0, 1}, 1e-9, "behind the end");
}

TEST(PathLine, PathsWithoutExtentHaveNoLength) {
    EXPECT_EQ(PathLine({{3, 3}, {}, true}, false).length(), 0);
    EXPECT_EQ(PathLine(lines({{3, 3}, {3, 3}}, true), false).length(), 0);
}

/// Curves whose control points lie on their ends still have a direction there.
TEST(PathLine, CurvesWithoutHandlesHaveADirection) {
    const SubPath path{{0, 0}, {{PathSegment::Kind::curve, {0, 0}, {40, 30}, {40, 30}}}, false};
    const PathLine line(path, false);
    EXPECT_NEAR(line.length(), 50, 1e-6);
    for (const double at : {0.0, 25.0, 50.0})
        expectPlace(line.at(at), {at * 0.8, at * 0.6}, {0.8, 0.6}, 1e-6, "a straight curve");
}

}  // namespace
}  // namespace tarnova
