#include "host/render/output_file.h"

#include <gtest/gtest.h>

#include "tests/host/render/page_kit.h"

namespace tarnova {
namespace {

using namespace tarnova::testing;

TEST(OutputFile, PutsTheWholeFileInPlaceOfTheOld) {
    const ScratchFolder folder;
    const std::string path = folder.path("whole.bin");
    std::ofstream(path) << "old";
    std::string expected;
    OutputFile file;
    ASSERT_TRUE(file.open(path));
    for (int i = 0; expected.size() < (5u << 19); ++i) {  // over two buffers
        const std::string piece(static_cast<std::size_t>(i % 977), static_cast<char>('a' + i % 26));
        file.write(piece);
        expected += piece;
        ASSERT_EQ(file.offset(), expected.size());
    }
    EXPECT_EQ(fileBytes(path), "old") << "nothing appears before the end";
    ASSERT_TRUE(file.finish()) << file.error();
    EXPECT_TRUE(fileBytes(path) == expected);
    EXPECT_EQ(folder.fileCount(), 1u);
}

TEST(OutputFile, LeavesNothingBehindUnlessFinished) {
    const ScratchFolder folder;
    const std::string path = folder.path("kept.bin");
    std::ofstream(path) << "old";
    {
        OutputFile file;
        ASSERT_TRUE(file.open(path));
        file.write("new");
    }
    {
        OutputFile file;
        ASSERT_TRUE(file.open(path));
        file.write("new");
        file.fail("the test says so");
        file.write("more");
        EXPECT_FALSE(file.finish());
        EXPECT_EQ(file.error(), "\"" + path + "\" can't be written: the test says so");
    }
    EXPECT_EQ(fileBytes(path), "old");
    EXPECT_EQ(folder.fileCount(), 1u);
}

TEST(OutputFile, RefusesPlacesWhereNoFileCanBe) {
    const ScratchFolder folder;
    std::ofstream(folder.path("plain")) << "x";
    std::filesystem::create_directory(folder.path("sub"));
    const std::pair<const char*, std::string> rows[] = {
        {"no such folder", folder.path("none/out.pdf")},
        {"below a file", folder.path("plain/out.pdf")},
        {"a folder", folder.path("sub")},
        {"a device", "/dev/null"},
    };
    for (const auto& [name, path] : rows) {
        OutputFile file;
        EXPECT_FALSE(file.open(path)) << name;
        EXPECT_NE(file.error().find(path), std::string::npos) << name;
    }
    EXPECT_EQ(folder.fileCount(), 2u);
}

TEST(OutputFile, HashTellsContentsApart) {
    const ScratchFolder folder;
    const auto hashOf = [&](std::string_view bytes) {
        OutputFile file;
        EXPECT_TRUE(file.open(folder.path("x")));
        file.write(bytes);
        return file.contentHash();
    };
    EXPECT_EQ(hashOf("abcdefghij"), hashOf("abcdefghij"));
    EXPECT_NE(hashOf("abcdefghij"), hashOf("abcdefghik"));
    EXPECT_NE(hashOf(std::string_view("a\0", 2)), hashOf("a"));
}

}  // namespace
}  // namespace tarnova
