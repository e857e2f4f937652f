// The table of output drivers in the preferences.

#pragma once

#include <cstdint>

#include "engine/module/command_block.h"
#include "engine/session/preferences.h"

namespace tarnova {

// Values of appPrefsRec::fileAffixPosition.
inline constexpr std::uint16_t fileAffixInFront = 1;
inline constexpr std::uint16_t fileAffixBehind = 2;

/// Enters a driver in the first free row of the table; the PostScript driver takes the first row whatever it holds. Old
/// ids of two kinds are entered under their present ones. A full table drops the registration. Nothing is saved.
void registerOutputDriver(const driverRegistrationRec& registration);

/// The row of a driver, or null. The first free row ends the table.
[[nodiscard]] const outputDriverRec* findOutputDriver(std::uint32_t driverId);

}  // namespace tarnova
