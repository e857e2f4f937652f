#include "host/pictures/page_raster.h"

#include <cairo.h>

#include <algorithm>

#include "host/pictures/poppler_library.h"
#include "host/pictures/surface_samples.h"

namespace tarnova {

namespace {

template <auto release>
struct Release {
    template <typename Object>
    void operator()(Object* object) const {
        release(object);
    }
};
template <typename Object>
using Owned = std::unique_ptr<Object, Release<g_object_unref>>;
using Surface = std::unique_ptr<cairo_surface_t, Release<cairo_surface_destroy>>;
using Context = std::unique_ptr<cairo_t, Release<cairo_destroy>>;

struct OpenPage {
    Owned<PopplerDocument> document;
    Owned<PopplerPage> page;
};

/// The page is null when the file can't be read. The bytes have to outlive it.
OpenPage openPage(std::string_view pdf, std::int32_t index) {
    OpenPage out;
    if (!popplerIsInstalled()) return out;
    GBytes* bytes = g_bytes_new_static(pdf.data(), pdf.size());
    out.document.reset(poppler().document_new_from_bytes(bytes, nullptr, nullptr));
    g_bytes_unref(bytes);
    if (out.document != nullptr) out.page.reset(poppler().document_get_page(out.document.get(), index));
    return out;
}

void showLayers(PopplerLayersIter* layers) {
    if (layers == nullptr) return;
    do {
        const Owned<PopplerLayer> layer(poppler().layers_iter_get_layer(layers));
        if (layer != nullptr) poppler().layer_show(layer.get());
        PopplerLayersIter* inner = poppler().layers_iter_get_child(layers);
        showLayers(inner);
        if (inner != nullptr) poppler().layers_iter_free(inner);
    } while (poppler().layers_iter_next(layers) != 0);
}

void showAllLayers(PopplerDocument* document) {
    PopplerLayersIter* layers = poppler().layers_iter_new(document);
    showLayers(layers);
    if (layers != nullptr) poppler().layers_iter_free(layers);
}

}  // namespace

std::shared_ptr<const PictureSamples> drawPage(const Picture& picture, std::uint32_t sideLimit) {
    const auto pdf = picture.pdfBytes();
    if (pdf == nullptr) return nullptr;
    const OpenPage open = openPage(*pdf, picture.info().page.page);
    if (open.page == nullptr) return nullptr;
    const PMPoint size = picture.size();
    const double scale = sideLimit / std::max(size.x, size.y);
    const int width = std::max(static_cast<int>(size.x * scale), 1),
              height = std::max(static_cast<int>(size.y * scale), 1);

    const Surface surface(cairo_image_surface_create(CAIRO_FORMAT_RGB24, width, height));
    const Context context(cairo_create(surface.get()));
    cairo_set_source_rgb(context.get(), 1, 1, 1);
    cairo_paint(context.get());
    cairo_scale(context.get(), scale, scale);
    // What is drawn begins at the upper left corner of the crop box as it is turned; the picture at that of its own
    // box.
    PictureInfo whole = picture.info();
    PopplerRectangle cropBox{};
    poppler().page_get_crop_box(open.page.get(), &cropBox);
    whole.page.box = {cropBox.x1, cropBox.y1, cropBox.x2, cropBox.y2};
    whole.page.userUnit = 1;
    const std::optional<PMMatrix> toUser = pageMatrixOf(whole).inverse();
    if (!toUser) return nullptr;
    const PMMatrix m = toUser->then(picture.pageMatrix());
    const cairo_matrix_t matrix{m.a, m.b, m.c, m.d, m.tx, m.ty};
    cairo_transform(context.get(), &matrix);
    poppler().page_render(open.page.get(), context.get());
    if (cairo_status(context.get()) != CAIRO_STATUS_SUCCESS) return nullptr;
    return std::make_shared<const PictureSamples>(samplesOfSurface(surface.get()));
}

PMRect paintedBounds(std::string_view pdf, std::int32_t page, bool onAllLayers) {
    const OpenPage open = openPage(pdf, page);
    if (open.page == nullptr) return {};
    if (onAllLayers) showAllLayers(open.document.get());
    const Surface surface(cairo_recording_surface_create(CAIRO_CONTENT_COLOR_ALPHA, nullptr));
    const Context context(cairo_create(surface.get()));
    poppler().page_render(open.page.get(), context.get());
    double x = 0, y = 0, width = 0, height = 0, pageWidth = 0, pageHeight = 0;
    cairo_recording_surface_ink_extents(surface.get(), &x, &y, &width, &height);
    poppler().page_get_size(open.page.get(), &pageWidth, &pageHeight);
    const PMRect out{std::max(x, 0.0), std::max(y, 0.0), std::min(x + width, pageWidth),
                     std::min(y + height, pageHeight)};
    return out.width() > 0 && out.height() > 0 ? out : PMRect{};
}

}  // namespace tarnova
