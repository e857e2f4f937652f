#include <algorithm>
#include <cmath>
#include <iterator>

#include "host/model/anchor_place.h"
#include "host/model/limits.h"
#include "host/model/model_document.h"
#include "host/model/story_text.h"

namespace tarnova {

namespace {

bool withinLimits(const ItemFlow& flow) {
    const AnchorOptions& anchor = flow.anchor;
    const TextWrap& wrap = flow.wrap;
    const double lengths[] = {anchor.x, anchor.y,  anchor.spaceBefore, anchor.spaceAfter,
                              wrap.top, wrap.left, wrap.bottom,        wrap.right};
    return std::all_of(std::begin(lengths), std::end(lengths),
                       [](double length) { return std::abs(length) <= coordinateLimit; });
}

const AnchorOptions& anchorOptions(const PageItem& item) {
    static const AnchorOptions usual;
    return item.flow == nullptr ? usual : item.flow->anchor;
}

}  // namespace

/// The item or the outermost group or frame around it, which lies on a layer or is anchored in a text.
const PageItem& ModelDocument::outermost(const PageItem& which) const {
    const PageItem* top = &which;
    for (const PageItem* above = item(top->parent); above != nullptr && above->itemClass != ItemClass::node;
         above = item(top->parent))
        top = above;
    return *top;
}

/// The spread on which an item lies, directly or with the text that it is anchored in.
const Spread* ModelDocument::spreadHolding(const PageItem& which) const {
    const PageItem* at = &which;
    while (at->spread == kInvalidUID)
        at = item(story(outermost(*at).parent)->frames.front());
    return spread(at->spread);
}

std::optional<std::pair<UID, std::int32_t>> ModelDocument::inlinePosition(UID uid) const {
    const PageItem* found = item(uid);
    if (found == nullptr || found->spread != kInvalidUID) return std::nullopt;
    const PageItem& anchored = outermost(*found);
    for (const ownedItemRec& owned : allOwned(*story(anchored.parent)->content)) {
        if (owned.item == anchored.uid) return std::pair(anchored.parent, owned.position);
    }
    return std::nullopt;
}

/// The frame that shows an anchor; of an overset one the last, where the text would go on. Composes only when there is
/// a choice.
const PageItem* ModelDocument::frameOfAnchor(const PageItem& anchored) const {
    const Story& text = *story(anchored.parent);
    if (text.frames.size() > 1) {
        const std::int32_t position = inlinePosition(anchored.uid)->second;
        const StoryLayout* layout = layoutOf(text.uid, position);
        const std::int32_t column = layout == nullptr ? 0 : layout->columnOf(position);
        if (column >= 0) return item(frameOfColumn(text, column));
    }
    return item(text.frames.back());
}

PMMatrix ModelDocument::wayToFrame(const PageItem& anchored, const AnchorPoint& point, const PageItem& frame) const {
    const PMRect bounds = boundsInParent(anchored);
    const PMPoint place =
        placeOfAnchor(anchorOptions(anchored), point, frame.shape->bounds, {bounds.width(), bounds.height()});
    const PMMatrix straight{1, 0, 0, 1, place.x - bounds.left, place.y - bounds.top};
    const PMPoint along = point.along;
    if (along == PMPoint{1, 0}) return straight;
    return straight.then({1, 0, 0, 1, -point.x, -point.baseline})
        .then({along.x, along.y, -along.y, along.x, point.x, point.baseline});
}

ModelDocument::AnchorPlace ModelDocument::placeOfAnchored(const PageItem& anchored) const {
    const Story& text = *story(anchored.parent);
    const std::int32_t position = inlinePosition(anchored.uid)->second;
    const StoryLayout* layout = layoutOf(text.uid, position);
    const std::optional<AnchorPoint> point = layout == nullptr ? std::nullopt : layout->anchorAt(position);
    if (point) {
        const PageItem& frame = *item(text.frames[static_cast<std::size_t>(point->frameIndex)]);
        return {&frame, wayToFrame(anchored, *point, frame)};
    }
    const PageItem& frame = *frameOfAnchor(anchored);
    const PMRect bounds = boundsInParent(anchored);
    return {&frame, {1, 0, 0, 1, frame.shape->bounds.left - bounds.left, frame.shape->bounds.top - bounds.top}};
}

/// On a spread of one page it is the frame's, without composition.
pageOfItemRec ModelDocument::pageOfAnchored(const PageItem& which) const {
    const PageItem& frame = *frameOfAnchor(outermost(which));
    const Spread& on = *spreadHolding(frame);
    if (on.pages.size() == 1) return pageOfItem(frame.uid);
    const std::int32_t index = locateInSpread(which, on);
    return {index == PageItem::onPasteboard ? kInvalidUID : on.pages[static_cast<std::size_t>(index)], on.isMaster};
}

void ModelDocument::anchoredInFrame(const PageItem& frame, const Story& text, const StoryLayout& layout,
                                    std::vector<AnchoredItem>& out) const {
    for (const ownedItemRec& owned : allOwned(*text.content)) {
        const PageItem& anchored = *item(owned.item);
        const std::optional<AnchorPoint> point = layout.anchorAt(owned.position);
        if (anchored.nonPrinting || !point) continue;
        if (text.frames[static_cast<std::size_t>(point->frameIndex)] != frame.uid) continue;
        out.push_back({&anchored, wayToFrame(anchored, *point, frame)});
    }
}

/// How many texts lie in each other below an item.
std::size_t ModelDocument::anchorDepthOf(UID uid) const {
    const PageItem& found = *item(uid);
    std::size_t deepest = 0;
    for (UID child : found.children)
        deepest = std::max(deepest, anchorDepthOf(child));
    for (UID held : {isTextFrame(uid) ? found.story : kInvalidUID, found.pathStory}) {
        if (held == kInvalidUID) continue;
        for (const ownedItemRec& owned : allOwned(*story(held)->content))
            deepest = std::max(deepest, 1 + anchorDepthOf(owned.item));
    }
    return deepest;
}

/// No text of the frames in an item goes on in frames outside of it.
bool ModelDocument::keepsItsTexts(UID uid) const {
    const PageItem& found = *item(uid);
    const PageItem* top = &outermost(found);
    if (isTextFrame(uid)) {
        const std::vector<UID>& frames = story(found.story)->frames;
        if (std::any_of(frames.begin(), frames.end(), [&](UID frame) { return &outermost(*item(frame)) != top; })) {
            return false;
        }
    }
    return std::all_of(found.children.begin(), found.children.end(),
                       [this](UID child) { return keepsItsTexts(child); });
}

/// The item isn't what shows the text, directly or around it, and the texts in each other don't get too many.
bool ModelDocument::mayAnchor(UID uid, UID storyUid) const {
    std::size_t depth = 1 + anchorDepthOf(uid);
    for (UID text = storyUid; text != kInvalidUID; ++depth) {
        const PageItem& shows = outermost(*item(story(text)->frames.front()));
        if (shows.uid == uid) return false;
        if (shows.spread != kInvalidUID) break;
        text = shows.parent;
    }
    return depth <= anchorDepthLimit && keepsItsTexts(uid);
}

errorWord ModelDocument::anchorItem(UID uid, UID storyUid, std::int32_t position) {
    const PageItem* found = item(uid);
    const Story* to = story(storyUid);
    if (found == nullptr || to == nullptr || itemClass(found->parent) != ItemClass::node) return errFailed;
    if (!mayReplace(*to->content, position, 0) || !mayAnchor(uid, storyUid)) return errFailed;
    if (to->length() >= storyLengthLimit - 1) return errRunMemory;
    Command command(*this, "Anchor Item");
    std::erase(changeable<PageItem>(found->parent)->children, uid);
    const PMRect bounds = boundsInParent(*found);
    PageItem* anchored = changeable<PageItem>(uid);
    anchored->parent = storyUid;
    anchored->toParent = anchored->toParent.then({1, 0, 0, 1, -bounds.left, -bounds.top});
    moveTree(uid, kInvalidUID);
    insertAnchorCharacter(*changeableText(storyUid)->content, position, uid, formats->attributes);
    return 0;
}

errorWord ModelDocument::releaseItem(UID uid) {
    const PageItem* found = item(uid);
    if (found == nullptr || story(found->parent) == nullptr) return errFailed;
    const auto [storyUid, position] = *inlinePosition(uid);
    const PMMatrix place = toSpread(*found);
    const PageItem* holder = &outermost(*frameOfAnchor(*found));
    while (holder->spread == kInvalidUID)
        holder = &outermost(*frameOfAnchor(*holder));
    const UID node = holder->parent, spreadUid = holder->spread;
    Command command(*this, "Release Item");
    removeAnchorCharacter(*changeableText(storyUid)->content, position);
    PageItem* released = changeable<PageItem>(uid);
    released->parent = node;
    released->toParent = place;
    if (released->flow != nullptr) {
        const TextWrap wrap = released->flow->wrap;
        released->flow = wrap == TextWrap{} ? nullptr : std::make_shared<const ItemFlow>(ItemFlow{{}, wrap});
    }
    moveTree(uid, spreadUid);
    changeable<PageItem>(node)->children.push_back(uid);
    return 0;
}

/// Says of an item and all in it on which spread they lie; they draw something else there. In a text they stand in no
/// other item's place.
void ModelDocument::moveTree(UID uid, UID spreadUid) {
    PageItem* moved = changeable<PageItem>(uid);
    moved->spread = spreadUid;
    if (spreadUid == kInvalidUID) moved->overrides = kInvalidUID;
    moved->stamp = newStamp();
    moved->pageInSpread = PageItem::pageUnknown;
    for (UID child : moved->children)
        moveTree(child, spreadUid);
}

errorWord ModelDocument::setItemFlow(UID uid, const ItemFlow& flow) {
    const PageItem* found = item(uid);
    const bool isItem =
        found != nullptr && (found->itemClass == ItemClass::splineItem || found->itemClass == ItemClass::group);
    const Story* holder = isItem ? story(found->parent) : nullptr;
    const bool isAnchored = holder != nullptr;
    // A path has one line and no column: an item on it stands in the line.
    if (isAnchored && holder->onPath != nullptr && flow.anchor.kind != AnchorOptions::Kind::inLine) return errFailed;
    if (!isItem || !withinLimits(flow) || (!isAnchored && flow.anchor != AnchorOptions{})) return errFailed;
    Command command(*this, "Set Text Flow");
    mayWrap |= flow.wrap.kind != TextWrap::Kind::none;
    changeable<PageItem>(uid)->flow = flow == ItemFlow{} ? nullptr : std::make_shared<const ItemFlow>(flow);
    if (isAnchored) restampText(found->parent);
    return 0;
}

}  // namespace tarnova
