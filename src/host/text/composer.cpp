#include "host/text/composer.h"

#include <algorithm>
#include <exception>

#include "host/model/document_model.h"
#include "host/text/composed_story.h"
#include "host/text/story_flow.h"

namespace tarnova {

namespace {

std::int32_t mainThreadLength(const StoryText& content) {
    const auto length = static_cast<std::int32_t>(content.text.size());
    return content.threads.empty() ? length : std::min(length, content.threads.front().length);
}

/// Resolves the formats of the main thread, paragraph by paragraph and run by run.
class SpanGatherer {
 public:
    SpanGatherer(const DocumentModel& document, const StoryText& content, ComposeInput& input)
        : document_(document), content_(content), input_(input) {}

    void run() {
        auto left = static_cast<std::int32_t>(input_.text.size());
        for (const ParagraphRun& paragraph : content_.paragraphs) {
            if (left <= 0) return;
            enter(*paragraph.attributes);
            const std::int32_t length = std::min(paragraph.length, left);
            input_.paragraphs.push_back({length, paragraphFormat_});
            takeRuns(length);
            left -= length;
        }
    }

 private:
    void enter(const ParagraphAttributes& paragraph) {
        if (&paragraph == paragraph_) return;
        paragraph_ = &paragraph;
        paragraphFormat_ = document_.resolvePara(paragraph);
        run_ = nullptr;
    }

    void takeRuns(std::int32_t length) {
        while (length > 0 && runIndex_ < content_.runs.size()) {
            const AttributeRun& run = content_.runs[runIndex_];
            const std::int32_t taken = std::min(length, run.length - runOffset_);
            add(*run.attributes, taken);
            length -= taken;
            runOffset_ += taken;
            if (runOffset_ < run.length) continue;
            ++runIndex_;
            runOffset_ = 0;
        }
    }

    void add(const RunAttributes& run, std::int32_t length) {
        if (length <= 0) return;
        if (&run != run_) format_ = document_.resolveChar(*paragraph_, run);
        run_ = &run;
        std::vector<FormatSpan>& spans = input_.formats;
        if (!spans.empty() && spans.back().format == format_) {
            spans.back().length += length;
        } else {
            spans.push_back({length, format_});
        }
    }

    const DocumentModel& document_;
    const StoryText& content_;
    ComposeInput& input_;
    const ParagraphAttributes* paragraph_ = nullptr;  // that the formats below are resolved for
    const ParaFormat* paragraphFormat_ = nullptr;
    const RunAttributes* run_ = nullptr;
    const CharFormat* format_ = nullptr;
    std::size_t runIndex_ = 0;
    std::int32_t runOffset_ = 0;
};

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
        SpanGatherer(document, content, input).run();
        for (std::size_t i = 0; i < story.frames.size(); ++i) {
            const PageItem* frame = document.item(story.frames[i]);
            if (frame != nullptr && frame->shape != nullptr) addColumns(*frame, static_cast<std::int32_t>(i), input);
        }
        std::shared_ptr<ComposedStory> composed = composeOrTell(flow, input);
        composed->composedLimit = story.length();
        return composed;
    }

 private:
    /// The model's callers know nothing of exceptions: a story that can't be composed is overset from its start, and
    /// says why to those who draw it.
    static std::shared_ptr<ComposedStory> composeOrTell(StoryFlow& flow, const ComposeInput& input) {
        auto composed = std::make_shared<ComposedStory>();
        try {
            flow.compose(input, *composed);
        } catch (const std::exception& error) {
            composed = std::make_shared<ComposedStory>();
            composed->overset = true;
            composed->fault = error.what();
        }
        return composed;
    }
};

}  // namespace

std::shared_ptr<Composer> makeComposer() {
    return std::make_shared<ThreadComposer>();
}

}  // namespace tarnova
