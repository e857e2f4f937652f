// The stories of the frames that were read, with the items that stand in them.

#include <utility>

#include "host/files/item_reader.h"
#include "host/files/path_text_members.h"

namespace tarnova {

namespace {

/// While it lives, objects get the stamps of a tape from a place on; without one (null) they go on as before.
class TapeUse {
 public:
    TapeUse(DocumentBuilder& itsBuilder, StampTape* tape, std::size_t from)
        : builder(itsBuilder), outer(itsBuilder.tape()) {
        if (tape == nullptr) return;
        tape->next = from;
        builder.useTape(tape);
    }
    ~TapeUse() { builder.useTape(outer); }
    TapeUse(const TapeUse&) = delete;
    TapeUse& operator=(const TapeUse&) = delete;

 private:
    DocumentBuilder& builder;
    StampTape* outer;
};

}  // namespace

/// Index of the frame that "flowsFrom" names, among those from `first` on.
std::size_t ItemReader::frameInFrontOf(const Frame& frame, std::size_t first) const {
    const JsonValue& value = *frame.flowsFrom;
    std::vector<std::size_t> named;
    if (value.is(JsonValue::Type::number)) {
        const auto found = frameByUid.find(static_cast<UID>(integerOf(value, 1, fileUidLimit - 1)));
        if (found != frameByUid.end()) named.push_back(found->second);
    } else if (const auto found = framesByName.find(nameOf(value)); found != framesByName.end()) {
        named = found->second;
    }
    std::erase_if(named, [first](std::size_t index) { return index < first; });
    if (named.empty()) {
        const std::string which = value.is(JsonValue::Type::number)
                                      ? "with this UID"
                                      : "named \"" + std::string(value.text.substr(0, 80)) + "\"";
        faultAt(value, first == 0 ? "The layout has no text frame " + which + "."
                                  : "The item in the text has no text frame " + which +
                                        "; its frames flow from each "
                                        "other only.");
    }
    if (named.size() > 1) faultAt(value, "More than one text frame has this name; give them different ones.");
    return named.front();
}

void ItemReader::makeStories() {
    makeStoriesFrom(0);
}

/// The frames from `first` on are those of the pages, or those of one item in a text.
void ItemReader::makeStoriesFrom(std::size_t first) {
    const std::vector<PathItems> onPaths = std::exchange(pathItems, {});
    const std::size_t limit = frames.size();
    for (std::size_t i = first; i < limit; ++i) {
        if (frames[i].flowsFrom == nullptr) continue;
        Frame& front = frames[frameInFrontOf(frames[i], first)];
        if (front.next != 0) faultAt(*frames[i].flowsFrom, "Two frames flow from the same frame.");
        front.next = i + 1;
    }
    for (std::size_t i = first; i < limit; ++i) {
        if (frames[i].flowsFrom == nullptr) makeStory(i);
    }
    for (std::size_t i = first; i < limit; ++i) {
        if (!frames[i].isPlaced) faultAt(*frames[i].flowsFrom, "These frames flow from each other in a circle.");
    }
    for (const PathItems& items : onPaths)
        readPathItems(items);
}

void ItemReader::makeStory(std::size_t first) {
    std::vector<UID> members;
    std::vector<UID> columns;
    for (std::size_t i = first + 1; i != 0; i = frames[i - 1].next) {
        Frame& frame = frames[i - 1];
        frame.isPlaced = true;
        members.push_back(frame.uid);
        columns.insert(columns.end(), frame.columns.begin(), frame.columns.end());
    }
    const Frame& frame = frames[first];
    TextReader reader(builder, names);
    const std::shared_ptr<StoryText> text = textOf(frame.text, frame.shared, reader);
    const JsonValue* look = frame.shared != nullptr || reader.anchored().empty() ? frame.shared : frame.text;
    const bool mayRepeat = look != nullptr && members.size() == 1;
    const TapeUse use(builder, mayRepeat ? tapeFor(*look, frame.shapeKey) : nullptr, 0);
    const UID story = builder.addStory(members, text, uids.uidOf(frame.storyUid), columns);
    for (const AnchoredValue& anchored : reader.anchored())
        readAnchored(anchored, {Place::Kind::text, story, {}});
}

/// Reads an item that stands in a text, with the texts in it.
void ItemReader::readAnchored(const AnchoredValue& anchored, const Place& place) {
    if (anchorDepth == anchorDepthLimit) {
        faultAt(*anchored.item, "Items stand in texts more than " + std::to_string(anchorDepthLimit) + " deep.");
    }
    ++anchorDepth;
    const std::size_t outerGroups = std::exchange(groupDepth, 0);
    const std::size_t firstFrame = frames.size();
    builder.setAnchor(place.holder, anchored.position, readItem(*anchored.item, place));
    makeStoriesFrom(firstFrame);
    groupDepth = outerGroups;
    --anchorDepth;
}

void ItemReader::makePathStory(const JsonValue& value, UID frame, const ItemShape& shape, std::size_t shapeKey) {
    if (shape.path.empty()) faultAt(value, "A text on a path needs a frame that has a path.");
    const PathTextTarget onPath = readPathText(value);
    uids.countObjects(value, 1);
    TextReader reader(builder, names);
    const std::shared_ptr<StoryText> text = textOf(onPath.text, onPath.sharedText, reader);
    StampTape* const tape = tapeFor(value, shapeKey);
    const TapeUse use(builder, tape, 0);
    const UID story = builder.addPathStory(frame, onPath.options, text, uids.uidOf(onPath.storyUid));
    if (!reader.anchored().empty()) pathItems.push_back({reader.anchored(), story, tape});
}

void ItemReader::readPathItems(const PathItems& items) {
    const TapeUse use(builder, items.tape, 1);
    for (const AnchoredValue& anchored : items.anchored)
        readAnchored(anchored, {Place::Kind::pathText, items.story, {}});
}

/// The tape of a text; null when its frame has a shape of its own, so that nothing can look like it.
StampTape* ItemReader::tapeFor(const JsonValue& text, std::size_t shapeKey) {
    return shapeKey == 0 ? nullptr : &looks.tapeOf(text, shapeKey);
}

/// The text that stands in the file or that it shares; an empty one when both are null.
std::shared_ptr<StoryText> ItemReader::textOf(const JsonValue* own, const JsonValue* shared, TextReader& reader) {
    if (shared != nullptr) {
        if (texts.empty()) faultAt(*shared, "The layout has no \"texts\" to take one of.");
        return texts[static_cast<std::size_t>(integerOf(*shared, 0, static_cast<std::int64_t>(texts.size()) - 1))];
    }
    if (own != nullptr) return reader.read(*own);
    AttributePool& pool = builder.attributePool();
    return emptyStoryText(pool.paragraph({}), pool.plainRun());
}

}  // namespace tarnova
