#include "host/render/page_surface.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

#include "host/render/cairo_painter.h"
#include "host/render/png_output.h"

namespace tarnova {

namespace {

constexpr double largestSide = 32767;  // cairo's
constexpr double largestArea = 1 << 28;

[[nodiscard]] bool sizeInPixels(const DisplayList& page, double dpi, int& width, int& height, std::string& reason) {
    if (!(dpi >= pngMinimumDpi && dpi <= pngMaximumDpi)) {
        reason = fmt::format("the resolution must be {} to {} dpi", pngMinimumDpi, pngMaximumDpi);
        return false;
    }
    if (!(page.page.width() > 0 && page.page.height() > 0)) {
        reason = "a page has no area";
        return false;
    }
    // A hair less than a whole pixel is a rounding error of the conversion from millimetres.
    const double wide = std::max(1.0, std::ceil(page.page.width() * dpi / 72 - 0.01));
    const double high = std::max(1.0, std::ceil(page.page.height() * dpi / 72 - 0.01));
    if (!(wide <= largestSide && high <= largestSide && wide * high <= largestArea)) {
        reason =
            fmt::format("at {} dpi the page has {:.0f} × {:.0f} pixels, too many for a picture; lower the resolution",
                        dpi, wide, high);
        return false;
    }
    width = static_cast<int>(wide);
    height = static_cast<int>(high);
    return true;
}

}  // namespace

SurfacePtr pageSurface(const DisplayList& page, double dpi, std::vector<PictureProblem>& problems,
                       std::string& reason) {
    SurfacePtr surface(nullptr, cairo_surface_destroy);
    int width = 0, height = 0;
    if (!sizeInPixels(page, dpi, width, height, reason)) return surface;
    surface.reset(cairo_image_surface_create(CAIRO_FORMAT_RGB24, width, height));
    const ContextPtr context(cairo_create(surface.get()), cairo_destroy);
    cairo_set_source_rgb(context.get(), 1, 1, 1);
    cairo_paint(context.get());
    cairo_scale(context.get(), dpi / 72, dpi / 72);
    CairoPainter(context.get(), page, problems).paintPage();
    cairo_surface_flush(surface.get());
    return surface;
}

}  // namespace tarnova
