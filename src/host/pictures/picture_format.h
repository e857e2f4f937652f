// The readers of picture files, a row each. They work on a file's bytes in memory and throw PictureFault.

#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

#include "host/pictures/picture.h"

namespace tarnova {

/// Why bytes aren't a picture that we can take: a sentence for people.
struct PictureFault : std::runtime_error {
    using std::runtime_error::runtime_error;
};

struct FormatReader {
    PictureFormat format;
    const char* name;
    std::string_view endings;  // of file names, lower case, each with its dot
    bool (*recognizes)(std::string_view bytes);
    /// What the file says of itself, for all but `format` and `kind`. Null: the file becomes a PDF first.
    void (*read)(std::string_view bytes, const PageChoice& choice, PictureInfo& out);
    PictureSamples (*decode)(std::string_view bytes, const PictureInfo& info);  // of pixels
    std::string (*toPdf)(std::string_view bytes);                               // of what becomes a PDF of one page
    bool checkedByDecoding;                                                     // damage shows only then
};

/// The reader of these bytes by what they begin with; null for none.
[[nodiscard]] const FormatReader* formatOf(std::string_view bytes);
[[nodiscard]] const FormatReader& readerOf(PictureFormat format);

/// Throws unless the pixels are within the limits.
void checkPixels(std::uint64_t width, std::uint64_t height);
/// What follows from what a reader found: the size in points, paths in the picture's coordinates. Resolutions that no
/// picture has become the usual one, and a profile for other colours goes.
void finishRaster(PictureInfo& info);
/// Samples with room for the picture's pixels, and for their alpha when it has one.
[[nodiscard]] PictureSamples roomForSamples(const RasterInfo& raster);
/// Makes of `values`, which holds the alpha as the last byte of each pixel, values and alpha apart.
void splitAlpha(PictureSamples& samples);

// The readers, by file.
bool isJpeg(std::string_view bytes);
void readJpeg(std::string_view bytes, const PageChoice& choice, PictureInfo& out);
PictureSamples decodeJpeg(std::string_view bytes, const PictureInfo& info);
bool isTiff(std::string_view bytes);
void readTiff(std::string_view bytes, const PageChoice& choice, PictureInfo& out);
PictureSamples decodeTiff(std::string_view bytes, const PictureInfo& info);
bool isGif(std::string_view bytes);
void readGif(std::string_view bytes, const PageChoice& choice, PictureInfo& out);
PictureSamples decodeGif(std::string_view bytes, const PictureInfo& info);
bool isBmp(std::string_view bytes);
void readBmp(std::string_view bytes, const PageChoice& choice, PictureInfo& out);
PictureSamples decodeBmp(std::string_view bytes, const PictureInfo& info);
bool isWebp(std::string_view bytes);
void readWebp(std::string_view bytes, const PageChoice& choice, PictureInfo& out);
PictureSamples decodeWebp(std::string_view bytes, const PictureInfo& info);
bool isPdf(std::string_view bytes);
void readPdf(std::string_view bytes, const PageChoice& choice, PictureInfo& out);
bool isEps(std::string_view bytes);
std::string epsToPdf(std::string_view bytes);
bool isSvg(std::string_view bytes);
std::string svgToPdf(std::string_view bytes);
bool isPng(std::string_view bytes);
void readPng(std::string_view bytes, const PageChoice& choice, PictureInfo& out);
PictureSamples decodePng(std::string_view bytes, const PictureInfo& info);

}  // namespace tarnova
