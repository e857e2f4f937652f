#include <gtest/gtest.h>

#include "host/files/base64.h"
#include "host/files/layout_file.h"
#include "host/model/item_shape.h"
#include "host/model/placed_picture.h"
#include "host/pictures/tiff_writer.h"
#include "tests/engine/toolkit/temp_folder.h"
#include "tests/host/files/layout_kit.h"

namespace tarnova {
namespace {

/// 30 x 20 pixels at 72 to the inch, black in their left third.
std::string tiffFile() {
    PictureSamples samples{30, 20, PictureColor::gray, std::vector<std::uint8_t>(600, 255), {}};
    for (std::size_t i = 0; i < 600; ++i)
        samples.values[i] = i % 30 < 10 ? 0 : 255;
    return writeTiff(samples, 72);
}

const PageItem& pictureOf(const DocumentModel& document, std::int32_t index) {
    const UID node = document.spreadLayerNode(document.spreadAt(0), document.layerAt(1));
    return *document.item(document.childAt(document.childAt(node, index), 0));
}

TEST(PictureMembers, TakesFromTheFileWhatTheLayoutLeavesOut) {
    const TempFolder folder;
    folder.file("a.tif", tiffFile());
    const std::string path = folder.file(
        "layout.tvd", pageWith(R"({"bounds": [0, 0, 50, 50], "picture": {"file": "a.tif",
        "clip": {"type": "detectedEdges"}}}, {"bounds": [0, 0, 50, 50], "picture": {"file": "missing.tif"}},
        {"bounds": [0, 0, 50, 50], "picture": {"embedded": ")" +
                               toBase64(tiffFile()) + R"(", "page": 2, "crop": "trim", "transparent": false}})"));
    layoutError error;
    const auto document = openLayout(path, error);
    ASSERT_NE(document, nullptr) << error.message;
    EXPECT_EQ(pictureOf(*document, 0).graphic->bounds, (PMRect{0, 0, 30, 20}));
    EXPECT_EQ(boundsOfPath(pictureOf(*document, 0).graphic->clipPath), (PMRect{0, 0, 10, 20}));
    EXPECT_EQ(pictureOf(*document, 1).graphic->bounds, (PMRect{0, 0, 50, 50}));
    EXPECT_EQ(*pictureOf(*document, 2).graphic->embedded, tiffFile());
    EXPECT_EQ(pictureOf(*document, 2).graphic->pdfCrop, static_cast<std::uint32_t>(PdfCrop::trim));
    // Written whole, it says all of it, and needs no file.
    const std::string written = writeLayout(*document);
    const auto again = readLayout(written, error);
    ASSERT_NE(again, nullptr) << error.message;
    EXPECT_EQ(writeLayout(*again), written);
    EXPECT_EQ(pictureOf(*again, 0).graphic->bounds, (PMRect{0, 0, 30, 20}));
    EXPECT_FALSE(pictureOf(*again, 2).graphic->pdfTransparent);
}

TEST(PictureMembers, KeepsTheLinksOfADocumentThatMoves) {
    const TempFolder folder;
    const std::string picture = folder.file("a.tif", tiffFile());
    layoutError error;
    const auto document = openLayout(
        folder.file("layout.tvd", pageWith(R"({"bounds": [0, 0, 50, 50], "picture": {"file": "a.tif"}})")), error);
    ASSERT_NE(document, nullptr) << error.message;
    UID placed = kInvalidUID;
    ASSERT_EQ(document->placeIntoFrame("a.tif", document->parent(pictureOf(*document, 0).uid), {}, placed), 0);
    std::filesystem::create_directory(folder.path("elsewhere"));
    const std::string copyPath = folder.path("elsewhere/copy.tvd");
    ASSERT_TRUE(saveLayoutCopy(*document, copyPath, error)) << error.message;
    EXPECT_EQ(document->item(placed)->graphic->filePath, "a.tif");
    const auto copy = openLayout(copyPath, error);
    ASSERT_NE(copy, nullptr) << error.message;
    EXPECT_EQ(copy->linkStatus(placed), LinkStatus::good);
    EXPECT_EQ(copy->linkPath(placed), picture);
    ASSERT_TRUE(saveLayout(*document, folder.path("elsewhere/moved.tvd"), error)) << error.message;
    EXPECT_EQ(document->linkStatus(placed), LinkStatus::good);
    folder.file("a.tif", tiffFile() + "more");
    EXPECT_EQ(copy->linkStatus(placed), LinkStatus::outOfDate);
}

}  // namespace
}  // namespace tarnova
