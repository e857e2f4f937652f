// The words that travel from call to call: the sticky error, its parameter, and how alerts are shown.
#pragma once

#include <cstdint>
#include <string>

#include "engine/toolkit/pstring.h"
#include "engine/toolkit/types.h"

namespace tarnova {

struct toolkitStateRec {
    errorWord engineError = 0;              // looked at by surfaceError only
    Str255 pendingErrorParam = {};          // "^1" of the next reported engineError, such as the name of a missing file
    std::uint8_t unattended = 0;            // nobody watches: error alerts go to the run log
    std::uint8_t showAlertsUnattended = 0;  // show them as well
    std::int16_t lastMemoryError = 0;       // 0, -108 or -109
    std::string runLogPath;                 // UTF-8; empty means no log
};

/// The state in use: the installed one, else a built-in one.
toolkitStateRec& toolkitState();

/// Puts `state` in use; null goes back to the built-in one. `state` stays the caller's and must outlive its use.
void installToolkitState(toolkitStateRec* state);

}  // namespace tarnova
