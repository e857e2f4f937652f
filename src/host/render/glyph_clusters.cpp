#include "host/render/glyph_clusters.h"

#include <unicode/locid.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>

#include <algorithm>

#include "host/model/page_characters.h"

namespace tarnova {

namespace {

constexpr char32_t softHyphen = 0xAD;

/// What has no glyph of its own behind a word: spaces, returns, characters that only steer line breaks, and the places
/// of anchored items.
bool leavesNoGlyph(char32_t c) {
    return c <= U' ' || c == 0xA0 || c == softHyphen || (c >= 0x2000 && c <= 0x200B) || c == 0x2028 || c == 0xFFFC;
}

/// A character as it is searched for: in capitals when the run sets it so, spaces of any width as a space.
char32_t searchedCharacter(char32_t character, const CharFormat& format) {
    const bool isSpace =
        character == U'\t' || character == 0xA0 || (character >= 0x2000 && character <= 0x200A) || character == 0x202F;
    if (isSpace) return U' ';
    if (format.caps == CharFormat::Caps::normal) return character;
    return static_cast<char32_t>(u_toupper(static_cast<UChar32>(character)));
}

/// The same where one character may become several ("SS" from the sharp s).
void appendSearched(std::u32string& out, char32_t character, const CharFormat& format) {
    if (format.caps == CharFormat::Caps::normal) {
        out.push_back(searchedCharacter(character, format));
        return;
    }
    const auto code = static_cast<UChar32>(searchedCharacter(character, CharFormat{}));
    const icu::UnicodeString capitals = icu::UnicodeString(code).toUpper(icu::Locale::getRoot());
    for (std::int32_t at = 0; at < capitals.length(); at = capitals.moveIndex32(at, 1)) {
        out.push_back(static_cast<char32_t>(capitals.char32At(at)));
    }
}

}  // namespace

void ClusterReader::begin(const ComposedStory& composedStory, const ComposedLine& itsLine,
                          const StoryText& characters) {
    composed = &composedStory;
    line = &itsLine;
    const LeafPlace place = leafAt(*characters.tree, itsLine.start);
    text = place.leaf->chunk.text;
    textStart = static_cast<std::uint32_t>(place.start);
    startsAreRead = false;
}

char32_t ClusterReader::single(const GlyphRun& run, std::uint32_t index) const {
    const PlacedGlyph* glyph = &composed->glyphs[run.firstGlyph + index];
    const std::uint32_t position = glyph->position;
    const bool hasNext = index + 1 < run.glyphCount;
    const bool forward = hasNext && glyph[1].position == position + 1 && (index == 0 || glyph[-1].position != position);
    const bool backward =
        index > 0 && glyph[-1].position == position + 1 && (!hasNext || glyph[1].position != position);
    if ((!forward && !backward) || position - textStart >= text.size()) return 0;
    const char32_t character = text[position - textStart];
    return isPageCharacter(character) ? 0 : searchedCharacter(character, *run.format);
}

const GlyphCluster& ClusterReader::at(const GlyphRun& run, std::uint32_t index) {
    const PlacedGlyph* glyphs = &composed->glyphs[run.firstGlyph];
    const std::uint32_t position = glyphs[index].position;
    std::uint32_t next = index + 1;
    while (next < run.glyphCount && glyphs[next].position == position)
        ++next;
    cluster.glyphCount = next - index;
    cluster.text.clear();
    if (position >= static_cast<std::uint32_t>(std::max(line->limit, 0))) {
        cluster.text.push_back(softHyphen);  // a hyphen that is drawn at the line's end and isn't in the story
        return cluster;
    }
    const std::uint32_t limit = limitOf(position);
    for (std::uint32_t character = position; character < limit; ++character) {
        if (isPageCharacter(text[character - textStart])) {
            appendShown(character, *run.format);
        } else {
            appendSearched(cluster.text, text[character - textStart], *run.format);
        }
    }
    return cluster;
}

/// A page character is searched for as what it shows.
void ClusterReader::appendShown(std::uint32_t position, const CharFormat& format) {
    const auto shown = std::lower_bound(composed->shown.begin(), composed->shown.end(), position,
                                        [](const ShownText& its, std::uint32_t at) { return its.position < at; });
    if (shown == composed->shown.end() || shown->position != position) return;
    for (const char32_t character : shown->text)
        appendSearched(cluster.text, character, format);
}

/// A cluster ends where the next one in reading order begins, which may stand anywhere on the line.
std::uint32_t ClusterReader::limitOf(std::uint32_t position) {
    if (!startsAreRead) readStarts();
    const auto next = std::upper_bound(starts.begin(), starts.end(), position);
    std::uint32_t limit = next != starts.end() ? *next : static_cast<std::uint32_t>(std::max(line->limit, 0));
    limit = std::min(limit, textStart + static_cast<std::uint32_t>(text.size()));
    while (limit > position + 1 && leavesNoGlyph(text[limit - 1 - textStart]))
        --limit;
    return limit;
}

void ClusterReader::readStarts() {
    startsAreRead = true;
    starts.clear();
    for (std::uint32_t r = line->firstRun; r < line->firstRun + line->runCount; ++r) {
        const GlyphRun& run = composed->runs[r];
        for (std::uint32_t g = run.firstGlyph; g < run.firstGlyph + run.glyphCount; ++g) {
            starts.push_back(composed->glyphs[g].position);
        }
    }
    if (!std::is_sorted(starts.begin(), starts.end())) std::sort(starts.begin(), starts.end());
}

}  // namespace tarnova
