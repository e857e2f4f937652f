// The run's side of an output driver: starting it, and a turn of it at each idle step.

#pragma once

#include "document/uid.h"

namespace tarnova {

/// Starts the driver of the run (`selectedDriver`) on the document. False when it isn't there or doesn't want the run.
[[nodiscard]] bool startDriver(UIDRef document);

/// Gives the driver a turn; false when it is done or gone. What it finds in `jobCancelled` says whether the run was
/// cancelled.
[[nodiscard]] bool tickDriver();

}  // namespace tarnova
