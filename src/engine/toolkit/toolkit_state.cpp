#include "engine/toolkit/toolkit_state.h"

namespace tarnova {

namespace {

toolkitStateRec* installedState = nullptr;

}  // namespace

toolkitStateRec& toolkitState() {
    static toolkitStateRec builtIn;
    return installedState != nullptr ? *installedState : builtIn;
}

void installToolkitState(toolkitStateRec* state) {
    installedState = state;
}

}  // namespace tarnova
