// Reads Rich Text Format: the text, its characters' font, size, style, colour, position, rules and case, and the
// alignment, indents and spaces of paragraphs. Pictures, notes, headers and fields' instructions are passed over.

#include <algorithm>
#include <array>
#include <string>
#include <unordered_map>
#include <vector>

#include "document/document.h"
#include "engine/toolkit/text_encoding.h"
#include "host/files/import_text_filters.h"

namespace tarnova {

namespace {

constexpr std::size_t groupDepthLimit = 1024;
constexpr std::size_t fontNameLimit = 255;  // bytes
constexpr std::size_t colourLimit = 4096;
constexpr double twipsPerPoint = 20;
constexpr double lengthLimit = 8640;  // points
constexpr char32_t forcedLineBreak = 0x2028;

/// Destinations whose text is none of the document's.
constexpr std::u32string_view skippedDestinations[] = {
    U"stylesheet", U"info",    U"pict",     U"object",    U"header",
    U"headerl",    U"headerr", U"headerf",  U"footer",    U"footerl",
    U"footerr",    U"footerf", U"footnote", U"fldinst",   U"listtext",
    U"pntext",     U"xe",      U"tc",       U"themedata", U"nonshppict",
    U"listtable",  U"rsidtbl", U"filetbl",  U"revtbl",    U"colorschememapping",
};

/// Control words that stand for a character.
struct characterWordRec {
    std::u32string_view word;
    char32_t character;
};
constexpr characterWordRec characterWords[] = {
    {U"tab", U'\t'},        {U"line", forcedLineBreak}, {U"emdash", 0x2014},  {U"endash", 0x2013},
    {U"bullet", 0x2022},    {U"lquote", 0x2018},        {U"rquote", 0x2019},  {U"ldblquote", 0x201C},
    {U"rdblquote", 0x201D}, {U"emspace", 0x2003},       {U"enspace", 0x2002}, {U"qmspace", 0x2005},
};

/// What a group says of the text in it; a closing brace goes back to that of the group around.
struct groupRec {
    enum class Destination : std::uint8_t { text, fonts, colours, skipped } destination = Destination::text;
    std::int32_t font = -1;
    std::int32_t colour = -1;  // 0 is the automatic one
    bool bold = false, italic = false;
    ImportedLook look;  // without font, style and colour
    ParaOverrides paragraph;
    std::int32_t skippedBehindUnicode = 1;  // characters that stand in for one of `u`
};

class RtfReader {
 public:
    RtfReader(std::u32string_view itsText, ImportedText& itsOut) : text(itsText), out(itsOut), builder(itsOut) {
        out.keepsLocalLooks = true;
    }

    /// False when groups are nested too deep.
    bool read() {
        while (at < text.size()) {
            const char32_t c = text[at++];
            if (c == U'{') {
                if (groups.size() >= groupDepthLimit) return false;
                groups.push_back(group());
            } else if (c == U'}') {
                if (groups.size() > 1) groups.pop_back();
                if (groups.size() <= 1) break;
            } else if (c == U'\\') {
                takeControl();
            } else if (c != U'\r' && c != U'\n') {
                addText(c);
            }
        }
        builder.finish();
        return true;
    }

 private:
    groupRec& group() { return groups.back(); }

    void takeControl() {
        if (at >= text.size()) return;
        const char32_t c = text[at];
        const auto isLetter = [](char32_t letter) {
            return (letter >= U'a' && letter <= U'z') || (letter >= U'A' && letter <= U'Z');
        };
        if (!isLetter(c)) {
            ++at;
            return takeSymbol(c);
        }
        const std::size_t start = at;
        while (at < text.size() && isLetter(text[at]))
            ++at;
        const std::u32string_view word = text.substr(start, at - start);
        const std::optional<std::int32_t> number = takeNumber();
        if (at < text.size() && text[at] == U' ') ++at;
        takeWord(word, number);
    }

    std::optional<std::int32_t> takeNumber() {
        std::size_t i = at;
        const bool isNegative = i < text.size() && text[i] == U'-';
        if (isNegative) ++i;
        const std::size_t firstDigit = i;
        std::int32_t value = 0;
        for (; i < text.size() && text[i] >= U'0' && text[i] <= U'9'; ++i)
            value = std::min(value * 10 + static_cast<std::int32_t>(text[i] - U'0'), 100'000'000);
        if (i == firstDigit) return std::nullopt;
        at = i;
        return isNegative ? -value : value;
    }

    void takeSymbol(char32_t c) {
        switch (c) {
            case U'\'':
                return takeHexByte();
            case U'*':
                group().destination = groupRec::Destination::skipped;
                return;
            case U'~':
                return addText(0x00A0);
            case U'_':
                return addText(0x2011);
            case U'-':
                return addText(0x00AD);
            case U'\r':
            case U'\n':
                return endParagraph();
            case U'\\':
            case U'{':
            case U'}':
                return addText(c);
            default:
                return;
        }
    }

    void takeHexByte() {
        std::uint32_t value = 0;
        for (int i = 0; i < 2 && at < text.size(); ++i, ++at) {
            const char32_t c = text[at];
            const bool isDigit = c >= U'0' && c <= U'9';
            const char32_t lower = c | 0x20;
            if (!isDigit && (lower < U'a' || lower > U'f')) return;
            value = value * 16 + (isDigit ? c - U'0' : lower - U'a' + 10);
        }
        const char byte = static_cast<char>(static_cast<std::uint8_t>(value));
        if (value != 0) addText(importedCharacters({&byte, 1}, isMac).front());
    }

    void takeWord(std::u32string_view word, std::optional<std::int32_t> number) {
        if (takeDestination(word) || takeFormat(word, number) || takeParagraphFormat(word, number)) return;
        if (word == U"par" || word == U"sect") return endParagraph();
        if (word == U"mac") isMac = true;
        if (word == U"uc") group().skippedBehindUnicode = std::clamp(number.value_or(1), 0, 100);
        if (word == U"u" && number) return takeUnicode(*number);
        if (group().destination == groupRec::Destination::colours) return takeColourPart(word, number.value_or(0));
        for (const characterWordRec& row : characterWords)
            if (row.word == word) return addText(row.character);
    }

    bool takeDestination(std::u32string_view word) {
        using Destination = groupRec::Destination;
        if (word == U"fonttbl") {
            group().destination = Destination::fonts;
        } else if (word == U"colortbl") {
            group().destination = Destination::colours;
        } else if (std::find(std::begin(skippedDestinations), std::end(skippedDestinations), word) !=
                   std::end(skippedDestinations)) {
            group().destination = Destination::skipped;
        } else {
            return false;
        }
        return true;
    }

    bool takeFormat(std::u32string_view word, std::optional<std::int32_t> number) {
        groupRec& now = group();
        CharOverrides& look = now.look.overrides;
        const bool on = number.value_or(1) != 0;
        if (word == U"b") {
            now.bold = on;
        } else if (word == U"i") {
            now.italic = on;
        } else if (word == U"ul" || word == U"ulnone") {
            look.underline = on && word == U"ul";
        } else if (word == U"strike") {
            look.strikeThrough = on;
        } else if (word == U"super" || word == U"sub" || word == U"nosupersub") {
            const TextPosition place = word == U"super" ? TextPosition::superscript : TextPosition::subscript;
            look.position = on && word != U"nosupersub" ? place : TextPosition::normal;
        } else if (word == U"caps" || word == U"scaps") {
            const CharFormat::Caps caps = word == U"caps" ? CharFormat::Caps::allCaps : CharFormat::Caps::smallCaps;
            look.caps = on ? caps : CharFormat::Caps::normal;
        } else if (word == U"fs") {
            if (number && *number > 0 && *number <= 2 * lengthLimit) look.pointSize = *number / 2.0;
        } else if (word == U"f") {
            now.font = number.value_or(-1);
        } else if (word == U"cf") {
            now.colour = number.value_or(-1);
        } else if (word == U"plain") {
            now.look = {};
            now.bold = now.italic = false;
            now.font = now.colour = -1;
        } else {
            return false;
        }
        return true;
    }

    bool takeParagraphFormat(std::u32string_view word, std::optional<std::int32_t> number) {
        ParaOverrides& paragraph = group().paragraph;
        constexpr std::pair<std::u32string_view, Alignment> alignments[] = {
            {U"ql", Alignment::left},
            {U"qc", Alignment::center},
            {U"qr", Alignment::right},
            {U"qj", Alignment::justifyLeft},
        };
        for (const auto& [name, alignment] : alignments) {
            if (word != name) continue;
            paragraph.alignment = alignment;
            return true;
        }
        const std::pair<std::u32string_view, std::optional<double>*> lengths[] = {
            {U"li", &paragraph.leftIndent},  {U"ri", &paragraph.rightIndent}, {U"fi", &paragraph.firstLineIndent},
            {U"sb", &paragraph.spaceBefore}, {U"sa", &paragraph.spaceAfter},
        };
        for (const auto& [name, member] : lengths) {
            if (word != name) continue;
            *member = std::clamp(number.value_or(0) / twipsPerPoint, -lengthLimit, lengthLimit);
            return true;
        }
        if (word != U"pard") return false;
        paragraph = {};
        return true;
    }

    /// UTF-16 in signed numbers, each with characters behind it for readers that don't know it.
    void takeUnicode(std::int32_t number) {
        const auto unit = static_cast<char32_t>(number & 0xFFFF);
        for (std::int32_t i = 0; i < group().skippedBehindUnicode && at < text.size(); ++i) {
            if (text[at] == U'{' || text[at] == U'}') break;
            const bool isByte = text[at] == U'\\' && at + 1 < text.size() && text[at + 1] == U'\'';
            if (text[at] == U'\\' && !isByte) break;
            at = std::min(at + (isByte ? 4 : 1), text.size());
        }
        if (unit >= 0xD800 && unit <= 0xDBFF) {
            highSurrogate = unit;
        } else if (unit >= 0xDC00 && unit <= 0xDFFF) {
            if (highSurrogate != 0) addText(0x10000 + ((highSurrogate - 0xD800) << 10) + (unit - 0xDC00));
            highSurrogate = 0;
        } else if (unit != 0) {
            addText(unit);
        }
    }

    void takeColourPart(std::u32string_view word, std::int32_t value) {
        const std::size_t part = word == U"red" ? 0 : word == U"green" ? 1 : word == U"blue" ? 2 : 3;
        if (part < 3) openColour[part] = std::clamp(value, 0, 255);
        if (part < 3) colourIsSet = true;
    }

    void endColour() {
        if (colours.size() >= colourLimit) return;
        std::string& name = colours.emplace_back();
        if (colourIsSet) {
            const auto& [red, green, blue] = openColour;
            name = "R=" + std::to_string(red) + " G=" + std::to_string(green) + " B=" + std::to_string(blue);
            if (red == 0 && green == 0 && blue == 0) name = "Black";
            Swatch swatch{name, Swatch::Space::rgb};
            for (std::size_t i = 0; i < 3; ++i)
                swatch.values[i] = openColour[i] / 255.0;
            swatch.values[3] = 0;
            out.swatches.push_back(std::move(swatch));
        }
        openColour = {};
        colourIsSet = false;
    }

    void addText(char32_t c) {
        groupRec& now = group();
        switch (now.destination) {
            case groupRec::Destination::skipped:
                return;
            case groupRec::Destination::colours:
                if (c == U';') endColour();
                return;
            case groupRec::Destination::fonts:
                return addToFont(c);
            case groupRec::Destination::text:
                break;
        }
        takeLook();
        builder.add(c);
    }

    void addToFont(char32_t c) {
        std::string& name = fonts[group().font];
        if (c == U';') {
            group().font = -1;
        } else if (name.size() < fontNameLimit) {
            appendCodePoint(name, c);
        }
    }

    void takeLook() {
        const groupRec& now = group();
        builder.look = now.look;
        const auto font = fonts.find(now.font);
        if (now.font >= 0 && font != fonts.end() && !font->second.empty()) {
            builder.look.overrides.family = font->second;
        }
        if (now.bold || now.italic) {
            builder.look.overrides.fontStyle = now.bold ? (now.italic ? "Bold Italic" : "Bold") : "Italic";
        }
        const auto colour = static_cast<std::size_t>(std::max(now.colour, 0));
        if (now.colour >= 0 && colour < colours.size() && !colours[colour].empty()) {
            builder.look.color = colours[colour];
        }
        builder.paragraph = now.paragraph;
    }

    void endParagraph() {
        if (group().destination != groupRec::Destination::text) return;
        takeLook();
        builder.endParagraph();
    }

    std::u32string_view text;
    ImportedText& out;
    ImportedTextBuilder builder;
    std::size_t at = 0;
    std::vector<groupRec> groups{groupRec{}};
    std::unordered_map<std::int32_t, std::string> fonts;
    std::vector<std::string> colours;  // names of swatches; empty: the automatic colour
    std::array<std::int32_t, 3> openColour{};
    bool colourIsSet = false;
    bool isMac = false;
    char32_t highSurrogate = 0;
};

class RtfFilter final : public TextImportFilter {
 public:
    [[nodiscard]] std::string_view name() const override { return textImportFilters[1]; }
    [[nodiscard]] Answer takes(std::string_view bytes) const override {
        return bytes.starts_with("{\\rtf") ? Answer::yes : Answer::no;
    }
    [[nodiscard]] bool read(std::string_view bytes, ImportedText& out) const override {
        return takes(bytes) == Answer::yes && RtfReader(importedCharacters(bytes, false), out).read();
    }
};

}  // namespace

std::unique_ptr<TextImportFilter> makeRtfFilter() {
    return std::make_unique<RtfFilter>();
}

}  // namespace tarnova
