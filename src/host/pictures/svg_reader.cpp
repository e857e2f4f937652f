// SVG, which becomes a page of PDF by librsvg. A pixel is a point. Other files that it names aren't read.

#include <cairo-pdf.h>
#include <librsvg/rsvg.h>

#include <algorithm>
#include <cmath>

#include "host/pictures/picture_format.h"

namespace tarnova {

namespace {

constexpr std::size_t svgBytesLimit = 32u << 20;
constexpr double sizeWithoutAny[] = {300, 150};  // what CSS gives a picture that has no size

struct Handle {
    explicit Handle(std::string_view bytes)
        : handle(rsvg_handle_new_from_data(reinterpret_cast<const guint8*>(bytes.data()), bytes.size(), &error)) {
        if (handle != nullptr) return;
        const std::string reason = error == nullptr ? "" : error->message;
        g_clear_error(&error);
        throw PictureFault("The SVG file is damaged: " + reason);
    }
    ~Handle() {
        g_clear_error(&error);
        g_object_unref(handle);
    }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;

    GError* error = nullptr;
    RsvgHandle* handle;
};

PMPoint sizeOf(RsvgHandle* handle) {
    PMPoint size;
    if (rsvg_handle_get_intrinsic_size_in_pixels(handle, &size.x, &size.y) != 0) return size;
    gboolean hasWidth = 0, hasHeight = 0, hasBox = 0;
    RsvgLength width{}, height{};
    RsvgRectangle box{};
    rsvg_handle_get_intrinsic_dimensions(handle, &hasWidth, &width, &hasHeight, &height, &hasBox, &box);
    if (hasBox != 0) return {box.width, box.height};
    return {sizeWithoutAny[0], sizeWithoutAny[1]};
}

cairo_status_t append(void* out, const unsigned char* bytes, unsigned count) {
    static_cast<std::string*>(out)->append(reinterpret_cast<const char*>(bytes), count);
    return CAIRO_STATUS_SUCCESS;
}

bool draw(const Handle& svg, PMPoint size, std::string& out) {
    cairo_surface_t* surface = cairo_pdf_surface_create_for_stream(append, &out, size.x, size.y);
    cairo_pdf_surface_set_metadata(surface, CAIRO_PDF_METADATA_CREATE_DATE, "2000-01-01T00:00:00Z");
    cairo_t* context = cairo_create(surface);
    const RsvgRectangle area{0, 0, size.x, size.y};
    const bool drawn = rsvg_handle_render_document(svg.handle, context, &area, nullptr) != 0;
    cairo_destroy(context);
    cairo_surface_finish(surface);
    const bool written = cairo_surface_status(surface) == CAIRO_STATUS_SUCCESS;
    cairo_surface_destroy(surface);
    return drawn && written;
}

}  // namespace

bool isSvg(std::string_view bytes) {
    constexpr std::size_t searchBytes = 4096;  // comments and a document type may stand in front
    const std::string_view start = bytes.substr(0, searchBytes);
    const std::size_t first = start.find_first_not_of("\xEF\xBB\xBF \t\r\n");
    return first != std::string_view::npos && start[first] == '<' && start.find("<svg") != std::string_view::npos;
}

std::string svgToPdf(std::string_view bytes) {
    if (bytes.size() > svgBytesLimit) throw PictureFault("The SVG file is larger than 32 MiB.");
    const Handle svg(bytes);
    rsvg_handle_set_dpi(svg.handle, usualResolution);
    const PMPoint size = sizeOf(svg.handle);
    const auto isSide = [](double side) { return side >= pictureLeastSide && side <= pictureMostSide; };
    if (!isSide(size.x) || !isSide(size.y)) throw PictureFault("The SVG file has no size that can be shown.");
    std::string out;
    if (!draw(svg, size, out)) throw PictureFault("The SVG file can't be drawn.");
    return out;
}

}  // namespace tarnova
