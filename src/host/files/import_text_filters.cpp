#include "host/files/import_text_filters.h"

#include <charconv>
#include <utility>

#include "engine/toolkit/text_encoding.h"

namespace tarnova {

namespace {

/// Mac OS Roman from byte 128 on.
constexpr std::u32string_view macRoman =
    U"\u00C4\u00C5\u00C7\u00C9\u00D1\u00D6\u00DC\u00E1\u00E0\u00E2\u00E4\u00E3\u00E5\u00E7\u00E9\u00E8"
    U"\u00EA\u00EB\u00ED\u00EC\u00EE\u00EF\u00F1\u00F3\u00F2\u00F4\u00F6\u00F5\u00FA\u00F9\u00FB\u00FC"
    U"\u2020\u00B0\u00A2\u00A3\u00A7\u2022\u00B6\u00DF\u00AE\u00A9\u2122\u00B4\u00A8\u2260\u00C6\u00D8"
    U"\u221E\u00B1\u2264\u2265\u00A5\u00B5\u2202\u2211\u220F\u03C0\u222B\u00AA\u00BA\u03A9\u00E6\u00F8"
    U"\u00BF\u00A1\u00AC\u221A\u0192\u2248\u2206\u00AB\u00BB\u2026\u00A0\u00C0\u00C3\u00D5\u0152\u0153"
    U"\u2013\u2014\u201C\u201D\u2018\u2019\u00F7\u25CA\u00FF\u0178\u2044\u20AC\u2039\u203A\uFB01\uFB02"
    U"\u2021\u00B7\u201A\u201E\u2030\u00C2\u00CA\u00C1\u00CB\u00C8\u00CD\u00CE\u00CF\u00CC\u00D3\u00D4"
    U"\uF8FF\u00D2\u00DA\u00DB\u00D9\u0131\u02C6\u02DC\u00AF\u02D8\u02D9\u02DA\u00B8\u02DD\u02DB\u02C7";
static_assert(macRoman.size() == 128);

}  // namespace

void ImportedTextBuilder::add(char32_t character) {
    if (character == U'\r' || character == U'\n') return endParagraph();
    if (open.runs.empty() || !(open.runs.back().look == look)) open.runs.push_back({{}, look});
    open.runs.back().text += character;
}

void ImportedTextBuilder::endParagraph() {
    if (open.runs.empty()) open.runs.push_back({{}, look});
    open.style = style;
    open.overrides = paragraph;
    out.paragraphs.push_back(std::exchange(open, {}));
}

void ImportedTextBuilder::finish() {
    if (!open.runs.empty() || out.paragraphs.empty()) endParagraph();
}

std::optional<double> importedNumber(std::string_view text, double least, double greatest) {
    double value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return value >= least && value <= greatest ? std::optional(value) : std::nullopt;
}

std::u32string importedCharacters(std::string_view bytes, bool isMac) {
    if (isUtf8(bytes)) return utf8ToUtf32(bytes);
    if (!isMac) return windows1252ToUtf32(bytes);
    std::u32string out;
    for (const char c : bytes) {
        const auto byte = static_cast<std::uint8_t>(c);
        out += byte < 128 ? byte : macRoman[byte - 128U];
    }
    return out;
}

void addTextImportFilters() {
    static bool areAdded = false;
    if (std::exchange(areAdded, true)) return;
    addImportFilter(makeTaggedTextFilter());
    addImportFilter(makeRtfFilter());
}

}  // namespace tarnova
