// The record that a variable link leaves in a layout, in memory and in its stored form. The stored form is big-endian
// on every machine: a header of 8 bytes (total length, version 1, stored kind), then named fields, each with its own
// size. docs/tag-records.md has it byte by byte,
// and document/stored_tag.h takes the bytes apart.

#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "document/stored_tag.h"
#include "engine/toolkit/memory.h"
#include "engine/toolkit/pstring.h"
#include "engine/toolkit/types.h"

namespace tarnova {

inline constexpr errorWord errTagFieldUnknown = 95;  // a stored tag holds a field that nobody knows
inline constexpr errorWord errTagMemory = 129;       // no memory for a tag, or its further keys pass the work buffer

inline constexpr std::int16_t tagStatusRead = 0;
inline constexpr std::int16_t tagStatusNone = -1;  // set before a tag is looked for

// Kinds. A media-only tag carries no key, no names and no notes.
inline constexpr std::uint16_t tagKindData = 0;
inline constexpr std::uint16_t tagKindMedia = 1;
inline constexpr std::uint16_t tagKindDataWithMedia = 2;

struct tagDataRec {
    std::int16_t tagStatus;
    std::uint16_t tagKind;     // always 0 behind a decode: the record's own kind is told apart (see tagRecordDecode)
    std::uint8_t linkLocked;   // a merge leaves the link alone; combined by OR with the link's `locked`
    std::uint8_t associateMe;  // combined by OR with the link's setting of that name
    Str64 searchKey;           // merge mode: a sequence number in decimal; price mode: a key into the data file
    Str31 searchCriteriaName;
    Str31 extractionRecordName;  // the name of the variable link
    Str31 styleRecordName;
    Str255 notes1;
    Str255 notes2;
    Str255 notes3;
    Str31 ruleName;
    /// Further keys, Pascal strings one behind the other; may be null. The owner of the record owns and frees it.
    blockHandle auxKeys;
};

/// Empties all strings and flags and sets `tagKind` to 0. `tagStatus` and `auxKeys` stay.
void tagRecordClear(tagDataRec& tag);

/// Makes the stored form of `tag` and hands it out in a block of exactly its length, which the caller frees with
/// freeBlock. A null argument does nothing and gives 0. Further keys of less than 2 bytes aren't stored. Errors:
/// errTagMemory, also when the further keys take the record past storedTagCapacity; `*outBlock` is null then.
[[nodiscard]] errorWord tagRecordEncode(const tagDataRec* tag, std::byte** outBlock, errorWord priorError);

/// Reads the stored record that `block` holds from its first to its last byte into `tag`. `block` without data or a
/// null `tag` does nothing and gives 0. `tagStatus` becomes 0 on success and stays as it is on failure.
///
/// `outTotalLength` and `outStoredKind` (either may be null) get the record's bytes and its stored kind: twice
/// `tagKind`, and 1 more when the link is locked. Fields may come in any order, and of two with one name the last
/// counts. Further keys are dropped when `tag->auxKeys` is null.
///
/// Errors: errTagFieldUnknown (what was read before it stays in `tag`); errTagRefused when the version is another
/// or sizes don't hold: a total that differs from the block's, a field below its 8 bytes or past the end, a string past
/// its field or too long for its member; errTagMemory when the further keys find no memory, with all other fields read.
[[nodiscard]] errorWord tagRecordDecode(std::string_view block, tagDataRec* tag, std::uint32_t* outTotalLength,
                                        std::uint16_t* outStoredKind, errorWord priorError);

}  // namespace tarnova
