// A chunk of a run to a driver: so many slots as one build of the working copy holds.

#pragma once

#include <cstdint>

#include "document/uid.h"
#include "engine/toolkit/types.h"

namespace tarnova {

inline constexpr std::uint32_t chunkPagesAutomatic = 250;  // the most while the engine chooses the size

struct chunkOptionsRec {
    bool sweepFirst = false;  // of a run's first chunk: trims all tags, where that is wanted
    bool showProgress = false;
    bool multiSlot = false;  // more than one slot; never on a document with page rules
    bool replicateSections = false;
    bool detachMasters = false;
};

/// Builds a chunk of at most `wantedSlots` slots in the document: `slotTarget` says how many there are afterwards. The
/// preferences limit the pages of a chunk, but one slot is always built. Printed numbers
/// count on from the slots in front of it (`slotsInFront` and `slotsOfOutput` of the session). Nothing of it can be
/// undone.
[[nodiscard]] errorWord buildChunk(UIDRef document, std::int32_t wantedSlots, const chunkOptionsRec& options,
                                   errorWord priorError);

/// Keeps changes of a document off the list of undo as long as it lives.
class UnrecordedChanges {
 public:
    explicit UnrecordedChanges(UIDRef itsDocument);
    ~UnrecordedChanges();
    UnrecordedChanges(const UnrecordedChanges&) = delete;
    UnrecordedChanges& operator=(const UnrecordedChanges&) = delete;
    /// errCommandSequence when the document begins no sequence.
    [[nodiscard]] errorWord error() const { return begun; }

 private:
    UIDRef document;
    errorWord begun;
};

}  // namespace tarnova
