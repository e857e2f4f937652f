// The visitors behind countLinks: they count the links of a document and note what a run has to know beforehand.

#pragma once

#include "document/walk.h"
#include "engine/session/session.h"
#include "tags/tag_record.h"

namespace tarnova {

/// Takes one decoded link into the census. A link whose record the current definition doesn't have only raises the
/// counter of its kind and the sequence numbers. `onFrame` tells a frame's link from a text's.
void countLink(const tagDataRec& tag, bool onFrame, linkCensusRec& census);

class ZavoGetVxFrameParamsCallback final : public ZavoFrameCallback {
 public:
    explicit ZavoGetVxFrameParamsCallback(linkCensusRec& itsCensus) : census(itsCensus) {}
    /// Counts the frames with rule attributes; looks at every frame.
    bool FrameBegin() override;
    /// Counts the link. Nothing is left to be worked on.
    bool TagIsMine(std::string_view data) override;

 private:
    linkCensusRec& census;
    tagDataRec tag{};
};

class ZavoGetVxTextParamsCallback final : public ZavoStoryCallback {
 public:
    explicit ZavoGetVxTextParamsCallback(linkCensusRec& itsCensus) : census(itsCensus) { wantsFrame = false; }
    bool TagIsMine(UIDRef story, const TagAttribute& attribute) override;
    std::int32_t TagProcess(UIDRef story) override;

 private:
    linkCensusRec& census;
    tagDataRec tag{};
};

}  // namespace tarnova
