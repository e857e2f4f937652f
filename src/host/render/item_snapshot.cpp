#include "host/render/item_snapshot.h"

#include "host/pictures/tiff_writer.h"
#include "host/render/display_list.h"
#include "host/render/page_surface.h"

namespace tarnova {

namespace {

PictureSamples samplesOf(cairo_surface_t* pixels) {
    PictureSamples samples;
    samples.width = static_cast<std::uint32_t>(cairo_image_surface_get_width(pixels));
    samples.height = static_cast<std::uint32_t>(cairo_image_surface_get_height(pixels));
    samples.color = PictureColor::rgb;
    samples.values.reserve(std::size_t{3} * samples.width * samples.height);
    const unsigned char* row = cairo_image_surface_get_data(pixels);
    for (std::uint32_t y = 0; y < samples.height; ++y, row += cairo_image_surface_get_stride(pixels)) {
        const auto* pixel = reinterpret_cast<const std::uint32_t*>(row);
        for (std::uint32_t x = 0; x < samples.width; ++x) {
            for (const int shift : {16, 8, 0})
                samples.values.push_back(static_cast<std::uint8_t>(pixel[x] >> shift & 255));
        }
    }
    return samples;
}

}  // namespace

errorWord drawItemTiff(const DocumentModel& document, UID item, double pixelsPerInch, std::string& outTiff) {
    DisplayList list;
    std::string reason;
    std::vector<PictureProblem> ignored;
    if (!buildItemList(document, item, list)) return errFailed;
    const SurfacePtr surface = pageSurface(list, pixelsPerInch, ignored, reason);
    if (surface == nullptr) return errFailed;
    outTiff = writeTiff(samplesOf(surface.get()), pixelsPerInch);
    return outTiff.empty() ? errFailed : 0;
}

}  // namespace tarnova
