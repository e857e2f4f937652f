#include "engine/toolkit/strings.h"

#include <gtest/gtest.h>

#include "tests/engine/toolkit/temp_folder.h"

namespace tarnova {
namespace {

TEST(Strings, FileForm) {
    std::string error;
    const auto lines = parseStringFile("# note\nkA=one\\ttwo\\n\\\\\r\n\nkB\tx=y\nkC =z \n", error);
    ASSERT_EQ(error, "");
    ASSERT_EQ(lines.size(), 3u);
    EXPECT_EQ(lines[0].text, "one\ttwo\n\\");
    EXPECT_EQ(lines[1].text, "x=y");
    EXPECT_EQ(lines[2].key, "kC");
    EXPECT_EQ(lines[2].text, "z ");

    struct testRow {
        const char *bytes, *line;
    };
    for (const auto& [bytes, line] : {testRow{"kA=x\nno text", "2: "},
                                      {"=x", "1: "},
                                      {"kA=\\q", "1: "},
                                      {"kA=x\\", "1: "},
                                      {"kA=x\n\nkA=y", "3: "},
                                      {"kA=\xFF", "1: "}}) {
        EXPECT_TRUE(parseStringFile(bytes, error).empty()) << bytes;
        EXPECT_TRUE(error.starts_with(line)) << bytes << ": " << error;
    }
}

TEST(Strings, FolderAndLanguage) {
    const TempFolder folder;
    std::filesystem::create_directory(folder.path("strings"));
    folder.file("strings/en-US.txt", "kZavoMonthMay=Mai\n");
    folder.file("strings/xx.txt", "kBroken\n");
    setResourceFolder(folder.path(""));
    EXPECT_EQ(stringOfKey("kZavoMonthMay"), "Mai");
    EXPECT_EQ(stringOfKey("0x1B9E00kZavoMonthMay"), "Mai");
    EXPECT_EQ(stringOfKey("0x12"), "0x12");
    EXPECT_EQ(stringOfKey("kUnknown"), "kUnknown");
    EXPECT_EQ(stringLoadError(), "");
    setStringLanguage("xx");
    EXPECT_EQ(stringOfKey("kZavoMonthMay"), "kZavoMonthMay");
    EXPECT_NE(stringLoadError().find("xx.txt:1: "), std::string::npos) << stringLoadError();
    setStringLanguage("none");
    EXPECT_NE(stringLoadError().find("none.txt"), std::string::npos);
    setStringLanguage("en-US");
    setResourceFolder("");
    EXPECT_EQ(stringOfKey("kZavoMonthMay"), "May");
}

}  // namespace
}  // namespace tarnova
