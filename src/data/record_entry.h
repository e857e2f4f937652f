// The entry of a record as the index stores it, and during a build with its key. Own to this folder.
#pragma once

#include <cstdint>
#include <cstring>

#include "data/record_parser.h"

namespace tarnova {

// Offsets in an entry. Without its key, the number of fields follows the record number at once.
inline constexpr std::uint32_t entryLengthAt = 0;
inline constexpr std::uint32_t entryFlagsAt = 4;
inline constexpr std::uint32_t entryDataOffsetAt = 8;
inline constexpr std::uint32_t entryDataLengthAt = 12;
inline constexpr std::uint32_t entryRecordNumberAt = 16;
inline constexpr std::uint32_t entryKeyAt = 20;          // while building
inline constexpr std::uint32_t storedFieldCountAt = 20;  // in an index
inline constexpr std::uint32_t storedDelimiterLengthAt = 24;
inline constexpr std::uint32_t storedFieldLengthsAt = 28;

inline std::uint32_t load32(const std::uint8_t* at) {
    std::uint32_t value;
    std::memcpy(&value, at, sizeof value);
    return value;
}
inline void store32(std::uint8_t* at, std::uint32_t value) {
    std::memcpy(at, &value, sizeof value);
}

/// Ends the record under construction: appends its entry to the batch and begins the next record. False when the entry
/// doesn't fit: the batch is marked full and the record stays pending.
bool storeRecord(parserState& state, entryBatch& batch);

/// Appends a byte to the key while there is room.
inline void appendKeyByte(parsedRecord& record, std::uint8_t byte) {
    if (record.key[0] < keyCapacity) record.key[++record.key[0]] = byte;
}

/// Whether the field under construction is the key field.
inline bool inKeyField(const parserConfig& config, const parsedRecord& record) {
    return static_cast<std::int64_t>(record.fieldCount) + 1 == config.keyFieldNumber;
}

/// errTooManyFields with the number of the record, as a person counts it.
errorWord tooManyFields(const parsedRecord& record);

}  // namespace tarnova
