#include "host/model/document_formats.h"

#include <algorithm>
#include <memory>
#include <optional>

#include "host/model/hash.h"

namespace tarnova {

namespace {

template <typename Value>
void apply(const std::optional<Value>& from, Value& to) {
    if (from) to = *from;
}

void apply(const CharOverrides& from, CharFormat& to) {
    apply(from.family, to.family);
    apply(from.fontStyle, to.fontStyle);
    apply(from.language, to.language);
    apply(from.link, to.link);
    apply(from.pointSize, to.pointSize);
    apply(from.leading, to.leading);
    apply(from.tracking, to.tracking);
    apply(from.kerning, to.kerning);
    apply(from.baselineShift, to.baselineShift);
    apply(from.horizontalScale, to.horizontalScale);
    apply(from.verticalScale, to.verticalScale);
    apply(from.color, to.color);
    apply(from.pairKerning, to.pairKerning);
    apply(from.ligatures, to.ligatures);
    apply(from.underline, to.underline);
    apply(from.strikeThrough, to.strikeThrough);
    if (from.underlineOffset) to.underlineOffset = from.underlineOffset;
    if (from.underlineWeight) to.underlineWeight = from.underlineWeight;
    if (from.strikeOffset) to.strikeOffset = from.strikeOffset;
    if (from.strikeWeight) to.strikeWeight = from.strikeWeight;
    apply(from.position, to.position);
    apply(from.caps, to.caps);
}

void apply(const ParaOverrides& from, ParaFormat& to) {
    apply(from.alignment, to.alignment);
    apply(from.leftIndent, to.leftIndent);
    apply(from.rightIndent, to.rightIndent);
    apply(from.firstLineIndent, to.firstLineIndent);
    apply(from.spaceBefore, to.spaceBefore);
    apply(from.spaceAfter, to.spaceAfter);
    apply(from.tabs, to.tabs);
    apply(from.hyphenate, to.hyphenate);
    apply(from.hyphenWordLetters, to.hyphenWordLetters);
    apply(from.hyphenLettersBefore, to.hyphenLettersBefore);
    apply(from.hyphenLettersAfter, to.hyphenLettersAfter);
    apply(from.hyphensInARow, to.hyphensInARow);
    apply(from.wordSpaceLeast, to.wordSpaceLeast);
    apply(from.wordSpaceWanted, to.wordSpaceWanted);
    apply(from.wordSpaceGreatest, to.wordSpaceGreatest);
    apply(from.letterSpaceLeast, to.letterSpaceLeast);
    apply(from.letterSpaceWanted, to.letterSpaceWanted);
    apply(from.letterSpaceGreatest, to.letterSpaceGreatest);
    apply(from.glyphScaleLeast, to.glyphScaleLeast);
    apply(from.glyphScaleWanted, to.glyphScaleWanted);
    apply(from.glyphScaleGreatest, to.glyphScaleGreatest);
    apply(from.keepLines, to.keepLines);
    apply(from.keepFirstLines, to.keepFirstLines);
    apply(from.keepLastLines, to.keepLastLines);
    apply(from.keepWithNext, to.keepWithNext);
    apply(from.startIn, to.startIn);
    apply(from.gridLines, to.gridLines);
}

std::size_t hashOf(const CharFormat& f) {
    Hasher h;
    h.add(f.family).add(f.fontStyle).add(f.pointSize).add(f.leading).add(f.color).add(f.tracking).add(f.kerning);
    h.add(f.baselineShift).add(f.horizontalScale).add(f.verticalScale).add(f.position).add(f.underline);
    h.add(f.underlineOffset).add(f.underlineWeight).add(f.strikeOffset).add(f.strikeWeight);
    return h.add(f.strikeThrough).add(f.caps).add(f.language).add(f.pairKerning).add(f.ligatures).add(f.link).value();
}

std::size_t hashOf(const ParaFormat& f) {
    Hasher h;
    h.add(f.alignment).add(f.leftIndent).add(f.rightIndent).add(f.firstLineIndent).add(f.spaceBefore);
    h.add(f.spaceAfter).add(f.tabs).add(f.hyphenate).add(f.hyphenWordLetters).add(f.hyphenLettersBefore);
    h.add(f.hyphenLettersAfter).add(f.hyphensInARow).add(f.wordSpaceLeast).add(f.wordSpaceWanted);
    h.add(f.letterSpaceLeast).add(f.letterSpaceWanted).add(f.letterSpaceGreatest).add(f.glyphScaleLeast);
    h.add(f.glyphScaleWanted).add(f.glyphScaleGreatest).add(f.keepLines).add(f.keepFirstLines).add(f.keepLastLines);
    return h.add(f.keepWithNext).add(f.startIn).add(f.gridLines).add(f.wordSpaceGreatest).value();
}

/// The one object of the process that equals the format.
template <typename Format>
const Format* interned(const Format& format) {
    static std::unordered_multimap<std::size_t, std::unique_ptr<const Format>> pool;
    const std::size_t hash = hashOf(format);
    const auto [first, last] = pool.equal_range(hash);
    for (auto at = first; at != last; ++at) {
        if (*at->second == format) return at->second.get();
    }
    return pool.emplace(hash, std::make_unique<const Format>(format))->second.get();
}

/// The style and those that it is based on, the outermost base first. A chain that runs in a circle is cut.
template <typename Style>
std::vector<const Style*> chainOf(const std::vector<Style>& styles, std::int32_t style) {
    std::vector<const Style*> out;
    while (style >= 0 && static_cast<std::size_t>(style) < styles.size() && out.size() < styles.size()) {
        out.push_back(&styles[static_cast<std::size_t>(style)]);
        style = out.back()->basedOn;
    }
    std::reverse(out.begin(), out.end());
    return out;
}

}  // namespace

std::size_t DocumentFormats::CharKeyHash::operator()(const CharKey& key) const {
    return Hasher().add(key.first).add(key.second).value();
}

void DocumentFormats::applyCharacterStyle(std::int32_t style, CharFormat& out) const {
    for (const CharacterStyle* at : chainOf(characterStyles, style))
        apply(at->format, out);
}

void DocumentFormats::applyParagraphStyle(std::int32_t style, CharFormat& out) const {
    for (const ParagraphStyle* at : chainOf(paragraphStyles, style))
        apply(at->charFormat, out);
}

void DocumentFormats::applyParagraphStyle(std::int32_t style, ParaFormat& out) const {
    for (const ParagraphStyle* at : chainOf(paragraphStyles, style))
        apply(at->paraFormat, out);
}

const CharFormat* DocumentFormats::resolveChar(const ParagraphAttributes& paragraph, const RunAttributes& run) {
    const CharKey key{&paragraph, &run};
    if (key == lastKey) return lastChar;
    const CharFormat*& cached = charFormats[key];
    if (cached == nullptr) {
        CharFormat format;
        applyParagraphStyle(paragraph.style, format);
        apply(paragraph.charOverrides, format);
        applyCharacterStyle(run.characterStyle, format);
        apply(run.overrides, format);
        cached = interned(format);
    }
    lastKey = key;
    return lastChar = cached;
}

const ParaFormat* DocumentFormats::resolvePara(const ParagraphAttributes& paragraph) {
    const ParaFormat*& cached = paraFormats[&paragraph];
    if (cached == nullptr) {
        ParaFormat format;
        applyParagraphStyle(paragraph.style, format);
        apply(paragraph.overrides, format);
        cached = interned(format);
    }
    return cached;
}

}  // namespace tarnova
