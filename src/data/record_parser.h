// Cuts a delimited text file into records and fields. The parser goes over the file once and allocates nothing for a
// record.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "data/field_value.h"
#include "definitions/record_def.h"
#include "engine/toolkit/pstring.h"
#include "engine/toolkit/types.h"

namespace tarnova {

inline constexpr std::uint32_t recordFieldCapacity = 1500;  // fields in a record
inline constexpr std::uint32_t keyCapacity = 64;            // bytes of a key; a longer one is cut
inline constexpr std::uint32_t delimiterCapacity = 64;      // bytes of any delimiter
inline constexpr std::uint32_t parserRingSize = delimiterCapacity + 1;
inline constexpr std::uint32_t entryFixedSize = 29;  // bytes of an entry with an empty key and no field
inline constexpr std::uint32_t entryMaxSize = entryFixedSize + keyCapacity + 4 * (recordFieldCapacity + 1);

inline constexpr std::uint16_t resolvedEightBit = 0;
inline constexpr std::uint16_t resolvedUtf8 = 1;

inline constexpr std::uint32_t recordHasContent = 1;  // bit of parsedRecord::flags: a qualifier or plain byte

inline constexpr errorWord errFilePositioning = 13;
inline constexpr errorWord errFileBuffer = 14;
inline constexpr errorWord errDataRead = 16;
inline constexpr errorWord errTooManyFields = 67;  // pendingErrorParam: number of the record, from 1
inline constexpr errorWord errNoFieldDelimiter = 96;

/// The parser's constants for one file.
struct parserConfig {
    Str64 fieldDelimiter;
    Str64 textQualifier;  // empty: none
    Str64 recordDelimiter;
    std::int16_t keyFieldNumber;  // from 1; -1: the file has no key field
};

/// The record under construction.
struct parsedRecord {
    std::uint32_t dataOffset;  // bytes from the start of the file
    std::uint32_t dataLength;  // bytes, record delimiter included
    std::uint32_t recordNumber;
    std::uint32_t flags;
    Str64 key;
    std::uint32_t fieldCount;                             // field delimiters so far
    std::uint32_t delimiterLength;                        // bytes; 0 when the record has a single field
    std::uint32_t fieldLengths[recordFieldCapacity + 1];  // raw bytes, qualifiers included
};

/// What lives from byte to byte. Starts cleared.
struct parserState {
    std::uint8_t ring[parserRingSize];
    std::uint32_t writePos;        // where the next byte from the file goes
    std::uint32_t readPos;         // the next byte to examine
    std::uint32_t anchor;          // the first byte that isn't settled
    std::uint32_t qualifierMatch;  // bytes matched so far in each of the three
    std::uint32_t recordMatch;
    std::uint32_t fieldMatch;
    std::uint32_t qualifierCount;  // qualifiers seen in a row
    std::uint8_t contentSeen;      // a qualifier or plain byte stood in this field already
    std::uint8_t inQuotes;
    std::uint8_t started;       // the start of the file has been looked at for a byte order mark
    std::uint8_t entryPending;  // `record` is complete but didn't fit into the last batch
    std::uint8_t lastRecord;    // `record` ended with the file
    std::uint8_t finished;      // the last record of the file has been stored
    std::uint64_t bytesTaken;   // of the file, so far
    parsedRecord record;
};

/// A piece of the file. `used` counts the bytes that the parser has taken; the caller offers the rest again.
struct parserInput {
    const std::uint8_t* bytes;
    std::size_t size;
    std::size_t used;
    bool endOfFile;  // nothing follows these bytes
};

/// Where complete entries go. An entry is byte-packed: its length, flags, data offset, data length, record number, the
/// key as a Pascal string, number of fields, delimiter length, length of each field; all but the key are 32-bit numbers
/// in machine order.
struct entryBatch {
    std::uint8_t* bytes;
    std::size_t capacity;  // at least entryMaxSize
    std::size_t used;
    std::uint32_t* references;  // where each entry begins
    std::size_t referenceCapacity;
    std::size_t referenceCount;
    bool full;  // an entry waits that doesn't fit
};

/// Fills `config` from the definition and finds out the record delimiter and the encoding where the definition leaves
/// them to the file. `resolvedEncoding` is resolvedEightBit or resolvedUtf8. Errors: errNoFieldDelimiter (fileType 5
/// only), 13, 14, 16, 111; pendingErrorParam names the file.
[[nodiscard]] errorWord parserConfigure(const recordDefRec& definition, const char* dataFilePath, parserConfig& config,
                                        std::uint16_t& resolvedEncoding, errorWord priorError);

/// Parses until the batch is full or the input is used up. `state.finished` is set when the input was the file's last
/// and the entry of its last record is stored. A partial match of a delimiter that doesn't become a whole one is plain
/// text, so that every byte of the file belongs to exactly one field or delimiter. Errors: errTooManyFields,
/// errFilePositioning for a file beyond 4 GB.
[[nodiscard]] errorWord parseRecords(const parserConfig& config, parserState& state, parserInput& input,
                                     entryBatch& batch, bool isUtf8, errorWord priorError);

/// The field delimiter of a definition; empty for fileType 5 without a text and for a fileType out of range.
[[nodiscard]] std::string_view fieldDelimiterOf(const recordDefFixedRec& definition);
/// The record delimiter of osType 0 to 2; empty for any other.
[[nodiscard]] std::string_view recordDelimiterOf(std::int16_t osType);

}  // namespace tarnova
