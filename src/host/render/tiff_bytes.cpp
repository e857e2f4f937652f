#include "host/render/tiff_bytes.h"

#include <libdeflate.h>

#include <cmath>
#include <cstdint>
#include <memory>

namespace tarnova {

namespace {

constexpr int compressionLevel = 6;
constexpr std::uint32_t headBytes = 8;

enum FieldType : std::uint16_t { typeShort = 3, typeLong = 4, typeRational = 5 };

/// Puts a file together, lowest byte first.
class TiffWriter {
 public:
    void put(std::uint32_t value, int size) {
        for (int i = 0; i < size; ++i)
            bytes.push_back(static_cast<char>(value >> 8 * i & 255));
    }
    /// A field whose value, or its place in the file, fits four bytes.
    void field(std::uint16_t tag, FieldType type, std::uint32_t count, std::uint32_t value) {
        put(tag, 2);
        put(type, 2);
        put(count, 4);
        put(value, 4);
    }
    std::string bytes;
};

std::string rgbRows(cairo_surface_t* pixels, int width, int height) {
    std::string rows;
    rows.reserve(std::size_t{3} * static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
    const unsigned char* row = cairo_image_surface_get_data(pixels);
    for (int y = 0; y < height; ++y, row += cairo_image_surface_get_stride(pixels)) {
        const auto* pixel = reinterpret_cast<const std::uint32_t*>(row);
        for (int x = 0; x < width; ++x) {
            for (const int shift : {16, 8, 0})
                rows.push_back(static_cast<char>(pixel[x] >> shift & 255));
        }
    }
    return rows;
}

std::string deflated(const std::string& data) {
    const std::unique_ptr<libdeflate_compressor, decltype(&libdeflate_free_compressor)> compressor(
        libdeflate_alloc_compressor(compressionLevel), libdeflate_free_compressor);
    std::string out(libdeflate_zlib_compress_bound(compressor.get(), data.size()), '\0');
    out.resize(libdeflate_zlib_compress(compressor.get(), data.data(), data.size(), out.data(), out.size()));
    return out;
}

}  // namespace

std::string tiffBytes(cairo_surface_t* pixels, double pixelsPerInch) {
    const int width = cairo_image_surface_get_width(pixels), height = cairo_image_surface_get_height(pixels);
    const std::string strip = deflated(rgbRows(pixels, width, height));
    constexpr std::uint32_t fieldCount = 13;
    constexpr std::uint32_t bitsAt = headBytes + 2 + 12 * fieldCount + 4, resolutionAt = bitsAt + 6,
                            stripAt = resolutionAt + 8;
    TiffWriter out;
    out.bytes = "II";
    out.put(42, 2);
    out.put(headBytes, 4);
    out.put(fieldCount, 2);
    out.field(256, typeLong, 1, static_cast<std::uint32_t>(width));
    out.field(257, typeLong, 1, static_cast<std::uint32_t>(height));
    out.field(258, typeShort, 3, bitsAt);
    out.field(259, typeShort, 1, 8);  // deflate
    out.field(262, typeShort, 1, 2);  // RGB
    out.field(273, typeLong, 1, stripAt);
    out.field(277, typeShort, 1, 3);  // samples of a pixel
    out.field(278, typeLong, 1, static_cast<std::uint32_t>(height));
    out.field(279, typeLong, 1, static_cast<std::uint32_t>(strip.size()));
    out.field(282, typeRational, 1, resolutionAt);
    out.field(283, typeRational, 1, resolutionAt);
    out.field(284, typeShort, 1, 1);  // the samples of a pixel stand together
    out.field(296, typeShort, 1, 2);  // inches
    out.put(0, 4);
    for (int i = 0; i < 3; ++i)
        out.put(8, 2);
    out.put(static_cast<std::uint32_t>(std::lround(pixelsPerInch * 1000)), 4);
    out.put(1000, 4);
    return out.bytes + strip;
}

}  // namespace tarnova
