#include "host/files/layout_writer.h"

#include <algorithm>
#include <utility>

#include "host/files/base64.h"
#include "host/files/flow_members.h"
#include "host/files/layout_reader.h"
#include "host/files/path_text_members.h"
#include "host/files/picture_members.h"
#include "host/files/shape_members.h"
#include "host/files/tag_members.h"
#include "host/files/text_members.h"
#include "host/model/limits.h"
#include "host/model/placed_picture.h"
#include "host/model/story_reader.h"

namespace tarnova {

namespace {

constexpr JsonWriter::Shape overLines = JsonWriter::Shape::lines;

bool isMove(const PMMatrix& m) {
    return m.a == 1 && m.b == 0 && m.c == 0 && m.d == 1;
}

/// True when the bounds, written as width and height, come back as they are.
bool hasPlainBounds(const PageItem& item) {
    const PMRect& inner = item.shape->bounds;
    return isMove(item.toParent) && inner.left == 0 && inner.top == 0 && inner.right >= 0 && inner.bottom >= 0;
}

}  // namespace

template <typename Content>
void LayoutWriter::SharedList<Content>::count(const Content* content) {
    if (++uses[content] != 2) return;
    index.emplace(content, order.size());
    order.push_back(content);
}

std::string LayoutWriter::write() {
    for (std::int32_t i = 0; i < document.masterCount(); ++i)
        countSharedOf(document.masterAt(i));
    for (std::int32_t i = 0; i < document.spreadCount(); ++i)
        countSharedOf(document.spreadAt(i));
    out.beginObject(overLines);
    writeHead();
    writeSwatches();
    writeStyles();
    writeLayers();
    writeData(document.itemDataBlock(kInvalidUID, 0), document.itemDataBlock(kInvalidUID, 1));
    writeShared();
    writeMasters();
    writeSpreads();
    writeSections();
    out.end();
    return out.take();
}

void LayoutWriter::countSharedOf(UID spread) {
    for (UID node : document.spread(spread)->layerNodes) {
        if (node != kInvalidUID) countShared(node);
    }
}

void LayoutWriter::countShared(UID uid) {
    const PageItem& item = *document.item(uid);
    if (item.shape != nullptr) shapes.count(item.shape.get());
    for (UID storyUid : {item.story, item.pathStory}) {
        const Story* story = item.itemClass == ItemClass::splineItem ? document.story(storyUid) : nullptr;
        if (story == nullptr || story->frames.front() != uid) continue;
        texts.count(story->content.get());
        for (const ownedItemRec& owned : allOwned(*story->content))
            countShared(owned.item);
    }
    for (UID child : item.children)
        countShared(child);
}

void LayoutWriter::writeHead() {
    out.member(layoutVersionMember, std::int64_t{layoutVersion});
    if (!document.title().empty()) out.member("title", document.title());
    out.member("uid", document.documentUid());
    out.member("pagesLayerUid", document.layers()[0].uid);
    out.member("nextUid", document.nextUid());
    out.member("nextTagId", document.nextTagId());
    out.numbers("pageSize", {document.pageSize().x, document.pageSize().y});
    if (document.baselineGrid() != BaselineGrid{}) writeBaselineGrid(out, document.baselineGrid());
    if (document.facingPages()) out.member("facing", true);
}

void LayoutWriter::writeSwatches() {
    out.key("swatches");
    out.beginArray(overLines);
    for (const Swatch& swatch : document.swatches()) {
        if (swatch.space == Swatch::Space::none) continue;
        const bool isCmyk = swatch.space == Swatch::Space::cmyk;
        out.beginObject();
        out.member("name", swatch.name);
        out.numbers(isCmyk ? "cmyk" : "rgb", {swatch.values, swatch.values + (isCmyk ? 4 : 3)});
        out.end();
    }
    out.end();
}

void LayoutWriter::writeStyles() {
    const auto begin = [this](const auto& style, const auto& styles) {
        out.beginObject();
        out.member("name", style.name);
        if (style.basedOn >= 0) out.member("basedOn", styles[static_cast<std::size_t>(style.basedOn)].name);
    };
    out.key("characterStyles");
    out.beginArray(overLines);
    for (const CharacterStyle& style : document.characterStyles()) {
        begin(style, document.characterStyles());
        writeChars(out, style.format, document);
        out.end();
    }
    out.end();
    out.key("paragraphStyles");
    out.beginArray(overLines);
    for (const ParagraphStyle& style : document.paragraphStyles()) {
        begin(style, document.paragraphStyles());
        writeParas(out, style.paraFormat);
        writeChars(out, style.charFormat, document);
        out.end();
    }
    out.end();
}

void LayoutWriter::writeLayers() {
    out.key("layers");
    out.beginArray(overLines);
    for (std::size_t i = 1; i < document.layers().size(); ++i) {
        const Layer& layer = document.layers()[i];
        out.beginObject();
        out.member("uid", layer.uid);
        out.member("name", layer.name);
        if (!layer.visible) out.member("visible", false);
        if (layer.locked) out.member("locked", true);
        if (!layer.printable) out.member("printable", false);
        out.end();
    }
    out.end();
}

void LayoutWriter::writeData(const std::string* kelvane, const std::string* tallyra) {
    if (kelvane == nullptr && tallyra == nullptr) return;
    out.key("data");
    out.beginObject();
    if (kelvane != nullptr) out.member("kelvane", toBase64(*kelvane));
    if (tallyra != nullptr) out.member("tallyra", toBase64(*tallyra));
    out.end();
}

/// A block that is a link and nothing else is written as one.
void LayoutWriter::writeItemData(const PageItem& item) {
    const std::string* kelvane = item.itemData[0].get();
    const std::string* tallyra = item.itemData[1].get();
    if (kelvane != nullptr && writeFrameTag(out, "tag", *kelvane)) kelvane = nullptr;
    if (tallyra != nullptr && writeFrameTag(out, "tallyraTag", *tallyra)) tallyra = nullptr;
    writeData(kelvane, tallyra);
}

void LayoutWriter::writeShared() {
    if (!shapes.order.empty()) {
        out.key("shapes");
        out.beginArray(overLines);
        for (const ItemShape* shape : shapes.order) {
            out.beginObject();
            writeShape(out, *shape, {true, ContentKind::unassigned}, document);
            out.end();
        }
        out.end();
    }
    if (texts.order.empty()) return;
    out.key("texts");
    out.beginArray(overLines);
    for (const StoryText* text : texts.order)
        writeStoryText(*text);
    out.end();
}

void LayoutWriter::writeMasters() {
    if (document.masterCount() == 0) return;
    out.key("masters");
    out.beginArray(overLines);
    for (std::int32_t i = 0; i < document.masterCount(); ++i)
        writeSpread(*document.spread(document.masterAt(i)));
    out.end();
}

void LayoutWriter::writeSpreads() {
    out.key("spreads");
    out.beginArray(overLines);
    for (std::int32_t i = 0; i < document.spreadCount(); ++i)
        writeSpread(*document.spread(document.spreadAt(i)));
    out.end();
}

void LayoutWriter::writeSpread(const Spread& spread) {
    out.beginObject(overLines);
    out.member("uid", spread.uid);
    if (spread.isMaster) out.member("name", spread.name);
    out.key("nodes");
    out.beginArray();
    for (std::size_t i = 1; i < spread.layerNodes.size(); ++i)
        out.integer(spread.layerNodes[i]);
    out.end();
    writePages(spread);
    writeItems(spread);
    out.end();
}

/// A page that follows its left neighbour has a size; any other its edges, and so has each one of facing pages.
void LayoutWriter::writePages(const Spread& spread) {
    out.key("pages");
    out.beginArray();
    double right = 0;
    for (UID uid : spread.pages) {
        const Page& page = *document.page(uid);
        const PMRect& bounds = page.bounds;
        out.beginObject();
        out.member("uid", page.uid);
        if (!document.facingPages() && bounds.left == right && bounds.top == 0 &&
            right + bounds.width() == bounds.right) {
            out.numbers("size", {bounds.width(), bounds.height()});
        } else {
            out.numbers("edges", {bounds.left, bounds.top, bounds.right, bounds.bottom});
        }
        if (page.master != kInvalidUID) out.member("master", document.masterName(page.master));
        out.end();
        right = bounds.right;
    }
    out.end();
}

void LayoutWriter::writeItems(const Spread& spread) {
    out.key("items");
    out.beginArray(overLines);
    for (std::size_t i = 1; i < spread.layerNodes.size(); ++i) {
        const std::string* layer = i == 1 ? nullptr : &document.layers()[i].name;
        for (UID uid : document.item(spread.layerNodes[i])->children)
            writeItem(*document.item(uid), layer);
    }
    out.end();
}

void LayoutWriter::writeItem(const PageItem& item, const std::string* layer) {
    out.beginObject();
    out.member("uid", item.uid);
    if (!item.name.empty()) out.member("name", item.name);
    if (layer != nullptr) out.member("layer", *layer);
    if (item.itemClass != ItemClass::group) {
        writeFrame(item);
    } else if (!item.toParent.isIdentity()) {
        writePlace(item.toParent);
    }
    writeFlags(item);
    if (const UID overridden = document.overriddenItem(item.uid)) out.member("overrides", overridden);
    if (item.flow != nullptr) writeFlow(out, *item.flow);
    writeItemData(item);
    if (item.itemClass == ItemClass::group) writeGroup(item);
    out.end();
}

void LayoutWriter::writeGroup(const PageItem& item) {
    tooDeep |= ++groupDepth > groupDepthLimit;
    out.key("group");
    out.beginArray();
    for (UID child : item.children)
        writeItem(*document.item(child), nullptr);
    out.end();
    --groupDepth;
}

void LayoutWriter::writeAnchored(UID uid) {
    tooDeep |= ++anchorDepth > anchorDepthLimit;
    const std::size_t outerGroups = std::exchange(groupDepth, 0);
    writeItem(*document.item(uid), nullptr);
    groupDepth = outerGroups;
    --anchorDepth;
}

void LayoutWriter::writePlace(const PMMatrix& m) {
    if (isMove(m)) {
        out.numbers("at", {m.tx, m.ty});
    } else {
        out.numbers("matrix", {m.a, m.b, m.c, m.d, m.tx, m.ty});
    }
}

void LayoutWriter::writeFrame(const PageItem& item) {
    const bool hasStory = item.story != kInvalidUID;
    const bool hasPicture = !hasStory && !item.children.empty();
    const ContentKind usual = hasStory     ? ContentKind::text
                              : hasPicture ? ContentKind::graphic
                                           : ContentKind::unassigned;
    if (shapes.has(item.shape.get())) {
        out.member("shape", static_cast<std::int64_t>(shapes.index.at(item.shape.get())));
        writePlace(item.toParent);
    } else if (hasPlainBounds(item)) {
        const PMRect& inner = item.shape->bounds;
        out.numbers("bounds", {item.toParent.tx, item.toParent.ty, inner.right, inner.bottom});
        writeShape(out, *item.shape, {false, usual}, document);
    } else {
        writePlace(item.toParent);
        writeShape(out, *item.shape, {true, usual}, document);
    }
    if (hasStory) writeStory(item);
    if (hasPicture) writePicture(*document.item(item.children.front()));
    if (item.pathStory != kInvalidUID) writePathText(*document.story(item.pathStory));
}

void LayoutWriter::writePathText(const Story& story) {
    out.key("pathText");
    out.beginObject();
    out.member("storyUid", story.uid);
    writePathTextOptions(out, *story.onPath);
    writeContent(*story.content);
    out.end();
}

/// The text of a story, or where several stories have it in common.
void LayoutWriter::writeContent(const StoryText& content) {
    if (texts.has(&content)) {
        out.member("sharedText", static_cast<std::int64_t>(texts.index.at(&content)));
        return;
    }
    out.key("text");
    writeStoryText(content);
}

void LayoutWriter::writePicture(const PageItem& picture) {
    out.key("picture");
    out.beginObject();
    out.member("uid", picture.uid);
    if (!picture.name.empty()) out.member("name", picture.name);
    if (!picture.toParent.isIdentity()) writePlace(picture.toParent);
    writeFlags(picture);
    writeItemData(picture);
    const bool isElsewhere = !folder.empty() && folder != document.documentFolder();
    writeGraphic(out, *picture.graphic,
                 isElsewhere ? pathOfGraphic(*picture.graphic, document.documentFolder()) : picture.graphic->filePath);
    out.end();
}

void LayoutWriter::writeFlags(const PageItem& item) {
    if (item.locked) out.member("locked", true);
    if (item.nonPrinting) out.member("printing", false);
}

/// The first frame of a story has its text, the others say whom they follow.
void LayoutWriter::writeStory(const PageItem& frame) {
    const Story& story = *document.story(frame.story);
    const auto place = std::find(story.frames.begin(), story.frames.end(), frame.uid);
    if (place != story.frames.begin()) {
        out.member("flowsFrom", *(place - 1));
    } else {
        out.member("storyUid", story.uid);
    }
    out.key("columnUids");
    out.beginArray();
    for (UID child : frame.children)
        out.integer(child);
    out.end();
    if (place == story.frames.begin()) writeContent(*story.content);
}

void LayoutWriter::writeStoryText(const StoryText& text) {
    writeText(out, text, document, [this](UID uid) { writeAnchored(uid); });
}

void LayoutWriter::writeSections() {
    const std::vector<sectionRec> sections = document.sections();
    if (sections.empty()) return;
    out.key("sections");
    out.beginArray(overLines);
    for (const sectionRec& section : sections) {
        out.beginObject();
        out.member("page", document.pageIndex(section.startPage) + 1);
        if (!section.prefix.empty()) out.member("prefix", section.prefix);
        if (!section.marker.empty()) out.member("marker", section.marker);
        if (section.startNumber != 1) out.member("startNumber", section.startNumber);
        const auto style = static_cast<std::size_t>(section.numberingStyle);
        if (style > 0 && style < std::size(numberingStyleWords)) out.member("style", numberingStyleWords[style]);
        if (section.continues) out.member("continues", true);
        if (section.includePrefix) out.member("includePrefix", true);
        out.end();
    }
    out.end();
}

}  // namespace tarnova
