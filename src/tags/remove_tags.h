// Takes all tag information off a document.

#pragma once

#include <cstdint>

#include "document/walk.h"

namespace tarnova {

/// What was taken away.
struct removedInfoCounts {
    std::int32_t frames = 0;  // with a tag or a rule
    std::int32_t texts = 0;   // text tags
};

/// Frames lose their tag and the rules module's entry; their other entries stay.
class ZavoRemoveInfoFrameCallback final : public ZavoFrameCallback {
 public:
    explicit ZavoRemoveInfoFrameCallback(removedInfoCounts& itsCounts);
    bool FrameBegin() override;
    [[nodiscard]] bool failed() const { return hasFailed; }

 private:
    removedInfoCounts& counts;
    bool hasFailed = false;
};

/// Texts lose the tags of the store, also those that can't be read.
class ZavoRemoveInfoCallback final : public ZavoStoryCallback {
 public:
    explicit ZavoRemoveInfoCallback(removedInfoCounts& itsCounts);
    bool TagIsMine(UIDRef story, const TagAttribute& attribute) override;
    std::int32_t TagProcess(UIDRef story) override;
    [[nodiscard]] bool failed() const { return hasFailed; }

 private:
    removedInfoCounts& counts;
    bool hasFailed = false;
};

/// All frames, all texts and the rules of all pages, in one step. False after telling the user that it failed.
bool removeAllTags(UIDRef document, removedInfoCounts& outCounts);

}  // namespace tarnova
