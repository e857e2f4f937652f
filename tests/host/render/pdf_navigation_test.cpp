// What a PDF file tells about its pages besides drawing them: bookmarks, page labels and boxes with bleed.

#include <gtest/gtest.h>

#include <limits>

#include "host/model/document_builder.h"
#include "host/model/page_numbers.h"
#include "host/render/pdf_page_labels.h"
#include "host/render/png_output.h"
#include "host/text/composer.h"
#include "tests/host/render/page_kit.h"
#include "tests/host/render/picture.h"

namespace tarnova {
namespace {

using namespace tarnova::testing;

class PdfNavigation : public ::testing::Test {
 protected:
    void SetUp() override {
        DocumentBuilder builder;
        for (int i = 0; i < 8; ++i)
            builder.addSinglePage(100, 50);
        document = builder.finish();
        document->setComposer(makeComposer());
    }

    void addSection(std::int32_t page, std::string prefix, std::int32_t start, NumberingStyle style,
                    bool continues = false) {
        sectionRec section;
        section.startPage = document->pageAt(page);
        section.includePrefix = !prefix.empty();
        section.prefix = std::move(prefix);
        section.startNumber = start;
        section.numberingStyle = static_cast<std::int32_t>(style);
        section.continues = continues;
        ASSERT_EQ(document->createSection(section), 0);
    }

    void write(const std::vector<std::int32_t>& pages, const PdfOptions& options) {
        PdfWriter writer;
        ASSERT_TRUE(writer.open(path, options)) << writer.error();
        for (const std::int32_t page : pages)
            ASSERT_TRUE(writer.addPage(*document, document->pageAt(page))) << writer.error();
        ASSERT_TRUE(writer.finish()) << writer.error();
        EXPECT_EQ(complaintsAbout(path), "");
    }

    /// What qpdf reads under a key of its JSON, without blanks and line ends.
    std::string told(const std::string& key) {
        std::string json = runCommand("qpdf --json=2 --json-key=" + key + " '" + path + "'").output;
        std::erase_if(json, [](char c) { return c == ' ' || c == '\n'; });
        return json;
    }

    ScratchFolder folder;
    std::string path = folder.path("out.pdf");
    std::unique_ptr<DocumentModel> document;
    PdfOptions labelled = [] {
        PdfOptions options;
        options.pageLabels = true;
        return options;
    }();
};

TEST_F(PdfNavigation, LabelsAreThePrintedNames) {
    addSection(0, "", 1, NumberingStyle::lowerRoman);
    addSection(2, "A-", 0, NumberingStyle::arabic);
    addSection(4, "", 3998, NumberingStyle::upperRoman);
    addSection(6, "Grün ", 26, NumberingStyle::upperLetters);
    addSection(7, "", 1, NumberingStyle::lowerLetters, true);
    struct TestRow {
        PageLabel label;
        const char* name;
    };
    const TestRow rows[] = {
        {{"", 'r', 1}, "i"},
        {{"", 'r', 2}, "ii"},
        {{"A-0", 0, 1}, "A-0"},
        {{"A-", 'D', 1}, "A-1"},
        {{"", 'R', 3998}, "MMMCMXCVIII"},
        {{"", 'R', 3999}, "MMMCMXCIX"},
        {{"Grün ", 'A', 26}, "Grün Z"},
        {{"", 'a', 27}, "aa"},
    };
    for (std::int32_t i = 0; i < document->pageCount(); ++i) {
        EXPECT_EQ(document->pageName(document->pageAt(i)), rows[i].name);
        EXPECT_EQ(pageLabelOf(*document, document->pageAt(i)), rows[i].label) << rows[i].name;
    }
    write({0, 1, 2, 3, 4, 5, 6, 7}, labelled);
    const std::string labels = told("pagelabels");
    for (const char* range :
         {R"("index":0,"label":{"/S":"/r","/St":1})", R"("index":2,"label":{"/P":"u:A-0","/St":1})",
          R"("index":3,"label":{"/P":"u:A-","/S":"/D","/St":1})", R"("index":4,"label":{"/S":"/R","/St":3998})",
          R"("index":6,"label":{"/P":"u:Grün","/S":"/A","/St":26})", R"("index":7,"label":{"/S":"/a","/St":27})"}) {
        EXPECT_NE(labels.find(range), std::string::npos) << range << " in " << labels;
    }
    EXPECT_EQ(countOf(labels, "\"index\""), 6u) << labels;
}

TEST_F(PdfNavigation, ANumberThatItsStyleCannotWriteIsArabic) {
    addSection(0, "", 3999, NumberingStyle::lowerRoman);
    EXPECT_EQ(pageLabelOf(*document, document->pageAt(0)), (PageLabel{"", 'r', 3999}));
    EXPECT_EQ(pageLabelOf(*document, document->pageAt(1)), (PageLabel{"", 'D', 4000}));
}

TEST_F(PdfNavigation, LabelsAreLeftOutWhereTheySayNothing) {
    write({0, 1, 2}, labelled);
    EXPECT_EQ(countOf(unpackedPdf(path), "/PageLabels"), 0u);
    write({2, 4, 5}, labelled);
    const std::string labels = told("pagelabels");
    EXPECT_NE(labels.find(R"("index":0,"label":{"/S":"/D","/St":3})"), std::string::npos) << labels;
    EXPECT_NE(labels.find(R"("index":1,"label":{"/S":"/D","/St":5})"), std::string::npos) << labels;
    write({2, 4, 5}, {});
    EXPECT_EQ(countOf(unpackedPdf(path), "/PageLabels"), 0u);
}

TEST_F(PdfNavigation, ManyRangesHangInLeavesOfAHundred) {
    write(std::vector<std::int32_t>(250, 3), labelled);
    const std::string labels = told("pagelabels");
    EXPECT_EQ(countOf(labels, R"("label":{"/S":"/D","/St":4})"), 250u);
    EXPECT_EQ(countOf(unpackedPdf(path), "/Limits"), 3u);
    EXPECT_NE(labels.find(R"("index":249,)"), std::string::npos);
}

TEST_F(PdfNavigation, BookmarksGoToTheirPages) {
    addSection(1, "Anhang (", 7, NumberingStyle::arabic);
    PdfOptions options;
    options.bookmarks = true;
    write({0, 2, 1}, options);
    const std::string outline = told("outlines");
    std::size_t from = 0;
    for (const char* entry :
         {R"("destpageposfrom1":1,"kids":[],"object":")", R"("title":"1")", R"("destpageposfrom1":2,)",
          R"("title":"Anhang(8")", R"("destpageposfrom1":3,)", R"("title":"Anhang(7")"}) {
        from = outline.find(entry, from);
        ASSERT_NE(from, std::string::npos) << entry << " in " << outline;
    }
    EXPECT_NE(unpackedPdf(path).find("/PageMode /UseOutlines"), std::string::npos);

    write({5}, options);
    EXPECT_EQ(countOf(told("outlines"), "destpageposfrom1"), 1u);
    write({5}, {});
    EXPECT_EQ(countOf(unpackedPdf(path), "Outlines"), 0u);
}

TEST_F(PdfNavigation, ALongOutlineIsOneChain) {
    PdfOptions options;
    options.bookmarks = true;
    write(std::vector<std::int32_t>(300, 0), options);
    EXPECT_EQ(countOf(told("outlines"), "\"destpageposfrom1\""), 300u);
    const std::string pdf = unpackedPdf(path);
    EXPECT_EQ(countOf(pdf, "/Prev "), 299u);
    EXPECT_EQ(countOf(pdf, "/Next "), 299u);
    EXPECT_NE(pdf.find("/Count 300\n  /First"), std::string::npos);
}

TEST_F(PdfNavigation, TheBleedGoesAroundThePage) {
    PageKit kit(200, 100);
    kit.rectangle({-20, -20, 10, 10}, {swatchBlack, 1}).repeats = true;
    kit.rectangle({190, 90, 220, 120}, {PageKit::bluish, 1});
    PdfOptions options;
    options.bleed = 8.5;
    PdfWriter writer;
    ASSERT_TRUE(writer.open(path, options));
    ASSERT_TRUE(writer.addPage(kit.list) && writer.addPage(kit.list)) << "the list itself stays as it was";
    ASSERT_TRUE(writer.finish()) << writer.error();
    EXPECT_EQ(complaintsAbout(path), "");
    const std::string boxes = runCommand("pdfinfo -box -f 1 -l 2 '" + path + "'").output;
    EXPECT_EQ(countOf(boxes, " 0.00     0.00   217.00   117.00"), 8u) << "all but the TrimBox: " << boxes;
    EXPECT_EQ(countOf(boxes, " 8.50     8.50   208.50   108.50"), 2u) << boxes;
    EXPECT_EQ(countOf(unpackedPdf(path), "/BleedBox"), 2u);
    EXPECT_EQ(countOf(unpackedPdf(path), "/Subtype /Form"), 1u);

    ASSERT_EQ(runCommand("pdftoppm -r 72 -f 2 -png -singlefile '" + path + "' '" + folder.path("sheet") + "'").status,
              0);
    const PngPicture sheet(folder.path("sheet.png"));
    ASSERT_EQ(sheet.width(), 217);
    ASSERT_EQ(sheet.height(), 117);
    EXPECT_NE(sheet.at(1, 1), 0xFFFFFFu) << "in the bleed";
    EXPECT_NE(sheet.at(16, 16), 0xFFFFFFu) << "on the page";
    EXPECT_EQ(sheet.at(21, 21), 0xFFFFFFu);
    EXPECT_EQ(sheet.at(215, 115), 0x0080FFu);
}

TEST_F(PdfNavigation, ABleedThatNoPaperHasIsRefused) {
    for (const double bleed : {-1.0, 721.0, std::numeric_limits<double>::quiet_NaN()}) {
        PdfOptions options;
        options.bleed = bleed;
        PdfWriter writer;
        EXPECT_FALSE(writer.open(path, options)) << bleed;
        EXPECT_NE(writer.error().find("the bleed must be 0 to 720 points"), std::string::npos) << writer.error();
    }
    EXPECT_EQ(folder.fileCount(), 0u);
}

}  // namespace
}  // namespace tarnova
