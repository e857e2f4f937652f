// Walkers that show the text tags of a document: by their strings in place of their text, or one by one.

#pragma once

#include <string>

#include "document/walk.h"

namespace tarnova {

/// Puts one of the tag's own strings in the place of its text: the label, or the fourth string when labels aren't
/// shown any more. The tag stays on the new text.
class ZavoToggleStoryCallback final : public ZavoStoryCallback {
 public:
    explicit ZavoToggleStoryCallback(bool itsShowLabels);
    bool TagIsMine(UIDRef story, const TagAttribute& attribute) override;
    std::int32_t TagProcess(UIDRef story) override;
    [[nodiscard]] bool failed() const { return hasFailed; }

 private:
    bool showLabels;
    bool hasFailed = false;
    std::string shown;  // of the open tag
};

/// Asks at every tag, told by its label, start and length, whether to go on; No ends the walk.
class ZavoTraceStoryCallback final : public ZavoStoryCallback {
 public:
    ZavoTraceStoryCallback();
    bool TagIsMine(UIDRef story, const TagAttribute& attribute) override;
    std::int32_t TagProcess(UIDRef story) override;

 private:
    std::string label;
};

/// Rewrites all text tags of a document in one step. False after telling the user that it failed.
bool showTagLabels(UIDRef document, bool showLabels);

/// Steps through the text tags of a document.
void traceTags(UIDRef document);

}  // namespace tarnova
