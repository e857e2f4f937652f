#include "data/data_state.h"

#include "data/source_list.h"

namespace tarnova {

namespace {

dataStateRec* installedState = nullptr;

}  // namespace

void dataSourceListDeleter::operator()(dataSourceRec* list) const {
    freeSourceList(list);
}

dataStateRec& dataState() {
    static dataStateRec builtIn;
    return installedState != nullptr ? *installedState : builtIn;
}

void installDataState(dataStateRec* state) {
    installedState = state;
}

}  // namespace tarnova
