#include "host/files/shape_members.h"

#include <charconv>
#include <cmath>
#include <utility>

#include "host/model/item_shape.h"

namespace tarnova {

namespace {

constexpr const char* kindWords[] = {"none", "rectangle", "ellipse", "line", "polygon"};
constexpr const char* contentWords[] = {"unassigned", "graphic", "text"};
constexpr const char* joinWords[] = {"miter", "round", "bevel"};
constexpr const char* capWords[] = {"butt", "round", "square"};
constexpr const char* verticalWords[] = {"top", "center", "bottom", "justify"};
constexpr const char* firstBaselineWords[] = {"ascent", "capHeight", "xHeight", "leading", "fixed"};

bool same(PMPoint a, PMPoint b) {
    return a == b;
}

bool same(const std::vector<SubPath>& a, const std::vector<SubPath>& b) {
    if (a.size() != b.size()) return false;
    for (std::size_t i = 0; i < a.size(); ++i) {
        if (!same(a[i].start, b[i].start) || a[i].closed != b[i].closed ||
            a[i].segments.size() != b[i].segments.size()) {
            return false;
        }
        for (std::size_t j = 0; j < a[i].segments.size(); ++j) {
            const PathSegment &s = a[i].segments[j], &t = b[i].segments[j];
            const bool isCurve = s.kind == PathSegment::Kind::curve;
            if (s.kind != t.kind || !same(s.to, t.to)) return false;
            if (isCurve && (!same(s.control1, t.control1) || !same(s.control2, t.control2))) return false;
        }
    }
    return true;
}

/// Takes letters and numbers off a path's text.
class PathScanner {
 public:
    explicit PathScanner(const JsonValue& itsValue) : value(itsValue), left(stringOf(itsValue)) {}

    /// The next letter, or 0 at the end.
    char letter() {
        skipBlanks();
        if (left.empty()) return 0;
        const char out = left.front();
        left.remove_prefix(1);
        return out;
    }

    PMPoint point() {
        const double x = number();
        return {x, number()};
    }

 private:
    double number() {
        skipBlanks();
        double out = 0;
        const auto [end, code] = std::from_chars(left.data(), left.data() + left.size(), out);
        if (code != std::errc() || !(std::abs(out) <= coordinateLimit)) {
            faultAt(value,
                    "A coordinate is missing or wrong in the path at \"" + std::string(left.substr(0, 20)) + "\".");
        }
        left.remove_prefix(static_cast<std::size_t>(end - left.data()));
        return out;
    }

    void skipBlanks() {
        while (!left.empty() && (left.front() == ' ' || left.front() == ','))
            left.remove_prefix(1);
    }

    const JsonValue& value;
    std::string_view left;
};

void writeNumberText(std::string& out, double number) {
    char text[32];
    const auto result = std::to_chars(text, text + sizeof text, number == 0 ? 0.0 : number);
    out += ' ';
    out.append(text, result.ptr);
}

void writePointText(std::string& out, PMPoint p) {
    writeNumberText(out, p.x);
    writeNumberText(out, p.y);
}

struct StrokeTarget {
    const LayoutNames& names;
    Stroke stroke;
};

constexpr Member<StrokeTarget> strokeMembers[] = {
    {"color", [](StrokeTarget& t, const JsonValue& v) { t.stroke.paint = readPaint(v, t.names); }},
    {"weight", [](StrokeTarget& t, const JsonValue& v) { t.stroke.weight = lengthOf(v, 0); }},
    {"join", [](StrokeTarget& t, const JsonValue& v) { t.stroke.join = wordAs<Stroke::Join>(v, joinWords); }},
    {"cap", [](StrokeTarget& t, const JsonValue& v) { t.stroke.cap = wordAs<Stroke::Cap>(v, capWords); }},
    {"miterLimit", [](StrokeTarget& t, const JsonValue& v) { t.stroke.miterLimit = numberOf(v, 0, coordinateLimit); }},
    {"dash",
     [](StrokeTarget& t, const JsonValue& v) {
         requireArray(v);
         t.stroke.dash.clear();
         for (const JsonValue& element : v)
             t.stroke.dash.push_back(lengthOf(element, 0));
     }},
};

bool isUsual(const Stroke& stroke) {
    const Stroke usual;
    return stroke.paint == usual.paint && stroke.weight == usual.weight && stroke.join == usual.join &&
           stroke.cap == usual.cap && stroke.miterLimit == usual.miterLimit && stroke.dash.empty();
}

void writeStroke(JsonWriter& out, const Stroke& stroke, const DocumentModel& document) {
    if (isUsual(stroke)) return;
    const Stroke usual;
    out.key("stroke");
    out.beginObject();
    writePaint(out, "color", stroke.paint, document);
    if (stroke.weight != usual.weight) out.member("weight", stroke.weight);
    if (stroke.join != usual.join) out.member("join", joinWords[static_cast<std::size_t>(stroke.join)]);
    if (stroke.cap != usual.cap) out.member("cap", capWords[static_cast<std::size_t>(stroke.cap)]);
    if (stroke.miterLimit != usual.miterLimit) out.member("miterLimit", stroke.miterLimit);
    if (!stroke.dash.empty()) out.numbers("dash", stroke.dash);
    out.end();
}

void writeTextOptions(JsonWriter& out, const TextFrameOptions& text) {
    const TextFrameOptions usual;
    if (text.insetTop != 0 || text.insetLeft != 0 || text.insetBottom != 0 || text.insetRight != 0) {
        out.numbers("insets", {text.insetTop, text.insetLeft, text.insetBottom, text.insetRight});
    }
    if (text.columns != usual.columns) out.member("columns", text.columns);
    if (text.gutter != usual.gutter) out.member("gutter", text.gutter);
    if (text.verticalAlignment != usual.verticalAlignment) {
        out.member("verticalAlign", verticalWords[static_cast<std::size_t>(text.verticalAlignment)]);
    }
    if (text.paragraphSpaceLimit != 0) out.member("paragraphSpaceLimit", text.paragraphSpaceLimit);
    if (text.firstBaseline != usual.firstBaseline) {
        out.member("firstBaseline", firstBaselineWords[static_cast<std::size_t>(text.firstBaseline)]);
    }
    if (text.leastFirstBaseline != 0) out.member("leastFirstBaseline", text.leastFirstBaseline);
    if (text.grid) writeBaselineGrid(out, *text.grid);
    if (text.ignoresWrap) out.member("ignoreWrap", true);
}

void note(ShapeTarget& target, const JsonValue& value) {
    if (target.firstMember == nullptr) target.firstMember = &value;
}

}  // namespace

std::vector<SubPath> readPath(const JsonValue& value) {
    PathScanner scan(value);
    std::vector<SubPath> out;
    while (const char letter = scan.letter()) {
        if (letter != 'M' && out.empty()) faultAt(value, "A path begins with M.");
        if (letter != 'M' && out.back().closed) faultAt(value, "Behind Z a path goes on with M.");
        switch (letter) {
            case 'M':
                out.push_back({scan.point(), {}, false});
                break;
            case 'L':
                out.back().segments.push_back({PathSegment::Kind::line, {}, {}, scan.point()});
                break;
            case 'C': {
                PathSegment curve{PathSegment::Kind::curve, scan.point(), {}, {}};
                curve.control2 = scan.point();
                curve.to = scan.point();
                out.back().segments.push_back(curve);
                break;
            }
            case 'Z':
                out.back().closed = true;
                break;
            default:
                faultAt(value, "A path is made of M, L, C and Z, each with its coordinates.");
        }
    }
    return out;
}

std::string pathText(const std::vector<SubPath>& path) {
    std::string out;
    for (const SubPath& sub : path) {
        out += out.empty() ? "M" : " M";
        writePointText(out, sub.start);
        for (const PathSegment& s : sub.segments) {
            out += s.kind == PathSegment::Kind::curve ? " C" : " L";
            if (s.kind == PathSegment::Kind::curve) {
                writePointText(out, s.control1);
                writePointText(out, s.control2);
            }
            writePointText(out, s.to);
        }
        if (sub.closed) out += " Z";
    }
    return out;
}

BaselineGrid readBaselineGrid(const JsonValue& value) {
    static constexpr Member<BaselineGrid> rows[] = {
        {"start", [](BaselineGrid& grid, const JsonValue& v) { grid.start = lengthOf(v); }},
        {"step", [](BaselineGrid& grid, const JsonValue& v) { grid.step = lengthOf(v, leastGridStep); }},
    };
    BaselineGrid grid;
    readMembers<BaselineGrid>(value, "a baseline grid", rows, grid);
    return grid;
}

void writeBaselineGrid(JsonWriter& out, const BaselineGrid& grid) {
    out.key("baselineGrid");
    out.beginObject();
    out.member("start", grid.start);
    out.member("step", grid.step);
    out.end();
}

void readShapeKind(ShapeTarget& target, const JsonValue& value) {
    note(target, value);
    target.hasKind = true;
    target.shape.kind = wordAs<pathInfoRec::Kind>(value, kindWords);
}

void readShapeInner(ShapeTarget& target, const JsonValue& value) {
    note(target, value);
    const std::vector<double> sides = lengthsOf(value, 4);
    target.inner = PMRect{sides[0], sides[1], sides[2], sides[3]};
}

void readShapePath(ShapeTarget& target, const JsonValue& value) {
    note(target, value);
    target.path = readPath(value);
}

void readShapeFill(ShapeTarget& target, const JsonValue& value) {
    note(target, value);
    target.shape.fill = readPaint(value, target.names);
}

void readShapeStroke(ShapeTarget& target, const JsonValue& value) {
    note(target, value);
    StrokeTarget stroke{target.names, {}};
    stroke.stroke.paint.swatch = swatchBlack;
    if (value.is(JsonValue::Type::object)) {
        readMembers<StrokeTarget>(value, "a stroke", strokeMembers, stroke);
    } else {
        stroke.stroke.paint = readPaint(value, target.names);
    }
    target.shape.stroke = std::move(stroke.stroke);
}

void readShapeContent(ShapeTarget& target, const JsonValue& value) {
    note(target, value);
    target.content = wordAs<ContentKind>(value, contentWords);
}

void readShapeInsets(ShapeTarget& target, const JsonValue& value) {
    note(target, value);
    TextFrameOptions& text = target.shape.text;
    if (!value.is(JsonValue::Type::array)) {
        text.insetTop = text.insetLeft = text.insetBottom = text.insetRight = lengthOf(value);
        return;
    }
    const std::vector<double> sides = lengthsOf(value, 4);
    text.insetTop = sides[0];
    text.insetLeft = sides[1];
    text.insetBottom = sides[2];
    text.insetRight = sides[3];
}

void readShapeColumns(ShapeTarget& target, const JsonValue& value) {
    note(target, value);
    target.shape.text.columns = static_cast<std::int32_t>(integerOf(value, 1, columnLimit));
}

void readShapeGutter(ShapeTarget& target, const JsonValue& value) {
    note(target, value);
    target.shape.text.gutter = lengthOf(value, 0);
}

void readShapeVerticalAlign(ShapeTarget& target, const JsonValue& value) {
    note(target, value);
    target.shape.text.verticalAlignment = wordAs<VerticalAlignment>(value, verticalWords);
}

void readShapeParagraphSpaceLimit(ShapeTarget& target, const JsonValue& value) {
    note(target, value);
    target.shape.text.paragraphSpaceLimit = lengthOf(value, 0);
}

void readShapeFirstBaseline(ShapeTarget& target, const JsonValue& value) {
    note(target, value);
    target.shape.text.firstBaseline = wordAs<FirstBaseline>(value, firstBaselineWords);
}

void readShapeLeastFirstBaseline(ShapeTarget& target, const JsonValue& value) {
    note(target, value);
    target.shape.text.leastFirstBaseline = lengthOf(value, 0);
}

void readShapeBaselineGrid(ShapeTarget& target, const JsonValue& value) {
    note(target, value);
    target.shape.text.grid = readBaselineGrid(value);
}

void readShapeIgnoreWrap(ShapeTarget& target, const JsonValue& value) {
    note(target, value);
    target.shape.text.ignoresWrap = boolOf(value);
}

std::shared_ptr<const ItemShape> finishShape(ShapeTarget& target, const JsonValue& value, ContentKind usual) {
    ItemShape shape = std::move(target.shape);
    if (!target.inner && (!target.path || target.path->empty())) {
        faultAt(value, "An item needs \"bounds\" [left, top, width, height], or a \"path\".");
    }
    shape.content = target.content.value_or(usual);
    shape.bounds = target.inner ? *target.inner : boundsOfPath(*target.path);
    shape.path = pathOf(shape.kind, shape.bounds);
    if (target.path && !same(*target.path, shape.path)) {
        shape.path = std::move(*target.path);
        if (!target.hasKind) shape.kind = pathInfoRec::Kind::polygon;
    }
    return std::make_shared<const ItemShape>(std::move(shape));
}

void writeShape(JsonWriter& out, const ItemShape& shape, ShapeForm form, const DocumentModel& document) {
    const ItemShape usual;
    const bool hasOwnPath = !same(shape.path, pathOf(shape.kind, shape.bounds));
    if (hasOwnPath || shape.kind != usual.kind) {
        out.member("kind", kindWords[static_cast<std::size_t>(shape.kind)]);
    }
    if (form.inner) {
        out.numbers("inner", {shape.bounds.left, shape.bounds.top, shape.bounds.right, shape.bounds.bottom});
    }
    if (hasOwnPath) out.member("path", pathText(shape.path));
    if (shape.fill != usual.fill) writePaint(out, "fill", shape.fill, document);
    writeStroke(out, shape.stroke, document);
    if (shape.content != form.usual) {
        out.member("content", contentWords[static_cast<std::size_t>(shape.content)]);
    }
    writeTextOptions(out, shape.text);
}

}  // namespace tarnova
