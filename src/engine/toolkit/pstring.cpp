#include "engine/toolkit/pstring.h"

#include <algorithm>
#include <charconv>
#include <limits>

#include "engine/toolkit/text_encoding.h"

namespace tarnova {

namespace {

constexpr std::uint8_t storedNonBreakingSpace = 0xCA;

std::string_view cstrView(const std::uint8_t* pstr) {
    const std::string_view text = pstrView(pstr);
    return text.substr(0, text.find('\0'));
}

// std::char_traits<char> compares as unsigned bytes.
std::int16_t orderOf(std::string_view a, std::string_view b) {
    const int order = a.compare(b);
    return static_cast<std::int16_t>((order > 0) - (order < 0));
}

template <typename Keep>
void filterInto(std::uint8_t* dst, const std::uint8_t* src, Keep keep) {
    const std::uint8_t length = src[0];
    std::uint8_t kept = 0;
    for (std::size_t i = 1; i <= length; ++i) {
        if (keep(src[i])) dst[++kept] = src[i];
    }
    dst[0] = kept;
}

bool isTrimmed(std::string_view text, std::size_t index) {
    const auto byte = static_cast<std::uint8_t>(text[index]);
    if (byte < 33) return true;
    if (byte != storedNonBreakingSpace) return false;
    const bool beginsUtf8 = index + 1 < text.size() && (static_cast<std::uint8_t>(text[index + 1]) & 0xC0) == 0x80;
    return !beginsUtf8;
}

}  // namespace

bool ascii::equalNoCase(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) return false;
    for (std::size_t i = 0; i < a.size(); ++i) {
        if (a[i] != b[i] && lower(a[i]) != lower(b[i])) return false;
    }
    return true;
}

void pstrFromView(std::uint8_t* dst, std::size_t capacityBytes, std::string_view text) {
    if (capacityBytes == 0) return;
    const std::size_t room = std::min(capacityBytes - 1, pstrMaxLength);
    const std::size_t length = text.size() <= room ? text.size() : utf8CutLength(text, room);
    if (length > 0) std::memmove(dst + 1, text.data(), length);
    dst[0] = static_cast<std::uint8_t>(length);
}

void pstrCopyBounded(std::uint8_t* dst, const std::uint8_t* src, std::size_t size) {
    pstrFromView(dst, size, pstrView(src));
}

void pstrFromC(std::uint8_t* dst, const char* cstr) {
    if (cstr == nullptr) return;
    pstrFromView(dst, pstrMaxLength + 1, cstr);
}

void pstrToC(char* dst, const std::uint8_t* src) {
    if (dst == nullptr || src == nullptr) return;
    const std::uint8_t length = src[0];
    std::memmove(dst, src + 1, length);
    dst[length] = '\0';
}

void pstrAppendView(std::uint8_t* dst, std::string_view text) {
    const std::size_t room = pstrMaxLength - dst[0];
    const std::size_t length = text.size() <= room ? text.size() : utf8CutLength(text, room);
    if (length > 0) std::memmove(dst + 1 + dst[0], text.data(), length);
    dst[0] = static_cast<std::uint8_t>(dst[0] + length);
}

void pstrAppend(std::uint8_t* dst, const std::uint8_t* src) {
    pstrAppendView(dst, pstrView(src));
}

void pstrAppendC(std::uint8_t* dst, const char* cstr) {
    if (dst == nullptr || cstr == nullptr) return;
    pstrAppendView(dst, cstr);
}

void pstrUpper(std::uint8_t* dst, const std::uint8_t* src) {
    dst[0] = src[0];
    for (std::size_t i = 1; i <= dst[0]; ++i)
        dst[i] = ascii::upper(src[i]);
}

std::int16_t pstrEqualNoCase(const std::uint8_t* a, const std::uint8_t* b) {
    return ascii::equalNoCase(pstrView(a), pstrView(b)) ? 0 : -1;
}

std::int16_t cstrEqualPstrNoCase(const char* cstr, const std::uint8_t* pstr) {
    if (cstr == nullptr || pstr == nullptr) return -1;
    return ascii::equalNoCase(cstr, pstrView(pstr)) ? 0 : -1;
}

std::int16_t pstrCompare(const std::uint8_t* a, const std::uint8_t* b) {
    return orderOf(cstrView(a), cstrView(b));
}

std::int16_t cstrComparePstr(const char* cstr, const std::uint8_t* pstr) {
    return orderOf(cstr, cstrView(pstr));
}

std::int16_t pstrPrefixCompare(bool exact, const std::uint8_t* a, std::size_t lenA, const std::uint8_t* b,
                               std::size_t lenB) {
    if (a == nullptr || b == nullptr) return 0;
    const std::size_t common = std::min(lenA, lenB);
    for (std::size_t i = 0; i < common; ++i) {
        const std::uint8_t left = exact ? a[i] : ascii::lower(a[i]);
        const std::uint8_t right = exact ? b[i] : ascii::lower(b[i]);
        if (left != right) return left < right ? -1 : 1;
    }
    return static_cast<std::int16_t>((lenA > lenB) - (lenA < lenB));
}

void pstrTrim(std::uint8_t* s) {
    std::string_view text = pstrView(s);
    while (!text.empty() && isTrimmed(text, text.size() - 1))
        text.remove_suffix(1);
    while (!text.empty() && isTrimmed(text, 0))
        text.remove_prefix(1);
    if (!text.empty()) std::memmove(s + 1, text.data(), text.size());
    s[0] = static_cast<std::uint8_t>(text.size());
}

void pstrCutAtLineEnd(std::uint8_t* s) {
    const std::size_t end = pstrView(s).find_first_of("\r\n");
    if (end != std::string_view::npos) s[0] = static_cast<std::uint8_t>(end);
}

void pstrStripLineEnds(std::uint8_t* dst, const std::uint8_t* src) {
    filterInto(dst, src, [](std::uint8_t c) { return c != '\r' && c != '\n'; });
}

void pstrStripEscapes(std::uint8_t* s) {
    constexpr std::size_t escapeLength = 6;
    std::string text = pstrString(s);
    std::size_t at = 0;
    while (text.size() >= escapeLength && at <= text.size() - escapeLength) {
        if (text[at] != '<' || text[at + escapeLength - 1] != '>') {
            ++at;
            continue;
        }
        text.erase(at, escapeLength);
        // What now meets can only form an escape that begins at most five places before.
        at -= std::min(at, escapeLength - 1);
    }
    pstrFromView(s, pstrMaxLength + 1, text);
}

void pstrFromLong(std::int32_t value, std::uint8_t* dst) {
    char digits[12];
    const auto result = std::to_chars(digits, digits + sizeof digits, value);
    pstrFromView(dst, sizeof digits, {digits, static_cast<std::size_t>(result.ptr - digits)});
}

void pstrToLong(const std::uint8_t* src, std::int32_t* out) {
    using limits = std::numeric_limits<std::int32_t>;
    const std::string_view text = pstrView(src);
    std::size_t at = text.find_first_not_of(" \t\n\v\f\r");
    if (at == std::string_view::npos) at = text.size();
    const bool negative = at < text.size() && text[at] == '-';
    if (at < text.size() && (text[at] == '-' || text[at] == '+')) ++at;
    std::int64_t value = 0;
    for (; at < text.size() && text[at] >= '0' && text[at] <= '9'; ++at) {
        value = std::min<std::int64_t>(value * 10 + (text[at] - '0'), std::int64_t{limits::max()} + 1);
    }
    if (negative) value = -value;
    *out = static_cast<std::int32_t>(std::min<std::int64_t>(value, limits::max()));
}

void cstrRemoveChar(char c, char* s) {
    if (s == nullptr || c == '\0') return;
    char* const end = std::remove(s, s + std::strlen(s), c);
    *end = '\0';
}

void cstrReplaceChar(char c, char* s, char by) {
    if (s == nullptr || c == '\0') return;
    std::replace(s, s + std::strlen(s), c, by);
}

}  // namespace tarnova

extern "C" char* strrev(char* s) {
    if (s == nullptr) return nullptr;
    const std::size_t length = std::strlen(s);
    if (length >= 3) std::reverse(s, s + length);
    return s;
}

extern "C" char* strupr(char* s) {
    if (s == nullptr) return nullptr;
    for (char* at = s; *at != '\0'; ++at)
        *at = tarnova::ascii::upper(*at);
    return s;
}
