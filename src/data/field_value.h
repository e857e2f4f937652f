// Turns a field's raw bytes into its value, and a value into a field.
#pragma once

#include <cstddef>
#include <cstdint>

#include "definitions/record_def.h"
#include "engine/toolkit/files.h"
#include "engine/toolkit/types.h"

namespace tarnova {

inline constexpr errorWord errFieldWrite = 133;

/// The qualifier byte that is stripped from values: the text of `textQualifier` when it is on and one byte long, else
/// -1. A longer qualifier stays in the value.
[[nodiscard]] constexpr int strippedQualifier(const flaggedStr31Rec& textQualifier) {
    return textQualifier.enable != 0 && textQualifier.string[0] == 1 ? textQualifier.string[1] : -1;
}

/// Follows the qualifiers of one field: one on its own is no part of the value, a second in a row is. Starts anew with
/// each field.
struct qualifierFollower {
    std::uint8_t qualifierCount = 0;  // in a row, the one at the field's start not counted
    std::uint8_t contentSeen = 0;

    /// Whether the qualifier that is next stands for itself in the value.
    bool takeQualifier() {
        const bool isText = contentSeen != 0 && ++qualifierCount > 1;
        if (isText) qualifierCount = 0;
        contentSeen = 1;
        return isText;
    }
    void takePlain() {
        qualifierCount = 0;
        contentSeen = 1;
    }
};

/// The value of `length` raw bytes: qualifiers stripped, vertical tabs replaced ("\n" gives CR, "\r" gives LF, any
/// other text leaves them), the import table applied. `destination` has room for `length` bytes. Gives the value's
/// length.
[[nodiscard]] std::uint32_t copyFieldValue(std::uint8_t* destination, const std::uint8_t* field, std::uint32_t length,
                                           const flaggedStr31Rec& textQualifier, const flaggedStr31Rec& vtTranslation);

/// Whether the value of raw bytes (qualifiers stripped as above, nothing else) is `text`. Without `caseSensitive` A to
/// Z fold to lower case.
[[nodiscard]] bool fieldValueEquals(const std::uint8_t* field, std::uint32_t length, const std::uint8_t* text,
                                    const flaggedStr31Rec& textQualifier, bool caseSensitive);

/// A text file under construction. The caller opens and closes `file` and owns `buffer`.
struct delimitedOutput {
    fileHandle file;
    const recordDefRec* definition;
    std::uint8_t* buffer;
    std::size_t capacity;  // at least 1 byte
    std::size_t used;
    bool lineStarted;  // a field has been written since the line began; the caller clears it at a line's end
};

/// Writes one field: the delimiter unless it is the first of its line, the qualifiers, and the value with qualifiers
/// doubled and, where the definition's vtTranslation is on, CR and byte 7 as vertical tabs. `noData` writes an empty
/// field. Error: errFieldWrite.
[[nodiscard]] errorWord writeDelimitedField(delimitedOutput& output, const std::uint8_t* value, std::size_t length,
                                            bool noData, errorWord priorError);
/// Appends bytes as they are, such as a record delimiter. Error: errFieldWrite.
[[nodiscard]] errorWord writeDelimitedBytes(delimitedOutput& output, const void* bytes, std::size_t count,
                                            errorWord priorError);
/// Writes what is in the buffer to the file. Error: errFieldWrite.
[[nodiscard]] errorWord flushDelimitedOutput(delimitedOutput& output, errorWord priorError);

}  // namespace tarnova
