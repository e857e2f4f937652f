// The session words that the walk and its visitors read and write.

#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "document/uid.h"

namespace tarnova {

/// A frame that a preflight noted, as far as the walk is concerned: the objects of clones are parked groups, which hold
/// no links of their own.
struct storedObjectRec {
    UID objectUid = kInvalidUID;    // the group or frame itself
    UID parkedFrame = kInvalidUID;  // the fresh base frame made for it
};

struct walkStateRec {
    std::uint16_t engineMode = 0;  // 0 merge mode (store `Kelvane`), 1 price mode (store `Tallyra`)

    /// Raised by a visitor that puts items behind the visited one, below the same parent; cleared before each child.
    std::uint16_t insertedItems = 0;
    /// Groups that this pass brought into the document, in order. They are left out in place and visited last. Empty
    /// outside of a pass. While a walk is under way a visitor may only append.
    std::optional<UIDList> deferredItems;
    /// Objects of clones; a group among them is left out.
    std::vector<storedObjectRec> storedObjects;

    /// The preferences' byte `walkDeferredStories`, so that there is one copy of it; null counts as on, the default.
    const std::uint8_t* walkDeferredStories = nullptr;
};

/// The state in use: the installed one, else a built-in one.
[[nodiscard]] walkStateRec& walkState();

/// Puts `state` in use; null goes back to the built-in one. `state` stays the caller's and must outlive its use.
void installWalkState(walkStateRec* state);

}  // namespace tarnova
