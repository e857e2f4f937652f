#include "host/render/pdf_writer.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>

#include "tests/host/render/page_kit.h"

namespace tarnova {
namespace {

using namespace tarnova::testing;

class PdfFile : public ::testing::Test {
 protected:
    void write(const DisplayList& page, int copies = 1, const PdfOptions& options = {}) {
        PdfWriter writer;
        ASSERT_TRUE(writer.open(path, options)) << writer.error();
        for (int i = 0; i < copies; ++i)
            ASSERT_TRUE(writer.addPage(page)) << writer.error();
        ASSERT_TRUE(writer.finish()) << writer.error();
        EXPECT_EQ(writer.pageCount(), copies);
        EXPECT_EQ(complaintsAbout(path), "");
    }

    ScratchFolder folder;
    std::string path = folder.path("out.pdf");
    PageKit kit;
};

TEST_F(PdfFile, BoxesAreThePageAndBothCrossReferencesAreRight) {
    PageKit wide(612.5, 792.25);
    wide.line(U"page", 20, 20);
    for (const bool objectStreams : {true, false}) {
        for (const int level : {0, 1, 9}) {
            PdfOptions options;
            options.objectStreams = objectStreams;
            options.compressionLevel = level;
            write(wide.list, 3, options);
            const std::string boxes = runCommand("pdfinfo -box -f 3 -l 3 '" + path + "'").output;
            EXPECT_EQ(countOf(boxes, "0.00     0.00   612.50   792.25"), 5u) << boxes;
            EXPECT_EQ(fileBytes(path).substr(0, 9), "%PDF-1.7\n");
            EXPECT_EQ(countOf(fileBytes(path), "/Type/XRef"), objectStreams ? 1u : 0u);
        }
    }
}

TEST_F(PdfFile, PaintsWithTheOperatorsOfEachColourSpace) {
    kit.rectangle({10, 20, 110, 70}, {PageKit::red, 0.5});
    kit.rectangle({10, 80, 110, 90}, {PageKit::red, 0.5});
    kit.rectangle({10.5, 100, 110.25, 120}, {PageKit::bluish, 0.5});
    write(kit.list);
    const std::string pdf = unpackedPdf(path);
    EXPECT_NE(pdf.find("0 .5 .5 0 k\n10 230 100 50 re\nf\n10 210 100 10 re\nf\n"
                       ".5 .75 1 rg\n10.5 180 99.75 20 re\nf\n"),
              std::string::npos)
        << pdf;
}

TEST_F(PdfFile, StrokesPathsAndMatrices) {
    ItemShape curve;
    curve.kind = pathInfoRec::Kind::polygon;
    curve.path.resize(2);
    curve.path[0].start = {0, 0};
    curve.path[0].segments = {{PathSegment::Kind::curve, {10, 0}, {20, 10}, {20, 20}},
                              {PathSegment::Kind::line, {}, {}, {0, 20}}};
    curve.path[1] = {{5, 5}, {{PathSegment::Kind::line, {}, {}, {10, 5}}}, false};
    curve.fill = {PageKit::red, 1};
    curve.stroke.paint = {1, 1};
    curve.stroke.weight = 2.5;
    curve.stroke.join = Stroke::Join::round;
    curve.stroke.cap = Stroke::Cap::square;
    curve.stroke.dash = {3, 1.5};
    kit.shape(curve, {1, 0, 0, 1, 100, 50});

    ItemShape rule;
    rule.kind = pathInfoRec::Kind::line;
    rule.bounds = {0, 0, 50, 0};
    rule.stroke.paint = {PageKit::bluish, 1};
    rule.stroke.miterLimit = 7;
    kit.shape(rule, {0, 2, -2, 0, 30, 40});
    kit.shape(curve, {1, 0, 0, 1, 100, 90});
    write(kit.list);
    const std::string pdf = unpackedPdf(path);
    EXPECT_NE(pdf.find("0 1 1 0 k\n0 0 0 1 K\n2.5 w\n2 J\n1 j\n[3 1.5]0 d\n"
                       "100 250 m\n110 250 120 240 120 230 c\n100 230 l\nh\n105 245 m\n110 245 l\nB\n"),
              std::string::npos)
        << pdf;
    EXPECT_NE(pdf.find("q 0 -2 -2 0 30 260 cm\n0 .5 1 RG\n1 w\n0 J\n0 j\n7 M\n[]0 d\n0 0 m\n50 0 l\n"),
              std::string::npos)
        << pdf;
    // Behind the "Q" the state is that in front of the "q": nothing has to be set again.
    EXPECT_NE(pdf.find("S\nQ\n100 210 m\n"), std::string::npos) << pdf;
}

TEST_F(PdfFile, NothingThatBreaksAReader) {
    ItemShape odd;
    odd.bounds = {0, 0, 10, 10};
    odd.stroke.paint = {1, 1};
    odd.stroke.dash = {0, 0};
    odd.stroke.miterLimit = 0;
    odd.stroke.weight = 1e-9;
    kit.shape(odd);
    kit.shape(odd, {0, 0, 0, 0, 50, 50});
    kit.shape(odd, {1, 0, 0, 1, 1e300, -1e300});
    kit.rectangle({0, 0, 10, 10}, {99, 1});
    write(kit.list);
    const std::string pdf = unpackedPdf(path);
    EXPECT_NE(pdf.find(".001 w"), std::string::npos) << "width 0 would be a hairline";
    EXPECT_EQ(pdf.find("[0 0]0 d"), std::string::npos);
}

TEST_F(PdfFile, AThousandPagesHangInNodesOfAHundred) {
    kit.rectangle({0, 0, 10, 10}, {1, 1});
    write(kit.list, 1001);
    EXPECT_NE(runCommand("pdfinfo '" + path + "'").output.find("Pages:           1001"), std::string::npos);
    EXPECT_EQ(runCommand("qpdf --show-npages '" + path + "'").output, "1001\n");
    const std::string pdf = unpackedPdf(path);
    EXPECT_EQ(countOf(pdf, "/Type /Pages"), 12u);
    EXPECT_EQ(countOf(pdf, "/Count 100\n"), 10u);
    EXPECT_LT(std::filesystem::file_size(path), 1001u * 130) << "a page costs its content and a few bytes";
}

TEST_F(PdfFile, AFormIsForOnePlaceAndOneLook) {
    struct TestRow {
        const char* name;
        void (*change)(PageKit& p);
        std::size_t forms;
    };
    const TestRow rows[] = {
        {"the same again", [](PageKit&) {}, 1},
        {"nothing repeats", [](PageKit& p) { p.list.items[0].repeats = p.list.items[1].repeats = false; }, 1},
        {"another item", [](PageKit& p) { p.list.items[0].itemStamp = 77; }, 2},
        {"other text", [](PageKit& p) { p.list.items[1].storyStamp = 77; }, 2},
        {"one item less", [](PageKit& p) { p.list.items.pop_back(); }, 2},
        {"another place", [](PageKit& p) { p.list.items[1].toPage.ty = 3; }, 2},
        {"a higher page", [](PageKit& p) { p.list.page.bottom = 310; }, 2},
        {"another page of the spread",
         [](PageKit& p) {
             p.list.page = PMRect{200.1, 50, 400.1, 350};
         },
         1},
        {"only the second", [](PageKit& p) { p.list.items[0].repeats = false; }, 2},
    };
    for (const auto& [name, change, forms] : rows) {
        PageKit page;
        page.rectangle({0, 0, 100, 10}, {PageKit::red, 1});
        page.line(U"head", 10, 40);
        page.repeatAll();
        PdfWriter writer;
        ASSERT_TRUE(writer.open(path, {}));
        ASSERT_TRUE(writer.addPage(page.list));
        change(page);
        ASSERT_TRUE(writer.addPage(page.list));
        ASSERT_TRUE(writer.finish());
        EXPECT_EQ(complaintsAbout(path), "") << name;
        EXPECT_EQ(countOf(unpackedPdf(path), "/Subtype /Form"), forms) << name;
    }
}

TEST_F(PdfFile, ASingleDocumentHasNoForms) {
    kit.rectangle({0, 0, 100, 10}, {PageKit::red, 1});
    kit.line(U"text", 10, 40);
    write(kit.list, 2);
    EXPECT_EQ(countOf(unpackedPdf(path), "/XObject"), 0u);
}

/// A form can't know what was set where it is used, and the page is unchanged behind it.
TEST_F(PdfFile, FormsAndPagesDontLeanOnEachOthersState) {
    kit.rectangle({0, 0, 10, 10}, {PageKit::red, 1});
    kit.rectangle({20, 0, 30, 10}, {PageKit::red, 1}).repeats = true;
    kit.rectangle({40, 0, 50, 10}, {PageKit::red, 1});
    write(kit.list);
    const std::string pdf = unpackedPdf(path);
    EXPECT_NE(pdf.find("0 1 1 0 k\n0 290 10 10 re\nf\n/X0 Do\n40 290 10 10 re\nf"), std::string::npos) << pdf;
    EXPECT_NE(pdf.find("0 1 1 0 k\n20 290 10 10 re\nf"), std::string::npos) << pdf;
}

TEST_F(PdfFile, TheSamePagesGiveTheSameBytes) {
    kit.rectangle({0, 0, 100, 10}, {PageKit::red, 1});
    kit.repeatAll();
    kit.line(U"office", 10, 40);
    PdfOptions options;
    options.title = "Title";
    write(kit.list, 120, options);
    const std::string first = fileBytes(path);
    write(kit.list, 120, options);
    EXPECT_TRUE(first == fileBytes(path));
    options.title = "Other";
    write(kit.list, 120, options);
    EXPECT_FALSE(first == fileBytes(path));
    EXPECT_EQ(countOf(first, "Date"), 0u);
}

TEST_F(PdfFile, TellsItsTitleInEveryScript) {
    for (const std::string title : {"Spring (sale) \\ 50%", "Грюße – 漢字 😀", "a<b>&c"}) {
        PdfOptions options;
        options.title = title;
        options.creator = "Tester";
        kit.line(U"x", 10, 10);
        write(kit.list, 1, options);
        const std::string info = runCommand("pdfinfo '" + path + "'").output;
        EXPECT_NE(info.find("Title:           " + title + "\n"), std::string::npos) << info;
        EXPECT_NE(info.find("Creator:         Tester\n"), std::string::npos) << info;
        EXPECT_NE(runCommand("pdfinfo -meta '" + path + "'").output.find("<xmp:CreatorTool>Tester"), std::string::npos);
        EXPECT_NE(unpackedPdf(path).find("/Lang (en-US)"), std::string::npos);
    }
    EXPECT_NE(fileBytes(path).find("x-default\">a&lt;b&gt;&amp;c</rdf:li>"), std::string::npos);
}

TEST_F(PdfFile, FailuresNameTheFileAndLeaveNothing) {
    PdfWriter writer;
    EXPECT_FALSE(writer.addPage(kit.list)) << "before open";
    EXPECT_EQ(writer.error(), "the PDF file isn't open");
    std::ofstream(path) << "old";
    ASSERT_TRUE(writer.open(path, {}));
    EXPECT_FALSE(writer.finish());
    EXPECT_NE(writer.error().find("no pages"), std::string::npos);

    ASSERT_TRUE(writer.open(path, {}));
    PageKit flat(0, 100);
    EXPECT_FALSE(writer.addPage(flat.list));
    EXPECT_FALSE(writer.addPage(kit.list)) << "a failed file stays failed";
    EXPECT_NE(writer.error().find("no area"), std::string::npos);

    EXPECT_EQ(fileBytes(path), "old");
    EXPECT_EQ(folder.fileCount(), 1u);
}

/// A full disk shows only when the buffer goes out: a limit on the size of files stands in for it.
TEST_F(PdfFile, AFullDiskIsToldAndLeavesTheOldFile) {
    std::ofstream(path) << "old";
    kit.line(U"some text", 10, 10);
    rlimit before{};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
    const auto oldHandler = std::signal(SIGXFSZ, SIG_IGN);
    PdfWriter writer;
    ASSERT_TRUE(writer.open(path, {}));
    const rlimit small{1000, before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
    const bool added = writer.addPage(kit.list);
    const bool finished = writer.finish();
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &before), 0);
    std::signal(SIGXFSZ, oldHandler);
    EXPECT_TRUE(added);
    EXPECT_FALSE(finished);
    EXPECT_EQ(writer.error(), "\"" + path + "\" can't be written: File too large");
    EXPECT_EQ(fileBytes(path), "old");
    EXPECT_EQ(folder.fileCount(), 1u);
}

}  // namespace
}  // namespace tarnova
