// One pass of a run: the walks that merge what the document's slots hold now.

#pragma once

#include <cstdint>
#include <functional>

#include "document/geometry.h"
#include "document/uid.h"
#include "engine/toolkit/types.h"

namespace tarnova {

/// Values of appPrefsRec::linkKinds.
inline constexpr std::uint16_t linkKindsBoth = 0;
inline constexpr std::uint16_t linkKindsText = 1;
inline constexpr std::uint16_t linkKindsFrames = 2;

/// One pass over the document, by the type of the run (`mergeRunType`). `cancel` gets bit 0 when the user or a visitor
/// stopped it; what was merged so far stays then.
[[nodiscard]] errorWord mergePass(UIDRef document, std::uint16_t& cancel, errorWord priorError);

/// Runs the passes over frames and over texts, or the one of the kind asked for, in the order of the preference. A
/// cancel or an error in the first leaves the second out.
void inPassOrder(std::uint16_t linkKinds, const std::uint16_t& cancel, const std::function<void()>& framePart,
                 const std::function<void()>& textPart);

/// Merges the links of the slots that the document holds, of the kinds asked for, and moves the run behind their
/// records. Without `pull` the links are visited and keep their text.
[[nodiscard]] errorWord mergeDocument(UIDRef document, std::uint16_t linkKinds, bool pull, bool showProgress,
                                      std::uint16_t& cancel);

/// A chunk of a run to a driver, as the commands for it say.
struct mergeChunkRec {
    std::uint32_t first = 0;  // record, from 1; one outside of the data leaves `recordBase` as it stands
    std::uint32_t limit = 0;  // the record behind the last
    std::uint32_t stepBy = 1;
    std::uint32_t recordPassMode = 1;
    bool pull = true;
    bool showProgress = false;
    // What a driver that can refer to pictures placed before says of them (placed_pictures.h).
    bool tracksPictures = false;
    bool tracksStrictly = false;
    PMRect bleedMargins{};
    PMPoint pageSize{};
};

/// Merges the chunk that stands in the document. `outDone` is the number of its records; `cancel` as above.
[[nodiscard]] errorWord mergeChunk(UIDRef document, const mergeChunkRec& chunk, std::uint32_t& outDone,
                                   std::uint16_t& cancel);

}  // namespace tarnova
