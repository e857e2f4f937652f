#include "host/text/composer.h"

#include <algorithm>

#include "host/model/document_model.h"
#include "host/text/composed_story.h"
#include "host/text/story_flow.h"

namespace tarnova {

namespace {

std::int32_t mainThreadLength(const StoryText& content) {
    const auto length = static_cast<std::int32_t>(content.text.size());
    return content.threads.empty() ? length : std::min(length, content.threads.front().length);
}

/// The formats of the main thread: each run as the paragraph it stands in resolves it.
void gatherFormats(const DocumentModel& document, const StoryText& content, ComposeInput& input) {
    std::int32_t left = static_cast<std::int32_t>(input.text.size());
    std::size_t runIndex = 0;
    std::int32_t runLeft = content.runs.empty() ? 0 : content.runs.front().length;
    const ParagraphAttributes* lastParagraph = nullptr;
    const RunAttributes* lastRun = nullptr;
    const ParaFormat* paragraphFormat = nullptr;
    for (const ParagraphRun& paragraph : content.paragraphs) {
        if (left <= 0) return;
        if (paragraph.attributes != lastParagraph) {
            paragraphFormat = document.resolvePara(*paragraph.attributes);
            lastRun = nullptr;
            lastParagraph = paragraph.attributes;
        }
        std::int32_t paragraphLeft = std::min(paragraph.length, left);
        left -= paragraphLeft;
        input.paragraphs.push_back({paragraphLeft, paragraphFormat});
        while (paragraphLeft > 0 && runIndex < content.runs.size()) {
            const RunAttributes* run = content.runs[runIndex].attributes;
            const std::int32_t taken = std::min(paragraphLeft, runLeft);
            const CharFormat* format =
                run == lastRun ? input.formats.back().format : document.resolveChar(*paragraph.attributes, *run);
            lastRun = run;
            if (!input.formats.empty() && input.formats.back().format == format) {
                input.formats.back().length += taken;
            } else if (taken > 0) {
                input.formats.push_back({taken, format});
            }
            paragraphLeft -= taken;
            runLeft -= taken;
            if (runLeft <= 0 && ++runIndex < content.runs.size()) runLeft = content.runs[runIndex].length;
        }
    }
}

void addColumns(const PageItem& frame, std::int32_t frameIndex, ComposeInput& input) {
    const ItemShape& shape = *frame.shape;
    const TextFrameOptions& options = shape.text;
    const std::int32_t count = std::max(options.columns, 1);
    const double left = shape.bounds.left + options.insetLeft;
    const double whole = shape.bounds.right - options.insetRight - left;
    const double width = (whole - options.gutter * (count - 1)) / count;
    for (std::int32_t i = 0; i < count; ++i) {
        const double columnLeft = left + (width + options.gutter) * i;
        input.columns.push_back({frame.uid, frameIndex, i,
                                 PMRect{columnLeft, shape.bounds.top + options.insetTop, columnLeft + width,
                                        shape.bounds.bottom - options.insetBottom},
                                 options.verticalAlignment});
    }
}

class ThreadComposer final : public Composer {
 public:
    std::shared_ptr<const StoryLayout> compose(const DocumentModel& document, const Story& story,
                                               std::int32_t) override {
        static thread_local StoryFlow flow;
        static thread_local ComposeInput input;
        input.clear();
        const StoryText& content = *story.content;
        input.text = std::u32string_view(content.text).substr(0, static_cast<std::size_t>(mainThreadLength(content)));
        gatherFormats(document, content, input);
        for (std::size_t i = 0; i < story.frames.size(); ++i) {
            const PageItem* frame = document.item(story.frames[i]);
            if (frame != nullptr && frame->shape != nullptr) addColumns(*frame, static_cast<std::int32_t>(i), input);
        }
        auto composed = std::make_shared<ComposedStory>();
        flow.compose(input, *composed);
        composed->composedLimit = story.length();
        return composed;
    }
};

}  // namespace

std::shared_ptr<Composer> makeComposer() {
    return std::make_shared<ThreadComposer>();
}

}  // namespace tarnova
