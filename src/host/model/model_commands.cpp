#include <algorithm>
#include <tuple>
#include <utility>

#include "document/walk.h"
#include "host/model/model_document.h"

namespace tarnova {

namespace {

bool sameSection(const sectionRec& a, const sectionRec& b) {
    const auto parts = [](const sectionRec& s) {
        return std::tie(s.startPage, s.prefix, s.marker, s.startNumber, s.numberingStyle, s.continues, s.includePrefix);
    };
    return parts(a) == parts(b);
}

}  // namespace

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
        openStep = UndoStep{std::string(name), {}, {}, state, state};
    }
    if (!undoable && recording) {
        recording = false;
        openStep = {};
        steps.clear();
        undone.clear();
    }
    return 0;
}

void ModelDocument::EndCommandSequence() {
    if (sequenceDepth == 0 || --sequenceDepth > 0) return;
    if (!recording) return;
    recording = false;
    if (openStep.name == visitStepName && changedNothing(openStep)) {
        state = openStep.stateBefore;
        openStep = {};
        return;
    }
    undone.clear();
    openStep.stateBehind = state;
    steps.push_back(std::exchange(openStep, UndoStep{}));
    if (steps.size() > undoStepCapacity) steps.pop_front();
}

bool ModelDocument::changedNothing(const UndoStep& step) const {
    if (!step.objects.empty()) return false;
    if (!step.lists) return true;
    const Lists& before = *step.lists;
    return before.layers == lists.layers && before.spreads == lists.spreads && before.masters == lists.masters &&
           std::equal(std::begin(before.itemData), std::end(before.itemData), std::begin(lists.itemData)) &&
           std::equal(before.sections.begin(), before.sections.end(), lists.sections.begin(), lists.sections.end(),
                      sameSection);
}

bool ModelDocument::undoNamedStep(std::string_view name) {
    if (steps.empty() || steps.back().name != name) return false;
    return undo().has_value();
}

std::optional<std::string> ModelDocument::undo() {
    if (sequenceDepth > 0 || steps.empty()) return std::nullopt;
    exchange(steps.back());
    state = steps.back().stateBefore;
    undone.push_back(std::move(steps.back()));
    steps.pop_back();
    return undone.back().name;
}

std::optional<std::string> ModelDocument::redo() {
    if (sequenceDepth > 0 || undone.empty()) return std::nullopt;
    exchange(undone.back());
    state = undone.back().stateBehind;
    steps.push_back(std::move(undone.back()));
    undone.pop_back();
    return steps.back().name;
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
    const auto [at, isNew] = openStep.objects.try_emplace(uid);
    if (isNew) at->second = stateOf(table.slot(uid));
}

void ModelDocument::keepLists() {
    noteChange();
    if (recording && !openStep.lists) openStep.lists = lists;
}

void ModelDocument::destroy(UID uid) {
    keep(uid);
    noteChange();
    if (const PageItem* gone = item(uid); mayWrap && gone != nullptr) noteWraps(gone->spread);
    table.take(uid);
}

/// Puts what the step holds in place of what is there, and keeps that instead: a step undone is one to do again.
void ModelDocument::exchange(UndoStep& step) {
    for (auto& [uid, kept] : step.objects) {
        ObjectState other = std::exchange(kept, takeState(uid));
        std::visit(
            [this, key = uid](auto& object) {
                using Object = std::decay_t<decltype(object)>;
                if constexpr (!std::is_same_v<Object, std::monostate>) {
                    table.put(key, std::make_unique<Object>(std::move(object)));
                }
            },
            other);
    }
    if (step.lists) std::swap(lists, *step.lists);
    for (const auto& [uid, kept] : step.objects) {
        if (const Spread* changedSpread = spread(uid)) forgetPlaces(*changedSpread);
    }
    renumberPages();
    if (mayWrap) {
        unsettled = lists.spreads;
        unsettled.insert(unsettled.end(), lists.masters.begin(), lists.masters.end());
    }
    noteChange();
}

ModelDocument::ObjectState ModelDocument::takeState(UID uid) {
    ObjectSlot slot = table.take(uid);
    return std::visit(
        [](auto& held) -> ObjectState {
            if constexpr (std::is_same_v<std::decay_t<decltype(held)>, std::monostate>) {
                return std::monostate{};
            } else {
                return std::move(*held);
            }
        },
        slot);
}

/// Which page an item lies on is found anew when the pages of its spread have changed.
void ModelDocument::forgetPlaces(const Spread& from) {
    std::vector<UID> items;
    for (UID node : from.layerNodes)
        collectItems(node, items);
    for (UID uid : items)
        item(uid)->pageInSpread = PageItem::pageUnknown;
}

}  // namespace tarnova
