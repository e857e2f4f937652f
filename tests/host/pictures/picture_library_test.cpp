#include "host/pictures/picture_library.h"

#include "host/pictures/tiff_writer.h"
#include "tests/host/pictures/picture_kit.h"

namespace tarnova {
namespace {

PictureSamples grayOf(std::uint32_t side) {
    return {side, side, PictureColor::gray, std::vector<std::uint8_t>(std::size_t{side} * side, 90), {}};
}

TEST(PictureLibrary, ReadsAndDecodesAFileOnce) {
    const PictureFiles files;
    PictureLibrary library;
    const std::string path = files.file("a.tif", writeTiff(grayOf(30), 144));
    const OpenedPicture first = library.open(path), second = library.open(path);
    ASSERT_EQ(first.status, PictureStatus::good) << first.reason;
    EXPECT_EQ(first.picture, second.picture);
    EXPECT_EQ(first.picture->size(), (PMPoint{15, 15}));
    EXPECT_EQ(first.picture->samples(), second.picture->samples());
    const OpenedPicture copy = library.open(files.file("b.tif", files.bytesOf("a.tif")));
    EXPECT_EQ(copy.picture->contentKey(), first.picture->contentKey());
    EXPECT_EQ(library.counts().filesRead, 2u);
    // Behind a change the old picture has nothing to show any more, and the new one is another.
    files.file("a.tif", writeTiff(grayOf(31), 72));
    const OpenedPicture changed = library.open(path);
    EXPECT_EQ(changed.picture->size(), (PMPoint{31, 31}));
    EXPECT_NE(changed.picture->contentKey(), first.picture->contentKey());
    EXPECT_FALSE(changed.stamp == first.stamp);
    EXPECT_EQ(library.open(files.path("c.tif")).status, PictureStatus::missing);
    EXPECT_EQ(library.open(files.path(".")).status, PictureStatus::missing);
}

TEST(PictureLibrary, KeepsWithinItsBoundAndDecodesAgainWhatWent) {
    const PictureFiles files;
    PictureLibrary library(100'000);
    std::vector<std::shared_ptr<const Picture>> pictures;
    for (const char* name : {"a.tif", "b.tif", "c.tif"}) {
        const std::uint32_t side = 200 + static_cast<std::uint32_t>(pictures.size());
        pictures.push_back(library.open(files.file(name, writeTiff(grayOf(side), 72))).picture);
        ASSERT_NE(pictures.back(), nullptr);
    }
    const std::weak_ptr<const PictureSamples> gone = pictures[0]->samples();
    EXPECT_EQ(library.counts().decoded, 4u);  // there is room for two
    EXPECT_NE(pictures[1]->samples(), nullptr);
    EXPECT_NE(pictures[2]->samples(), nullptr);
    EXPECT_TRUE(gone.expired());
    EXPECT_EQ(pictures[0]->samples()->values.size(), 40'000u);
}

TEST(PictureLibrary, HoldsPicturesWithoutAFile) {
    PictureSamples seeThrough{2, 1, PictureColor::cmyk, {255, 0, 0, 0, 0, 9, 0, 0}, {255, 7}};
    PictureLibrary library;
    const auto bytes = std::make_shared<const std::string>(writeTiff(seeThrough, 72));
    const OpenedPicture opened = library.openBytes(bytes);
    ASSERT_EQ(opened.status, PictureStatus::good) << opened.reason;
    EXPECT_EQ(opened.picture->fileBytes(), bytes);
    const auto samples = opened.picture->samples();
    EXPECT_EQ(samples->color, PictureColor::cmyk);
    EXPECT_EQ(samples->values, seeThrough.values);
    EXPECT_EQ(samples->alpha, seeThrough.alpha);
    EXPECT_EQ(library.openBytes(std::make_shared<const std::string>("no")).status, PictureStatus::damaged);
}

}  // namespace
}  // namespace tarnova
