#include "host/files/flow_members.h"

namespace tarnova {

namespace {

constexpr const char* anchorWords[] = {"inline", "above", "custom"};
constexpr const char* edgeWords[] = {"anchor", "column", "frame"};
constexpr const char* alignWords[] = {"left", "center", "right"};
constexpr const char* wrapWords[] = {"none", "bounds", "jumpObject", "jumpColumn"};
constexpr const char* sideWords[] = {"both", "left", "right", "largest"};

template <double AnchorOptions::*member>
void readAnchorLength(AnchorOptions& anchor, const JsonValue& value) {
    anchor.*member = lengthOf(value);
}

template <AnchorOptions::Edge AnchorOptions::*member>
void readEdge(AnchorOptions& anchor, const JsonValue& value) {
    anchor.*member = wordAs<AnchorOptions::Edge>(value, edgeWords);
}

template <typename Enumeration>
void writeWord(JsonWriter& out, std::string_view name, Enumeration value, std::span<const char* const> words) {
    if (value != Enumeration{}) out.member(name, words[static_cast<std::size_t>(value)]);
}

void writeLength(JsonWriter& out, std::string_view name, double value) {
    if (value != 0) out.member(name, value);
}

void writeAnchor(JsonWriter& out, const AnchorOptions& anchor) {
    out.key("anchor");
    out.beginObject();
    out.member("kind", anchorWords[static_cast<std::size_t>(anchor.kind)]);
    writeLength(out, "x", anchor.x);
    writeLength(out, "y", anchor.y);
    writeWord(out, "align", anchor.align, alignWords);
    writeWord(out, "xFrom", anchor.xFrom, edgeWords);
    writeWord(out, "yFrom", anchor.yFrom, edgeWords);
    writeLength(out, "spaceBefore", anchor.spaceBefore);
    writeLength(out, "spaceAfter", anchor.spaceAfter);
    out.end();
}

void writeWrap(JsonWriter& out, const TextWrap& wrap) {
    out.key("wrap");
    out.beginObject();
    out.member("kind", wrapWords[static_cast<std::size_t>(wrap.kind)]);
    writeWord(out, "side", wrap.side, sideWords);
    if (wrap.top != 0 || wrap.left != 0 || wrap.bottom != 0 || wrap.right != 0) {
        out.numbers("offsets", {wrap.top, wrap.left, wrap.bottom, wrap.right});
    }
    out.end();
}

void readOffsets(TextWrap& wrap, const JsonValue& value) {
    if (!value.is(JsonValue::Type::array)) {
        wrap.top = wrap.left = wrap.bottom = wrap.right = lengthOf(value);
        return;
    }
    const std::vector<double> sides = lengthsOf(value, 4);
    wrap.top = sides[0];
    wrap.left = sides[1];
    wrap.bottom = sides[2];
    wrap.right = sides[3];
}

}  // namespace

AnchorOptions readAnchor(const JsonValue& value) {
    static constexpr Member<AnchorOptions> rows[] = {
        {"kind",
         [](AnchorOptions& a, const JsonValue& v) { a.kind = wordAs<AnchorOptions::Kind>(v, anchorWords); }},
        {"x", readAnchorLength<&AnchorOptions::x>},
        {"y", readAnchorLength<&AnchorOptions::y>},
        {"align", [](AnchorOptions& a, const JsonValue& v) { a.align = wordAs<AnchorOptions::Align>(v, alignWords); }},
        {"xFrom", readEdge<&AnchorOptions::xFrom>},
        {"yFrom", readEdge<&AnchorOptions::yFrom>},
        {"spaceBefore", readAnchorLength<&AnchorOptions::spaceBefore>},
        {"spaceAfter", readAnchorLength<&AnchorOptions::spaceAfter>},
    };
    AnchorOptions anchor;
    if (value.is(JsonValue::Type::object)) {
        readMembers<AnchorOptions>(value, "an anchor", rows, anchor);
    } else {
        anchor.kind = wordAs<AnchorOptions::Kind>(value, anchorWords);
    }
    return anchor;
}

TextWrap readWrap(const JsonValue& value) {
    static constexpr Member<TextWrap> rows[] = {
        {"kind", [](TextWrap& w, const JsonValue& v) { w.kind = wordAs<TextWrap::Kind>(v, wrapWords); }},
        {"side", [](TextWrap& w, const JsonValue& v) { w.side = wordAs<TextWrap::Side>(v, sideWords); }},
        {"offsets", readOffsets},
    };
    TextWrap wrap;
    wrap.kind = TextWrap::Kind::bounds;
    if (value.is(JsonValue::Type::object)) {
        readMembers<TextWrap>(value, "a text wrap", rows, wrap);
    } else {
        wrap.kind = wordAs<TextWrap::Kind>(value, wrapWords);
    }
    return wrap;
}

void writeFlow(JsonWriter& out, const ItemFlow& flow) {
    if (flow.anchor != AnchorOptions{}) writeAnchor(out, flow.anchor);
    if (flow.wrap != TextWrap{}) writeWrap(out, flow.wrap);
}

}  // namespace tarnova
