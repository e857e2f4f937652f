// Whole documents: from the model through composition to what is drawn.

#include <gtest/gtest.h>

#include "host/model/document_builder.h"
#include "host/render/display_list.h"
#include "host/render/png_output.h"
#include "host/text/composer.h"
#include "tests/host/render/page_kit.h"

namespace tarnova {
namespace {

using namespace tarnova::testing;

constexpr Paint black{swatchBlack, 1};

PageItem square(PMMatrix toParent, bool nonPrinting = false) {
    auto shape = std::make_shared<ItemShape>();
    shape->bounds = {0, 0, 10, 10};
    shape->path = pathOf(shape->kind, shape->bounds);
    shape->fill = black;
    PageItem item;
    item.shape = shape;
    item.toParent = toParent;
    item.nonPrinting = nonPrinting;
    return item;
}

std::unique_ptr<DocumentModel> finished(DocumentBuilder& builder) {
    auto document = builder.finish();
    document->setComposer(makeComposer());
    return document;
}

void replaceText(DocumentModel& document, UID frame, std::u32string_view text) {
    const UID story = document.textOfFrame(frame);
    ASSERT_EQ(document.BeginCommandSequence("Fill", false), 0);
    EXPECT_EQ(document.textReplace(story, 0, document.totalLength(story) - 1, text, false), 0);
    document.EndCommandSequence();
}

DisplayList listOf(const DocumentModel& document, UID page) {
    DisplayList list;
    EXPECT_TRUE(buildDisplayList(document, page, list));
    return list;
}

TEST(DisplayListOfADocument, FlattensGroupsAndLeavesOutWhatPaintsNothing) {
    DocumentBuilder builder;
    const UID spread = builder.addSpread();
    const UID page = builder.addPage(spread, {0, 0, 200, 300});
    const UID second = builder.addPage(spread, {200, 20, 400, 320});
    const UID node = builder.layerNode(spread, 1);
    PageItem group;
    group.itemClass = ItemClass::group;
    group.toParent = {2, 0, 0, 2, 250, 60};
    const UID groupUid = builder.addItem(node, group);
    builder.addItem(groupUid, square({1, 0, 0, 1, 5, 0}));
    builder.addItem(groupUid, square({}, true));
    builder.addItem(node, square({}, true));
    builder.addItem(node, square({1, 0, 0, 1, 20, 30}));
    builder.addRectangle(page, {0, 0, 50, 50}, {swatchNone, 1});
    auto document = finished(builder);

    const DisplayList first = listOf(*document, page);
    ASSERT_EQ(first.items.size(), 1u);
    EXPECT_EQ(first.items[0].toPage, (PMMatrix{1, 0, 0, 1, 20, 30}));
    EXPECT_FALSE(first.items[0].repeats) << "no template was marked";
    const DisplayList other = listOf(*document, second);
    ASSERT_EQ(other.items.size(), 1u);
    EXPECT_EQ(other.items[0].toPage, (PMMatrix{2, 0, 0, 2, 60, 40})) << "from the corner of the second page";
    DisplayList list;
    EXPECT_FALSE(buildDisplayList(*document, node, list)) << "a node is no page";
}

TEST(DisplayListOfADocument, MastersAreDrawnFromTheirOwnCorner) {
    DocumentBuilder builder;
    const UID master = builder.addMaster("A");
    builder.addPage(master, {0, 0, 200, 300});
    builder.addItem(builder.layerNode(master, 1), square({1, 0, 0, 1, 7, 8}));
    const UID spread = builder.addSpread();
    const UID page = builder.addPage(spread, {100, 0, 300, 300}, master);
    builder.addItem(builder.layerNode(spread, 1), square({1, 0, 0, 1, 120, 30}));
    auto document = finished(builder);
    const DisplayList list = listOf(*document, page);
    ASSERT_EQ(list.items.size(), 2u);
    EXPECT_EQ(list.items[0].toPage, (PMMatrix{1, 0, 0, 1, 7, 8})) << "behind the page's own";
    EXPECT_EQ(list.items[1].toPage, (PMMatrix{1, 0, 0, 1, 20, 30}));
}

/// A letter with a fixed head and a variable name, as a run makes it: copies of a template, page after page.
class Letters : public ::testing::Test {
 protected:
    void SetUp() override {
        DocumentBuilder builder;
        builder.setTitle("Letters");
        page = builder.addSinglePage(300, 200);
        builder.addRectangle(page, {0, 0, 300, 30}, {swatchBlack, 0.2});
        builder.addTextFrame(page, {20, 5, 280, 30}, U"Office of Springfield");
        name = builder.addTextFrame(page, {20, 60, 280, 90}, U"name");
        builder.addRectangle(page, {0, 190, 300, 200}, {swatchBlack, 0.4});
        layout = finished(builder);
    }

    /// `count` copies in documents of `perDocument` pages at most.
    void write(int count, int perDocument) {
        PdfWriter writer;
        ASSERT_TRUE(writer.open(path, {}));
        std::unique_ptr<Document> copy;
        for (int i = 0; i < count; ++i) {
            if (i % perDocument == 0) copy = layout->documentCopy();
            auto& document = dynamic_cast<DocumentModel&>(*copy);
            replaceText(document, name, U"Customer number " + std::u32string(1, U'A' + static_cast<char32_t>(i % 26)));
            ASSERT_TRUE(writer.addPage(document, page)) << writer.error();
        }
        ASSERT_TRUE(writer.finish()) << writer.error();
        ASSERT_EQ(complaintsAbout(path), "");
        overset = writer.oversetStories();
    }

    ScratchFolder folder;
    std::string path = folder.path("letters.pdf");
    std::unique_ptr<DocumentModel> layout;
    UID page = kInvalidUID, name = kInvalidUID;
    std::int64_t overset = -1;
};

TEST_F(Letters, ShareWhatTheTemplateRepeatsAcrossDocuments) {
    layout->markTemplate();
    write(50, 7);
    const std::string pdf = unpackedPdf(path);
    EXPECT_EQ(countOf(pdf, "/Subtype /Form"), 2u) << "in front of the name and behind it";
    EXPECT_EQ(countOf(pdf, "/X0 Do\n"), 50u);
    EXPECT_EQ(countOf(pdf, "/X1 Do\n"), 50u);
    const std::string text = runCommand("pdftotext '" + path + "' -").output;
    EXPECT_EQ(countOf(text, "Office of Springfield"), 50u);
    EXPECT_EQ(countOf(text, "Customer number X"), 2u);
    EXPECT_EQ(overset, 0);

    const std::string before = fileBytes(path);
    write(50, 1);
    EXPECT_TRUE(before == fileBytes(path)) << "how the pages were cut into documents doesn't show";
}

TEST_F(Letters, OversetTextIsToldWhereItsLastFrameIs) {
    std::u32string longText;
    for (int i = 0; i < 60; ++i)
        longText += U"many words ";
    replaceText(*layout, name, longText + U"END");
    PdfWriter writer;
    ASSERT_TRUE(writer.open(path, {}));
    ASSERT_TRUE(writer.addPage(*layout, page));
    ASSERT_EQ(writer.oversetOnLastPage().size(), 1u);
    EXPECT_EQ(writer.oversetOnLastPage()[0].frame, name);
    EXPECT_EQ(writer.oversetOnLastPage()[0].story, layout->textOfFrame(name));
    EXPECT_EQ(writer.oversetOnLastPage()[0].page, page);
    ASSERT_TRUE(writer.addPage(*layout, page));
    ASSERT_TRUE(writer.finish());
    EXPECT_EQ(writer.oversetStories(), 2);
    const std::string text = runCommand("pdftotext '" + path + "' -").output;
    EXPECT_NE(text.find("many words"), std::string::npos);
    EXPECT_EQ(text.find("END"), std::string::npos);

    PageNotes told;
    std::string error;
    ASSERT_TRUE(writePagePng(*layout, page, folder.path("page.png"), 72, &told, error)) << error;
    EXPECT_EQ(told.overset.size(), 1u);
}

TEST_F(Letters, WithoutAComposerTextIsAnErrorAndNotAnEmptyPage) {
    layout->setComposer(nullptr);
    PdfWriter writer;
    ASSERT_TRUE(writer.open(path, {}));
    EXPECT_FALSE(writer.addPage(*layout, page));
    EXPECT_NE(writer.error().find("no composer"), std::string::npos);
    std::string error;
    EXPECT_FALSE(writePagePng(*layout, page, folder.path("page.png"), 72, nullptr, error));
    EXPECT_NE(error.find("no composer"), std::string::npos);
    EXPECT_EQ(folder.fileCount(), 0u);
}

}  // namespace
}  // namespace tarnova
