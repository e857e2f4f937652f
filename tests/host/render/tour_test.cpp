// The tour: a layout that uses every feature, drawn as every output, its lines and shapes compared with kept places.

#include <fmt/format.h>
#include <gtest/gtest.h>

#include "engine/toolkit/text_encoding.h"
#include "host/files/layout_file.h"
#include "host/model/story_reader.h"
#include "host/render/png_output.h"
#include "host/render/postscript_output.h"
#include "host/render/svg_output.h"
#include "host/text/composer.h"
#include "source_folder.h"
#include "tests/host/render/page_kit.h"
#include "tests/host/render/picture.h"

namespace tarnova {
namespace {

using namespace tarnova::testing;

const std::string tourPath = TARNOVA_SOURCE_FOLDER "/examples/tour/tour.tvd";
const std::string keptPath = TARNOVA_SOURCE_FOLDER "/tests/host/render/kept/tour.txt";

/// A place to a tenth of a point, without a negative zero.
std::string place(const PMPoint& point) {
    const auto rounded = [](double value) { return std::round(value * 10) / 10 + 0.0; };
    return fmt::format("{:.1f},{:.1f}", rounded(point.x), rounded(point.y));
}

/// Each shape with its bounds on the page, and each line of text from where it begins to where it ends.
class PlaceWriter {
 public:
    explicit PlaceWriter(const DocumentModel& source) : document(source) {}

    std::string write() {
        for (std::int32_t i = 0; i < document.pageCount(); ++i)
            addPage(document.pageAt(i));
        return out;
    }

 private:
    void addPage(UID page) {
        DisplayList list;
        ASSERT_TRUE(buildDisplayList(document, page, list)) << whyNoDisplayList(document, page);
        out += fmt::format("page {}\n", document.pageName(page));
        for (const DisplayItem& item : list.items) {
            if (item.text != nullptr) {
                addText(item);
            } else {
                addShape(item);
            }
        }
        EXPECT_TRUE(list.overset.empty()) << "page " << document.pageName(page);
    }

    void addShape(const DisplayItem& item) {
        static constexpr const char* kinds[] = {"none", "rectangle", "ellipse", "line", "polygon"};
        const PMRect& bounds = item.shape->bounds;
        out += fmt::format("  {} {} to {}\n", kinds[static_cast<std::size_t>(item.shape->kind)],
                           place(item.toPage.map({bounds.left, bounds.top})),
                           place(item.toPage.map({bounds.right, bounds.bottom})));
    }

    void addText(const DisplayItem& item) {
        const ComposedStory& text = *item.text;
        for (std::uint32_t c = item.firstColumn; c < item.firstColumn + item.columnCount; ++c) {
            const ComposedColumn& column = text.columns[c];
            out += column.columnIndex == 0 ? "  text\n" : "  next column\n";
            for (std::uint32_t i = 0; i < column.lineCount; ++i)
                addLine(item, text.lines[column.firstLine + i]);
        }
    }

    void addLine(const DisplayItem& item, const ComposedLine& line) {
        const auto at = [&](float x) {
            return place(item.toPage.map({static_cast<double>(x), static_cast<double>(line.baseline)}));
        };
        out += fmt::format("    {} to {} {}\n", at(line.left), at(line.right), charactersOf(item, line));
    }

    /// The characters of a line; page characters and anchored items as signs.
    static std::string charactersOf(const DisplayItem& item, const ComposedLine& line) {
        std::u32string shown;
        for (const char32_t c : tarnova::charactersOf(*item.characters, line.start, line.limit)) {
            shown += c < U' ' ? U'¶' : c >= 0xFDD0 && c <= 0xFDEF ? U'#' : c == 0xFFFC ? U'@' : c;
        }
        return utf32ToUtf8(shown);
    }

    const DocumentModel& document;
    std::string out;
};

class TourTest : public ::testing::Test {
 protected:
    void SetUp() override {
        layoutError error;
        document = openLayout(tourPath, error);
        ASSERT_NE(document, nullptr) << error.line << ": " << error.message;
        document->setComposer(makeComposer());
    }

    ScratchFolder folder;
    std::unique_ptr<DocumentModel> document;
};

TEST_F(TourTest, LinesAndShapesStandWhereTheyDid) {
    const std::string placed = PlaceWriter(*document).write();
    if (placed == fileBytes(keptPath)) return;
    const std::string now = std::filesystem::temp_directory_path() / "tarnova-tour.txt";
    std::ofstream(now) << placed;
    ADD_FAILURE() << runCommand("diff -U1 '" + keptPath + "' '" + now + "'").output << "If the new places in " << now
                  << " are right, put it in the place of " << keptPath;
}

TEST_F(TourTest, EveryOutputTakesEachPage) {
    PdfWriter pdf;
    PostScriptWriter postScript;
    std::string error;
    ASSERT_TRUE(pdf.open(folder.path("tour.pdf"), {}));
    ASSERT_TRUE(postScript.open(folder.path("tour.ps"), document->title(), PostScriptKind::document));
    for (std::int32_t i = 0; i < document->pageCount(); ++i) {
        const UID page = document->pageAt(i);
        const std::string name = folder.path(std::to_string(i));
        EXPECT_TRUE(pdf.addPage(*document, page)) << pdf.error();
        EXPECT_TRUE(postScript.addPage(*document, page)) << postScript.error();
        EXPECT_TRUE(writePageSvg(*document, page, name + ".svg", nullptr, error)) << error;
        EXPECT_TRUE(writePageEps(*document, page, name + ".eps", document->title(), nullptr, error)) << error;
    }
    ASSERT_TRUE(pdf.finish()) << pdf.error();
    ASSERT_TRUE(postScript.finish()) << postScript.error();
    EXPECT_EQ(complaintsAbout(folder.path("tour.pdf")), "");
    EXPECT_EQ(runCommand("xmllint --noout --nonet '" + folder.path("") + "'*.svg").output, "");
    const CommandResult drawn = runCommand("gs -q -dSAFER -dBATCH -dNOPAUSE -sDEVICE=nullpage '" +
                                           folder.path("tour.ps") + "' '" + folder.path("") + "'*.eps");
    EXPECT_EQ(drawn.status, 0);
    EXPECT_EQ(drawn.output, "");
}

/// The colours as screens show them, since programs convert CMYK differently.
std::vector<Swatch> screenColors(const std::vector<Swatch>& swatches) {
    std::vector<Swatch> out = swatches;
    for (Swatch& swatch : out) {
        if (swatch.space != Swatch::Space::cmyk) continue;
        swatch.space = Swatch::Space::rgb;
        for (int i = 0; i < 3; ++i)
            swatch.values[i] = (1 - swatch.values[i]) * (1 - swatch.values[3]);
    }
    return out;
}

TEST_F(TourTest, PdfAndPictureShowTheSame) {
    const std::vector<Swatch> colors = screenColors(document->swatches());
    PdfWriter pdf;
    ASSERT_TRUE(pdf.open(folder.path("tour.pdf"), {}));
    for (std::int32_t i = 0; i < document->pageCount(); ++i) {
        DisplayList list;
        ASSERT_TRUE(buildDisplayList(*document, document->pageAt(i), list));
        list.swatches = &colors;
        std::string error;
        ASSERT_TRUE(pdf.addPage(list)) << pdf.error();
        ASSERT_TRUE(writePagePng(list, folder.path(fmt::format("own-{:02}.png", i + 1)), 72, error)) << error;
    }
    ASSERT_TRUE(pdf.finish()) << pdf.error();
    ASSERT_EQ(runCommand("pdftoppm -r 72 -png '" + folder.path("tour.pdf") + "' '" + folder.path("pdf") + "'").status,
              0);
    for (std::int32_t i = 1; i <= document->pageCount(); ++i) {
        SCOPED_TRACE(fmt::format("page {}", i));
        const PngPicture own(folder.path(fmt::format("own-{:02}.png", i)));
        const PngPicture other(folder.path(fmt::format("pdf-{:02}.png", i)));
        EXPECT_LT(largestDifference(own, other), 0.25);
    }
}

}  // namespace
}  // namespace tarnova
