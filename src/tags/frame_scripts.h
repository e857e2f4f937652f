// What the script module holds for a frame: a name, and bytes of its own.

#pragma once

#include <string>

#include "document/uid.h"

namespace tarnova {

struct frameScriptRec {
    std::string name;  // at most 255 bytes
    std::string data;
};

/// False when the module has no entry for the frame, or isn't there.
[[nodiscard]] bool readFrameScript(UIDRef frame, frameScriptRec& entry);
/// False when the module refused it.
[[nodiscard]] bool writeFrameScript(UIDRef frame, const frameScriptRec& entry);

}  // namespace tarnova
