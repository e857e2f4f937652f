// Finding text tags: the test at one position, and from there to the extent.

#include <algorithm>

#include "tags/tag_manager.h"

namespace tarnova {

namespace {

/// The run at a position, clipped to its thread; without an attribute no tag begins or goes on there.
struct tagRunRec {
    const TagAttribute* attribute = nullptr;
    std::int32_t length = 1;
    textSpanRec thread;
};

tagRunRec tagRunAt(const Document& document, UID story, std::int32_t position) {
    tagRunRec run;
    run.thread = document.threadSpan(story, position);
    const std::int32_t threadLimit = run.thread.start + run.thread.length;
    const attributeRunRec stored = document.attributeRunAt(story, position);
    run.length = std::max(std::min(stored.length, threadLimit - position), 1);
    run.attribute = ownTagOf(stored.attributes);
    if (run.attribute != nullptr &&
        !runCarriesTag(document, story, position, run.length, position + run.length == threadLimit))
        run.attribute = nullptr;
    return run;
}

bool sameTag(const Document& document, UID story, std::int32_t position, std::uint32_t tagId) {
    const attributeRunRec stored = document.attributeRunAt(story, position);
    const TagAttribute* tag = ownTagOf(stored.attributes);
    return tag != nullptr && tag->tagId() == tagId && !document.hasOwnedItem(story, position, 1);
}

textTagRec extentFrom(const Document& document, UID story, std::int32_t position, const tagRunRec& first) {
    const std::uint32_t tagId = first.attribute->tagId();
    textTagRec tag{position, first.length, first.attribute};
    while (tag.start > first.thread.start && sameTag(document, story, tag.start - 1, tagId)) {
        --tag.start;
        ++tag.length;
    }
    const std::int32_t threadLimit = first.thread.start + first.thread.length;
    while (tag.start + tag.length < threadLimit) {
        const tagRunRec next = tagRunAt(document, story, tag.start + tag.length);
        if (next.attribute == nullptr || next.attribute->tagId() != tagId) break;
        tag.length += next.length;
    }
    return tag;
}

/// The first tag with a character in the range.
textTagRec firstTagIn(const Document& document, UID story, std::int32_t start, std::int32_t limit) {
    for (std::int32_t position = std::max(start, 0); position < limit;) {
        const tagRunRec run = tagRunAt(document, story, position);
        if (run.attribute != nullptr) return extentFrom(document, story, position, run);
        position += run.length;
    }
    return {};
}

textTagRec tagAtCaret(const Document& document, UID story, std::int32_t position) {
    const textSpanRec thread = document.threadSpan(story, position);
    if (position < thread.start || position >= thread.start + thread.length - 1) return {};
    textTagRec tag = firstTagIn(document, story, position, position + 1);
    if (tag.attribute == nullptr && position > thread.start) tag = firstTagIn(document, story, position - 1, position);
    return tag;
}

}  // namespace

textTagRec findTextTag(const Document& document, UID story, std::int32_t position, std::int32_t length) {
    const std::int32_t total = document.totalLength(story);
    if (position < 0 || position >= total || length < 0) return {};
    if (length == 0) return tagAtCaret(document, story, position);
    return firstTagIn(document, story, position, length < total - position ? position + length : total);
}

textTagRec findNextTextTag(const Document& document, UID story, std::int32_t position) {
    const std::int32_t total = document.totalLength(story);
    textTagRec tag = firstTagIn(document, story, position, total);
    while (tag.attribute != nullptr && tag.start < position)
        tag = firstTagIn(document, story, tag.start + tag.length, total);
    return tag;
}

textTagRec findPreviousTextTag(const Document& document, UID story, std::int32_t position) {
    textTagRec last;
    textTagRec tag = findNextTextTag(document, story, 0);
    while (tag.attribute != nullptr && tag.start + tag.length <= position) {
        last = tag;
        tag = findNextTextTag(document, story, tag.start + tag.length);
    }
    return last;
}

}  // namespace tarnova
