#include <cstring>
#include <filesystem>
#include <string>
#include <string_view>

#include "definitions/ddf.h"

namespace tarnova {

namespace {

constexpr std::string_view temporaryName = "rds.tmp";

std::string_view fileNameOf(std::string_view path) {
    const std::size_t slash = path.rfind('/');
    return slash == std::string_view::npos ? path : path.substr(slash + 1);
}

errorWord makeEmptyFile(const std::string& path, errorWord failure) {
    errorWord err = fileDelete(path.c_str(), nullptr, 0);
    err = fileCreate(path.c_str(), err);
    return err == 0 ? 0 : failure;
}

errorWord writeTemporary(const std::string& path, const recordDefSetRec& set, errorWord priorError) {
    if (priorError != 0) return priorError;
    fileHandle file = noFile;
    if (fileOpen(path.c_str(), fileWriteOnly, &file, nullptr, 0) != 0) return errDdfOpen;
    const errorWord err = ddfWriteSet(set, {file, nullptr}, 0);
    fileClose(file);
    return err;
}

/// Lets the temporary file take the place of the target, which need not exist yet: in one step, so that no moment finds
/// the name without a whole file.
errorWord takePlace(const std::string& temporary, const char* path, errorWord priorError) {
    if (priorError != 0) return priorError;
    std::error_code failure;
    std::filesystem::rename(temporary, path, failure);
    return failure ? errDdfExchange : errorWord{0};
}

errorWord openedStream(const char* path, recordDefSetRec& set, ddfReadReport* report) {
    fileHandle file = noFile;
    if (fileOpen(path, fileReadOnly, &file, nullptr, 0) != 0) {
        if (report != nullptr) report->reason = "the file can't be opened";
        return errDdfOpen;
    }
    ddfLexerRec lexer{};
    const errorWord err = ddfReadStream({file, nullptr}, set, lexer, report, 0);
    fileClose(file);
    return err;
}

}  // namespace

errorWord ddfReadFile(const char* path, recordDefSetRec*& list, recordDefSetRec*& set, ddfReadReport* report,
                      errorWord priorError) {
    if (priorError != 0) return priorError;
    set = nullptr;
    Str255 name{};
    pstrSet(name, fileNameOf(path));
    if (recordDefSetNew(name, path, list, set, 0) != 0) return errDdfNoMemorySet;
    const errorWord err = openedStream(path, *set, report);
    if (err == 0) return 0;
    recordDefSetDiscard(list, set);
    set = nullptr;
    return err;
}

errorWord ddfWriteFile(const char* path, recordDefSetRec& set, errorWord priorError) {
    if (priorError != 0) return priorError;
    const std::string_view target = path;
    std::string temporary(target.substr(0, target.size() - fileNameOf(target).size()));
    temporary += temporaryName;
    errorWord err = makeEmptyFile(temporary, errDdfCreateTemporary);
    if (err != 0) return err;
    err = writeTemporary(temporary, set, err);
    err = takePlace(temporary, path, err);
    static_cast<void>(fileDelete(temporary.c_str(), nullptr, 0));
    if (err == 0) set.dirty = 0;
    return err;
}

}  // namespace tarnova
