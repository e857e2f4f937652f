// TIFF (TIFF 6.0 and BigTIFF), its first picture. Gray, RGB and CMYK of up to 16 bits are taken as they are; other
// colours (palettes, YCbCr, Lab, floating point) as the RGB that libtiff makes of them.

#include <algorithm>
#include <cstring>
#include <vector>

#include "host/pictures/photoshop_resources.h"
#include "host/pictures/picture_format.h"
#include "host/pictures/tiff_file.h"

namespace tarnova {

namespace {

constexpr std::uint64_t mostExpansion = 100'000;  // of packed pixels; only files that are made to harm reach it

struct TiffLayout {
    std::uint16_t bits = 1, samples = 1, photometric = PHOTOMETRIC_MINISWHITE, planar = PLANARCONFIG_CONTIG,
                  format = SAMPLEFORMAT_UINT, inkSet = INKSET_CMYK, extraCount = 0;
    bool firstExtraIsAlpha = false;
    bool alphaIsMultiplied = false;  // into the values
};

std::uint16_t field(TIFF* tiff, std::uint32_t tag, std::uint16_t usual) {
    std::uint16_t value = usual;
    return TIFFGetFieldDefaulted(tiff, tag, &value) != 0 ? value : usual;
}

TiffLayout layoutOf(TIFF* tiff) {
    TiffLayout out;
    out.bits = field(tiff, TIFFTAG_BITSPERSAMPLE, 1);
    out.samples = field(tiff, TIFFTAG_SAMPLESPERPIXEL, 1);
    out.photometric = field(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK);
    out.planar = field(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    out.format = field(tiff, TIFFTAG_SAMPLEFORMAT, SAMPLEFORMAT_UINT);
    out.inkSet = field(tiff, TIFFTAG_INKSET, INKSET_CMYK);
    std::uint16_t* kinds = nullptr;
    if (TIFFGetField(tiff, TIFFTAG_EXTRASAMPLES, &out.extraCount, &kinds) == 0) out.extraCount = 0;
    out.firstExtraIsAlpha = out.extraCount > 0 && kinds[0] != EXTRASAMPLE_UNSPECIFIED;
    out.alphaIsMultiplied = out.firstExtraIsAlpha && kinds[0] == EXTRASAMPLE_ASSOCALPHA;
    return out;
}

/// The colour of pixels that are taken as they are; false for those of libtiff's way to RGB.
bool plainColor(TIFF* tiff, const TiffLayout& layout, PictureColor& color) {
    const bool plainBits =
        layout.bits == 1 || layout.bits == 2 || layout.bits == 4 || layout.bits == 8 || layout.bits == 16;
    if (!plainBits || layout.format != SAMPLEFORMAT_UINT || TIFFIsTiled(tiff) != 0) return false;
    switch (layout.photometric) {
        case PHOTOMETRIC_MINISWHITE:
        case PHOTOMETRIC_MINISBLACK:
            color = layout.bits == 1 && layout.samples == 1 ? PictureColor::bilevel : PictureColor::gray;
            return true;
        case PHOTOMETRIC_RGB:
            color = PictureColor::rgb;
            return layout.samples >= 3 && layout.bits >= 8;
        case PHOTOMETRIC_SEPARATED:
            color = PictureColor::cmyk;
            return layout.samples >= 4 && layout.inkSet == INKSET_CMYK && layout.bits >= 8;
        default:
            return false;
    }
}

/// One plane's or all planes' row, as bytes a sample.
void widen(const std::uint8_t* from, std::uint16_t bits, std::size_t count, std::uint8_t* to) {
    if (bits == 8) {
        std::memcpy(to, from, count);
        return;
    }
    for (std::size_t i = 0; i < count; ++i) {
        if (bits == 16) {
            std::uint16_t value;
            std::memcpy(&value, from + 2 * i, 2);
            to[i] = static_cast<std::uint8_t>((value * 255u + 32767u) / 65535u);
            continue;
        }
        const std::size_t bit = i * bits;
        const unsigned most = (1u << bits) - 1;
        const unsigned value = from[bit / 8] >> (8 - bits - bit % 8) & most;
        to[i] = static_cast<std::uint8_t>(value * 255 / most);
    }
}

/// Sends the samples of a pixel to where they belong; further ones are left out.
class RowSink {
 public:
    RowSink(const TiffLayout& itsLayout, PictureSamples& itsOut) : layout(itsLayout), out(itsOut) {}

    /// `row` holds `stride` samples a pixel, from sample `first` on.
    void take(std::uint32_t y, const std::uint8_t* row, std::uint16_t first, std::uint16_t stride) {
        const std::uint32_t components = componentsOf(out.color);
        const std::size_t pixel = std::size_t{y} * out.width;
        for (std::uint16_t s = first; s < first + stride; ++s) {
            const bool isAlpha = s == components && !out.alpha.empty();
            if (s >= components && !isAlpha) break;
            std::uint8_t* to = isAlpha ? out.alpha.data() + pixel : out.values.data() + pixel * components + s;
            const std::size_t step = isAlpha ? 1 : components;
            const std::uint8_t flip = !isAlpha && layout.photometric == PHOTOMETRIC_MINISWHITE ? 255 : 0;
            for (std::uint32_t x = 0; x < out.width; ++x)
                to[x * step] = row[std::size_t{x} * stride + (s - first)] ^ flip;
        }
    }

 private:
    const TiffLayout& layout;
    PictureSamples& out;
};

void divideByAlpha(PictureSamples& samples) {
    const std::size_t components = componentsOf(samples.color);
    for (std::size_t i = 0; i < samples.alpha.size(); ++i) {
        const unsigned alpha = samples.alpha[i];
        if (alpha == 0 || alpha == 255) continue;
        for (std::size_t c = 0; c < components; ++c) {
            std::uint8_t& value = samples.values[i * components + c];
            value = static_cast<std::uint8_t>(std::min(value * 255u / alpha, 255u));
        }
    }
}

bool readRows(TIFF* tiff, const TiffLayout& layout, PictureSamples& out) {
    const bool apart = layout.planar == PLANARCONFIG_SEPARATE;
    const std::uint16_t planes = apart ? layout.samples : 1, stride = apart ? 1 : layout.samples;
    const std::size_t samplesInRow = std::size_t{out.width} * stride;
    const auto scanline = static_cast<std::size_t>(std::max<tmsize_t>(TIFFScanlineSize(tiff), 0));
    if (scanline < (samplesInRow * layout.bits + 7) / 8) return false;
    std::vector<std::uint8_t> packed(scanline), row(samplesInRow);
    RowSink sink(layout, out);
    for (std::uint16_t plane = 0; plane < planes; ++plane) {
        for (std::uint32_t y = 0; y < out.height; ++y) {
            if (TIFFReadScanline(tiff, packed.data(), y, plane) < 0) return false;
            widen(packed.data(), layout.bits, samplesInRow, row.data());
            sink.take(y, row.data(), plane, stride);
        }
    }
    if (layout.alphaIsMultiplied) divideByAlpha(out);
    return true;
}

bool readAsRgb(TIFF* tiff, PictureSamples& out, bool withAlpha) {
    std::vector<std::uint32_t> pixels(std::size_t{out.width} * out.height);
    // As the rows are stored: the orientation is the picture's matter.
    const int stored = field(tiff, TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);
    if (TIFFReadRGBAImageOriented(tiff, out.width, out.height, pixels.data(), stored, 1) == 0) return false;
    for (std::size_t i = 0; i < pixels.size(); ++i) {
        out.values[3 * i] = TIFFGetR(pixels[i]);
        out.values[3 * i + 1] = TIFFGetG(pixels[i]);
        out.values[3 * i + 2] = TIFFGetB(pixels[i]);
        if (withAlpha) out.alpha[i] = TIFFGetA(pixels[i]);
    }
    if (withAlpha) divideByAlpha(out);
    return true;
}

TiffFile opened(TiffMemory& memory) {
    TiffFile tiff = openTiff(memory, "r");
    if (tiff == nullptr) throw PictureFault("The TIFF file is damaged.");
    return tiff;
}

void readResolution(TIFF* tiff, RasterInfo& out) {
    float x = 0, y = 0;
    const std::uint16_t unit = field(tiff, TIFFTAG_RESOLUTIONUNIT, RESUNIT_INCH);
    if (unit == RESUNIT_NONE || TIFFGetField(tiff, TIFFTAG_XRESOLUTION, &x) == 0 ||
        TIFFGetField(tiff, TIFFTAG_YRESOLUTION, &y) == 0) {
        return;
    }
    const double perInch = unit == RESUNIT_CENTIMETER ? 2.54 : 1;
    out.xPerInch = double(x) * perInch;
    out.yPerInch = double(y) * perInch;
}

}  // namespace

bool isTiff(std::string_view bytes) {
    constexpr std::string_view marks[] = {{"II*\0", 4}, {"MM\0*", 4}, {"II+\0", 4}, {"MM\0+", 4}};
    return std::ranges::any_of(marks, [&](std::string_view mark) { return bytes.starts_with(mark); });
}

void readTiff(std::string_view bytes, const PageChoice&, PictureInfo& out) {
    TiffMemory memory{bytes};
    const TiffFile tiff = opened(memory);
    RasterInfo& raster = out.raster;
    if (TIFFGetField(tiff.get(), TIFFTAG_IMAGEWIDTH, &raster.width) == 0 ||
        TIFFGetField(tiff.get(), TIFFTAG_IMAGELENGTH, &raster.height) == 0) {
        throw PictureFault("The TIFF file says no size.");
    }
    checkPixels(raster.width, raster.height);
    const TiffLayout layout = layoutOf(tiff.get());
    if (!plainColor(tiff.get(), layout, raster.color)) {
        char reason[1024] = "";
        if (TIFFRGBAImageOK(tiff.get(), reason) == 0) {
            throw PictureFault(std::string("The pixels of the TIFF file are of a kind that isn't read: ") + reason);
        }
        raster.color = PictureColor::rgb;
    }
    raster.hasAlpha = layout.firstExtraIsAlpha;
    if (std::uint64_t{raster.width} * raster.height * layout.bits / 8 / mostExpansion > bytes.size()) {
        throw PictureFault("The TIFF file has fewer data than its size needs.");
    }
    raster.orientation = static_cast<std::uint8_t>(field(tiff.get(), TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT));
    readResolution(tiff.get(), raster);
    std::uint32_t count = 0;
    void* data = nullptr;
    if (TIFFGetField(tiff.get(), TIFFTAG_ICCPROFILE, &count, &data) != 0) {
        raster.iccProfile.assign(static_cast<const char*>(data), count);
    }
    if (TIFFGetField(tiff.get(), TIFFTAG_PHOTOSHOP, &count, &data) != 0) {
        readPhotoshopPaths({static_cast<const char*>(data), count}, out);
    }
}

PictureSamples decodeTiff(std::string_view bytes, const PictureInfo& info) {
    TiffMemory memory{bytes};
    const TiffFile tiff = opened(memory);
    const TiffLayout layout = layoutOf(tiff.get());
    PictureSamples out = roomForSamples(info.raster);
    PictureColor color{};
    const bool whole = plainColor(tiff.get(), layout, color) ? readRows(tiff.get(), layout, out)
                                                             : readAsRgb(tiff.get(), out, info.raster.hasAlpha);
    if (!whole) throw PictureFault("The pixels of the TIFF file are damaged.");
    return out;
}

}  // namespace tarnova
