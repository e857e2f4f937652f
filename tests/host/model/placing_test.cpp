#include <gtest/gtest.h>

#include <filesystem>

#include "host/model/document_builder.h"
#include "host/model/item_shape.h"
#include "host/model/placed_picture.h"
#include "host/pictures/tiff_writer.h"
#include "tests/engine/toolkit/temp_folder.h"
#include "tests/host/model/model_kit.h"

namespace tarnova {
namespace {

/// A gray picture at 72 to the inch; its left half is black when it is to have an edge.
std::string tiffOf(std::uint32_t width, std::uint32_t height, bool withEdge = false) {
    PictureSamples samples{width, height, PictureColor::gray, std::vector<std::uint8_t>(width * height, 255), {}};
    for (std::size_t i = 0; i < samples.values.size(); ++i)
        samples.values[i] = withEdge && i % width < width / 2 ? 0 : 255;
    return writeTiff(samples, 72);
}

/// A frame of 100 by 50 points whose own coordinates begin at (5, 7), turned by 30 degrees and twice as large on its
/// spread.
class Placing : public ::testing::Test {
 protected:
    void SetUp() override {
        DocumentBuilder builder;
        const UID page = builder.addSinglePage(400, 400);
        PageItem item;
        auto shape = std::make_shared<ItemShape>();
        shape->bounds = {5, 7, 105, 57};
        item.shape = shape;
        item.toParent = PMMatrix{2, 0, 0, 2, 100, 80}.then(turnAround({200, 180}, 30));
        frame = builder.addItem(builder.layerNode(builder.spreadOf(page), 1), item);
        document = builder.finish();
        document->setLocation(folder.path(""), "layout.tvd");
    }
    UID place(const std::string& path) {
        UID picture = kInvalidUID;
        EXPECT_EQ(document->placeIntoFrame(path, frame, {}, picture), 0) << document->placeFailure();
        return picture;
    }
    /// The picture's box in the frame's own coordinates.
    PMRect boxOf(UID picture) const {
        return document->item(picture)->toParent.mapBounds(document->item(picture)->graphic->bounds);
    }
    TempFolder folder;
    UID frame = kInvalidUID;
    std::unique_ptr<DocumentModel> document;
};

void expectNear(const PMRect& a, const PMRect& b, const std::string& name) {
    EXPECT_NEAR(a.left, b.left, 1e-9) << name;
    EXPECT_NEAR(a.top, b.top, 1e-9) << name;
    EXPECT_NEAR(a.right, b.right, 1e-9) << name;
    EXPECT_NEAR(a.bottom, b.bottom, 1e-9) << name;
}

TEST_F(Placing, EveryFitInATurnedAndScaledFrame) {
    using Fit = errorWord (DocumentPictures::*)(UID);
    struct testRow {
        const char* name;
        std::vector<Fit> fits;
        PMRect wide, tall;  // of pictures of 80 x 20 and 20 x 80 points
    };
    const Fit center = &DocumentPictures::fitOperation2, whole = &DocumentPictures::fitOperation3,
              stretch = &DocumentPictures::fitOperation4, fill = &DocumentPictures::fitOperation5,
              fitFrame = &DocumentPictures::fitOperation6;
    const testRow rows[] = {
        {"corner", {}, {5, 7, 85, 27}, {5, 7, 25, 87}},
        {"centre", {center}, {15, 22, 95, 42}, {45, -8, 65, 72}},
        {"whole", {whole, center}, {5, 19.5, 105, 44.5}, {48.75, 7, 61.25, 57}},
        {"stretched", {stretch}, {5, 7, 105, 57}, {5, 7, 105, 57}},
        {"filling", {fill, center}, {-45, 7, 155, 57}, {5, -168, 105, 232}},
        {"frame to picture", {fitFrame}, {5, 7, 85, 27}, {5, 7, 25, 87}},
    };
    folder.file("wide.tif", tiffOf(80, 20));
    folder.file("tall.tif", tiffOf(20, 80));
    for (const auto& [name, fits, wide, tall] : rows) {
        for (const char* file : {"wide.tif", "tall.tif"}) {
            const UID picture = place(folder.path(file));
            ASSERT_EQ(document->resetPictureTransform(picture), 0);
            ASSERT_EQ(document->fitOperation1(picture, {0, 0}), 0);
            for (const Fit fit : fits)
                ASSERT_EQ((*document.*fit)(picture), 0) << name;
            expectNear(boxOf(picture), file[0] == 'w' ? wide : tall, std::string(name) + ' ' + file);
            const PMRect shape = document->item(frame)->shape->bounds;
            const PMRect frameBox = fits == std::vector<Fit>{fitFrame} ? boxOf(picture) : PMRect{5, 7, 105, 57};
            expectNear(shape, frameBox, name);
            while (document->childCount(frame) > 0)
                ASSERT_TRUE(document->undo());
        }
    }
}

TEST_F(Placing, TakesThePlaceOfThePictureThatWasThere) {
    folder.file("a.tif", tiffOf(80, 20));
    folder.file("b.tif", tiffOf(40, 40));
    const UID first = place("a.tif");
    EXPECT_EQ(document->contentKind(frame), ContentKind::graphic);
    EXPECT_EQ(document->linkPath(first), folder.path("") + "a.tif");
    ASSERT_EQ(document->rotateBy(first, 90), 0);
    const PMMatrix turned = document->item(first)->toParent;
    const UID second = place("b.tif");
    EXPECT_FALSE(document->itemExists(first));
    EXPECT_EQ(document->childCount(frame), 1);
    EXPECT_EQ(document->item(second)->toParent, turned);
    ASSERT_EQ(document->resetPictureTransform(second), 0);
    EXPECT_EQ(boxOf(second).width(), 40);
    ASSERT_EQ(document->moveBy(second, 3, 4), 0);
    ASSERT_TRUE(document->undo() && document->undo() && document->undo());
    EXPECT_TRUE(document->itemExists(first));
}

TEST_F(Placing, LeavesTheFrameWhenAFileCantBePlaced) {
    folder.file("a.tif", tiffOf(80, 20));
    const UID picture = place("a.tif");
    struct testRow {
        const char* name;
        std::string bytes;
        const char* reason;
    };
    const testRow rows[] = {
        {"cut.tif", tiffOf(80, 20).substr(0, 100), "damaged"},
        {"empty.jpg", "", "empty"},
        {"text.jpg", "This is no picture.", "no picture"},
    };
    for (const auto& [name, bytes, reason] : rows) {
        UID none = picture;
        EXPECT_NE(document->placeIntoFrame(folder.file(name, bytes), frame, {}, none), 0) << name;
        EXPECT_NE(document->placeFailure().find(reason), std::string::npos) << name << document->placeFailure();
        EXPECT_EQ(none, kInvalidUID);
    }
    UID none = kInvalidUID;
    EXPECT_NE(document->placeIntoFrame("missing.tif", frame, {}, none), 0);
    EXPECT_NE(document->placeIntoFrame(folder.path("a.tif"), picture, {}, none), 0);
    EXPECT_EQ(document->childAt(frame, 0), picture);
}

TEST_F(Placing, KnowsHowItsLinksStand) {
    folder.file("a.tif", tiffOf(80, 20, true));
    const UID picture = place("a.tif");
    clipSettingsRec clip;
    clip.type = clipSettingsRec::Type::detectedEdges;
    ASSERT_EQ(document->makeClippingPath(picture, clip), 0) << document->placeFailure();
    EXPECT_EQ(boundsOfPath(document->item(picture)->graphic->clipPath), (PMRect{0, 0, 40, 20}));
    EXPECT_EQ(document->linkStatus(picture), LinkStatus::good);
    folder.file("a.tif", tiffOf(60, 30, true));
    EXPECT_EQ(document->linkStatus(picture), LinkStatus::outOfDate);
    ASSERT_EQ(document->updateLink(picture), 0);
    EXPECT_EQ(document->linkStatus(picture), LinkStatus::good);
    EXPECT_EQ(document->item(picture)->graphic->bounds, (PMRect{0, 0, 60, 30}));
    EXPECT_EQ(boundsOfPath(document->item(picture)->graphic->clipPath), (PMRect{0, 0, 30, 30}));
    std::filesystem::remove(folder.path("a.tif"));
    EXPECT_EQ(document->linkStatus(picture), LinkStatus::missing);
    EXPECT_NE(document->updateLink(picture), 0);
    ASSERT_EQ(document->setClipSettings(picture, {}), 0);
    EXPECT_TRUE(document->item(picture)->graphic->clipPath.empty());
    UID held = kInvalidUID;
    ASSERT_EQ(document->placeBytesIntoFrame(tiffOf(9, 9), frame, held), 0);
    EXPECT_EQ(document->linkPath(held), "");
    EXPECT_EQ(document->linkStatus(held), LinkStatus::missing);
    EXPECT_NE(document->placeBytesIntoFrame("no picture", frame, held), 0);
}

TEST_F(Placing, PutsATextFileIntoTheFrame) {
    folder.file("article.txt", "First\nSecond");
    EXPECT_EQ(place("article.txt"), kInvalidUID);
    ASSERT_TRUE(document->undo());
    EXPECT_EQ(document->contentKind(frame), ContentKind::unassigned);
    ASSERT_TRUE(document->redo());
    EXPECT_EQ(document->contentKind(frame), ContentKind::text);
    const UID text = document->textOfFrame(frame);
    EXPECT_EQ(document->textRead(text, 0, 5), U"First");
    folder.file("other.txt", "Third");
    EXPECT_EQ(place("other.txt"), kInvalidUID);
    EXPECT_EQ(document->totalLength(text), 6);
    UID none = kInvalidUID;
    folder.file("a.tif", tiffOf(8, 2));
    EXPECT_NE(document->placeIntoFrame("a.tif", frame, {}, none), 0);
}

TEST_F(Placing, ShowsThePageThatThePreferencesName) {
    const std::string pages =
        "%PDF-1.7\n1 0 obj<</Type/Catalog/Pages 2 0 R>>endobj\n2 0 obj<</Type/Pages/Kids[3 0 R 4 0 R]/Count 2"
        "/MediaBox[0 0 200 100]>>endobj\n3 0 obj<</Type/Page/Parent 2 0 R>>endobj\n"
        "4 0 obj<</Type/Page/Parent 2 0 R/TrimBox[10 10 40 30]>>endobj\ntrailer<</Root 1 0 R>>\n%%EOF\n";
    folder.file("a.pdf", pages);
    document->setPdfPlacePrefs(2, 4, 0);
    const UID second = place("a.pdf");
    EXPECT_EQ(document->placedPdfPage(second), 1);
    EXPECT_EQ(boxOf(second).width(), 30);
    EXPECT_FALSE(document->item(second)->graphic->pdfTransparent);
    document->setPdfPlacePrefs(5, 4, 1);
    EXPECT_EQ(document->placedPdfPage(place("a.pdf")), 0);
}

}  // namespace
}  // namespace tarnova
