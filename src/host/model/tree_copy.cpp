#include "host/model/tree_copy.h"

#include <algorithm>

#include "host/model/story_text.h"

namespace tarnova {

UID TreeCopy::copy(const PageItem& original, UID parent, UID spread) {
    PageItem* made = document.create(PageItem(original), document.takeUid());
    made->parent = parent;
    made->spread = spread;
    if (original.story != kInvalidUID) {
        Story* story = storyFor(original.story);
        made->story = story->uid;
        if (original.itemClass == ItemClass::splineItem) {
            if (document.story(original.story)->frames.size() == 1) {
                story->frames.push_back(made->uid);
            } else {
                frames.emplace_back(original.uid, made->uid);
            }
        }
    }
    if (original.pathStory != kInvalidUID) {
        Story* story = storyFor(original.pathStory);
        made->pathStory = story->uid;
        story->frames.push_back(made->uid);
    }
    for (UID& child : made->children)
        child = copy(*document.item(child), made->uid, spread);
    return made->uid;
}

void TreeCopy::finish() {
    for (std::size_t i = 0; i < stories.size(); ++i) {
        finishStory(stories[i]);
        if (stories[i].copy->content->hasOwned()) copyAnchored(stories[i].copy);
    }
}

/// Columns follow their frame, so the story is almost always the last one.
Story* TreeCopy::storyFor(UID original) {
    const auto found = std::find_if(stories.rbegin(), stories.rend(),
                                    [original](const StoryPair& pair) { return pair.original->uid == original; });
    if (found != stories.rend()) return found->copy;
    const Story* from = document.story(original);
    Story copy;
    copy.content = from->content;
    copy.onPath = from->onPath;
    copy.stamp = from->stamp;
    copy.wrapKey = from->wrapKey;
    copy.layout = from->layout;
    stories.push_back({from, document.create(std::move(copy), document.takeUid())});
    return stories.back().copy;
}

void TreeCopy::finishStory(StoryPair& pair) {
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
    pair.copy->content = emptyStoryText(paragraphAt(text, 0).attributes, runAt(text, 0).attributes);
}

/// Anchored items are named by UID in the content, so a copy with anchors has a content of its own.
void TreeCopy::copyAnchored(Story* story) {
    auto content = std::make_shared<StoryText>(*story->content);
    for (const ownedItemRec& owned : allOwned(*story->content))
        noteAnchor(*content, owned.position, copy(*document.item(owned.item), story->uid, kInvalidUID));
    story->content = std::move(content);
}

}  // namespace tarnova
