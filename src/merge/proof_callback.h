// The proof of links: each shows its name, as it is written in a layout, in place of data: "{{Name}}", or "{{2:Name}}"
// with another key than 1.

#pragma once

#include <string>

#include "document/frame_callback.h"
#include "document/story_callback.h"
#include "tags/tag_record.h"

namespace tarnova {

/// What a proof shows for a link.
[[nodiscard]] std::u32string proofText(const tagDataRec& tag);

class ZavoProofStoryCallback final : public ZavoStoryCallback {
 public:
    ZavoProofStoryCallback();
    bool TagIsMine(UIDRef story, const TagAttribute& attribute) override;
    std::int32_t TagProcess(UIDRef story) override;

 private:
    tagDataRec tag{};
};

/// Shows the name as the whole text of a text frame, and in any other frame as a picture.
class ZavoProofFrameCallback final : public ZavoFrameCallback {
 public:
    bool TagIsMine(std::string_view data) override;
    std::int32_t TagProcess() override;

 private:
    tagDataRec tag{};
};

}  // namespace tarnova
