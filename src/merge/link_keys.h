// Where a link of a price run has its key from: from itself, from a neighbour in its text, or from the first link of a
// name on its page or spread.

#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "definitions/record_def.h"
#include "document/uid.h"
#include "engine/toolkit/types.h"
#include "merge/first_on_links.h"
#include "tags/tag_record.h"

namespace tarnova {

/// The key of a link that found none.
inline constexpr std::string_view noLinkKey = "<No Link>";

/// A link's own place.
struct linkPlaceRec {
    UIDRef story;
    std::int32_t start = 0;  // its run
    std::int32_t length = 0;
    UID page = kInvalidUID;  // that shows it; asked for only where the link's key stands on it
};

/// Whether a link has its key from another on its page or spread.
[[nodiscard]] bool keyStandsOnPage(const extractionRec& link);

/// Settles keys along one story, from its first link to its last.
class LinkKeys {
 public:
    /// Forgets the links of the story before.
    void beginStory() { passed_.clear(); }
    /// Notes a link that the walk leaves behind, with the text that it has now.
    void pass(const linkPlaceRec& place, const tagDataRec& tag);

    /// Puts the key into `tag.searchKey` as the link's record says. `tracker` answers for pages and spreads; null: no
    /// link is found there. A link with its own key stays as it is.
    void settle(const linkPlaceRec& place, const extractionRec& link, FirstOnLinkTracker* tracker,
                tagDataRec& tag) const;

 private:
    struct passedLink {
        std::string name;
        std::string key;
        std::int32_t start;
        std::int32_t length;
    };
    [[nodiscard]] const passedLink* before(std::string_view name) const;

    std::vector<passedLink> passed_;
};

}  // namespace tarnova
