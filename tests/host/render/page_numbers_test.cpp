// Page characters on pages that share what repeats: each page shows its own number.

#include <gtest/gtest.h>

#include <algorithm>

#include "host/render/pdf_writer.h"
#include "host/text/composer.h"
#include "tests/host/files/layout_kit.h"
#include "tests/host/render/page_kit.h"

namespace tarnova {
namespace {

using namespace tarnova::testing;

constexpr const char* letter = R"({"tarnovaLayout": 1, "pageSize": [200, 100],
"masters": [{"name": "M", "pages": [{"items": [
  {"bounds": [10, 80, 180, 15], "text": [{"text": ["Page ", {"special": "pageNumber"}, " of ", {"special": "pageCount"}]}]}]}]}],
"pages": [{"master": "M", "items": [
  {"bounds": [10, 10, 180, 15], "text": "Dear reader"},
  {"group": [{"bounds": [10, 30, 180, 15], "text": [{"text": ["copy ", {"special": "pageNumber"}]}]}]}]}]})";

class NumberedPages : public ::testing::Test {
 protected:
    void SetUp() override {
        document = opened(letter);
        document->setComposer(makeComposer());
        document->composeDocument();
        document->markTemplate();
        for (int i = 1; i < 12; ++i)
            ASSERT_EQ(document->duplicateSpread(document->spreadAt(0)), 0);
    }
    void write() {
        PdfWriter writer;
        ASSERT_TRUE(writer.open(path, {}));
        for (std::int32_t i = 0; i < document->pageCount(); ++i)
            ASSERT_TRUE(writer.addPage(*document, document->pageAt(i))) << writer.error();
        ASSERT_TRUE(writer.finish()) << writer.error();
        ASSERT_EQ(complaintsAbout(path), "");
    }
    [[nodiscard]] std::string textOfPage(int number) const {
        const std::string which = std::to_string(number);
        std::string text = runCommand("pdftotext -f " + which + " -l " + which + " '" + path + "' -").output;
        std::replace(text.begin(), text.end(), '\n', ' ');
        return text;
    }

    ScratchFolder folder;
    std::string path = folder.path("pages.pdf");
    std::unique_ptr<DocumentModel> document;
};

TEST_F(NumberedPages, ShowTheirNumbersAndShareTheRest) {
    write();
    for (int i = 1; i <= 12; ++i) {
        const std::string text = textOfPage(i), number = std::to_string(i);
        EXPECT_NE(text.find("Dear reader"), std::string::npos) << text;
        EXPECT_NE(text.find("copy " + number + " "), std::string::npos) << text;
        EXPECT_NE(text.find("Page " + number + " of 12"), std::string::npos) << text;
    }
    EXPECT_EQ(countOf(unpackedPdf(path), "/Subtype /Form"), 1u) << "the text without a number";
}

TEST_F(NumberedPages, FollowSectionsAndPlacesInAnOutput) {
    document->setPlaceInOutput(64, 10);
    write();
    EXPECT_NE(textOfPage(12).find("Page 76 of 86"), std::string::npos) << textOfPage(12);
    ASSERT_EQ(document->createSection({document->pageAt(10), "B-", "", 1, 0, false, true}), 0);
    write();
    EXPECT_NE(textOfPage(10).find("Page 74 of 86"), std::string::npos) << textOfPage(10);
    EXPECT_NE(textOfPage(12).find("Page B-2 of 86"), std::string::npos) << textOfPage(12);
}

}  // namespace
}  // namespace tarnova
