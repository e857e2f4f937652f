#include "tags/tag_syntax.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string>

#include "document/walk_state.h"

namespace tarnova {

namespace {

constexpr std::size_t noPlace = std::string_view::npos;
constexpr std::size_t separatorLimit = 13;
constexpr std::size_t separatorsWithoutColon = 10;  // up to here a missing ":" is told as such
constexpr std::size_t shortFieldLimit = 30;         // written characters of kind, mode and extra values

bool isBlank(char c) {
    return c == ' ' || c == '\t';
}

std::size_t findMark(std::string_view text, std::size_t from, std::string_view angled, std::string_view squared) {
    for (std::size_t at = from; (at = text.find_first_of("<[", at)) != noPlace; ++at) {
        if (text.substr(at, angled.size()) == angled || text.substr(at, squared.size()) == squared) return at;
    }
    return noPlace;
}

std::size_t findOpening(std::string_view text, std::size_t from) {
    return findMark(text, from, "<!$", "[!$");
}

/// What steps in front of the fields find out; all places count from the start of the text.
struct outlineRec {
    std::int32_t error = 0;
    std::size_t fieldsLimit = 0;    // the ":" at which the written list ends
    std::size_t lastSeparator = 0;  // the list's last ";", which may stand behind that
    std::size_t dataStart = 0;
    std::size_t dataLimit = 0;
    std::size_t limit = 0;  // of the tag
};

/// Places of the ":" and ";" between the opening mark and its ">".
std::int32_t checkSeparators(std::string_view text, std::size_t fieldsStart, std::size_t close, outlineRec& out) {
    const std::string_view inside = text.substr(fieldsStart, close - fieldsStart);
    const auto count = static_cast<std::size_t>(std::count(inside.begin(), inside.end(), ';'));
    if (count == 0 || count > separatorLimit) return tagErrorSeparators;
    const std::size_t last = inside.rfind(';');
    const std::size_t first = inside.find(':');
    const std::size_t second = first == noPlace ? noPlace : inside.find(':', first + 1);
    const bool firstBehind = first != noPlace && first > last;
    const bool secondBehind = second != noPlace && second > last;
    if (!firstBehind && !secondBehind) return count <= separatorsWithoutColon ? tagErrorNoColon : tagErrorSeparators;
    if (firstBehind && secondBehind) return tagErrorTwoColons;
    out.lastSeparator = fieldsStart + last;
    out.fieldsLimit = fieldsStart + first;
    return 0;
}

outlineRec outlineOf(std::string_view segment, std::size_t start) {
    outlineRec out;
    const std::size_t fieldsStart = start + tagOpeningLength;
    const std::size_t close = segment.find_first_of(">]", fieldsStart);
    const std::size_t closing = findMark(segment, fieldsStart, "<!!>", "[!!]");
    if (close == noPlace || closing < close) {
        out.error = tagErrorOutline;
        return out;
    }
    out.error = checkSeparators(segment, fieldsStart, close, out);
    if (out.error != 0) return out;
    const auto behindBlanks = [segment](std::size_t from, std::size_t limit) {
        while (from < limit && isBlank(segment[from]))
            ++from;
        return from;
    };
    out.dataStart = behindBlanks(out.fieldsLimit + 1, close);
    out.dataLimit = close;
    out.limit = close + 1;
    if (out.dataStart < close) return out;
    if (closing == noPlace) {
        out.error = tagErrorNoEnd;
        return out;
    }
    out.dataStart = behindBlanks(close + 1, closing);
    out.dataLimit = closing;
    out.limit = closing + tagClosingLength;
    return out;
}

std::optional<unsigned> digitOf(char c) {
    if (c >= '0' && c <= '9') return static_cast<unsigned>(c - '0');
    const char lower = ascii::lower(c);
    if (lower >= 'a' && lower <= 'f') return static_cast<unsigned>(lower - 'a' + 10);
    return std::nullopt;
}

/// The byte of two hexadecimal digits at a place.
std::optional<char> byteAt(std::string_view text, std::size_t at) {
    if (at + 2 > text.size()) return std::nullopt;
    const std::optional<unsigned> high = digitOf(text[at]), low = digitOf(text[at + 1]);
    if (!high || !low) return std::nullopt;
    return static_cast<char>(*high << 4 | *low);
}

/// Reads the fields of a tag whose outline holds.
class FieldReader {
 public:
    FieldReader(std::string_view text, const outlineRec& outline, std::size_t fieldsStart, parsedTag& itsOut)
        : out(itsOut) {
        const std::string_view list = text.substr(0, outline.fieldsLimit);
        std::size_t from = fieldsStart;
        for (std::size_t i = 0; i < tagFieldCount && from <= list.size(); ++i) {
            const std::size_t limit = std::min(list.find(';', from), list.size());
            while (from < limit && isBlank(list[from]))
                ++from;
            fields[i] = list.substr(from, limit - from);
            from = limit + 1;
        }
        lacksRoom = outline.fieldsLimit < outline.lastSeparator;
    }

    void read() {
        tagDataRec& tag = out.tag;
        takeName(0, tag.searchKey);
        takeName(1, tag.extractionRecordName);
        takeName(2, walkState().engineMode == 0 ? tag.ruleName : tag.searchCriteriaName);
        takeName(3, tag.styleRecordName);
        takeText(4, tag.notes1, notesWrittenLimit);
        takeText(5, tag.notes2, notesWrittenLimit);
        takeText(6, tag.notes3, notesWrittenLimit);
        if (lacksRoom) out.errorCode = tagErrorTooLong;
        takeKind();
        if (!takeMedia()) return;
        if (out.errorCode == 0 && !hasWhatItsKindNeeds()) out.errorCode = tagErrorMissing;
        takeModeAndExtras();
    }

 private:
    static constexpr std::size_t nameWrittenLimit = 255;
    static constexpr std::size_t notesWrittenLimit = 765;

    template <std::size_t size>
    void takeName(std::size_t index, std::uint8_t (&member)[size]) {
        takeText(index, member, nameWrittenLimit);
    }

    template <std::size_t size>
    void takeText(std::size_t index, std::uint8_t (&member)[size], std::size_t writtenLimit) {
        const std::string_view written = fields[index];
        if (written.size() > writtenLimit) {
            out.errorCode = tagErrorTooLong;
            return;
        }
        const std::optional<std::string> value = unescaped(written);
        if (!value) {
            out.errorCode = tagErrorEscape;
        } else if (value->size() >= size) {
            out.errorCode = tagErrorTooLong;
        } else {
            pstrSet(member, *value);
        }
    }

    static std::optional<std::string> unescaped(std::string_view written) {
        std::string value;
        for (std::size_t i = 0; i < written.size(); ++i) {
            if (written[i] != '%') {
                value += written[i];
                continue;
            }
            const std::optional<char> byte = byteAt(written, i + 1);
            if (!byte) return std::nullopt;
            value += *byte;
            i += 2;
        }
        return value;
    }

    void takeKind() {
        const std::string_view kind = fields[7];
        if (kind.size() > shortFieldLimit) out.errorCode = tagErrorTooLong;
        out.tag.tagKind = kind == "1" ? 1 : kind == "2" ? 2 : 0;
    }

    /// False when that ends the tag's checks.
    bool takeMedia() {
        const std::string_view digits = fields[8];
        if (digits.empty()) return true;
        if (digits.size() % 2 != 0) return fail(tagErrorMedia);
        handlePtr bytes(newHandle(digits.size() / 2));
        if (bytes == nullptr) return fail(tagErrorMemory);
        for (std::size_t i = 0; i < digits.size(); i += 2) {
            const std::optional<char> byte = byteAt(digits, i);
            if (!byte) return fail(tagErrorMedia);
            (*bytes.get())[i / 2] = static_cast<std::byte>(*byte);
        }
        out.mediaLength = static_cast<std::int32_t>(digits.size() / 2);
        out.mediaData = bytes.release();
        return true;
    }

    bool fail(std::int32_t error) {
        out.errorCode = error;
        return false;
    }

    [[nodiscard]] bool hasWhatItsKindNeeds() const {
        const bool hasNames = out.tag.searchKey[0] != 0 && out.tag.extractionRecordName[0] != 0;
        const bool hasMedia = out.mediaData != nullptr;
        return (out.tag.tagKind == 1 || hasNames) && (out.tag.tagKind == 0 || hasMedia);
    }

    void takeModeAndExtras() {
        const std::string_view mode = fields[9];
        if (mode.size() > shortFieldLimit) out.errorCode = tagErrorTooLong;
        out.tagMode = mode == "1" ? tagModeCheckOnly : tagModeUsual;
        bool hasAll = true;
        for (std::size_t i = 0; i < 3; ++i) {
            const std::string_view value = fields[10 + i];
            if (value.size() > shortFieldLimit) {
                out.errorCode = tagErrorTooLong;
            } else {
                pstrSet(out.extra[i], value);
            }
            hasAll = hasAll && !value.empty();
        }
        if (out.tagMode == tagModeCheckOnly && !hasAll && out.errorCode == 0) out.errorCode = tagErrorMissing;
    }

    parsedTag& out;
    std::array<std::string_view, tagFieldCount> fields;
    bool lacksRoom = false;
};

}  // namespace

void freeTagList(parsedTag* list) {
    while (list != nullptr) {
        parsedTag* const next = list->next;
        freeHandle(list->mediaData);
        freeBlock(list);
        list = next;
    }
}

void reduceTagText(std::u32string_view text, char* out) {
    for (const char32_t c : text) {
        const char32_t low = c & 0xFF;
        *out++ = low < 32 || low > 126 ? ' ' : static_cast<char>(low);
    }
}

parsedTagList tagTextParse(std::int32_t length, const char* text, std::uint16_t& outStatus) {
    outStatus = 0;
    parsedTagList list;
    if (text == nullptr || length <= 0) return list;
    const std::string_view all(text, static_cast<std::size_t>(length));
    parsedTag* last = nullptr;
    std::size_t start = findOpening(all, 0);
    while (start != noPlace) {
        blockPtr<parsedTag> record = newRecord<parsedTag>();
        if (record == nullptr) {
            outStatus = tagParseMemory;
            break;
        }
        const std::size_t nextOpening = findOpening(all, start + tagOpeningLength);
        const outlineRec outline = outlineOf(all.substr(0, nextOpening), start);
        parsedTag& tag = *record;
        tag.tagStart = static_cast<std::int32_t>(start);
        tag.errorCode = outline.error;
        tag.tagLength = tagOpeningLength;
        tag.tagMode = tagModeUsual;
        if (outline.error == 0) {
            tag.tagLength = static_cast<std::int32_t>(outline.limit - start);
            tag.dataStart = static_cast<std::int32_t>(outline.dataStart);
            tag.dataLength = static_cast<std::int32_t>(outline.dataLimit - outline.dataStart);
            FieldReader(all, outline, start + tagOpeningLength, tag).read();
        }
        if (last == nullptr) {
            list.reset(record.release());
            last = list.get();
        } else {
            last = last->next = record.release();
        }
        start = nextOpening;
    }
    return list;
}

}  // namespace tarnova
