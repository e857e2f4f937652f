// What each character of a paragraph is set with, where text isn't plain: case, font, script and direction.

#include <unicode/ubidi.h>
#include <unicode/uchar.h>
#include <unicode/unorm2.h>

#include <algorithm>
#include <memory>
#include <stdexcept>
#include <string>

#include "host/model/special_characters.h"
#include "host/text/icu_text.h"
#include "host/text/paragraph.h"

namespace tarnova {

namespace {

constexpr char32_t sharpS = 0xDF;
constexpr char32_t dottedCapitalI = 0x130;

bool isMark(char32_t c) {
    const bool joins = c == 0x200D || (c >= 0xFE00 && c <= 0xFE0F);
    return joins || (U_GET_GC_MASK(static_cast<UChar32>(c)) & U_GC_M_MASK) != 0;
}

/// The font can set the character, or the shaper can do without a glyph of it.
bool covers(const Font& font, char32_t c) {
    if (font.glyphOf(c) != 0) return true;
    if (c == noBreakHyphen) return font.glyphOf(U'-') != 0;
    const auto character = static_cast<UChar32>(c);
    return u_hasBinaryProperty(character, UCHAR_DEFAULT_IGNORABLE_CODE_POINT) ||
           u_charType(character) == U_SPACE_SEPARATOR || u_charType(character) == U_CONTROL_CHAR || c == 0xFFFC ||
           c == 0x2028 || c == 0x2029;
}

/// The font has the one character that a base and its mark make together.
bool coversComposed(const Font& font, std::u32string_view cluster) {
    if (cluster.size() != 2) return false;
    UErrorCode error = U_ZERO_ERROR;
    const UNormalizer2* composer = unorm2_getNFCInstance(&error);
    if (U_FAILURE(error)) return false;
    const UChar32 composed =
        unorm2_composePair(composer, static_cast<UChar32>(cluster[0]), static_cast<UChar32>(cluster[1]));
    return composed >= 0 && font.glyphOf(static_cast<char32_t>(composed)) != 0;
}

/// The first character of a cluster that the font can't set; 0 when it can set all.
char32_t missingFrom(const Font& font, std::u32string_view cluster) {
    const auto found = std::find_if(cluster.begin(), cluster.end(), [&](char32_t c) { return !covers(font, c); });
    if (found == cluster.end() || coversComposed(font, cluster)) return 0;
    return *found;
}

char32_t upperCase(char32_t c, const CharFormat& format) {
    const bool dotted = format.language.starts_with("tr") || format.language.starts_with("az");
    if (c == U'i' && dotted) return dottedCapitalI;
    return static_cast<char32_t>(u_toupper(static_cast<UChar32>(c)));
}

struct BidiCloser {
    void operator()(UBiDi* bidi) const { ubidi_close(bidi); }
};

/// Strong characters from right to left less those from left to right.
std::int64_t rightward(std::u32string_view text, bool& hasDirections) {
    std::int64_t balance = 0;
    for (char32_t c : text) {
        switch (u_charDirection(static_cast<UChar32>(c))) {
            case U_LEFT_TO_RIGHT:
                --balance;
                break;
            case U_RIGHT_TO_LEFT:
            case U_RIGHT_TO_LEFT_ARABIC:
                ++balance;
                [[fallthrough]];
            case U_ARABIC_NUMBER:
            case U_RIGHT_TO_LEFT_EMBEDDING:
            case U_RIGHT_TO_LEFT_OVERRIDE:
            case U_LEFT_TO_RIGHT_EMBEDDING:
            case U_LEFT_TO_RIGHT_OVERRIDE:
            case U_RIGHT_TO_LEFT_ISOLATE:
            case U_LEFT_TO_RIGHT_ISOLATE:
            case U_FIRST_STRONG_ISOLATE:
                hasDirections = true;
                break;
            default:
                break;
        }
    }
    return balance;
}

}  // namespace

bool Paragraph::hasCapitals() const {
    return std::any_of(spans_.begin(), spans_.end(),
                       [](const FormatSpan& span) { return span.format->caps != CharFormat::Caps::normal; });
}

/// Replaces the text by one in which capitals stand where the formats want them, and figures in the place of page
/// characters.
void Paragraph::changeText(std::span<const ShownText> shown) {
    changedText_.clear();
    std::size_t at = 0;
    for (FormatSpan& span : spans_) {
        const std::size_t first = changedText_.size();
        for (const std::size_t limit = at + static_cast<std::size_t>(span.length); at < limit; ++at) {
            const bool isShown = !shown.empty() && shown.front().position == static_cast<std::size_t>(position_) + at;
            if (!isShown) {
                appendChanged(text_[at], at, *span.format);
                continue;
            }
            for (char32_t c : shown.front().text)
                appendChanged(c, at, *span.format);
            shown = shown.subspan(1);
        }
        span.length = static_cast<std::int32_t>(changedText_.size() - first);
    }
    sources_.push_back(static_cast<std::int32_t>(at));
    text_ = changedText_;
}

/// Appends a character of the text, or of what it shows, in its case. It may grow: a sharp s becomes two.
void Paragraph::appendChanged(char32_t c, std::size_t source, const CharFormat& format) {
    const bool changes = format.caps != CharFormat::Caps::normal;
    const char32_t upper = changes ? upperCase(c, format) : c;
    const bool twice = changes && c == sharpS;
    const bool reduced = format.caps == CharFormat::Caps::smallCaps && (twice || upper != c);
    for (int i = 0; i < (twice ? 2 : 1); ++i) {
        changedText_.push_back(twice ? U'S' : upper);
        sources_.push_back(static_cast<std::int32_t>(source));
        reduced_.push_back(reduced);
    }
}

/// True for a border between two characters of the shaped text that stand for one of the story.
bool Paragraph::isInsideCharacter(std::size_t border) const {
    return !sources_.empty() && sources_[border - 1] == sources_[border];
}

/// A line doesn't end inside of what stands for one character of the story.
void Paragraph::keepCharactersWhole() {
    for (std::size_t border = 1; border < text_.size(); ++border) {
        if (isInsideCharacter(border)) breaks_[border - 1] = LineBreak::none;
    }
}

/// Gives each character a style whose font has it. A base and its marks stay in one font.
void Paragraph::markStyles() {
    marks_.assign(text_.size(), Mark{});
    std::size_t at = 0, limit = 0;
    for (const FormatSpan& span : spans_) {
        limit += static_cast<std::size_t>(span.length);
        const TextStyle base = styles_.of(*span.format);
        const Font* lastFallback = nullptr;
        while (at < limit) {
            std::size_t end = at + 1;
            while (end < limit && isMark(text_[end]))
                ++end;
            const bool reduced = !reduced_.empty() && reduced_[at];
            const Font& font = fontFor(text_.substr(at, end - at), base.font(), lastFallback);
            const std::uint32_t style = styleIndex(styles_.variant(base, font, reduced));
            for (; at < end; ++at)
                marks_[at].style = style;
        }
    }
}

const Font& Paragraph::fontFor(std::u32string_view cluster, const Font& wanted, const Font*& lastFallback) {
    const char32_t missing = missingFrom(wanted, cluster);
    if (missing == 0) return wanted;
    if (lastFallback == nullptr || missingFrom(*lastFallback, cluster) != 0) {
        lastFallback = FontService::instance().fallback(&wanted, missing);
    }
    return *lastFallback;
}

/// Characters common to many scripts, such as spaces and digits, go with the script in front of them.
void Paragraph::markScripts() {
    hb_unicode_funcs_t* const unicode = hb_unicode_funcs_get_default();
    const auto isReal = [](hb_script_t s) {
        return s != HB_SCRIPT_COMMON && s != HB_SCRIPT_INHERITED && s != HB_SCRIPT_UNKNOWN;
    };
    hb_script_t current = HB_SCRIPT_LATIN;
    for (char32_t c : text_) {
        const hb_script_t script = hb_unicode_script(unicode, c);
        if (!isReal(script)) continue;
        current = script;  // the first real one is for what stands in front of it too
        break;
    }
    for (std::size_t i = 0; i < text_.size(); ++i) {
        const hb_script_t script = hb_unicode_script(unicode, text_[i]);
        if (isReal(script)) current = script;
        marks_[i].script = current;
    }
}

/// Sets the levels of UAX 9. A paragraph runs from right to left when most of its letters do (HL1): the text around a
/// value decides, and a Hebrew name in front of an English sentence doesn't turn it around.
void Paragraph::markLevels() {
    static thread_local IcuText icu;
    static thread_local std::unique_ptr<UBiDi, BidiCloser> bidi(ubidi_open());
    bool hasDirections = false;
    rightToLeft_ = rightward(text_, hasDirections) > 0;
    if (!hasDirections) return;
    icu.assign(text_);
    UErrorCode error = U_ZERO_ERROR;
    ubidi_setPara(bidi.get(), icu.units.data(), icu.unitCount(), rightToLeft_ ? 1 : 0, nullptr, &error);
    const UBiDiLevel* levels = ubidi_getLevels(bidi.get(), &error);
    if (U_FAILURE(error)) throw std::runtime_error(std::string("ICU can't order text: ") + u_errorName(error));
    for (std::int32_t unit = 0; unit < icu.unitCount(); ++unit) {
        const std::int32_t character = icu.characterOf[static_cast<std::size_t>(unit)];
        marks_[static_cast<std::size_t>(character)].level = levels[unit];
    }
}

}  // namespace tarnova
