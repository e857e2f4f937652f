#include "definitions/definition_state.h"

#include "engine/toolkit/messages.h"

namespace tarnova {

namespace {

constexpr std::uint16_t messageDefaultDefinitionName = 18;

definitionStateRec builtInState{};
definitionStateRec* installedState = &builtInState;

}  // namespace

definitionStateRec& definitionState() {
    return *installedState;
}

void installDefinitionState(definitionStateRec* state) {
    installedState = state != nullptr ? state : &builtInState;
}

void defaultDefName(std::uint8_t* name) {
    Str255 text{};
    messageText(text, messageDefaultDefinitionName);
    pstrCopyBounded(name, text, sizeof(Str31));
}

errorWord reselectCurrentRecordDef(errorWord priorError) {
    if (priorError != 0) return priorError;
    definitionStateRec& state = definitionState();
    return findRecordDef(state.currentDefSet, state.currentDefName, state.currentRecordDef, 0);
}

}  // namespace tarnova
