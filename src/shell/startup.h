// How the engine's session comes to life and goes away.

#pragma once

#include <string_view>

#include "engine/toolkit/types.h"

namespace tarnova {

class ZavoStartupShutdown {
 public:
    /// Settles the data folder (see settleDataFolder), warns when it can't be written, loads preferences and
    /// definitions, and puts the fields to their start values. A step is left out when an earlier one failed; its error
    /// is the result.
    [[nodiscard]] errorWord Startup(std::string_view applicationFolder, std::string_view roamingFolder);

    /// Saves the definitions when they have changes, closes the data and frees what builds left. Always does its work;
    /// the error is that of saving.
    errorWord Shutdown();
};

}  // namespace tarnova
