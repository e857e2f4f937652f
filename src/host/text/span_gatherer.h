// Text of a story on its way into composition: paragraph after paragraph, with the formats resolved.

#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "host/model/document_model.h"
#include "host/model/story_reader.h"
#include "host/text/compose_input.h"

namespace tarnova {

/// Adds the spans of paragraphs to an input. All of them are borrowed.
class SpanGatherer {
 public:
    SpanGatherer(const DocumentModel& document, const StoryText& content, ComposeInput& input)
        : document_(document), reader_(content), input_(input) {}

    /// Begins with the paragraph that starts at the position, instead of with the first.
    void beginAt(std::int32_t position) { position_ = position; }

    /// Adds the next paragraph, which is there, and gives its text; valid as long as the content.
    std::u32string_view add();
    /// Where the next paragraph begins.
    [[nodiscard]] std::int32_t position() const { return position_; }

 private:
    void enter(const ParagraphAttributes& paragraph);
    void addRuns(const StoryParagraph& paragraph);
    void addFormat(const RunAttributes& run, std::int32_t length);

    const DocumentModel& document_;
    StoryReader reader_;
    ComposeInput& input_;
    std::int32_t position_ = 0;
    std::size_t paragraphSpan_ = 0;  // the first of the paragraph: spans in front may be in use already
    const ParagraphAttributes* paragraph_ = nullptr;  // that the formats below are resolved for
    const ParaFormat* paragraphFormat_ = nullptr;
    const RunAttributes* run_ = nullptr;
    const CharFormat* format_ = nullptr;
};

}  // namespace tarnova
