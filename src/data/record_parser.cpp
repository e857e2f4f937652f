#include "data/record_parser.h"

#include <cstring>
#include <limits>

#include "data/delimiter_scan.h"
#include "data/record_entry.h"
#include "data/record_scan.h"
#include "data/text_kind.h"
#include "definitions/record_def_set.h"

namespace tarnova {

namespace {

constexpr std::string_view fieldDelimiters[] = {"\t", ",", " ", ";", "^"};
constexpr std::string_view recordDelimiters[] = {"\r", "\r\n", "\n"};
constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";

// What the file itself has to say: its record delimiter and its encoding.
errorWord askFile(const recordDefRec& definition, const char* path, std::string_view& recordDelimiter,
                  std::uint16_t& resolvedEncoding) {
    errorWord err = 0;
    if (definition.osType == osTypeFromFile) {
        delimiterCounts counts;
        err = scanRecordDelimiters(path, counts, err);
        recordDelimiter = err == 0 ? recordDelimiterOf(mostFrequentRecordDelimiter(counts)) : std::string_view{};
    }
    if (definition.dataType == dataTypeFromBytes) {
        textKind kind = textKind::ascii;
        err = detectFileTextKind(path, -1, kind, err);
        const bool isUtf8 = kind == textKind::utf8 || kind == textKind::utf8Marked;
        resolvedEncoding = isUtf8 ? resolvedUtf8 : resolvedEightBit;
    }
    return err;
}

// Steps over a byte order mark. False when there are too few bytes to tell and more are to come.
bool beginFile(parserState& state, parserInput& input, bool isUtf8) {
    const std::size_t left = input.size - input.used;
    if (isUtf8 && left < byteOrderMark.size() && !input.endOfFile) return false;
    state.started = 1;
    if (!isUtf8 || left < byteOrderMark.size()) return true;
    if (std::memcmp(input.bytes + input.used, byteOrderMark.data(), byteOrderMark.size()) != 0) return true;
    input.used += byteOrderMark.size();
    state.bytesTaken += byteOrderMark.size();
    state.record.dataOffset = static_cast<std::uint32_t>(byteOrderMark.size());
    return true;
}

}  // namespace

std::string_view fieldDelimiterOf(const recordDefFixedRec& definition) {
    if (definition.fileType == fileTypeCustom) return pstrView(definition.fDelimiter);
    if (definition.fileType < 0 || definition.fileType > fileTypeCustom) return {};
    return fieldDelimiters[definition.fileType];
}

std::string_view recordDelimiterOf(std::int16_t osType) {
    if (osType < 0 || osType >= osTypeFromFile) return {};
    return recordDelimiters[osType];
}

errorWord parserConfigure(const recordDefRec& definition, const char* dataFilePath, parserConfig& config,
                          std::uint16_t& resolvedEncoding, errorWord priorError) {
    if (priorError != 0) return priorError;
    config = {};
    resolvedEncoding = definition.dataType == dataTypeUtf8 ? resolvedUtf8 : resolvedEightBit;
    const std::string_view field = fieldDelimiterOf(definition);
    if (field.empty() && definition.fileType == fileTypeCustom) return errNoFieldDelimiter;

    std::string_view record = recordDelimiterOf(definition.osType);
    const errorWord err = askFile(definition, dataFilePath, record, resolvedEncoding);
    pstrSet(config.fieldDelimiter, field);
    pstrSet(config.recordDelimiter, record.empty() ? recordDelimiters[osTypeCr] : record);
    if (definition.textQualifier.enable != 0) pstrCopy(config.textQualifier, definition.textQualifier.string);
    config.keyFieldNumber = static_cast<std::int16_t>(fieldNumberOf(definition, definition.keyField));
    return err;
}

errorWord parseRecords(const parserConfig& config, parserState& state, parserInput& input, entryBatch& batch,
                       bool isUtf8, errorWord priorError) {
    if (priorError != 0) return priorError;
    batch.full = false;
    if (state.entryPending != 0 && !storeRecord(state, batch)) return 0;
    if (state.finished != 0) return 0;
    if (state.bytesTaken + (input.size - input.used) > std::numeric_limits<std::uint32_t>::max())
        return errFilePositioning;
    if (state.started == 0 && !beginFile(state, input, isUtf8)) return 0;
    return scanApplies(config) ? scanRecords(config, state, input, batch) : stepRecords(config, state, input, batch);
}

}  // namespace tarnova
