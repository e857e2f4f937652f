// Text on paths in the files that are written: drawn alike everywhere, and found again.

#include <gtest/gtest.h>

#include <algorithm>

#include "host/render/pdf_writer.h"
#include "host/render/png_output.h"
#include "host/render/svg_output.h"
#include "host/text/composer.h"
#include "tests/host/files/layout_kit.h"
#include "tests/host/render/page_kit.h"
#include "tests/host/render/picture.h"

namespace tarnova {
namespace {

using namespace tarnova::testing;

/// A circle with text outside and one with text inside, both underlined, and a wave on a turned frame; in RGB, since
/// programs convert CMYK differently.
constexpr const char* page = R"({"tarnovaLayout": 1, "pageSize": [200, 200],
"swatches": [{"name": "Ink", "rgb": [0, 0, 0]}],
"characterStyles": [{"name": "Ring", "color": "Ink", "size": 18, "underline": true}],
"pages": [{"items": [
  {"kind": "ellipse", "bounds": [30, 30, 80, 80], "pathText": {"text": [{"text": [{"text": "all around the world", "style": "Ring"}]}]}},
  {"kind": "ellipse", "bounds": [110, 90, 80, 80],
   "pathText": {"flip": true, "offset": 4, "text": [{"text": [{"text": "and inside", "style": "Ring"}]}]}},
  {"path": "M 0 0 C 40 -40 60 40 100 0", "matrix": [0.8, 0.3, -0.3, 0.8, 20, 140],
   "pathText": {"text": [{"align": "center", "text": [{"text": "on a wave", "color": "Ink", "size": 20}]}]}}
]}]})";

class PathTextPage : public ::testing::Test {
 protected:
    void SetUp() override {
        document = opened(page);
        document->setComposer(makeComposer());
        ASSERT_TRUE(writePagePng(*document, document->pageAt(0), own, 288, nullptr, error)) << error;
        PdfWriter writer;
        ASSERT_TRUE(writer.open(pdf, {}));
        ASSERT_TRUE(writer.addPage(*document, document->pageAt(0))) << writer.error();
        ASSERT_TRUE(writer.finish()) << writer.error();
        ASSERT_EQ(writer.oversetStories(), 0);
    }

    ScratchFolder folder;
    std::string own = folder.path("own.png"), pdf = folder.path("path.pdf"), error;
    std::unique_ptr<DocumentModel> document;
};

TEST_F(PathTextPage, AllOutputsShowTheSame) {
    ASSERT_EQ(complaintsAbout(pdf), "");
    ASSERT_EQ(runCommand("pdftoppm -r 288 -png -singlefile '" + pdf + "' '" + folder.path("pdf") + "'").status, 0);
    expectTheSamePicture(Picture(own), Picture(folder.path("pdf.png")));
    const std::string svg = folder.path("path.svg"), drawn = folder.path("svg.png");
    ASSERT_TRUE(writePageSvg(*document, document->pageAt(0), svg, nullptr, error)) << error;
    ASSERT_EQ(runCommand("rsvg-convert -b white --dpi-x 288 --dpi-y 288 -o '" + drawn + "' '" + svg + "'").status, 0);
    expectTheSamePicture(Picture(own), Picture(drawn));
}

/// Outside of the first circle there is text all around, inside of it none but the underline; the other way round at
/// the second.
TEST_F(PathTextPage, TextStandsOnItsSideOfThePath) {
    const Picture picture(own);
    const auto dark = [&picture](double left, double top, double right, double bottom) {
        return picture.darkPixels(static_cast<int>(left * 4), static_cast<int>(top * 4), static_cast<int>(right * 4),
                                  static_cast<int>(bottom * 4));
    };
    EXPECT_GT(dark(60, 14, 90, 29), 300) << "above the first";
    EXPECT_GT(dark(111, 60, 126, 80), 300) << "to its right";
    EXPECT_EQ(dark(50, 45, 90, 95), 0) << "inside";
    EXPECT_GT(dark(112, 120, 128, 140), 200) << "inside of the second, at its left";
    EXPECT_EQ(dark(130, 172, 170, 199), 0) << "below it";
}

TEST_F(PathTextPage, TheTextIsFoundAgain) {
    std::string text = runCommand("pdftotext -raw '" + pdf + "' -").output;
    std::erase_if(text, [](char c) { return c == ' ' || c == '\n' || c == '\f'; });
    EXPECT_EQ(text, "allaroundtheworldandinsideonawave");
}

}  // namespace
}  // namespace tarnova
