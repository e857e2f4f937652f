// Reads tagged text. A tag is "<name:value>"; names have a long and a short form. A backslash takes the meaning of the
// character behind it away. Line ends between the head, its definitions and the text don't count.

#include <algorithm>
#include <charconv>
#include <vector>

#include "document/document.h"
#include "engine/toolkit/text_encoding.h"
#include "host/files/import_text_filters.h"

namespace tarnova {

namespace {

constexpr double lengthLimit = 8640;  // points, of sizes, leading, shifts and indents
constexpr double trackingLimit = 10000;
constexpr std::size_t nameBytesLimit = 1024;
constexpr char32_t forcedLineBreak = 0x2028;
constexpr std::string_view basicParagraph = "Basic Paragraph";

struct headRec {
    std::string_view mark;
    bool isMac;
};
constexpr headRec heads[] = {{"<ASCII-WIN>", false}, {"<ASCII-MAC>", true},    {"<ANSI-WIN>", false},
                             {"<ANSI-MAC>", true},   {"<UNICODE-WIN>", false}, {"<UNICODE-MAC>", true}};

const headRec* headOf(std::string_view bytes) {
    const auto at = std::find_if(std::begin(heads), std::end(heads),
                                 [bytes](const headRec& head) { return bytes.starts_with(head.mark); });
    return at == std::end(heads) ? nullptr : at;
}

/// A file in UTF-16 with its mark as UTF-8; any other as it is, without the mark of UTF-8.
std::string withoutMark(std::string_view bytes) {
    if (bytes.starts_with("\xEF\xBB\xBF")) return std::string(bytes.substr(3));
    const bool isLittle = bytes.starts_with("\xFF\xFE");
    if (!isLittle && !bytes.starts_with("\xFE\xFF")) return std::string(bytes);
    std::u32string text;
    for (std::size_t i = 2; i + 1 < bytes.size(); i += 2) {
        const auto first = static_cast<std::uint8_t>(bytes[i]), second = static_cast<std::uint8_t>(bytes[i + 1]);
        const char32_t unit = isLittle ? first | second << 8 : first << 8 | second;
        const bool isLow = unit >= 0xDC00 && unit <= 0xDFFF;
        if (isLow && !text.empty() && text.back() >= 0xD800 && text.back() <= 0xDBFF) {
            text.back() = 0x10000 + ((text.back() - 0xD800) << 10) + (unit - 0xDC00);
        } else {
            text += unit;
        }
    }
    return utf32ToUtf8(text);
}

/// A tag's name, and its value without backslashes. The value of a definition is read on its own.
struct tagRec {
    std::string name;
    std::string value;
    std::u32string_view rawValue;
};

std::string unescaped(std::u32string_view text) {
    std::u32string out;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == U'\\' && i + 1 < text.size()) ++i;
        out += text[i];
    }
    return utf32ToUtf8(out);
}

tagRec tagOf(std::u32string_view inside) {
    const std::size_t colon = std::min(inside.find(U':'), inside.size());
    const std::u32string_view value = colon < inside.size() ? inside.substr(colon + 1) : std::u32string_view();
    return {utf32ToUtf8(inside.substr(0, colon)), unescaped(value), value};
}

/// Place of the ">" that closes the tag at the start of a list of tags; npos when none does.
std::size_t closingOf(std::u32string_view text, std::size_t start) {
    std::size_t depth = 0;
    for (std::size_t i = start; i < text.size(); ++i) {
        if (text[i] == U'\\') {
            ++i;
        } else if (text[i] == U'<') {
            ++depth;
        } else if (text[i] == U'>' && --depth == 0) {
            return i;
        }
    }
    return std::u32string_view::npos;
}

/// For each "<" the place of the ">" that closes it; 0 for one that stays open.
std::vector<std::size_t> allClosings(std::u32string_view text) {
    std::vector<std::size_t> closings(text.size()), open;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == U'\\') {
            ++i;
        } else if (text[i] == U'<') {
            open.push_back(i);
        } else if (text[i] == U'>' && !open.empty()) {
            closings[open.back()] = i;
            open.pop_back();
        }
    }
    return closings;
}

template <typename Value>
void setOrReset(std::optional<Value>& field, std::string_view value, double least, double greatest) {
    if (value.empty()) field.reset();
    if (const auto number = importedNumber(value, least, greatest)) field = *number;
}

void setFlag(std::optional<bool>& field, std::string_view value) {
    if (value.empty()) {
        field.reset();
    } else {
        field = value != "0";
    }
}

void setName(std::optional<std::string>& field, const std::string& value) {
    field.reset();
    if (!value.empty() && value.size() <= nameBytesLimit) field = value;
}

void setPosition(ImportedLook& look, const std::string& value) {
    look.overrides.position.reset();
    if (value == "Normal") look.overrides.position = TextPosition::normal;
    if (value == "Superscript") look.overrides.position = TextPosition::superscript;
    if (value == "Subscript") look.overrides.position = TextPosition::subscript;
}

void setCaps(ImportedLook& look, const std::string& value) {
    look.overrides.caps.reset();
    if (value == "Normal") look.overrides.caps = CharFormat::Caps::normal;
    if (value == "All Caps") look.overrides.caps = CharFormat::Caps::allCaps;
    if (value == "Small Caps") look.overrides.caps = CharFormat::Caps::smallCaps;
}

void setTint(ImportedLook& look, const std::string& value) {
    look.overrides.color.reset();
    if (const auto tint = importedNumber(value, 0, 100)) look.overrides.color = Paint{swatchBlack, *tint / 100};
}

void setLeading(ImportedLook& look, const std::string& value) {
    if (value == "-1" || value == "Auto") {
        look.overrides.leading = -1;
    } else {
        setOrReset(look.overrides.leading, value, 0, lengthLimit);
    }
}

struct characterTagRec {
    std::string_view longName, shortName;
    void (*set)(ImportedLook&, const std::string&);
};
constexpr characterTagRec characterTags[] = {
    {"cTypeface", "ct", [](ImportedLook& look, const std::string& v) { setName(look.overrides.fontStyle, v); }},
    {"cFont", "cf", [](ImportedLook& look, const std::string& v) { setName(look.overrides.family, v); }},
    {"cSize", "cs",
     [](ImportedLook& look, const std::string& v) { setOrReset(look.overrides.pointSize, v, 0.1, lengthLimit); }},
    {"cColor", "cc", [](ImportedLook& look, const std::string& v) { setName(look.color, v); }},
    {"cColorTint", "cct", setTint},
    {"cPosition", "cp", setPosition},
    {"cUnderline", "cu", [](ImportedLook& look, const std::string& v) { setFlag(look.overrides.underline, v); }},
    {"cStrikethru", "cstrike",
     [](ImportedLook& look, const std::string& v) { setFlag(look.overrides.strikeThrough, v); }},
    {"cCase", "ccase", setCaps},
    {"cLeading", "cl", setLeading},
    {"cTracking", "ctk",
     [](ImportedLook& look, const std::string& v) {
         setOrReset(look.overrides.tracking, v, -trackingLimit, trackingLimit);
     }},
    {"cBaselineShift", "cbs",
     [](ImportedLook& look, const std::string& v) {
         setOrReset(look.overrides.baselineShift, v, -lengthLimit, lengthLimit);
     }},
    {"cHorizontalScale", "chs",
     [](ImportedLook& look, const std::string& v) { setOrReset(look.overrides.horizontalScale, v, 0.01, 10); }},
    {"cVerticalScale", "cvs",
     [](ImportedLook& look, const std::string& v) { setOrReset(look.overrides.verticalScale, v, 0.01, 10); }},
};

void setAlignment(ParaOverrides& paragraph, const std::string& value) {
    constexpr std::pair<std::string_view, Alignment> names[] = {
        {"Left", Alignment::left},
        {"Center", Alignment::center},
        {"Right", Alignment::right},
        {"JustifyFull", Alignment::justifyAll},
        {"JustifyLeft", Alignment::justifyLeft},
        {"JustifyCenter", Alignment::justifyCenter},
        {"JustifyRight", Alignment::justifyRight},
    };
    paragraph.alignment.reset();
    for (const auto& [name, alignment] : names)
        if (value == name) paragraph.alignment = alignment;
}

struct paragraphTagRec {
    std::string_view longName, shortName;
    void (*set)(ParaOverrides&, const std::string&);
};
template <std::optional<double> ParaOverrides::*member>
void setLength(ParaOverrides& paragraph, const std::string& value) {
    setOrReset(paragraph.*member, value, -lengthLimit, lengthLimit);
}
constexpr paragraphTagRec paragraphTags[] = {
    {"pTextAlignment", "pta", setAlignment},
    {"pLeftIndent", "pli", setLength<&ParaOverrides::leftIndent>},
    {"pRightIndent", "pri", setLength<&ParaOverrides::rightIndent>},
    {"pFirstLineIndent", "pfli", setLength<&ParaOverrides::firstLineIndent>},
    {"pSpaceBefore", "psb", setLength<&ParaOverrides::spaceBefore>},
    {"pSpaceAfter", "psa", setLength<&ParaOverrides::spaceAfter>},
};

bool isNamed(const tagRec& tag, std::string_view longName, std::string_view shortName) {
    return tag.name == longName || tag.name == shortName;
}

/// False for a tag that says nothing of a look.
bool applyLookTag(const tagRec& tag, ImportedLook& look, ParaOverrides& paragraph) {
    for (const characterTagRec& row : characterTags) {
        if (!isNamed(tag, row.longName, row.shortName)) continue;
        row.set(look, tag.value);
        return true;
    }
    for (const paragraphTagRec& row : paragraphTags) {
        if (!isNamed(tag, row.longName, row.shortName)) continue;
        row.set(paragraph, tag.value);
        return true;
    }
    return false;
}

/// The host's name of the style that every document has.
std::string styleName(const std::string& name) {
    const bool isBasic = name == "NormalParagraphStyle" || name == "[Basic Paragraph]";
    return isBasic ? std::string(basicParagraph) : name;
}

class TaggedTextReader {
 public:
    TaggedTextReader(std::u32string_view itsText, ImportedText& itsOut)
        : text(itsText), out(itsOut), builder(itsOut), closings(allClosings(itsText)) {}

    void read() {
        while (at < text.size()) {
            const char32_t c = text[at++];
            if (c == U'<') {
                takeTag();
            } else if (c == U'\r' || c == U'\n') {
                if (c == U'\r' && at < text.size() && text[at] == U'\n') ++at;
                if (!inHead) builder.endParagraph();
            } else {
                addText(c == U'\\' && at < text.size() ? text[at++] : c);
            }
        }
        builder.finish();
    }

 private:
    void addText(char32_t c) {
        inHead = false;
        builder.add(c);
    }

    void takeTag() {
        const std::size_t close = closings[at - 1];
        if (close == 0) return addText(U'<');
        const std::u32string_view inside = text.substr(at, close - at);
        at = close + 1;
        if (inside.starts_with(U"0x")) return takeCharacter(utf32ToUtf8(inside.substr(2)));
        const tagRec tag = tagOf(inside);
        if (isNamed(tag, "ColorTable", "ctable")) {
            takeColors(tag.rawValue);
        } else if (isNamed(tag, "DefineParaStyle", "dps")) {
            takeStyle(tag.rawValue, false);
        } else if (isNamed(tag, "DefineCharStyle", "dcs")) {
            takeStyle(tag.rawValue, true);
        } else if (isNamed(tag, "ParaStyle", "pstyle")) {
            inHead = false;
            builder.paragraph = {};
            builder.style.reset();
            if (!tag.value.empty()) builder.style = styleName(tag.value);
        } else if (isNamed(tag, "CharStyle", "cstyle")) {
            inHead = false;
            builder.look.characterStyle = tag.value;
        } else if (applyLookTag(tag, builder.look, builder.paragraph)) {
            inHead = false;
        }
    }

    void takeCharacter(const std::string& digits) {
        std::uint32_t value = 0;
        const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value, 16);
        if (error != std::errc() || end != digits.data() + digits.size() || value == 0) return;
        if (value == U'\r') {
            inHead = false;
            builder.endParagraph();
        } else {
            addText(value == U'\n' ? forcedLineBreak : value);
        }
    }

    /// Calls `take` with the inside of each tag of a definition's list.
    template <typename Take>
    static void forEachTag(std::u32string_view list, Take take) {
        for (std::size_t i = list.find(U'<'); i < list.size(); i = list.find(U'<', i)) {
            const std::size_t close = closingOf(list, i);
            if (close == std::u32string_view::npos) return;
            take(list.substr(i + 1, close - i - 1));
            i = close;
        }
    }

    /// "=<Name:COLOR:CMYK:Process:0,1,0,0>" and so on; a colour of another kind is passed over.
    void takeColors(std::u32string_view list) {
        forEachTag(list, [this](std::u32string_view inside) {
            std::vector<std::u32string_view> parts;
            std::size_t from = 0;
            for (std::size_t i = 0; i <= inside.size(); ++i) {
                if (i < inside.size() && inside[i] == U'\\') ++i;
                if (i < inside.size() && inside[i] != U':') continue;
                parts.push_back(inside.substr(from, std::min(i, inside.size()) - from));
                from = i + 1;
            }
            if (parts.size() < 5 || parts[1] != U"COLOR") return;
            Swatch swatch;
            swatch.name = unescaped(parts[0]);
            swatch.space = parts[2] == U"RGB" ? Swatch::Space::rgb : Swatch::Space::cmyk;
            if (swatch.name.empty() || swatch.name.size() > nameBytesLimit) return;
            if (parts[2] != U"RGB" && parts[2] != U"CMYK") return;
            if (takeValues(utf32ToUtf8(parts[4]), swatch)) out.swatches.push_back(std::move(swatch));
        });
    }

    static bool takeValues(std::string_view list, Swatch& swatch) {
        const std::size_t count = swatch.space == Swatch::Space::rgb ? 3 : 4;
        swatch.values[3] = 0;
        for (std::size_t i = 0; i < count; ++i) {
            const std::size_t comma = std::min(list.find(','), list.size());
            const auto value = importedNumber(list.substr(0, comma), 0, 1);
            if (!value) return false;
            swatch.values[i] = *value;
            list.remove_prefix(std::min(comma + 1, list.size()));
        }
        return list.empty();
    }

    /// "Name=<BasedOn:Other><cs:12>" and so on.
    void takeStyle(std::u32string_view definition, bool ofCharacters) {
        std::size_t equals = 0;
        while (equals < definition.size() && definition[equals] != U'=')
            equals += definition[equals] == U'\\' ? 2 : 1;
        if (equals >= definition.size()) return;
        ImportedStyle style;
        style.name = unescaped(definition.substr(0, equals));
        style.ofCharacters = ofCharacters;
        if (!ofCharacters) style.name = styleName(style.name);
        if (style.name.empty() || style.name.size() > nameBytesLimit) return;
        forEachTag(definition.substr(equals + 1), [&style](std::u32string_view inside) {
            const tagRec tag = tagOf(inside);
            if (isNamed(tag, "BasedOn", "bo")) {
                style.basedOn = style.ofCharacters ? tag.value : styleName(tag.value);
            } else {
                applyLookTag(tag, style.look, style.paragraph);
            }
        });
        out.styles.push_back(std::move(style));
    }

    std::u32string_view text;
    ImportedText& out;
    ImportedTextBuilder builder;
    std::vector<std::size_t> closings;
    std::size_t at = 0;
    bool inHead = true;  // no text and no tag of text yet
};

class TaggedTextFilter final : public TextImportFilter {
 public:
    [[nodiscard]] std::string_view name() const override { return textImportFilters[0]; }
    [[nodiscard]] Answer takes(std::string_view bytes) const override {
        return headOf(withoutMark(bytes.substr(0, 64))) == nullptr ? Answer::no : Answer::yes;
    }
    [[nodiscard]] bool read(std::string_view bytes, ImportedText& out) const override {
        const std::string content = withoutMark(bytes);
        const headRec* const head = headOf(content);
        if (head == nullptr) return false;
        const std::string_view body = std::string_view(content).substr(head->mark.size());
        TaggedTextReader(importedCharacters(body, head->isMac), out).read();
        return true;
    }
};

}  // namespace

std::unique_ptr<TextImportFilter> makeTaggedTextFilter() {
    return std::make_unique<TaggedTextFilter>();
}

}  // namespace tarnova
