// One copy of every attribute list that the runs and paragraphs of a document and its copies use. A run then holds a
// pointer, equal lists are equal pointers, and a copied page costs no lists.

#pragma once

#include <cstdint>
#include <memory>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "host/model/story.h"

namespace tarnova {

/// What a run can say of its own; the key of its interned list.
struct RunDescription {
    std::int32_t characterStyle = -1;
    CharOverrides overrides;
    std::shared_ptr<const TagAttribute> tags[2];  // by store: Kelvane, Tallyra
};

class AttributePool {
 public:
    [[nodiscard]] const RunAttributes* run(const RunDescription& description);
    [[nodiscard]] static RunDescription describe(const RunAttributes& list);
    /// The list of a run without style, overrides and tags.
    [[nodiscard]] const RunAttributes* plainRun() { return run({}); }
    /// The list with the attribute in place of its own of that class; the same list when that changes nothing.
    [[nodiscard]] const RunAttributes* with(const RunAttributes& list,
                                            const std::shared_ptr<const TextAttribute>& attribute);
    [[nodiscard]] const RunAttributes* without(const RunAttributes& list, TextAttributeClass attributeClass);

    [[nodiscard]] const ParagraphAttributes* paragraph(const ParagraphAttributes& attributes);

    /// One object for equal tags, the first of them: else runs that say the same would stay apart.
    [[nodiscard]] std::shared_ptr<const TagAttribute> tag(std::shared_ptr<const TagAttribute> wanted);

 private:
    std::unordered_multimap<std::size_t, std::unique_ptr<const RunAttributes>> runs;
    std::unordered_multimap<std::size_t, std::unique_ptr<const ParagraphAttributes>> paragraphs;
    std::unordered_multimap<std::size_t, std::shared_ptr<const TagAttribute>> tags;
};

}  // namespace tarnova
