#include "host/text/span_gatherer.h"

#include <algorithm>

namespace tarnova {

std::u32string_view SpanGatherer::add() {
    const StoryParagraph paragraph = reader_.paragraphAt(position_);
    enter(*paragraph.attributes);
    paragraphSpan_ = input_.formats.size();
    input_.paragraphs.push_back({paragraph.limit() - position_, paragraphFormat_});
    addRuns(paragraph);
    position_ = paragraph.limit();
    return paragraph.text;
}

void SpanGatherer::enter(const ParagraphAttributes& paragraph) {
    if (&paragraph == paragraph_) return;
    paragraph_ = &paragraph;
    paragraphFormat_ = document_.resolvePara(paragraph);
    run_ = nullptr;
}

void SpanGatherer::addRuns(const StoryParagraph& paragraph) {
    for (std::int32_t at = paragraph.start; at < paragraph.limit();) {
        const RunSpan run = reader_.runInChunkAt(at);
        const std::int32_t limit = std::min(run.limit, paragraph.limit());
        addFormat(*run.attributes, limit - at);
        at = limit;
    }
}

void SpanGatherer::addFormat(const RunAttributes& run, std::int32_t length) {
    if (&run != run_) format_ = document_.resolveChar(*paragraph_, run);
    run_ = &run;
    std::vector<FormatSpan>& spans = input_.formats;
    if (spans.size() > paragraphSpan_ && spans.back().format == format_) {
        spans.back().length += length;
    } else {
        spans.push_back({length, format_});
    }
}

}  // namespace tarnova
