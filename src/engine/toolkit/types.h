// The error word and the numbers in it that more than one folder gives a meaning to.
#pragma once

#include <cstdint>

namespace tarnova {

/// A failure on its way to the surface. 0 is success; 1 to 377 is an entry of the error table (messages.h); the codes
/// of files and memory and the results of commands are small negative numbers, kept as their unsigned 16-bit pattern.
using errorWord = std::uint16_t;

/// The error word of a signed code, and back.
constexpr errorWord errorOfCode(int code) {
    return static_cast<errorWord>(static_cast<std::int16_t>(code));
}
constexpr std::int16_t codeOfError(errorWord error) {
    return static_cast<std::int16_t>(error);
}

inline constexpr errorWord errFailed = errorOfCode(-1);              // "failed", without a reason to tell apart
inline constexpr errorWord errHandleAllocation = errorOfCode(-108);  // a handle could not be allocated or resized
inline constexpr errorWord errHandleNull = errorOfCode(-109);        // appendToHandle was given no handle
inline constexpr errorWord errModuleMissing = errorOfCode(-1018);    // no module answered the call (64,518)

inline constexpr errorWord errDataFileMissing = 64;     // parameter: its name
inline constexpr errorWord errNoDocument = 94;          // an operation needs an open document
inline constexpr errorWord errNoDocumentOpen = 307;     // the same, raised by a run's start
inline constexpr errorWord errDefinitionMissing = 105;  // a link's definition or file; parameter: its name
inline constexpr errorWord errNoDataFileSet = 109;
inline constexpr errorWord errRunMemory = 113;  // out of memory in a run
inline constexpr errorWord errProcessedDocumentSave = 118;
inline constexpr errorWord errRangeBehindEnd = 191;     // the record range starts behind the end of the file
inline constexpr errorWord errTagRefused = 196;         // a tag was refused by a rule or is malformed
inline constexpr errorWord errFillerUsed = 198;         // the filler text was used: stack pad or end of file
inline constexpr errorWord errImportTranslation = 262;  // a translation table could not be loaded
inline constexpr errorWord errExportTranslation = 264;
inline constexpr errorWord errFillerSubstitution = 308;
inline constexpr errorWord errNoLinks = 331;          // the run has no links at all,
inline constexpr errorWord errNoTextLinks = 332;      // none in text,
inline constexpr errorWord errNoFrameLinks = 333;     // none on frames
inline constexpr errorWord errCommandSequence = 341;  // a sequence of undoable commands could not be begun
inline constexpr errorWord errTooManyPadded = 342;    // too many padded records in a slot
inline constexpr errorWord errImportFilter = 348;

}  // namespace tarnova
