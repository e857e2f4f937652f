#include "engine/session/folder_test.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <system_error>
#include <vector>

#include "engine/toolkit/files.h"
#include "engine/toolkit/messages.h"

namespace tarnova {

namespace {

namespace fs = std::filesystem;

constexpr const char* testFileName = "QelTestFile.txt";
constexpr std::string_view testText =
    "This is a test file, used to verify create and write capability for this folder.";
static_assert(testText.size() == 80);

/// The steps of a test. `reason` gets the system's error of the one that failed.
errorWord writeTestFile(const std::string& path, int& reason) {
    fileHandle file = noFile;
    std::uint16_t systemError = 0;
    errorWord err = fileDelete(path.c_str(), nullptr, 0);
    err = fileCreate(path.c_str(), err);
    reason = err == 0 ? 0 : errno;
    if (err != 0) return err;
    err = fileOpen(path.c_str(), fileWriteOnly, &file, &systemError, 0);
    std::size_t count = testText.size();
    err = fileWrite(file, testText.data(), &count, &systemError, err);
    fileClose(file);
    if (err == 0) err = fileDelete(path.c_str(), &systemError, 0);
    reason = err == 0 ? 0 : systemError;
    return err;
}

void warn(const std::string& folder, errorWord error, int reason) {
    PMString text = PMString::ofKey("kZavoUnableToWriteTestFileToFolderKey");
    text.append(folder).append("\"");
    if (reason != 0) text.append(" [").append(std::generic_category().message(reason)).append("]");
    text.append(". ").append(PMString::ofKey("kQelSupportContactMessageKey"));
    text.append("[").appendNumber(codeOfError(error)).append("]");
    reportErrorString(text);
}

/// Another program that tests the same folder may take the file away at any step; that passes.
errorWord testFolder(const std::string& folder, int& reason) {
    constexpr int attempts = 20;
    const std::string path = (fs::path(folder) / testFileName).string();
    errorWord err = 0;
    for (int i = 0; i < attempts; ++i) {
        err = writeTestFile(path, reason);
        if (err == 0 || (reason != EEXIST && reason != ENOENT)) break;
    }
    return err;
}

std::vector<std::string> foldersIn(const std::string& folder) {
    std::vector<std::string> folders;
    std::error_code failure;
    for (fs::directory_iterator it(folder, failure), end; !failure && it != end; it.increment(failure)) {
        std::error_code ignored;
        if (it->is_directory(ignored)) folders.push_back(it->path().string());
    }
    std::sort(folders.begin(), folders.end());
    return folders;
}

}  // namespace

std::uint16_t testFolderWritable(const std::string& folder, bool recursive) {
    std::error_code ignored;
    if (!fs::is_directory(folder, ignored)) return 0;
    int reason = 0;
    const errorWord err = testFolder(folder, reason);
    if (err != 0) {
        warn(folder, err, reason);
        return 0;
    }
    std::uint16_t result = 1;
    if (recursive)
        for (const std::string& below : foldersIn(folder))
            result = testFolderWritable(below, true);
    return result;
}

}  // namespace tarnova
