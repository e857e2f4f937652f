// The run log: one line a call, in a file that is opened and closed for each, so that it is complete after a crash.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace tarnova {

/// Appends `length` bytes of `text` to the file of runLogPath, and CR LF unless the last byte is CR or LF. A file that
/// isn't there is made. 0, also when no path is set; -1 when the file could not be opened or written.
std::int16_t runLogAppend(const char* text, std::size_t length);
inline std::int16_t runLogAppend(std::string_view text) {
    return runLogAppend(text.data(), text.size());
}

}  // namespace tarnova
