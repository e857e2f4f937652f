#include "host/render/cairo_pictures.h"

#include <fmt/format.h>

#include <list>
#include <memory>
#include <string>

#include "host/pictures/poppler_library.h"
#include "host/render/pdf_placed_pages.h"
#include "host/render/raster_surface.h"

namespace tarnova {

namespace {

constexpr std::size_t readyBytesLimit = std::size_t{128} << 20;
constexpr std::size_t pageBytes = std::size_t{8} << 20;  // what an open page is taken to hold

struct Unref {
    void operator()(gpointer object) const { g_object_unref(object); }
};
using PagePtr = std::unique_ptr<PopplerPage, Unref>;
using DocumentPtr = std::unique_ptr<PopplerDocument, Unref>;

/// A picture made ready for cairo: its pixels or its page.
struct ReadyPicture {
    ContentKey key;
    std::size_t bytes = 0;
    SurfacePtr pixels{nullptr, cairo_surface_destroy};
    std::shared_ptr<const std::string> pdf;  // which `page` reads
    DocumentPtr document;
    PagePtr page;
};

void attach(cairo_surface_t* surface, const char* type, std::shared_ptr<const std::string> data) {
    auto* const held = new std::shared_ptr<const std::string>(std::move(data));
    const auto release = [](void* pointer) { delete static_cast<std::shared_ptr<const std::string>*>(pointer); };
    const auto* const bytes = reinterpret_cast<const unsigned char*>((*held)->data());
    if (cairo_surface_set_mime_data(surface, type, bytes, (*held)->size(), release, held) != CAIRO_STATUS_SUCCESS) {
        release(held);
    }
}

/// Files hold the pixels once by the name, and a JPEG as it came. Readers of SVG turn a JPEG by its own orientation,
/// so one that needs turning goes as pixels.
void nameForFiles(cairo_surface_t* surface, const Picture& picture) {
    const ContentKey key = picture.contentKey();
    attach(surface, CAIRO_MIME_TYPE_UNIQUE_ID,
           std::make_shared<const std::string>(fmt::format("{:016x}{:016x}", key.high, key.low)));
    const RasterInfo& raster = picture.info().raster;
    if (!raster.jpegPassesThrough || raster.color == PictureColor::cmyk || raster.orientation != 1) return;
    if (auto bytes = picture.fileBytes()) attach(surface, CAIRO_MIME_TYPE_JPEG, std::move(bytes));
}

void readyRaster(const Picture& picture, ReadyPicture& ready) {
    const std::shared_ptr<const PictureSamples> samples = picture.samples();
    if (samples == nullptr || samples->width == 0 || samples->height == 0) return;
    ready.pixels = rasterSurface(*samples, picture.info().raster.iccProfile);
    if (ready.pixels == nullptr) return;
    nameForFiles(ready.pixels.get(), picture);
    ready.bytes = std::size_t{4} * samples->width * samples->height;
}

void openPage(ReadyPicture& ready, std::int32_t page) {
    if (!popplerIsInstalled()) return;
    GBytes* const bytes = g_bytes_new_static(ready.pdf->data(), ready.pdf->size());
    ready.page.reset();
    ready.document.reset(poppler().document_new_from_bytes(bytes, nullptr, nullptr));
    g_bytes_unref(bytes);
    if (ready.document != nullptr) ready.page.reset(poppler().document_get_page(ready.document.get(), page));
}

bool showsBox(PopplerPage* page, const PMRect& box) {
    constexpr double rounding = 0.01;
    PopplerRectangle crop;
    poppler().page_get_crop_box(page, &crop);
    return std::abs(crop.x1 - box.left) < rounding && std::abs(crop.y1 - box.top) < rounding &&
           std::abs(crop.x2 - box.right) < rounding && std::abs(crop.y2 - box.bottom) < rounding;
}

/// Poppler shows the crop box and no other: a page of which more or less is wanted is taken with another crop box.
void readyPage(const Picture& picture, ReadyPicture& ready) {
    const PageInfo& info = picture.info().page;
    ready.pdf = picture.pdfBytes();
    if (ready.pdf == nullptr) return;
    openPage(ready, info.page);
    if (ready.page != nullptr && !showsBox(ready.page.get(), info.box)) {
        auto cropped = std::make_shared<const std::string>(croppedPage(*ready.pdf, info.page, info.box));
        ready.page.reset();
        ready.document.reset();
        ready.pdf = std::move(cropped);
        openPage(ready, 0);
    }
    ready.bytes = pageBytes + ready.pdf->size();
}

/// Pictures made ready, those used last in front.
class ReadyPictures {
 public:
    const ReadyPicture& get(const Picture& picture) {
        const auto known = std::find_if(pictures.begin(), pictures.end(),
                                        [&](const ReadyPicture& ready) { return ready.key == picture.contentKey(); });
        if (known != pictures.end()) {
            pictures.splice(pictures.begin(), pictures, known);
            return pictures.front();
        }
        ReadyPicture& ready = pictures.emplace_front();
        ready.key = picture.contentKey();
        picture.info().kind == PictureKind::page ? readyPage(picture, ready) : readyRaster(picture, ready);
        total += ready.bytes;
        for (; total > readyBytesLimit && pictures.size() > 1; pictures.pop_back())
            total -= pictures.back().bytes;
        return ready;
    }

 private:
    std::list<ReadyPicture> pictures;
    std::size_t total = 0;
};

/// Pixels at the edge don't fade into the ground; other surfaces than pictures would write such an edge as more pixels.
void drawPixels(cairo_t* context, const Picture& picture, cairo_surface_t* pixels) {
    const PMMatrix unit = picture.imageMatrix();
    const cairo_matrix_t toPicture = {unit.a, unit.b, unit.c, unit.d, unit.tx, unit.ty};
    cairo_transform(context, &toPicture);
    cairo_rectangle(context, 0, 0, 1, 1);
    cairo_scale(context, 1.0 / cairo_image_surface_get_width(pixels), 1.0 / cairo_image_surface_get_height(pixels));
    cairo_set_source_surface(context, pixels, 0, 0);
    const bool isPicture = cairo_surface_get_type(cairo_get_group_target(context)) == CAIRO_SURFACE_TYPE_IMAGE;
    if (isPicture) cairo_pattern_set_extend(cairo_get_source(context), CAIRO_EXTEND_PAD);
    cairo_fill(context);
}

void drawPage(cairo_t* context, const Picture& picture, PopplerPage* page) {
    const PMPoint size = picture.size();
    cairo_rectangle(context, 0, 0, size.x, size.y);
    cairo_clip(context);
    if (!picture.info().page.transparent) {
        cairo_set_source_rgb(context, 1, 1, 1);
        cairo_paint(context);
    }
    double width = 0, height = 0;
    poppler().page_get_size(page, &width, &height);
    if (!(width > 0 && height > 0)) return;
    cairo_scale(context, size.x / width, size.y / height);
    poppler().page_render_for_printing_with_options(page, context, POPPLER_PRINT_DOCUMENT);
}

}  // namespace

bool drawPicture(cairo_t* context, const Picture& picture) {
    static thread_local ReadyPictures pictures;
    const ReadyPicture& ready = pictures.get(picture);
    if (ready.pixels == nullptr && ready.page == nullptr) return false;
    cairo_save(context);
    if (ready.pixels != nullptr) {
        drawPixels(context, picture, ready.pixels.get());
    } else {
        drawPage(context, picture, ready.page.get());
    }
    cairo_restore(context);
    return true;
}

}  // namespace tarnova
