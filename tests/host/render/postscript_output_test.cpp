#include "host/render/postscript_output.h"

#include <gtest/gtest.h>

#include "tests/host/render/page_kit.h"

namespace tarnova {
namespace {

using namespace tarnova::testing;

class PostScript : public ::testing::Test {
 protected:
    void write(const std::vector<const DisplayList*>& pages, const std::string& title = "") {
        PostScriptWriter writer;
        ASSERT_TRUE(writer.open(path, title, PostScriptKind::document)) << writer.error();
        for (const DisplayList* page : pages)
            ASSERT_TRUE(writer.addPage(*page)) << writer.error();
        ASSERT_TRUE(writer.finish()) << writer.error();
        expectSound(path);
    }
    void writeEps(const DisplayList& page) {
        std::string error;
        ASSERT_TRUE(writePageEps(page, epsPath, "", error)) << error;
        expectSound(epsPath);
    }
    void expectSound(const std::string& file) {
        const CommandResult read = runCommand("gs -q -dSAFER -dBATCH -dNOPAUSE -sDEVICE=nullpage '" + file + "'");
        EXPECT_EQ(read.status, 0);
        EXPECT_EQ(read.output, "");
    }
    /// The file as another program turns it into a PDF; with `-dEPSCrop` the pages of an EPS are its bounding box.
    std::string asPdf(const std::string& file) {
        const std::string pdf = file + ".pdf";
        const CommandResult made =
            runCommand("gs -q -dSAFER -dEPSCrop -sDEVICE=pdfwrite -o '" + pdf + "' '" + file + "'");
        EXPECT_EQ(made.status, 0) << made.output;
        return pdf;
    }

    ScratchFolder folder;
    std::string path = folder.path("pages.ps");
    std::string epsPath = folder.path("page.eps");
    PageKit kit;  // 200 by 300 points
};

TEST_F(PostScript, PagesKeepTheirSizes) {
    const PageKit a4(595.276, 841.89), wider(204, 300), wide(800.5, 100);
    kit.rectangle({10, 10, 20, 20}, {swatchBlack, 1});
    write({&kit.list, &wider.list, &a4.list, &wide.list});
    const std::string text = fileBytes(path);
    EXPECT_EQ(text.substr(0, 15), "%!PS-Adobe-3.0\n");
    EXPECT_NE(text.find("\n%%Pages: 4\n"), std::string::npos);
    EXPECT_EQ(countOf(text, "\n%%Page: "), 4u);
    const std::string info = runCommand("pdfinfo -f 1 -l 4 '" + asPdf(path) + "'").output;
    for (const char* size : {"Page    1 size:  200 x 300 pts", "Page    2 size:  204 x 300 pts",
                             "Page    3 size:  595.28 x 841.89 pts", "Page    4 size:  800.5 x 100 pts"}) {
        EXPECT_NE(info.find(size), std::string::npos) << info;
    }
}

/// An importer places an EPS by its boxes: they are the page, though less of it is inked, and nothing is outside.
TEST_F(PostScript, TheBoxesOfAnEpsAreThePage) {
    PageKit odd(200.5, 300.25);
    odd.rectangle({-20, 30, 60, 50}, {swatchBlack, 1});
    odd.rectangle({190, 290, 250, 350}, {swatchBlack, 1});
    writeEps(odd.list);
    const std::string text = fileBytes(epsPath);
    EXPECT_EQ(text.substr(0, 24), "%!PS-Adobe-3.0 EPSF-3.0\n");
    EXPECT_NE(text.find("\n%%BoundingBox: 0 0 201 301\n%%HiResBoundingBox: 0 0 200.5 300.25\n"), std::string::npos);
    EXPECT_NE(text.find("\n%%PageBoundingBox: 0 0 201 301\n"), std::string::npos);
    EXPECT_EQ(countOf(text, "setpagedevice"), 0u) << "an EPS must leave the page it is placed on alone";
    const std::string ink = runCommand("gs -q -dSAFER -r720 -sDEVICE=bbox -o - '" + epsPath + "'").output;
    double left = 0, bottom = 0, right = 0, top = 0;
    const std::size_t box = ink.find("%%HiResBoundingBox:");
    ASSERT_NE(box, std::string::npos) << ink;
    ASSERT_EQ(std::sscanf(ink.c_str() + box, "%%%%HiResBoundingBox: %lf %lf %lf %lf", &left, &bottom, &right, &top), 4);
    EXPECT_NEAR(left, 0, 0.2);
    EXPECT_NEAR(bottom, 0, 0.2);
    EXPECT_NEAR(right, 200.5, 0.2);
    EXPECT_NEAR(top, 270.25, 0.2);
}

TEST_F(PostScript, AnEmptyPageIsAPage) {
    write({&kit.list});
    EXPECT_NE(runCommand("pdfinfo '" + asPdf(path) + "'").output.find("200 x 300 pts"), std::string::npos);
    writeEps(kit.list);
    EXPECT_NE(fileBytes(epsPath).find("\n%%BoundingBox: 0 0 200 300\n"), std::string::npos);
}

TEST_F(PostScript, TheTitleIsOnePlainLine) {
    const std::pair<std::string, std::string> rows[] = {
        {"Spring (sale) \\ 50%", "\n%%Title: (Spring \\(sale\\) \\\\ 50%)\n"},
        {"Grüße 漢\n%%EOF", "\n%%Title: (Gr??e ??%%EOF)\n"},
        {std::string(400, 'x'), "\n%%Title: (" + std::string(200, 'x') + ")\n"},
        {"", "\n%%LanguageLevel: 2\n"},
        {"", "\n%%Creator: Tarnova\n"},
    };
    for (const auto& [title, line] : rows) {
        write({&kit.list}, title);
        EXPECT_NE(fileBytes(path).find(line), std::string::npos) << title;
    }
}

TEST_F(PostScript, FailuresNameTheFileAndLeaveNothing) {
    PostScriptWriter writer;
    EXPECT_FALSE(writer.addPage(kit.list)) << "before open";
    EXPECT_EQ(writer.error(), "the PostScript file isn't open");
    std::ofstream(path) << "old";
    ASSERT_TRUE(writer.open(path, "", PostScriptKind::document));
    EXPECT_FALSE(writer.finish());
    EXPECT_NE(writer.error().find("no pages"), std::string::npos) << writer.error();

    ASSERT_TRUE(writer.open(path, "", PostScriptKind::document));
    EXPECT_FALSE(writer.addPage(PageKit(100, 0).list));
    EXPECT_FALSE(writer.addPage(kit.list)) << "a failed file stays failed";
    EXPECT_NE(writer.error().find("no area"), std::string::npos) << writer.error();

    ASSERT_TRUE(writer.open(path, "", PostScriptKind::eps));
    ASSERT_TRUE(writer.addPage(kit.list));
    EXPECT_FALSE(writer.addPage(kit.list));
    EXPECT_NE(writer.error().find("an EPS file has one page"), std::string::npos) << writer.error();
    EXPECT_EQ(fileBytes(path), "old");
    EXPECT_EQ(folder.fileCount(), 1u);
}

}  // namespace
}  // namespace tarnova
