#include "host/pictures/picture_format.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <utility>

#include "host/pictures/picture_library.h"

namespace tarnova {

namespace {

// An EPS may hold the mark of a PDF near its beginning, so that it stands in front.
constexpr FormatReader formatReaders[] = {
    {PictureFormat::jpeg, "JPEG", ".jpg.jpeg.jpe.jfif", isJpeg, readJpeg, decodeJpeg, nullptr, false},
    {PictureFormat::png, "PNG", ".png", isPng, readPng, decodePng, nullptr, false},
    {PictureFormat::tiff, "TIFF", ".tif.tiff", isTiff, readTiff, decodeTiff, nullptr, true},
    {PictureFormat::gif, "GIF", ".gif", isGif, readGif, decodeGif, nullptr, true},
    {PictureFormat::bmp, "BMP", ".bmp.dib", isBmp, readBmp, decodeBmp, nullptr, true},
    {PictureFormat::webp, "WebP", ".webp", isWebp, readWebp, decodeWebp, nullptr, true},
    {PictureFormat::eps, "EPS", ".eps.epsf.ps", isEps, nullptr, nullptr, epsToPdf, false},
    {PictureFormat::pdf, "PDF", ".pdf.ai", isPdf, readPdf, nullptr, nullptr, false},
    {PictureFormat::svg, "SVG", ".svg", isSvg, nullptr, nullptr, svgToPdf, false},
};

constexpr double leastResolution = 1, mostResolution = 100'000;

double resolutionOrUsual(double perInch) {
    return perInch >= leastResolution && perInch <= mostResolution ? perInch : usualResolution;
}

/// True for an ICC profile (ICC.1, 7.2) for pixels of this colour.
bool profileFits(std::string_view profile, PictureColor color) {
    constexpr std::size_t headerBytes = 128, spaceAt = 16, signatureAt = 36;
    if (profile.size() < headerBytes || profile.substr(signatureAt, 4) != "acsp") return false;
    const std::string_view space = profile.substr(spaceAt, 4);
    switch (color) {
        case PictureColor::cmyk:
            return space == "CMYK";
        case PictureColor::rgb:
            return space == "RGB ";
        default:
            return space == "GRAY";
    }
}

}  // namespace

const FormatReader* formatOf(std::string_view bytes) {
    const auto found = std::find_if(std::begin(formatReaders), std::end(formatReaders),
                                    [&](const FormatReader& row) { return row.recognizes(bytes); });
    return found == std::end(formatReaders) ? nullptr : found;
}

const FormatReader& readerOf(PictureFormat format) {
    return *std::find_if(std::begin(formatReaders), std::end(formatReaders),
                         [&](const FormatReader& row) { return row.format == format; });
}

const char* formatName(PictureFormat format) {
    return readerOf(format).name;
}

bool hasPictureName(std::string_view path) {
    const std::size_t dot = path.rfind('.');
    if (dot == std::string_view::npos || path.find('/', dot) != std::string_view::npos) return false;
    std::string ending(path.substr(dot));
    for (char& c : ending)
        c = c >= 'A' && c <= 'Z' ? static_cast<char>(c + 'a' - 'A') : c;
    return std::any_of(std::begin(formatReaders), std::end(formatReaders), [&](const FormatReader& row) {
        return (std::string(row.endings) + '.').find(ending + '.') != std::string::npos;
    });
}

std::uint32_t componentsOf(PictureColor color) {
    return color == PictureColor::cmyk ? 4 : color == PictureColor::rgb ? 3 : 1;
}

void checkPixels(std::uint64_t width, std::uint64_t height) {
    if (width == 0 || height == 0) throw PictureFault("The picture has no pixels.");
    if (width > pictureSideLimit || height > pictureSideLimit || width * height > picturePixelLimit) {
        throw PictureFault("The picture has " + std::to_string(width) + " x " + std::to_string(height) + " pixels; " +
                           std::to_string(picturePixelLimit / 1'000'000) +
                           " million, and 131,072 to a side, are the most.");
    }
}

void finishRaster(PictureInfo& info) {
    RasterInfo& raster = info.raster;
    raster.xPerInch = resolutionOrUsual(raster.xPerInch);
    raster.yPerInch = resolutionOrUsual(raster.yPerInch);
    if (raster.orientation < 1 || raster.orientation > 8) raster.orientation = 1;
    info.size = {raster.width * 72 / raster.xPerInch, raster.height * 72 / raster.yPerInch};
    if (raster.orientation > 4) std::swap(info.size.x, info.size.y);
    if (!profileFits(raster.iccProfile, raster.color)) raster.iccProfile.clear();
    const PMMatrix fromUnits = imageMatrixOf(info);
    for (EmbeddedPath& path : info.paths) {
        for (PictureContour& contour : path.outline) {
            for (OutlineKnot& knot : contour)
                knot = {fromUnits.map(knot.in), fromUnits.map(knot.at), fromUnits.map(knot.out)};
        }
    }
}

PictureSamples roomForSamples(const RasterInfo& raster) {
    PictureSamples out{raster.width, raster.height, raster.color, {}, {}};
    const std::size_t pixels = std::size_t{raster.width} * raster.height;
    out.values.resize(pixels * componentsOf(raster.color));
    if (raster.hasAlpha) out.alpha.resize(pixels);
    return out;
}

void splitAlpha(PictureSamples& samples) {
    const std::size_t components = componentsOf(samples.color);
    const std::size_t pixels = samples.values.size() / (components + 1);
    samples.alpha.resize(pixels);
    std::uint8_t* to = samples.values.data();
    const std::uint8_t* from = to;
    for (std::size_t i = 0; i < pixels; ++i) {
        for (std::size_t c = 0; c < components; ++c)
            *to++ = *from++;
        samples.alpha[i] = *from++;
    }
    samples.values.resize(pixels * components);
}

}  // namespace tarnova
