// One page in every output: other programs see the picture that we draw.

#include <gtest/gtest.h>

#include "host/render/png_output.h"
#include "host/render/postscript_output.h"
#include "host/render/svg_output.h"
#include "tests/host/render/picture.h"

namespace tarnova::testing {

void drawSample(PageKit& kit) {
    kit.swatches.push_back({"Screen black", Swatch::Space::rgb, {0, 0, 0, 0}});
    CharFormat format;
    format.color = {static_cast<std::int32_t>(kit.swatches.size()) - 1, 1};
    format.pointSize = 24;
    format.underline = true;
    kit.line(U"Springfield", 20, 60, format);
    format.family = "DejaVu Sans";
    format.horizontalScale = 0.7;
    kit.line(U"Kαλημέρα", 20, 120, format, {0.9, 0.3, -0.3, 0.9, 20, 0});
    ItemShape ellipse;
    ellipse.kind = pathInfoRec::Kind::ellipse;
    ellipse.bounds = {0, 0, 100, 50};
    ellipse.stroke.paint = {PageKit::bluish, 1};
    ellipse.stroke.weight = 4;
    ellipse.stroke.dash = {12, 6};
    kit.shape(ellipse, {1, 0.2, 0, 1, 40, 200});
}

void expectOutputsAgree(const DisplayList& page, const ScratchFolder& folder) {
    const auto path = [&folder](const char* name) { return folder.path(std::string("agree.") + name); };
    std::string error;
    ASSERT_TRUE(writePagePng(page, path("png"), 288, error)) << error;
    PdfWriter pdf;
    ASSERT_TRUE(pdf.open(path("pdf"), {}) && pdf.addPage(page) && pdf.finish()) << pdf.error();
    EXPECT_EQ(complaintsAbout(path("pdf")), "");
    PostScriptWriter postScript;
    ASSERT_TRUE(postScript.open(path("ps"), "", PostScriptKind::document) && postScript.addPage(page) &&
                postScript.finish())
        << postScript.error();
    ASSERT_TRUE(writePageEps(page, path("eps"), "", error)) << error;
    ASSERT_TRUE(writePageSvg(page, path("svg"), error)) << error;
    const std::string toPdf = "gs -q -dSAFER -dEPSCrop -sDEVICE=pdfwrite -o '",
                      toPicture = "pdftoppm -r 288 -png -singlefile '";
    const std::pair<const char*, std::string> rows[] = {
        {"pdf", toPicture + path("pdf") + "' '" + path("pdf") + "'"},
        {"ps",
         toPdf + path("ps.pdf") + "' '" + path("ps") + "' && " + toPicture + path("ps.pdf") + "' '" + path("ps") + "'"},
        {"eps", toPdf + path("eps.pdf") + "' '" + path("eps") + "' && " + toPicture + path("eps.pdf") + "' '" +
                    path("eps") + "'"},
        {"svg", "rsvg-convert -b white --dpi-x 288 --dpi-y 288 -o '" + path("svg.png") + "' '" + path("svg") + "'"},
    };
    for (const auto& [name, draw] : rows) {
        SCOPED_TRACE(name);
        const CommandResult drawn = runCommand(draw);
        ASSERT_EQ(drawn.status, 0) << drawn.output;
        expectTheSamePicture(Picture(path("png")), Picture(path(name) + ".png"));
    }
}

namespace {

TEST(Outputs, OtherProgramsSeeThePictureThatThePngShows) {
    const ScratchFolder folder;
    PageKit kit;
    drawSample(kit);
    expectOutputsAgree(kit.list, folder);
}

}  // namespace
}  // namespace tarnova::testing
