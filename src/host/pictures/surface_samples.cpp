#include "host/pictures/surface_samples.h"

#include <cstring>

namespace tarnova {

PictureSamples samplesOfSurface(cairo_surface_t* surface) {
    cairo_surface_flush(surface);
    const int width = cairo_image_surface_get_width(surface), height = cairo_image_surface_get_height(surface);
    PictureSamples out{
        static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height), PictureColor::rgb, {}, {}};
    out.values.reserve(std::size_t{out.width} * out.height * 3);
    for (int y = 0; y < height; ++y) {
        const unsigned char* row =
            cairo_image_surface_get_data(surface) + std::ptrdiff_t{y} * cairo_image_surface_get_stride(surface);
        for (int x = 0; x < width; ++x) {
            std::uint32_t pixel;
            std::memcpy(&pixel, row + std::ptrdiff_t{x} * 4, sizeof pixel);
            for (const int shift : {16, 8, 0})
                out.values.push_back(static_cast<std::uint8_t>(pixel >> shift));
        }
    }
    return out;
}

}  // namespace tarnova
