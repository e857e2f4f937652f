#include "host/files/path_text_members.h"

namespace tarnova {

namespace {

constexpr const char* alignWords[] = {"baseline", "ascender", "descender", "center"};
constexpr const char* effectWords[] = {"follow", "upright"};

}  // namespace

PathTextTarget readPathText(const JsonValue& value) {
    using T = PathTextTarget;
    static constexpr Member<T> rows[] = {
        {"storyUid", keep<T, &T::storyUid>},
        {"text", keep<T, &T::text>},
        {"sharedText", keep<T, &T::sharedText>},
        {"start", [](T& t, const JsonValue& v) { t.options.start = lengthOf(v); }},
        {"end", [](T& t, const JsonValue& v) { t.options.end = lengthOf(v); }},
        {"offset", [](T& t, const JsonValue& v) { t.options.offset = lengthOf(v); }},
        {"align", [](T& t, const JsonValue& v) { t.options.align = wordAs<PathTextOptions::Align>(v, alignWords); }},
        {"effect", [](T& t, const JsonValue& v) { t.options.effect = wordAs<PathTextOptions::Effect>(v, effectWords); }},
        {"flip", [](T& t, const JsonValue& v) { t.options.flip = boolOf(v); }},
    };
    T target;
    readMembers<T>(value, "a text on a path", rows, target);
    if (target.text != nullptr && target.sharedText != nullptr) {
        faultAt(value, "A text on a path has either \"text\" or \"sharedText\".");
    }
    return target;
}

void writePathTextOptions(JsonWriter& out, const PathTextOptions& options) {
    const PathTextOptions usual;
    if (options.start != usual.start) out.member("start", options.start);
    if (options.end != usual.end) out.member("end", options.end);
    if (options.offset != usual.offset) out.member("offset", options.offset);
    if (options.align != usual.align) out.member("align", alignWords[static_cast<std::size_t>(options.align)]);
    if (options.effect != usual.effect) out.member("effect", effectWords[static_cast<std::size_t>(options.effect)]);
    if (options.flip) out.member("flip", true);
}

}  // namespace tarnova
