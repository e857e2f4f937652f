// Counts the text tags of a document and finds the highest key number, from which a new numbering of tags goes on.

#pragma once

#include <cstdint>
#include <string>

#include "document/walk.h"
#include "tags/tag_record.h"

namespace tarnova {

/// Takes every tag of the store with more than one character.
class ZavoSmartTagsCallback final : public ZavoStoryCallback {
 public:
    ZavoSmartTagsCallback();

    bool TagIsMine(UIDRef story, const TagAttribute& attribute) override;
    std::int32_t TagProcess(UIDRef story) override;

    [[nodiscard]] std::int32_t tagCount() const { return count; }
    /// The highest `searchKey` read as a decimal number; 0 without a tag.
    [[nodiscard]] std::int32_t highestKey() const { return highest; }
    /// The text of the tag that was worked on last.
    [[nodiscard]] const std::u32string& tagText() const { return text; }

 private:
    tagDataRec tag{};
    std::int32_t count = 0;
    std::int32_t highest = 0;
    std::u32string text;
};

/// Walks all stories of the document, masters included. The two numbers are 0 for a document without tags.
void countSmartTags(Document& document, std::int32_t& outTagCount, std::int32_t& outHighestKey);

}  // namespace tarnova
