// A picture from any bytes: refused with a reason, or with a size, and with pixels of that size or none. EPS and SVG
// are left to the tests, because they start a program.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>

#include "host/pictures/clip_outline.h"
#include "host/pictures/picture_format.h"
#include "host/pictures/picture_library.h"

namespace tarnova {
namespace {

constexpr std::uint64_t pixelsToDecode = 1u << 18;  // larger ones take too long for many tries

void tryPixels(const Picture& picture) {
    const RasterInfo& raster = picture.info().raster;
    if (std::uint64_t{raster.width} * raster.height > pixelsToDecode) return;
    const auto samples = picture.samples();
    if (samples == nullptr) return;
    const std::size_t pixels = std::size_t{raster.width} * raster.height;
    const bool hasRoom = samples->values.size() == pixels * componentsOf(raster.color) &&
                         samples->alpha.size() == (raster.hasAlpha ? pixels : 0);
    if (!hasRoom) std::abort();
    clipSettingsRec settings;
    settings.type = clipSettingsRec::Type::detectedEdges;
    PictureOutline outline;
    if (makeClipOutline(picture, settings, outline) == outline.empty()) std::abort();
}

}  // namespace
}  // namespace tarnova

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tarnova;
    const auto bytes = std::make_shared<const std::string>(reinterpret_cast<const char*>(data), size);
    const FormatReader* format = formatOf(*bytes);
    if (format != nullptr && format->toPdf != nullptr) return 0;
    PictureLibrary library;
    const OpenedPicture opened = library.openBytes(bytes);
    if ((opened.picture == nullptr) == opened.reason.empty()) std::abort();
    if (opened.picture == nullptr) return 0;
    if (!(opened.picture->size().x > 0 && opened.picture->size().y > 0)) std::abort();
    if (opened.picture->info().kind == PictureKind::raster) tryPixels(*opened.picture);
    return 0;
}
