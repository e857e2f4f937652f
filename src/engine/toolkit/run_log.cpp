#include "engine/toolkit/run_log.h"

#include "engine/toolkit/files.h"
#include "engine/toolkit/toolkit_state.h"

namespace tarnova {

std::int16_t runLogAppend(const char* text, std::size_t length) {
    const std::string& path = toolkitState().runLogPath;
    if (path.empty()) return 0;
    if (fileIsPlain(path.c_str()) == 0 && fileCreate(path.c_str(), 0) != 0) return -1;

    fileHandle file = noFile;
    errorWord err = fileOpen(path.c_str(), fileWriteOnly, &file, nullptr, 0);
    err = fileSeek(file, fileFromEnd, 0, nullptr, err);
    std::size_t count = length;
    err = fileWrite(file, text, &count, nullptr, err);
    const bool hasLineEnd = length > 0 && (text[length - 1] == '\r' || text[length - 1] == '\n');
    if (!hasLineEnd) {
        count = 2;
        err = fileWrite(file, "\r\n", &count, nullptr, err);
    }
    fileClose(file);
    return err == 0 ? 0 : -1;
}

}  // namespace tarnova
