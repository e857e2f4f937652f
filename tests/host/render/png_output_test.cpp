#include "host/render/png_output.h"

#include <gtest/gtest.h>

#include <limits>

#include "tests/host/render/page_kit.h"
#include "tests/host/render/picture.h"

namespace tarnova {
namespace {

using namespace tarnova::testing;

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
    const PngPicture picture(path);
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
    const PngPicture picture(path);
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
    const PngPicture picture(path);
    const int right = 50 + static_cast<int>(kit.lastLine().runs[0].width) + 1;
    EXPECT_GT(picture.darkPixels(50, 84, right, 101), 100);
    EXPECT_EQ(picture.darkPixels(0, 0, 200, 300), picture.darkPixels(50, 84, right, 101)) << "and nowhere else";
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
    EXPECT_EQ(folder.fileCount(), 0u);
}

}  // namespace
}  // namespace tarnova
