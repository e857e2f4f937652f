// What the host calls whenever it has nothing to do: errors that nobody showed are shown, and a run that was started by
// a command takes its next stage.

#pragma once

#include "document/uid.h"
#include "engine/toolkit/types.h"

namespace tarnova {

/// Readies a run of the current definition's data into the document itself, every record in its copy of the pages: the
/// next idle steps carry it out, unattended. The range must be settled, see validateRun.
void startBuildRun();

/// One turn: set-up, the run, or its end, by `runStage`. A failure ends the run and is shown. A call from within itself
/// does nothing.
void idleStep();

}  // namespace tarnova
