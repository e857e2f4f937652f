#include "host/text/composer.h"

#include <algorithm>
#include <exception>
#include <optional>

#include "host/model/document_model.h"
#include "host/model/story_reader.h"
#include "host/text/composed_story.h"
#include "host/text/font.h"
#include "host/text/long_story.h"
#include "host/text/path_flow.h"
#include "host/text/span_gatherer.h"
#include "host/text/story_flow.h"

namespace tarnova {

namespace {

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
                                 &options});
    }
}

void addAnchors(const DocumentModel& document, const StoryText& content, ComposeInput& input) {
    for (const ownedItemRec& owned : allOwned(content)) {
        const PageItem* item = document.item(owned.item);
        if (item == nullptr) continue;
        const PMRect bounds = document.boundsInParent(*item);
        input.anchors.push_back({owned.position, item->flow == nullptr ? AnchorOptions{} : item->flow->anchor,
                                 static_cast<float>(bounds.width()), static_cast<float>(bounds.height())});
    }
}

void addWraps(const DocumentModel& document, const PageItem& frame, std::int32_t frameIndex, ComposeInput& input) {
    static thread_local std::vector<WrapArea> areas;
    areas.clear();
    document.wrapsAround(frame, areas);
    for (const WrapArea& area : areas)
        input.wraps.push_back({frameIndex, area});
}

/// A page character of a story and the frame whose page it is taken to stand on.
struct PageCharacterUse {
    std::uint32_t position = 0;
    std::size_t which = 0;
    std::size_t frame = 0;
};

std::vector<PageCharacterUse> pageCharactersOf(std::u32string_view text) {
    std::vector<PageCharacterUse> uses;
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (isPageCharacter(text[at])) uses.push_back({static_cast<std::uint32_t>(at), text[at] - firstPageCharacter});
    }
    return uses;
}

std::vector<ShownText> shownTextsOf(const std::vector<PageCharacterUse>& uses, const StoryPageTexts& pageTexts) {
    std::vector<ShownText> shown;
    for (const PageCharacterUse& use : uses)
        shown.push_back({use.position, pageTexts[use.frame][use.which]});
    return shown;
}

/// Moves each use to the frame in which it was set. False when all show the right text already.
bool followUses(const ComposedStory& composed, const StoryPageTexts& pageTexts, std::vector<PageCharacterUse>& uses) {
    bool moved = false;
    for (PageCharacterUse& use : uses) {
        const std::int32_t column = composed.columnOf(static_cast<std::int32_t>(use.position));
        if (column < 0) continue;
        const auto frame = static_cast<std::size_t>(composed.columns[static_cast<std::size_t>(column)].frameIndex);
        moved = moved || pageTexts[frame][use.which] != pageTexts[use.frame][use.which];
        use.frame = frame;
    }
    return moved;
}

/// The places of a document's frames.
class DocumentPlaces final : public FramePlaces {
 public:
    explicit DocumentPlaces(const DocumentModel& document) : document_(document) {}

    [[nodiscard]] UID pageOf(UID frame) const override { return document_.pageOfItem(frame).page; }

    [[nodiscard]] std::optional<BaselineGrid> gridOf(UID frame) const override {
        const PageItem* item = document_.item(frame);
        const PMMatrix matrix = document_.toSpread(*item);
        if (matrix.b != 0 || matrix.c != 0 || !(matrix.d > 0)) return {};
        const Page* page = document_.page(pageOf(frame));
        const double top = page == nullptr ? 0 : page->bounds.top;
        const BaselineGrid& grid = document_.baselineGrid();
        return BaselineGrid{(top + grid.start - matrix.ty) / matrix.d, grid.step / matrix.d};
    }

 private:
    const DocumentModel& document_;
};

class ThreadComposer final : public Composer {
 public:
    std::shared_ptr<const StoryLayout> compose(const DocumentModel& document, const Story& story, std::int32_t through,
                                               const StoryPageTexts& pageTexts) override {
        static thread_local ComposeInput input;
        input.clear();
        gatherColumns(document, story, input);
        const DocumentPlaces places(document);
        input.places = &places;
        if (isComposedInParts(story, input)) return composeParts(document, story, through, input);
        return composeWhole(document, story, pageTexts, input);
    }

    bool hasFont(const std::string& family, const std::string& style) const override {
        bool substituted = false;
        static_cast<void>(FontService::instance().find(family, style, &substituted));
        return !substituted;
    }

 private:
    static void gatherColumns(const DocumentModel& document, const Story& story, ComposeInput& input) {
        for (std::size_t i = 0; i < story.frames.size(); ++i) {
            const PageItem* frame = document.item(story.frames[i]);
            if (frame == nullptr || frame->shape == nullptr) continue;
            if (story.onPath == nullptr) {
                addColumns(*frame, static_cast<std::int32_t>(i), input);
                addWraps(document, *frame, static_cast<std::int32_t>(i), input);
            } else if (!frame->shape->path.empty()) {
                input.columns.push_back({frame->uid, 0, 0, frame->shape->bounds});
            }
        }
    }

    /// Text that is set by more than itself and its columns is composed whole.
    [[nodiscard]] static bool isComposedInParts(const Story& story, const ComposeInput& input) {
        return story.length() > longStoryLength && story.onPath == nullptr && !story.content->hasOwned() &&
               story.content->pageCharacters() == 0 && input.wraps.empty() && !input.columns.empty();
    }

    static std::shared_ptr<const StoryLayout> composeParts(const DocumentModel& document, const Story& story,
                                                           std::int32_t through, ComposeInput& input) {
        try {
            return composeLongStory(document, story, input, textFlow(), std::min(through, story.length() - 1));
        } catch (const std::exception& error) {
            return composedWithFault(story, error);
        }
    }

    static std::shared_ptr<const StoryLayout> composeWhole(const DocumentModel& document, const Story& story,
                                                           const StoryPageTexts& pageTexts, ComposeInput& input) {
        static thread_local std::u32string characters;
        characters.clear();
        const std::int32_t length = threadNumber(*story.content, 0).length;
        for (SpanGatherer gatherer(document, *story.content, input); gatherer.position() < length;)
            characters += gatherer.add();
        input.text = characters;
        if (story.content->hasOwned()) addAnchors(document, *story.content, input);
        std::shared_ptr<ComposedStory> composed = composeShowingPages(document, story, pageTexts, input);
        composed->composedLimit = story.length();
        composed->pageTexts = pageTexts;
        return composed;
    }

    [[nodiscard]] static StoryFlow& textFlow() {
        static thread_local StoryFlow flow;
        return flow;
    }

    /// The page of a page character is known when its line is placed, which may depend on what it shows: composed
    /// again until each shows the page that it stands on. Where a number moves to the next page because of its own
    /// width, and back again, there is no right one: the last try holds.
    static std::shared_ptr<ComposedStory> composeShowingPages(const DocumentModel& document, const Story& story,
                                                              const StoryPageTexts& pageTexts, ComposeInput& input) {
        if (pageTexts.empty()) return composeOrTell(document, story, input);
        constexpr int mostTries = 8;
        std::vector<PageCharacterUse> uses = pageCharactersOf(input.text);
        std::shared_ptr<ComposedStory> composed;
        for (int tries = 0; tries < mostTries; ++tries) {
            std::vector<ShownText> shown = shownTextsOf(uses, pageTexts);
            input.shown = shown;
            composed = composeOrTell(document, story, input);
            composed->shown = std::move(shown);
            if (!followUses(*composed, pageTexts, uses)) break;
        }
        return composed;
    }

    static void flowText(const DocumentModel& document, const Story& story, const ComposeInput& input,
                         ComposedStory& composed) {
        static thread_local PathFlow pathFlow;
        if (story.onPath == nullptr) {
            textFlow().compose(input, composed);
        } else if (!input.columns.empty()) {
            const ItemShape& shape = *document.item(story.frames.front())->shape;
            pathFlow.compose(input, shape.path.front(), *story.onPath, composed);
        }
    }

    /// The model's callers know nothing of exceptions: a story that can't be composed is overset from its start, and
    /// says why to those who draw it.
    static std::shared_ptr<ComposedStory> composeOrTell(const DocumentModel& document, const Story& story,
                                                        const ComposeInput& input) {
        auto composed = std::make_shared<ComposedStory>();
        try {
            flowText(document, story, input, *composed);
        } catch (const std::exception& error) {
            composed = composedWithFault(story, error);
        }
        return composed;
    }

    static std::shared_ptr<ComposedStory> composedWithFault(const Story& story, const std::exception& error) {
        auto composed = std::make_shared<ComposedStory>();
        composed->composedLimit = story.length();
        composed->overset = true;
        composed->fault = error.what();
        return composed;
    }
};

}  // namespace

std::shared_ptr<Composer> makeComposer() {
    return std::make_shared<ThreadComposer>();
}

}  // namespace tarnova
