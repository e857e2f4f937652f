// Hyperlinks in text, in the files that can hold them.

#include "host/render/page_links.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>

#include "host/files/layout_file.h"
#include "host/render/svg_output.h"
#include "host/text/composer.h"
#include "tests/host/render/page_kit.h"

namespace tarnova {
namespace {

using namespace tarnova::testing;

/// Two pages of 200 by 100 points; the runs of their one text frame each are given.
std::unique_ptr<DocumentModel> twoPages(const std::string& first, const std::string& second = "\"b\"",
                                        const std::string& frame = R"("bounds": [10, 10, 180, 80])") {
    const auto page = [&](const std::string& runs) {
        return R"({"items": [{)" + frame + R"(, "text": [{"text": [)" + runs + "]}]}]}";
    };
    layoutError error;
    auto document = readLayout(
        R"({"tarnovaLayout": 1, "pageSize": [200, 100], "pages": [)" + page(first) + ", " + page(second) + "]}", error);
    EXPECT_NE(document, nullptr) << error.line << ": " << error.message;
    if (document != nullptr) document->setComposer(makeComposer());
    return document;
}

std::vector<PageLink> linksOfPage(const DocumentModel& document, std::int32_t index = 0) {
    DisplayList list;
    EXPECT_TRUE(buildDisplayList(document, document.pageAt(index), list));
    return linksOf(list);
}

/// So many numbers of a text, from a place on; zeros where there are no more.
std::vector<double> numbersAfter(const std::string& text, std::size_t at, std::size_t count) {
    std::vector<double> out(count);
    for (double& number : out) {
        at = text.find_first_of("-.0123456789", at);
        if (at == std::string::npos) break;
        char* behind = nullptr;
        number = std::strtod(text.c_str() + at, &behind);
        at = static_cast<std::size_t>(behind - text.c_str());
    }
    return out;
}

class PdfLinksTest : public ::testing::Test {
 protected:
    void write(const DocumentModel& document, const std::vector<std::int32_t>& pages, const PdfOptions& options = {}) {
        PdfWriter writer;
        ASSERT_TRUE(writer.open(path, options)) << writer.error();
        for (const std::int32_t page : pages)
            ASSERT_TRUE(writer.addPage(document, document.pageAt(page))) << writer.error();
        ASSERT_TRUE(writer.finish()) << writer.error();
        EXPECT_EQ(complaintsAbout(path), "");
    }

    /// Of each link in the file to a page: the index of the page that it is on, and of that which it leads to.
    std::vector<std::pair<std::size_t, std::size_t>> jumps() {
        const std::string pdf = unpackedPdf(path);
        std::vector<std::pair<std::size_t, std::size_t>> out;
        for (std::size_t at = 0; (at = pdf.find("/Annots ", at)) != std::string::npos; ++at) {
            const std::string links = objectOf(pdf, numbersAfter(pdf, at, 1)[0]);
            const auto references = numbersAfter(links, 0, countOf(links, " R") * 2);
            for (std::size_t i = 0; i < references.size(); i += 2) {
                const std::string annotation = objectOf(pdf, references[i]);
                const std::size_t target = annotation.find("/Dest");
                if (target == std::string::npos) continue;
                const std::string page = objectHead(numbersAfter(annotation, target, 1)[0]);
                out.emplace_back(pageAround(pdf, at), pageAround(pdf, pdf.find(page)));
            }
        }
        return out;
    }

    /// The index of the page to which a place in an unpacked file belongs.
    static std::size_t pageAround(const std::string& pdf, std::size_t at) {
        return static_cast<std::size_t>(numbersAfter(pdf, pdf.rfind("%% Page ", at), 1)[0]) - 1;
    }

    static std::string objectHead(double number) { return fmt::format("\n{:.0f} 0 obj\n", number); }

    static std::string objectOf(const std::string& pdf, double number) {
        const std::string head = objectHead(number);
        const std::size_t at = pdf.find(head);
        return at == std::string::npos ? "" : pdf.substr(at + head.size(), pdf.find("endobj", at) - at - head.size());
    }

    ScratchFolder folder;
    std::string path = folder.path("out.pdf");
};

TEST(PageLinks, OneAreaForEachLine) {
    const char* const site = R"("link": "https://tarnova.example/")";
    const std::string runs =
        std::string(R"("See ", {"text": "our ", )") + site + R"(}, {"bold": true, "text": "site", )" + site +
        R"(}, ", ", {"text": "mail", "link": "mailto:a@tarnova.example"})" +
        R"(, {"text": " or", "link": ""}, {"text": " )" + std::string(60, 'w') + R"(", )" + site + "}";
    const auto document = twoPages(runs, "\"b\"", R"("bounds": [10, 10, 150, 80])");
    const std::vector<PageLink> links = linksOfPage(*document);
    ASSERT_GE(links.size(), 4u);
    EXPECT_EQ(links[0].target.uri, "https://tarnova.example/");
    EXPECT_EQ(links[1].target.uri, "mailto:a@tarnova.example");
    EXPECT_LT(boundsOf(links[0]).right, boundsOf(links[1]).left) << "the comma lies between";
    for (std::size_t i = 2; i + 1 < links.size(); ++i) {
        EXPECT_EQ(boundsOf(links[i]).left, 10) << i;
        EXPECT_NEAR(boundsOf(links[i]).right, 160, 10) << i;
        EXPECT_LE(boundsOf(links[i]).bottom, boundsOf(links[i + 1]).top + 0.01) << i;
    }
    EXPECT_TRUE(linksOfPage(*document, 1).empty());
}

TEST(PageLinks, AreasOnAPathTurnWithIt) {
    layoutError error;
    const auto document = readLayout(R"({"tarnovaLayout": 1, "pageSize": [200, 100], "pages": [{"items": [
        {"at": [50, 90], "path": "M 0 0 L 0 -80", "pathText": {"text": [
            {"text": [{"text": "up", "link": "https://tarnova.example/"}]}]}}]}]})",
                                     error);
    ASSERT_NE(document, nullptr) << error.line << ": " << error.message;
    document->setComposer(makeComposer());
    const std::vector<PageLink> links = linksOfPage(*document);
    ASSERT_FALSE(links.empty());
    EXPECT_TRUE(isUpright(links.front()));
    const PMRect bounds = boundsOf(links.front());
    EXPECT_LT(bounds.left, 45) << "letters stand to the left of a path that runs upward";
    EXPECT_NEAR(bounds.right, 52, 2) << "their descent";
    EXPECT_NEAR(bounds.bottom, 90, 0.01);
    EXPECT_NEAR(boundsOf(links.back()).top, 90 - 11, 2) << "the width of the word";
}

TEST_F(PdfLinksTest, AnAreaHoldsItsWord) {
    struct Row {
        const char* name;
        const char* frame;
        double bleed;
    };
    const Row rows[] = {
        {"upright", R"("bounds": [10, 10, 180, 80])", 0},
        {"with bleed", R"("bounds": [10, 10, 180, 80])", 9},
        {"a quarter turned", R"("matrix": [0, -1, 1, 0, 40, 90], "inner": [0, 0, 80, 80])", 0},
    };
    const char* const runs = R"j("Our ", {"text": "site", "link": "https://tarnova.example/(a)"})j";
    for (const Row& row : rows) {
        PdfOptions options;
        options.bleed = row.bleed;
        write(*twoPages(runs, "\"b\"", row.frame), {0}, options);
        const std::string pdf = unpackedPdf(path);
        const std::string boxes = runCommand("pdftotext -bbox '" + path + "' -").output;
        const std::vector<double> area = numbersAfter(pdf, pdf.find("/Rect"), 4);
        const std::vector<double> word = numbersAfter(boxes, boxes.rfind("<word", boxes.find(">site<")), 4);
        const double sheetHeight = 100 + 2 * row.bleed;
        EXPECT_NEAR(area[0], word[0], 3) << row.name;
        EXPECT_NEAR(sheetHeight - area[3], word[1], 3) << row.name;
        EXPECT_NEAR(area[2], word[2], 3) << row.name;
        EXPECT_NEAR(sheetHeight - area[1], word[3], 3) << row.name;
        EXPECT_EQ(countOf(pdf, "/QuadPoints"), 0u) << row.name;
        EXPECT_NE(runCommand("pdfinfo -url '" + path + "'").output.find(" https://tarnova.example/(a)\n"),
                  std::string::npos)
            << row.name;
    }
}

TEST_F(PdfLinksTest, ATurnedAreaHasItsCorners) {
    const char* const runs = R"({"text": "site", "link": "https://tarnova.example/"})";
    const PageLink upright = linksOfPage(*twoPages(runs)).at(0);
    const auto document = twoPages(runs, "\"b\"", R"("bounds": [10, 10, 180, 80], "rotate": 30)");
    const PageLink turned = linksOfPage(*document).at(0);
    const double cosine = std::sqrt(3) / 2, sine = 0.5;
    for (int i = 0; i < 4; ++i) {
        const double x = upright.corners[i].x - 100, y = upright.corners[i].y - 50;  // from the frame's middle
        EXPECT_NEAR(turned.corners[i].x, 100 + cosine * x + sine * y, 0.01) << i;
        EXPECT_NEAR(turned.corners[i].y, 50 - sine * x + cosine * y, 0.01) << i;
    }
    write(*document, {0});
    const std::string pdf = unpackedPdf(path);
    const std::vector<double> points = numbersAfter(pdf, pdf.find("/QuadPoints"), 8);
    const std::vector<double> area = numbersAfter(pdf, pdf.find("/Rect"), 4);
    EXPECT_NEAR(points[0], turned.corners[0].x, 0.001);
    EXPECT_NEAR(points[7], 100 - turned.corners[3].y, 0.001);
    EXPECT_NEAR(area[0], turned.corners[3].x, 0.001) << "the top left corner lies furthest to the left";
    EXPECT_NEAR(area[3], 100 - turned.corners[2].y, 0.001);
}

TEST_F(PdfLinksTest, LinksToPages) {
    const char* const toBoth = R"({"text": "one", "link": "#page=1"}, " ", {"text": "two", "link": "#page=2"}, " ",
                                  {"text": "none", "link": "#page=9"})";
    const auto document = twoPages(toBoth, toBoth);
    using Jumps = std::vector<std::pair<std::size_t, std::size_t>>;
    write(*document, {0, 1});
    EXPECT_EQ(jumps(), (Jumps{{0, 0}, {0, 1}, {1, 0}, {1, 1}}));
    write(*document, {1});
    EXPECT_EQ(jumps(), (Jumps{{0, 0}})) << "the second page's number is that of the document";
    PdfOptions copies;
    copies.pagesOfCopy = 2;
    write(*document, {0, 1, 0, 1}, copies);
    EXPECT_EQ(jumps(), (Jumps{{0, 0}, {0, 1}, {1, 0}, {1, 1}, {2, 2}, {2, 3}, {3, 2}, {3, 3}}));
}

TEST_F(PdfLinksTest, TextThatRepeatsHasItsLinkOnEachPage) {
    const auto document = twoPages(R"({"text": "site", "link": "https://tarnova.example/"})");
    document->markTemplate();
    write(*document, {0, 0, 0});
    const std::string pdf = unpackedPdf(path);
    EXPECT_EQ(countOf(pdf, "/Subtype /Form"), 1u);
    EXPECT_EQ(countOf(pdf, "/Subtype /Link"), 3u);
}

TEST(SvgLinks, LeadToTheWebOnly) {
    const ScratchFolder folder;
    const std::string path = folder.path("out.svg");
    const auto document = twoPages(
        R"({"text": "site", "link": "https://tarnova.example/?a=1&b='\"<"}, {"text": "two", "link": "#page=2"})");
    std::string error;
    ASSERT_TRUE(writePageSvg(*document, document->pageAt(0), path, nullptr, error)) << error;
    const std::string svg = fileBytes(path);
    EXPECT_EQ(countOf(svg, "<a "), 1u);
    EXPECT_NE(svg.find("<a xlink:href=\"https://tarnova.example/?a=1&amp;b='%22%3C\"><polygon "), std::string::npos)
        << svg;
    EXPECT_EQ(runCommand("xmllint --noout '" + path + "'").output, "");
}

}  // namespace
}  // namespace tarnova
