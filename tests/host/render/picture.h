// PNG pictures read back, and a page on which outputs have to agree.

#pragma once

#include <cairo.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <string>

#include "tests/host/render/page_kit.h"

namespace tarnova::testing {

/// A PNG file.
class PngPicture {
 public:
    static constexpr int block = 8;  // pixels

    explicit PngPicture(const std::string& path) : surface(cairo_image_surface_create_from_png(path.c_str())) {}
    ~PngPicture() { cairo_surface_destroy(surface); }
    PngPicture(const PngPicture&) = delete;
    PngPicture& operator=(const PngPicture&) = delete;

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
    [[nodiscard]] int darkPixels() const { return darkPixels(0, 0, width(), height()); }

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

/// How far the ink of two pictures of one size is apart in the block where it differs most.
inline double largestDifference(const PngPicture& own, const PngPicture& other) {
    double largest = 0;
    for (int y = 0; y + PngPicture::block <= own.height(); y += PngPicture::block) {
        for (int x = 0; x + PngPicture::block <= own.width(); x += PngPicture::block) {
            largest = std::max(largest, std::fabs(own.ink(x, y) - other.ink(x, y)));
        }
    }
    return largest;
}

/// Edges may be smoothed differently, but shapes may not move.
inline void expectTheSamePicture(const PngPicture& own, const PngPicture& other) {
    ASSERT_EQ(own.width(), other.width());
    ASSERT_EQ(own.height(), other.height());
    EXPECT_GT(own.darkPixels(), 3000);
    EXPECT_LT(largestDifference(own, other), 0.3);
}

/// Text in two fonts, upright and turned, and a dashed ellipse; all in RGB, since programs convert CMYK differently.
void drawSample(PageKit& kit);

/// A page as PDF, PostScript, EPS and SVG, each drawn by another program, beside our own picture (outputs_test.cpp).
void expectOutputsAgree(const DisplayList& page, const ScratchFolder& folder);

}  // namespace tarnova::testing
