// A new key for links: of a range of text, of a frame, or of a frame with all that it holds.

#pragma once

#include <cstdint>
#include <string_view>

#include "document/walk.h"
#include "tags/tag_rewrite.h"

namespace tarnova {

/// Gives every text tag of the store the key, cut at 64 characters. The tags' identities and strings stay.
class ZavoChangeKeysTextCallback final : public ZavoStoryCallback {
 public:
    explicit ZavoChangeKeysTextCallback(std::string_view newKey);
    bool TagIsMine(UIDRef story, const TagAttribute& attribute) override;
    std::int32_t TagProcess(UIDRef story) override;
    [[nodiscard]] bool failed() const { return hasFailed; }

 private:
    std::string_view key;
    TagRewrite open;
    bool hasFailed = false;
};

/// Gives frames the key: in their tag, in their entry with the rules module, and behind the "SEQ-" of the name that the
/// script module knows them by. A rule that the module doesn't change is error errRuleKey.
class ZavoChangeKeysFrameCallback final : public ZavoFrameCallback {
 public:
    explicit ZavoChangeKeysFrameCallback(std::string_view newKey);
    bool FrameBegin() override;
    bool TagIsMine(std::string_view data) override;
    std::int32_t TagProcess() override;
    [[nodiscard]] bool failed() const { return hasFailed; }

 private:
    std::string_view key;
    TagRewrite open;
    bool hasFailed = false;
};

inline constexpr errorWord errRuleKey = 335;

/// Which items a change of keys takes: `sequenceItemsRec::itemKind`.
enum class ItemKinds : std::uint16_t { all = 1, textFrames = 2, graphicFrames = 3, groups = 4 };

// Each is one step that can be undone, within a sequence a part of it. 0, or the error that ended it.

/// The links of a range of text, whole where it begins or ends inside of one, and of the tables and anchored items in
/// it. Of an empty range: the link at its place.
[[nodiscard]] errorWord changeKeysText(UIDRef story, textSpanRec range, std::string_view newKey);
/// The link of a frame alone.
[[nodiscard]] errorWord changeKeysFrame(UIDRef frame, std::string_view newKey);
/// A frame's link, then those of its text; of a group its own, then those of its members that are of the kinds.
[[nodiscard]] errorWord changeFrameTreeKeys(UIDRef item, std::string_view newKey, ItemKinds kinds);

}  // namespace tarnova
