// Which tag attributes belong to the store of the engine mode, and the identities that tell tags apart.

#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "document/document.h"
#include "document/text_attributes.h"

namespace tarnova {

/// The four texts of a tag attribute.
struct tagStrings {
    std::string ownerName;
    std::string highlightMode;
    std::string highlightColour;
    std::string spare;
};

/// Fills the texts of a new tag for engine mode 0 or 1; for any other mode `ownerName` stays as it is.
void tagStringsInit(tagStrings& strings, std::uint16_t mode);

/// The class of the tag attributes of the engine mode's store.
[[nodiscard]] TextAttributeClass tagClassOfMode();

/// True when the attribute belongs to the store of the engine mode. Every reader of attributes asks before it believes
/// one.
[[nodiscard]] bool tagIsOwn(const TagAttribute& attribute);

/// The tag attribute of the store in a run's attributes, or null; valid as long as they are.
[[nodiscard]] const TagAttribute* ownTagOf(const AttributeBossList* attributes);

/// Whether a run of characters that has a tag attribute is a tag at all, with the run clipped to its thread: one that
/// holds an anchored item or a table isn't, nor is a single character that is its thread's closing mark.
[[nodiscard]] bool runCarriesTag(const Document& document, UID story, std::int32_t start, std::int32_t length,
                                 bool endsThread);

/// An identity for a new text tag of the document: no tag of either store has it, and the last one given out was
/// another.
///
/// Identities come from the clock's ticks of 1/60 second, but a tag never waits for the clock: when the tick was used
/// already the next number is taken, so 10,000 tags in one tick are 10,000 identities. Numbers that the document holds
/// from earlier sessions are skipped; they are collected once, when a tag is first made in the document.
[[nodiscard]] std::uint32_t newTagId(const Document& document);

/// The same for the attribute of a table, with a memory of its own: the last one given out was another.
[[nodiscard]] std::uint32_t newTableTagId();

}  // namespace tarnova
