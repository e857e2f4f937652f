// BMP, by gdk-pixbuf's reader.

#include <gdk-pixbuf/gdk-pixbuf.h>

#include <algorithm>
#include <cstdlib>
#include <memory>

#include "host/pictures/byte_reader.h"
#include "host/pictures/picture_format.h"

namespace tarnova {

namespace {

constexpr std::uint32_t coreHeaderBytes = 12;   // of the oldest form, with 16-bit sizes and no resolution
constexpr std::uint32_t mostHeaderBytes = 124;  // of the newest form

struct Unref {
    void operator()(GdkPixbufLoader* loader) const { g_object_unref(loader); }
};

/// How many bytes of pixels the file has to hold, which its reader doesn't look at.
std::size_t bytesOfPixels(const ByteReader& file, const RasterInfo& raster) {
    const bool isCore = file.u32(14) == coreHeaderBytes;
    const std::uint32_t packing = isCore ? 0 : file.u32(30);
    constexpr std::uint32_t runLengths8 = 1, runLengths4 = 2;
    if (packing == runLengths8 || packing == runLengths4) {
        constexpr std::uint64_t mostPixelsAByte = 128;  // two bytes for 255 pixels
        return std::max<std::size_t>(std::uint64_t{raster.width} * raster.height / mostPixelsAByte, file.u32(34));
    }
    const std::uint64_t bits = file.u16(isCore ? 24 : 28);
    return (raster.width * bits + 31) / 32 * 4 * raster.height;
}

/// The table of colours stands between the header and the pixels. Its reader believes any number of them.
void checkColors(const ByteReader& file) {
    const std::uint32_t header = file.u32(14);
    if (header == coreHeaderBytes) return;
    const std::uint64_t colors = file.u32(46);
    if (14 + header + colors * 4 > file.u32(10)) throw PictureFault("The table of colours of the BMP file is damaged.");
}

}  // namespace

bool isBmp(std::string_view bytes) {
    return bytes.starts_with("BM") && bytes.size() > 26;
}

void readBmp(std::string_view bytes, const PageChoice&, PictureInfo& out) {
    const ByteReader file(bytes, false);
    RasterInfo& raster = out.raster;
    if (file.u32(14) > mostHeaderBytes) throw PictureFault("The header of the BMP file is damaged.");
    if (file.u32(14) == coreHeaderBytes) {
        raster.width = file.u16(18);
        raster.height = file.u16(20);
    } else {
        constexpr double metresPerInch = 0.0254;
        raster.width = file.u32(18);
        raster.height = static_cast<std::uint32_t>(std::abs(std::int64_t{file.i32(22)}));  // below 0: from the top
        raster.xPerInch = file.u32(38) * metresPerInch;
        raster.yPerInch = file.u32(42) * metresPerInch;
    }
    checkPixels(raster.width, raster.height);
    checkColors(file);
    (void)file.span(file.u32(10), bytesOfPixels(file, raster));
}

PictureSamples decodeBmp(std::string_view bytes, const PictureInfo& info) {
    const std::unique_ptr<GdkPixbufLoader, Unref> loader(gdk_pixbuf_loader_new_with_type("bmp", nullptr));
    if (loader == nullptr) throw PictureFault("The reader of BMP files isn't installed (gdk-pixbuf).");
    const bool written = gdk_pixbuf_loader_write(loader.get(), reinterpret_cast<const guchar*>(bytes.data()),
                                                 bytes.size(), nullptr) != 0;
    const bool whole = (gdk_pixbuf_loader_close(loader.get(), nullptr) != 0) && written;
    const GdkPixbuf* pixels = gdk_pixbuf_loader_get_pixbuf(loader.get());
    PictureSamples out = roomForSamples(info.raster);
    if (!whole || pixels == nullptr || gdk_pixbuf_get_width(pixels) != static_cast<int>(out.width) ||
        gdk_pixbuf_get_height(pixels) != static_cast<int>(out.height)) {
        throw PictureFault("The BMP file is damaged.");
    }
    const auto channels = static_cast<std::size_t>(gdk_pixbuf_get_n_channels(pixels));
    const auto stride = static_cast<std::size_t>(gdk_pixbuf_get_rowstride(pixels));
    const guchar* from = gdk_pixbuf_read_pixels(pixels);
    for (std::size_t y = 0; y < out.height; ++y) {
        for (std::size_t x = 0; x < out.width; ++x)
            std::copy_n(from + y * stride + x * channels, 3, out.values.data() + (y * out.width + x) * 3);
    }
    return out;
}

}  // namespace tarnova
