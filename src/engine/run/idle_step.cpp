#include "engine/run/idle_step.h"

#include "data/data_source.h"
#include "engine/run/price_run.h"
#include "engine/run/run_stages.h"
#include "engine/session/session.h"
#include "engine/toolkit/messages.h"

namespace tarnova {
namespace {

/// Says whether a turn is on the call stack already: a dialog of a stage has idle calls of its own.
class TurnGuard {
 public:
    TurnGuard() : entered(!isInside) { isInside = true; }
    ~TurnGuard() {
        if (entered) isInside = false;
    }
    TurnGuard(const TurnGuard&) = delete;
    TurnGuard& operator=(const TurnGuard&) = delete;
    [[nodiscard]] bool mayGoOn() const { return entered; }

 private:
    static inline bool isInside = false;
    bool entered;
};

}  // namespace

std::int32_t idleStep() {
    const TurnGuard guard;
    if (!guard.mayGoOn()) return idleTicks;
    auto& run = session();
    if (!runIsActive()) run.engineError = runIndexDeleteQueue(run.indexDeleteQueue, run.engineError);
    surfaceError();
    run.engineError = priceStep(0);
    run.engineError = runStep(run.engineError);
    return idleTicks;
}

}  // namespace tarnova
