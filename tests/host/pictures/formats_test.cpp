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
        {"rgb.tif", "", PictureFormat::tiff, rgb, inRgb},
        {"planes.tif", "-interlace plane", PictureFormat::tiff, rgb, inRgb},
        {"deep.tif", "-depth 16 -density 144 -units PixelsPerInch", PictureFormat::tiff, rgb, inRgb, 20},
        {"big.tif", "-endian MSB -compress zip", PictureFormat::tiff, rgb, inRgb},
        {"palette.tif", "-type palette -compress lzw", PictureFormat::tiff, rgb, inRgb},
        {"jpeg.tif", "-compress jpeg -quality 95", PictureFormat::tiff, rgb, inRgb},
        {"tiles.tif", "-define tiff:tile-geometry=16x16", PictureFormat::tiff, rgb, inRgb},
        {"alpha.tif", "-alpha set -channel A -evaluate set 33%", PictureFormat::tiff, rgb, "900@3/090@3/009@3/555@3"},
        {"gray.tif", "-colorspace gray -depth 8", PictureFormat::tiff, gray, inGray},
        {"cmyk.tif", "-colorspace CMYK -depth 8", PictureFormat::tiff, cmyk, inCmyk},
        {"deepCmyk.tif", "-colorspace CMYK -depth 16", PictureFormat::tiff, cmyk, inCmyk},
        {"fax.tif", "-colorspace gray -threshold 50% -compress group4", PictureFormat::tiff, bilevel, "0/9/0/9"},
        {"rgb.gif", "", PictureFormat::gif, rgb, inRgb},
        {"interlaced.gif", "-interlace GIF", PictureFormat::gif, rgb, inRgb},
        {"see-through.gif", "-transparent lime", PictureFormat::gif, rgb, "900@9/000@0/009@9/555@9"},
        {"rgb.bmp", "-density 144 -units PixelsPerInch", PictureFormat::bmp, rgb, inRgb, 20},
        {"palette.bmp", "-type palette -compress RLE", PictureFormat::bmp, rgb, inRgb},
        {"rgb.webp", "-define webp:lossless=true", PictureFormat::webp, rgb, inRgb},
        {"alpha.webp", "-define webp:lossless=true -alpha set -channel A -evaluate set 33%", PictureFormat::webp, rgb,
         "900@3/090@3/009@3/555@3"},
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

/// What is drawn upright lies as the Exif note says; the unit square's corners are those of the stored pixels.
TEST(PictureFormats, TurnsAsTheFileSays) {
    struct testRow {
        int orientation;
        PMPoint topLeft, bottomRight;  // of what is stored, in the picture
        PMPoint size;
    };
    const testRow rows[] = {
        {1, {0, 0}, {40, 20}, {40, 20}}, {2, {40, 0}, {0, 20}, {40, 20}}, {3, {40, 20}, {0, 0}, {40, 20}},
        {4, {0, 20}, {40, 0}, {40, 20}}, {5, {0, 0}, {20, 40}, {20, 40}}, {6, {20, 0}, {0, 40}, {20, 40}},
        {7, {20, 40}, {0, 0}, {20, 40}}, {8, {0, 40}, {20, 0}, {20, 40}},
    };
    const PictureFiles files;
    const std::string orients[] = {"TopLeft", "TopRight", "BottomRight", "BottomLeft",
                                   "LeftTop", "RightTop", "RightBottom", "LeftBottom"};
    for (const auto& [orientation, topLeft, bottomRight, size] : rows) {
        const std::string how = orients[orientation - 1];
        const OpenedPicture opened =
            PictureLibrary().open(files.convert("-size 40x20 xc:red -orient " + how, how + ".tif"));
        ASSERT_EQ(opened.status, PictureStatus::good) << how;
        EXPECT_EQ(opened.picture->size(), size) << how;
        EXPECT_EQ(opened.picture->imageMatrix().map({0, 0}), topLeft) << how;
        EXPECT_EQ(opened.picture->imageMatrix().map({1, 1}), bottomRight) << how;
    }
}

TEST(PictureFormats, ReadsTheNotesOfCameras) {
    const PictureFiles files;
    std::string jpeg = files.makeBytes("-resize 40x20! -density 0 -units Undefined", "a.jpg");
    const std::string exif(
        "Exif\0\0MM\0*\0\0\0\x08\0\x04"
        "\x01\x12\0\x03\0\0\0\x01\0\x06\0\0"
        "\x01\x1A\0\x05\0\0\0\x01\0\0\0\x3E"
        "\x01\x1B\0\x05\0\0\0\x01\0\0\0\x3E"
        "\x01\x28\0\x03\0\0\0\x01\0\x02\0\0"
        "\0\0\0\0\0\0\x01\x20\0\0\0\x02",
        6 + 10 + 4 * 12 + 4 + 8);
    jpeg.insert(2, std::string("\xFF\xE1\0", 3) + static_cast<char>(exif.size() + 2) + exif);
    const OpenedPicture opened = PictureLibrary().open(files.file("exif.jpg", jpeg));
    ASSERT_EQ(opened.status, PictureStatus::good) << opened.reason;
    EXPECT_EQ(opened.picture->info().raster.orientation, 6);
    EXPECT_EQ(opened.picture->size(), (PMPoint{10, 20}));  // 144 to the inch, turned
}

TEST(PictureFormats, KeepsProfilesThatFit) {
    const PictureFiles files;
    const std::string folder = "/usr/share/color/icc/ghostscript/";
    std::string profile;
    ASSERT_EQ(fileReadWhole((folder + "srgb.icc").c_str(), profile, 1 << 20, 0), 0);
    for (const char* name : {"a.jpg", "a.png", "a.tif", "a.webp"}) {
        const auto picture = PictureLibrary().open(files.make("-profile " + folder + "srgb.icc", name)).picture;
        ASSERT_NE(picture, nullptr) << name;
        EXPECT_EQ(picture->info().raster.iccProfile, profile) << name;
    }
    const std::string gray = files.make("-profile " + folder + "srgb.icc -type Grayscale", "gray.jpg");
    EXPECT_EQ(PictureLibrary().open(gray).picture->info().raster.iccProfile, "");
}

TEST(PictureFormats, ShowsTheWantedPartOfAPdfPage) {
    const std::string boxes = "/CropBox[10 10 190 90]/TrimBox[20 20 180 80]/BleedBox[15 15 185 85]/ArtBox[30 30 50 60]";
    struct testRow {
        const char* name;
        std::string members;
        std::int32_t page;
        PdfCrop crop;
        std::int32_t shown;
        PMPoint size;
        PMPoint corner;  // of the user space, at the picture's upper left
    };
    const testRow rows[] = {
        {"no boxes", "", 1, PdfCrop::trim, 1, {200, 100}, {0, 100}},
        {"no such page", boxes, 2, PdfCrop::crop, 0, {200, 100}, {0, 100}},
        {"crop", boxes, 1, PdfCrop::crop, 1, {180, 80}, {10, 90}},
        {"trim", boxes, 1, PdfCrop::trim, 1, {160, 60}, {20, 80}},
        {"bleed", boxes, 1, PdfCrop::bleed, 1, {170, 70}, {15, 85}},
        {"art", boxes, 1, PdfCrop::art, 1, {20, 30}, {30, 60}},
        {"media", boxes, 1, PdfCrop::media, 1, {200, 100}, {0, 100}},
        {"unknown", boxes, 1, PdfCrop{99}, 1, {180, 80}, {10, 90}},
        {"content", boxes, 1, PdfCrop::visibleContent, 1, {30, 20}, {40, 60}},
        {"all content", boxes, 1, PdfCrop::allContent, 1, {30, 20}, {40, 60}},
        {"turned right", boxes + "/Rotate 90", 1, PdfCrop::trim, 1, {60, 160}, {20, 20}},
        {"turned over", boxes + "/Rotate -180", 1, PdfCrop::trim, 1, {160, 60}, {180, 20}},
        {"turned left", boxes + "/Rotate 270", 1, PdfCrop::trim, 1, {60, 160}, {180, 80}},
        {"turned content", boxes + "/Rotate 90", 1, PdfCrop::visibleContent, 1, {20, 30}, {40, 40}},
        {"large units", boxes + "/UserUnit 2", 1, PdfCrop::visibleContent, 1, {60, 40}, {40, 60}},
    };
    const PictureFiles files;
    for (const auto& [name, members, page, crop, shown, size, corner] : rows) {
        const std::string path = files.file("page.pdf", pdfOf(members, "40 40 30 20 re f"));
        const OpenedPicture opened = PictureLibrary().open(path, {page, static_cast<std::uint32_t>(crop), true});
        ASSERT_EQ(opened.status, PictureStatus::good) << name << ": " << opened.reason;
        EXPECT_EQ(opened.picture->info().page.page, shown) << name;
        EXPECT_NEAR(opened.picture->size().x, size.x, 0.05) << name;
        EXPECT_NEAR(opened.picture->size().y, size.y, 0.05) << name;
        const PMPoint at = opened.picture->pageMatrix().map(corner);
        EXPECT_NEAR(std::abs(at.x) + std::abs(at.y), 0, 0.05) << name;
    }
}

TEST(PictureFormats, MakesPagesOfVectors) {
    struct testRow {
        const char* name;
        const char* bytes;
        PictureFormat format;
        PMPoint size;
    };
    const testRow rows[] = {
        {"points",
         "<svg xmlns='http://www.w3.org/2000/svg' width='30' height='20'><rect width='9' height='9'/></svg>",
         PictureFormat::svg,
         {30, 20}},
        {"inches",
         "<?xml version='1.0'?>\n<svg xmlns='http://www.w3.org/2000/svg' width='1in' height='0.5in'/>",
         PictureFormat::svg,
         {72, 36}},
        {"view box", "<svg xmlns='http://www.w3.org/2000/svg' viewBox='5 5 70 40'/>", PictureFormat::svg, {70, 40}},
        {"eps",
         "%!PS-Adobe-3.0 EPSF-3.0\n%%BoundingBox: 10 20 60 45\n%%EndComments\n20 30 10 10 rectfill\n%%EOF\n",
         PictureFormat::eps,
         {50, 25}},
    };
    const PictureFiles files;
    for (const auto& [name, bytes, format, size] : rows) {
        const OpenedPicture opened = PictureLibrary().open(files.file(name, bytes));
        ASSERT_EQ(opened.status, PictureStatus::good) << name << ": " << opened.reason;
        EXPECT_EQ(opened.picture->info().format, format) << name;
        EXPECT_NEAR(opened.picture->size().x, size.x, 0.01) << name;
        EXPECT_NEAR(opened.picture->size().y, size.y, 0.01) << name;
        ASSERT_NE(opened.picture->pdfBytes(), nullptr) << name;
        EXPECT_TRUE(opened.picture->pdfBytes()->starts_with("%PDF-")) << name;
        EXPECT_EQ(opened.picture->samples(), nullptr) << name;
    }
}

}  // namespace
}  // namespace tarnova
