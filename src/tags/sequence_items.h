// Running numbers as keys for the frames of a layout, in reading order, which prepares a template for a merge.

#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "document/uid.h"
#include "engine/session/preference_records.h"
#include "tags/change_keys.h"

namespace tarnova {

inline constexpr std::uint16_t sequenceScopeSelection = 1;
inline constexpr std::uint16_t sequenceScopePage = 2;
inline constexpr std::uint16_t sequenceScopeDocument = 3;

/// An item with its place, for ordering.
struct sequencePlaceRec {
    UID item;
    double top;   // points
    double left;  // points
};

/// Puts items into the order 1 to 8 of `sequenceItemsRec::sortOrder`; another number counts as 1. Rows (orders 1 to 4,
/// by top) or columns (5 to 8, by left) take items within half of `gridSizePt` of their first one; within them the
/// other side counts. Places less than 1/65,536 point apart are equal.
void orderInReading(std::vector<sequencePlaceRec>& places, std::uint16_t sortOrder, std::int32_t gridSizePt);

/// What is numbered, beside the settings.
struct sequenceChoiceRec {
    std::vector<UID> selectedItems;     // for sequenceScopeSelection
    UID currentPage = kInvalidUID;      // for sequenceScopePage
    std::function<void(UIDRef)> proof;  // shows a numbered item at once; null: nothing is shown
};

/// Numbers the frames and groups that have a link, or an entry with the script module, in one step. False when the step
/// or a change failed. `outCount` gets how many items were numbered.
bool sequencePageItems(UIDRef document, const sequenceItemsRec& settings, const sequenceChoiceRec& choice,
                       std::int32_t& outCount);

}  // namespace tarnova
