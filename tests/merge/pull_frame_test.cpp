// Links on frames merged through a whole run: what the value, the link and the preferences make of a frame.

#include "merge/pull_frame_callback.h"

#include "document/item_data.h"
#include "host/model/item_drawing.h"
#include "host/text/composer.h"
#include "merge/asset_search.h"
#include "merge/pdf_options.h"
#include "merge/placed_pictures.h"
#include "source_folder.h"
#include "tests/merge/merge_fixture.h"

namespace tarnova {
namespace {

using testing::ElementsAre;

class FrameMerge : public MergeTest {
 protected:
    enum class Kind { text, graphic, line };

    FrameMerge() {
        const std::filesystem::path flags = TARNOVA_SOURCE_FOLDER "/examples/countries/flags";
        for (const char* name : {"at.png", "ch.png", "li.png"})  // the last is cut off
            std::filesystem::copy_file(flags / name, folder / name, std::filesystem::copy_options::overwrite_existing);
        std::ofstream(folder / "empty.png");
        std::ofstream(folder / "one page.pdf", std::ios::binary) << onePagePdf;
        std::ofstream(folder / "article.txt") << "An article";
    }

    /// A page with one frame that is a link of that name.
    void useFrame(Kind kind, std::string_view linkName, std::string_view key = "1") {
        DocumentBuilder builder;
        const UID page = builder.addSinglePage(300, 300);
        frame = kind == Kind::text ? builder.addTextFrame(page, frameBox, U"old")
                                   : builder.addRectangle(page, frameBox, {});
        document = builder.finish();
        document->setLocation(folder.string(), "layout.tvd");
        tagDataRec tag{};
        pstrFromView(tag.searchKey, sizeof(tag.searchKey), key);
        pstrFromView(tag.extractionRecordName, sizeof(tag.extractionRecordName), linkName);
        tag.linkLocked = lockNext ? 1 : 0;
        ASSERT_EQ(writeFrameTag({document.get(), frame}, tag, 0), 0);
    }

    /// Merges `names` into a graphic frame with a picture link that `change` may alter; an old picture lies in it.
    void mergePictures(const std::string& names, const std::function<void(extractionRec&)>& change = {}) {
        useData("A\n" + names);
        link("A").type = linkTypePicture;
        if (change) change(link("A"));
        useFrame(Kind::graphic, "A");
        UID old = kInvalidUID;
        ASSERT_EQ(document->placeIntoFrame((folder / "ch.png").string(), frame, {}, old), 0);
        if (prepare) prepare();
        merge();
    }

    /// What a page's frame shows: the name of its picture's file, its text, or "gone".
    [[nodiscard]] std::string shown(std::int32_t pageIndex = 0) const {
        const UID node = document->spreadLayerNode(document->spreadAt(pageIndex), document->layerAt(1));
        if (document->childCount(node) == 0) return "gone";
        const UID item = document->childAt(node, 0);
        if (document->isTextFrame(item)) return textsOf(*document).front();
        if (document->childCount(item) == 0) return "empty";
        const std::string path = document->linkPath(document->childAt(item, 0));
        return path.substr(path.rfind('/') + 1);
    }

    static constexpr PMRect frameBox{50, 50, 250, 150};
    static constexpr std::string_view onePagePdf =
        "%PDF-1.4\n1 0 obj<</Type/Catalog/Pages 2 0 R>>endobj\n2 0 obj<</Type/Pages/Kids[3 0 R]/Count 1>>endobj\n"
        "3 0 obj<</Type/Page/Parent 2 0 R/MediaBox[0 0 50 20]/Resources<<>>>>endobj\nxref\n0 4\n"
        "0000000000 65535 f \n0000000009 00000 n \n0000000052 00000 n \n0000000101 00000 n \n"
        "trailer<</Size 4/Root 1 0 R>>\nstartxref\n174\n%%EOF\n";
    UID frame = kInvalidUID;
    std::function<void()> prepare;  // behind the making of the template
};

TEST_F(FrameMerge, TextFramesByEachStatus) {
    struct testRow {
        const char* name;
        const char* data;
        Kind kind;
        std::int16_t nodata;
        bool locked;
        const char* want;  // "-" when no text frame is left
    };
    const testRow rows[] = {
        {"a value", "A\nnew\n", Kind::text, 0, false, "new"},
        {"an empty value", "A,B\n,x\n", Kind::text, nodataGlobal, false, "none"},
        {"placeholder", "A,B\n,x\n", Kind::text, nodataPlaceholder, false, "old"},
        {"frame goes", "A,B\n,x\n", Kind::text, nodataDelete, false, "-"},
        {"own text", "A,B\n,x\n", Kind::text, nodataCustom, false, "own"},
        {"found, though it might go", "A\nnew\n", Kind::text, nodataDelete, false, "new"},
        {"locked", "A\nnew\n", Kind::text, 0, true, "old"},
        {"locked without data", "A,B\n,x\n", Kind::text, nodataDelete, true, "old"},
        {"a graphic frame takes text", "A\nnew\n", Kind::graphic, 0, false, "new"},
    };
    for (const testRow& row : rows) {
        useData(row.data);
        link("A").type = linkTypeText;
        link("A").nodata = row.nodata;
        pstrFromView(link("A").nodatastring, sizeof(Str31), "own");
        pstrFromView(appPrefs().pictureDefaults.noData.string, sizeof(Str255), "none");
        lockNext = row.locked;
        useFrame(row.kind, "A");
        const std::vector<std::string> texts = merge();
        EXPECT_EQ(texts.empty() ? "-" : texts.front(), row.want) << row.name;
        EXPECT_EQ(error, 0) << row.name;
    }
}

TEST_F(FrameMerge, EachPassMergesAFrameAgainButNoneTwice) {
    for (const bool framesFirst : {false, true}) {
        useData("A\n<$B>r1\nr2\n");
        appPrefs().framesFirst = framesFirst ? 1 : 0;
        link("A").type = linkTypeText;
        useFrame(Kind::graphic, "A");
        EXPECT_THAT(merge(), ElementsAre("<$B>r1", "r2"));
        useData("A\nr3\nr4\n");
        link("A").type = linkTypeText;
        useFrame(Kind::text, "A", "2");
        EXPECT_THAT(merge(), ElementsAre("r4"));
    }
}

TEST_F(FrameMerge, FilesByWhatBecameOfThem) {
    struct testRow {
        const char* name;
        const char* value;
        std::int16_t type, missing;
        const char* substitute;
        std::size_t notes;
        const char* want;
    };
    const testRow rows[] = {
        {"found", "at.png", 1, 0, "", 0, "at.png"},
        {"missing", "no.png", 1, missingAssetKeepFrame, "", 1, "ch.png"},
        {"missing, the frame goes", "no.png", 1, missingAssetDeleteFrame, "", 1, "gone"},
        {"a substitute", "no.png", 1, missingAssetSubstitute, "at.png", 0, "at.png"},
        {"no substitute named", "no.png", 1, missingAssetSubstitute, "", 1, "ch.png"},
        {"the substitute is missing", "no.png", 1, missingAssetSubstitute, "no2.png", 1, "ch.png"},
        {"cut off", "li.png", 1, 0, "", 1, "ch.png"},
        {"no bytes", "empty.png", 1, 0, "", 1, "ch.png"},
        {"a PDF", "one page.pdf", 1, 0, "", 0, "one page.pdf"},
        {"an article", "article.txt", linkTypeArticle, 0, "", 0, "An article"},
        {"a group picture without its module", "at.png", linkTypeGroupPicture, missingAssetKeepFrame, "", 1, "ch.png"},
        {"an image without its module", "at.png", linkTypeVxImage, 0, "", 0, "ch.png"},
    };
    for (const testRow& row : rows) {
        mergePictures(row.value + std::string("\n"), [&row](extractionRec& its) {
            its.type = row.type;
            its.missingasset = row.missing;
            std::strcpy(its.missingassetstring, row.substitute);
        });
        EXPECT_EQ(error, 0) << row.name;
        EXPECT_EQ(shown(), row.want) << row.name;
        EXPECT_EQ(session().missingPictures.size(), row.notes) << row.name;
    }
}

TEST_F(FrameMerge, APdfWithoutThePageIsToldAndKeepsTheRunGoing) {
    prepare = [this] { ASSERT_EQ(setFramePdfOptions({document.get(), frame}, {5, 0, 1}, 0), 0); };
    mergePictures("one page.pdf\nat.png\n");
    EXPECT_EQ(error, 0);
    EXPECT_EQ(shown(0), "one page.pdf");
    EXPECT_EQ(shown(1), "at.png");
    EXPECT_EQ(session().missingPictures.size(), 0U);
}

/// What was drawn last, in place of a drawing.
struct drawnRec {
    std::string text;
    double pointSize = 0;
} drawn;

errorWord noteDrawing(const DocumentModel& document, UID item, double, std::string& outTiff) {
    const UID story = document.textOfFrame(item);
    drawn = {utf32ToUtf8(document.textRead(story, 0, document.totalLength(story) - 1)),
             document.numberAttributeAt(story, 0, TextAttributeClass::pointSize)};
    std::ifstream file(TARNOVA_SOURCE_FOLDER "/examples/countries/flags/ch.png", std::ios::binary);
    outTiff.assign(std::istreambuf_iterator<char>(file), {});
    return 0;
}

TEST_F(FrameMerge, WhatIsWrongIsDrawnIntoTheFrameAsLargeAsItFits) {
    setItemDrawing(noteDrawing);
    prepare = [this] {
        document->setComposer(makeComposer());
        ASSERT_EQ(setFramePdfOptions({document.get(), frame}, {5, 0, 1}, 0), 0);
    };
    const std::string here = folder.string() + "/";
    const std::string far(80, 'x');
    struct testRow {
        std::string value, text;
        double leastSize, mostSize;
    };
    const testRow rows[] = {
        {"no.png", "<MISSING!> no.png", 30, 36},
        {far + " " + far + " " + far, "<MISSING!> " + far + " " + far + " " + far, 5, 12},
        {"li.png", "<DAMAGED!> " + here + "li.png", 10, 36},
        {"one page.pdf", "<PAGE 5 CAN'T BE PLACED> " + here + "one page.pdf", 10, 36},
    };
    for (const testRow& row : rows) {
        mergePictures(row.value + "\n");
        EXPECT_EQ(error, 0) << row.text;
        EXPECT_EQ(shown(), "") << "a picture without a file";
        EXPECT_EQ(drawn.text, row.text);
        EXPECT_GE(drawn.pointSize, row.leastSize) << row.text;
        EXPECT_LE(drawn.pointSize, row.mostSize) << row.text;
        EXPECT_EQ(document->childCount(document->parent(frame)), 1) << "the frame that was drawn is gone";
    }
    setItemDrawing(nullptr);
}

TEST_F(FrameMerge, EachMissingNameIsSearchedAndAskedAboutOnce) {
    struct testRow {
        const char* name;
        pictureAnswer answer;
        std::size_t questions;
        const char* want;  // on the last page
        bool cancelled;
    };
    const testRow rows[] = {
        {"go on", pictureAnswer::goOn, 2, "ch.png", false},
        {"no prompt", pictureAnswer::noPrompt, 1, "ch.png", false},
        {"a file for each name", pictureAnswer::chooseFile, 2, "at.png", false},
        {"abort", pictureAnswer::abort, 1, "ch.png", true},
    };
    alerts.path = (folder / "at.png").string();
    for (const testRow& row : rows) {
        alerts.problems.clear();
        alerts.picture = row.answer;
        mergePictures("no.png\nno.png\nnot.png\nno.png\n",
                      [](extractionRec& its) { its.missingasset = missingAssetKeepFrame; });
        EXPECT_EQ(alerts.problems.size(), row.questions) << row.name;
        EXPECT_EQ(shown(document->pageCount() - 1), row.want) << row.name;
        EXPECT_EQ(session().jobCancelled != 0, row.cancelled) << row.name;
    }
    appPrefs().promptMissingAssets = 0;
    const std::uint64_t before = assetFoldersRead();
    mergePictures("no.png\n");
    const std::uint64_t ofOneRecord = assetFoldersRead() - before;
    std::string many;
    for (int i = 0; i < 100; ++i)
        many += "no.png\n";
    mergePictures(many);
    EXPECT_EQ(assetFoldersRead() - before, 2 * ofOneRecord);
    EXPECT_EQ(session().missingPictures.size(), 100U);
}

TEST_F(FrameMerge, FitAndPlaceOfAPicture) {
    struct testRow {
        std::int16_t position, hAlign, vAlign;
        PMRect want;  // of the picture on its spread
    };
    // The flag is 100 by 67 pixels at 72 to the inch, its frame 200 by 100; the old picture lies at the frame's corner.
    const double wide = 100.0 * 100 / 67, high = 67.0 * 200 / 100;
    const testRow rows[] = {
        {0, 0, 0, {50, 50, 150, 117}},
        {1, 0, 0, {100, 66.5, 200, 133.5}},
        {2, 0, 0, {150 - wide / 2, 50, 150 + wide / 2, 150}},
        {3, 0, 0, {50, 50, 250, 150}},
        {4, 0, 0, {50, 50, 150, 117}},
        {5, 0, 0, {50, 100 - high / 2, 250, 100 + high / 2}},
        {6, 0, 0, {50, 100 - high / 2, 250, 100 + high / 2}},
        {7, 0, 1, {50, 50, 250, 50 + high}},
        {8, 0, 0, {50, 50, 150, 117}},
        {9, 0, 0, {50, 50, 150, 117}},
        {0, 2, 2, {100, 66.5, 200, 133.5}},
        {0, 3, 3, {150, 83, 250, 150}},
        {1, 1, 1, {50, 50, 150, 117}},
        {2, 3, 0, {250 - wide, 50, 250, 150}},
        {5, 0, 3, {50, 150 - high, 250, 150}},
    };
    for (const testRow& row : rows) {
        mergePictures("at.png\n", [&row](extractionRec& its) {
            its.picturePosition = row.position;
            its.hAlign = row.hAlign;
            its.vAlign = row.vAlign;
        });
        ASSERT_EQ(shown(), "at.png");
        const PMRect at = document->boundsInSpread(document->childAt(frame, 0));
        EXPECT_THAT((std::array{at.left, at.top, at.right, at.bottom}),
                    testing::Pointwise(testing::DoubleNear(1e-6),
                                       std::array{row.want.left, row.want.top, row.want.right, row.want.bottom}))
            << row.position << " " << row.hAlign << " " << row.vAlign;
    }
}

TEST_F(FrameMerge, APictureThatWasPlacedIsNotedInPlaceOfPlaced) {
    pictureRunRec& run = pictureRun();
    run = {};
    run.pageSize = {300, 300};
    useFrame(Kind::graphic, "A");
    const UIDRef first{document.get(), frame};
    const placedPictureRec placed = describePlacedPicture(first, "/a.png", 2, 1);
    EXPECT_FALSE(findPlacedPicture(placed));
    ASSERT_EQ(notePlacedPicture(first, addPlacedPicture(placed), true), 0);
    EXPECT_EQ(placedPictureOf(first)->picturePath, "/a.png");
    const auto same = [&](bool strict, const std::function<void(placedPictureRec&)>& change) {
        run.strictPlacedPictures = strict;
        placedPictureRec wanted = placed;
        change(wanted);
        return findPlacedPicture(wanted).has_value();
    };
    struct testRow {
        const char* name;
        std::function<void(placedPictureRec&)> change;
        bool loose, strict;
    };
    const testRow rows[] = {
        {"the same", [](auto&) {}, true, true},
        {"another file", [](auto& its) { its.picturePath = "/A.png"; }, false, false},
        {"another page of the file", [](auto& its) { its.pdfPage = 2; }, false, false},
        {"elsewhere on the spread",
         [](auto& its) {
             its.frameBounds = {0, 0, 200, 100};
         },
         false, true},
        {"on another page of the cycle", [](auto& its) { its.pageInCycle = 1; }, false, true},
        {"another fit", [](auto& its) { its.picturePosition = 3; }, true, false},
        {"turned", [](auto& its) { its.frameTransform.rotationDegrees = 5; }, true, false},
        {"less of it is seen", [](auto& its) { its.visibleBounds.left = 3; }, true, true},
    };
    for (const testRow& row : rows) {
        EXPECT_EQ(same(false, row.change), row.loose) << row.name;
        EXPECT_EQ(same(true, row.change), row.strict) << row.name;
    }
}

}  // namespace
}  // namespace tarnova
