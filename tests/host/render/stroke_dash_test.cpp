#include "host/render/stroke_dash.h"

#include <gtest/gtest.h>

#include "host/model/item_shape.h"

namespace tarnova {
namespace {

TEST(DrawnDash, PatternsThatWouldNeverEndAreSolid) {
    using Kind = pathInfoRec::Kind;
    struct testRow {
        const char* name;
        Kind kind;
        PMRect bounds;
        std::vector<double> dash, drawn;
    };
    const testRow rows[] = {
        {"plain", Kind::line, {0, 0, 100, 0}, {3, 2}, {3, 2}},
        {"below nothing", Kind::line, {0, 0, 100, 0}, {-1, 2}, {0, 2}},
        {"no length", Kind::line, {0, 0, 100, 0}, {0, 0}, {}},
        {"none", Kind::line, {0, 0, 100, 0}, {}, {}},
        {"as many as allowed", Kind::line, {0, 0, 200'000, 0}, {1}, {1}},
        {"a line too long", Kind::line, {0, 0, 200'001, 0}, {1}, {}},
        {"a way around", Kind::rectangle, {0, 0, 50'001, 50'000}, {1}, {}},
        {"curves", Kind::ellipse, {0, 0, 100'000, 100'000}, {1}, {}},
        {"no path", Kind::polygon, {0, 0, 1e7, 1e7}, {1}, {1}},
    };
    for (const auto& [name, kind, bounds, dash, drawn] : rows) {
        ItemShape shape;
        shape.kind = kind;
        shape.path = pathOf(kind, bounds);
        shape.stroke.dash = dash;
        EXPECT_EQ(drawnDash(shape), drawn) << name;
    }
}

}  // namespace
}  // namespace tarnova
