// PNG (ISO/IEC 15948). The chunks are checked here, the pixels are libpng's work.

#include <libdeflate.h>
#include <png.h>

#include <csetjmp>
#include <cstring>
#include <memory>

#include "host/pictures/byte_reader.h"
#include "host/pictures/picture_format.h"

namespace tarnova {

namespace {

constexpr std::string_view pngSignature = "\x89PNG\r\n\x1a\n";
constexpr std::size_t profileLimit = 4u << 20;  // bytes
constexpr std::uint64_t mostInflation = 1032;   // of deflate (RFC 1951): a block's bytes can't stand for more

struct PngHeader {
    std::uint8_t depth = 0;
    std::uint8_t colorType = 0;
};

/// The colours of the types of table 11.1.
PictureColor colorOf(const PngHeader& header, bool hasAlpha) {
    constexpr std::uint8_t colorBit = 2;
    if ((header.colorType & colorBit) != 0) return PictureColor::rgb;
    return header.depth == 1 && !hasAlpha ? PictureColor::bilevel : PictureColor::gray;
}

PngHeader readHeader(const ByteReader& chunk, RasterInfo& out) {
    out.width = chunk.u32(0);
    out.height = chunk.u32(4);
    checkPixels(out.width, out.height);
    const PngHeader header{chunk.u8(8), chunk.u8(9)};
    constexpr std::uint8_t alphaBit = 4;
    out.hasAlpha = (header.colorType & alphaBit) != 0;
    return header;
}

void readResolution(const ByteReader& chunk, RasterInfo& out) {
    constexpr double metresPerInch = 0.0254;
    if (chunk.u8(8) != 1) return;  // a ratio only
    out.xPerInch = chunk.u32(0) * metresPerInch;
    out.yPerInch = chunk.u32(4) * metresPerInch;
}

std::string inflateProfile(std::string_view chunk) {
    const std::size_t nameEnd = chunk.find('\0');
    if (nameEnd == std::string_view::npos || chunk.size() - nameEnd < 2) return {};
    const std::string_view packed = chunk.substr(nameEnd + 2);
    const std::unique_ptr<libdeflate_decompressor, decltype(&libdeflate_free_decompressor)> inflater(
        libdeflate_alloc_decompressor(), libdeflate_free_decompressor);
    std::string out(std::min<std::size_t>(profileLimit, packed.size() * mostInflation), '\0');
    std::size_t size = 0;
    const auto result =
        libdeflate_zlib_decompress(inflater.get(), packed.data(), packed.size(), out.data(), out.size(), &size);
    if (result != LIBDEFLATE_SUCCESS) return {};
    out.resize(size);
    return out;
}

/// Bytes that the pixels take at least before they are packed.
std::uint64_t leastPixelBytes(const RasterInfo& raster, const PngHeader& header) {
    constexpr std::uint8_t paletteType = 3;
    const std::uint64_t channels =
        header.colorType == paletteType ? 1 : componentsOf(raster.color) + ((header.colorType & 4) != 0 ? 1 : 0);
    return raster.width * channels * header.depth / 8 * raster.height;
}

/// libpng's errors leave by longjmp, so `decodeRows` holds nothing that has a destructor.
struct PngSource {
    std::string_view left;
    static void give(png_structp png, png_bytep to, std::size_t count) {
        auto& source = *static_cast<PngSource*>(png_get_io_ptr(png));
        if (count > source.left.size()) png_error(png, "cut off");
        std::memcpy(to, source.left.data(), count);
        source.left.remove_prefix(count);
    }
};

void ignoreWarning(png_structp, png_const_charp) {}

[[noreturn]] void leave(png_structp png, png_const_charp) {
    png_longjmp(png, 1);
}

bool decodeRows(png_structp png, png_infop info, PngSource& source, std::uint8_t* out, std::uint32_t height,
                std::size_t rowBytes) {
    if (setjmp(png_jmpbuf(png)) != 0) return false;
    png_set_read_fn(png, &source, PngSource::give);
    png_set_user_limits(png, pictureSideLimit, pictureSideLimit);
    png_set_chunk_malloc_max(png, profileLimit);
    png_read_info(png, info);
    png_set_expand(png);
    png_set_scale_16(png);
    const int passes = png_set_interlace_handling(png);
    png_read_update_info(png, info);
    if (png_get_rowbytes(png, info) != rowBytes) return false;
    for (int pass = 0; pass < passes; ++pass) {
        for (std::uint32_t y = 0; y < height; ++y)
            png_read_row(png, out + y * rowBytes, nullptr);
    }
    png_read_end(png, nullptr);
    return true;
}

}  // namespace

bool isPng(std::string_view bytes) {
    return bytes.starts_with(pngSignature);
}

void readPng(std::string_view bytes, const PageChoice&, PictureInfo& out) {
    const ByteReader file(bytes);
    RasterInfo& raster = out.raster;
    PngHeader header;
    std::uint64_t dataBytes = 0;
    std::string_view profile;
    for (std::size_t at = pngSignature.size();;) {
        const std::size_t length = file.u32(at);
        const std::string_view type = file.span(at + 4, 4);
        const std::string_view chunk = file.span(at + 8, length);
        if (libdeflate_crc32(0, type.data(), length + 4) != file.u32(at + 8 + length)) {
            throw PictureFault("A checksum of the PNG file is wrong.");
        }
        if (at == pngSignature.size() && type != "IHDR") throw PictureFault("The PNG file has no header.");
        if (type == "IHDR") header = readHeader(ByteReader(chunk), raster);
        if (type == "pHYs") readResolution(ByteReader(chunk), raster);
        if (type == "iCCP") profile = chunk;
        if (type == "tRNS") raster.hasAlpha = true;
        if (type == "IDAT") dataBytes += length;
        if (type == "IEND") break;
        at += length + 12;
    }
    raster.color = colorOf(header, raster.hasAlpha);
    if (dataBytes == 0 || leastPixelBytes(raster, header) / mostInflation > dataBytes) {
        throw PictureFault("The PNG file has fewer data than its size needs.");
    }
    if (!profile.empty()) raster.iccProfile = inflateProfile(profile);
}

PictureSamples decodePng(std::string_view bytes, const PictureInfo& info) {
    const RasterInfo& raster = info.raster;
    PictureSamples out{raster.width, raster.height, raster.color, {}, {}};
    const std::size_t rowBytes = std::size_t{raster.width} * (componentsOf(raster.color) + (raster.hasAlpha ? 1 : 0));
    out.values.resize(rowBytes * raster.height);
    png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, leave, ignoreWarning);
    if (png == nullptr) throw std::bad_alloc();
    png_infop header = png_create_info_struct(png);
    PngSource source{bytes};
    const bool whole = header != nullptr && decodeRows(png, header, source, out.values.data(), raster.height, rowBytes);
    png_destroy_read_struct(&png, &header, nullptr);
    if (!whole) throw PictureFault("The pixels of the PNG file are damaged.");
    if (raster.hasAlpha) splitAlpha(out);
    return out;
}

}  // namespace tarnova
