#include "host/render/display_list.h"

#include <algorithm>
#include <string>

#include "host/text/composed_parts.h"

namespace tarnova {

namespace {

/// Fills one list; the page's document and the list are the same for every item of it.
class ListBuilder {
 public:
    ListBuilder(const DocumentModel& source, const Page& itsPage, DisplayList& target)
        : document(source), page(itsPage), list(target), templateStamp(source.templateStamp()) {}

    [[nodiscard]] bool addTop(const PageItem& item) {
        fromMaster = item.spread != page.spread;
        const PMPoint origin =
            fromMaster ? document.pageOrigin(page.uid, item) : PMPoint{page.bounds.left, page.bounds.top};
        return add(item, {1, 0, 0, 1, -origin.x, -origin.y});
    }

    [[nodiscard]] bool addAlone(const PageItem& item) {
        return addAt(item, document.toSpread(item).then({1, 0, 0, 1, -page.bounds.left, -page.bounds.top}));
    }

 private:
    [[nodiscard]] bool add(const PageItem& item, const PMMatrix& parentToPage) {
        return addAt(item, item.toParent.then(parentToPage));
    }

    [[nodiscard]] bool addAt(const PageItem& item, const PMMatrix& toPage) {
        const PageItem* picture = item.shape == nullptr ? nullptr : pictureIn(item);
        if (picture != nullptr) {
            addShape(item, toPage, ShapePart::fill);
            addPicture(item, *picture, toPage);
            addShape(item, toPage, ShapePart::stroke);
        } else if (item.shape != nullptr) {
            addShape(item, toPage, ShapePart::all);
        }
        for (const UID story : {item.pathStory, item.story}) {
            if (story != kInvalidUID && !addText(item, story, toPage)) return false;
        }
        for (const UID childUid : item.children) {
            const PageItem* child = document.item(childUid);
            if (child == nullptr || child->nonPrinting || child->itemClass == ItemClass::textColumnItem) continue;
            if (!add(*child, toPage)) return false;
        }
        return true;
    }

    /// The picture that a frame shows; null when it has none or that doesn't print.
    [[nodiscard]] const PageItem* pictureIn(const PageItem& frame) const {
        if (frame.children.empty() || frame.story != kInvalidUID) return nullptr;
        const PageItem* child = document.item(frame.children.front());
        const bool isShown = child != nullptr && child->graphic != nullptr && !child->nonPrinting;
        return isShown ? child : nullptr;
    }

    void addShape(const PageItem& item, const PMMatrix& toPage, ShapePart part) {
        const ItemShape& shape = *item.shape;
        const bool filled = part != ShapePart::stroke && paints(shape.fill);
        const bool stroked = part != ShapePart::fill && shape.stroke.weight > 0 && paints(shape.stroke.paint);
        if (filled || stroked) addEntry(item, toPage).part = part;
    }

    /// A change of the picture gives its frame a new stamp too.
    void addPicture(const PageItem& frame, const PageItem& picture, const PMMatrix& toPage) {
        addEntry(frame, toPage).picture = &picture;
    }

    DisplayItem& addEntry(const PageItem& item, const PMMatrix& toPage) {
        DisplayItem& entry = list.items.emplace_back();
        entry.toPage = toPage;
        entry.shape = item.shape.get();
        entry.itemStamp = item.stamp;
        entry.repeats = holderRepeats && item.stamp < templateStamp;
        return entry;
    }

    [[nodiscard]] bool paints(const Paint& paint) const {
        return resolvePaint(paint, *list.swatches).space != Swatch::Space::none;
    }

    [[nodiscard]] bool addText(const PageItem& item, UID storyUid, const PMMatrix& toPage) {
        const Story* story = document.story(storyUid);
        if (story == nullptr || story->content == nullptr) return true;
        const auto frame = std::find(story->frames.begin(), story->frames.end(), item.uid);
        if (frame == story->frames.end()) return true;
        const auto frameIndex = static_cast<std::int32_t>(frame - story->frames.begin());
        const StoryLayout* text = layoutFor(*story, frameIndex);
        if (text == nullptr || !faultOf(*text).empty()) return false;
        if (text->isOverset() && item.uid == story->frames.back()) {
            list.overset.push_back({storyUid, item.uid, page.uid});
        }
        addColumns(item, *story, *text, frameIndex, toPage);
        return !story->content->hasOwned() || addAnchored(item, *story, *text, toPage);
    }

    /// The items that stand in the text of a frame, over it.
    [[nodiscard]] bool addAnchored(const PageItem& frame, const Story& story, const StoryLayout& layout,
                                   const PMMatrix& toPage) {
        std::vector<AnchoredItem> anchored;
        document.anchoredInFrame(frame, story, layout, anchored);
        const bool outerRepeats = holderRepeats;
        holderRepeats = outerRepeats && frame.stamp < templateStamp && story.stamp < templateStamp;
        const bool all = std::all_of(anchored.begin(), anchored.end(), [&](const AnchoredItem& entry) {
            return add(*entry.item, entry.toFrame.then(toPage));
        });
        holderRepeats = outerRepeats;
        return all;
    }

    /// Text of a master with page characters is composed for each page that shows it.
    [[nodiscard]] const StoryLayout* layoutFor(const Story& story, std::int32_t frameIndex) {
        const bool isShared = fromMaster && story.content->pageCharacters() > 0;
        if (!isShared) return document.layoutThroughFrame(story.uid, frameIndex);
        return list.ownTexts.emplace_back(document.layoutOnPage(story.uid, page.uid)).get();
    }

    void addColumns(const PageItem& item, const Story& story, const StoryLayout& text, std::int32_t frameIndex,
                    const PMMatrix& toPage) {
        static thread_local std::vector<ShownColumns> columns;
        columnsOfFrame(text, frameIndex, columns);
        for (const ShownColumns& shown : columns)
            addShown(item, story, shown, toPage);
    }

    void addShown(const PageItem& item, const Story& story, const ShownColumns& shown, const PMMatrix& toPage) {
        DisplayItem& entry = list.items.emplace_back();
        entry.toPage = toPage;
        entry.text = shown.text;
        entry.textStart = shown.textStart;
        entry.characters = story.content.get();
        entry.firstColumn = shown.firstColumn;
        entry.columnCount = shown.columnCount;
        entry.itemStamp = item.stamp;
        entry.storyStamp = story.stamp;
        const bool isUnchanged = item.stamp < templateStamp && story.stamp < templateStamp;
        entry.repeats = holderRepeats && isUnchanged && story.content->pageCharacters() == 0;
    }

    const DocumentModel& document;
    const Page& page;
    DisplayList& list;
    std::uint64_t templateStamp;
    bool fromMaster = false;    // the item in work is a master's
    bool holderRepeats = true;  // the texts in which an item stands
};

}  // namespace

namespace {

void beginList(const DocumentModel& document, const PMRect& page, DisplayList& list) {
    list.items.clear();
    list.overset.clear();
    list.ownTexts.clear();
    list.page = page;
    list.swatches = &document.swatches();
    list.pictureFolder = document.documentFolder();
}

}  // namespace

bool buildDisplayList(const DocumentModel& document, UID pageUid, DisplayList& list) {
    const Page* page = document.page(pageUid);
    beginList(document, page == nullptr ? PMRect{} : page->bounds, list);
    if (page == nullptr) return false;

    static thread_local std::vector<const PageItem*> topItems;
    topItems.clear();
    document.drawnItems(pageUid, topItems);
    ListBuilder builder(document, *page, list);
    return std::all_of(topItems.begin(), topItems.end(), [&](const PageItem* item) { return builder.addTop(*item); });
}

bool buildItemList(const DocumentModel& document, UID uid, DisplayList& list) {
    const PageItem* item = document.item(uid);
    Page sheet;
    if (item != nullptr) sheet = {.spread = item->spread, .bounds = document.boundsInSpread(uid)};
    beginList(document, sheet.bounds, list);
    return item != nullptr && ListBuilder(document, sheet, list).addAlone(*item);
}

const char* whyNoDisplayList(const DocumentModel& document, UID page) {
    if (document.page(page) == nullptr) return "the page isn't in the document";
    for (UID story : document.stories()) {
        const auto* text = dynamic_cast<const ComposedStory*>(document.layoutOf(story, 0));
        if (text != nullptr && !text->fault.empty()) return text->fault.c_str();
    }
    return "the document has no composer for its text";
}

PaintColor resolvePaint(const Paint& paint, const std::vector<Swatch>& swatches) {
    PaintColor color;
    if (paint.swatch <= swatchNone || static_cast<std::size_t>(paint.swatch) >= swatches.size()) return color;
    const Swatch& swatch = swatches[static_cast<std::size_t>(paint.swatch)];
    color.space = swatch.space;
    const double tint = std::clamp(paint.tint, 0.0, 1.0);
    for (int i = 0; i < 4; ++i) {
        const double full = std::clamp(swatch.values[i], 0.0, 1.0);
        color.values[i] = swatch.space == Swatch::Space::rgb ? 1 - (1 - full) * tint : full * tint;
    }
    if (swatch.space == Swatch::Space::rgb) color.values[3] = 0;
    return color;
}

}  // namespace tarnova
