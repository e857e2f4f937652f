// What the host calls whenever it has nothing to do: errors that nobody showed are shown, and a run that was started
// takes its next turn.

#pragma once

#include <cstdint>

namespace tarnova {

inline constexpr std::int32_t idleTicks = 500;  // until the host calls again

/// One turn. A call from within itself does nothing. Gives `idleTicks`.
std::int32_t idleStep();

}  // namespace tarnova
