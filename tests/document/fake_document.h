// A document small enough to see through: what the walk and the tag manager ask of one, and nothing behind it. Tests
// build it with short verbs and read its log of changes.

#pragma once

#include <algorithm>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "document/document.h"

namespace tarnova {

class FakeAttributes final : public AttributeBossList {
 public:
    std::shared_ptr<const TextAttribute> tags[2];
    int look = 0;  // stands for all other attributes

    [[nodiscard]] const TextAttribute* QueryByClassID(TextAttributeClass attributeClass) const override {
        if (attributeClass == TextAttributeClass::kelvaneTag) return tags[0].get();
        if (attributeClass == TextAttributeClass::tallyraTag) return tags[1].get();
        return nullptr;
    }
};

struct FakeStory {
    std::u32string text;
    std::vector<std::shared_ptr<const FakeAttributes>> attributes;  // one a character
    std::vector<std::int32_t> threadLengths;
    std::vector<ownedItemRec> owned;
    std::vector<UID> frames;
};

struct FakeItem {
    ItemClass itemClass = ItemClass::none;
    UID parent = kInvalidUID;
    std::vector<UID> children;
    pageOfItemRec page;
    UID story = kInvalidUID;
    std::int32_t column = 0;
    UID pathText = kInvalidUID;
    std::optional<std::string> data[2];
};

class FakeTable final : public ITableCommands {
 public:
    bool hasCommands = true;
    bool canApply = true;
    std::shared_ptr<const INokDataTagTableAttr> attribute;

    bool CanApplyOverrides() const override { return canApply; }
    errorWord ApplyOverride(std::shared_ptr<const INokDataTagTableAttr> newAttribute) override {
        attribute = std::move(newAttribute);
        return 0;
    }
};

struct FakeLayer {
    UID uid = kInvalidUID;
    bool visible = true;
    bool locked = false;
};

class FakeDocument final : public Document {
 public:
    // Building. Every verb gives the UID of what it made.

    /// Starts with the pages layer and one more.
    FakeDocument() {
        addLayer();
        addLayer();
    }
    UID newUid() { return ++lastUid; }
    UID addLayer() {
        layers.push_back({newUid()});
        return layers.back().uid;
    }
    /// A spread with one page.
    UID addSpread() { return addSpreadTo(spreads, false); }
    UID addMaster() { return addSpreadTo(masters, true); }
    [[nodiscard]] UID pageOfSpread(UID spread) const { return pagesBySpread.at(spread); }
    [[nodiscard]] UID node(UID spread, std::size_t layer = 1) const { return nodes.at({spread, layers[layer].uid}); }
    UID addItem(UID parentItem, ItemClass itemClass) {
        const UID uid = newUid();
        items[uid].itemClass = itemClass;
        items[uid].parent = parentItem;
        if (parentItem == kInvalidUID) return uid;
        items[uid].page = items[parentItem].page;
        items[parentItem].children.push_back(uid);
        return uid;
    }
    UID addFrame(UID parentItem) { return addItem(parentItem, ItemClass::splineItem); }
    UID addStory(std::u32string text, std::vector<std::int32_t> threadLengths = {}) {
        const UID uid = newUid();
        FakeStory& story = storiesByUid[uid];
        story.text = std::move(text);
        story.attributes.assign(story.text.size(), std::make_shared<const FakeAttributes>());
        if (threadLengths.empty()) threadLengths = {static_cast<std::int32_t>(story.text.size())};
        story.threadLengths = std::move(threadLengths);
        return uid;
    }
    /// A text frame with one column; the frame joins the story's thread.
    UID addTextFrame(UID parentItem, UID storyUid) {
        const UID frame = addFrame(parentItem);
        const UID columnItem = addItem(frame, ItemClass::textColumnItem);
        items[columnItem].story = items[frame].story = storyUid;
        storiesByUid[storyUid].frames.push_back(frame);
        return frame;
    }
    void moveToPasteboard(UID item) {
        items[item].page.page = kInvalidUID;
        for (const UID child : items[item].children)
            moveToPasteboard(child);
    }
    void setLook(UID storyUid, std::int32_t start, std::int32_t count, int look) {
        changeRuns(storyUid, start, count, [look](FakeAttributes& attributes) { attributes.look = look; });
    }
    void setTag(UID storyUid, std::int32_t start, std::int32_t count, std::uint32_t tagId, std::string data,
                const std::string& owner = "Kelvane") {
        const bool kelvane = owner == "Kelvane";
        const auto tag = std::make_shared<const TagAttribute>(
            kelvane ? TextAttributeClass::kelvaneTag : TextAttributeClass::tallyraTag,
            TagAttribute::Content{owner, "Highlight", "Green", "Spare", tagId, std::move(data)});
        changeRuns(storyUid, start, count, [&](FakeAttributes& attributes) { attributes.tags[kelvane ? 0 : 1] = tag; });
    }

    std::vector<FakeLayer> layers;
    std::vector<UID> spreads, masters;
    std::vector<UID> pages;
    std::map<UID, UID> pagesBySpread;
    std::map<std::pair<UID, UID>, UID> nodes;  // by spread and layer
    std::map<UID, FakeItem> items;
    std::map<UID, FakeStory> storiesByUid;
    std::map<UID, FakeTable> tables;
    std::vector<UID> mastersInUse;
    std::optional<std::string> documentData[2];
    std::vector<std::string> log;  // of sequences and locks
    bool refusesChanges = false;
    std::string folder;
    std::string nameOfMasters;

    // Document.

    [[nodiscard]] errorWord BeginCommandSequence(std::string_view name, bool) override {
        if (refusesChanges) return 1;
        log.push_back("begin " + std::string(name));
        return 0;
    }
    void EndCommandSequence() override { log.emplace_back("end"); }
    bool undoNamedStep(std::string_view) override { return false; }

    [[nodiscard]] std::int32_t spreadCount() const override { return countOf(spreads); }
    [[nodiscard]] UID spreadAt(std::int32_t index) const override { return spreads[static_cast<std::size_t>(index)]; }
    [[nodiscard]] std::int32_t masterCount() const override { return countOf(masters); }
    [[nodiscard]] UID masterAt(std::int32_t index) const override { return masters[static_cast<std::size_t>(index)]; }
    [[nodiscard]] std::string masterName(UID) const override { return nameOfMasters; }
    [[nodiscard]] bool masterInUse(UID master) const override {
        return std::find(mastersInUse.begin(), mastersInUse.end(), master) != mastersInUse.end();
    }
    [[nodiscard]] std::int32_t layerCount() const override { return countOf(layers); }
    [[nodiscard]] UID layerAt(std::int32_t index) const override { return layers[static_cast<std::size_t>(index)].uid; }
    [[nodiscard]] bool layerVisible(UID layer) const override { return layerOf(layer).visible; }
    [[nodiscard]] bool layerLocked(UID layer) const override { return layerOf(layer).locked; }
    void setLayerLocked(UID layer, bool locked) override {
        const_cast<FakeLayer&>(layerOf(layer)).locked = locked;
        log.emplace_back(locked ? "lock" : "unlock");
    }
    [[nodiscard]] UID spreadLayerNode(UID spread, UID layer) const override {
        const auto found = nodes.find({spread, layer});
        return found == nodes.end() ? kInvalidUID : found->second;
    }
    [[nodiscard]] std::int32_t pageCount() const override { return countOf(pages); }
    [[nodiscard]] UID pageAt(std::int32_t index) const override { return pages[static_cast<std::size_t>(index)]; }
    [[nodiscard]] std::int32_t pageIndex(UID page) const override {
        const auto found = std::find(pages.begin(), pages.end(), page);
        return found == pages.end() ? -1 : static_cast<std::int32_t>(found - pages.begin());
    }
    [[nodiscard]] std::string pageName(UID page) const override { return std::to_string(pageIndex(page) + 1); }
    [[nodiscard]] UID spreadOfPage(UID page) const override {
        for (const auto& [spread, itsPage] : pagesBySpread)
            if (itsPage == page) return spread;
        return kInvalidUID;
    }
    [[nodiscard]] std::vector<UID> pagesOfSpread(UID spread) const override { return {pagesBySpread.at(spread)}; }
    [[nodiscard]] errorWord duplicateSpread(UID) override { return 1; }
    [[nodiscard]] errorWord addPages(std::int32_t) override { return 1; }
    [[nodiscard]] errorWord removePages(const std::vector<UID>&) override { return 1; }
    errorWord linkFrames(UID, UID) override { return errFailed; }
    UID masterOfPage(UID) const override { return kInvalidUID; }
    errorWord applyMaster(const std::vector<UID>&, UID) override { return errFailed; }
    errorWord overrideMasterItems(const std::vector<UID>&) override { return errFailed; }
    UID overriddenItem(UID) const override { return kInvalidUID; }
    void clearOverriddenMarks() override {}
    [[nodiscard]] std::vector<sectionRec> sections() const override { return {}; }
    [[nodiscard]] errorWord createSection(const sectionRec&) override { return 1; }
    void setPlaceInOutput(std::int32_t, std::int32_t) override {}

    [[nodiscard]] ItemClass itemClass(UID item) const override { return items.at(item).itemClass; }
    [[nodiscard]] bool itemExists(UID item) const override { return items.contains(item); }
    [[nodiscard]] UID parent(UID item) const override { return items.at(item).parent; }
    [[nodiscard]] std::int32_t childCount(UID item) const override { return countOf(items.at(item).children); }
    [[nodiscard]] UID childAt(UID item, std::int32_t index) const override {
        return items.at(item).children[static_cast<std::size_t>(index)];
    }
    [[nodiscard]] pageOfItemRec pageOfItem(UID item) const override { return items.at(item).page; }
    [[nodiscard]] bool isGroup(UID item) const override { return itemClass(item) == ItemClass::group; }
    [[nodiscard]] bool isTextFrame(UID item) const override { return items.at(item).story != kInvalidUID; }
    [[nodiscard]] bool isGraphicFrame(UID) const override { return false; }
    [[nodiscard]] ContentKind contentKind(UID) const override { return ContentKind::unassigned; }
    errorWord setContentKind(UID, ContentKind) override { return errFailed; }
    errorWord convertToTextFrame(UID) override { return errFailed; }
    [[nodiscard]] pathInfoRec pathInfo(UID) const override { return {}; }
    [[nodiscard]] PMRect boundsInSpread(UID) const override { return {}; }
    [[nodiscard]] transformValuesRec transformValues(UID) const override { return {}; }
    [[nodiscard]] bool itemLocked(UID) const override { return false; }
    void setItemLocked(UID, bool) override {}
    [[nodiscard]] errorWord deleteItem(UID item) override {
        std::erase(items[items[item].parent].children, item);
        items.erase(item);
        return 0;
    }
    errorWord duplicateItem(UID, UID&) override { return errFailed; }
    errorWord moveBy(UID, double, double) override { return errFailed; }
    errorWord rotateBy(UID, double) override { return errFailed; }
    errorWord groupItems(const std::vector<UID>&, UID&) override { return errFailed; }
    errorWord ungroup(UID, std::vector<UID>&) override { return errFailed; }
    [[nodiscard]] std::int32_t columnIndex(UID column) const override { return items.at(column).column; }
    [[nodiscard]] UID textOnPath(UID item) const override { return items.at(item).pathText; }
    [[nodiscard]] const std::string* itemDataBlock(UID item, int store) const override {
        const auto& data = item == kInvalidUID ? documentData[store] : items.at(item).data[store];
        return data ? &*data : nullptr;
    }
    [[nodiscard]] errorWord setItemDataBlock(UID item, int store, std::optional<std::string> block) override {
        if (refusesChanges) return 1;
        (item == kInvalidUID ? documentData[store] : items.at(item).data[store]) = std::move(block);
        return 0;
    }

    [[nodiscard]] std::vector<UID> stories() const override {
        std::vector<UID> uids;
        for (const auto& [uid, story] : storiesByUid)
            uids.push_back(uid);
        return uids;
    }
    [[nodiscard]] UID textOfFrame(UID item) const override { return items.at(item).story; }
    [[nodiscard]] std::vector<UID> framesOfStory(UID storyUid) const override {
        return storiesByUid.at(storyUid).frames;
    }
    [[nodiscard]] std::int32_t totalLength(UID storyUid) const override {
        return countOf(storiesByUid.at(storyUid).text);
    }
    [[nodiscard]] textSpanRec threadSpan(UID storyUid, std::int32_t position) const override {
        std::int32_t start = 0;
        for (const std::int32_t length : storiesByUid.at(storyUid).threadLengths) {
            if (position < start + length) return {start, length};
            start += length;
        }
        return {start, 0};
    }
    [[nodiscard]] std::u32string textRead(UID storyUid, std::int32_t start, std::int32_t length) const override {
        return storiesByUid.at(storyUid).text.substr(static_cast<std::size_t>(start), static_cast<std::size_t>(length));
    }
    /// New text takes the attributes of the first replaced character.
    [[nodiscard]] errorWord textReplace(UID storyUid, std::int32_t start, std::int32_t count, std::u32string_view text,
                                        bool) override {
        FakeStory& story = storiesByUid[storyUid];
        const auto at = static_cast<std::size_t>(start);
        const auto attributes = story.attributes[at];
        const auto first = story.attributes.begin() + start;
        story.text.replace(at, static_cast<std::size_t>(count), text);
        story.attributes.insert(story.attributes.erase(first, first + count), text.size(), attributes);
        growThread(story, start, static_cast<std::int32_t>(text.size()) - count);
        return 0;
    }
    [[nodiscard]] errorWord textDelete(UID storyUid, std::int32_t start, std::int32_t count) override {
        return textReplace(storyUid, start, count, U"", true);
    }
    [[nodiscard]] double numberAttributeAt(UID, std::int32_t, TextAttributeClass) const override { return 0; }
    [[nodiscard]] attributeRunRec attributeRunAt(UID storyUid, std::int32_t position) const override {
        const auto& attributes = storiesByUid.at(storyUid).attributes;
        if (position < 0 || position >= countOf(attributes)) return {};
        const auto first = attributes.begin() + position;
        const auto last = std::find_if(first, attributes.end(), [&](const auto& other) { return other != *first; });
        return {first->get(), static_cast<std::int32_t>(last - first)};
    }
    [[nodiscard]] errorWord attributeApply(UID storyUid, std::int32_t start, std::int32_t count,
                                           std::shared_ptr<const TextAttribute> attribute) override {
        if (refusesChanges) return 1;
        const int store = attribute->attributeClass() == TextAttributeClass::kelvaneTag ? 0 : 1;
        changeRuns(storyUid, start, count, [&](FakeAttributes& run) { run.tags[store] = attribute; });
        return 0;
    }
    [[nodiscard]] errorWord attributeRemove(UID storyUid, std::int32_t start, std::int32_t count,
                                            TextAttributeClass attributeClass) override {
        if (refusesChanges) return 1;
        const int store = attributeClass == TextAttributeClass::kelvaneTag ? 0 : 1;
        changeRuns(storyUid, start, count, [&](FakeAttributes& run) { run.tags[store] = nullptr; });
        return 0;
    }
    errorWord importText(UID, std::int32_t, std::int32_t, const textSourceRec&, std::string_view,
                         std::int32_t&) override {
        return errImportFilter;
    }
    std::string importFilterFor(const std::string&) const override { return {}; }
    [[nodiscard]] std::vector<ownedItemRec> ownedItems(UID storyUid, std::int32_t start,
                                                       std::int32_t count) const override {
        std::vector<ownedItemRec> found;
        for (const ownedItemRec& owned : storiesByUid.at(storyUid).owned)
            if (owned.position >= start && owned.position < start + count) found.push_back(owned);
        return found;
    }
    [[nodiscard]] bool hasOwnedItem(UID storyUid, std::int32_t start, std::int32_t count) const override {
        return !ownedItems(storyUid, start, count).empty();
    }
    [[nodiscard]] std::optional<std::pair<UID, std::int32_t>> inlinePosition(UID) const override { return {}; }
    [[nodiscard]] errorWord anchorItem(UID, UID, std::int32_t) override { return 1; }
    [[nodiscard]] errorWord releaseItem(UID) override { return 1; }
    [[nodiscard]] textSpanRec paragraphAt(UID, std::int32_t) const override { return {}; }
    std::vector<usedFontRec> usedFonts() const override { return {}; }
    void composeDocument() override {}
    void composeStoryThrough(UID, std::int32_t) override {}
    [[nodiscard]] UID frameAt(UID storyUid, std::int32_t) override {
        const auto& frames = storiesByUid.at(storyUid).frames;
        return frames.empty() ? kInvalidUID : frames.front();
    }
    [[nodiscard]] UID soleFrame(UID storyUid) const override {
        const auto& frames = storiesByUid.at(storyUid).frames;
        return frames.size() == 1 ? frames.front() : kInvalidUID;
    }
    [[nodiscard]] bool isOverset(UID) override { return false; }
    std::optional<PMRect> textBounds(UID, std::int32_t, std::int32_t) override { return {}; }

    UID tableOfCell(UID, std::int32_t) const override { return kInvalidUID; }
    UID tableOfOwnedItem(UID item) const override { return tables.contains(item) ? item : kInvalidUID; }
    UID storyOfTable(UID) const override { return kInvalidUID; }
    std::int32_t rowCount(UID) const override { return 0; }
    std::int32_t columnCount(UID) const override { return 0; }
    GridArea cellAnchor(UID, std::int32_t, std::int32_t) const override { return {}; }
    bool cellIsAnchor(UID, std::int32_t, std::int32_t) const override { return false; }
    textSpanRec cellTextSpan(UID, std::int32_t, std::int32_t) const override { return {}; }
    errorWord deleteRows(UID, std::int32_t, std::int32_t) override { return errFailed; }
    cellSelectionRec selectedCells() const override { return {}; }
    const INokDataTagTableAttr* tableAttribute(UID table) const override {
        const auto found = tables.find(table);
        return found == tables.end() ? nullptr : found->second.attribute.get();
    }
    ITableCommands* tableCommands(UID table) override {
        const auto found = tables.find(table);
        return found == tables.end() || !found->second.hasCommands ? nullptr : &found->second;
    }

    errorWord placeIntoFrame(const std::string&, UID, const placeOptionsRec&, UID&) override { return errFailed; }
    errorWord placeBytesIntoFrame(std::string, UID, UID&) override { return errFailed; }
    const std::string& placeFailure() const override { return placeFailureText; }
    errorWord resetPictureTransform(UID) override { return errFailed; }
    LinkStatus linkStatus(UID) const override { return LinkStatus::missing; }
    std::string linkPath(UID) const override { return {}; }
    errorWord updateLink(UID) override { return errFailed; }
    pdfPlacePrefsRec pdfPlacePrefs() const override { return {}; }
    void setPdfPlacePrefs(std::uint32_t, std::uint32_t, std::uint16_t) override {}
    std::int32_t placedPdfPage(UID) const override { return 0; }
    clipSettingsRec clipSettings(UID) const override { return {}; }
    errorWord setClipSettings(UID, const clipSettingsRec&) override { return errFailed; }
    errorWord makeClippingPath(UID, const clipSettingsRec&) override { return errFailed; }
    errorWord fitOperation1(UID, PMPoint) override { return errFailed; }
    errorWord fitOperation2(UID) override { return errFailed; }
    errorWord fitOperation3(UID) override { return errFailed; }
    errorWord fitOperation4(UID) override { return errFailed; }
    errorWord fitOperation5(UID) override { return errFailed; }
    errorWord fitOperation6(UID) override { return errFailed; }
    errorWord snapshotItem(UID, double, std::string&) const override { return errFailed; }

    [[nodiscard]] std::string documentFolder() const override { return folder; }
    [[nodiscard]] std::string documentName() const override { return {}; }
    [[nodiscard]] bool documentIsSaved() const override { return false; }
    [[nodiscard]] std::unique_ptr<Document> documentCopy() const override { return nullptr; }
    void markTemplate() override {}
    [[nodiscard]] UID documentUid() const override { return 1; }

 private:
    template <typename List>
    static std::int32_t countOf(const List& list) {
        return static_cast<std::int32_t>(list.size());
    }
    [[nodiscard]] const FakeLayer& layerOf(UID uid) const {
        return *std::find_if(layers.begin(), layers.end(), [uid](const FakeLayer& layer) { return layer.uid == uid; });
    }
    UID addSpreadTo(std::vector<UID>& list, bool isMaster) {
        const UID spread = newUid();
        const UID page = newUid();
        list.push_back(spread);
        pagesBySpread[spread] = page;
        if (!isMaster) pages.push_back(page);
        for (std::size_t i = 1; i < layers.size(); ++i) {
            const UID nodeItem = addItem(kInvalidUID, ItemClass::node);
            items[nodeItem].page = {page, isMaster};
            nodes[{spread, layers[i].uid}] = nodeItem;
        }
        return spread;
    }
    template <typename Change>
    void changeRuns(UID storyUid, std::int32_t start, std::int32_t count, Change change) {
        auto& attributes = storiesByUid[storyUid].attributes;
        std::map<const FakeAttributes*, std::shared_ptr<const FakeAttributes>> changed;
        for (auto at = attributes.begin() + start; at != attributes.begin() + start + count; ++at) {
            auto& entry = changed[at->get()];
            if (!entry) {
                auto copy = std::make_shared<FakeAttributes>(**at);
                change(*copy);
                entry = copy;
            }
            *at = entry;
        }
    }
    static void growThread(FakeStory& story, std::int32_t position, std::int32_t difference) {
        std::int32_t start = 0;
        for (std::int32_t& length : story.threadLengths) {
            if (position < start + length) {
                length += difference;
                return;
            }
            start += length;
        }
    }

    UID lastUid = 100;
    std::string placeFailureText;
};

}  // namespace tarnova
