// Copies items with what hangs below them: new UIDs, shared contents, the same stamps, stories of their own.

#pragma once

#include <utility>
#include <vector>

#include "host/model/model_document.h"

namespace tarnova {

class TreeCopy {
 public:
    explicit TreeCopy(ModelDocument& itsDocument) : document(itsDocument) {}
    /// Copies an item below a parent, whose children the caller keeps. Each original at most once.
    UID copy(const PageItem& original, UID parent, UID spread);
    /// When all items are there: gives the copied stories their frames and their anchored items. A story of which not
    /// all frames were copied has its text when the first was, and is empty otherwise.
    void finish();

 private:
    struct StoryPair {
        const Story* original;
        Story* copy;
    };

    Story* storyFor(UID original);
    void finishStory(StoryPair& pair);
    void copyAnchored(Story* story);

    ModelDocument& document;
    std::vector<StoryPair> stories;
    std::vector<std::pair<UID, UID>> frames;  // original and copy, of the stories with several frames
};

}  // namespace tarnova
