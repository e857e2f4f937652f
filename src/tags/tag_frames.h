// Frames that are tagged by small text frames laid over them, as upstream systems do it. A tag frame is a text frame
// with a stroke of 10 points in full process magenta and "_QELTAGGEDTEXT_" in its name; docs/text-tags.md tells what
// stands in it.

#pragma once

#include <vector>

#include "document/walk.h"

namespace tarnova {

/// True for a tag frame. A document that knows nothing of looks has none.
[[nodiscard]] bool isTagFrame(UIDRef frame);

/// Notes tag frames and the others, each once, in the order of the walk.
class ZavoConvertFrameTagsToLinksCallback final : public ZavoFrameCallback {
 public:
    bool FrameBegin() override;

    std::vector<UID> tagFrames;
    std::vector<UID> otherFrames;
};

/// Reads every tag frame for the frame that it lies over, or as a page marker for its page, and deletes it. Its text
/// tags have been made links before. Tag frames without a partner stay, and the user is told how many they are. False
/// when the document or the rules module refused a change.
bool convertTagFrames(Document& document);

}  // namespace tarnova
