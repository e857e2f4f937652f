#include "host/files/picture_members.h"

#include <iterator>

#include "host/files/base64.h"
#include "host/files/shape_members.h"
#include "host/model/placed_picture.h"
#include "host/pictures/clip_outline.h"

namespace tarnova {

namespace {

constexpr const char* clipWords[] = {"none", "detectedEdges", "embeddedPath", "userPath"};

/// In the order of their numbers; 1 stands for what the place preferences don't name.
constexpr const char* cropWords[] = {"visibleContent", "cropBox", "art",   "crop",
                                     "trim",           "bleed",   "media", "allContent"};

constexpr Member<PlacedGraphic> clipMembers[] = {
    {"type", [](PlacedGraphic& t, const JsonValue& v) { t.clip.type = wordAs<clipSettingsRec::Type>(v, clipWords); }},
    {"threshold",
     [](PlacedGraphic& t, const JsonValue& v) { t.clip.threshold = numberOf(v, -coordinateLimit, coordinateLimit); }},
    {"tolerance",
     [](PlacedGraphic& t, const JsonValue& v) { t.clip.tolerance = numberOf(v, -coordinateLimit, coordinateLimit); }},
    {"inset", [](PlacedGraphic& t, const JsonValue& v) { t.clip.inset = lengthOf(v); }},
    {"path", [](PlacedGraphic& t, const JsonValue& v) { t.clip.pathName = stringOf(v); }},
    {"invert", [](PlacedGraphic& t, const JsonValue& v) { t.clip.invert = boolOf(v); }},
    {"insideEdges", [](PlacedGraphic& t, const JsonValue& v) { t.clip.insideEdges = boolOf(v); }},
    {"restrictToFrame", [](PlacedGraphic& t, const JsonValue& v) { t.clip.restrictToFrame = boolOf(v); }},
    {"outline", [](PlacedGraphic& t, const JsonValue& v) { t.clipPath = readPath(v); }},
};

void writeClip(JsonWriter& out, const PlacedGraphic& graphic) {
    const clipSettingsRec& clip = graphic.clip;
    const clipSettingsRec usual;
    if (clip == usual && graphic.clipPath.empty()) return;
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
    if (!graphic.clipPath.empty()) out.member("outline", pathText(graphic.clipPath));
    out.end();
}

}  // namespace

std::string pictureFileOf(const JsonValue& value) {
    const std::string_view path = stringOf(value);
    if (path.empty() || path.size() > picturePathLimit) {
        faultAt(value, "The path of a picture's file has 1 to " + std::to_string(picturePathLimit) + " bytes.");
    }
    return std::string(path);
}

std::int32_t pictureFilePageOf(const JsonValue& value) {
    return static_cast<std::int32_t>(integerOf(value, 1, pdfPageLimit) - 1);
}

std::uint32_t pictureCropOf(const JsonValue& value) {
    return static_cast<std::uint32_t>(wordOf(value, cropWords));
}

void readClip(const JsonValue& value, PlacedGraphic& out) {
    readMembers<PlacedGraphic>(value, "a clip", clipMembers, out);
}

void completeGraphic(PlacedGraphic& graphic, bool hasBounds, const PMRect& frame, const std::string& folder) {
    using Type = clipSettingsRec::Type;
    const bool isMade = graphic.clip.type == Type::detectedEdges || graphic.clip.type == Type::embeddedPath;
    const bool wantsClip = isMade && graphic.clipPath.empty();
    if (hasBounds && !wantsClip) return;
    const OpenedPicture opened = openGraphic(graphic, folder);
    if (!hasBounds) graphic.bounds = frame;
    if (opened.picture == nullptr) return;
    const PMPoint size = opened.picture->size();
    if (!hasBounds) graphic.bounds = {0, 0, size.x, size.y};
    PictureOutline outline;
    if (wantsClip && makeClipOutline(*opened.picture, graphic.clip, outline)) {
        graphic.clipPath = subPathsOf(outline, pictureToItem(graphic, size));
    }
}

void writeGraphic(JsonWriter& out, const PlacedGraphic& graphic, const std::string& path) {
    const PlacedGraphic usual;
    if (graphic.embedded != nullptr) {
        out.member("embedded", toBase64(*graphic.embedded));
    } else {
        out.member("file", path);
    }
    out.numbers("inner", {graphic.bounds.left, graphic.bounds.top, graphic.bounds.right, graphic.bounds.bottom});
    if (graphic.pdfPage != usual.pdfPage) out.member("page", graphic.pdfPage + 1);
    if (graphic.pdfCrop != usual.pdfCrop && graphic.pdfCrop < std::size(cropWords)) {
        out.member("crop", cropWords[graphic.pdfCrop]);
    }
    if (!graphic.pdfTransparent) out.member("transparent", false);
    if (graphic.fileSize != usual.fileSize) {
        out.member("fileTime", graphic.fileTime);
        out.member("fileSize", graphic.fileSize);
    }
    writeClip(out, graphic);
}

}  // namespace tarnova
