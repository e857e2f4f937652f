// Swatches, styles and attribute lists of a document, and the formats that follow from them. A document and its copies
// share one object, so that the attributes of a copied run are those of the original.

#pragma once

#include <cstddef>
#include <unordered_map>
#include <utility>
#include <vector>

#include "host/model/attribute_pool.h"
#include "host/model/format.h"
#include "host/model/story.h"

namespace tarnova {

class DocumentFormats {
 public:
    std::vector<Swatch> swatches;
    std::vector<CharacterStyle> characterStyles;
    std::vector<ParagraphStyle> paragraphStyles;
    AttributePool attributes;

    /// Styles are fixed from the first of these on. Equal formats have one address for the life of the process, so that
    /// caches may name them by it.
    [[nodiscard]] const CharFormat* resolveChar(const ParagraphAttributes& paragraph, const RunAttributes& run);
    [[nodiscard]] const ParaFormat* resolvePara(const ParagraphAttributes& paragraph);

 private:
    using CharKey = std::pair<const ParagraphAttributes*, const RunAttributes*>;
    struct CharKeyHash {
        std::size_t operator()(const CharKey& key) const;
    };

    void applyCharacterStyle(std::int32_t style, CharFormat& out) const;
    void applyParagraphStyle(std::int32_t style, CharFormat& out) const;
    void applyParagraphStyle(std::int32_t style, ParaFormat& out) const;

    CharKey lastKey{nullptr, nullptr};
    const CharFormat* lastChar = nullptr;
    std::unordered_map<CharKey, const CharFormat*, CharKeyHash> charFormats;
    std::unordered_map<const ParagraphAttributes*, const ParaFormat*> paraFormats;
};

}  // namespace tarnova
