#include <gtest/gtest.h>

#include "host/files/layout_file.h"
#include "host/render/png_output.h"
#include "host/text/composer.h"
#include "tests/host/render/page_kit.h"
#include "tests/host/render/picture.h"

namespace tarnova {
namespace {

using namespace tarnova::testing;

/// A box in front of text, in a text that stands in a text, and one that doesn't print.
const char* const layout = R"({"tarnovaLayout": 1, "pageSize": [200, 100], "pages": [{"items": [
  {"bounds": [50, 20, 100, 60], "text": [{"text": [{"item": {"bounds": [0, 0, 60, 30], "text": [
    {"text": [{"item": {"bounds": [0, 0, 20, 10], "fill": "Black"}}, "in"]}]}}, " beside ",
    {"item": {"bounds": [0, 0, 5, 5], "fill": "Black", "printing": false}}]}]}]}]})";

struct AnchoredPage : ::testing::Test {
    void SetUp() override {
        layoutError error;
        document = readLayout(layout, error);
        ASSERT_NE(document, nullptr) << error.message;
        document->setComposer(makeComposer());
        frame = document->childAt(document->spreadLayerNode(document->spreadAt(0), document->layerAt(1)), 0);
    }
    DisplayList listOf(std::int32_t page) const {
        DisplayList list;
        EXPECT_TRUE(buildDisplayList(*document, document->pageAt(page), list));
        return list;
    }

    std::unique_ptr<DocumentModel> document;
    UID frame = 0;
    ScratchFolder folder;
};

TEST_F(AnchoredPage, ItemsAreDrawnWhereTheirTextIs) {
    const DisplayList list = listOf(0);
    ASSERT_EQ(list.items.size(), 3u) << "a text, a text in it, a box in that";
    std::string error;
    ASSERT_TRUE(writePagePng(list, folder.path("page.png"), 72, error)) << error;
    const PngPicture picture(folder.path("page.png"));
    EXPECT_EQ(picture.at(52, 22), 0u);
    EXPECT_EQ(picture.at(69, 29), 0u);
    EXPECT_EQ(picture.darkPixels(0, 0, 50, 100), 0);
    EXPECT_EQ(picture.darkPixels(50, 31, 108, 38), 0) << "below the box is nothing but its frame's room";

    PdfWriter writer;
    ASSERT_TRUE(writer.open(folder.path("page.pdf"), {}) && writer.addPage(list) && writer.finish());
    EXPECT_EQ(complaintsAbout(folder.path("page.pdf")), "");
    const std::string text = runCommand("pdftotext '" + folder.path("page.pdf") + "' -").output;
    EXPECT_EQ(countOf(text, "beside"), 1u);
    EXPECT_EQ(countOf(text, "\xEF\xBF\xBC"), 0u) << "an item is no text";
}

TEST_F(AnchoredPage, CopiesRepeatUntilTheirTextChanges) {
    document->markTemplate();
    ASSERT_EQ(document->duplicateSpread(document->spreadAt(0)), 0);
    for (const DisplayItem& item : listOf(1).items)
        EXPECT_TRUE(item.repeats);
    const UID copied = document->childAt(document->spreadLayerNode(document->spreadAt(1), document->layerAt(1)), 0);
    const double before = listOf(1).items.back().toPage.tx;
    ASSERT_EQ(document->textReplace(document->textOfFrame(copied), 0, 0, U"x", false), 0);
    const DisplayList changed = listOf(1);
    for (const DisplayItem& item : changed.items)
        EXPECT_FALSE(item.repeats) << "the item moves with the text";
    EXPECT_GT(changed.items.back().toPage.tx, before + 4);
    for (const DisplayItem& item : listOf(0).items)
        EXPECT_TRUE(item.repeats);
}

}  // namespace
}  // namespace tarnova
