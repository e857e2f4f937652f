#include "host/files/text_members.h"

#include <gtest/gtest.h>

#include "tests/host/files/layout_kit.h"

namespace tarnova {
namespace {

std::u32string textOf(const DocumentModel& document) {
    const UID story = document.stories().at(0);
    return document.textRead(story, 0, document.totalLength(story));
}

TEST(TextMembers, PageCharactersGoThereAndBack) {
    struct testRow {
        const char* text;
        std::u32string holds;
        const char* written;
    };
    const testRow rows[] = {
        {R"([{"text": ["Page ", {"special": "pageNumber"}, " of ", {"special": "sectionPageCount"}]}])",
         U"Page \xFDD0 of \xFDD5\r",
         R"([{"text": ["Page ", {"special": "pageNumber"}, " of ", {"special": "sectionPageCount"}]}])"},
        {R"([{"text": [{"special": "sectionMarker"}]}, "next"])", U"\xFDD3\rnext\r",
         R"([{"text": [{"special": "sectionMarker"}]}, "next"])"},
        {R"([{"text": [{"special": "nextPageNumber", "size": 9}, {"special": "previousPageNumber", "size": 9}]}])",
         U"\xFDD1\xFDD2\r",
         R"([{"text": [{"special": "nextPageNumber", "size": 9}, {"special": "previousPageNumber", "size": 9}]}])"},
        {"\"\xEF\xB7\x94 pages\"", U"\xFDD4 pages\r", R"([{"text": [{"special": "pageCount"}, " pages"]}])"},
    };
    for (const testRow& row : rows) {
        const auto document = opened(frameWith(row.text));
        ASSERT_NE(document, nullptr) << row.text;
        EXPECT_EQ(textOf(*document), row.holds) << row.text;
        const std::string written = writeLayout(*document);
        EXPECT_NE(written.find(std::string("\"text\": ") + row.written), std::string::npos) << written;
        expectStable(*document);
    }
}

/// A link over text and a page character is written as several runs, and is one link again.
TEST(TextMembers, ALinkKeepsItsPageCharacters) {
    const auto document = opened(frameWith(
        R"([{"text": [{"text": "p. ", "tag": {"link": "L", "id": 7}}, {"special": "pageNumber", "tag": {"link": "L", "id": 7}}]}])"));
    ASSERT_NE(document, nullptr);
    EXPECT_EQ(document->attributeRunAt(document->stories().at(0), 0).length, 4);
    expectStable(*document);
}

TEST(TextMembers, RefusesWrongPageCharacters) {
    const std::pair<const char*, const char*> rows[] = {
        {R"([{"text": [{"special": "page"}]}])", "\"pageNumber\""},
        {R"([{"text": [{"special": 3}]}])", "must be a text"},
        {R"([{"text": [{"special": "pageNumber", "text": "a"}]}])", "either \"text\", \"special\" or \"item\""},
        {R"([{"text": [{"bold": true}]}])", "either \"text\", \"special\" or \"item\""},
    };
    for (const auto& [text, says] : rows) {
        layoutError error;
        EXPECT_EQ(readLayout(frameWith(text), error), nullptr) << text;
        EXPECT_NE(error.message.find(says), std::string::npos) << text << ": " << error.message;
    }
}

}  // namespace
}  // namespace tarnova
