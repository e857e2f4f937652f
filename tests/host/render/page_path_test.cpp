#include "host/render/page_path.h"

#include <gtest/gtest.h>

namespace tarnova {
namespace {

TEST(PageFilePath, NumbersStandBeforeTheExtension) {
    struct TestRow {
        const char* path;
        std::int32_t number, count;
        bool single;
        const char* expected;
    };
    const TestRow rows[] = {
        {"out.png", 1, 1, true, "out.png"},
        {"out.svg", 7, 12, false, "out-007.svg"},
        {"a.b/out.png", 7, 12345, false, "a.b/out-00007.png"},
        {"a.b/out", 7, 12, false, "a.b/out-007"},
    };
    for (const auto& [path, number, count, single, expected] : rows) {
        EXPECT_EQ(pageFilePath(path, number, count, single), expected);
    }
}

}  // namespace
}  // namespace tarnova
