#include <cmath>

#include "host/pictures/picture_library.h"
#include "tests/host/pictures/picture_kit.h"

namespace tarnova {
namespace {

using enum PictureColor;

/// The middles of the four squares as "red/green/blue/gray", each by its values in steps of a ninth.
std::string squaresOf(const Picture& picture) {
    const auto samples = picture.samples();
    if (samples == nullptr) return "no samples";
    const std::size_t count = componentsOf(samples->color);
    std::string out;
    for (const auto& [x, y] : {std::pair{10, 10}, {30, 10}, {10, 30}, {30, 30}}) {
        const std::size_t at = static_cast<std::size_t>(y) * samples->width + static_cast<std::size_t>(x);
        if (!out.empty()) out += '/';
        for (std::size_t c = 0; c < count; ++c)
            out += std::to_string(std::lround(samples->values[at * count + c] / 255.0 * 9));
        if (!samples->alpha.empty()) out += '@' + std::to_string(std::lround(samples->alpha[at] / 255.0 * 9));
    }
    return out;
}

TEST(PictureFormats, ReadsWhatOthersWrite) {
    const char *const inRgb = "900/090/009/555", *const inGray = "2/6/1/5", *const inCmyk = "0990/9090/9900/0004";
    struct testRow {
        const char* name;
        const char* arguments;
        PictureFormat format;
        PictureColor color;
        const char* squares;
        double side = 40;  // points
    };
    const testRow rows[] = {
        {"rgb.jpg", "-quality 95", PictureFormat::jpeg, rgb, inRgb},
        {"progressive.jpg", "-quality 95 -interlace JPEG -density 144 -units PixelsPerInch", PictureFormat::jpeg, rgb,
         inRgb, 20},
        {"centimetres.jpg", "-density 20 -units PixelsPerCentimeter", PictureFormat::jpeg, rgb, inRgb, 40 * 72 / 50.8},
        {"gray.jpg", "-colorspace gray", PictureFormat::jpeg, gray, inGray},
        {"cmyk.jpg", "-colorspace CMYK -quality 95", PictureFormat::jpeg, cmyk, inCmyk},
        {"rgb.png", "-define png:color-type=2", PictureFormat::png, rgb, inRgb},
        {"palette.png", "-define png:color-type=3", PictureFormat::png, rgb, inRgb},
        {"deep.png", "-depth 16 -define png:color-type=2", PictureFormat::png, rgb, inRgb},
        {"alpha.png", "-alpha set -channel A -evaluate set 33% -define png:color-type=6", PictureFormat::png, rgb,
         "900@3/090@3/009@3/555@3"},
        {"gray.png", "-colorspace gray -depth 8", PictureFormat::png, gray, inGray},
        {"deepGray.png", "-colorspace gray -depth 16", PictureFormat::png, gray, inGray},
        {"bilevel.png", "-colorspace gray -threshold 50% -define png:bit-depth=1", PictureFormat::png, bilevel,
         "0/9/0/9"},
        {"interlaced.png", "-interlace PNG -density 300 -units PixelsPerInch", PictureFormat::png, rgb, inRgb, 9.6},
    };
    const PictureFiles files;
    for (const auto& [name, arguments, format, color, squares, side] : rows) {
        files.make(arguments, name);
        const OpenedPicture opened = PictureLibrary().open(files.path(name));
        ASSERT_EQ(opened.status, PictureStatus::good) << name << ": " << opened.reason;
        const PictureInfo& info = opened.picture->info();
        EXPECT_EQ(info.format, format) << name;
        EXPECT_EQ(info.raster.color, color) << name;
        EXPECT_EQ(squaresOf(*opened.picture), squares) << name;
        EXPECT_NEAR(info.size.x, side, 0.02) << name;
    }
}

}  // namespace
}  // namespace tarnova
