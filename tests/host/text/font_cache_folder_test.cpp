#include "host/text/font_cache_folder.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "host/text/font_catalog.h"

namespace tarnova {
namespace {

TEST(FontCacheFolder, IsMadeOnlyWhereNoUsualOneCanBeWritten) {
    const std::string temporary = std::filesystem::temp_directory_path().string();
    const std::string made = temporary + "/tarnova-font-cache-test-" + std::to_string(::getpid());
    struct Row {
        const char* name;
        std::vector<std::string> usual;
        bool isMade;
    };
    const Row rows[] = {
        {"one can be written", {"/proc/version", temporary}, false},
        {"one can be made", {made + "/fontconfig"}, false},
        {"none", {"/proc/no such folder", "/proc/version"}, true},
        {"none named", {}, true},
    };
    for (const Row& row : rows) {
        std::string path;
        {
            const FontCacheFolder folder(row.usual);
            path = folder.path();
            EXPECT_EQ(!path.empty(), row.isMade) << row.name;
            if (!path.empty()) std::ofstream(path + "/cache") << "kept for a moment";
        }
        EXPECT_TRUE(path.empty() || !std::filesystem::exists(path)) << row.name;
    }
    std::filesystem::remove_all(made);
}

TEST(FontCacheFolder, ACatalogWithoutUsualOnesIsSilentAndWhole) {
    const std::vector<const char*> fonts = {"/usr/share/fonts/truetype/liberation2"};
    testing::internal::CaptureStderr();
    const FontCatalog catalog(fonts, {"/proc/no such folder"});
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_NE(catalog.match("Liberation Sans", parseStyle("Bold")), nullptr);
}

}  // namespace
}  // namespace tarnova
