// One page in every output: other programs see the picture that we draw.

#include <gtest/gtest.h>

#include "host/render/png_output.h"
#include "host/render/postscript_output.h"
#include "host/render/svg_output.h"
#include "tests/host/render/picture.h"

namespace tarnova::testing {

namespace {

using WritePage = bool (*)(const DisplayList& page, const std::string& path, std::string& error);

template <typename Writer, typename... Options>
bool writeWith(const DisplayList& page, const std::string& path, std::string& error, const Options&... options) {
    Writer writer;
    const bool isWritten = writer.open(path, options...) && writer.addPage(page) && writer.finish();
    error = writer.error();
    return isWritten;
}

const std::pair<const char*, WritePage> outputs[] = {
    {"png", [](const DisplayList& page, const std::string& path,
               std::string& error) { return writePagePng(page, path, 288, error); }},
    {"pdf", [](const DisplayList& page, const std::string& path,
               std::string& error) { return writeWith<PdfWriter>(page, path, error, PdfOptions{}); }},
    {"ps",
     [](const DisplayList& page, const std::string& path, std::string& error) {
         return writeWith<PostScriptWriter>(page, path, error, "", PostScriptKind::document);
     }},
    {"eps", [](const DisplayList& page, const std::string& path,
               std::string& error) { return writePageEps(page, path, "", error); }},
    {"svg", writePageSvg},
};

}  // namespace

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
    for (const auto& [name, write] : outputs) {
        std::string error;
        ASSERT_TRUE(write(page, path(name), error)) << name << ": " << error;
    }
    EXPECT_EQ(complaintsAbout(path("pdf")), "");
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
        expectTheSamePicture(PngPicture(path("png")), PngPicture(path(name) + ".png"));
    }
}

namespace {

TEST(Outputs, OtherProgramsSeeThePictureThatThePngShows) {
    const ScratchFolder folder;
    PageKit kit;
    drawSample(kit);
    expectOutputsAgree(kit.list, folder);
}

TEST(Outputs, TheSamePageGivesTheSameBytes) {
    const ScratchFolder folder;
    PageKit kit;
    drawSample(kit);
    const std::string picture = folder.path("picture.png");
    ASSERT_EQ(
        runCommand("convert -size 30x20 gradient:red-blue -alpha set -channel A -evaluate set 50% '" + picture + "'")
            .status,
        0);
    for (const double left : {0.0, 50.0})
        kit.picture(picture, {0, 0, 30, 20}, frameOf({0, 0, 20, 20}), {1, 0, 0, 1, left, 0});
    for (const auto& [name, write] : outputs) {
        std::string error;
        ASSERT_TRUE(write(kit.list, folder.path("first"), error) && write(kit.list, folder.path("again"), error))
            << name;
        EXPECT_TRUE(fileBytes(folder.path("first")) == fileBytes(folder.path("again"))) << name;
        EXPECT_EQ(countOf(fileBytes(folder.path("first")), "Date"), 0u) << name;
        EXPECT_TRUE(std::string(name) != "svg" || countOf(fileBytes(folder.path("first")), "id=\"image0\"") == 1)
            << "not by what was drawn before";
    }
}

TEST(Outputs, FailuresNameTheFileAndLeaveTheOldOne) {
    const ScratchFolder folder;
    const std::string old = folder.path("old"), nowhere = folder.path("none/page");
    std::ofstream(old) << "old";
    for (const auto& [name, write] : outputs) {
        std::string error;
        EXPECT_FALSE(write(PageKit(0, 100).list, old, error)) << name;
        EXPECT_EQ(error, "\"" + old + "\" can't be written: a page has no area") << name;
        EXPECT_FALSE(write(PageKit().list, nowhere, error)) << name;
        EXPECT_EQ(error.find("\"" + nowhere + "\" can't be written: No such file"), 0u) << name << ": " << error;
    }
    EXPECT_EQ(fileBytes(old), "old");
    EXPECT_EQ(folder.fileCount(), 1u);
}

}  // namespace
}  // namespace tarnova::testing
