#include "host/render/page_range.h"

#include <gtest/gtest.h>

namespace tarnova {
namespace {

TEST(PageRange, ReadsWhatPeopleWrite) {
    const std::pair<const char*, std::vector<std::int32_t>> rows[] = {
        {"1", {0}},          {"1-3,5", {0, 1, 2, 4}}, {" 2 - 3 , 10 ", {1, 2, 9}}, {"9-", {8, 9}}, {"5,1", {0, 4}},
        {"2,2-3,3", {1, 2}}, {"10-10", {9}},
    };
    for (const auto& [text, expected] : rows) {
        std::vector<std::int32_t> pages;
        std::string error;
        EXPECT_TRUE(parsePageRange(text, 10, pages, error)) << text << ": " << error;
        EXPECT_EQ(pages, expected) << text;
    }
}

TEST(PageRange, SaysWhichPartIsWrong) {
    const std::pair<const char*, const char*> rows[] = {
        {"", "\"\" is no page number; write pages like 1-3,5"},
        {"1,,2", "\"\" is no page number; write pages like 1-3,5"},
        {"1,x", "\"x\" is no page number; write pages like 1-3,5"},
        {"-3", "\"\" is no page number; write pages like 1-3,5"},
        {"1-2-3", "\"2-3\" is no page number; write pages like 1-3,5"},
        {"1--2", "\"-2\" is no page number; write pages like 1-3,5"},
        {"1.5", "\"1.5\" is no page number; write pages like 1-3,5"},
        {"0", "there is no page 0; the document has pages 1 to 10"},
        {"2-11", "there is no page 11; the document has pages 1 to 10"},
        {"99999999999", "there is no page 99999999999; the document has pages 1 to 10"},
        {"5-2", "\"5-2\" runs backward; the smaller number comes first"},
    };
    for (const auto& [text, expected] : rows) {
        std::vector<std::int32_t> pages = {7};
        std::string error;
        EXPECT_FALSE(parsePageRange(text, 10, pages, error)) << text;
        EXPECT_EQ(error, expected) << text;
        EXPECT_TRUE(pages.empty()) << text;
    }
}

}  // namespace
}  // namespace tarnova
