#include "engine/toolkit/pm_string.h"

#include <algorithm>
#include <array>
#include <charconv>

#include "engine/toolkit/pstring.h"
#include "engine/toolkit/strings.h"
#include "engine/toolkit/text_encoding.h"

namespace tarnova {

namespace {

constexpr std::string_view blanks = " \t";

// Removes up to the first and behind the last character that is no blank, as far as asked.
void trimEnds(std::string& text, bool left, bool right) {
    if (right) text.erase(text.find_last_not_of(blanks) + 1);
    if (left) text.erase(0, text.find_first_not_of(blanks));
}

struct markerRec {
    std::size_t offset;
    char digit;
};

std::vector<markerRec> markersOf(std::string_view text) {
    std::vector<markerRec> markers;
    for (std::size_t at = text.find('^'); at != std::string_view::npos; at = text.find('^', at + 1)) {
        if (at + 1 < text.size() && text[at + 1] >= '0' && text[at + 1] <= '3') markers.push_back({at, text[at + 1]});
    }
    return markers;
}

}  // namespace

PMString::PMString(std::u32string_view text) : bytes_(utf32ToUtf8(text)) {}

PMString PMString::ofKey(std::string_view key) {
    return PMString(stringOfKey(key));
}

PMString& PMString::translate() {
    if (!translatable_) return *this;
    bytes_ = std::string(stringOfKey(bytes_));
    translatable_ = false;
    return *this;
}

PMString& PMString::appendCodePoint(char32_t codePoint) {
    tarnova::appendCodePoint(bytes_, codePoint);
    return *this;
}

std::size_t PMString::codePointCount() const {
    return tarnova::codePointCount(bytes_);
}

std::u32string PMString::codePoints() const {
    return utf8ToUtf32(bytes_);
}

std::optional<std::int32_t> PMString::number() const {
    std::string text = bytes_;
    trimEnds(text, true, true);
    const std::size_t start = text.starts_with('+') && !text.starts_with("+-") ? 1 : 0;
    std::int32_t value = 0;
    const char* const end = text.data() + text.size();
    const auto result = std::from_chars(text.data() + start, end, value);
    if (result.ec != std::errc{} || result.ptr != end) return std::nullopt;
    return value;
}

bool PMString::equalNoCase(const PMString& other) const {
    return ascii::equalNoCase(bytes_, other.bytes_);
}

void pmFromPstr(PMString& out, const std::uint8_t* pstr, bool isTranslatable) {
    out = PMString(pstrView(pstr), isTranslatable);
}

void pstrFromPm(const PMString& s, std::uint8_t* dst) {
    pstrFromView(dst, pstrMaxLength + 1, s.view());
}

void pstrFromKey(std::string_view key, std::uint8_t* dst) {
    pstrFromView(dst, pstrMaxLength + 1, stringOfKey(key));
}

std::size_t pmReplaceAll(PMString& s, std::string_view what, std::string_view by) {
    const std::string& text = s.bytes();
    std::size_t found = what.empty() ? std::string::npos : text.find(what);
    if (found == std::string::npos) return 0;
    std::string out;
    std::size_t from = 0;
    std::size_t count = 0;
    for (; found != std::string::npos; found = text.find(what, from)) {
        out.append(text, from, found - from).append(by);
        from = found + what.size();
        ++count;
    }
    out.append(text, from);
    s.edit() = std::move(out);
    return count;
}

PMString pmJoin(const std::vector<PMString>& list, std::string_view separator) {
    PMString joined;
    for (const PMString& item : list) {
        if (item.empty()) continue;
        if (!joined.empty()) joined.append(separator);
        joined.append(item);
    }
    return joined;
}

std::size_t pmTrim(PMString& s, trimMode mode) {
    std::string& text = s.edit();
    const std::size_t before = text.size();
    if (mode == trimMode::everywhere) {
        std::erase_if(text, [](char c) { return static_cast<std::uint8_t>(c) < 33; });
    } else {
        trimEnds(text, mode != trimMode::rightEnd, mode != trimMode::leftEnd);
    }
    return before - text.size();  // only one-byte characters go
}

void pmSubstitute(PMString& s, const PMString* p0, const PMString* p1, const PMString* p2, const PMString* p3) {
    // Stable: within one digit the markers stay in the order of the text.
    std::vector<markerRec> markers = markersOf(s.view());
    std::stable_sort(markers.begin(), markers.end(),
                     [](const markerRec& a, const markerRec& b) { return a.digit < b.digit; });
    struct fillRec {
        std::size_t offset;
        const PMString* by;
    };
    std::vector<fillRec> fills;
    for (const PMString* parameter : std::array{p0, p1, p2, p3}) {
        if (parameter != nullptr && fills.size() < markers.size()) {
            fills.push_back({markers[fills.size()].offset, parameter});
        }
    }
    std::sort(fills.begin(), fills.end(), [](const fillRec& a, const fillRec& b) { return a.offset < b.offset; });
    std::string out;
    std::size_t from = 0;
    for (const fillRec& fill : fills) {
        out.append(s.bytes(), from, fill.offset - from).append(fill.by->bytes());
        from = fill.offset + 2;
    }
    out.append(s.bytes(), from);
    s.edit() = std::move(out);
}

}  // namespace tarnova
