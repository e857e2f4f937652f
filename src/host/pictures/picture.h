// A picture as its file has it: what it is, its size on paper, and its contents in the form that each output wants.
//
// A picture is immutable and shared. Its own coordinates are points with the y axis downward: (0, 0) is its top left
// corner, `size()` the bottom right one, at 100 %. Contents (the file's bytes, decoded pixels, a page as PDF) are made
// when they are asked for and kept as long as the library has room, so take them once and drop them when they are
// drawn.

#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "document/geometry.h"

namespace tarnova {

enum class PictureFormat : std::uint8_t { tiff, jpeg, png, gif, bmp, webp, svg, eps, pdf };

/// "JPEG" and so on.
[[nodiscard]] const char* formatName(PictureFormat format);

/// `raster`: pixels. `page`: a page of PDF, which an SVG or EPS file becomes too.
enum class PictureKind : std::uint8_t { raster, page };

enum class PictureColor : std::uint8_t { bilevel, gray, rgb, cmyk };

/// Bytes of a pixel in `PictureSamples::color`: 1, 1, 3, 4.
[[nodiscard]] std::uint32_t componentsOf(PictureColor color);

inline constexpr double usualResolution = 72;  // pixels per inch, of files that have none
inline constexpr std::uint64_t picturePixelLimit = 150'000'000;
inline constexpr std::uint32_t pictureSideLimit = 1u << 17;              // pixels
inline constexpr std::uint64_t pictureFileSizeLimit = 1u << 30;          // bytes
inline constexpr double pictureLeastSide = 0.01, pictureMostSide = 1e6;  // points

/// What the file says of its pixels.
struct RasterInfo {
    std::uint32_t width = 0;  // pixels as they are stored, before they are turned
    std::uint32_t height = 0;
    PictureColor color = PictureColor::rgb;
    bool hasAlpha = false;
    std::uint8_t orientation = 1;  // 1 to 8, TIFF 6.0 and Exif; `Picture::imageMatrix` has it in it
    double xPerInch = usualResolution;
    double yPerInch = usualResolution;
    std::string iccProfile;  // of `color`; empty when the file has none that fits
    /// Of a JPEG with four components: its data has 255 where there is no ink (Adobe's way). `PictureSamples` never
    /// has.
    bool jpegInverted = false;
    bool jpegPassesThrough = false;  // the file's bytes are what a PDF reader decodes (baseline or progressive, 8 bits)
};

/// What part of a PDF page is shown; the numbers are those of the place preferences. Others are taken for `crop`.
enum class PdfCrop : std::uint32_t {
    visibleContent = 0,  // what is painted on layers that are on
    art = 2,
    crop = 3,
    trim = 4,
    bleed = 5,
    media = 6,
    allContent = 7,
};

/// Which page of a PDF file, and how. Other files have one page and look at none of it.
struct PageChoice {
    std::int32_t page = 0;  // from 0; one that the file hasn't gives the first
    std::uint32_t crop = static_cast<std::uint32_t>(PdfCrop::crop);
    bool transparent = true;  // false: on a white ground
    friend bool operator==(const PageChoice&, const PageChoice&) = default;
};

struct PageInfo {
    std::int32_t page = 0;       // from 0, the one that is shown
    std::int32_t pageCount = 1;  // of the file
    PMRect box;                 // in the page's user space with its y upward: `top` is the lower y, `bottom` the higher
    std::int32_t rotation = 0;  // clockwise: 0, 90, 180 or 270
    double userUnit = 1;        // points a unit
    bool transparent = true;
};

/// A closed outline of cubic curves: each knot's curve goes on from `out` to the next knot's `in`.
struct OutlineKnot {
    PMPoint in, at, out;
};
using PictureContour = std::vector<OutlineKnot>;
using PictureOutline = std::vector<PictureContour>;

/// A path that the file holds by a name, in the picture's coordinates.
struct EmbeddedPath {
    std::string name;  // UTF-8
    PictureOutline outline;
};

/// Decoded pixels: rows from the top as they are stored, the first pixel of a row on the left.
struct PictureSamples {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    PictureColor color = PictureColor::rgb;
    std::vector<std::uint8_t>
        values;  // `componentsOf(color)` bytes a pixel; a bilevel pixel is 0 or 255; CMYK: 255 is ink
    std::vector<std::uint8_t> alpha;  // a byte a pixel, 255 is opaque, and `values` aren't multiplied by it; or empty
};

/// 128 bits that files of the same bytes share, and no others in practice.
struct ContentKey {
    std::uint64_t high = 0;
    std::uint64_t low = 0;
    friend bool operator==(const ContentKey&, const ContentKey&) = default;
    friend bool operator<(const ContentKey& a, const ContentKey& b) {
        return a.high != b.high ? a.high < b.high : a.low < b.low;
    }
};

struct PictureInfo {
    PictureFormat format = PictureFormat::png;
    PictureKind kind = PictureKind::raster;
    PMPoint size;                     // points at 100 %
    RasterInfo raster;                // of kind `raster`
    PageInfo page;                    // of kind `page`
    std::vector<EmbeddedPath> paths;  // of TIFF and JPEG
    std::string clipPathName;         // the one of `paths` that the file itself clips with; may be empty
};

/// Maps the unit square, in which the first stored row lies along the upper edge from left to right, to the picture's
/// coordinates.
[[nodiscard]] PMMatrix imageMatrixOf(const PictureInfo& info);
/// Maps the user space of the PDF page to the picture's coordinates.
[[nodiscard]] PMMatrix pageMatrixOf(const PictureInfo& info);

class Picture {
 public:
    virtual ~Picture() = default;

    [[nodiscard]] const PictureInfo& info() const { return facts; }
    [[nodiscard]] PMPoint size() const { return facts.size; }
    /// Equal keys: the same content shown the same way, so one object of an output serves both.
    [[nodiscard]] ContentKey contentKey() const { return key; }

    [[nodiscard]] PMMatrix imageMatrix() const { return imageMatrixOf(facts); }
    [[nodiscard]] PMMatrix pageMatrix() const { return pageMatrixOf(facts); }

    // Null when the content can't be had (any more): the file has gone or changed since, or its data is damaged. The
    // drawing then shows the picture as damaged.
    /// The bytes of the file. A JPEG whose `jpegPassesThrough` is set goes into a PDF as these.
    [[nodiscard]] virtual std::shared_ptr<const std::string> fileBytes() const = 0;
    /// The pixels; null for kind `page`.
    [[nodiscard]] virtual std::shared_ptr<const PictureSamples> samples() const = 0;
    /// A whole PDF file in which `info().page.page` is what is shown: the file itself, or what an SVG or EPS became.
    /// Null for kind `raster`.
    [[nodiscard]] virtual std::shared_ptr<const std::string> pdfBytes() const = 0;

 protected:
    PictureInfo facts;
    ContentKey key;
};

}  // namespace tarnova
