// Whether the folders of the session can be written.

#pragma once

#include <cstdint>
#include <string>

namespace tarnova {

/// Makes a test file in the folder, writes to it and deletes it. 1 when that went well; 0 for what is no folder, and,
/// after a warning with the folder and the system's reason, when a step failed. With `recursive` each folder below a
/// good one is tested in turn, and the result is that of the last.
std::uint16_t testFolderWritable(const std::string& folder, bool recursive);

}  // namespace tarnova
