// Recognises how a text is encoded, and checks a data file's encoding against its definition.
#pragma once

#include <cstddef>
#include <cstdint>

#include "definitions/record_def.h"
#include "engine/toolkit/types.h"

namespace tarnova {

enum class textKind : std::int16_t {
    none = 0,      // the bytes are binary
    eightBit = 1,  // 8-bit text with bytes above 127
    ascii = 2,
    utf8Marked = 3,  // "marked": with a byte order mark
    utf8 = 4,
    utf16LittleMarked = 5,
    utf16Little = 6,
    utf16BigMarked = 7,
    utf16Big = 8,
};

/// textKind folded for the check against a definition.
enum class encodingClass : std::int16_t {
    binary = -1,  // treated as 8-bit text
    ascii = 0,
    utf8 = 1,
    utf16 = 2,
    thirdKind = 3,  // reserved: no kind maps to it
    eightBit = 4,
};

struct textKindSettings {
    bool nullSuggestsBinary = true;
    std::uint32_t expectedNullPercent = 70;    // zero bytes in the half of UTF-16 pairs that is zero in Latin text
    std::uint32_t unexpectedNullPercent = 10;  // zero bytes in the other half
};

inline constexpr errorWord errUnknownTextKind = 350;

/// `bytes` may be null when `count` is 0. An end in the middle of a UTF-8 sequence is no fault.
[[nodiscard]] textKind detectTextKind(const textKindSettings& settings, const void* bytes, std::size_t count);

[[nodiscard]] encodingClass encodingClassOf(textKind kind);
/// The class of bytes, recognised with the usual settings.
[[nodiscard]] encodingClass encodingClassOf(const void* bytes, std::size_t count);

/// textKind of a file, of which at most `maxBytes` are read (below 0: all). Errors: 13, 14, 16.
[[nodiscard]] errorWord detectFileTextKind(const char* path, std::int64_t maxBytes, textKind& kind,
                                           errorWord priorError);

/// Checks the data file against the dataType of the definition, which the current set holds under `definitionName`. A
/// mismatch is asked about; while nobody watches the answer is yes. `openStatus` is 0, 2, 3, 4 or -5, -6, -7.
[[nodiscard]] errorWord checkDataFileEncoding(const std::uint8_t* definitionName, const char* path, bool& accepted,
                                              std::int16_t& openStatus, errorWord priorError);

/// The same with the definition at hand.
[[nodiscard]] errorWord checkDataFileEncodingOf(const recordDefRec& definition, const char* path, bool& accepted,
                                                std::int16_t& openStatus, errorWord priorError);

}  // namespace tarnova
