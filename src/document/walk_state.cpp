#include "document/walk_state.h"

namespace tarnova {

namespace {

walkStateRec builtInState;
walkStateRec* installedState = nullptr;

}  // namespace

walkStateRec& walkState() {
    return installedState != nullptr ? *installedState : builtInState;
}

void installWalkState(walkStateRec* state) {
    installedState = state;
}

}  // namespace tarnova
