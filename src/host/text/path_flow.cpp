#include "host/text/path_flow.h"

#include <algorithm>
#include <span>

#include "host/text/path_line.h"

namespace tarnova {

namespace {

constexpr char32_t returnMark = U'\r';

/// How far the baseline lies above the path, so that what shall lie on the path does.
float riseOf(const PathTextOptions& options, const LineHeight& height) {
    const auto offset = static_cast<float>(options.offset);
    switch (options.align) {
        case PathTextOptions::Align::ascender:
            return offset - height.ascent;
        case PathTextOptions::Align::descender:
            return offset + height.descent;
        case PathTextOptions::Align::center:
            return offset - (height.ascent - height.descent) / 2;
        case PathTextOptions::Align::baseline:
            break;
    }
    return offset;
}

/// Takes the runs of a straight line on the baseline 0 apart and puts their clusters, and items in it, on a path.
class LineBender {
 public:
    LineBender(const PathLine& line, bool turns, float rise, std::span<const AnchorBox> boxes, ComposedStory& story)
        : line_(line), turns_(turns), rise_(rise), boxes_(boxes), story_(story) {}

    void bend(ComposedLine& composed) {
        const std::vector<GlyphRun> straight(story_.runs.begin() + composed.firstRun, story_.runs.end());
        story_.runs.resize(composed.firstRun);
        for (const GlyphRun& run : straight)
            bendRun(run);
        composed.runCount = static_cast<std::uint32_t>(story_.runs.size()) - composed.firstRun;
        for (PlacedAnchor& anchor : story_.anchors) {
            const auto box = std::lower_bound(boxes_.begin(), boxes_.end(), anchor.position,
                                              [](const AnchorBox& b, std::int32_t at) { return b.position < at; });
            place(anchor, box->width, 0);
        }
    }

 private:
    void bendRun(const GlyphRun& run) {
        const float scale = run.size * run.horizontalScale / 1000;
        const std::uint32_t limit = run.firstGlyph + run.glyphCount;
        float x = run.x;
        for (std::uint32_t first = run.firstGlyph; first < limit;) {
            float advance = 0;
            const std::uint32_t behind = clusterLimit(first, limit, advance);
            GlyphRun cluster = run;
            cluster.x = x;
            cluster.width = advance * scale;
            cluster.firstGlyph = first;
            cluster.glyphCount = behind - first;
            place(cluster, cluster.width, run.y);
            story_.runs.push_back(cluster);
            x += cluster.width;
            first = behind;
        }
    }

    /// The glyphs that stand together, with marks behind them that have no advance of their own.
    std::uint32_t clusterLimit(std::uint32_t first, std::uint32_t limit, float& advance) const {
        const std::vector<PlacedGlyph>& glyphs = story_.glyphs;
        std::uint32_t at = first;
        do {
            advance += glyphs[at++].advance;
        } while (at < limit && (glyphs[at].position == glyphs[first].position || glyphs[at].advance == 0));
        return at;
    }

    /// The middle of a cluster or an item stands over the path, square to it.
    template <typename Placed>
    void place(Placed& placed, float width, float y) const {
        const PathLine::Place at = line_.at(static_cast<double>(placed.x + width / 2));
        const PMPoint along = turns_ ? at.direction : PMPoint{1, 0};
        const double half = static_cast<double>(width) / 2, up = static_cast<double>(rise_ - y);
        placed.x = static_cast<float>(at.point.x - along.x * half + along.y * up);
        placed.y = static_cast<float>(at.point.y - along.y * half - along.x * up);
        placed.directionX = static_cast<float>(along.x);
        placed.directionY = static_cast<float>(along.y);
    }

    const PathLine& line_;
    bool turns_;
    float rise_;
    std::span<const AnchorBox> boxes_;  // by position
    ComposedStory& story_;
};

}  // namespace

void PathFlow::compose(const ComposeInput& input, const SubPath& path, const PathTextOptions& options,
                       ComposedStory& story) {
    const auto length = static_cast<std::int32_t>(input.text.size());
    ComposedColumn& column = story.columns.emplace_back();
    column.frame = input.columns.front().frame;
    column.box = input.columns.front().box;
    const PathLine line(path, options.flip);
    const auto room = static_cast<float>(line.length() - options.start - options.end);
    const std::optional<LineHeight> height = room > 0 && !input.paragraphs.empty()
                                                 ? setLine(input, static_cast<float>(options.start), room, story)
                                                 : std::nullopt;
    if (height) {
        const bool turns = options.effect == PathTextOptions::Effect::follow;
        LineBender(line, turns, riseOf(options, *height), input.anchors, story).bend(story.lines.front());
        column.lineCount = 1;
        column.limit = story.shownLimit = story.lines.front().limit;
    }
    story.composedLimit = length;
    story.overset = story.shownLimit < length - 1;
}

std::optional<LineHeight> PathFlow::setLine(const ComposeInput& input, float start, float room, ComposedStory& story) {
    const ParagraphSpan& span = input.paragraphs.front();
    ParaFormat format = *span.format;
    format.hyphenate = false;  // there is no next line for the rest of a word
    std::u32string_view text = input.text.substr(0, static_cast<std::size_t>(span.length));
    if (text.back() == returnMark) text.remove_suffix(1);
    paragraph_.anchors = input.anchors;
    paragraph_.assign(text, 0, input.formats, 0, 0, input.shown);
    LineMeasure measure;
    measure.left = static_cast<float>(format.leftIndent + format.firstLineIndent);
    measure.width = room - measure.left - static_cast<float>(format.rightIndent);
    measure.start = measure.left;
    measure.isFirst = true;
    const LineExtent extent = breakLine(paragraph_, 0, measure, format, input.text);
    const bool hasAnchors = !input.anchors.empty();
    if (hasAnchors && widestAnchor(paragraph_, extent) > measure.width + widthTolerance) return std::nullopt;
    const bool isWhole = extent.limit >= paragraph_.pieces.size();
    const LineHeight height = heightOf(paragraph_, extent);
    ComposedLine line;
    line.limit = isWhole ? span.length : paragraph_.storyPosition(paragraph_.pieces[extent.limit].start);
    line.ascent = height.ascent;
    line.descent = height.descent;
    placeLine(paragraph_, extent, measure, format, input.text, start, 0, story, line);
    story.lines.push_back(line);
    return height;
}

}  // namespace tarnova
