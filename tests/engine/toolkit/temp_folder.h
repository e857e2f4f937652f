// A folder of its own for a test, gone afterwards.
#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "engine/toolkit/files.h"

namespace tarnova {

class TempFolder {
 public:
    TempFolder() {
        path_ = std::filesystem::temp_directory_path() / "tarnova-test-XXXXXX";
        std::string name = path_.string();
        if (::mkdtemp(name.data()) == nullptr) ADD_FAILURE() << "no temporary folder can be made: " << name;
        path_ = name;
    }
    ~TempFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    std::string path(std::string_view name) const { return (path_ / name).string(); }
    /// Makes a file and gives its path.
    std::string file(std::string_view name, std::string_view bytes) const {
        EXPECT_EQ(fileWriteWhole(path(name).c_str(), bytes, 0), 0);
        return path(name);
    }
    std::string bytesOf(std::string_view name) const {
        std::string bytes = "(no file)";
        if (fileReadWhole(path(name).c_str(), bytes, 1 << 20, 0) != 0) return "(no file)";
        return bytes;
    }

 private:
    std::filesystem::path path_;
};

}  // namespace tarnova
