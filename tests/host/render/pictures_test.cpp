// Placed pictures in every output.

#include <gtest/gtest.h>

#include "host/render/png_output.h"
#include "tests/host/render/picture.h"

namespace tarnova {
namespace {

using namespace tarnova::testing;

class PlacedPictures : public ::testing::Test {
 protected:
    /// A picture that ImageMagick makes.
    std::string make(const std::string& name, const std::string& how) {
        const std::string made = folder.path(name);
        const CommandResult result = runCommand("convert " + how + " '" + made + "'");
        EXPECT_EQ(result.status, 0) << result.output;
        return made;
    }
    void writePdf(const std::vector<const DisplayList*>& pages, const PdfOptions& options = {}) {
        PdfWriter writer;
        bool isWritten = writer.open(path, options);
        for (const DisplayList* page : pages)
            isWritten = isWritten && writer.addPage(*page);
        ASSERT_TRUE(isWritten && writer.finish()) << writer.error();
        problems = writer.pictureProblems();
        EXPECT_EQ(complaintsAbout(path), "");
    }
    /// What poppler finds in the PDF: a line for each image.
    [[nodiscard]] std::string images() const { return runCommand("pdfimages -list '" + path + "'").output; }

    ScratchFolder folder;
    std::string path = folder.path("pages.pdf");
    std::vector<PictureProblem> problems;
    PageKit kit;
};

TEST_F(PlacedPictures, EveryOutputShowsTheSame) {
    const std::string text = "-size 120x80 gradient:navy-yellow -fill black -draw 'circle 40,40 40,60' ";
    const std::string photo = make("photo.jpg", text),
                      drawn = make("drawn.png", text + "-fill red -draw 'rectangle 80,10 110,70'");
    const std::string cut = make("cut.png", text + "-alpha set -channel A -evaluate set 60%");
    const std::string gray = make("gray.jpg", text + "-colorspace Gray");
    ItemShape ellipse = frameOf({0, 0, 80, 60});
    ellipse.kind = pathInfoRec::Kind::ellipse;
    kit.picture(photo, {0, 0, 90, 60}, ellipse, {1, 0, 0, 1, 10, 10});
    kit.picture(drawn, {-20, -10, 70, 50}, frameOf({0, 0, 60, 40}), {0.9, 0.3, -0.3, 0.9, 120, 20});
    kit.rectangle({10, 100, 60, 150}, {PageKit::bluish, 1});
    kit.picture(cut, {0, 0, 90, 60}, frameOf({0, 0, 90, 60}), {1, 0, 0, 1, 30, 90});
    kit.picture(gray, {0, 0, 60, 40}, frameOf({0, 0, 60, 40}), {1, 0, 0, 1, 130, 100});
    PlacedGraphic clipped;
    clipped.filePath = photo;
    clipped.bounds = {0, 0, 90, 60};
    clipped.clipPath = pathOf(pathInfoRec::Kind::ellipse, clipped.bounds);
    clipped.clipPath.push_back(pathOf(pathInfoRec::Kind::rectangle, {30, 20, 60, 40}).front());
    kit.picture(clipped, frameOf({0, 0, 90, 45}), {1, 0, 0, 1, 20, 230});
    kit.picture(folder.path("none.png"), {0, 0, 60, 40}, frameOf({0, 0, 60, 40}), {1, 0, 0, 1, 30, 180});
    expectOutputsAgree(kit.list, folder);
}

TEST_F(PlacedPictures, JpegDataGoesThroughAndEqualContentIsStoredOnce) {
    const std::string how = "-size 40x30 gradient:red-blue -quality 70 ";
    const std::string cmyk = make("a.jpg", how + "-colorspace CMYK"), copy = folder.path("b.jpg");
    const std::string rgb = make("c.jpg", how);
    std::filesystem::copy_file(cmyk, copy);
    for (const std::string& picture : {cmyk, copy, rgb, cmyk})
        kit.picture(picture, {0, 0, 40, 30}, frameOf({0, 0, 40, 30}));
    writePdf({&kit.list, &kit.list});
    EXPECT_EQ(countOf(fileBytes(path), "/Subtype/Image"), 2u);
    const std::string bytes = fileBytes(path);
    EXPECT_EQ(countOf(bytes, fileBytes(cmyk)), 1u);
    EXPECT_EQ(countOf(bytes, fileBytes(rgb)), 1u);
    EXPECT_NE(bytes.find("/ColorSpace/DeviceCMYK/Decode[1 0 1 0 1 0 1 0]"), std::string::npos);
}

TEST_F(PlacedPictures, PixelsKeepTheirColoursProfileAndTransparency) {
    const std::string profile = " -profile /usr/share/color/icc/ghostscript/srgb.icc";
    struct testRow {
        const char* name;
        std::string how;
        const char* kind;
        int images;
        bool isLossless;  // by ImageMagick, which takes pixels with a profile for others
    };
    const testRow rows[] = {
        {"gray.png", "-size 30x20 gradient: -depth 8", " gray    1   8 ", 1, true},
        {"colour.png", "-size 30x20 gradient:red-blue -depth 8", " rgb     3   8 ", 1, true},
        {"alpha.png", "-size 30x20 gradient:red-blue -alpha set -channel A -evaluate set 50%", " smask ", 2, false},
        {"icc.png", "-size 30x20 gradient:red-blue" + profile, " icc     3   8 ", 1, false},
    };
    for (const auto& [name, how, kind, count, isLossless] : rows) {
        PageKit page;
        page.picture(make(name, how), {0, 0, 30, 20}, frameOf({0, 0, 30, 20}));
        writePdf({&page.list});
        EXPECT_EQ(countOf(images(), "\n"), count + 2u) << name << images();
        EXPECT_NE(images().find(kind), std::string::npos) << name << images();
        const std::string back = folder.path("back");
        EXPECT_EQ(runCommand("pdfimages -png '" + path + "' '" + back + "'").status, 0);
        const std::string differing =
            runCommand("compare -metric AE '" + folder.path(name) + "' '" + back + "-000.png' null:").output;
        EXPECT_TRUE(!isLossless || differing == "0") << name << differing;
    }
}

TEST_F(PlacedPictures, APictureThatCantBeDrawnIsAGreyBoxAndTold) {
    const std::string damaged = folder.path("damaged.png"), missing = folder.path("missing.jpg");
    std::ofstream(damaged) << "no picture";
    for (const std::string& picture : {damaged, missing, missing})
        kit.picture(picture, {0, 0, 100, 50}, frameOf({0, 0, 100, 50}));
    writePdf({&kit.list, &kit.list});
    ASSERT_EQ(problems.size(), 2u);
    EXPECT_EQ(problems[0].path, damaged);
    EXPECT_EQ(problems[1].path, missing);
    EXPECT_EQ(countOf(unpackedPdf(path), "0 0 100.000 50.000 re"), 1u) << "one box for all of a size";
}

TEST_F(PlacedPictures, PagesOfPdfKeepTheirFontsAndAreStoredOnce) {
    PageKit first(100, 60), second(100, 60);
    first.line(U"first page", 10, 30);
    first.rectangle({0, 50, 100, 60}, {PageKit::bluish, 1});
    second.line(U"second page", 10, 30);
    writePdf({&first.list, &second.list});
    const std::string source = folder.path("source.pdf");
    std::filesystem::rename(path, source);

    PlacedGraphic graphic;
    graphic.filePath = source;
    graphic.bounds = {0, 0, 100, 60};
    const ItemShape frame = frameOf(graphic.bounds);
    kit.rectangle({0, 0, 150, 60}, {PageKit::red, 0.3});
    kit.picture(graphic, frame, {1, 0, 0, 1, 10, 10});
    kit.picture(graphic, frame, {0.5, 0.3, -0.3, 0.5, 140, 100});
    graphic.pdfPage = 1;
    graphic.pdfTransparent = false;
    kit.picture(graphic, frame, {1, 0, 0, 1, 70, 40});
    expectOutputsAgree(kit.list, folder);
    writePdf({&kit.list, &kit.list});
    EXPECT_EQ(problems.size(), 0u);
    EXPECT_EQ(countOf(runCommand("pdffonts '" + path + "'").output, "yes yes yes"), 1u) << "the font of both pages";
    const std::string text = runCommand("pdftotext '" + path + "' -").output;
    EXPECT_EQ(countOf(text, "first page"), 2u) << text;
    EXPECT_EQ(countOf(text, "second page"), 2u) << text;
    EXPECT_EQ(countOf(unpackedPdf(path), "/Subtype /Form"), 3u) << "two pages and the ground of one";
}

TEST_F(PlacedPictures, HiddenLayersOfAPageStayHidden) {
    std::ofstream(folder.path("raw.pdf"))
        << "%PDF-1.5\n"
           "1 0 obj<</Type/Catalog/Pages 2 0 R/OCProperties<</OCGs[5 0 R 6 0 R]/D<</OFF[5 0 R]>>>>>>endobj\n"
           "2 0 obj<</Type/Pages/Kids[3 0 R]/Count 1/Rotate 90/MediaBox[0 0 40 20]>>endobj\n"
           "3 0 obj<</Type/Page/Parent 2 0 R/Contents 4 0 R/Resources<</Properties<</A 5 0 R/B 6 0 R>>>>>>endobj\n"
           "4 0 obj<</Length 69>>stream\n/OC/A BDC 0 0 20 20 re f EMC /OC/B BDC 30 0 10 20 re f EMC           "
           "\nendstream endobj\n"
           "5 0 obj<</Type/OCG/Name(Notes)>>endobj\n6 0 obj<</Type/OCG/Name(Art)>>endobj\ntrailer<</Root 1 0 R>>\n";
    const std::string source = folder.path("layers.pdf");
    ASSERT_EQ(runCommand("qpdf --warning-exit-0 '" + folder.path("raw.pdf") + "' '" + source + "'").status, 0);
    kit.picture(source, {0, 0, 100, 200}, frameOf({0, 0, 100, 200}));
    writePdf({&kit.list});
    ASSERT_EQ(runCommand("pdftoppm -r 72 -png -singlefile '" + path + "' '" + folder.path("shown") + "'").status, 0);
    const PngPicture shown(folder.path("shown.png"));
    EXPECT_EQ(shown.darkPixels(), 100 * 50) << "the right quarter, turned to the lower one";
    EXPECT_EQ(shown.darkPixels(0, 150, 100, 200), 100 * 50);
}

TEST_F(PlacedPictures, EachIsReadAndDecodedOnceHoweverOftenItRecurs) {
    std::vector<std::string> made;
    for (const char* color : {"red", "green", "blue"})
        made.push_back(make(std::string(color) + ".png", std::string("-size 20x10 xc:") + color));
    const PictureLibrary::Counts before = PictureLibrary::shared().counts();
    std::vector<PageKit> kits(30);
    std::vector<const DisplayList*> pages;
    for (std::size_t i = 0; i < kits.size(); ++i) {
        kits[i].picture(made[i % 3], {0, 0, 20, 10}, frameOf({0, 0, 20, 10}));
        pages.push_back(&kits[i].list);
    }
    writePdf(pages);
    const PictureLibrary::Counts after = PictureLibrary::shared().counts();
    EXPECT_EQ(after.decoded - before.decoded, 3u);
    EXPECT_EQ(after.filesRead - before.filesRead, 3u);
    EXPECT_EQ(countOf(fileBytes(path), "/Subtype/Image"), 3u);
}

/// Pages of which some are drawn in a fork: the fork is played by a second writer in the same state.
TEST_F(PlacedPictures, ThoseOfPagesDrawnElsewhereGiveTheSameBytes) {
    const std::string first = make("first.png", "-size 20x20 xc:red"),
                      second = make("second.png", "-size 20x20 xc:blue");
    kit.line(U"A", 10, 60);
    kit.picture(first, {0, 0, 20, 20}, frameOf({0, 0, 20, 20}));
    PageKit other;
    other.line(U"A", 10, 60);
    other.picture(second, {0, 0, 20, 20}, frameOf({0, 0, 20, 20}));
    other.picture(first, {0, 0, 20, 20}, frameOf({0, 0, 20, 20}));
    writePdf({&kit.list, &other.list});

    PdfWriter here, fork;
    const std::string shared = folder.path("shared.pdf");
    ASSERT_TRUE(here.open(shared, {}) && here.addPage(kit.list));
    ASSERT_TRUE(fork.open(folder.path("fork.pdf"), {}) && fork.addPage(kit.list));
    fork.keepPages();
    ASSERT_TRUE(fork.addPage(other.list));
    const auto kept = fork.takeKeptPages();
    ASSERT_TRUE(kept);
    bool fits = false;
    ASSERT_TRUE(here.addKeptPages(*kept, fits) && fits && here.finish());
    EXPECT_TRUE(fileBytes(path) == fileBytes(shared));
}

}  // namespace
}  // namespace tarnova
