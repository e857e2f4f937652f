// The stages of a run behind its start. The idle task takes one turn after another until `runStage` is idle again.

#pragma once

#include "engine/toolkit/types.h"

namespace tarnova {

/// One turn: set-up, then the run, then its end, each only while `runStage` is its own; so a run that takes one pass is
/// done in one turn. With an error the run goes to its end, which always does all its work.
[[nodiscard]] errorWord runStep(errorWord priorError);

/// Values of runControlRec::armedState.
inline constexpr std::uint32_t armedNot = 0;
inline constexpr std::uint32_t armedReady = 1;
inline constexpr std::uint32_t armedRunning = 2;

}  // namespace tarnova
