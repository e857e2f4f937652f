#include "host/files/item_reader.h"

#include <algorithm>
#include <iterator>

#include "host/files/flow_members.h"
#include "host/files/picture_members.h"
#include "host/files/tag_members.h"

namespace tarnova {

struct ItemReader::ItemTarget {
    ItemTarget(const LayoutNames& names, const JsonValue& itsValue) : look(names), value(itsValue) {}

    ShapeTarget look;
    const JsonValue& value;
    PageItem item;
    const JsonValue* uid = nullptr;
    const JsonValue* layer = nullptr;
    const JsonValue* bounds = nullptr;
    const JsonValue* rotate = nullptr;
    const JsonValue* matrix = nullptr;
    const JsonValue* at = nullptr;
    const JsonValue* shape = nullptr;
    const JsonValue* text = nullptr;
    const JsonValue* sharedText = nullptr;
    const JsonValue* flowsFrom = nullptr;
    const JsonValue* storyUid = nullptr;
    const JsonValue* columnUids = nullptr;
    const JsonValue* pathText = nullptr;
    const JsonValue* group = nullptr;
    const JsonValue* overrides = nullptr;
    const JsonValue* picture = nullptr;
    const JsonValue* anchor = nullptr;
    ItemFlow flow;
    const JsonValue* tags[2] = {};  // by store
    PlacedGraphic graphic;          // of a picture
    std::size_t shapeKey = 0;

    [[nodiscard]] bool hasText() const { return text != nullptr || sharedText != nullptr || flowsFrom != nullptr; }
};

namespace {

constexpr std::int64_t exactIntegerLimit = std::int64_t{1} << 53;  // numbers of JSON are doubles

/// Levels of JSON that a layout needs at most: down to the items of a page, two for each group, the frame, then for
/// each text in a text six down to an item in it, its groups and frame, and at last the notes of a link on a run in a
/// text with threads on a path. What was read can so be written, and that be read again.
static_assert(4 + 2 * groupDepthLimit + 1 + anchorDepthLimit * (6 + 2 * groupDepthLimit + 1) + 9 <= jsonDepthLimit);

template <std::size_t store>
void readBlock(DataBlocks& target, const JsonValue& value) {
    target.blocks[store] = std::make_shared<const std::string>(bytesOf(value));
}

std::array<double, 6> keyOf(const PMMatrix& m) {
    return {m.a, m.b, m.c, m.d, m.tx, m.ty};
}

}  // namespace

DataBlocks readDataBlocks(const JsonValue& value) {
    static constexpr Member<DataBlocks> rows[] = {{"kelvane", readBlock<0>}, {"tallyra", readBlock<1>}};
    DataBlocks out;
    readMembers<DataBlocks>(value, "the data of the engine's stores", rows, out);
    return out;
}

void ItemReader::readShared(const JsonValue* shapeList, const JsonValue* textList) {
    static constexpr Member<ShapeTarget> rows[] = {
        {"kind", readShapeKind},
        {"inner", readShapeInner},
        {"path", readShapePath},
        {"fill", readShapeFill},
        {"stroke", readShapeStroke},
        {"content", readShapeContent},
        {"insets", readShapeInsets},
        {"columns", readShapeColumns},
        {"gutter", readShapeGutter},
        {"verticalAlign", readShapeVerticalAlign},
        {"paragraphSpaceLimit", readShapeParagraphSpaceLimit},
        {"firstBaseline", readShapeFirstBaseline},
        {"leastFirstBaseline", readShapeLeastFirstBaseline},
        {"baselineGrid", readShapeBaselineGrid},
        {"ignoreWrap", readShapeIgnoreWrap},
    };
    for (const JsonValue& value : elementsOf(shapeList)) {
        ShapeTarget target(names);
        readMembers<ShapeTarget>(value, "a shared shape", rows, target);
        shapes.push_back(finishShape(target, value, ContentKind::unassigned));
    }
    TextReader reader(builder, names);
    for (const JsonValue& value : elementsOf(textList)) {
        texts.push_back(reader.read(value));
        if (reader.anchored().empty()) continue;
        faultAt(*reader.anchored().front().item,
                "A text that frames share can't hold an item; give each its own text.");
    }
}

void ItemReader::readItems(const JsonValue* list, UID spread, PMPoint origin) {
    for (const JsonValue& value : elementsOf(list))
        readItem(value, {Place::Kind::layer, spread, origin});
}

/// What frames, groups and pictures have in common.
std::vector<Member<ItemReader::ItemTarget>> ItemReader::placedMembers() {
    using T = ItemTarget;
    return {
        {"uid", keep<T, &T::uid>},
        {"name", [](T& t, const JsonValue& v) { t.item.name = nameOf(v); }},
        {"matrix", keep<T, &T::matrix>},
        {"at", keep<T, &T::at>},
        {"inner", [](T& t, const JsonValue& v) { readShapeInner(t.look, v); }},
        {"locked", [](T& t, const JsonValue& v) { t.item.locked = boolOf(v); }},
        {"printing", [](T& t, const JsonValue& v) { t.item.nonPrinting = !boolOf(v); }},
        {"tag", [](T& t, const JsonValue& v) { t.tags[0] = &v; }},
        {"tallyraTag", [](T& t, const JsonValue& v) { t.tags[1] = &v; }},
        {"data",
         [](T& t, const JsonValue& v) {
             DataBlocks data = readDataBlocks(v);
             for (int store = 0; store < 2; ++store)
                 t.item.itemData[store] = std::move(data.blocks[store]);
         }},
    };
}

const std::vector<Member<ItemReader::ItemTarget>>& ItemReader::itemMembers() {
    using T = ItemTarget;
    static const std::vector<Member<T>> rows = [] {
        std::vector<Member<T>> out = placedMembers();
        const Member<T> more[] = {
            {"layer", keep<T, &T::layer>},
            {"bounds", keep<T, &T::bounds>},
            {"rotate", keep<T, &T::rotate>},
            {"shape", keep<T, &T::shape>},
            {"kind", [](T& t, const JsonValue& v) { readShapeKind(t.look, v); }},
            {"path", [](T& t, const JsonValue& v) { readShapePath(t.look, v); }},
            {"fill", [](T& t, const JsonValue& v) { readShapeFill(t.look, v); }},
            {"stroke", [](T& t, const JsonValue& v) { readShapeStroke(t.look, v); }},
            {"content", [](T& t, const JsonValue& v) { readShapeContent(t.look, v); }},
            {"insets", [](T& t, const JsonValue& v) { readShapeInsets(t.look, v); }},
            {"columns", [](T& t, const JsonValue& v) { readShapeColumns(t.look, v); }},
            {"gutter", [](T& t, const JsonValue& v) { readShapeGutter(t.look, v); }},
            {"verticalAlign", [](T& t, const JsonValue& v) { readShapeVerticalAlign(t.look, v); }},
            {"paragraphSpaceLimit", [](T& t, const JsonValue& v) { readShapeParagraphSpaceLimit(t.look, v); }},
            {"firstBaseline", [](T& t, const JsonValue& v) { readShapeFirstBaseline(t.look, v); }},
            {"leastFirstBaseline", [](T& t, const JsonValue& v) { readShapeLeastFirstBaseline(t.look, v); }},
            {"baselineGrid", [](T& t, const JsonValue& v) { readShapeBaselineGrid(t.look, v); }},
            {"ignoreWrap", [](T& t, const JsonValue& v) { readShapeIgnoreWrap(t.look, v); }},
            {"wrap", [](T& t, const JsonValue& v) { t.flow.wrap = readWrap(v); }},
            {"anchor", keep<T, &T::anchor>},
            {"text", keep<T, &T::text>},
            {"sharedText", keep<T, &T::sharedText>},
            {"flowsFrom", keep<T, &T::flowsFrom>},
            {"storyUid", keep<T, &T::storyUid>},
            {"columnUids", keep<T, &T::columnUids>},
            {"pathText", keep<T, &T::pathText>},
            {"group", keep<T, &T::group>},
            {"overrides", keep<T, &T::overrides>},
            {"picture", keep<T, &T::picture>},
        };
        out.insert(out.end(), std::begin(more), std::end(more));
        return out;
    }();
    return rows;
}

const std::vector<Member<ItemReader::ItemTarget>>& ItemReader::pictureMembers() {
    using T = ItemTarget;
    static const std::vector<Member<T>> rows = [] {
        std::vector<Member<T>> out = placedMembers();
        out.push_back({"file", [](T& t, const JsonValue& v) { t.graphic.filePath = pictureFileOf(v); }});
        out.push_back({"page", [](T& t, const JsonValue& v) { t.graphic.pdfPage = pictureFilePageOf(v); }});
        out.push_back({"embedded", [](T& t, const JsonValue& v) {
                           t.graphic.embedded = std::make_shared<const std::string>(bytesOf(v));
                       }});
        out.push_back({"crop", [](T& t, const JsonValue& v) { t.graphic.pdfCrop = pictureCropOf(v); }});
        out.push_back({"transparent", [](T& t, const JsonValue& v) { t.graphic.pdfTransparent = boolOf(v); }});
        out.push_back({"fileTime", [](T& t, const JsonValue& v) {
                           t.graphic.fileTime = integerOf(v, -exactIntegerLimit, exactIntegerLimit);
                       }});
        out.push_back(
            {"fileSize", [](T& t, const JsonValue& v) { t.graphic.fileSize = integerOf(v, 0, exactIntegerLimit); }});
        out.push_back({"clip", [](T& t, const JsonValue& v) { readClip(v, t.graphic); }});
        return out;
    }();
    return rows;
}

UID ItemReader::readItem(const JsonValue& value, const Place& place) {
    ItemTarget target(names, value);
    readMembers<ItemTarget>(value, "an item", itemMembers(), target);
    uids.countObjects(value, 1);
    const UID uid = target.item.uid = uids.uidOf(target.uid);
    const std::string name = target.item.name;
    const UID parent = parentOf(target, place);
    takeLinks(target);
    takeFlow(target, place);
    takeBounds(target);
    target.item.toParent.tx += place.origin.x;
    target.item.toParent.ty += place.origin.y;
    if (!withinCoordinates(target.item.toParent)) {
        faultAt(value, "The item lies more than 10,000,000 points away from where its spread begins.");
    }
    if (target.group == nullptr) {
        readFrame(target, parent, place.kind == Place::Kind::layer);
    } else {
        readGroup(target, parent);
    }
    if (!name.empty() && builder.isMasterItem(uid)) masterItemsByName[name].push_back(uid);
    if (target.overrides != nullptr) overriding.emplace_back(uid, target.overrides);
    return uid;
}

/// The node, group or story that the item goes to. What stands in a group or text can't choose a layer,
/// and in a text it overrides nothing.
UID ItemReader::parentOf(const ItemTarget& target, const Place& place) const {
    if (place.kind == Place::Kind::layer) {
        const std::size_t index = target.layer == nullptr ? 1 : namedIndex(layers, *target.layer, "layer");
        return builder.layerNode(place.holder, index);
    }
    const bool inGroup = place.kind == Place::Kind::group;
    if (target.layer != nullptr) {
        faultAt(*target.layer, inGroup ? "A member of a group lies on the layer of its group; leave \"layer\" away."
                                       : "An item in a text lies on the layer of its frame; leave \"layer\" away.");
    }
    if (target.overrides != nullptr && anchorDepth > 0) {
        faultAt(*target.overrides, "An item in a text overrides nothing; the frame of the text may.");
    }
    return place.holder;
}

void ItemReader::takeFlow(ItemTarget& target, const Place& place) {
    if (target.anchor != nullptr) {
        const bool onPath = place.kind == Place::Kind::pathText;
        if (place.kind != Place::Kind::text && !onPath) faultAt(*target.anchor, "\"anchor\" is for items in a text.");
        target.flow.anchor = readAnchor(*target.anchor);
        if (onPath && target.flow.anchor.kind != AnchorOptions::Kind::inLine) {
            faultAt(*target.anchor, "An item in a text on a path stands in its line: its kind is \"inline\".");
        }
    }
    if (target.flow != ItemFlow{}) target.item.flow = std::make_shared<const ItemFlow>(target.flow);
}

void ItemReader::readGroup(ItemTarget& target, UID parent) {
    const bool hasContent = target.hasText() || target.pathText != nullptr || target.picture != nullptr;
    if (target.look.firstMember != nullptr || target.shape != nullptr || target.bounds != nullptr || hasContent) {
        faultAt(target.value, "A group has no look, bounds, text or picture of its own; its members have.");
    }
    requireArray(*target.group);
    if (groupDepth == groupDepthLimit) {
        faultAt(target.value,
                "Groups are nested more than " + std::to_string(groupDepthLimit) + " deep; take some of them apart.");
    }
    ++groupDepth;
    target.item.itemClass = ItemClass::group;
    const UID uid = builder.addItem(parent, std::move(target.item));
    for (const JsonValue& member : *target.group)
        readItem(member, {Place::Kind::group, uid, {}});
    --groupDepth;
}

/// A link is the only entry of its store's data.
void ItemReader::takeLinks(ItemTarget& target) {
    for (std::size_t store = 0; store < 2; ++store) {
        const JsonValue* tag = target.tags[store];
        if (tag == nullptr) continue;
        std::shared_ptr<const std::string>& block = target.item.itemData[store];
        if (block != nullptr) faultAt(*tag, "An item has either a link or \"data\" for one store, not both.");
        block = std::make_shared<const std::string>(readFrameTag(*tag));
    }
}

/// Where the item lies, from "bounds", "at" or "matrix".
void ItemReader::takeBounds(ItemTarget& target) const {
    PMMatrix& place = target.item.toParent;
    if (int(target.bounds != nullptr) + int(target.at != nullptr) + int(target.matrix != nullptr) > 1) {
        faultAt(target.value, "An item has one of \"bounds\", \"at\" and \"matrix\".");
    }
    if (target.rotate != nullptr && target.bounds == nullptr) {
        faultAt(*target.rotate, "\"rotate\" goes with \"bounds\".");
    }
    if (target.matrix != nullptr) {
        const std::vector<double> m = numbersOf(*target.matrix, 6, -coordinateLimit, coordinateLimit);
        place = {m[0], m[1], m[2], m[3], m[4], m[5]};
    } else if (target.at != nullptr) {
        const std::vector<double> at = lengthsOf(*target.at, 2);
        place = {1, 0, 0, 1, at[0], at[1]};
    } else if (target.bounds != nullptr) {
        if (target.look.inner || target.shape != nullptr) {
            faultAt(*target.bounds, "\"bounds\" can't stand beside \"inner\" or \"shape\".");
        }
        const std::vector<double> sides = lengthsOf(*target.bounds, 4);
        if (sides[2] < 0 || sides[3] < 0) faultAt(*target.bounds, "\"bounds\" has a width or height below 0.");
        target.look.inner = PMRect{0, 0, sides[2], sides[3]};
        if (target.rotate != nullptr) {
            place = turnAround({sides[2] / 2, sides[3] / 2}, numberOf(*target.rotate, -360, 360));
        }
        place = place.then({1, 0, 0, 1, sides[0], sides[1]});
    }
}

void ItemReader::takeShape(ItemTarget& target) const {
    if (target.shape == nullptr) {
        const ContentKind usual = target.hasText()            ? ContentKind::text
                                  : target.picture != nullptr ? ContentKind::graphic
                                                              : ContentKind::unassigned;
        target.item.shape = finishShape(target.look, target.value, usual);
    } else {
        if (target.look.firstMember != nullptr) {
            faultAt(*target.look.firstMember, whatIs(*target.look.firstMember) + " can't stand beside \"shape\".");
        }
        if (shapes.empty()) faultAt(*target.shape, "The layout has no \"shapes\" to take one of.");
        const auto last = static_cast<std::int64_t>(shapes.size()) - 1;
        target.shapeKey = static_cast<std::size_t>(integerOf(*target.shape, 0, last)) + 1;
        target.item.shape = shapes[target.shapeKey - 1];
    }
    if (target.hasText() && target.item.shape->content != ContentKind::text) {
        faultAt(target.value, "An item with text needs the content \"text\" in its look.");
    }
}

void ItemReader::readFrame(ItemTarget& target, UID parent, bool onLayer) {
    takeShape(target);
    const std::shared_ptr<const ItemShape> shape = target.item.shape;
    const std::string name = target.item.name;
    const StampKey key{target.shapeKey, keyOf(target.item.toParent)};
    const bool mayRepeat = target.shapeKey != 0 && onLayer && target.picture == nullptr;
    const auto known = mayRepeat ? itemStamps.find(key) : itemStamps.end();
    if (known != itemStamps.end()) target.item.stamp = known->second;
    const UID uid = builder.addItem(parent, std::move(target.item));
    if (mayRepeat) itemStamps.emplace(key, builder.stampOf(uid));
    if (target.picture != nullptr && shape->content == ContentKind::text) {
        faultAt(*target.picture, "A frame has either a picture or text.");
    }
    if (target.picture != nullptr) readPicture(*target.picture, uid, shape->bounds);
    if (target.pathText != nullptr) makePathStory(*target.pathText, uid, *shape, target.shapeKey);
    if (shape->content == ContentKind::text) {
        noteFrame(target, uid, shape->text.columns, name);
    } else if (target.storyUid != nullptr || target.columnUids != nullptr) {
        faultAt(target.value, "\"storyUid\" and \"columnUids\" are for frames with text.");
    }
}

void ItemReader::readPicture(const JsonValue& value, UID frame, const PMRect& frameBounds) {
    ItemTarget target(names, value);
    readMembers<ItemTarget>(value, "a picture", pictureMembers(), target);
    if (target.graphic.filePath.empty() == (target.graphic.embedded == nullptr)) {
        faultAt(value, "A picture needs \"file\", the path of its file, or else \"embedded\".");
    }
    uids.countObjects(value, 1);
    target.item.uid = uids.uidOf(target.uid);
    takeLinks(target);
    takeBounds(target);
    if (target.look.inner) target.graphic.bounds = *target.look.inner;
    completeGraphic(target.graphic, target.look.inner.has_value(), frameBounds, folder);
    target.item.itemClass = ItemClass::graphic;
    target.item.graphic = std::make_shared<const PlacedGraphic>(std::move(target.graphic));
    builder.addItem(frame, std::move(target.item));
}

void ItemReader::noteFrame(const ItemTarget& target, UID uid, std::int32_t columns, const std::string& name) {
    if (int(target.text != nullptr) + int(target.sharedText != nullptr) + int(target.flowsFrom != nullptr) > 1) {
        faultAt(target.value, "A frame has one of \"text\", \"sharedText\" and \"flowsFrom\".");
    }
    if (target.flowsFrom != nullptr && target.storyUid != nullptr) {
        faultAt(*target.storyUid, "\"storyUid\" stands on the first frame of a story only.");
    }
    uids.countObjects(target.value, static_cast<std::size_t>(columns) + 1);
    Frame frame;
    frame.uid = uid;
    frame.value = &target.value;
    frame.text = target.text;
    frame.shared = target.sharedText;
    frame.flowsFrom = target.flowsFrom;
    frame.storyUid = target.storyUid;
    frame.columns = uids.uidsOf(target.columnUids);
    if (frame.columns.size() > static_cast<std::size_t>(columns)) {
        faultAt(*target.columnUids, "There are more \"columnUids\" than columns.");
    }
    while (frame.columns.size() < static_cast<std::size_t>(columns))
        frame.columns.push_back(uids.uidOf(nullptr));
    frame.shapeKey = target.shapeKey;
    frameByUid.emplace(uid, frames.size());
    if (!name.empty()) framesByName[name].push_back(frames.size());
    frames.push_back(std::move(frame));
}

void ItemReader::placeOverrides() {
    for (const auto& [uid, value] : overriding)
        builder.setOverrides(uid, overriddenBy(*value));
}

UID ItemReader::overriddenBy(const JsonValue& value) const {
    if (value.is(JsonValue::Type::number)) {
        const auto uid = static_cast<UID>(integerOf(value, 1, fileUidLimit - 1));
        if (!builder.isMasterItem(uid)) faultAt(value, "No master has an item with this UID outside of its groups.");
        return uid;
    }
    const auto found = masterItemsByName.find(nameOf(value));
    if (found == masterItemsByName.end()) {
        faultAt(value, "No master has an item named \"" + std::string(value.text.substr(0, 80)) + "\".");
    }
    if (found->second.size() > 1) faultAt(value, "More than one item of masters has this name; give its UID.");
    return found->second.front();
}

}  // namespace tarnova
