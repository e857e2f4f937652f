#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>

#include "engine/toolkit/files.h"
#include "host/model/document_builder.h"

namespace tarnova {
namespace {

using namespace std::string_view_literals;

constexpr std::string_view plainText = "Text Import Filter";

class ImportText : public ::testing::Test {
 protected:
    void SetUp() override {
        DocumentBuilder builder;
        const UID frame = builder.addTextFrame(builder.addSinglePage(100, 100), {0, 0, 50, 50}, U"before, after");
        document = builder.finish();
        story = document->textOfFrame(frame);
        path = std::filesystem::temp_directory_path() / ("import_text_" + std::to_string(::getpid()) + ".txt");
    }
    void TearDown() override { std::filesystem::remove(path); }
    [[nodiscard]] std::u32string text() const { return document->textRead(story, 0, document->totalLength(story) - 1); }

    std::unique_ptr<DocumentModel> document;
    UID story = kInvalidUID;
    std::string path;
    std::int32_t length = -1;
};

TEST_F(ImportText, PlainTextTakesThePlaceOfARange) {
    ASSERT_EQ(document->importText(story, 6, 2, {"\xEF\xBB\xBF\xC3\xA9\r\nb", {}}, plainText, length), 0);
    EXPECT_EQ(length, 3) << "without the mark, and with one return";
    EXPECT_EQ(text(), U"before\u00E9\rbafter");
    ASSERT_EQ(fileWriteWhole(path.c_str(), "file", 0), 0);
    ASSERT_EQ(document->importText(story, 0, 6, {{}, path}, plainText, length), 0);
    EXPECT_EQ(length, 4);
    EXPECT_EQ(text(), U"file\u00E9\rbafter");
}

TEST_F(ImportText, WhatCantBeImportedChangesNothing) {
    ASSERT_EQ(fileWriteWhole(path.c_str(), "\xFF", 0), 0);
    EXPECT_EQ(document->importText(story, 0, 1, {"\xFF"sv, {}}, plainText, length), errImportFilter);
    EXPECT_EQ(document->importText(story, 0, 1, {{}, path}, plainText, length), errImportFilter);
    EXPECT_EQ(document->importText(story, 0, 1, {{}, path + "x"}, plainText, length), errImportFilter);
    for (const std::string_view filter : {textImportFilters[0], textImportFilters[1], "Other"sv})
        EXPECT_EQ(document->importText(story, 0, 1, {"x", {}}, filter, length), errImportFilter) << filter;
    EXPECT_NE(document->importText(story, 0, 99, {"x", {}}, plainText, length), 0);
    EXPECT_EQ(length, 0);
    EXPECT_EQ(text(), U"before, after");
    EXPECT_FALSE(document->undo());
}

TEST_F(ImportText, AFileIsAskedFor) {
    EXPECT_EQ(document->importFilterFor(path), "");
    ASSERT_EQ(fileWriteWhole(path.c_str(), "text", 0), 0);
    EXPECT_EQ(document->importFilterFor(path), plainText);
    ASSERT_EQ(fileWriteWhole(path.c_str(), "\x89PNG\xFF", 0), 0);
    EXPECT_EQ(document->importFilterFor(path), "");
}

}  // namespace
}  // namespace tarnova
