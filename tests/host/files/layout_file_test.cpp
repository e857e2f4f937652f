#include "host/files/layout_file.h"

#include <gtest/gtest.h>

namespace tarnova {
namespace {

TEST(LayoutFile, ExamplesAreStable) {
    layoutError error;
    const std::string path = std::string(TARNOVA_SOURCE_FOLDER) + "/examples/hello/hello.tvd";
    const auto document = openLayout(path, error);
    ASSERT_NE(document, nullptr) << error.line << ": " << error.message;
    const std::string first = writeLayout(*document);
    const auto again = readLayout(first, error);
    ASSERT_NE(again, nullptr) << error.line << ": " << error.message << "\n" << first;
    EXPECT_EQ(writeLayout(*again), first);
}

}  // namespace
}  // namespace tarnova
