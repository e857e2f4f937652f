#include "host/render/raster_surface.h"

#include <lcms2.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <vector>

namespace tarnova {

namespace {

constexpr std::uint32_t largestSide = 32767;  // cairo's
constexpr std::uint64_t largestArea = std::uint64_t{1} << 27;

using Transform = std::unique_ptr<void, decltype(&cmsDeleteTransform)>;
using Profile = std::unique_ptr<void, decltype(&cmsCloseProfile)>;

/// Null when the profile isn't one of these colours.
Transform transformOf(PictureColor color, const std::string& iccProfile) {
    Transform transform(nullptr, cmsDeleteTransform);
    const Profile from(cmsOpenProfileFromMem(iccProfile.data(), static_cast<cmsUInt32Number>(iccProfile.size())),
                       cmsCloseProfile);
    const Profile srgb(cmsCreate_sRGBProfile(), cmsCloseProfile);
    const cmsUInt32Number format = color == PictureColor::cmyk  ? TYPE_CMYK_8
                                   : color == PictureColor::rgb ? TYPE_RGB_8
                                                                : TYPE_GRAY_8;
    if (from == nullptr || srgb == nullptr) return transform;
    transform.reset(cmsCreateTransform(from.get(), format, srgb.get(), TYPE_RGB_8, INTENT_RELATIVE_COLORIMETRIC,
                                       cmsFLAGS_BLACKPOINTCOMPENSATION));
    return transform;
}

/// A row of any colour as R, G, B.
class RowConverter {
 public:
    RowConverter(PictureColor itsColor, const std::string& iccProfile) : color(itsColor) {
        if (!iccProfile.empty()) transform = transformOf(color, iccProfile);
    }

    void convert(const std::uint8_t* row, std::uint32_t width, std::uint8_t* rgb) const {
        if (transform != nullptr) {
            cmsDoTransform(transform.get(), row, rgb, width);
        } else if (color == PictureColor::rgb) {
            std::memcpy(rgb, row, std::size_t{3} * width);
        } else if (color == PictureColor::cmyk) {
            convertCmyk(row, width, rgb);
        } else {
            for (std::uint32_t x = 0; x < width; ++x)
                std::memset(rgb + std::size_t{3} * x, row[x], 3);
        }
    }

 private:
    static void convertCmyk(const std::uint8_t* row, std::uint32_t width, std::uint8_t* rgb) {
        for (std::uint32_t x = 0; x < width; ++x, row += 4) {
            for (int i = 0; i < 3; ++i)
                *rgb++ = static_cast<std::uint8_t>(((255 - row[i]) * (255 - row[3]) + 127) / 255);
        }
    }

    PictureColor color;
    Transform transform{nullptr, cmsDeleteTransform};
};

std::uint32_t shrinkFactor(const PictureSamples& samples) {
    std::uint32_t factor = 1;
    while (samples.width / factor > largestSide || samples.height / factor > largestSide ||
           std::uint64_t{samples.width / factor} * (samples.height / factor) > largestArea)
        ++factor;
    return factor;
}

/// Means of squares of pixels, multiplied by their alpha as cairo wants them.
class Squares {
 public:
    Squares(const PictureSamples& source, const std::string& iccProfile, std::uint32_t itsFactor)
        : samples(source),
          converter(source.color, iccProfile),
          factor(itsFactor),
          rowBytes(std::size_t{source.width} * componentsOf(source.color)),
          rgb(std::size_t{3} * source.width),
          sums(std::size_t{4} * (source.width / itsFactor)) {}

    void fillRow(std::uint32_t row, std::uint32_t* out) {
        std::fill(sums.begin(), sums.end(), 0);
        for (std::uint32_t y = row * factor; y < (row + 1) * factor; ++y)
            addRow(y);
        const std::uint64_t pixels = std::uint64_t{factor} * factor, full = 255 * pixels;
        for (std::size_t i = 0; i < sums.size(); i += 4) {
            const auto mean = [&](std::size_t at, std::uint64_t unit) {
                return static_cast<std::uint32_t>((sums[i + at] + unit / 2) / unit);
            };
            *out++ = mean(3, pixels) << 24 | mean(0, full) << 16 | mean(1, full) << 8 | mean(2, full);
        }
    }

 private:
    void addRow(std::uint32_t y) {
        converter.convert(samples.values.data() + y * rowBytes, samples.width, rgb.data());
        const std::uint8_t* alpha =
            samples.alpha.empty() ? nullptr : samples.alpha.data() + std::size_t{y} * samples.width;
        const std::uint8_t* color = rgb.data();
        std::uint32_t x = 0;
        for (std::size_t i = 0; i < sums.size(); i += 4) {
            for (std::uint32_t inSquare = 0; inSquare < factor; ++inSquare, ++x, color += 3) {
                const std::uint32_t opacity = alpha == nullptr ? 255 : alpha[x];
                for (std::size_t c = 0; c < 3; ++c)
                    sums[i + c] += color[c] * opacity;
                sums[i + 3] += opacity;
            }
        }
    }

    const PictureSamples& samples;
    RowConverter converter;
    std::uint32_t factor;
    std::size_t rowBytes;
    std::vector<std::uint8_t> rgb;
    std::vector<std::uint64_t> sums;  // of R, G, B times alpha, and of alpha
};

}  // namespace

SurfacePtr rasterSurface(const PictureSamples& samples, const std::string& iccProfile) {
    const std::uint32_t factor = shrinkFactor(samples);
    const cairo_format_t format = samples.alpha.empty() ? CAIRO_FORMAT_RGB24 : CAIRO_FORMAT_ARGB32;
    SurfacePtr surface(cairo_image_surface_create(format, static_cast<int>(samples.width / factor),
                                                  static_cast<int>(samples.height / factor)),
                       cairo_surface_destroy);
    if (cairo_surface_status(surface.get()) != CAIRO_STATUS_SUCCESS) return {nullptr, cairo_surface_destroy};
    unsigned char* row = cairo_image_surface_get_data(surface.get());
    const int stride = cairo_image_surface_get_stride(surface.get());
    Squares squares(samples, iccProfile, factor);
    for (std::uint32_t y = 0; y < samples.height / factor; ++y, row += stride)
        squares.fillRow(y, reinterpret_cast<std::uint32_t*>(row));
    cairo_surface_mark_dirty(surface.get());
    return surface;
}

}  // namespace tarnova
