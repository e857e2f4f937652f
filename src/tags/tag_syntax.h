// Tags written out as plain text: "<!$key; link; rule; style; :data>" or "<!$key; link; : >data<!!>". Every mark has a
// second form with square brackets, and the forms may be mixed. docs/text-tags.md has the fields and the errors.

#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>

#include "engine/toolkit/memory.h"
#include "tags/tag_record.h"

namespace tarnova {

inline constexpr std::int32_t tagOpeningLength = 3;  // characters of "<!$"
inline constexpr std::int32_t tagClosingLength = 4;  // and of "<!!>"
inline constexpr std::size_t tagFieldCount = 13;     // positional fields that are read
inline constexpr std::size_t tagExtraCapacity = 30;  // characters of an extra value

// Errors of a tag.
inline constexpr std::int32_t tagErrorOutline = 1;    // no ">" of its own, or the closing mark stands before it
inline constexpr std::int32_t tagErrorNoEnd = 2;      // neither inline data nor a closing mark
inline constexpr std::int32_t tagErrorTwoColons = 3;  // behind the last ";"
inline constexpr std::int32_t tagErrorTooLong = 4;    // a field, or a ":" in front of the last ";"
inline constexpr std::int32_t tagErrorMissing = 5;    // a required field
inline constexpr std::int32_t tagErrorNoColon = 14;
inline constexpr std::int32_t tagErrorSeparators = 15;  // none, more than 13, or 11 and more without a ":"
inline constexpr std::int32_t tagErrorMemory = 19;      // for the media data
inline constexpr std::int32_t tagErrorMedia = 20;       // no even run of hexadecimal digits
inline constexpr std::int32_t tagErrorEscape = 27;

inline constexpr std::uint16_t tagModeUsual = 1;
inline constexpr std::uint16_t tagModeCheckOnly = 2;

inline constexpr std::uint16_t tagParseMemory = 6;  // status: a record could not be allocated

/// One tag of a text. Offsets and lengths count characters of the scanned text.
struct parsedTag {
    std::int32_t errorCode;  // 0, or what is wrong with it
    std::int32_t tagStart;   // of the opening mark
    std::int32_t tagLength;  // closing mark included; 3 for an error of the outline, which ends the tag there
    std::int32_t dataStart;
    std::int32_t dataLength;
    tagDataRec tag;  // `tagStatus` is 0, `tagKind` as written
    std::int32_t mediaLength;
    blockHandle mediaData;  // owned by the record; null without media data
    std::uint16_t tagMode;
    std::uint8_t extra[3][tagExtraCapacity + 1];  // Pascal strings: positions 11 to 13
    parsedTag* next;                              // in text order
};

/// Frees a list with all media data; null does nothing.
void freeTagList(parsedTag* list);

struct tagListDeleter {
    void operator()(parsedTag* list) const { freeTagList(list); }
};
using parsedTagList = std::unique_ptr<parsedTag, tagListDeleter>;

/// The text as the parser takes it, a byte a character: each becomes its low 8 bits, and what isn't printable ASCII
/// then a blank. `out` has room for a byte a character.
void reduceTagText(std::u32string_view text, char* out);

/// Finds the tags of a text that was made so. The third
/// field is the rule's name in engine mode 0 and that of the search criteria in mode 1. Null without a tag. `outStatus`
/// is 0, or tagParseMemory with the tags that were read until then.
[[nodiscard]] parsedTagList tagTextParse(std::int32_t length, const char* text, std::uint16_t& outStatus);

}  // namespace tarnova
