// SVG, which librsvg's program makes a page of PDF, in a process of its own within a time: a few bytes of filters can
// take hours. A pixel is a point. Other files that it names aren't read, because it comes without a place.

#include "host/pictures/converter.h"
#include "host/pictures/picture_format.h"

namespace tarnova {

namespace {

constexpr std::size_t svgBytesLimit = 32u << 20;

}  // namespace

bool isSvg(std::string_view bytes) {
    constexpr std::size_t searchBytes = 4096;  // comments and a document type may stand in front
    const std::string_view start = bytes.substr(0, searchBytes);
    const std::size_t first = start.find_first_not_of("\xEF\xBB\xBF \t\r\n");
    return first != std::string_view::npos && start[first] == '<' && start.find("<svg") != std::string_view::npos;
}

std::string svgToPdf(std::string_view bytes) {
    if (bytes.size() > svgBytesLimit) throw PictureFault("The SVG file is larger than 32 MiB.");
    const char* const command[] = {"rsvg-convert", "--format=pdf", "--dpi-x=72", "--dpi-y=72", nullptr};
    return convertedToPdf(command, bytes, "SVG", "librsvg");
}

}  // namespace tarnova
