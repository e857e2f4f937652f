// Takes the tags of links off the white space at the ends of their text.

#pragma once

#include "document/story_callback.h"
#include "engine/toolkit/pm_string.h"

namespace tarnova {

/// A visitor that trims the tags of links in text; the base of visitors that trim and then do more.
class TagTrimmer : public ZavoStoryCallback {
 public:
    /// With a text in `statusText` the progress is shown.
    explicit TagTrimmer(PMString statusText);

    /// Takes links: not a run that holds only its thread's closing mark, nor one with an owned item.
    bool TagIsMine(UIDRef story, const TagAttribute& attribute) override;
    std::int32_t TagProcess(UIDRef story) override;

 protected:
    /// Trims the open tag. A tag on nothing but blanks and tabs goes, its text stays: `isGone`.
    [[nodiscard]] errorWord trimTag(UIDRef story, bool& isGone);
};

/// Trims all tags of a document at once, when the preference asks for that.
[[nodiscard]] errorWord trimAllTags(UIDRef document, bool showProgress, errorWord priorError);

}  // namespace tarnova
