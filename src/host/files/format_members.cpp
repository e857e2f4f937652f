#include "host/files/format_members.h"

#include <algorithm>
#include <type_traits>

#include "engine/toolkit/text_encoding.h"
#include "host/model/link_target.h"

namespace tarnova {

namespace {

constexpr const char* alignWords[] = {"left",       "center",        "right",       "justify",
                                      "justifyAll", "justifyCenter", "justifyRight"};
constexpr const char* positionWords[] = {"normal", "superscript", "subscript"};
constexpr const char* capsWords[] = {"normal", "allCaps", "smallCaps"};
constexpr const char* tabWords[] = {"left", "center", "right", "decimal"};
constexpr const char* keepWords[] = {"none", "ends", "all"};
constexpr const char* startWords[] = {"anywhere", "nextColumn", "nextFrame", "nextPage"};
constexpr const char* gridWords[] = {"none", "first", "all"};

// One reader for each kind of member; the member of the format is the template's argument.

template <auto member>
void readCharNumber(FormatTarget& target, const JsonValue& value) {
    target.chars.*member = numberOf(value, -coordinateLimit, coordinateLimit);
}

template <auto member>
void readCharLength(FormatTarget& target, const JsonValue& value) {
    target.chars.*member = lengthOf(value);
}

template <auto member>
void readCharWeight(FormatTarget& target, const JsonValue& value) {
    target.chars.*member = lengthOf(value, 0);
}

template <auto member>
void readCharFlag(FormatTarget& target, const JsonValue& value) {
    target.chars.*member = boolOf(value);
}

template <auto member>
void readCharName(FormatTarget& target, const JsonValue& value) {
    target.chars.*member = nameOf(value);
}

template <auto member>
void readParaLength(FormatTarget& target, const JsonValue& value) {
    target.paras.*member = lengthOf(value);
}

template <auto member>
void readParaFlag(FormatTarget& target, const JsonValue& value) {
    target.paras.*member = boolOf(value);
}

template <auto member, int highest, int lowest = 0>
void readParaPercent(FormatTarget& target, const JsonValue& value) {
    target.paras.*member = numberOf(value, lowest, highest);
}

template <auto member, const auto& words>
void readParaWord(FormatTarget& target, const JsonValue& value) {
    using Word = typename std::remove_reference_t<decltype(target.paras.*member)>::value_type;
    target.paras.*member = wordAs<Word>(value, words);
}

template <auto member, std::int32_t lowest, std::int32_t highest>
void readParaCount(FormatTarget& target, const JsonValue& value) {
    target.paras.*member = static_cast<std::int32_t>(integerOf(value, lowest, highest));
}

void readLink(FormatTarget& target, const JsonValue& value) {
    const std::string_view link = stringOf(value);
    std::string problem;
    if (!link.empty() && !readLinkTarget(link, problem)) faultAt(value, whatIs(value) + " " + problem + ".");
    target.chars.link = link;
}

template <std::size_t store>
void keepTag(FormatTarget& target, const JsonValue& value) {
    target.tags[store] = &value;
}

/// Text of at most so many characters, none of which acts on lines.
std::u32string readShownText(const JsonValue& value, std::size_t longest) {
    const std::u32string characters = utf8ToUtf32(std::string(stringOf(value)));
    const bool isShown = std::all_of(characters.begin(), characters.end(), [](char32_t c) { return c >= U' '; });
    if (!isShown || characters.empty() || characters.size() > longest) {
        faultAt(value, whatIs(value) + " takes 1 to " + std::to_string(longest) + " characters that can be seen.");
    }
    return characters;
}

void readTabs(FormatTarget& target, const JsonValue& value) {
    struct TabTarget {
        TabStop stop;
        bool hasPosition = false;
    };
    static constexpr Member<TabTarget> rows[] = {
        {"at",
         [](TabTarget& tab, const JsonValue& v) {
             tab.stop.position = lengthOf(v);
             tab.hasPosition = true;
         }},
        {"kind", [](TabTarget& tab, const JsonValue& v) { tab.stop.kind = wordAs<TabStop::Kind>(v, tabWords); }},
        {"leader", [](TabTarget& tab, const JsonValue& v) { tab.stop.leader = readShownText(v, tabLeaderLimit); }},
        {"alignOn", [](TabTarget& tab, const JsonValue& v) { tab.stop.alignedOn = readShownText(v, 1).front(); }},
    };
    requireArray(value);
    std::vector<TabStop> tabs;
    for (const JsonValue& element : value) {
        TabTarget tab;
        if (element.is(JsonValue::Type::object)) {
            readMembers<TabTarget>(element, "a tab stop", rows, tab);
            if (!tab.hasPosition) faultAt(element, "A tab stop needs \"at\".");
        } else {
            tab.stop.position = lengthOf(element);
        }
        tabs.push_back(tab.stop);
    }
    target.paras.tabs = std::move(tabs);
}

const FormatMembers charMembers = {
    {"font", readCharName<&CharOverrides::family>},
    {"fontStyle", readCharName<&CharOverrides::fontStyle>},
    {"bold", [](FormatTarget& t, const JsonValue& v) { t.bold = boolOf(v); }},
    {"italic", [](FormatTarget& t, const JsonValue& v) { t.italic = boolOf(v); }},
    {"size", [](FormatTarget& t, const JsonValue& v) { t.chars.pointSize = lengthOf(v, 0); }},
    {"leading",
     [](FormatTarget& t, const JsonValue& v) {
         const bool isAuto = v.is(JsonValue::Type::string) && v.text == "auto";
         t.chars.leading = isAuto ? -1 : lengthOf(v);
     }},
    {"color", [](FormatTarget& t, const JsonValue& v) { t.chars.color = readPaint(v, t.names); }},
    {"tracking", readCharNumber<&CharOverrides::tracking>},
    {"kerning", readCharNumber<&CharOverrides::kerning>},
    {"pairKerning", readCharFlag<&CharOverrides::pairKerning>},
    {"ligatures", readCharFlag<&CharOverrides::ligatures>},
    {"baselineShift", readCharLength<&CharOverrides::baselineShift>},
    {"horizontalScale", readCharNumber<&CharOverrides::horizontalScale>},
    {"verticalScale", readCharNumber<&CharOverrides::verticalScale>},
    {"position",
     [](FormatTarget& t, const JsonValue& v) { t.chars.position = wordAs<TextPosition>(v, positionWords); }},
    {"underline", readCharFlag<&CharOverrides::underline>},
    {"strikeThrough", readCharFlag<&CharOverrides::strikeThrough>},
    {"underlineOffset", readCharLength<&CharOverrides::underlineOffset>},
    {"underlineWeight", readCharWeight<&CharOverrides::underlineWeight>},
    {"strikeOffset", readCharLength<&CharOverrides::strikeOffset>},
    {"strikeWeight", readCharWeight<&CharOverrides::strikeWeight>},
    {"caps", [](FormatTarget& t, const JsonValue& v) { t.chars.caps = wordAs<CharFormat::Caps>(v, capsWords); }},
    {"language", readCharName<&CharOverrides::language>},
    {"link", readLink},
};

const FormatMembers paraMembers = {
    {"align", readParaWord<&ParaOverrides::alignment, alignWords>},
    {"leftIndent", readParaLength<&ParaOverrides::leftIndent>},
    {"rightIndent", readParaLength<&ParaOverrides::rightIndent>},
    {"firstLineIndent", readParaLength<&ParaOverrides::firstLineIndent>},
    {"spaceBefore", readParaLength<&ParaOverrides::spaceBefore>},
    {"spaceAfter", readParaLength<&ParaOverrides::spaceAfter>},
    {"tabs", readTabs},
    {"hyphenate", readParaFlag<&ParaOverrides::hyphenate>},
    {"hyphenWordLetters", readParaCount<&ParaOverrides::hyphenWordLetters, 2, 64>},
    {"hyphenLettersBefore", readParaCount<&ParaOverrides::hyphenLettersBefore, 1, 64>},
    {"hyphenLettersAfter", readParaCount<&ParaOverrides::hyphenLettersAfter, 1, 64>},
    {"hyphensInARow", readParaCount<&ParaOverrides::hyphensInARow, 0, 100>},
    {"wordSpaceLeast", readParaPercent<&ParaOverrides::wordSpaceLeast, 1000>},
    {"wordSpaceWanted", readParaPercent<&ParaOverrides::wordSpaceWanted, 1000>},
    {"wordSpaceGreatest", readParaPercent<&ParaOverrides::wordSpaceGreatest, 10000>},
    {"letterSpaceLeast", readParaPercent<&ParaOverrides::letterSpaceLeast, 500, -100>},
    {"letterSpaceWanted", readParaPercent<&ParaOverrides::letterSpaceWanted, 500, -100>},
    {"letterSpaceGreatest", readParaPercent<&ParaOverrides::letterSpaceGreatest, 500, -100>},
    {"glyphScaleLeast", readParaPercent<&ParaOverrides::glyphScaleLeast, 200, 50>},
    {"glyphScaleWanted", readParaPercent<&ParaOverrides::glyphScaleWanted, 200, 50>},
    {"glyphScaleGreatest", readParaPercent<&ParaOverrides::glyphScaleGreatest, 200, 50>},
    {"keepLines", readParaWord<&ParaOverrides::keepLines, keepWords>},
    {"keepFirstLines", readParaCount<&ParaOverrides::keepFirstLines, 1, 50>},
    {"keepLastLines", readParaCount<&ParaOverrides::keepLastLines, 1, 50>},
    {"keepWithNext", readParaCount<&ParaOverrides::keepWithNext, 0, 50>},
    {"startIn", readParaWord<&ParaOverrides::startIn, startWords>},
    {"gridLines", readParaWord<&ParaOverrides::gridLines, gridWords>},
};

FormatMembers joined(FormatMembers own, std::initializer_list<const FormatMembers*> others) {
    for (const FormatMembers* other : others)
        own.insert(own.end(), other->begin(), other->end());
    return own;
}

template <typename Value>
void writeIf(JsonWriter& out, std::string_view name, const std::optional<Value>& value) {
    if (value) out.member(name, *value);
}

template <typename Enumeration>
void writeWordIf(JsonWriter& out, std::string_view name, const std::optional<Enumeration>& value,
                 std::span<const char* const> words) {
    if (value) out.member(name, words[static_cast<std::size_t>(*value)]);
}

void writeLineChoice(JsonWriter& out, const ParaOverrides& paras) {
    writeIf(out, "hyphenate", paras.hyphenate);
    writeIf(out, "hyphenWordLetters", paras.hyphenWordLetters);
    writeIf(out, "hyphenLettersBefore", paras.hyphenLettersBefore);
    writeIf(out, "hyphenLettersAfter", paras.hyphenLettersAfter);
    writeIf(out, "hyphensInARow", paras.hyphensInARow);
    writeIf(out, "wordSpaceLeast", paras.wordSpaceLeast);
    writeIf(out, "wordSpaceWanted", paras.wordSpaceWanted);
    writeIf(out, "wordSpaceGreatest", paras.wordSpaceGreatest);
    writeIf(out, "letterSpaceLeast", paras.letterSpaceLeast);
    writeIf(out, "letterSpaceWanted", paras.letterSpaceWanted);
    writeIf(out, "letterSpaceGreatest", paras.letterSpaceGreatest);
    writeIf(out, "glyphScaleLeast", paras.glyphScaleLeast);
    writeIf(out, "glyphScaleWanted", paras.glyphScaleWanted);
    writeIf(out, "glyphScaleGreatest", paras.glyphScaleGreatest);
}

void writeColumnChoice(JsonWriter& out, const ParaOverrides& paras) {
    writeWordIf(out, "keepLines", paras.keepLines, keepWords);
    writeIf(out, "keepFirstLines", paras.keepFirstLines);
    writeIf(out, "keepLastLines", paras.keepLastLines);
    writeIf(out, "keepWithNext", paras.keepWithNext);
    writeWordIf(out, "startIn", paras.startIn, startWords);
    writeWordIf(out, "gridLines", paras.gridLines, gridWords);
}

void writeTabs(JsonWriter& out, const std::vector<TabStop>& tabs) {
    out.key("tabs");
    out.beginArray();
    for (const TabStop& tab : tabs) {
        out.beginObject();
        out.member("at", tab.position);
        if (tab.kind != TabStop::Kind::left) out.member("kind", tabWords[static_cast<std::size_t>(tab.kind)]);
        if (!tab.leader.empty()) out.member("leader", utf32ToUtf8(tab.leader));
        if (tab.alignedOn != 0) out.member("alignOn", utf32ToUtf8(std::u32string_view(&tab.alignedOn, 1)));
        out.end();
    }
    out.end();
}

/// "bold" and "italic" are short for the four usual font styles.
void applyShortStyles(FormatTarget& target, const JsonValue& value) {
    if (!target.bold && !target.italic) return;
    if (target.chars.fontStyle) {
        faultAt(value, "\"fontStyle\" can't stand beside \"bold\" or \"italic\"; leave one of them.");
    }
    const bool bold = target.bold.value_or(false), italic = target.italic.value_or(false);
    target.chars.fontStyle = bold && italic ? "Bold Italic" : bold ? "Bold" : italic ? "Italic" : "Regular";
}

}  // namespace

const FormatMembers& characterStyleMembers() {
    static const FormatMembers members = joined(
        {{"name", keep<FormatTarget, &FormatTarget::name>}, {"basedOn", keep<FormatTarget, &FormatTarget::basedOn>}},
        {&charMembers});
    return members;
}

const FormatMembers& paragraphStyleMembers() {
    static const FormatMembers members = joined(characterStyleMembers(), {&paraMembers});
    return members;
}

const FormatMembers& paragraphMembers() {
    static const FormatMembers members = joined({{"style", keep<FormatTarget, &FormatTarget::style>},
                                                 {"text", keep<FormatTarget, &FormatTarget::text>},
                                                 {"return", keep<FormatTarget, &FormatTarget::returnFormat>}},
                                                {&paraMembers, &charMembers});
    return members;
}

const FormatMembers& runMembers() {
    static const FormatMembers members =
        joined({{"text", keep<FormatTarget, &FormatTarget::text>},
                {"special", keep<FormatTarget, &FormatTarget::special>},
                {"item", keep<FormatTarget, &FormatTarget::item>}},
               {&returnMembers()});
    return members;
}

const FormatMembers& returnMembers() {
    static const FormatMembers members =
        joined({{"style", keep<FormatTarget, &FormatTarget::style>}, {"tag", keepTag<0>}, {"tallyraTag", keepTag<1>}},
               {&charMembers});
    return members;
}

void readFormat(const JsonValue& value, const std::string& object, const FormatMembers& members, FormatTarget& target) {
    readMembers<FormatTarget>(value, object, members, target);
    applyShortStyles(target, value);
}

Paint readPaint(const JsonValue& value, const LayoutNames& names) {
    struct PaintTarget {
        const LayoutNames& names;
        Paint paint{-1, 1};
    };
    static constexpr Member<PaintTarget> rows[] = {
        {"swatch",
         [](PaintTarget& t, const JsonValue& v) { t.paint.swatch = namedIndex(t.names.swatches, v, "swatch"); }},
        {"tint", [](PaintTarget& t, const JsonValue& v) { t.paint.tint = numberOf(v, 0, 1); }},
    };
    if (!value.is(JsonValue::Type::object)) return {namedIndex(names.swatches, value, "swatch"), 1};
    PaintTarget target{names};
    readMembers<PaintTarget>(value, "a colour", rows, target);
    if (target.paint.swatch < 0) faultAt(value, whatIs(value) + " needs \"swatch\".");
    return target.paint;
}

void writePaint(JsonWriter& out, std::string_view name, const Paint& paint, const DocumentModel& document) {
    const std::string& swatch = document.swatches()[static_cast<std::size_t>(paint.swatch)].name;
    if (paint.tint == 1) {
        out.member(name, swatch);
        return;
    }
    out.key(name);
    out.beginObject();
    out.member("swatch", swatch);
    out.member("tint", paint.tint);
    out.end();
}

void writeChars(JsonWriter& out, const CharOverrides& chars, const DocumentModel& document) {
    writeIf(out, "font", chars.family);
    writeIf(out, "fontStyle", chars.fontStyle);
    writeIf(out, "size", chars.pointSize);
    if (chars.leading && *chars.leading == -1) {
        out.member("leading", "auto");
    } else {
        writeIf(out, "leading", chars.leading);
    }
    if (chars.color) writePaint(out, "color", *chars.color, document);
    writeIf(out, "tracking", chars.tracking);
    writeIf(out, "kerning", chars.kerning);
    writeIf(out, "pairKerning", chars.pairKerning);
    writeIf(out, "ligatures", chars.ligatures);
    writeIf(out, "baselineShift", chars.baselineShift);
    writeIf(out, "horizontalScale", chars.horizontalScale);
    writeIf(out, "verticalScale", chars.verticalScale);
    writeWordIf(out, "position", chars.position, positionWords);
    writeIf(out, "underline", chars.underline);
    writeIf(out, "strikeThrough", chars.strikeThrough);
    writeIf(out, "underlineOffset", chars.underlineOffset);
    writeIf(out, "underlineWeight", chars.underlineWeight);
    writeIf(out, "strikeOffset", chars.strikeOffset);
    writeIf(out, "strikeWeight", chars.strikeWeight);
    writeWordIf(out, "caps", chars.caps, capsWords);
    writeIf(out, "language", chars.language);
    writeIf(out, "link", chars.link);
}

void writeParas(JsonWriter& out, const ParaOverrides& paras) {
    writeWordIf(out, "align", paras.alignment, alignWords);
    writeIf(out, "leftIndent", paras.leftIndent);
    writeIf(out, "rightIndent", paras.rightIndent);
    writeIf(out, "firstLineIndent", paras.firstLineIndent);
    writeIf(out, "spaceBefore", paras.spaceBefore);
    writeIf(out, "spaceAfter", paras.spaceAfter);
    if (paras.tabs) writeTabs(out, *paras.tabs);
    writeLineChoice(out, paras);
    writeColumnChoice(out, paras);
}

}  // namespace tarnova
