// All candidates but CR LF are single bytes, so the longest match at a byte is found by looking one byte ahead.

#include "data/delimiter_scan.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <iterator>
#include <memory>

#include "data/byte_mask.h"
#include "data/error_place.h"
#include "data/record_parser.h"
#include "engine/toolkit/files.h"

namespace tarnova {

namespace {

constexpr std::size_t scanBlockSize = 256 * 1024;

enum class byteClass : std::uint8_t { plain, tab, comma, blank, semicolon, caret, cr, lf, quote };

constexpr std::array<byteClass, 256> makeByteClasses() {
    std::array<byteClass, 256> classes{};
    classes['\t'] = byteClass::tab;
    classes[','] = byteClass::comma;
    classes[' '] = byteClass::blank;
    classes[';'] = byteClass::semicolon;
    classes['^'] = byteClass::caret;
    classes['\r'] = byteClass::cr;
    classes['\n'] = byteClass::lf;
    classes['"'] = byteClass::quote;
    return classes;
}
constexpr std::array<byteClass, 256> byteClasses = makeByteClasses();

class DelimiterScan {
 public:
    explicit DelimiterScan(delimiterCounts& counts) : counts_(counts) {}

    void feed(const std::uint8_t* bytes, std::size_t size);
    /// Settles a CR that was the last byte.
    void end() {
        if (crPending_) countRecord(osTypeCr);
    }

 private:
    void countRecord(std::int16_t osType);
    void takeByte(byteClass found);

    delimiterCounts& counts_;
    std::uint32_t fieldsInLine_[scanFieldCandidateCount] = {};
    bool seenRecord_[scanRecordCandidateCount] = {};
    bool inQuotes_ = false;
    bool crPending_ = false;  // the last byte was a CR; whether it is a CR LF is open
};

void DelimiterScan::countRecord(std::int16_t osType) {
    crPending_ = false;
    const auto at = static_cast<std::size_t>(osType);
    ++counts_.record[at];
    for (std::size_t i = 0; i < scanFieldCandidateCount; ++i) {
        std::uint32_t& least = counts_.fieldMinimum[at][i];
        least = seenRecord_[at] ? std::min(least, fieldsInLine_[i]) : fieldsInLine_[i];
        counts_.fieldMaximum[at][i] = std::max(counts_.fieldMaximum[at][i], fieldsInLine_[i]);
        fieldsInLine_[i] = 0;
    }
    seenRecord_[at] = true;
}

void DelimiterScan::takeByte(byteClass found) {
    if (found == byteClass::quote) {
        inQuotes_ = !inQuotes_;
    } else if (found == byteClass::cr) {
        crPending_ = true;
    } else if (found == byteClass::lf) {
        countRecord(osTypeLf);
    } else if (found != byteClass::plain) {
        const auto at = static_cast<std::size_t>(found) - static_cast<std::size_t>(byteClass::tab);
        ++counts_.field[at];
        ++fieldsInLine_[at];
    }
}

void DelimiterScan::feed(const std::uint8_t* bytes, std::size_t size) {
    for (std::size_t i = 0; i < size; ++i) {
        if (inQuotes_) {
            const auto* quote = static_cast<const std::uint8_t*>(std::memchr(bytes + i, '"', size - i));
            if (quote == nullptr) return;
            i = static_cast<std::size_t>(quote - bytes);
            inQuotes_ = false;
            continue;
        }
        const byteClass found = byteClasses[bytes[i]];
        if (crPending_) {
            const bool isPair = found == byteClass::lf;
            countRecord(isPair ? osTypeCrLf : osTypeCr);
            if (isPair) continue;
        }
        if (found != byteClass::plain) takeByte(found);
    }
}

// The same for record delimiters alone.
class RecordDelimiterScan {
 public:
    explicit RecordDelimiterScan(delimiterCounts& counts) : counts_(counts) {}

    void feed(const std::uint8_t* bytes, std::size_t size) {
        forEachByteOf(bytes, size, {'\r', '\n', '"'}, [&](std::size_t at) { takeByte(bytes[at], taken_ + at); });
        taken_ += size;
    }
    void end() {}

 private:
    void takeByte(std::uint8_t byte, std::uint64_t at) {
        if (byte == '"') {
            inQuotes_ = !inQuotes_;
            return;
        }
        if (inQuotes_) return;
        const bool isPair = byte == '\n' && behindCr_ == at;
        if (isPair) --counts_.record[osTypeCr];
        if (byte == '\r') behindCr_ = at + 1;
        ++counts_.record[isPair ? osTypeCrLf : (byte == '\r' ? osTypeCr : osTypeLf)];
    }

    delimiterCounts& counts_;
    std::uint64_t taken_ = 0;
    std::uint64_t behindCr_ = 0;  // place behind the last CR; 0: none yet
    bool inQuotes_ = false;
};

template <typename Scan>
errorWord scanFile(fileHandle file, std::uint8_t* block, delimiterCounts& counts) {
    std::int64_t left = 0;
    if (fileSize(file, &left, nullptr, 0) != 0) left = scanFallbackBytes;
    Scan scan(counts);
    while (left > 0) {
        auto count = static_cast<std::size_t>(std::min<std::int64_t>(left, scanBlockSize));
        if (fileRead(file, block, &count, nullptr, 0) != 0) return errDataRead;
        if (count == 0) break;
        scan.feed(block, count);
        left -= static_cast<std::int64_t>(count);
    }
    scan.end();
    std::size_t further = 1;
    if (fileRead(file, block, &further, nullptr, 0) != 0) return errDataRead;
    counts.endOfFile = further == 0;
    return 0;
}

template <typename Scan>
errorWord scanPath(const char* path, delimiterCounts& counts, errorWord priorError) {
    if (priorError != 0) return priorError;
    counts = {};
    const blockPtr<std::uint8_t> block(static_cast<std::uint8_t*>(newBlock(scanBlockSize)));
    if (block == nullptr) return errScanMemory;
    fileHandle file = noFile;
    if (fileOpen(path, fileReadOnly, &file, nullptr, 0) != 0) return errorAt(errDataRead, path);
    const errorWord err = scanFile<Scan>(file, block.get(), counts);
    fileClose(file);
    return errorAt(err, path);
}

// The field candidates in the order in which they are preferred, behind the definition's own.
constexpr std::int16_t preferredFileTypes[] = {fileTypeTab, fileTypeComma, fileTypeSemicolon, fileTypeCaret,
                                               fileTypeSpace};

constexpr std::string_view candidateTexts[] = {"\t", ",", " ", ";", "^"};  // by fileType

// The candidate whose text is the delimiter of `definition`; -1 when it is none of the five.
std::int16_t candidateOf(const recordDefFixedRec& definition) {
    const std::string_view delimiter = fieldDelimiterOf(definition);
    for (const std::int16_t fileType : preferredFileTypes)
        if (delimiter == candidateTexts[fileType]) return fileType;
    return -1;
}

}  // namespace

errorWord scanDelimiters(const char* path, delimiterCounts& counts, errorWord priorError) {
    return scanPath<DelimiterScan>(path, counts, priorError);
}

errorWord scanRecordDelimiters(const char* path, delimiterCounts& counts, errorWord priorError) {
    return scanPath<RecordDelimiterScan>(path, counts, priorError);
}

std::int16_t mostFrequentRecordDelimiter(const delimiterCounts& counts) {
    const auto* most = std::max_element(std::begin(counts.record), std::end(counts.record));
    return *most == 0 ? std::int16_t{-1} : static_cast<std::int16_t>(most - std::begin(counts.record));
}

errorWord decideDelimiters(const delimiterCounts& counts, const recordDefRec& definition, delimiterDecision& decision,
                           errorWord priorError) {
    if (priorError != 0) return priorError;
    decision = {mostFrequentRecordDelimiter(counts), -1, 1};
    if (decision.osType < 0 && counts.endOfFile) decision.osType = definition.osType;
    if (decision.osType < 0 || decision.osType >= osTypeFromFile) return 0;

    const std::int16_t own = candidateOf(definition);
    std::int16_t candidate = own >= 0 && counts.field[own] > 0 ? own : std::int16_t{-1};
    decision.fileType = candidate >= 0 ? definition.fileType : std::int16_t{-1};
    for (const std::int16_t fileType : preferredFileTypes) {
        if (candidate >= 0) break;
        if (counts.field[fileType] > 0) candidate = decision.fileType = fileType;
    }
    if (candidate < 0)
        return definition.fileType == fileTypeCustom && definition.fDelimiter[0] == 0 ? errNoFieldDelimiter
                                                                                      : errorWord{0};
    const std::uint32_t most = counts.fieldMaximum[decision.osType][candidate];
    decision.fieldCount = (most == 0 ? counts.field[candidate] : most) + 1;
    return 0;
}

}  // namespace tarnova
