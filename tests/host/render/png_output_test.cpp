#include "host/render/png_output.h"

#include <cairo.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>

#include "tests/host/render/page_kit.h"

namespace tarnova {
namespace {

using namespace tarnova::testing;

constexpr int block = 8;  // pixels

/// A PNG file, read back.
class Picture {
 public:
    explicit Picture(const std::string& path) : surface(cairo_image_surface_create_from_png(path.c_str())) {}
    ~Picture() { cairo_surface_destroy(surface); }
    Picture(const Picture&) = delete;
    Picture& operator=(const Picture&) = delete;

    [[nodiscard]] int width() const { return cairo_image_surface_get_width(surface); }
    [[nodiscard]] int height() const { return cairo_image_surface_get_height(surface); }
    [[nodiscard]] std::uint32_t at(int x, int y) const {
        std::uint32_t pixel = 0;
        std::memcpy(&pixel, cairo_image_surface_get_data(surface) + y * cairo_image_surface_get_stride(surface) + 4 * x,
                    4);
        return pixel & 0xFFFFFF;
    }
    [[nodiscard]] int darkPixels(int left, int top, int right, int bottom) const {
        int count = 0;
        for (int y = top; y < bottom; ++y) {
            for (int x = left; x < right; ++x)
                count += (at(x, y) & 0xFF) < 0x80 ? 1 : 0;
        }
        return count;
    }

    /// How dark a block is by its green, from 0 (white) to 1.
    [[nodiscard]] double ink(int left, int top) const {
        double sum = 0;
        for (int y = top; y < top + block; ++y) {
            for (int x = left; x < left + block; ++x)
                sum += 0xFF - static_cast<double>(at(x, y) >> 8 & 0xFF);
        }
        return sum / (0xFF * block * block);
    }

 private:
    cairo_surface_t* surface;
};

class PngFile : public ::testing::Test {
 protected:
    void draw(double dpi) {
        std::string error;
        ASSERT_TRUE(writePagePng(kit.list, path, dpi, error)) << error;
    }

    ScratchFolder folder;
    std::string path = folder.path("page.png");
    PageKit kit;  // 200 by 300 points
};

TEST_F(PngFile, ColoursAreWhereTheyBelong) {
    kit.rectangle({20, 30, 60, 50}, {PageKit::red, 1});
    kit.rectangle({100, 30, 140, 50}, {PageKit::bluish, 1});
    kit.rectangle({0, 0, 10, 10}, {swatchBlack, 0.5}).toPage = {0, 2, -2, 0, 180, 100};
    draw(72);
    const Picture picture(path);
    EXPECT_EQ(picture.width(), 200);
    EXPECT_EQ(picture.height(), 300);
    struct TestRow {
        int x, y;
        std::uint32_t color;
    };
    const TestRow rows[] = {{30, 40, 0xFF0000},  {19, 40, 0xFFFFFF},   {60, 49, 0xFFFFFF},   {59, 49, 0xFF0000},
                            {120, 40, 0x0080FF}, {170, 110, 0x808080}, {182, 110, 0xFFFFFF}, {158, 110, 0xFFFFFF}};
    for (const auto& [x, y, color] : rows)
        EXPECT_EQ(picture.at(x, y), color) << x << ", " << y;
}

TEST_F(PngFile, TheResolutionGivesTheSizeAndIsWrittenDown) {
    draw(150);
    const Picture picture(path);
    EXPECT_EQ(picture.width(), 417);
    EXPECT_EQ(picture.height(), 625);
    const std::string said = runCommand("identify -units PixelsPerInch -format '%x' '" + path + "'").output;
    EXPECT_NEAR(std::stod(said), 150, 0.1);
}

TEST_F(PngFile, TextInkStaysInItsLine) {
    CharFormat format;
    format.pointSize = 20;
    kit.line(U"HHHH", 50, 100, format);
    draw(72);
    const Picture picture(path);
    const int right = 50 + static_cast<int>(kit.lastLine().runs[0].width) + 1;
    EXPECT_GT(picture.darkPixels(50, 84, right, 101), 100);
    EXPECT_EQ(picture.darkPixels(0, 0, 200, 300), picture.darkPixels(50, 84, right, 101)) << "and nowhere else";
}

/// Another program's picture of our PDF and our own picture show the same page.
TEST_F(PngFile, AgreesWithThePdf) {
    // The two convert CMYK differently, so black is RGB here.
    kit.swatches.push_back({"Screen black", Swatch::Space::rgb, {0, 0, 0, 0}});
    CharFormat format;
    format.color = {static_cast<std::int32_t>(kit.swatches.size()) - 1, 1};
    format.pointSize = 24;
    format.underline = true;
    kit.line(U"Springfield", 20, 60, format);
    format.family = "DejaVu Sans";
    format.horizontalScale = 0.7;
    kit.line(U"Kαλημέρα", 20, 120, format, {0.9, 0.3, -0.3, 0.9, 20, 0});
    ItemShape ellipse;
    ellipse.kind = pathInfoRec::Kind::ellipse;
    ellipse.bounds = {0, 0, 100, 50};
    ellipse.stroke.paint = {PageKit::bluish, 1};
    ellipse.stroke.weight = 4;
    ellipse.stroke.dash = {12, 6};
    kit.shape(ellipse, {1, 0.2, 0, 1, 40, 200});
    draw(288);
    PdfWriter writer;
    ASSERT_TRUE(writer.open(folder.path("page.pdf"), {}) && writer.addPage(kit.list) && writer.finish());
    ASSERT_EQ(
        runCommand("pdftoppm -r 288 -png -singlefile '" + folder.path("page.pdf") + "' '" + folder.path("other") + "'")
            .status,
        0);
    const Picture own(path), other(folder.path("other.png"));
    ASSERT_EQ(own.width(), other.width());
    ASSERT_EQ(own.height(), other.height());
    double largest = 0;
    for (int y = 0; y + block <= own.height(); y += block) {
        for (int x = 0; x + block <= own.width(); x += block) {
            largest = std::max(largest, std::fabs(own.ink(x, y) - other.ink(x, y)));
        }
    }
    EXPECT_GT(own.darkPixels(0, 0, own.width(), own.height()), 3000);
    EXPECT_LT(largest, 0.3) << "edges may be smoothed differently, shapes may not move";
}

TEST_F(PngFile, RefusesWhatNoPictureCanHold) {
    struct TestRow {
        const char* name;
        double width, height, dpi;
        const char* reason;
    };
    const TestRow rows[] = {
        {"no resolution", 200, 300, 0, "resolution must be 1 to 2400"},
        {"not a number", 200, 300, std::numeric_limits<double>::quiet_NaN(), "resolution must be 1 to 2400"},
        {"a side too long", 14400, 72, 300, "too many for a picture; lower the resolution"},
        {"too large an area", 2000, 2000, 1000, "27778 × 27778 pixels"},
    };
    for (const auto& [name, width, height, dpi, reason] : rows) {
        const PageKit page(width, height);
        std::string error;
        EXPECT_FALSE(writePagePng(page.list, path, dpi, error)) << name;
        EXPECT_NE(error.find(reason), std::string::npos) << error;
        EXPECT_NE(error.find(path), std::string::npos) << error;
    }
    std::string error;
    EXPECT_FALSE(writePagePng(kit.list, folder.path("none/x.png"), 72, error));
    EXPECT_NE(error.find("No such file"), std::string::npos) << error;
    EXPECT_EQ(folder.fileCount(), 0u);
}

TEST(PngPagePath, NumbersStandBeforeTheExtension) {
    struct TestRow {
        const char* path;
        std::int32_t number, count;
        bool single;
        const char* expected;
    };
    const TestRow rows[] = {
        {"out.png", 1, 1, true, "out.png"},
        {"out.png", 7, 12, false, "out-007.png"},
        {"a.b/out.png", 7, 12345, false, "a.b/out-00007.png"},
        {"a.b/out", 7, 12, false, "a.b/out-007"},
    };
    for (const auto& [path, number, count, single, expected] : rows) {
        EXPECT_EQ(pngPagePath(path, number, count, single), expected);
    }
}

}  // namespace
}  // namespace tarnova
