#include "data/text_kind.h"

#include <cstring>
#include <memory>

#include "data/data_source.h"
#include "data/error_place.h"
#include "data/questions.h"
#include "data/record_parser.h"
#include "definitions/definition_state.h"
#include "engine/session/preferences.h"
#include "engine/toolkit/files.h"

namespace tarnova {

namespace {

constexpr std::size_t readBlockSize = 256 * 1024;  // even, so that UTF-16 pairs don't straddle blocks
constexpr std::uint16_t messageUtf8ForEightBit = 229;
constexpr std::uint16_t messageUtf16 = 230;
constexpr std::uint16_t messageThirdKind = 231;
constexpr std::uint16_t messageEightBitForUtf8 = 236;

bool isContinuation(std::uint8_t byte) {
    return byte >= 0x80 && byte <= 0xBF;
}

// Continuation bytes that follow a first byte above 127; -1 when it can't be one.
int continuationsOf(std::uint8_t first) {
    if (first >= 0xC2 && first <= 0xDF) return 1;
    if (first >= 0xE0 && first <= 0xEF) return 2;
    return first >= 0xF0 && first <= 0xF4 ? 3 : -1;
}

// Gathers over blocks what all the tests want to know, so that a file is read once and none of it is kept.
class TextKindScan {
 public:
    explicit TextKindScan(const textKindSettings& settings) : settings_(settings) {}

    /// Every block but the last must have an even size.
    void feed(const std::uint8_t* bytes, std::size_t count);
    textKind result() const;

 private:
    void feedUtf8(const std::uint8_t* bytes, std::size_t count);
    void feedPairs(const std::uint8_t* bytes, std::size_t count);
    bool halvesSuggest(std::uint64_t zeroHalf, std::uint64_t otherHalf) const;

    textKindSettings settings_;
    std::uint8_t head_[3] = {};
    std::uint64_t size_ = 0;
    bool isUtf8_ = true;
    bool sawContinuation_ = false;
    int awaited_ = 0;  // continuation bytes of the sequence under way
    std::uint64_t zerosEven_ = 0, zerosOdd_ = 0;
    bool littleLineEnd_ = false, bigLineEnd_ = false;
};

void TextKindScan::feed(const std::uint8_t* bytes, std::size_t count) {
    for (std::size_t i = 0; i < count && size_ + i < sizeof head_; ++i)
        head_[size_ + i] = bytes[i];
    if (isUtf8_) feedUtf8(bytes, count);
    if (count > 0 && std::memchr(bytes, 0, count) != nullptr) feedPairs(bytes, count);
    size_ += count;
}

void TextKindScan::feedUtf8(const std::uint8_t* bytes, std::size_t count) {
    constexpr std::uint64_t highBits = 0x8080808080808080u;
    if (settings_.nullSuggestsBinary && count > 0 && std::memchr(bytes, 0, count) != nullptr) {
        isUtf8_ = false;
        return;
    }
    for (std::size_t i = 0; i < count; ++i) {
        std::uint64_t eight = highBits;
        if (awaited_ == 0 && count - i >= sizeof eight) std::memcpy(&eight, bytes + i, sizeof eight);
        if ((eight & highBits) == 0) {
            i += sizeof eight - 1;
            continue;
        }
        if (awaited_ > 0) {
            isUtf8_ = isContinuation(bytes[i]);
            sawContinuation_ = true;
            --awaited_;
        } else if (bytes[i] > 127) {
            awaited_ = continuationsOf(bytes[i]);
            isUtf8_ = awaited_ > 0;
        }
        if (!isUtf8_) return;
    }
}

void TextKindScan::feedPairs(const std::uint8_t* bytes, std::size_t count) {
    const auto isLineEnd = [](std::uint8_t byte) { return byte == '\r' || byte == '\n'; };
    for (std::size_t i = 0; i + 1 < count; i += 2) {
        const std::uint8_t first = bytes[i], second = bytes[i + 1];
        if (first == 0) ++zerosEven_;
        if (second == 0) ++zerosOdd_;
        if (isLineEnd(first) && second == 0) littleLineEnd_ = true;
        if (first == 0 && isLineEnd(second)) bigLineEnd_ = true;
    }
    if (count % 2 != 0 && bytes[count - 1] == 0) ++zerosEven_;
}

// Whether one half of the pairs is mostly zero and the other hardly ever.
bool TextKindScan::halvesSuggest(std::uint64_t zeroHalf, std::uint64_t otherHalf) const {
    return 200 * otherHalf < settings_.unexpectedNullPercent * size_ &&
           200 * zeroHalf > settings_.expectedNullPercent * size_;
}

textKind TextKindScan::result() const {
    if (size_ >= 2 && head_[0] == 0xFF && head_[1] == 0xFE) return textKind::utf16LittleMarked;
    if (size_ >= 2 && head_[0] == 0xFE && head_[1] == 0xFF) return textKind::utf16BigMarked;
    if (size_ >= 3 && std::memcmp(head_, "\xEF\xBB\xBF", 3) == 0) return textKind::utf8Marked;
    if (isUtf8_) return sawContinuation_ ? textKind::utf8 : textKind::ascii;
    if (littleLineEnd_ != bigLineEnd_) return littleLineEnd_ ? textKind::utf16Little : textKind::utf16Big;
    if (halvesSuggest(zerosOdd_, zerosEven_)) return textKind::utf16Little;
    if (halvesSuggest(zerosEven_, zerosOdd_)) return textKind::utf16Big;
    const bool hasZeros = zerosEven_ + zerosOdd_ > 0;
    return hasZeros && settings_.nullSuggestsBinary ? textKind::none : textKind::eightBit;
}

errorWord feedFile(fileHandle file, std::int64_t maxBytes, std::uint8_t* block, TextKindScan& scan) {
    std::uint64_t left = maxBytes < 0 ? ~std::uint64_t{0} : static_cast<std::uint64_t>(maxBytes);
    for (;;) {
        std::size_t count = left < readBlockSize ? static_cast<std::size_t>(left) : readBlockSize;
        const errorWord err = fileRead(file, block, &count, nullptr, 0);
        if (err != 0) return errDataRead;
        if (count == 0) return 0;
        scan.feed(block, count);
        left -= count;
    }
}

// One row of the check: which question a class asks for a dataType, and what its answers come to.
struct encodingQuestion {
    std::uint16_t message;  // 0: nothing to ask
    std::int16_t accepted;
    std::int16_t refused;
};

encodingQuestion questionFor(encodingClass found, std::int16_t dataType) {
    switch (found) {
        case encodingClass::utf8:
            if (dataType == dataTypeEightBit)
                return {messageUtf8ForEightBit, openStatusDataType, openStatusDataTypeRefused};
            break;
        case encodingClass::utf16:
            return {messageUtf16, openStatusUtf16, openStatusUtf16Refused};
        case encodingClass::thirdKind:
            return {messageThirdKind, openStatusThirdKind, openStatusThirdKindRefused};
        case encodingClass::binary:
        case encodingClass::eightBit:
            if (dataType == dataTypeUtf8)
                return {messageEightBitForUtf8, openStatusDataType, openStatusDataTypeRefused};
            break;
        case encodingClass::ascii:
            break;
    }
    return {0, openStatusOpen, openStatusOpen};
}

}  // namespace

textKind detectTextKind(const textKindSettings& settings, const void* bytes, std::size_t count) {
    TextKindScan scan(settings);
    scan.feed(static_cast<const std::uint8_t*>(bytes), count);
    return scan.result();
}

encodingClass encodingClassOf(textKind kind) {
    switch (kind) {
        case textKind::none:
            return encodingClass::binary;
        case textKind::eightBit:
            return encodingClass::eightBit;
        case textKind::ascii:
            return encodingClass::ascii;
        case textKind::utf8Marked:
        case textKind::utf8:
            return encodingClass::utf8;
        default:
            return encodingClass::utf16;
    }
}

encodingClass encodingClassOf(const void* bytes, std::size_t count) {
    return encodingClassOf(detectTextKind(textKindSettings{}, bytes, count));
}

errorWord detectFileTextKind(const char* path, std::int64_t maxBytes, textKind& kind, errorWord priorError) {
    if (priorError != 0) return priorError;
    const blockPtr<std::uint8_t> block(static_cast<std::uint8_t*>(newBlock(readBlockSize)));
    if (block == nullptr) return errFileBuffer;
    fileHandle file = noFile;
    if (fileOpen(path, fileReadOnly, &file, nullptr, 0) != 0) return errorAt(errDataRead, path);
    TextKindScan scan{textKindSettings{}};
    const errorWord err = feedFile(file, maxBytes, block.get(), scan);
    fileClose(file);
    kind = scan.result();
    return errorAt(err, path);
}

errorWord checkDataFileEncodingOf(const recordDefRec& definition, const char* path, bool& accepted,
                                  std::int16_t& openStatus, errorWord priorError) {
    if (priorError != 0) return priorError;
    textKind kind = textKind::ascii;
    const errorWord err = detectFileTextKind(path, appPrefs().encodingScanBytes, kind, 0);
    if (err != 0) return err;
    const encodingQuestion question = questionFor(encodingClassOf(kind), definition.dataType);
    accepted = question.message == 0 || askUnlessUnattended(question.message);
    openStatus = accepted ? question.accepted : question.refused;
    return 0;
}

errorWord checkDataFileEncoding(const std::uint8_t* definitionName, const char* path, bool& accepted,
                                std::int16_t& openStatus, errorWord priorError) {
    recordDefRec* definition = nullptr;
    const errorWord err = findRecordDef(definitionState().currentDefSet, definitionName, definition, priorError);
    if (err != 0) return err;
    if (definition == nullptr) return errorAt(errDefinitionMissing, pstrView(definitionName));
    return checkDataFileEncodingOf(*definition, path, accepted, openStatus, 0);
}

}  // namespace tarnova
