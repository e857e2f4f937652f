// Control frames: text frames whose text steers the job instead of being printed. A mark in their item data says so.

#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "document/uid.h"
#include "engine/toolkit/types.h"

namespace tarnova {

// Values of `controlKind`.
inline constexpr std::int32_t controlKindFileName = 0;
inline constexpr std::int32_t controlKindCopies = 1;  // number of copies; 2 to 5 insert PostScript

inline constexpr errorWord errControlFrameTwice = 334;

/// Kind of a control frame; nothing for any other item.
[[nodiscard]] std::optional<std::int32_t> controlKindOf(UIDRef frame);

/// All control frames on the document's spreads, in the order of a walk.
[[nodiscard]] std::vector<UID> controlFramesOf(Document& document);

/// What a run makes of them.
struct controlFrameCheckRec {
    bool usable = false;   // the run honours them
    bool stopped = false;  // the run can't go on
    UID fileNameFrame = kInvalidUID;
    UID copiesFrame = kInvalidUID;
};

/// Looks at the control frames in front of a run; with the preference `controlFramesEnabled` off they are passed over.
/// With `interactive` a frame on the pasteboard is asked about. Error: errControlFrameTwice.
[[nodiscard]] errorWord checkControlFrames(Document& document, bool interactive, controlFrameCheckRec& check,
                                           errorWord priorError);

}  // namespace tarnova
