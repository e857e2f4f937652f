#include "host/files/picture_members.h"

namespace tarnova {

namespace {

constexpr std::int64_t pictureFilePageLimit = 1'000'000;

constexpr const char* clipWords[] = {"none", "detectedEdges", "embeddedPath", "userPath"};

constexpr Member<clipSettingsRec> clipMembers[] = {
    {"type", [](clipSettingsRec& t, const JsonValue& v) { t.type = wordAs<clipSettingsRec::Type>(v, clipWords); }},
    {"threshold",
     [](clipSettingsRec& t, const JsonValue& v) { t.threshold = numberOf(v, -coordinateLimit, coordinateLimit); }},
    {"tolerance",
     [](clipSettingsRec& t, const JsonValue& v) { t.tolerance = numberOf(v, -coordinateLimit, coordinateLimit); }},
    {"inset", [](clipSettingsRec& t, const JsonValue& v) { t.inset = lengthOf(v); }},
    {"path", [](clipSettingsRec& t, const JsonValue& v) { t.pathName = stringOf(v); }},
    {"invert", [](clipSettingsRec& t, const JsonValue& v) { t.invert = boolOf(v); }},
    {"insideEdges", [](clipSettingsRec& t, const JsonValue& v) { t.insideEdges = boolOf(v); }},
    {"restrictToFrame", [](clipSettingsRec& t, const JsonValue& v) { t.restrictToFrame = boolOf(v); }},
};

void writeClip(JsonWriter& out, const clipSettingsRec& clip) {
    const clipSettingsRec usual;
    if (clip == usual) return;
    out.key("clip");
    out.beginObject();
    if (clip.type != usual.type) out.member("type", clipWords[static_cast<std::size_t>(clip.type)]);
    if (clip.threshold != usual.threshold) out.member("threshold", clip.threshold);
    if (clip.tolerance != usual.tolerance) out.member("tolerance", clip.tolerance);
    if (clip.inset != usual.inset) out.member("inset", clip.inset);
    if (!clip.pathName.empty()) out.member("path", clip.pathName);
    if (clip.invert) out.member("invert", true);
    if (clip.insideEdges) out.member("insideEdges", true);
    if (clip.restrictToFrame) out.member("restrictToFrame", true);
    out.end();
}

}  // namespace

std::string pictureFileOf(const JsonValue& value) {
    const std::string_view path = stringOf(value);
    if (path.empty() || path.size() > pictureFileBytesLimit) {
        faultAt(value, "The path of a picture's file has 1 to " + std::to_string(pictureFileBytesLimit) + " bytes.");
    }
    return std::string(path);
}

std::int32_t pictureFilePageOf(const JsonValue& value) {
    return static_cast<std::int32_t>(integerOf(value, 1, pictureFilePageLimit) - 1);
}

clipSettingsRec readClip(const JsonValue& value) {
    clipSettingsRec clip;
    readMembers<clipSettingsRec>(value, "a clip", clipMembers, clip);
    return clip;
}

void writeGraphic(JsonWriter& out, const PlacedGraphic& graphic) {
    out.member("file", graphic.filePath);
    out.numbers("inner", {graphic.bounds.left, graphic.bounds.top, graphic.bounds.right, graphic.bounds.bottom});
    if (graphic.pdfPage != 0) out.member("page", graphic.pdfPage + 1);
    writeClip(out, graphic.clip);
}

}  // namespace tarnova
