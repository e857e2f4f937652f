#include "host/pictures/photoshop_resources.h"

#include "engine/toolkit/text_encoding.h"
#include "host/pictures/byte_reader.h"

namespace tarnova {

namespace {

constexpr std::uint16_t resourceResolution = 0x03ED, firstPath = 2000, lastPath = 2997, resourceClipPath = 2999;
constexpr std::size_t knotBytes = 26, pathLimit = 256;
constexpr std::uint16_t closedLength = 0, closedLinked = 1, closedUnlinked = 2, openLength = 3;

/// One block: its number, its name as a Pascal string padded to an even length, its data padded likewise.
struct Resource {
    std::uint16_t id = 0;
    std::string_view name;
    std::string_view data;
};

/// Calls `take(resource)` for each block up to the first one that isn't whole.
template <typename Take>
void eachResource(std::string_view blocks, Take take) try {
    const ByteReader in(blocks);
    for (std::size_t at = 0; in.has(at, 12) && in.span(at, 4) == "8BIM";) {
        const std::size_t nameBytes = in.u8(at + 6);
        const std::size_t sizeAt = at + 6 + (nameBytes + 2) / 2 * 2;
        const std::size_t dataBytes = in.u32(sizeAt);
        take(Resource{in.u16(at + 4), in.span(at + 7, nameBytes), in.span(sizeAt + 4, dataBytes)});
        at = sizeAt + 4 + (dataBytes + 1) / 2 * 2;
    }
} catch (const PictureFault&) {
}

/// A coordinate is a share of the picture's side with 24 bits behind the point; the vertical one comes first.
PMPoint pointAt(const ByteReader& record, std::size_t at) {
    constexpr double one = 1 << 24;
    return {record.i32(at + 4) / one, record.i32(at) / one};
}

PictureOutline outlineOf(std::string_view data) {
    PictureOutline out;
    const ByteReader in(data);
    for (std::size_t at = 0; in.has(at, knotBytes); at += knotBytes) {
        const std::uint16_t kind = in.u16(at);
        if (kind == closedLength || kind == openLength) out.emplace_back();
        if ((kind == closedLinked || kind == closedUnlinked) && !out.empty()) {
            out.back().push_back({pointAt(in, at + 2), pointAt(in, at + 10), pointAt(in, at + 18)});
        }
    }
    std::erase_if(out, [](const PictureContour& contour) { return contour.size() < 2; });
    return out;
}

std::string textOf(std::string_view name) {
    return isUtf8(name) ? std::string(name) : windows1252ToUtf8(name);
}

}  // namespace

void readPhotoshopPaths(std::string_view blocks, PictureInfo& info) {
    eachResource(blocks, [&](const Resource& resource) {
        if (resource.id >= firstPath && resource.id <= lastPath && info.paths.size() < pathLimit) {
            PictureOutline outline = outlineOf(resource.data);
            if (!outline.empty()) info.paths.push_back({textOf(resource.name), std::move(outline)});
        } else if (resource.id == resourceClipPath && !resource.data.empty()) {
            const ByteReader data(resource.data);
            info.clipPathName = textOf(data.span(1, data.u8(0)));
        }
    });
}

bool readPhotoshopResolution(std::string_view blocks, RasterInfo& out) {
    bool found = false;
    eachResource(blocks, [&](const Resource& resource) {
        if (resource.id != resourceResolution) return;
        constexpr double one = 65536;  // 16 bits behind the point; pixels per inch, whatever unit is shown
        const ByteReader data(resource.data);
        out.xPerInch = data.u32(0) / one;
        out.yPerInch = data.u32(8) / one;
        found = true;
    });
    return found;
}

}  // namespace tarnova
