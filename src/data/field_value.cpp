#include "data/field_value.h"

#include <cstring>
#include <string_view>

#include "data/record_parser.h"
#include "data/translation_table.h"
#include "engine/toolkit/pstring.h"

namespace tarnova {

namespace {

constexpr std::uint8_t verticalTab = 11;
constexpr std::uint8_t bell = 7;

// Copies without qualifiers. Runs between qualifiers are copied whole.
std::uint32_t copyUnqualified(std::uint8_t* destination, const std::uint8_t* field, std::uint32_t length,
                              int qualifier) {
    const std::uint8_t* const end = field + length;
    std::uint8_t* out = destination;
    qualifierFollower follower;
    while (field < end) {
        const auto left = static_cast<std::size_t>(end - field);
        const auto* found = static_cast<const std::uint8_t*>(std::memchr(field, qualifier, left));
        const std::size_t run = found == nullptr ? left : static_cast<std::size_t>(found - field);
        if (run > 0) {
            std::memcpy(out, field, run);
            out += run;
            follower.takePlain();
        }
        field += run;
        if (field == end) break;
        if (follower.takeQualifier()) *out++ = *field;
        ++field;
    }
    return static_cast<std::uint32_t>(out - destination);
}

void replaceVerticalTabs(std::uint8_t* bytes, std::uint32_t length, const flaggedStr31Rec& vtTranslation) {
    if (vtTranslation.enable == 0) return;
    const std::string_view text = pstrView(vtTranslation.string);
    std::uint8_t by = verticalTab;
    if (text == "\\n") by = '\r';
    if (text == "\\r") by = '\n';
    for (std::uint32_t i = 0; i < length; ++i)
        if (bytes[i] == verticalTab) bytes[i] = by;
}

bool bytesEqual(std::uint8_t a, std::uint8_t b, bool caseSensitive) {
    return caseSensitive ? a == b : ascii::lower(a) == ascii::lower(b);
}

}  // namespace

std::uint32_t copyFieldValue(std::uint8_t* destination, const std::uint8_t* field, std::uint32_t length,
                             const flaggedStr31Rec& textQualifier, const flaggedStr31Rec& vtTranslation) {
    if (length == 0) return 0;
    const int qualifier = strippedQualifier(textQualifier);
    std::uint32_t valueLength = length;
    if (qualifier >= 0)
        valueLength = copyUnqualified(destination, field, length, qualifier);
    else
        std::memcpy(destination, field, length);
    replaceVerticalTabs(destination, valueLength, vtTranslation);
    applyImportTable(destination, valueLength);
    return valueLength;
}

bool fieldValueEquals(const std::uint8_t* field, std::uint32_t length, const std::uint8_t* text,
                      const flaggedStr31Rec& textQualifier, bool caseSensitive) {
    const int qualifier = strippedQualifier(textQualifier);
    const std::string_view wanted = pstrView(text);
    std::size_t at = 0;
    qualifierFollower follower;
    for (std::uint32_t i = 0; i < length; ++i) {
        if (field[i] == qualifier) {
            if (!follower.takeQualifier()) continue;
        } else {
            follower.takePlain();
        }
        if (at == wanted.size() || !bytesEqual(field[i], static_cast<std::uint8_t>(wanted[at]), caseSensitive))
            return false;
        ++at;
    }
    return at == wanted.size();
}

errorWord flushDelimitedOutput(delimitedOutput& output, errorWord priorError) {
    if (priorError != 0) return priorError;
    std::size_t count = output.used;
    const errorWord err = fileWrite(output.file, output.buffer, &count, nullptr, 0);
    output.used = 0;
    return err == 0 ? errorWord{0} : errFieldWrite;
}

errorWord writeDelimitedBytes(delimitedOutput& output, const void* bytes, std::size_t count, errorWord priorError) {
    errorWord err = priorError;
    const auto* from = static_cast<const std::uint8_t*>(bytes);
    while (err == 0 && count > 0) {
        if (output.used == output.capacity) err = flushDelimitedOutput(output, err);
        const std::size_t room = output.capacity - output.used;
        const std::size_t piece = count < room ? count : room;
        std::memcpy(output.buffer + output.used, from, piece);
        output.used += piece;
        from += piece;
        count -= piece;
    }
    return err;
}

errorWord writeDelimitedField(delimitedOutput& output, const std::uint8_t* value, std::size_t length, bool noData,
                              errorWord priorError) {
    errorWord err = priorError;
    const recordDefRec& definition = *output.definition;
    const std::string_view delimiter = fieldDelimiterOf(definition);
    const std::string_view qualifier =
        definition.textQualifier.enable != 0 ? pstrView(definition.textQualifier.string) : std::string_view{};

    if (output.lineStarted) err = writeDelimitedBytes(output, delimiter.data(), delimiter.size(), err);
    err = writeDelimitedBytes(output, qualifier.data(), qualifier.size(), err);
    for (std::size_t i = 0; i < length && !noData && err == 0; ++i) {
        std::uint8_t pair[2] = {value[i], value[i]};
        if (definition.vtTranslation.enable != 0 && (value[i] == '\r' || value[i] == bell)) pair[0] = verticalTab;
        std::uint32_t count = !qualifier.empty() && pair[0] == static_cast<std::uint8_t>(qualifier[0]) ? 2 : 1;
        applyExportTable(pair, count);
        err = writeDelimitedBytes(output, pair, count, err);
    }
    err = writeDelimitedBytes(output, qualifier.data(), qualifier.size(), err);
    if (err == 0) output.lineStarted = true;
    return err;
}

}  // namespace tarnova
