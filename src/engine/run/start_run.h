// The start of a merge run: everything that is looked at, asked and opened before the idle task takes over.

#pragma once

#include <cstdint>

#include "document/uid.h"
#include "engine/toolkit/types.h"

namespace tarnova {

/// Starts a run of the preferences' type (`mergeRunType`) on the front document, or on the document given. The idle
/// task carries it out, see idle_step.h. A start that a question or a script stops gives 0 as well: `runStage` tells.
/// With `showDialog` the questions of the merge dialog are asked; it takes the values as they stand. Errors:
/// errNoDocument, errNoLinks and its neighbours, errRangeBehindEnd, errNoDataFileSet, what opening the data gives.
[[nodiscard]] errorWord startMergeRun(errorWord priorError, bool showDialog);
[[nodiscard]] errorWord startMergeRunOn(UIDRef document, errorWord priorError, bool showDialog);

/// The same start in steps, for commands: clears what a run before left (counters, reports, the record list) and counts
/// the links of the document;
void beginJob(UIDRef document);
/// and, with the range fitted to the data, sends the run on its way, unattended. A `driverId` is that of a run to a
/// driver, else 0. Error: that of the label sort, and then no run is on its way.
[[nodiscard]] errorWord startScriptedRun(std::uint32_t runType, std::uint32_t driverId);

}  // namespace tarnova
