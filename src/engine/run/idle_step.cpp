#include "engine/run/idle_step.h"

#include "engine/run/merge_run.h"
#include "engine/session/session.h"
#include "engine/toolkit/messages.h"

namespace tarnova {

namespace {

// Values of runControlRec::armedState.
constexpr std::uint32_t armedNot = 0;
constexpr std::uint32_t armedRunning = 2;

bool insideStep = false;

void noteError(errorWord error) {
    auto& run = session();
    if (error != 0 && run.engineError == 0) run.engineError = error;
}

void setUp() {
    auto& run = session();
    run.inRun = 1;
    run.armedState = armedRunning;
    run.stageDone = 0;
    const errorWord error = startMergeRun(run.runDocument, 0);
    noteError(error);
    run.runStage = error == 0 ? runStageRunning : runStageFinishing;
}

void buildAll() {
    auto& run = session();
    noteError(mergeToBuiltDocument(run.runDocument, 0));
    run.stageDone = 1;
    run.runStage = runStageFinishing;
}

void finish() {
    auto& run = session();
    finishMergeRun();
    run.stageDone = 1;
    run.armedState = armedNot;
    run.panelsStale = 1;
    run.cancelRun = 0;
    run.inRun = 0;
    run.jobPercent = 100;
    if (run.savedRunType >= 0) appPrefs().mergeRunType = static_cast<std::uint32_t>(run.savedRunType);
    run.savedRunType = -1;
    surfaceError();
    run.unattended = 0;
}

void runStep() {
    switch (session().runStage) {
        case runStageSetUp:
            return setUp();
        case runStageRunning:
            return buildAll();
        case runStageFinishing:
            return finish();
        default:
            return;
    }
}

}  // namespace

void startBuildRun() {
    auto& run = session();
    run.unattended = 1;
    run.runStage = runStageSetUp;
    run.panelsStale = 1;
}

void idleStep() {
    if (insideStep) return;
    insideStep = true;
    surfaceError();
    runStep();
    insideStep = false;
}

}  // namespace tarnova
