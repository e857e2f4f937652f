// Text on paths in the files that are written: drawn alike everywhere, and found again.

#include <gtest/gtest.h>

#include <algorithm>

#include "host/render/pdf_writer.h"
#include "host/render/png_output.h"
#include "host/text/composer.h"
#include "tests/host/files/layout_kit.h"
#include "tests/host/render/page_kit.h"
#include "tests/host/render/picture.h"

namespace tarnova {
namespace {

using namespace tarnova::testing;

/// A circle with text outside and one with text inside, both underlined, a wave with an item in its text on a turned
/// frame, and upright letters; in RGB, since programs convert CMYK differently.
constexpr const char* page = R"({"tarnovaLayout": 1, "pageSize": [200, 200],
"swatches": [{"name": "Ink", "rgb": [0, 0, 0]}],
"characterStyles": [{"name": "Ring", "color": "Ink", "size": 18, "underline": true}],
"pages": [{"items": [
  {"kind": "ellipse", "bounds": [30, 30, 80, 80], "pathText": {"text": [{"text": [{"text": "all around the world", "style": "Ring"}]}]}},
  {"kind": "ellipse", "bounds": [110, 90, 80, 80],
   "pathText": {"flip": true, "offset": 4, "text": [{"text": [{"text": "and inside", "style": "Ring"}]}]}},
  {"path": "M 0 0 C 40 -40 60 40 100 0", "matrix": [0.8, 0.3, -0.3, 0.8, 20, 140],
   "pathText": {"text": [{"align": "center", "text": [{"text": "on a wave", "color": "Ink", "size": 20}, {"item": {"bounds": [0, 0, 12, 8], "fill": "Ink"}}]}]}},
  {"path": "M 5 55 L 35 25", "pathText": {"effect": "upright", "text": [{"text": [{"text": "ll", "color": "Ink", "size": 20}]}]}}
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

    [[nodiscard]] UID itemOnWave() const {
        for (UID story : document->stories()) {
            const auto owned = document->ownedItems(story, 0, document->totalLength(story));
            if (!owned.empty()) return owned[0].item;
        }
        return kInvalidUID;
    }

    ScratchFolder folder;
    std::string own = folder.path("own.png"), pdf = folder.path("path.pdf"), error;
    std::unique_ptr<DocumentModel> document;
};

TEST_F(PathTextPage, AllOutputsShowTheSame) {
    DisplayList list;
    ASSERT_TRUE(buildDisplayList(*document, document->pageAt(0), list));
    expectOutputsAgree(list, folder);
}

/// Outside of the first circle there is text all around, inside of it none but the underline; the other way round at
/// the second.
TEST_F(PathTextPage, TextStandsOnItsSideOfThePath) {
    const PngPicture picture(own);
    const auto dark = [&picture](double left, double top, double right, double bottom) {
        return picture.darkPixels(static_cast<int>(left * 4), static_cast<int>(top * 4), static_cast<int>(right * 4),
                                  static_cast<int>(bottom * 4));
    };
    EXPECT_GT(dark(60, 14, 90, 29), 300) << "above the first";
    EXPECT_GT(dark(111, 60, 126, 80), 300) << "to its right";
    EXPECT_EQ(dark(50, 45, 90, 95), 0) << "inside";
    EXPECT_GT(dark(112, 120, 128, 140), 200) << "inside of the second, at its left";
    EXPECT_EQ(dark(130, 172, 170, 199), 0) << "below it";
    const PMMatrix onWave = document->toSpread(*document->item(itemOnWave()));
    EXPECT_EQ(picture.at(static_cast<int>(onWave.map({6, 4}).x * 4), static_cast<int>(onWave.map({6, 4}).y * 4)), 0u);
    // The stems of letters that stay upright are as wide as they are on a level line.
    int stems = 0;
    for (int x = 0; x < 20 * 4; ++x)
        stems += picture.darkPixels(x, 30 * 4, x + 1, 56 * 4) > 12 * 4 ? 1 : 0;
    EXPECT_GE(stems, 8);
    EXPECT_LE(stems, 16) << "two of two points or less";
}

TEST_F(PathTextPage, TheTextIsFoundAgain) {
    std::string text = runCommand("pdftotext -raw '" + pdf + "' -").output;
    std::erase_if(text, [](char c) { return c == ' ' || c == '\n' || c == '\f'; });
    EXPECT_EQ(text, "allaroundtheworldandinsideonawavell");
}

}  // namespace
}  // namespace tarnova
