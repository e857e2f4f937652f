#include "document/walk.h"

#include <algorithm>
#include <unordered_set>
#include <vector>

namespace tarnova {

namespace {

/// What the walk needs to know of the items on `deferredItems`; visitors append to the list while the walk goes on.
class DeferredLookup {
 public:
    [[nodiscard]] bool holds(const Document& document, UID item) {
        const std::optional<UIDList>& list = walkState().deferredItems;
        if (!list || list->uids.empty() || list->database != &document) return false;
        for (; known < list->uids.size(); ++known)
            items.insert(list->uids[known]);
        return items.contains(item);
    }

 private:
    std::unordered_set<UID> items;
    std::size_t known = 0;  // entries of the list that `items` holds
};

/// Puts a locked layer's lock back at the end of its visit, however that ends. The visit is a sequence, so that a
/// lock that is back leaves nothing to undo.
class LayerUnlock {
 public:
    LayerUnlock(Document& itsDocument, UID itsLayer)
        : document(itsDocument), layer(itsLayer), wasLocked(itsDocument.layerLocked(itsLayer)) {
        if (!wasLocked) return;
        isSequence = document.BeginCommandSequence(visitStepName) == 0;
        document.setLayerLocked(layer, false);
    }
    ~LayerUnlock() {
        if (!wasLocked) return;
        document.setLayerLocked(layer, true);
        if (isSequence) document.EndCommandSequence();
    }
    LayerUnlock(const LayerUnlock&) = delete;
    LayerUnlock& operator=(const LayerUnlock&) = delete;

 private:
    Document& document;
    UID layer;
    bool wasLocked;
    bool isSequence = false;
};

struct walkLimitsRec {
    std::int32_t firstPage = 0;
    std::int32_t lastPage = 0;
    WalkScope scope = WalkScope::everything;
    bool leaveOutHiddenLayers = false;
    bool skipPasteboard = false;
};

/// Words of the caller; the walk takes one of its own for each that is null.
struct walkWordsRec {
    std::int32_t* itemCount = nullptr;
    std::int32_t* textCount = nullptr;
    std::uint16_t* cancel = nullptr;
};

class Walker {
 public:
    Walker(Document& itsDocument, IFrameCallback* itsFrames, IStoryCallback* itsStories, const walkLimitsRec& itsLimits,
           const walkWordsRec& words)
        : document(itsDocument),
          frames(itsFrames),
          stories(itsStories),
          limits(itsLimits),
          itemCount(words.itemCount != nullptr ? words.itemCount : &ownItemCount),
          textCount(words.textCount != nullptr ? words.textCount : &ownTextCount),
          cancel(words.cancel != nullptr ? words.cancel : &ownCancel) {
        *itemCount = *textCount = 0;
    }
    Walker(const Walker&) = delete;
    Walker& operator=(const Walker&) = delete;

    std::int32_t visitDocument();
    std::int32_t visitItem(UID item, bool deferred);

 private:
    std::int32_t visitSpread(UID spread);
    std::int32_t visitDeferredItems();
    std::int32_t processItem(UID& item);
    std::int32_t visitText(UID textItem, UID frame, bool deferred);
    std::int32_t visitOwnedItems(UID story, bool deferred);
    std::int32_t visitChildren(UID item, bool deferred);
    [[nodiscard]] bool inScope(UID item);
    [[nodiscard]] bool masterCounts(UID masterPage);
    [[nodiscard]] bool pageInRange(UID page) const;
    [[nodiscard]] bool showsTextFirst(UID column) const;
    [[nodiscard]] bool isCloneObject(UID group) const;

    Document& document;
    IFrameCallback* frames;
    IStoryCallback* stories;
    walkLimitsRec limits;
    std::int32_t ownItemCount = 0;
    std::int32_t ownTextCount = 0;
    std::uint16_t ownCancel = 0;
    std::int32_t* itemCount;
    std::int32_t* textCount;
    std::uint16_t* cancel;
    DeferredLookup deferredItems;
    UID masterUnderVisit = kInvalidUID;
    UID lastMaster = kInvalidUID;  // asked about last, and the answer
    bool lastMasterInUse = false;
};

std::int32_t Walker::visitDocument() {
    std::int32_t result = 0;
    for (std::int32_t i = 0; i < document.spreadCount() && result == 0 && *cancel == 0; ++i)
        result = visitSpread(document.spreadAt(i));
    for (std::int32_t i = 0; i < document.masterCount() && result == 0 && *cancel == 0; ++i) {
        masterUnderVisit = document.masterAt(i);
        result = visitSpread(masterUnderVisit);
    }
    masterUnderVisit = kInvalidUID;
    const std::uint8_t* deferredToo = walkState().walkDeferredStories;
    if (result == 0 && (deferredToo == nullptr || *deferredToo != 0)) result = visitDeferredItems();
    return result;
}

std::int32_t Walker::visitDeferredItems() {
    std::int32_t result = 0;
    const std::optional<UIDList>& list = walkState().deferredItems;
    for (std::size_t i = 0; result == 0 && *cancel == 0 && list && list->database == &document; ++i) {
        if (i >= list->uids.size()) break;
        result = visitItem(list->uids[i], true);
    }
    return result;
}

std::int32_t Walker::visitSpread(UID spread) {
    std::int32_t result = 0;
    for (std::int32_t i = 1; i < document.layerCount() && result == 0 && *cancel == 0; ++i) {
        const UID layer = document.layerAt(i);
        if (limits.leaveOutHiddenLayers && !document.layerVisible(layer)) continue;
        const LayerUnlock unlock(document, layer);
        const UID node = document.spreadLayerNode(spread, layer);
        if (node != kInvalidUID) result = visitItem(node, false);
    }
    return result;
}

std::int32_t Walker::visitItem(UID item, bool deferred) {
    if (!document.itemExists(item)) return 0;
    if (!deferred && deferredItems.holds(document, item)) return 0;
    const ItemClass itemClass = document.itemClass(item);
    std::int32_t result = 0;
    if (itemClass == ItemClass::group) {
        if (isCloneObject(item)) return 0;
        result = processItem(item);
    } else if (itemClass == ItemClass::textColumnItem) {
        if (!inScope(item)) return 0;
        if (showsTextFirst(item)) result = visitText(item, document.parent(item), deferred);
    } else if (itemClass == ItemClass::splineItem) {
        if (!inScope(item)) return 0;
        result = processItem(item);
        if (result == 0 && *cancel == 0 && document.itemExists(item)) {
            if (const UID pathText = document.textOnPath(item); pathText != kInvalidUID)
                result = visitText(pathText, item, deferred);
        }
    }
    if (result != 0 || *cancel != 0 || !document.itemExists(item)) return result;
    return visitChildren(item, deferred);
}

std::int32_t Walker::processItem(UID& item) {
    ++*itemCount;
    if (frames == nullptr) return 0;
    UIDRef frame{&document, item};
    const std::int32_t result = frames->Process(frame, cancel);
    item = frame.uid;
    return result;
}

std::int32_t Walker::visitText(UID textItem, UID frame, bool deferred) {
    const UID story = document.textOfFrame(textItem);
    if (story == kInvalidUID) return 0;
    std::int32_t start = 0;
    std::int32_t length = document.totalLength(story);
    *textCount += length - 1;
    if (stories != nullptr) stories->Process({&document, story}, start, length, {&document, frame}, cancel);
    return *cancel == 0 ? visitOwnedItems(story, deferred) : 0;
}

// The list is taken behind the story's own visit, which may have changed the text, and each item is looked at again
// before its turn.
std::int32_t Walker::visitOwnedItems(UID story, bool deferred) {
    std::int32_t result = 0;
    for (const ownedItemRec& owned : document.ownedItems(story, 0, document.totalLength(story))) {
        if (result != 0 || *cancel != 0) break;
        result = visitItem(owned.item, deferred);
    }
    return result;
}

// `insertedItems` belongs to the visit of one child; what the walk does below that child must not leave its own count
// behind for the loop above.
std::int32_t Walker::visitChildren(UID item, bool deferred) {
    const std::uint16_t insertedBeside = walkState().insertedItems;
    std::int32_t result = 0;
    std::int32_t index = document.childCount(item) - 1;
    while (index >= 0 && result == 0 && *cancel == 0 && document.itemExists(item)) {
        walkState().insertedItems = 0;
        const std::int32_t last = document.childCount(item) - 1;
        if (last < 0) break;
        index = std::min(index, last);
        result = visitItem(document.childAt(item, index), deferred);
        index += walkState().insertedItems - 1;
    }
    walkState().insertedItems = insertedBeside;
    return result;
}

bool Walker::inScope(UID item) {
    const bool anyPage = limits.firstPage == 0 && limits.lastPage == 0;
    if (limits.scope == WalkScope::everything && !limits.skipPasteboard && anyPage) return true;
    const pageOfItemRec on = document.pageOfItem(item);
    if (on.isMaster) return masterCounts(on.page);
    if (limits.scope == WalkScope::mastersOnly) return false;
    return pageInRange(on.page);
}

bool Walker::masterCounts(UID masterPage) {
    if (limits.scope == WalkScope::pagesOnly) return false;
    if (limits.scope != WalkScope::pagesAndUsedMasters) return true;
    const UID master = masterUnderVisit != kInvalidUID ? masterUnderVisit : document.spreadOfPage(masterPage);
    if (master != lastMaster) {
        lastMaster = master;
        lastMasterInUse = document.masterInUse(master);
    }
    return lastMasterInUse;
}

bool Walker::pageInRange(UID page) const {
    const bool anyPage = limits.firstPage == 0 && limits.lastPage == 0;
    if (page != kInvalidUID && anyPage) return true;
    const std::int32_t index = page == kInvalidUID ? -1 : document.pageIndex(page);
    if (index < 0) return !limits.skipPasteboard;
    return index + 1 >= limits.firstPage && index + 1 <= limits.lastPage;
}

// A story is visited through the first column of its first frame, and text on a path through its frame.
bool Walker::showsTextFirst(UID column) const {
    if (document.columnIndex(column) != 0) return false;
    const UID story = document.textOfFrame(column);
    if (story == kInvalidUID) return false;
    if (document.soleFrame(story) == document.parent(column)) return true;
    const std::vector<UID> thread = document.framesOfStory(story);
    return thread.empty() || thread.front() == document.parent(column);
}

bool Walker::isCloneObject(UID group) const {
    const std::vector<storedObjectRec>& stored = walkState().storedObjects;
    return std::any_of(stored.begin(), stored.end(),
                       [group](const storedObjectRec& object) { return object.objectUid == group; });
}

}  // namespace

std::int32_t walkDocument(Document& document, IFrameCallback* frameCallback, IStoryCallback* storyCallback,
                          std::int32_t firstPage, std::int32_t lastPage, WalkScope scope, bool skipHiddenLayers,
                          bool skipPasteboard, std::int32_t* outItemCount, std::int32_t* outTextCount,
                          std::uint16_t* cancel, bool visitHiddenLayers) {
    const walkLimitsRec limits{firstPage, lastPage, scope, skipHiddenLayers && !visitHiddenLayers, skipPasteboard};
    return Walker(document, frameCallback, storyCallback, limits, {outItemCount, outTextCount, cancel}).visitDocument();
}

std::int32_t walkItem(UIDRef item, IFrameCallback* frameCallback, IStoryCallback* storyCallback,
                      std::uint16_t* cancel) {
    if (!item) return 0;
    return Walker(*item.database, frameCallback, storyCallback, {}, {nullptr, nullptr, cancel})
        .visitItem(item.uid, true);
}

std::int32_t processItem(UIDRef item, IFrameCallback* frameCallback, IStoryCallback* storyCallback,
                         std::uint16_t* cancel) {
    if (!item) return 0;
    std::uint16_t ownCancel = 0;
    std::uint16_t* word = cancel != nullptr ? cancel : &ownCancel;
    Document& document = *item.database;
    if (!document.isGroup(item.uid)) return walkItem(item, frameCallback, storyCallback, word);
    std::vector<UID> members;
    for (std::int32_t i = document.childCount(item.uid) - 1; i >= 0; --i)
        members.push_back(document.childAt(item.uid, i));
    std::int32_t result = 0;
    for (std::size_t i = 0; i < members.size() && result == 0 && *word == 0; ++i) {
        if (!document.itemExists(members[i])) continue;
        result = processItem({&document, members[i]}, frameCallback, storyCallback, word);
    }
    return result;
}

}  // namespace tarnova
