#include "host/model/link_target.h"

#include <gtest/gtest.h>

namespace tarnova {
namespace {

TEST(LinkTarget, Read) {
    struct Row {
        const char* text;
        const char* uri;
        std::int32_t pageNumber;
    };
    const Row rows[] = {
        {"https://tarnova.example/a?b=c&d=%20#e", "https://tarnova.example/a?b=c&d=%20#e", 0},
        {"HTTP://[::1]/", "HTTP://[::1]/", 0},
        {"mailto:a(b)'@tarnova.example", "mailto:a(b)'@tarnova.example", 0},
        {"tel:+49-30-901820", "tel:+49-30-901820", 0},
        {"https://tarnova.example/a b\"<>\\^`{|}", "https://tarnova.example/a%20b%22%3C%3E%5C%5E%60%7B%7C%7D", 0},
        {"https://m\xC3\xBCnchen.example/", "https://m%C3%BCnchen.example/", 0},
        {"#page=1", "", 1},
        {"#page=2147483647", "", 2147483647},
    };
    for (const Row& row : rows) {
        std::string problem;
        const auto target = readLinkTarget(row.text, problem);
        ASSERT_TRUE(target) << row.text << ": " << problem;
        EXPECT_EQ(target->uri, row.uri);
        EXPECT_EQ(target->pageNumber, row.pageNumber) << row.text;
    }
}

TEST(LinkTarget, Refused) {
    const std::string longest = "https:" + std::string(linkBytesLimit - 6, 'x');
    const std::pair<std::string, const char*> rows[] = {
        {"", "must begin with"},
        {"www.tarnova.example", "must begin with"},
        {"javascript:alert(1)", "must begin with"},
        {"file:///etc/passwd", "must begin with"},
        {" https://tarnova.example", "must begin with"},
        {"https:", "must begin with"},
        {"https://a\nb", "control characters"},
        {std::string("https://a\0b", 11), "control characters"},
        {"https://a\x7F", "control characters"},
        {"#page=", "\"#page=3\""},
        {"#page=0", "\"#page=3\""},
        {"#page=-1", "\"#page=3\""},
        {"#page=3x", "\"#page=3\""},
        {"#page=2147483648", "\"#page=3\""},
        {longest + 'x', "at most 2048 bytes"},
    };
    for (const auto& [text, reason] : rows) {
        std::string problem;
        EXPECT_FALSE(readLinkTarget(text, problem)) << text;
        EXPECT_NE(problem.find(reason), std::string::npos) << text << ": " << problem;
    }
    std::string problem;
    EXPECT_TRUE(readLinkTarget(longest, problem));
}

}  // namespace
}  // namespace tarnova
