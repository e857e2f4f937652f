// Changes of page items: their content, copies, moves and groups.

#include <algorithm>
#include <utility>

#include "host/model/limits.h"
#include "host/model/model_document.h"
#include "host/model/story_text.h"
#include "host/model/tree_copy.h"

namespace tarnova {

namespace {

bool isFrameOrGroup(const PageItem& item) {
    return item.itemClass == ItemClass::splineItem || item.itemClass == ItemClass::group;
}

/// A frame, group or picture on a spread, and not in a text.
bool liesOnSpread(const PageItem* item) {
    return item != nullptr && item->spread != kInvalidUID &&
           (isFrameOrGroup(*item) || item->itemClass == ItemClass::graphic);
}

/// Lines show no text, nor does what has no path.
bool canShowText(const ItemShape& shape) {
    return shape.kind != pathInfoRec::Kind::line && shape.kind != pathInfoRec::Kind::none;
}

}  // namespace

/// What holds an item whose drawing changed draws something else: a frame, the groups around, a text that it stands in.
void ModelDocument::restampAround(UID uid) {
    while (item(uid) != nullptr && itemClass(uid) != ItemClass::node) {
        PageItem* holder = changeable<PageItem>(uid);
        holder->stamp = newStamp();
        holder->pageInSpread = PageItem::pageUnknown;
        uid = holder->parent;
    }
    if (story(uid) != nullptr) restampText(uid);
}

/// An item at another place of its spread, with all that it holds. Columns lie where their frame does.
void ModelDocument::restampTree(UID uid) {
    if (item(uid)->itemClass == ItemClass::textColumnItem) return;
    PageItem* moved = changeable<PageItem>(uid);
    moved->stamp = newStamp();
    moved->pageInSpread = PageItem::pageUnknown;
    const Story* shown = story(moved->story);
    if (shown != nullptr && shown->layout != nullptr && shown->layout->dependsOnPlaces()) restampText(moved->story);
    for (UID child : moved->children)
        restampTree(child);
}

errorWord ModelDocument::deleteItem(UID uid) {
    const PageItem* found = item(uid);
    if (found == nullptr || (!isFrameOrGroup(*found) && found->itemClass != ItemClass::graphic)) return errFailed;
    Command command(*this, "Delete Item");
    if (story(found->parent) != nullptr) return textDelete(found->parent, inlinePosition(uid)->second, 1);
    const UID above = found->parent;
    destroyTree(uid);
    if (item(above) == nullptr) return 0;
    std::erase(changeable<PageItem>(above)->children, uid);
    restampAround(above);
    return 0;
}

// Content

errorWord ModelDocument::setContentKind(UID uid, ContentKind kind) {
    const PageItem* found = item(uid);
    if (found == nullptr || found->itemClass != ItemClass::splineItem || found->shape == nullptr) return errFailed;
    if (found->shape->content == kind) return 0;
    if (kind == ContentKind::text) return becomeTextFrame(uid);
    if (found->shape->content == ContentKind::text) return leaveText(uid, kind);
    Command command(*this, "Set Content");
    setContent(*changeable<PageItem>(uid), kind);
    restampAround(uid);
    return 0;
}

errorWord ModelDocument::convertToTextFrame(UID uid) {
    return setContentKind(uid, ContentKind::text);
}

void ModelDocument::setContent(PageItem& which, ContentKind kind) {
    auto shape = std::make_shared<ItemShape>(*which.shape);
    shape->content = kind;
    which.shape = std::move(shape);
}

errorWord ModelDocument::becomeTextFrame(UID uid) {
    const PageItem& found = *item(uid);
    if (!canShowText(*found.shape)) return errFailed;
    if (!uidsLeft(static_cast<std::size_t>(found.shape->text.columns) + 1)) return errRunMemory;
    Command command(*this, "Convert to Text Frame");
    for (UID child : found.children)
        destroyTree(child);
    Story story;
    story.frames = {uid};
    story.content = emptyStoryText(attributePool().paragraph({}), attributePool().plainRun());
    story.stamp = newStamp();
    PageItem* frame = changeable<PageItem>(uid);
    frame->story = create(std::move(story), takeUid())->uid;
    frame->children.clear();
    setContent(*frame, ContentKind::text);
    makeColumns(uid, {});
    restampAround(uid);
    return 0;
}

/// `uids` are those of the columns, as far as they are given.
void ModelDocument::makeColumns(UID uid, const std::vector<UID>& uids) {
    PageItem* frame = changeable<PageItem>(uid);
    for (std::int32_t i = 0; i < frame->shape->text.columns; ++i) {
        const auto given = static_cast<std::size_t>(i);
        PageItem column;
        column.itemClass = ItemClass::textColumnItem;
        column.parent = uid;
        column.spread = frame->spread;
        column.story = frame->story;
        column.column = i;
        column.stamp = newStamp();
        const bool isGiven = given < uids.size() && uids[given] != kInvalidUID;
        frame->children.push_back(create(std::move(column), isGiven ? uids[given] : takeUid())->uid);
    }
}

errorWord ModelDocument::leaveText(UID uid, ContentKind kind) {
    const UID storyUid = item(uid)->story;
    const Story& from = *story(storyUid);
    if (from.frames.size() == 1 && from.length() > 1) return errFailed;
    Command command(*this, "Set Content");
    PageItem* frame = changeable<PageItem>(uid);
    for (UID column : frame->children)
        destroy(column);
    frame->children.clear();
    frame->story = kInvalidUID;
    setContent(*frame, kind);
    detachFrame(storyUid, uid);
    restampAround(uid);
    return 0;
}

// Place

/// Applies a matrix of the spread's coordinates to an item, wherever it hangs.
errorWord ModelDocument::transformInSpread(UID uid, const PMMatrix& change, std::string_view name) {
    const PageItem* above = item(item(uid)->parent);
    PMMatrix place = item(uid)->toParent.then(change);
    if (above->itemClass != ItemClass::node) {
        const PMMatrix outer = toSpread(*above);
        const std::optional<PMMatrix> back = outer.inverse();
        if (!back) return errFailed;
        place = item(uid)->toParent.then(outer).then(change).then(*back);
    }
    if (!withinCoordinates(place)) return errFailed;
    if (place == item(uid)->toParent) return 0;
    Command command(*this, name);
    changeable<PageItem>(uid)->toParent = place;
    restampTree(uid);
    restampAround(above->uid);
    return 0;
}

errorWord ModelDocument::moveBy(UID uid, double dx, double dy) {
    const PageItem* found = item(uid);
    const bool isPicture = found != nullptr && found->graphic != nullptr;  // which may lie in a frame in a text
    if (!isPicture && !liesOnSpread(found)) return errFailed;
    return transformInSpread(uid, {1, 0, 0, 1, dx, dy}, "Move Item");
}

/// Bounds in the item's own coordinates, which no turn of the item changes.
PMRect ModelDocument::innerBounds(const PageItem& which) const {
    if (which.shape != nullptr) return which.shape->bounds;
    if (which.graphic != nullptr) return which.graphic->bounds;
    PMRect out;
    bool first = true;
    for (UID child : which.children) {
        const PageItem& member = *item(child);
        const PMRect bounds = member.toParent.mapBounds(innerBounds(member));
        out = std::exchange(first, false) ? bounds : out.united(bounds);
    }
    return out;
}

errorWord ModelDocument::rotateBy(UID uid, double degrees) {
    const PageItem* found = item(uid);
    if (!liesOnSpread(found)) return errFailed;
    const PMRect box = innerBounds(*found);
    const PMPoint middle = toSpread(*found).map({(box.left + box.right) / 2, (box.top + box.bottom) / 2});
    return transformInSpread(uid, turnAround(middle, degrees), "Rotate Item");
}

// Copies

errorWord ModelDocument::duplicateItem(UID uid, UID& outCopy) {
    outCopy = kInvalidUID;
    const PageItem* found = item(uid);
    if (!liesOnSpread(found) || !isFrameOrGroup(*found)) return errFailed;
    std::vector<UID> originals;
    collectItems(uid, originals);
    if (!uidsLeft(2 * originals.size())) return errRunMemory;
    Command command(*this, "Duplicate Item");
    TreeCopy trees(*this);
    outCopy = trees.copy(*found, found->parent, found->spread);
    trees.finish();
    std::vector<UID> copies;
    collectItems(outCopy, copies);
    for (UID copy : copies)
        changeable<PageItem>(copy)->overrides = kInvalidUID;
    std::vector<UID>& siblings = changeable<PageItem>(found->parent)->children;
    siblings.insert(std::find(siblings.begin(), siblings.end(), uid) + 1, outCopy);
    restampAround(found->parent);
    return 0;
}

// Groups

/// How many groups lie in each other below the item, itself included.
std::size_t ModelDocument::groupDepthBelow(const PageItem& which) const {
    std::size_t deepest = 0;
    for (UID child : which.children)
        deepest = std::max(deepest, groupDepthBelow(*item(child)));
    return which.itemClass == ItemClass::group ? deepest + 1 : deepest;
}

std::size_t ModelDocument::groupDepthAround(const PageItem& which) const {
    std::size_t depth = 0;
    for (const PageItem* at = item(which.parent); at != nullptr; at = item(at->parent))
        depth += at->itemClass == ItemClass::group ? 1 : 0;
    return depth;
}

/// The place of an item below its parent, over all layers of the spread: greater is further in front.
std::pair<std::size_t, std::size_t> ModelDocument::stackPlace(const PageItem& which) const {
    const std::vector<UID>& nodes = spread(which.spread)->layerNodes;
    const std::vector<UID>& siblings = item(which.parent)->children;
    const auto layer = std::find(nodes.begin(), nodes.end(), which.parent) - nodes.begin();
    const auto index = std::find(siblings.begin(), siblings.end(), which.uid) - siblings.begin();
    return {static_cast<std::size_t>(layer), static_cast<std::size_t>(index)};
}

bool ModelDocument::mayGroup(const std::vector<UID>& members) const {
    if (members.size() < 2 || std::unordered_set<UID>(members.begin(), members.end()).size() != members.size()) {
        return false;
    }
    const PageItem* first = item(members.front());
    if (!liesOnSpread(first)) return false;
    const bool belowNodes = item(first->parent)->itemClass == ItemClass::node;
    std::size_t depth = 0;
    for (UID uid : members) {
        const PageItem* member = item(uid);
        if (member == nullptr || !isFrameOrGroup(*member) || member->spread != first->spread) return false;
        const PageItem* above = item(member->parent);
        const bool sameLevel =
            above != nullptr && (belowNodes ? above->itemClass == ItemClass::node : above->uid == first->parent);
        if (!sameLevel) return false;
        depth = std::max(depth, groupDepthBelow(*member));
    }
    return groupDepthAround(*first) + 1 + depth <= groupDepthLimit;
}

errorWord ModelDocument::groupItems(const std::vector<UID>& items, UID& outGroup) {
    outGroup = kInvalidUID;
    if (!mayGroup(items)) return errFailed;
    if (!uidsLeft(1)) return errRunMemory;
    Command command(*this, "Group Items");
    PageItem group;
    group.itemClass = ItemClass::group;
    group.children = items;
    std::sort(group.children.begin(), group.children.end(),
              [this](UID a, UID b) { return stackPlace(*item(a)) < stackPlace(*item(b)); });
    const PageItem& front = *item(group.children.back());
    group.parent = front.parent;
    group.spread = front.spread;
    group.stamp = newStamp();
    const PageItem* made = create(std::move(group), takeUid());
    std::vector<UID>& siblings = changeable<PageItem>(made->parent)->children;
    siblings.insert(std::find(siblings.begin(), siblings.end(), front.uid) + 1, made->uid);
    for (UID uid : made->children) {
        PageItem* member = changeable<PageItem>(uid);
        std::erase(changeable<PageItem>(member->parent)->children, uid);
        member->parent = made->uid;
    }
    restampAround(made->parent);
    outGroup = made->uid;
    return 0;
}

errorWord ModelDocument::ungroup(UID uid, std::vector<UID>& outMembers) {
    outMembers.clear();
    const PageItem* found = item(uid);
    if (!liesOnSpread(found) || found->itemClass != ItemClass::group) return errFailed;
    const bool allStayWithin = std::all_of(found->children.begin(), found->children.end(), [&](UID member) {
        return withinCoordinates(item(member)->toParent.then(found->toParent));
    });
    if (!allStayWithin) return errFailed;
    Command command(*this, "Ungroup");
    const PageItem group = *found;
    for (UID memberUid : group.children)
        takeOutOf(group, *changeable<PageItem>(memberUid));
    std::vector<UID>& siblings = changeable<PageItem>(group.parent)->children;
    const auto place = siblings.erase(std::find(siblings.begin(), siblings.end(), uid));
    siblings.insert(place, group.children.begin(), group.children.end());
    destroy(uid);
    restampAround(group.parent);
    outMembers = group.children;
    return 0;
}

/// What the group said of its members they say themselves now: not to print, and in whose place they stand.
void ModelDocument::takeOutOf(const PageItem& group, PageItem& member) {
    member.parent = group.parent;
    member.nonPrinting = member.nonPrinting || group.nonPrinting;
    if (member.overrides == kInvalidUID) member.overrides = group.overrides;
    if (group.toParent.isIdentity()) return;
    member.toParent = member.toParent.then(group.toParent);
    restampTree(member.uid);
}

}  // namespace tarnova
