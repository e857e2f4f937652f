#include "host/pictures/clip_outline.h"

#include <cmath>

#include "engine/toolkit/byte_order.h"
#include "host/pictures/picture_library.h"
#include "host/pictures/tiff_writer.h"
#include "tests/host/pictures/picture_kit.h"

namespace tarnova {
namespace {

using Type = clipSettingsRec::Type;

/// What an outline of straight lines shows (even-odd), when its contours lie in each other and never cross.
double shownArea(const PictureOutline& outline) {
    std::vector<double> areas;
    for (const PictureContour& contour : outline) {
        double twice = 0;
        for (std::size_t i = 0; i < contour.size(); ++i) {
            const PMPoint &a = contour[i].at, &b = contour[(i + 1) % contour.size()].at;
            twice += a.x * b.y - b.x * a.y;
        }
        areas.push_back(std::abs(twice) / 2);
    }
    std::ranges::sort(areas, std::greater<>());
    double sum = 0;
    for (std::size_t i = 0; i < areas.size(); ++i)
        sum += i % 2 == 0 ? areas[i] : -areas[i];
    return sum;
}

/// 200 x 200 pixels at 144 to the inch, so 100 points: a ring of black, 80 and 40 pixels from the middle, around a dot
/// of 20, and all around it light gray (230).
PictureSamples rings() {
    PictureSamples out{200, 200, PictureColor::gray, {}, {}};
    for (int y = 0; y < 200; ++y) {
        for (int x = 0; x < 200; ++x) {
            const double away = std::hypot(x + 0.5 - 100, y + 0.5 - 100);
            const bool isBlack = away < 20 || (away > 40 && away < 80);
            out.values.push_back(isBlack ? 0 : away > 80 ? 230 : 255);
        }
    }
    return out;
}

double disc(double radius) {
    return 3.14159265 * radius * radius;
}

TEST(ClipOutline, DetectedEdges) {
    struct testRow {
        const char* name;
        clipSettingsRec settings;
        double area;
        std::size_t contours;
    };
    const auto with = [](double threshold, double tolerance, double inset, bool invert, bool inside) {
        return clipSettingsRec{Type::detectedEdges, threshold, tolerance, inset, "", invert, inside, false};
    };
    const testRow rows[] = {
        {"outer edge", with(25, 2, 0, false, false), disc(40), 1},
        {"exact", with(25, 0, 0, false, false), disc(40), 1},
        {"with holes", with(25, 1, 0, false, true), disc(40) - disc(20) + disc(10), 3},
        {"inverted", with(25, 1, 0, true, false), 10'000 - disc(40), 2},
        {"light gray too", with(24, 1, 0, false, false), 10'000, 1},
        {"inward", with(25, 1, 5, false, false), disc(35), 1},
        {"outward", with(25, 1, -5, false, false), disc(45), 1},
        {"the dot has gone", with(25, 1, 10, false, true), 0, 0},
        {"nothing is so dark", with(255, 1, 0, false, false), 0, 0},
    };
    PictureLibrary library;
    const auto picture = library.openBytes(std::make_shared<const std::string>(writeTiff(rings(), 144))).picture;
    ASSERT_NE(picture, nullptr);
    for (const auto& [name, settings, area, contours] : rows) {
        PictureOutline outline;
        EXPECT_EQ(makeClipOutline(*picture, settings, outline), contours > 0) << name;
        EXPECT_EQ(outline.size(), contours) << name;
        EXPECT_NEAR(shownArea(outline), area, area * 0.02) << name;
    }
}

/// A page's pixels are looked at like a picture's, whatever part of it is shown.
TEST(ClipOutline, OfAPage) {
    const PictureFiles files;
    const std::string path = files.file("a.pdf", pdfOf("/CropBox[20 20 120 70]/Rotate 90", "40 40 30 20 re f"));
    for (const PdfCrop crop : {PdfCrop::crop, PdfCrop::media}) {
        const auto picture = PictureLibrary().open(path, {1, static_cast<std::uint32_t>(crop), true}).picture;
        ASSERT_NE(picture, nullptr);
        clipSettingsRec settings;
        settings.type = Type::detectedEdges;
        PictureOutline outline;
        ASSERT_TRUE(makeClipOutline(*picture, settings, outline));
        EXPECT_NEAR(shownArea(outline), 600, 12);
        const PMPoint corner = picture->pageMatrix().map({40, 40});
        double nearest = 1000;
        for (const OutlineKnot& knot : outline.front())
            nearest = std::min(nearest, std::hypot(knot.at.x - corner.x, knot.at.y - corner.y));
        EXPECT_LT(nearest, 1);
    }
}

std::string resource(std::uint16_t id, const std::string& name, const std::string& data) {
    std::string out = "8BIM";
    for (const std::uint32_t number : {std::uint32_t{id} >> 8, std::uint32_t{id} & 255, std::uint32_t(name.size())})
        out += static_cast<char>(number);
    out += name;
    if (name.size() % 2 == 0) out += '\0';
    char size[4];
    storeBig32(size, static_cast<std::uint32_t>(data.size()));
    return out + std::string(size, 4) + data + std::string(data.size() % 2, '\0');
}

/// A square between two shares of the picture's sides, as path records.
std::string squarePath(double from, double to) {
    std::string out = std::string("\0\0\0\x04", 4) + std::string(22, '\0');
    for (const auto& [x, y] : {std::pair{from, from}, {to, from}, {to, to}, {from, to}}) {
        out += std::string("\0\x02", 2);
        for (int point = 0; point < 3; ++point) {
            for (const double share : {y, x}) {
                char number[4];
                storeBig32(number, static_cast<std::uint32_t>(share * (1 << 24)));
                out.append(number, 4);
            }
        }
    }
    return out;
}

TEST(ClipOutline, EmbeddedPaths) {
    const PictureFiles files;
    std::string jpeg = files.makeBytes("", "a.jpg");
    const std::string blocks = "Photoshop 3.0" + std::string(1, '\0') + resource(2000, "Half", squarePath(0.25, 0.75)) +
                               resource(2001, "Whole", squarePath(0, 1)) +
                               resource(2999, "", "\x04Half" + std::string(5, '\0'));
    char length[2];
    storeBig16(length, static_cast<std::uint16_t>(blocks.size() + 2));
    jpeg.insert(2, "\xFF\xED" + std::string(length, 2) + blocks);
    const OpenedPicture opened = PictureLibrary().open(files.file("paths.jpg", jpeg));
    ASSERT_EQ(opened.status, PictureStatus::good) << opened.reason;
    EXPECT_EQ(opened.picture->info().clipPathName, "Half");
    struct testRow {
        const char* path;
        double inset;
        double area;
    };
    for (const auto& [path, inset, area] :
         {testRow{"", 0, 400}, {"Whole", 0, 1600}, {"Half", 2, 256}, {"None", 0, 0}}) {
        clipSettingsRec settings;
        settings.type = Type::embeddedPath;
        settings.pathName = path;
        settings.inset = inset;
        PictureOutline outline;
        EXPECT_EQ(makeClipOutline(*opened.picture, settings, outline), area > 0) << path;
        EXPECT_NEAR(shownArea(outline), area, area * 0.01) << path;
    }
}

}  // namespace
}  // namespace tarnova
