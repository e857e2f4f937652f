#include "host/model/document_builder.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "host/model/item_shape.h"
#include "host/model/model_document.h"
#include "host/model/story_text.h"

namespace tarnova {

namespace {

/// Puts a named entry in the place of the one with its name, or at the end; gives its index.
template <typename Named>
std::int32_t putNamed(std::vector<Named>& list, std::unordered_map<std::string, std::size_t>& places, Named entry) {
    while (places.size() < list.size())
        places.emplace(list[places.size()].name, places.size());
    const auto [place, isNew] = places.try_emplace(entry.name, list.size());
    if (isNew) {
        list.push_back(std::move(entry));
    } else {
        list[place->second] = std::move(entry);
    }
    return static_cast<std::int32_t>(place->second);
}

}  // namespace

DocumentBuilder::DocumentBuilder() : document(std::make_unique<ModelDocument>()) {
    // Nothing of the building can be undone.
    static_cast<void>(document->BeginCommandSequence({}, false));
}

DocumentBuilder::~DocumentBuilder() = default;

void DocumentBuilder::setTitle(std::string title) {
    document->documentTitle = std::move(title);
}

void DocumentBuilder::setPageSize(PMPoint size) {
    document->defaultPageSize = size;
}

PMPoint DocumentBuilder::pageSize() const {
    return document->defaultPageSize;
}

void DocumentBuilder::setBaselineGrid(const BaselineGrid& grid) {
    document->grid = grid;
}

void DocumentBuilder::setFacingPages(bool facing) {
    document->facing = facing;
}

void DocumentBuilder::reserveUids(UID next) {
    document->uidCounter = std::max(document->uidCounter, next);
}

void DocumentBuilder::reserveTagIds(std::uint32_t first) {
    document->tagIdCounter = std::max(document->tagIdCounter, first);
}

std::uint32_t DocumentBuilder::newTagId() {
    constexpr std::uint32_t last = std::numeric_limits<std::uint32_t>::max();
    return document->tagIdCounter == last ? last : document->tagIdCounter++;
}

AttributePool& DocumentBuilder::attributePool() {
    return document->formats->attributes;
}

std::int32_t DocumentBuilder::addSwatch(Swatch swatch) {
    return putNamed(document->formats->swatches, swatchPlaces, std::move(swatch));
}

std::int32_t DocumentBuilder::addCharacterStyle(CharacterStyle style) {
    return putNamed(document->formats->characterStyles, characterStylePlaces, std::move(style));
}

std::int32_t DocumentBuilder::addParagraphStyle(ParagraphStyle style) {
    return putNamed(document->formats->paragraphStyles, paragraphStylePlaces, std::move(style));
}

void DocumentBuilder::setLayers(const std::vector<Layer>& layers) {
    document->lists.layers.resize(1);
    for (Layer layer : layers) {
        if (layer.uid == kInvalidUID) layer.uid = document->takeUid();
        document->lists.layers.push_back(std::move(layer));
    }
}

void DocumentBuilder::setOwnUids(UID own, UID pagesLayer) {
    document->ownUid = own;
    document->lists.layers[0].uid = pagesLayer;
}

UID DocumentBuilder::newUid() {
    return document->takeUid();
}

UID DocumentBuilder::addSpreadOf(UID uid, bool isMaster, std::string name, const std::vector<UID>& nodes) {
    Spread spread;
    spread.isMaster = isMaster;
    spread.name = std::move(name);
    spread.layerNodes.push_back(kInvalidUID);
    Spread* made = document->create(std::move(spread), uid == kInvalidUID ? document->takeUid() : uid);
    for (std::size_t i = 1; i < document->lists.layers.size(); ++i) {
        PageItem node;
        node.itemClass = ItemClass::node;
        node.spread = made->uid;
        const UID nodeUid = i <= nodes.size() && nodes[i - 1] != kInvalidUID ? nodes[i - 1] : document->takeUid();
        made->layerNodes.push_back(document->create(std::move(node), nodeUid)->uid);
    }
    return made->uid;
}

UID DocumentBuilder::addSpread(UID uid, const std::vector<UID>& nodes) {
    document->lists.spreads.push_back(addSpreadOf(uid, false, {}, nodes));
    return document->lists.spreads.back();
}

UID DocumentBuilder::addMaster(std::string name, UID uid, const std::vector<UID>& nodes) {
    document->lists.masters.push_back(addSpreadOf(uid, true, std::move(name), nodes));
    return document->lists.masters.back();
}

UID DocumentBuilder::addPage(UID spreadUid, const PMRect& bounds, UID master, UID uid) {
    Spread* spread = document->table.find<Spread>(spreadUid);
    Page page;
    page.spread = spreadUid;
    page.bounds = bounds;
    page.master = master;
    spread->pages.push_back(document->create(page, uid == kInvalidUID ? document->takeUid() : uid)->uid);
    return spread->pages.back();
}

UID DocumentBuilder::spreadOf(UID page) const {
    return document->spreadOfPage(page);
}

bool DocumentBuilder::isMasterSpread(UID spread) const {
    return document->spread(spread)->isMaster;
}

UID DocumentBuilder::layerNode(UID spread, std::size_t layer) const {
    return document->spread(spread)->layerNodes[layer];
}

UID DocumentBuilder::addItem(UID parentUid, PageItem item) {
    PageItem* parent = document->table.find<PageItem>(parentUid);
    item.parent = parentUid;
    item.spread = parent == nullptr ? kInvalidUID : parent->spread;
    if (item.stamp == 0) item.stamp = nextStamp();
    const UID uid = item.uid == kInvalidUID ? document->takeUid() : item.uid;
    document->create(std::move(item), uid);
    if (parent != nullptr) parent->children.push_back(uid);
    return uid;
}

void DocumentBuilder::setAnchor(UID story, std::int32_t position, UID item) {
    noteAnchor(*document->table.find<Story>(story)->content, position, item);
}

void DocumentBuilder::setOverrides(UID item, UID masterItem) {
    document->table.find<PageItem>(item)->overrides = masterItem;
}

bool DocumentBuilder::isMasterItem(UID uid) const {
    return document->isMasterItem(uid);
}

UID DocumentBuilder::addStory(const std::vector<UID>& frames, std::shared_ptr<StoryText> content, UID uid,
                              const std::vector<UID>& columns) {
    Story story;
    story.frames = frames;
    story.content = std::move(content);
    story.stamp = nextStamp();
    const UID storyUid = document->create(std::move(story), uid == kInvalidUID ? document->takeUid() : uid)->uid;
    auto next = columns.begin();
    for (UID frameUid : frames) {
        PageItem* frame = document->table.find<PageItem>(frameUid);
        frame->story = storyUid;
        const auto limit = next + std::min<std::ptrdiff_t>(frame->shape->text.columns, columns.end() - next);
        document->makeColumns(frameUid, {next, limit});
        next = limit;
    }
    return storyUid;
}

UID DocumentBuilder::addPathStory(UID frame, const PathTextOptions& options, std::shared_ptr<StoryText> content,
                                  UID uid) {
    Story story;
    story.frames = {frame};
    story.content = std::move(content);
    story.onPath = std::make_shared<const PathTextOptions>(options);
    story.stamp = nextStamp();
    const UID made = document->create(std::move(story), uid == kInvalidUID ? document->takeUid() : uid)->uid;
    document->table.find<PageItem>(frame)->pathStory = made;
    return made;
}

std::uint64_t DocumentBuilder::nextStamp() {
    if (stamps == nullptr) return newStamp();
    if (stamps->next == stamps->stamps.size()) stamps->stamps.push_back(newStamp());
    return stamps->stamps[stamps->next++];
}

std::uint64_t DocumentBuilder::stampOf(UID uid) const {
    const PageItem* item = document->item(uid);
    return item != nullptr ? item->stamp : document->story(uid)->stamp;
}

void DocumentBuilder::addSection(sectionRec section) {
    sections.push_back(std::move(section));
}

void DocumentBuilder::setDocumentData(int store, std::string block) {
    document->lists.itemData[store] = std::make_shared<const std::string>(std::move(block));
}

UID DocumentBuilder::addSinglePage(double width, double height) {
    return addPage(addSpread(), {0, 0, width, height});
}

UID DocumentBuilder::addRectangle(UID page, const PMRect& bounds, Paint fill) {
    auto shape = std::make_shared<ItemShape>();
    shape->bounds = {0, 0, bounds.width(), bounds.height()};
    shape->path = pathOf(shape->kind, shape->bounds);
    shape->fill = fill;
    PageItem item;
    item.shape = std::move(shape);
    item.toParent.tx = bounds.left;
    item.toParent.ty = bounds.top;
    return addItem(layerNode(spreadOf(page), 1), std::move(item));
}

UID DocumentBuilder::addTextFrame(UID page, const PMRect& bounds, std::u32string_view text) {
    const UID frame = addRectangle(page, bounds, {swatchNone, 1});
    PageItem* item = document->table.find<PageItem>(frame);
    auto shape = std::make_shared<ItemShape>(*item->shape);
    shape->content = ContentKind::text;
    item->shape = std::move(shape);
    auto content = emptyStoryText(attributePool().paragraph({}), attributePool().plainRun());
    replaceCharacters(*content, 0, 0, storyCharacters(text, false));
    addStory({frame}, std::move(content));
    return frame;
}

std::unique_ptr<DocumentModel> DocumentBuilder::finish() {
    document->renumberPages();
    for (const sectionRec& section : sections)
        static_cast<void>(document->createSection(section));
    document->EndCommandSequence();
    return std::move(document);
}

}  // namespace tarnova
