#include "host/render/glyph_clusters.h"

#include <unicode/uchar.h>

#include <algorithm>

namespace tarnova {

namespace {

/// What has no glyph of its own behind a word: spaces, returns, and characters that only steer line breaks.
bool leavesNoGlyph(char32_t c) {
    return c <= U' ' || c == 0xA0 || c == 0xAD || (c >= 0x2000 && c <= 0x200B) || c == 0x2028;
}

}  // namespace

char32_t searchedCharacter(char32_t character, const CharFormat& format) {
    if (character == U'\t' || character == 0xA0 || (character >= 0x2000 && character <= 0x200A) ||
        character == 0x202F) {
        return U' ';
    }
    if (format.caps == CharFormat::Caps::normal) return character;
    return static_cast<char32_t>(u_toupper(static_cast<UChar32>(character)));
}

char32_t singleCharacter(const ComposedStory& composed, const GlyphRun& run, std::uint32_t index,
                         const StoryText& story) {
    const PlacedGlyph* glyph = &composed.glyphs[run.firstGlyph + index];
    const std::uint32_t position = glyph->position;
    const bool hasNext = index + 1 < run.glyphCount;
    const bool forward = hasNext && glyph[1].position == position + 1 && (index == 0 || glyph[-1].position != position);
    const bool backward =
        index > 0 && glyph[-1].position == position + 1 && (!hasNext || glyph[1].position != position);
    if ((!forward && !backward) || position >= story.text.size()) return 0;
    const char32_t character = story.text[position];
    return character > U' ' && character < 0x80 && run.format->caps == CharFormat::Caps::normal
               ? character
               : searchedCharacter(character, *run.format);
}

GlyphCluster clusterAt(const ComposedStory& composed, const ComposedLine& line, const GlyphRun& run,
                       std::uint32_t index, const StoryText& story) {
    const std::uint32_t position = composed.glyphs[run.firstGlyph + index].position;
    GlyphCluster cluster;
    while (index + cluster.glyphCount < run.glyphCount &&
           composed.glyphs[run.firstGlyph + index + cluster.glyphCount].position == position) {
        ++cluster.glyphCount;
    }
    // The cluster ends where the next one in reading order begins, which may stand anywhere on the line.
    std::uint32_t limit = static_cast<std::uint32_t>(std::max(line.limit, 0));
    for (std::uint32_t r = line.firstRun; r < line.firstRun + line.runCount; ++r) {
        const GlyphRun& other = composed.runs[r];
        for (std::uint32_t g = other.firstGlyph; g < other.firstGlyph + other.glyphCount; ++g) {
            const std::uint32_t begin = composed.glyphs[g].position;
            if (begin > position) limit = std::min(limit, begin);
        }
    }
    limit = std::min(limit, static_cast<std::uint32_t>(story.text.size()));
    while (limit > position + 1 && leavesNoGlyph(story.text[limit - 1]))
        --limit;
    for (std::uint32_t at = position; at < limit; ++at) {
        cluster.text.push_back(searchedCharacter(story.text[at], *run.format));
    }
    return cluster;
}

}  // namespace tarnova
