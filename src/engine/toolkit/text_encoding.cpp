#include "engine/toolkit/text_encoding.h"

#include <algorithm>
#include <cstring>

namespace tarnova {

namespace {

constexpr std::size_t wordBytes = 8;

bool wordIsAscii(const char* at) {
    std::uint64_t word;
    std::memcpy(&word, at, wordBytes);
    return (word & 0x8080808080808080u) == 0;
}

std::uint8_t byteAt(std::string_view text, std::size_t index) {
    return static_cast<std::uint8_t>(text[index]);
}

// Where the ASCII run that begins at `from` ends.
std::size_t asciiEnd(std::string_view text, std::size_t from) {
    while (text.size() - from >= wordBytes && wordIsAscii(text.data() + from))
        from += wordBytes;
    while (from < text.size() && byteAt(text, from) < 0x80)
        ++from;
    return from;
}

// What may follow a lead byte (Unicode 15, table 3-7): how many bytes, and the range of the first of them.
struct leadRec {
    std::uint8_t followers;  // 0: no lead byte
    std::uint8_t low, high;
};

leadRec leadOf(std::uint8_t byte) {
    if (byte < 0xC2 || byte > 0xF4) return {0, 0, 0};
    if (byte < 0xE0) return {1, 0x80, 0xBF};
    if (byte == 0xE0) return {2, 0xA0, 0xBF};
    if (byte == 0xED) return {2, 0x80, 0x9F};
    if (byte < 0xF0) return {2, 0x80, 0xBF};
    if (byte == 0xF0) return {3, 0x90, 0xBF};
    if (byte == 0xF4) return {3, 0x80, 0x8F};
    return {3, 0x80, 0xBF};
}

// The 32 places of 0x80 to 0x9F; the rest of Windows-1252 is Latin-1.
constexpr char16_t windows1252High[32] = {0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                          0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008D, 0x017D, 0x008F,
                                          0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                          0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

}  // namespace

bool isAscii(std::string_view text) {
    return asciiEnd(text, 0) == text.size();
}

char32_t nextCodePoint(std::string_view text, std::size_t& offset) {
    const std::uint8_t first = byteAt(text, offset++);
    if (first < 0x80) return first;
    leadRec lead = leadOf(first);
    if (lead.followers == 0) return replacementChar;
    char32_t codePoint = first & (0x3Fu >> lead.followers);
    for (; lead.followers > 0; --lead.followers) {
        if (offset == text.size()) return replacementChar;
        const std::uint8_t byte = byteAt(text, offset);
        if (byte < lead.low || byte > lead.high) return replacementChar;
        codePoint = codePoint << 6 | (byte & 0x3Fu);
        lead.low = 0x80;
        lead.high = 0xBF;
        ++offset;
    }
    return codePoint;
}

bool isUtf8(std::string_view text) {
    for (std::size_t at = asciiEnd(text, 0); at < text.size(); at = asciiEnd(text, at)) {
        const std::size_t start = at;
        const bool isReplacement = nextCodePoint(text, at) == replacementChar;
        if (isReplacement && text.substr(start, at - start) != "\xEF\xBF\xBD") return false;
    }
    return true;
}

void appendCodePoint(std::string& utf8, char32_t codePoint) {
    if (codePoint > 0x10FFFF || (codePoint >= 0xD800 && codePoint <= 0xDFFF)) codePoint = replacementChar;
    const auto put = [&utf8](char32_t byte) { utf8.push_back(static_cast<char>(static_cast<std::uint8_t>(byte))); };
    if (codePoint < 0x80) return put(codePoint);
    if (codePoint < 0x800) {
        put(0xC0 | codePoint >> 6);
    } else if (codePoint < 0x10000) {
        put(0xE0 | codePoint >> 12);
        put(0x80 | (codePoint >> 6 & 0x3F));
    } else {
        put(0xF0 | codePoint >> 18);
        put(0x80 | (codePoint >> 12 & 0x3F));
        put(0x80 | (codePoint >> 6 & 0x3F));
    }
    put(0x80 | (codePoint & 0x3F));
}

void appendUtf8AsUtf32(std::u32string& out, std::string_view utf8) {
    std::size_t at = 0;
    while (at < utf8.size()) {
        const std::size_t end = asciiEnd(utf8, at);
        if (end > at) {
            const std::size_t before = out.size();
            out.resize(before + (end - at));
            std::copy(utf8.begin() + static_cast<std::ptrdiff_t>(at), utf8.begin() + static_cast<std::ptrdiff_t>(end),
                      out.begin() + static_cast<std::ptrdiff_t>(before));
            at = end;
        }
        while (at < utf8.size() && byteAt(utf8, at) >= 0x80)
            out.push_back(nextCodePoint(utf8, at));
    }
}

std::u32string utf8ToUtf32(std::string_view utf8) {
    std::u32string out;
    appendUtf8AsUtf32(out, utf8);
    return out;
}

std::string utf32ToUtf8(std::u32string_view text) {
    std::string out;
    out.reserve(text.size());
    for (const char32_t codePoint : text) {
        if (codePoint < 0x80) {
            out.push_back(static_cast<char>(codePoint));
        } else {
            appendCodePoint(out, codePoint);
        }
    }
    return out;
}

std::size_t codePointCount(std::string_view utf8) {
    std::size_t count = 0;
    std::size_t at = 0;
    while (at < utf8.size()) {
        const std::size_t end = asciiEnd(utf8, at);
        count += end - at;
        at = end;
        for (; at < utf8.size() && byteAt(utf8, at) >= 0x80; ++count)
            nextCodePoint(utf8, at);
    }
    return count;
}

char32_t codePointOfWindows1252(std::uint8_t byte) {
    return byte >= 0x80 && byte <= 0x9F ? char32_t{windows1252High[byte - 0x80]} : char32_t{byte};
}

std::uint8_t windows1252OfCodePoint(char32_t codePoint) {
    if (codePoint < 0x80 || (codePoint >= 0xA0 && codePoint <= 0xFF)) return static_cast<std::uint8_t>(codePoint);
    const auto* const found = std::find(std::begin(windows1252High), std::end(windows1252High), codePoint);
    if (found == std::end(windows1252High)) return 0;
    return static_cast<std::uint8_t>(0x80 + (found - std::begin(windows1252High)));
}

void appendWindows1252AsUtf8(std::string& out, std::string_view bytes) {
    std::size_t at = 0;
    while (at < bytes.size()) {
        const std::size_t end = asciiEnd(bytes, at);
        out.append(bytes.substr(at, end - at));
        for (at = end; at < bytes.size() && byteAt(bytes, at) >= 0x80; ++at) {
            appendCodePoint(out, codePointOfWindows1252(byteAt(bytes, at)));
        }
    }
}

std::string windows1252ToUtf8(std::string_view bytes) {
    std::string out;
    out.reserve(bytes.size());
    appendWindows1252AsUtf8(out, bytes);
    return out;
}

std::u32string windows1252ToUtf32(std::string_view bytes) {
    std::u32string out(bytes.size(), U'\0');
    std::transform(bytes.begin(), bytes.end(), out.begin(),
                   [](char c) { return codePointOfWindows1252(static_cast<std::uint8_t>(c)); });
    return out;
}

std::string utf8ToWindows1252(std::string_view utf8) {
    std::string out;
    out.reserve(utf8.size());
    for (std::size_t at = 0; at < utf8.size();) {
        const char32_t codePoint = nextCodePoint(utf8, at);
        const std::uint8_t byte = windows1252OfCodePoint(codePoint);
        out.push_back(byte == 0 && codePoint != 0 ? '?' : static_cast<char>(byte));
    }
    return out;
}

std::size_t utf8CutLength(std::string_view text, std::size_t maxBytes) {
    if (text.size() <= maxBytes) return text.size();
    // The character that holds byte maxBytes begins at most three bytes before it.
    const std::size_t earliest = maxBytes - std::min<std::size_t>(maxBytes, 3);
    for (std::size_t start = maxBytes; start > earliest && (byteAt(text, start) & 0xC0) == 0x80;) {
        --start;
        const std::uint8_t followers = leadOf(byteAt(text, start)).followers;
        if (followers != 0) return start + followers >= maxBytes ? start : maxBytes;
    }
    return maxBytes;
}

}  // namespace tarnova
