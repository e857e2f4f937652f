// The walk: every page item and every story of a document, in one fixed order. Merge, census, reports, key changes and
// proofs are walks with a visitor.

#pragma once

#include <cstdint>
#include <string_view>

#include "document/document.h"
#include "document/frame_callback.h"
#include "document/story_callback.h"
#include "document/walk_state.h"

namespace tarnova {

/// What a walk does with the items of master spreads.
enum class WalkScope : std::uint16_t {
    pagesOnly = 0,            // leaves them out
    mastersOnly = 1,          // visits nothing else
    everything = 2,           // visits them all
    pagesAndUsedMasters = 3,  // visits those of masters that are in use
};

/// The sequence in which a locked layer is visited. One that leaves everything as it was shall be no step of undo.
inline constexpr std::string_view visitStepName = "Visit Locked Layer";

/// Visits the spreads and then the master spreads; on each, the layers from index 1 on; on a layer, the frontmost item
/// first. A frame is visited before what it holds, its story through its first column, and the items anchored in a text
/// behind the text. What stands on `deferredItems` comes last.
///
/// `frameCallback` and `storyCallback` may be null: the walk then only counts. `firstPage` and `lastPage` are page
/// numbers from 1; both 0 mean all pages. Items on a pasteboard or a master lie outside of any page range and are
/// visited whatever it says. `skipHiddenLayers` and `skipPasteboard` leave such items out; `visitHiddenLayers` wins
/// over the former. A locked layer is unlocked for its visit.
///
/// `outItemCount` and `outTextCount` (either may be null) get the number of items visited and the characters of all
/// stories less one closing mark each. `cancel` is a word that a visitor or the engine may set, and that ends the walk
/// at the next test; null takes a word of the walk's own.
///
/// Gives the non-zero result of a frame callback, which ends the walk, else 0.
std::int32_t walkDocument(Document& document, IFrameCallback* frameCallback, IStoryCallback* storyCallback,
                          std::int32_t firstPage, std::int32_t lastPage, WalkScope scope, bool skipHiddenLayers,
                          bool skipPasteboard, std::int32_t* outItemCount, std::int32_t* outTextCount,
                          std::uint16_t* cancel, bool visitHiddenLayers);

/// Visits one item and what it holds in the same order, wherever it lies.
std::int32_t walkItem(UIDRef item, IFrameCallback* frameCallback, IStoryCallback* storyCallback, std::uint16_t* cancel);

/// What a command on a selection does with one selected item: a group hands over its members one by one, wherever they
/// lie, and isn't visited itself; a frame is visited, and then its text as above. One word ends it all.
std::int32_t processItem(UIDRef item, IFrameCallback* frameCallback, IStoryCallback* storyCallback,
                         std::uint16_t* cancel);

}  // namespace tarnova
