// The merge of text: replaces the run of each link in a story by its value.

#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "engine/toolkit/pm_string.h"
#include "merge/link_keys.h"
#include "merge/link_merge.h"
#include "merge/tag_trimmer.h"

namespace tarnova {

/// A visitor for one walk of a pass. A link's tag stays on its new text, so that the next pass can merge it again.
class ZavoPullStoryCallback final : public TagTrimmer, private LinkMerge {
 public:
    /// Opens the data of the current definition; a failure is in `engineError` and makes `GetInitError` non-zero. With
    /// a text in `statusText` the progress is shown. `changedWord` (borrowed, may be null) gets what changed.
    ZavoPullStoryCallback(PMString statusText, std::uint16_t* changedWord);

    bool StoryBegin(UIDRef story) override;
    bool TagIsMine(UIDRef story, const TagAttribute& attribute) override;
    std::int32_t TagProcess(UIDRef story) override;
    std::int32_t StoryEnd(UIDRef story) override;

 private:
    /// A paragraph to look at when the story ends.
    struct queuedParagraphRec {
        std::int32_t position = 0;   // its start
        bool unconditional = false;  // deleted also when it isn't blank
    };

    errorWord prepareTag(UIDRef story, bool& isMerged, errorWord priorError);
    errorWord settleKey(UIDRef story, const extractionRec& link);
    [[nodiscard]] keywordPlaceRec placeOfLink() override;
    std::int32_t pageEntryOfTag(UIDRef story);
    errorWord replaceRun(UIDRef story, errorWord priorError);
    errorWord replaceAndReport(UIDRef story, errorWord priorError);
    errorWord replaceByPrice(UIDRef story);
    errorWord replaceByImport(UIDRef story);
    errorWord deleteRun(UIDRef story);
    void queueParagraph(UIDRef story, std::int32_t atPosition, bool unconditional);
    errorWord cleanParagraphs(UIDRef story, errorWord priorError);
    errorWord cleanParagraph(UIDRef story, const queuedParagraphRec& entry);
    void checkOverset(UIDRef story);

    std::uint16_t* sharedChanged;
    std::uint16_t changed = 0;  // bit 0: this story was touched
    std::uint8_t mergeOn;       // the session's flag at construction

    UIDRef storyRef;
    // The story: which page all its frames lie on, so that a link needs no composition to know its page.
    std::int32_t storyPageEntry = 0;
    bool storyPageKnown = false;
    std::vector<queuedParagraphRec> paragraphQueue;

    LinkKeys linkKeys;  // of a price run

    bool tagIsGone = false;  // taken off its text, which is no link to others any more
};

}  // namespace tarnova
