#include "host/render/postscript_stream.h"

#include <fmt/format.h>

#include <cmath>

namespace tarnova {

namespace {

constexpr std::string_view pageSizeCall = " cairo_set_page_size";
constexpr std::string_view sizeTolerance = "sub abs 5 gt";

/// Points with up to three decimals, as a person writes them.
std::string points(double value) {
    return fmt::format("{}", std::round(value * 1000) / 1000);
}

}  // namespace

cairo_status_t PostScriptStream::take(void* closure, const unsigned char* data, unsigned count) {
    auto& stream = *static_cast<PostScriptStream*>(closure);
    std::string_view bytes(reinterpret_cast<const char*>(data), count);
    for (std::size_t end; (end = bytes.find('\n')) != std::string_view::npos; bytes.remove_prefix(end + 1)) {
        stream.pending.append(bytes.substr(0, end));
        stream.takeLine(stream.pending);
        stream.pending.clear();
    }
    stream.pending.append(bytes);
    return stream.file.failed() ? CAIRO_STATUS_WRITE_ERROR : CAIRO_STATUS_SUCCESS;
}

void PostScriptStream::takeLine(std::string_view line) {
    if (line.starts_with("%%CreationDate:")) return;
    if (line.starts_with("%%Creator:")) {
        writeLine("%%Creator: Tarnova");
    } else if (eps && line.starts_with("%%BoundingBox:")) {
        writeBoundingBox();
    } else if (eps && line.starts_with("%%PageBoundingBox:")) {
        writeLine(fmt::format("%%PageBoundingBox: 0 0 {} {}", std::ceil(sizes[0].x), std::ceil(sizes[0].y)));
    } else if (line.ends_with(pageSizeCall) && nextSize < sizes.size()) {
        const PMPoint size = sizes[nextSize++];
        writeLine(points(size.x) + ' ' + points(size.y) + std::string(pageSizeCall));
    } else if (line.ends_with(sizeTolerance)) {
        // Half a point: a tray that says 595 for the 595.276 of A4 isn't chosen anew on each page.
        writeLine("sub abs .5 gt");
    } else {
        writeLine(line);
    }
}

void PostScriptStream::writeBoundingBox() {
    writeLine(fmt::format("%%BoundingBox: 0 0 {} {}", std::ceil(sizes[0].x), std::ceil(sizes[0].y)));
    writeLine(fmt::format("%%HiResBoundingBox: 0 0 {} {}", points(sizes[0].x), points(sizes[0].y)));
}

void PostScriptStream::writeLine(std::string_view line) {
    file.write(line);
    file.write("\n");
}

}  // namespace tarnova
