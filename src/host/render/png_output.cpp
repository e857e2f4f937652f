#include "host/render/png_output.h"

#include <fmt/format.h>
#include <libdeflate.h>

#include <algorithm>
#include <cmath>

#include "host/render/cairo_painter.h"
#include "host/render/cairo_target.h"
#include "host/render/output_file.h"

namespace tarnova {

namespace {

constexpr double largestSide = 32767;  // cairo's
constexpr double largestArea = 1 << 28;
constexpr double inchesInMeter = 1 / 0.0254;

/// cairo's PNG bytes on their way to the file, with the resolution put in where it belongs.
struct PngStream {
    // Signature and header chunk, after which the pHYs chunk may come (PNG 1.2, 4.2.4.2).
    static constexpr std::size_t headBytes = 33;

    OutputFile& file;
    double dpi;
    std::size_t seen = 0;

    static cairo_status_t take(void* closure, const unsigned char* data, unsigned count) {
        auto& stream = *static_cast<PngStream*>(closure);
        std::string_view bytes(reinterpret_cast<const char*>(data), count);
        if (stream.seen < headBytes) {
            const std::size_t head = std::min(bytes.size(), headBytes - stream.seen);
            stream.file.write(bytes.substr(0, head));
            stream.seen += head;
            bytes.remove_prefix(head);
            if (stream.seen == headBytes) stream.writeResolution();
        }
        stream.file.write(bytes);
        return stream.file.failed() ? CAIRO_STATUS_WRITE_ERROR : CAIRO_STATUS_SUCCESS;
    }

    void writeResolution() {
        const auto perMeter = static_cast<std::uint32_t>(std::lround(dpi * inchesInMeter));
        std::string chunk;
        const auto putNumber = [&chunk](std::uint32_t value) {
            for (int shift = 24; shift >= 0; shift -= 8)
                chunk.push_back(static_cast<char>(value >> shift & 255));
        };
        chunk += "pHYs";
        putNumber(perMeter);
        putNumber(perMeter);
        chunk.push_back(1);
        const std::uint32_t check = libdeflate_crc32(0, chunk.data(), chunk.size());
        chunk.insert(0, std::string("\0\0\0\x09", 4));
        putNumber(check);
        file.write(chunk);
    }
};

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

SurfacePtr drawPage(const DisplayList& page, double dpi, int width, int height) {
    SurfacePtr surface(cairo_image_surface_create(CAIRO_FORMAT_RGB24, width, height), cairo_surface_destroy);
    const ContextPtr context(cairo_create(surface.get()), cairo_destroy);
    cairo_set_source_rgb(context.get(), 1, 1, 1);
    cairo_paint(context.get());
    cairo_scale(context.get(), dpi / 72, dpi / 72);
    CairoPainter(context.get(), page).paintPage();
    cairo_surface_flush(surface.get());
    return surface;
}

}  // namespace

bool writePagePng(const DisplayList& page, const std::string& path, double dpi, std::string& error) {
    int width = 0, height = 0;
    std::string reason;
    if (!sizeInPixels(page, dpi, width, height, reason)) {
        error = cantBeWritten(path, reason);
        return false;
    }
    const SurfacePtr surface = drawPage(page, dpi, width, height);
    OutputFile file;
    bool written = file.open(path);
    if (written) {
        PngStream stream{file, dpi};
        const cairo_status_t status = cairo_surface_write_to_png_stream(surface.get(), PngStream::take, &stream);
        if (status != CAIRO_STATUS_SUCCESS) file.fail(cairo_status_to_string(status));
        written = !file.failed() && file.finish();
    }
    if (!written) error = file.error();
    return written;
}

bool writePagePng(const DocumentModel& document, UID page, const std::string& path, double dpi,
                  std::vector<OversetText>* overset, std::string& error) {
    DisplayList list;
    return listForFile(document, page, path, list, overset, error) && writePagePng(list, path, dpi, error);
}

}  // namespace tarnova
