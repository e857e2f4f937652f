#include <algorithm>
#include <cmath>
#include <utility>

#include "host/model/item_shape.h"
#include "host/model/model_document.h"
#include "host/model/story_reader.h"

namespace tarnova {

namespace {

bool holds(const PMRect& r, PMPoint p) {
    return p.x >= r.left && p.x < r.right && p.y >= r.top && p.y < r.bottom;
}

PMRect grown(const PMRect& r, double by) {
    return {r.left - by, r.top - by, r.right + by, r.bottom + by};
}

bool isTextFrameItem(const PageItem& item) {
    return item.itemClass == ItemClass::splineItem && item.story != kInvalidUID;
}

}  // namespace

ItemClass ModelDocument::itemClass(UID uid) const {
    const PageItem* found = item(uid);
    return found == nullptr ? ItemClass::none : found->itemClass;
}

bool ModelDocument::itemExists(UID uid) const {
    return uid == ownUid || table.contains(uid) || layer(uid) != nullptr;
}

UID ModelDocument::parent(UID uid) const {
    const PageItem* found = item(uid);
    return found == nullptr ? kInvalidUID : found->parent;
}

std::int32_t ModelDocument::childCount(UID uid) const {
    const PageItem* found = item(uid);
    return found == nullptr ? 0 : static_cast<std::int32_t>(found->children.size());
}

UID ModelDocument::childAt(UID uid, std::int32_t index) const {
    const PageItem* found = item(uid);
    if (found == nullptr || index < 0 || static_cast<std::size_t>(index) >= found->children.size()) return kInvalidUID;
    return found->children[static_cast<std::size_t>(index)];
}

/// The page that holds the middle of the item; an item over the edge of all pages lies on the first that it touches.
std::int32_t ModelDocument::locateInSpread(const PageItem& which, const Spread& on) const {
    const PMRect bounds = boundsOf(which, false);
    const PMPoint middle{(bounds.left + bounds.right) / 2, (bounds.top + bounds.bottom) / 2};
    std::int32_t touched = PageItem::onPasteboard;
    for (std::size_t i = 0; i < on.pages.size(); ++i) {
        const PMRect& pageBounds = page(on.pages[i])->bounds;
        if (holds(pageBounds, middle)) return static_cast<std::int32_t>(i);
        if (touched == PageItem::onPasteboard && touches(pageBounds, bounds)) touched = static_cast<std::int32_t>(i);
    }
    return touched;
}

pageOfItemRec ModelDocument::pageOfItem(UID uid) const {
    const PageItem* found = item(uid);
    const bool isInFrame =
        found != nullptr && (found->itemClass == ItemClass::textColumnItem || found->itemClass == ItemClass::graphic);
    if (isInFrame) found = item(found->parent);
    if (found == nullptr || found->itemClass == ItemClass::node) return {};
    if (found->spread == kInvalidUID) return pageOfAnchored(*found);
    const Spread* on = spread(found->spread);
    if (found->pageInSpread == PageItem::pageUnknown) found->pageInSpread = locateInSpread(*found, *on);
    if (found->pageInSpread == PageItem::onPasteboard) return {kInvalidUID, on->isMaster};
    return {on->pages[static_cast<std::size_t>(found->pageInSpread)], on->isMaster};
}

bool ModelDocument::isGroup(UID uid) const {
    return itemClass(uid) == ItemClass::group;
}

bool ModelDocument::isTextFrame(UID uid) const {
    const PageItem* found = item(uid);
    return found != nullptr && isTextFrameItem(*found);
}

bool ModelDocument::isGraphicFrame(UID uid) const {
    return contentKind(uid) == ContentKind::graphic;
}

ContentKind ModelDocument::contentKind(UID uid) const {
    const PageItem* found = item(uid);
    return found == nullptr || found->shape == nullptr ? ContentKind::unassigned : found->shape->content;
}

pathInfoRec ModelDocument::pathInfo(UID uid) const {
    const PageItem* found = item(uid);
    if (found == nullptr || found->shape == nullptr) return {};
    return {static_cast<std::int32_t>(found->shape->path.size()), found->shape->kind};
}

PMRect ModelDocument::boundsInSpread(UID uid) const {
    const PageItem* found = item(uid);
    return found == nullptr ? PMRect{} : boundsOf(*found, false);
}

PMMatrix ModelDocument::toSpread(const PageItem& which) const {
    PMMatrix out = which.toParent;
    const PageItem* top = &which;
    for (const PageItem* at = item(which.parent); at != nullptr; at = item(at->parent)) {
        if (at->itemClass != ItemClass::node) out = out.then(at->toParent);
        top = at;
    }
    if (top->spread != kInvalidUID) return out;
    const AnchorPlace place = placeOfAnchored(*top);
    return out.then(place.toFrame).then(toSpread(*place.frame));
}

PMRect ModelDocument::boundsOf(const PageItem& which, bool withStroke) const {
    return boundsThrough(which, toSpread(which), withStroke);
}

PMRect ModelDocument::boundsInParent(const PageItem& which) const {
    return boundsThrough(which, which.toParent, false);
}

/// Bounds under a matrix that maps the item's inner coordinates.
PMRect ModelDocument::boundsThrough(const PageItem& which, const PMMatrix& matrix, bool withStroke) const {
    if (which.itemClass == ItemClass::textColumnItem) return matrix.mapBounds(columnBox(which));
    if (which.shape != nullptr) {
        return matrix.mapBounds(grown(which.shape->bounds, withStroke ? strokeReach(*which.shape) : 0));
    }
    if (which.graphic != nullptr) return matrix.mapBounds(which.graphic->bounds);
    PMRect out;
    bool first = true;
    for (UID uid : which.children) {
        const PageItem& child = *item(uid);
        const PMRect bounds = boundsThrough(child, child.toParent.then(matrix), withStroke);
        out = std::exchange(first, false) ? bounds : out.united(bounds);
    }
    return out;
}

/// The columns share the frame's inside, less the insets, with a gutter between each two.
PMRect ModelDocument::columnBox(const PageItem& column) const {
    const PageItem* frame = item(column.parent);
    if (frame == nullptr || frame->shape == nullptr) return {};
    const TextFrameOptions& text = frame->shape->text;
    PMRect box = frame->shape->bounds;
    box = {box.left + text.insetLeft, box.top + text.insetTop, box.right - text.insetRight,
           box.bottom - text.insetBottom};
    const double width = (box.width() - text.gutter * (text.columns - 1)) / text.columns;
    box.left += column.column * (width + text.gutter);
    box.right = box.left + width;
    return box;
}

transformValuesRec ModelDocument::transformValues(UID uid) const {
    const PageItem* found = item(uid);
    if (found == nullptr) return {};
    const PMMatrix m = toSpread(*found);
    constexpr double degrees = 57.29577951308232;
    transformValuesRec out;
    out.scaleX = std::hypot(m.a, m.b);
    if (out.scaleX == 0) return {0, 0, std::hypot(m.c, m.d), 0};
    // In a spread y runs downward, so that a turn to the left, which counts as positive, has a negative b.
    out.rotationDegrees = m.b == 0 && m.a > 0 ? 0 : std::atan2(-m.b, m.a) * degrees;
    out.scaleY = (m.a * m.d - m.b * m.c) / out.scaleX;
    const double shear = (m.a * m.c + m.b * m.d) / out.scaleX;
    out.skewDegrees = shear == 0 || out.scaleY == 0 ? 0 : -std::atan(shear / out.scaleY) * degrees;
    return out;
}

bool ModelDocument::itemLocked(UID uid) const {
    const PageItem* found = item(uid);
    return found != nullptr && found->locked;
}

void ModelDocument::setItemLocked(UID uid, bool locked) {
    if (item(uid) == nullptr) return;
    Command command(*this, "Lock Item");
    changeable<PageItem>(uid)->locked = locked;
}

std::int32_t ModelDocument::columnIndex(UID uid) const {
    const PageItem* found = item(uid);
    return found != nullptr && found->itemClass == ItemClass::textColumnItem ? found->column : 0;
}

const std::string* ModelDocument::itemDataBlock(UID uid, int store) const {
    if (store < 0 || store > 1) return nullptr;
    if (uid == kInvalidUID || uid == ownUid) return lists.itemData[store].get();
    const PageItem* found = item(uid);
    return found == nullptr ? nullptr : found->itemData[store].get();
}

errorWord ModelDocument::setItemDataBlock(UID uid, int store, std::optional<std::string> block) {
    if (store < 0 || store > 1) return errFailed;
    std::shared_ptr<const std::string> data;
    if (block) data = std::make_shared<const std::string>(std::move(*block));
    const bool onDocument = uid == kInvalidUID || uid == ownUid;
    if (!onDocument && item(uid) == nullptr) return errFailed;
    Command command(*this, "Set Item Data");
    if (onDocument) {
        keepLists();
        lists.itemData[store] = std::move(data);
    } else {
        changeable<PageItem>(uid)->itemData[store] = std::move(data);
    }
    return 0;
}

void ModelDocument::collectItems(UID uid, std::vector<UID>& out) const {
    const PageItem* found = item(uid);
    if (found == nullptr) return;
    out.push_back(uid);
    for (UID child : found->children)
        collectItems(child, out);
    for (UID text : {found->story, found->pathStory}) {
        const Story* held = found->itemClass == ItemClass::splineItem ? story(text) : nullptr;
        if (held == nullptr || held->frames.front() != uid) continue;
        for (const ownedItemRec& owned : allOwned(*held->content))
            collectItems(owned.item, out);
    }
}

void ModelDocument::destroyTree(UID uid) {
    const PageItem* found = item(uid);
    if (found == nullptr) return;
    for (UID child : found->children)
        destroyTree(child);
    if (isTextFrameItem(*found)) detachFrame(found->story, uid);
    if (found->pathStory != kInvalidUID) detachFrame(found->pathStory, uid);
    destroy(uid);
}

/// The text of a story that keeps other frames flows on in those; a story without frames goes, with what is anchored in
/// it.
void ModelDocument::detachFrame(UID storyUid, UID frame) {
    const Story* from = story(storyUid);
    if (from == nullptr) return;
    if (from->frames.size() == 1) {
        const std::shared_ptr<StoryText> content = from->content;
        destroy(storyUid);
        for (const ownedItemRec& owned : allOwned(*content))
            destroyTree(owned.item);
        return;
    }
    std::erase(changeable<Story>(storyUid)->frames, frame);
    restampText(storyUid);
}

/// The text is composed anew when next asked for.
void ModelDocument::restampText(UID uid) {
    Story* text = changeable<Story>(uid);
    text->stamp = newStamp();
    text->layout.reset();
    text->earlier.reset();
}

}  // namespace tarnova
