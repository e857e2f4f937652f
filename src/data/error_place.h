// Keeps where an error happened, for the alert that tells of it.
#pragma once

#include <string_view>

#include "engine/toolkit/toolkit_state.h"

namespace tarnova {

/// Sets pendingErrorParam to `place` (a file, or the number of a record) when `error` isn't 0; gives `error`.
inline errorWord errorAt(errorWord error, std::string_view place) {
    if (error != 0) pstrSet(toolkitState().pendingErrorParam, place);
    return error;
}

/// `error` in place of whatever a step of the file layer gave, with the file that it happened to.
inline errorWord fileErrorAs(errorWord stepError, errorWord error, std::string_view path) {
    return stepError == 0 ? errorWord{0} : errorAt(error, path);
}

}  // namespace tarnova
