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

void ClusterReader::begin(const ComposedStory& composedStory, const ComposedLine& itsLine, const StoryText& characters,
                          std::int32_t start) {
    composed = &composedStory;
    line = &itsLine;
    const LeafPlace place = leafAt(*characters.tree, start + itsLine.start);
    text = place.leaf->chunk.text;
    textStart = static_cast<std::uint32_t>(place.start - start);
    startsAreRead = false;
}

void ClusterReader::beginRun(const GlyphRun& itsRun) {
    run = &itsRun;
    glyphs = composed->glyphs.data() + itsRun.firstGlyph;
    keepsCase = itsRun.format->caps == CharFormat::Caps::normal;
    aloneAtEnd = noPosition;
    if (itsRun.glyphCount == 0) return;
    const std::uint32_t position = glyphs[itsRun.glyphCount - 1].position;
    const auto limit = static_cast<std::uint32_t>(std::max(line->limit, 0));
    const bool isLastRun = run == &composed->runs[line->firstRun + line->runCount - 1];
    if (!isLastRun && glyphs[itsRun.glyphCount].position == position + 1) aloneAtEnd = position;
    // Behind it stands nothing, or what `limitOf` leaves out, as the space or the return at a line's end.
    const std::uint32_t next = position + 1 - textStart;
    const bool onlyOneFollows = position + 2 == limit && next < text.size() && leavesNoGlyph(text[next]);
    if (position + 1 == limit || onlyOneFollows) aloneAtEnd = position;
}

/// What isn't simply itself: spaces of other widths, changed case; page characters show several characters.
char32_t ClusterReader::searched(char32_t character) const {
    return isPageCharacter(character) ? 0 : searchedCharacter(character, *run->format);
}

const GlyphCluster& ClusterReader::at(std::uint32_t index) {
    const std::uint32_t position = glyphs[index].position;
    std::uint32_t next = index + 1;
    while (next < run->glyphCount && glyphs[next].position == position)
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
            appendShown(character, *run->format);
        } else {
            appendSearched(cluster.text, text[character - textStart], *run->format);
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
        const GlyphRun& its = composed->runs[r];
        for (std::uint32_t g = its.firstGlyph; g < its.firstGlyph + its.glyphCount; ++g) {
            starts.push_back(composed->glyphs[g].position);
        }
    }
    if (!std::is_sorted(starts.begin(), starts.end())) std::sort(starts.begin(), starts.end());
}

}  // namespace tarnova
