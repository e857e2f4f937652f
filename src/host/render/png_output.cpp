#include "host/render/png_output.h"

#include <fmt/format.h>
#include <libdeflate.h>

#include <algorithm>
#include <cmath>

#include "host/render/output_file.h"
#include "host/render/page_surface.h"

namespace tarnova {

namespace {

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

[[nodiscard]] bool writeList(const DisplayList& page, const std::string& path, double dpi, PageNotes& notes,
                             std::string& error) {
    std::string reason;
    const SurfacePtr surface = pageSurface(page, dpi, notes.pictures, reason);
    if (surface == nullptr) {
        error = cantBeWritten(path, reason);
        return false;
    }
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

}  // namespace

bool writePagePng(const DisplayList& page, const std::string& path, double dpi, std::string& error) {
    PageNotes ignored;
    return writeList(page, path, dpi, ignored, error);
}

bool writePagePng(const DocumentModel& document, UID page, const std::string& path, double dpi, PageNotes* notes,
                  std::string& error) {
    DisplayList list;
    PageNotes ignored;
    return listForFile(document, page, path, list, notes, error) &&
           writeList(list, path, dpi, notes == nullptr ? ignored : *notes, error);
}

}  // namespace tarnova
