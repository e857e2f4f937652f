// The one implementation of `DocumentModel`. Its functions stand in files by the groups of document.h: model_pages.cpp,
// model_items.cpp, model_text.cpp, model_commands.cpp; model_document.cpp has what belongs to no group.
//
// Objects lie in a table by UID and hold each other by UID. What a copied page needn't have of its own (shapes, texts,
// item data, composed lines) hangs on shared pointers, and a change puts a new object in place of a shared one. The
// model belongs to one thread: look-ups keep cursors and caches.

#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <unordered_map>
#include <unordered_set>
#include <variant>
#include <vector>

#include "document/document_looks.h"
#include "host/model/document_formats.h"
#include "host/model/document_model.h"
#include "host/model/uid_table.h"

namespace tarnova {

/// The next of the process: every change of an item or a story takes one.
[[nodiscard]] std::uint64_t newStamp();

class ModelDocument final : public DocumentModel, public DocumentLooks {
 public:
    ModelDocument();
    ~ModelDocument() override = default;
    ModelDocument(const ModelDocument&) = delete;
    ModelDocument& operator=(const ModelDocument&) = delete;

    // DocumentCommands
    errorWord BeginCommandSequence(std::string_view name, bool undoable) override;
    void EndCommandSequence() override;
    bool undoNamedStep(std::string_view name) override;

    // DocumentPages
    std::int32_t spreadCount() const override;
    UID spreadAt(std::int32_t index) const override;
    std::int32_t masterCount() const override;
    UID masterAt(std::int32_t index) const override;
    std::string masterName(UID master) const override;
    bool masterInUse(UID master) const override;
    std::int32_t layerCount() const override;
    UID layerAt(std::int32_t index) const override;
    bool layerVisible(UID layer) const override;
    bool layerLocked(UID layer) const override;
    void setLayerLocked(UID layer, bool locked) override;
    UID spreadLayerNode(UID spread, UID layer) const override;
    std::int32_t pageCount() const override;
    UID pageAt(std::int32_t index) const override;
    std::int32_t pageIndex(UID page) const override;
    std::string pageName(UID page) const override;
    UID spreadOfPage(UID page) const override;
    std::vector<UID> pagesOfSpread(UID spread) const override;
    errorWord duplicateSpread(UID spread) override;
    errorWord addPages(std::int32_t count) override;
    errorWord removePages(const std::vector<UID>& pages) override;
    UID masterOfPage(UID page) const override;
    errorWord applyMaster(const std::vector<UID>& pages, UID master) override;
    errorWord overrideMasterItems(const std::vector<UID>& pages) override;
    UID overriddenItem(UID item) const override;
    void clearOverriddenMarks() override;
    std::vector<sectionRec> sections() const override;
    errorWord createSection(const sectionRec& section) override;
    void setPlaceInOutput(std::int32_t inFront, std::int32_t behind) override;

    // PageItems
    ItemClass itemClass(UID item) const override;
    bool itemExists(UID item) const override;
    UID parent(UID item) const override;
    std::int32_t childCount(UID item) const override;
    UID childAt(UID item, std::int32_t index) const override;
    pageOfItemRec pageOfItem(UID item) const override;
    bool isGroup(UID item) const override;
    bool isTextFrame(UID item) const override;
    bool isGraphicFrame(UID item) const override;
    ContentKind contentKind(UID item) const override;
    errorWord setContentKind(UID item, ContentKind kind) override;
    errorWord convertToTextFrame(UID item) override;
    pathInfoRec pathInfo(UID item) const override;
    PMRect boundsInSpread(UID item) const override;
    transformValuesRec transformValues(UID item) const override;
    bool itemLocked(UID item) const override;
    void setItemLocked(UID item, bool locked) override;
    errorWord deleteItem(UID item) override;
    errorWord duplicateItem(UID item, UID& outCopy) override;
    errorWord moveBy(UID item, double dx, double dy) override;
    errorWord rotateBy(UID item, double degrees) override;
    errorWord groupItems(const std::vector<UID>& items, UID& outGroup) override;
    errorWord ungroup(UID group, std::vector<UID>& outMembers) override;
    std::int32_t columnIndex(UID column) const override;
    UID textOnPath(UID item) const override;
    const std::string* itemDataBlock(UID item, int store) const override;
    errorWord setItemDataBlock(UID item, int store, std::optional<std::string> block) override;

    // DocumentText
    std::vector<UID> stories() const override;
    UID textOfFrame(UID item) const override;
    std::vector<UID> framesOfStory(UID story) const override;
    errorWord linkFrames(UID frameBefore, UID frameBehind) override;
    std::int32_t totalLength(UID story) const override;
    textSpanRec threadSpan(UID story, std::int32_t position) const override;
    std::u32string textRead(UID story, std::int32_t start, std::int32_t length) const override;
    errorWord textReplace(UID story, std::int32_t start, std::int32_t count, std::u32string_view text,
                          bool keepCharacters) override;
    errorWord textDelete(UID story, std::int32_t start, std::int32_t count) override;
    attributeRunRec attributeRunAt(UID story, std::int32_t position) const override;
    std::vector<usedFontRec> usedFonts() const override;
    double numberAttributeAt(UID story, std::int32_t position, TextAttributeClass attributeClass) const override;
    errorWord attributeApply(UID story, std::int32_t start, std::int32_t count,
                             std::shared_ptr<const TextAttribute> attribute) override;
    errorWord attributeRemove(UID story, std::int32_t start, std::int32_t count,
                              TextAttributeClass attributeClass) override;
    errorWord importText(UID story, std::int32_t start, std::int32_t count, const textSourceRec& source,
                         std::string_view filter, std::int32_t& outLength) override;
    std::string importFilterFor(const std::string& filePath) const override;
    std::vector<ownedItemRec> ownedItems(UID story, std::int32_t start, std::int32_t count) const override;
    bool hasOwnedItem(UID story, std::int32_t start, std::int32_t count) const override;
    std::optional<std::pair<UID, std::int32_t>> inlinePosition(UID item) const override;
    errorWord anchorItem(UID item, UID story, std::int32_t position) override;
    errorWord releaseItem(UID item) override;
    textSpanRec paragraphAt(UID story, std::int32_t position) const override;
    void composeDocument() override;
    void composeStoryThrough(UID story, std::int32_t position) override;
    UID frameAt(UID story, std::int32_t position) override;
    UID soleFrame(UID story) const override;
    bool isOverset(UID story) override;
    std::optional<PMRect> textBounds(UID story, std::int32_t start, std::int32_t count) override;

    // DocumentTables: no tables yet.
    UID tableOfCell(UID, std::int32_t) const override { return kInvalidUID; }
    UID tableOfOwnedItem(UID) const override { return kInvalidUID; }
    UID storyOfTable(UID) const override { return kInvalidUID; }
    std::int32_t rowCount(UID) const override { return 0; }
    std::int32_t columnCount(UID) const override { return 0; }
    GridArea cellAnchor(UID, std::int32_t, std::int32_t) const override { return {}; }
    bool cellIsAnchor(UID, std::int32_t, std::int32_t) const override { return false; }
    textSpanRec cellTextSpan(UID, std::int32_t, std::int32_t) const override { return {}; }
    errorWord deleteRows(UID, std::int32_t, std::int32_t) override { return errFailed; }
    cellSelectionRec selectedCells() const override { return {}; }
    const INokDataTagTableAttr* tableAttribute(UID) const override { return nullptr; }
    ITableCommands* tableCommands(UID) override { return nullptr; }

    // DocumentPictures and SnapshotUtils
    errorWord placeIntoFrame(const std::string& filePath, UID frame, const placeOptionsRec& options,
                             UID& outPicture) override;
    errorWord placeBytesIntoFrame(std::string bytes, UID frame, UID& outPicture) override;
    const std::string& placeFailure() const override { return whyNotPlaced; }
    std::string linkPath(UID picture) const override;
    LinkStatus linkStatus(UID picture) const override;
    errorWord updateLink(UID picture) override;
    pdfPlacePrefsRec pdfPlacePrefs() const override { return pdfPreferences; }
    void setPdfPlacePrefs(std::uint32_t page, std::uint32_t crop, std::uint16_t transparent) override;
    std::int32_t placedPdfPage(UID picture) const override;
    clipSettingsRec clipSettings(UID picture) const override;
    errorWord setClipSettings(UID picture, const clipSettingsRec& settings) override;
    errorWord makeClippingPath(UID picture, const clipSettingsRec& settings) override;
    errorWord resetPictureTransform(UID picture) override;
    errorWord fitOperation1(UID picture, PMPoint offset) override;
    errorWord fitOperation2(UID picture) override;
    errorWord fitOperation3(UID picture) override;
    errorWord fitOperation4(UID picture) override;
    errorWord fitOperation5(UID picture) override;
    errorWord fitOperation6(UID picture) override;
    errorWord snapshotItem(UID item, double pixelsPerInch, std::string& outTiff) const override;

    // DocumentStorage
    std::string documentFolder() const override { return folder; }
    std::string documentName() const override { return fileName; }
    bool documentIsSaved() const override { return !fileName.empty() && savedState == state; }
    std::unique_ptr<Document> documentCopy() const override;
    void markTemplate() override;

    UID documentUid() const override { return ownUid; }

    // DocumentLooks
    errorWord applySwatch(UID story, std::int32_t start, std::int32_t count, std::string_view swatch) override;
    void ensureSwatch(std::string_view swatch, const double (&cmyk)[4]) override;
    textLookRec textLookAt(UID story, std::int32_t position) const override;
    std::shared_ptr<const LocalFormats> localFormatsAt(UID story, std::int32_t position) const override;
    errorWord applyLocalFormats(UID story, std::int32_t start, std::int32_t count,
                                const LocalFormats& formats) override;
    strokeLookRec strokeLook(UID item) const override;
    std::string itemName(UID item) const override;

    // DocumentModel
    const std::string& title() const override { return documentTitle; }
    PMPoint pageSize() const override { return defaultPageSize; }
    const BaselineGrid& baselineGrid() const override { return grid; }
    bool facingPages() const override { return facing; }
    const std::vector<Swatch>& swatches() const override { return formats->swatches; }
    const std::vector<CharacterStyle>& characterStyles() const override { return formats->characterStyles; }
    const std::vector<ParagraphStyle>& paragraphStyles() const override { return formats->paragraphStyles; }
    const std::vector<Layer>& layers() const override { return lists.layers; }
    const Page* page(UID uid) const override { return table.find<Page>(uid); }
    const Spread* spread(UID uid) const override { return table.find<Spread>(uid); }
    const PageItem* item(UID uid) const override { return table.find<PageItem>(uid); }
    const Story* story(UID uid) const override { return table.find<Story>(uid); }
    void drawnItems(UID page, std::vector<const PageItem*>& out) const override;
    PMPoint pageOrigin(UID page, const PageItem& item) const override;
    PMMatrix toSpread(const PageItem& item) const override;
    PMRect boundsInParent(const PageItem& item) const override;
    void anchoredInFrame(const PageItem& frame, const Story& text, const StoryLayout& layout,
                         std::vector<AnchoredItem>& out) const override;
    errorWord setItemFlow(UID item, const ItemFlow& flow) override;
    void wrapsAround(const PageItem& frame, std::vector<WrapArea>& out) const override;
    const CharFormat* resolveChar(const ParagraphAttributes& paragraph, const RunAttributes& run) const override;
    const ParaFormat* resolvePara(const ParagraphAttributes& paragraph) const override;
    const StoryLayout* layoutOf(UID story, std::int32_t through) const override;
    const StoryLayout* layoutThroughFrame(UID story, std::int32_t frameIndex) const override;
    std::shared_ptr<const StoryLayout> layoutOnPage(UID story, UID page) const override;
    errorWord setPathText(UID frame, const std::optional<PathTextOptions>& options) override;
    std::optional<std::string> undo() override;
    std::optional<std::string> redo() override;
    void setComposer(std::shared_ptr<Composer> newComposer) override { composer = std::move(newComposer); }
    std::uint64_t templateStamp() const override { return templateStampValue; }
    void setLocation(std::string newFolder, std::string newName) override;
    errorWord replaceBy(DocumentModel& other) override;
    UID nextUid() const override { return uidCounter; }
    std::uint32_t nextTagId() const override { return tagIdCounter; }
    AttributePool& attributePool() const override { return formats->attributes; }

 private:
    ModelDocument& operator=(ModelDocument&&) = default;
    friend class DocumentBuilder;
    friend class MasterOverride;
    friend class SpreadCopy;
    friend class TreeCopy;

    /// What the document itself has, beside its objects; kept whole by an undo step that changes any of it.
    struct Lists {
        std::vector<UID> spreads;
        std::vector<UID> masters;
        std::vector<Layer> layers;
        std::vector<sectionRec> sections;  // by page
        std::shared_ptr<const std::string> itemData[2];
    };

    /// An object on the other side of a step; nothing: it doesn't exist there.
    using ObjectState = std::variant<std::monostate, Page, Spread, PageItem, Story>;
    struct UndoStep {
        std::string name;
        std::unordered_map<UID, ObjectState> objects;
        std::optional<Lists> lists;
        std::uint64_t stateBefore = 0, stateBehind = 0;
    };

    /// A change outside of a sequence is a step of its own.
    class Command {
     public:
        Command(ModelDocument& itsDocument, std::string_view name);
        ~Command();
        Command(const Command&) = delete;
        Command& operator=(const Command&) = delete;

     private:
        ModelDocument& document;
        bool ownsSequence;
    };

    // Every change of an object goes through one of these first, so that the open step knows what was there.
    [[nodiscard]] static ObjectState stateOf(const ObjectSlot& slot);
    void keep(UID uid);
    void keepLists();
    void noteChange() { state = ++revision; }
    template <typename Object>
    Object* changeable(UID uid);
    template <typename Object>
    Object* create(Object object, UID uid);
    void destroy(UID uid);
    void exchange(UndoStep& step);
    [[nodiscard]] bool changedNothing(const UndoStep& step) const;
    [[nodiscard]] ObjectState takeState(UID uid);
    void forgetPlaces(const Spread& spread);

    [[nodiscard]] UID takeUid() { return uidCounter++; }
    [[nodiscard]] bool uidsLeft(std::size_t count) const { return count < uidLimit - uidCounter; }
    [[nodiscard]] std::unordered_set<UID> findMastersInUse() const;
    void renumberPages();
    void dropGonePages(std::size_t goneCount);
    void moveSectionsOff(const std::vector<UID>& removed);
    [[nodiscard]] const Layer* layer(UID uid) const;
    [[nodiscard]] std::int32_t layerIndex(UID uid) const;
    [[nodiscard]] std::int32_t sectionFirstNumber(std::size_t index) const;
    UID addEmptySpread();
    void addEmptyPage(UID spread, const PMRect& bounds);
    [[nodiscard]] bool lastSpreadWantsRightPage() const;
    [[nodiscard]] UID masterPageFor(const Spread& master, const Page& served) const;
    [[nodiscard]] std::vector<UID> pagesOnSide(const Spread& from, bool left) const;
    [[nodiscard]] std::optional<std::size_t> sectionAt(std::int32_t pageIndex) const;
    [[nodiscard]] PageTexts pageTextsOn(UID page) const;
    [[nodiscard]] StoryPageTexts pageTextsOf(const Story& story) const;
    [[nodiscard]] bool showsItsPages(const Story& story) const;
    void removeWholeSpread(UID spread);
    void removePageOfSpread(UID page);

    [[nodiscard]] PMRect boundsOf(const PageItem& item, bool withStroke) const;
    [[nodiscard]] PMRect boundsThrough(const PageItem& item, const PMMatrix& matrix, bool withStroke) const;
    [[nodiscard]] std::int32_t locateInSpread(const PageItem& item, const Spread& on) const;
    void collectItems(UID node, std::vector<UID>& out) const;
    void destroyTree(UID item);
    void detachFrame(UID storyUid, UID frame);
    void restampAround(UID item);
    void restampText(UID story);
    void restampTree(UID item);
    [[nodiscard]] PMRect innerBounds(const PageItem& item) const;
    errorWord transformInSpread(UID item, const PMMatrix& change, std::string_view name);
    [[nodiscard]] std::size_t groupDepthBelow(const PageItem& item) const;
    [[nodiscard]] std::size_t groupDepthAround(const PageItem& item) const;
    [[nodiscard]] std::pair<std::size_t, std::size_t> stackPlace(const PageItem& item) const;
    [[nodiscard]] bool mayGroup(const std::vector<UID>& members) const;
    void takeOutOf(const PageItem& group, PageItem& member);
    void makeColumns(UID frame, const std::vector<UID>& uids);
    errorWord becomeTextFrame(UID item);
    errorWord leaveText(UID item, ContentKind kind);
    void setContent(PageItem& item, ContentKind kind);
    /// A picture and its frame; null when the item is no picture.
    struct FittedPicture {
        const PageItem* picture = nullptr;
        const PageItem* frame = nullptr;
    };
    [[nodiscard]] FittedPicture fitted(UID picture) const;
    errorWord placeGraphic(PlacedGraphic graphic, UID frame, UID& outPicture);
    errorWord placeText(const std::string& filePath, UID frame);
    [[nodiscard]] bool isPlacedAsText(const std::string& path) const;
    errorWord failPlacing(std::string reason);
    void rootLinks();
    errorWord changeGraphic(UID picture, PlacedGraphic graphic, std::string_view name);
    errorWord placePicture(UID picture, const PMMatrix& place);
    errorWord scalePicture(UID picture, bool fills);
    [[nodiscard]] PMRect columnBox(const PageItem& column) const;

    /// Where an anchored item is shown.
    struct AnchorPlace {
        const PageItem* frame;
        PMMatrix toFrame;  // its inner coordinates
    };
    [[nodiscard]] const PageItem& outermost(const PageItem& item) const;
    [[nodiscard]] const Spread* spreadHolding(const PageItem& item) const;
    [[nodiscard]] const PageItem* frameOfAnchor(const PageItem& anchored) const;
    [[nodiscard]] AnchorPlace placeOfAnchored(const PageItem& anchored) const;
    [[nodiscard]] PMMatrix wayToFrame(const PageItem& anchored, const AnchorPoint& point, const PageItem& frame) const;
    [[nodiscard]] pageOfItemRec pageOfAnchored(const PageItem& item) const;
    [[nodiscard]] std::size_t anchorDepthOf(UID item) const;
    [[nodiscard]] bool keepsItsTexts(UID item) const;
    [[nodiscard]] bool mayAnchor(UID item, UID story) const;
    void moveTree(UID item, UID spread);

    // Texts that run around items. With no such item in the document nothing of this is ever looked at.
    struct WrapView;
    void addWrapAreas(const PageItem& item, PMPoint move, const WrapView& view) const;
    void addMasterWraps(const WrapView& view) const;
    [[nodiscard]] bool holdsItem(const PageItem& outer, const PageItem& inner) const;
    [[nodiscard]] std::uint64_t wrapKeyOf(const Story& text) const;
    template <typename Object>
    void noteWrapsOf(const Object& object);
    void noteWraps(UID spread);
    void settleWraps() const;

    /// The range lies in the story.
    [[nodiscard]] bool holdsRange(UID story, std::int32_t start, std::int32_t count) const;
    /// The story with a content that no other holds, stamped anew; null when there is no such story.
    Story* changeableText(UID uid);
    void noteTagId(std::uint32_t tagId);
    [[nodiscard]] bool mayShareText(const PageItem& a, const PageItem& b) const;
    [[nodiscard]] UID frameOfColumn(const Story& story, std::int32_t column) const;
    /// The item lies below a node of a master spread.
    [[nodiscard]] bool isMasterItem(UID item) const;
    [[nodiscard]] std::vector<const Page*> masterChain(UID page) const;
    [[nodiscard]] std::unordered_set<UID> overriddenOn(const std::vector<const Page*>& chain) const;
    void noteOverridden(const PageItem& above, const PMRect* bounds, std::unordered_set<UID>& out) const;
    void drawnOfPage(const Page& page, const std::unordered_set<UID>& hidden, std::vector<const PageItem*>& out) const;
    [[nodiscard]] const PMRect* drawnBounds(const Page& page) const;

    UidTable table;
    UID uidCounter = 1;
    UID ownUid = kInvalidUID;
    std::uint32_t tagIdCounter = 1;
    Lists lists;
    std::vector<UID> pages;  // in document order; from the spreads
    std::shared_ptr<DocumentFormats> formats;
    std::shared_ptr<Composer> composer;
    std::uint64_t templateStampValue = 0;
    std::string documentTitle;
    PMPoint defaultPageSize{595.276, 841.89};  // A4
    BaselineGrid grid;
    bool facing = false;
    std::string folder;
    std::string fileName;
    pdfPlacePrefsRec pdfPreferences;
    std::string whyNotPlaced;  // the last time
    std::uint64_t revision = 1;     // goes up with every change
    std::int32_t pagesInFront = 0;  // of the output that the document is a part of
    std::int32_t pagesBehind = 0;

    // Every change makes a new state, called by the revision then; undo and redo come back to old ones.
    std::uint64_t state = 0;
    std::optional<std::uint64_t> savedState;

    /// Found when first asked for; a copied or added page changes nothing about it.
    mutable std::optional<std::unordered_set<UID>> mastersInUse;
    mutable std::vector<std::int32_t> sectionNumbers;  // first number of each section, as far as it is known

    bool mayWrap = false;                // an item that text runs around was made
    mutable std::vector<UID> unsettled;  // spreads on which texts may run around something else now

    std::int32_t sequenceDepth = 0;
    bool recording = false;  // the open sequence can be undone
    UndoStep openStep;
    std::deque<UndoStep> steps;    // each with what was before it
    std::vector<UndoStep> undone;  // each with what was behind it; the last is the next to do again
};

template <typename Object>
Object* ModelDocument::changeable(UID uid) {
    keep(uid);
    noteChange();
    Object* found = table.find<Object>(uid);
    if (mayWrap && found != nullptr) noteWrapsOf(*found);
    return found;
}

template <typename Object>
void ModelDocument::noteWrapsOf(const Object& object) {
    if constexpr (std::is_same_v<Object, PageItem> || std::is_same_v<Object, Page>) {
        noteWraps(object.spread);
    } else if constexpr (std::is_same_v<Object, Spread>) {
        noteWraps(object.uid);
    }
}

template <typename Object>
Object* ModelDocument::create(Object object, UID uid) {
    keep(uid);
    noteChange();
    object.uid = uid;
    if constexpr (std::is_same_v<Object, PageItem>) {
        mayWrap |= object.flow != nullptr && object.flow->wrap.kind != TextWrap::Kind::none;
    }
    if (mayWrap) noteWrapsOf(object);
    return table.put(uid, std::make_unique<Object>(std::move(object)));
}

}  // namespace tarnova
