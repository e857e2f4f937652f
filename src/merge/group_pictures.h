// Group pictures: item groups that the module for them lays over frames. The frames themselves are merged elsewhere.

#pragma once

#include <cstdint>
#include <string>

#include "definitions/record_def.h"
#include "document/frame_callback.h"
#include "engine/toolkit/types.h"
#include "tags/tag_record.h"

namespace tarnova {

/// Takes away the group picture of each frame that has one, unless its tag or its link is locked.
class ZavoDeleteGroupPictureCallback final : public ZavoFrameCallback {
 public:
    using ZavoFrameCallback::ZavoFrameCallback;
    bool TagIsMine(std::string_view data) override;
    std::int32_t TagProcess() override;

    std::uint32_t removedCount = 0;

 private:
    tagDataRec tag{};
};

/// Lays a group picture over a frame, from the file or, with `assetKindMaster`, the master spread of that name. Its
/// group waits for the end of the walk. Gives a `frameResult`: without the module the picture counts as missing, and a
/// module that fails ends the run.
[[nodiscard]] std::uint16_t placeGroup(UIDRef frame, const std::string& path, std::uint32_t assetKind,
                                       const extractionRec& link);

/// Walks the document in the run's page range. Without the module nothing is walked. `outCount` (may be null) is the
/// number of pictures that went.
[[nodiscard]] errorWord removeGroupPictures(UIDRef document, bool showProgress, std::uint32_t* outCount,
                                            errorWord priorError);

}  // namespace tarnova
