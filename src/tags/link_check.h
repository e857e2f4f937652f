// Whether an item, or anything it holds, carries a link.

#pragma once

#include "document/walk.h"

namespace tarnova {

/// Both set the walk's cancel word at the first tag of the store, which ends the walk.
class ZavoCheckForFrameLinksCallback final : public ZavoFrameCallback {
 public:
    bool TagIsMine(std::string_view data) override;
};

class ZavoCheckForTextLinksCallback final : public ZavoStoryCallback {
 public:
    ZavoCheckForTextLinksCallback();
    bool TagIsMine(UIDRef story, const TagAttribute& attribute) override;
};

/// True when the item, an item inside it, or a text in one of them has a tag of the engine mode's store.
[[nodiscard]] bool itemHasLinks(UIDRef item);

}  // namespace tarnova
