// Copies one spread behind the last: new UIDs, shared contents, the same stamps.

#pragma once

#include <utility>
#include <vector>

#include "host/model/model_document.h"

namespace tarnova {

class SpreadCopy {
 public:
    SpreadCopy(ModelDocument& itsDocument, const Spread& itsSource) : document(itsDocument), source(itsSource) {}
    /// Gives 0, or an error when the document has no UIDs left; then nothing was copied.
    [[nodiscard]] errorWord make();

 private:
    struct StoryPair {
        const Story* original;
        Story* copy;
    };

    void copyPages(Spread& to);
    UID copyTree(const PageItem& original, UID parent, UID spread);
    Story* storyFor(UID original);
    void finishStory(StoryPair& pair);
    void copyAnchored(StoryPair& pair, UID spread);

    ModelDocument& document;
    const Spread& source;
    std::vector<StoryPair> stories;
    std::vector<std::pair<UID, UID>> frames;  // original and copy, of the stories with several frames
};

}  // namespace tarnova
