#include <utility>

#include "host/model/model_document.h"

namespace tarnova {

ModelDocument::Command::Command(ModelDocument& itsDocument, std::string_view name)
    : document(itsDocument), ownsSequence(itsDocument.sequenceDepth == 0) {
    if (ownsSequence) static_cast<void>(document.BeginCommandSequence(name, true));
}

ModelDocument::Command::~Command() {
    if (ownsSequence) document.EndCommandSequence();
}

errorWord ModelDocument::BeginCommandSequence(std::string_view name, bool undoable) {
    if (sequenceDepth++ == 0) {
        recording = true;
        openStep = UndoStep{std::string(name), {}, {}};
    }
    if (!undoable && recording) {
        recording = false;
        openStep = {};
        steps.clear();
    }
    return 0;
}

void ModelDocument::EndCommandSequence() {
    if (sequenceDepth == 0 || --sequenceDepth > 0) return;
    if (!recording) return;
    recording = false;
    steps.push_back(std::exchange(openStep, UndoStep{}));
    if (steps.size() > undoStepCapacity) steps.pop_front();
}

bool ModelDocument::undoNamedStep(std::string_view name) {
    if (sequenceDepth > 0 || steps.empty() || steps.back().name != name) return false;
    restore(steps.back());
    steps.pop_back();
    changed = true;
    return true;
}

ModelDocument::ObjectState ModelDocument::stateOf(const ObjectSlot& slot) {
    return std::visit(
        [](const auto& held) -> ObjectState {
            if constexpr (std::is_same_v<std::decay_t<decltype(held)>, std::monostate>) {
                return std::monostate{};
            } else {
                return *held;
            }
        },
        slot);
}

void ModelDocument::keep(UID uid) {
    if (!recording) return;
    const auto [at, isNew] = openStep.before.try_emplace(uid);
    if (isNew) at->second = stateOf(table.slot(uid));
}

void ModelDocument::keepLists() {
    changed = true;
    if (recording && !openStep.listsBefore) openStep.listsBefore = lists;
}

void ModelDocument::destroy(UID uid) {
    keep(uid);
    changed = true;
    table.take(uid);
}

void ModelDocument::restore(UndoStep& step) {
    for (auto& [uid, state] : step.before) {
        table.take(uid);
        std::visit(
            [this, key = uid](auto& object) {
                using Object = std::decay_t<decltype(object)>;
                if constexpr (!std::is_same_v<Object, std::monostate>) {
                    table.put(key, std::make_unique<Object>(std::move(object)));
                }
            },
            state);
    }
    if (step.listsBefore) lists = std::move(*step.listsBefore);
    renumberPages();
}

}  // namespace tarnova
