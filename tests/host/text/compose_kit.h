// Composing texts in tests: a story of a few formats in boxes, and what can be read of the lines it makes.

#pragma once

#include <gtest/gtest.h>

#include <deque>
#include <string>
#include <string_view>
#include <vector>

#include "host/text/compose_input.h"
#include "host/text/composed_story.h"
#include "host/text/story_flow.h"

namespace tarnova {

/// A story in work: `text` adds runs, a return in them ends a paragraph, `compose` adds the closing mark.
struct ComposeKit {
    ComposeKit() = default;
    /// One text in one column.
    ComposeKit(std::u32string_view added, const PMRect& box, const ParaFormat& its = {}) : paragraph(its) {
        text(added);
        column(box);
    }
    ComposeKit(std::u32string_view added, double width, const ParaFormat& its = {})
        : ComposeKit(added, PMRect{0, 0, width, 1000}, its) {}

    CharFormat format{.family = "Helvetica", .pointSize = 10, .link = {}};
    ParaFormat paragraph;

    void text(std::u32string_view added) { text(added, format); }
    void text(std::u32string_view added, const CharFormat& its) {
        characters += added;
        const CharFormat* kept = &formats.emplace_back(its);
        input.formats.push_back({static_cast<std::int32_t>(added.size()), kept});
        for (std::size_t i = 0; i < added.size(); ++i) {
            ++open;
            if (added[i] == U'\r') closeParagraph();
        }
    }
    void column(PMRect box, const TextFrameOptions& its = {}) {
        const auto index = static_cast<std::int32_t>(input.columns.size());
        input.columns.push_back({100 + static_cast<UID>(index), index, 0, box, &options.emplace_back(its)});
    }
    void column(double width, double height = 1000) { column(PMRect{0, 0, width, height}); }

    ComposedStory compose() {
        static StoryFlow shared;
        return compose(shared);
    }
    ComposedStory compose(StoryFlow& flow) {
        if (!closed) text(U"\r");
        closed = true;
        input.text = characters;
        ComposedStory story;
        flow.compose(input, story);
        return story;
    }

    /// The characters of each line, as they stand in the story.
    std::vector<std::u32string> lines(const ComposedStory& story) const {
        std::vector<std::u32string> out;
        for (const ComposedLine& line : story.lines) {
            out.push_back(characters.substr(static_cast<std::size_t>(line.start),
                                            static_cast<std::size_t>(line.limit - line.start)));
        }
        return out;
    }

    std::u32string characters;
    std::deque<CharFormat> formats;
    std::deque<ParaFormat> paragraphs;
    std::deque<TextFrameOptions> options;
    ComposeInput input;

 private:
    void closeParagraph() {
        input.paragraphs.push_back({open, &paragraphs.emplace_back(paragraph)});
        open = 0;
    }
    std::int32_t open = 0;
    bool closed = false;
};

/// A character of the story and the point at which its glyph stands.
struct PlacedCharacter {
    std::uint32_t position = 0;
    std::uint16_t glyph = 0;
    float x = 0;
    float y = 0;
};

/// The glyphs of a line from left to right.
inline std::vector<PlacedCharacter> charactersOf(const ComposedStory& story, const ComposedLine& line) {
    std::vector<PlacedCharacter> out;
    for (std::uint32_t r = 0; r < line.runCount; ++r) {
        const GlyphRun& run = story.runs[line.firstRun + r];
        float x = run.x;
        for (std::uint32_t g = 0; g < run.glyphCount; ++g) {
            const PlacedGlyph& glyph = story.glyphs[run.firstGlyph + g];
            out.push_back({glyph.position, glyph.glyph, x, run.y});
            x += glyph.advance * run.size * run.horizontalScale / 1000;
        }
    }
    return out;
}

/// A line with the places of all its glyphs, as text; `start` is what positions in `text` count from.
inline std::string shownLine(const ComposedStory& text, const ComposedLine& line, std::int32_t start = 0) {
    std::string out = std::to_string(line.start + start) + "-" + std::to_string(line.limit + start) + " " +
                      std::to_string(line.left) + " " + std::to_string(line.right) + " " +
                      std::to_string(line.baseline);
    for (std::uint32_t r = line.firstRun; r < line.firstRun + line.runCount; ++r) {
        const GlyphRun& run = text.runs[r];
        out += " " + std::to_string(run.x) + "," + std::to_string(run.y) + ":";
        for (std::uint32_t g = run.firstGlyph; g < run.firstGlyph + run.glyphCount; ++g) {
            const PlacedGlyph& glyph = text.glyphs[g];
            out += std::to_string(glyph.glyph) + "@" +
                   std::to_string(static_cast<std::int32_t>(glyph.position) + start) + "+" +
                   std::to_string(glyph.advance) + ",";
        }
    }
    return out;
}

/// Checks where the lines stand; the first run of each stands on its line.
inline void expectBaselines(const ComposedStory& story, const std::vector<float>& expected, const std::string& name) {
    ASSERT_EQ(story.lines.size(), expected.size()) << name;
    for (std::size_t i = 0; i < expected.size(); ++i) {
        const ComposedLine& line = story.lines[i];
        EXPECT_NEAR(line.baseline, expected[i], 0.02F) << name << " line " << i;
        if (line.runCount > 0) {
            EXPECT_FLOAT_EQ(story.runs[line.firstRun].y, line.baseline) << name << " line " << i;
        }
    }
}

}  // namespace tarnova
