#include "host/model/spread_copy.h"

#include <algorithm>

#include "host/model/story_text.h"

namespace tarnova {

errorWord SpreadCopy::make() {
    std::vector<UID> items;
    for (UID node : source.layerNodes)
        document.collectItems(node, items);
    if (!document.uidsLeft(2 * items.size() + source.pages.size() + 1)) return errRunMemory;

    Spread* to = document.create(Spread{}, document.takeUid());
    copyPages(*to);
    to->layerNodes.reserve(source.layerNodes.size());
    for (UID node : source.layerNodes) {
        const PageItem* original = document.item(node);
        to->layerNodes.push_back(original == nullptr ? kInvalidUID : copyTree(*original, kInvalidUID, to->uid));
    }
    for (std::size_t i = 0; i < stories.size(); ++i) {
        finishStory(stories[i]);
        if (!stories[i].copy->content->owned.empty()) copyAnchored(stories[i], to->uid);
    }
    document.keepLists();
    document.lists.spreads.push_back(to->uid);
    return 0;
}

void SpreadCopy::copyPages(Spread& to) {
    to.pages.reserve(source.pages.size());
    for (UID uid : source.pages) {
        Page page = *document.page(uid);
        page.spread = to.uid;
        page.index = static_cast<std::int32_t>(document.pages.size());
        to.pages.push_back(document.create(std::move(page), document.takeUid())->uid);
        document.pages.push_back(to.pages.back());
    }
}

UID SpreadCopy::copyTree(const PageItem& original, UID parent, UID spread) {
    PageItem* copy = document.create(PageItem(original), document.takeUid());
    copy->parent = parent;
    copy->spread = spread;
    if (original.story != kInvalidUID) {
        Story* story = storyFor(original.story);
        copy->story = story->uid;
        if (original.itemClass == ItemClass::splineItem) {
            if (document.story(original.story)->frames.size() == 1) {
                story->frames.push_back(copy->uid);
            } else {
                frames.emplace_back(original.uid, copy->uid);
            }
        }
    }
    for (UID& child : copy->children)
        child = copyTree(*document.item(child), copy->uid, spread);
    return copy->uid;
}

/// Columns follow their frame, so the story is almost always the last one.
Story* SpreadCopy::storyFor(UID original) {
    const auto found = std::find_if(stories.rbegin(), stories.rend(),
                                    [original](const StoryPair& pair) { return pair.original->uid == original; });
    if (found != stories.rend()) return found->copy;
    const Story* from = document.story(original);
    Story copy;
    copy.content = from->content;
    copy.stamp = from->stamp;
    copy.layout = from->layout;
    stories.push_back({from, document.create(std::move(copy), document.takeUid())});
    return stories.back().copy;
}

void SpreadCopy::finishStory(StoryPair& pair) {
    if (pair.original->frames.size() <= 1) return;
    const bool hasFirst = std::any_of(frames.begin(), frames.end(), [&pair](const auto& frame) {
        return frame.first == pair.original->frames.front();
    });
    for (UID original : pair.original->frames) {
        const auto found = std::find_if(frames.begin(), frames.end(),
                                        [original](const auto& frame) { return frame.first == original; });
        if (found != frames.end()) pair.copy->frames.push_back(found->second);
    }
    if (pair.copy->frames.size() == pair.original->frames.size()) return;
    pair.copy->stamp = newStamp();
    pair.copy->layout.reset();
    if (hasFirst) return;
    const StoryText& text = *pair.original->content;
    pair.copy->content = emptyStoryText(text.paragraphs.front().attributes, text.runs.front().attributes);
}

/// Anchored items are named by UID in the content, so a copy with anchors has a content of its own.
void SpreadCopy::copyAnchored(StoryPair& pair, UID spread) {
    auto content = std::make_shared<StoryText>(*pair.copy->content);
    for (ownedItemRec& owned : content->owned) {
        const PageItem* anchor = document.item(owned.item);
        owned.item = anchor == nullptr ? kInvalidUID : copyTree(*anchor, kInvalidUID, spread);
    }
    pair.copy->content = std::move(content);
}

}  // namespace tarnova
