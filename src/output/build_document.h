// Expanding a template into a document of many record slots, and taking away what received no record.

#pragma once

#include <cstdint>

#include "document/uid.h"
#include "engine/toolkit/types.h"

namespace tarnova {

inline constexpr errorWord errPruningMemory = 326;

/// How records go to slots (`recordPassMode`).
inline constexpr std::uint32_t passModeStep = 1;
inline constexpr std::uint32_t passModeNoStepping = 2;
inline constexpr std::uint32_t passModeCutAndStack = 3;
inline constexpr std::uint32_t passModeStackRange = 4;
inline constexpr std::uint32_t passModeStackSubset = 5;

/// Derives `stackFirst`, `stackLast`, `recordBase`, `recordsToDo` and `slotTarget` from the range, the step and the
/// pass mode of the session, at the start of a run. `slotTarget` stays as it was without stepping.
void computeSlots();

/// Changes `slotTarget` and `recordsToDo` behind `computeSlots` to what a run of the type (`mergeRunType`) takes. A run
/// to a driver keeps the number of all slots; the driver says how many it wants at a time.
void fitSlotsToRunType(std::uint32_t runType);

/// Composes the document and marks it as the template that repeats: the copies of a page share the lines of what they
/// keep unchanged, so those are made once, before the first copy.
void composeTemplate(UIDRef document);

/// What `buildDocument` does besides adding slots.
struct buildOptionsRec {
    bool adaptive = false;
    bool showProgress = false;
    bool replicateSections = false;
    bool clearGroupPictures = false;
    bool detachMasters = false;
};

/// Expands the document until it has `slotTarget` slots: the template's own pages are the first slot, each further one
/// is a copy of its spreads. With `adaptive` the expansion ends early, and `slotTarget` with it, once adding pages has
/// become slower than at the start (ten rounds above 1.2 times the first five). With `replicateSections`, and unless
/// the preference of this name is off, each copy starts the sections that the template starts. Threads of text frames
/// run on within each slot as they do in the template. With several slots or `detachMasters`, and where the type of the
/// run lets it, items of masters first become items of the pages (`detachMasterItems`), so that each slot has its own.
/// With `clearGroupPictures` the pictures that an earlier merge left in group frames go first (`removeGroupPictures`).
[[nodiscard]] errorWord buildDocument(UIDRef document, const buildOptionsRec& options, errorWord priorError);

/// Deletes the pages of slots without data. Slot 0, slots with a merge error and flagged pages stay.
[[nodiscard]] errorWord pruneUnusedPages(UIDRef document, errorWord priorError);

}  // namespace tarnova
