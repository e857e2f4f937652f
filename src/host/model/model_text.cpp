#include <algorithm>
#include <limits>
#include <set>
#include <string>
#include <utility>

#include "engine/toolkit/text_encoding.h"
#include "host/model/limits.h"
#include "host/model/model_document.h"
#include "host/model/story_text.h"

namespace tarnova {

namespace {

/// Adds the formats of a text, whose attributes are those of the document.
void addFormats(const DocumentModel& document, const StoryText& text, std::set<const CharFormat*>& out) {
    StoryReader reader(text);
    for (std::int32_t start = 0; start < text.length();) {
        const StoryParagraph paragraph = reader.paragraphAt(start);
        while (start < paragraph.limit()) {
            const RunSpan run = reader.runInChunkAt(start);
            out.insert(document.resolveChar(*paragraph.attributes, *run.attributes));
            start = std::min(run.limit, paragraph.limit());
        }
    }
}

}  // namespace

std::vector<UID> ModelDocument::stories() const {
    std::vector<UID> out;
    table.forEach([&out](UID uid, const ObjectSlot& slot) {
        if (std::holds_alternative<std::unique_ptr<Story>>(slot)) out.push_back(uid);
    });
    return out;
}

UID ModelDocument::textOfFrame(UID uid) const {
    if (const PageItem* found = item(uid)) return found->story;
    const Story* onPath = story(uid);
    return onPath == nullptr || onPath->onPath == nullptr ? kInvalidUID : uid;
}

std::vector<UID> ModelDocument::framesOfStory(UID uid) const {
    const Story* found = story(uid);
    return found == nullptr ? std::vector<UID>() : found->frames;
}

errorWord ModelDocument::linkFrames(UID before, UID behind) {
    if (!isTextFrame(before) || !isTextFrame(behind) || before == behind) return errFailed;
    const UID to = item(before)->story, from = item(behind)->story;
    const std::vector<UID>& frames = story(to)->frames;
    const auto place = std::find(frames.begin(), frames.end(), before) - frames.begin() + 1;
    if (static_cast<std::size_t>(place) < frames.size() && frames[static_cast<std::size_t>(place)] == behind) return 0;
    if (to == from || story(from)->length() != 1 || !mayShareText(*item(before), *item(behind))) return errFailed;
    Command command(*this, "Link Frames");
    detachFrame(from, behind);
    changeable<PageItem>(behind)->story = to;
    for (UID column : item(behind)->children)
        changeable<PageItem>(column)->story = to;
    Story* joined = changeable<Story>(to);
    joined->frames.insert(joined->frames.begin() + place, behind);
    restampText(to);
    return 0;
}

/// Frames of pages, frames of masters, or frames of one item that is anchored in a text.
bool ModelDocument::mayShareText(const PageItem& a, const PageItem& b) const {
    if (a.spread == kInvalidUID || b.spread == kInvalidUID) return &outermost(a) == &outermost(b);
    return spread(a.spread)->isMaster == spread(b.spread)->isMaster;
}

std::int32_t ModelDocument::totalLength(UID uid) const {
    const Story* found = story(uid);
    return found == nullptr ? 0 : found->length();
}

textSpanRec ModelDocument::threadSpan(UID uid, std::int32_t position) const {
    const Story* found = story(uid);
    return found == nullptr ? textSpanRec{} : threadAt(*found->content, position);
}

std::u32string ModelDocument::textRead(UID uid, std::int32_t start, std::int32_t length) const {
    const Story* found = story(uid);
    if (found == nullptr) return {};
    const std::int64_t limit = std::min<std::int64_t>(std::int64_t{start} + length, found->length());
    start = std::max(start, 0);
    if (limit <= start) return {};
    return charactersOf(*found->content, start, static_cast<std::int32_t>(limit));
}

namespace {

/// True when the attribute's values are those that a layout file takes.
bool canBeSaved(const TextAttribute& attribute) {
    if (const auto* number = dynamic_cast<const NumberAttribute*>(&attribute)) {
        const double lowest = attribute.attributeClass() == TextAttributeClass::pointSize ? 0 : -coordinateLimit;
        return number->value() >= lowest && number->value() <= coordinateLimit;
    }
    const auto* tag = dynamic_cast<const TagAttribute*>(&attribute);
    return tag == nullptr || (isUtf8(tag->ownerName()) && isUtf8(tag->highlightMode()) &&
                              isUtf8(tag->highlightColour()) && isUtf8(tag->spare()));
}

}  // namespace

bool ModelDocument::holdsRange(UID uid, std::int32_t start, std::int32_t count) const {
    const Story* found = story(uid);
    return found != nullptr && start >= 0 && count >= 0 && start <= found->length() && count <= found->length() - start;
}

Story* ModelDocument::changeableText(UID uid) {
    Story* out = changeable<Story>(uid);
    if (out == nullptr) return nullptr;
    if (out->content.use_count() > 1) out->content = std::make_shared<StoryText>(*out->content);
    out->stamp = newStamp();
    if (out->layout != nullptr && out->layout->mayBeTakenUp()) out->earlier = std::move(out->layout);
    out->layout.reset();
    return out;
}

errorWord ModelDocument::textReplace(UID uid, std::int32_t start, std::int32_t count, std::u32string_view text,
                                     bool keepCharacters) {
    const Story* found = story(uid);
    if (found == nullptr || !mayReplace(*found->content, start, count)) return errFailed;
    if (text.size() >= static_cast<std::size_t>(storyLengthLimit - found->length())) return errRunMemory;
    if (count == 0 && text.empty()) return 0;
    Command command(*this, "Replace Text");
    std::vector<UID> anchored;
    for (const ownedItemRec& owned : ownedItems(uid, start, count))
        anchored.push_back(owned.item);
    StoryText& content = *changeableText(uid)->content;
    replaceCharacters(content, start, count, storyCharacters(text, keepCharacters));
    for (UID anchor : anchored)
        destroyTree(anchor);
    return 0;
}

errorWord ModelDocument::textDelete(UID uid, std::int32_t start, std::int32_t count) {
    return textReplace(uid, start, count, {}, true);
}

attributeRunRec ModelDocument::attributeRunAt(UID uid, std::int32_t position) const {
    const Story* found = story(uid);
    if (found == nullptr || position < 0 || position >= found->length()) return {};
    const RunSpan run = runAt(*found->content, position);
    return {run.attributes, run.limit - position};
}

double ModelDocument::numberAttributeAt(UID uid, std::int32_t position, TextAttributeClass attributeClass) const {
    const Story* found = story(uid);
    if (found == nullptr || position < 0 || position >= found->length()) return 0;
    StoryReader reader(*found->content);
    const CharFormat& format =
        *resolveChar(*reader.paragraphAt(position).attributes, *reader.runAt(position).attributes);
    switch (attributeClass) {
        case TextAttributeClass::pointSize:
            return format.pointSize;
        case TextAttributeClass::baselineShift:
            return format.baselineShift;
        case TextAttributeClass::kerning:
            return format.kerning;
        case TextAttributeClass::position:
            return static_cast<double>(format.position);
        case TextAttributeClass::underline:
            return format.underline ? 1 : 0;
        case TextAttributeClass::kelvaneTag:
        case TextAttributeClass::tallyraTag:
            break;
    }
    return 0;
}

errorWord ModelDocument::attributeApply(UID uid, std::int32_t start, std::int32_t count,
                                        std::shared_ptr<const TextAttribute> attribute) {
    if (attribute == nullptr || !canBeSaved(*attribute) || !holdsRange(uid, start, count)) return errFailed;
    if (count == 0) return 0;
    Command command(*this, "Apply Attribute");
    if (const auto* tag = dynamic_cast<const TagAttribute*>(attribute.get())) noteTagId(tag->tagId());
    changeRuns(*changeableText(uid)->content, start, count,
               [&](const RunAttributes& list) { return formats->attributes.with(list, attribute); });
    return 0;
}

/// Identities that others made aren't handed out again.
void ModelDocument::noteTagId(std::uint32_t tagId) {
    constexpr std::uint32_t last = std::numeric_limits<std::uint32_t>::max();
    tagIdCounter = std::max(tagIdCounter, tagId == last ? last : tagId + 1);
}

errorWord ModelDocument::attributeRemove(UID uid, std::int32_t start, std::int32_t count,
                                         TextAttributeClass attributeClass) {
    if (!holdsRange(uid, start, count)) return errFailed;
    if (count == 0) return 0;
    Command command(*this, "Remove Attribute");
    changeRuns(*changeableText(uid)->content, start, count,
               [&](const RunAttributes& list) { return formats->attributes.without(list, attributeClass); });
    return 0;
}

std::vector<ownedItemRec> ModelDocument::ownedItems(UID uid, std::int32_t start, std::int32_t count) const {
    const Story* found = story(uid);
    std::vector<ownedItemRec> out;
    if (found == nullptr) return out;
    ownedIn(*found->content, start, std::int64_t{start} + count, out);
    return out;
}

bool ModelDocument::hasOwnedItem(UID uid, std::int32_t start, std::int32_t count) const {
    const Story* found = story(uid);
    return found != nullptr && found->content->hasOwned() && !ownedItems(uid, start, count).empty();
}

textSpanRec ModelDocument::paragraphAt(UID uid, std::int32_t position) const {
    const Story* found = story(uid);
    if (found == nullptr || position < 0 || position >= found->length()) return {};
    const StoryParagraph paragraph = tarnova::paragraphAt(*found->content, position);
    return {paragraph.start, paragraph.limit() - paragraph.start};
}

const StoryLayout* ModelDocument::layoutOf(UID uid, std::int32_t through) const {
    const Story* found = story(uid);
    if (found == nullptr) return nullptr;
    if (!unsettled.empty()) settleWraps();
    const std::int32_t needed = std::min(through, found->length() - 1);
    const bool isComposed = found->layout != nullptr && found->layout->composedThrough() > needed;
    if (isComposed && (found->content->pageCharacters() == 0 || showsItsPages(*found))) return found->layout.get();
    if (composer == nullptr) return nullptr;
    found->layout = composer->compose(*this, *found, needed, pageTextsOf(*found));
    found->earlier.reset();
    found->pageTextsRevision = revision;
    return found->layout.get();
}

const StoryLayout* ModelDocument::layoutThroughFrame(UID uid, std::int32_t frameIndex) const {
    const StoryLayout* layout = layoutOf(uid, 0);
    while (layout != nullptr && layout->filledFrames() <= frameIndex)
        layout = layoutOf(uid, layout->composedThrough());
    return layout;
}

std::vector<usedFontRec> ModelDocument::usedFonts() const {
    std::set<const CharFormat*> used;
    table.forEach([this, &used](UID, const ObjectSlot& slot) {
        if (const auto* const found = std::get_if<std::unique_ptr<Story>>(&slot))
            addFormats(*this, *(*found)->content, used);
    });
    std::set<std::pair<std::string, std::string>> names;
    for (const CharFormat* const format : used)
        names.emplace(format->family, format->fontStyle);
    std::vector<usedFontRec> out;
    for (const auto& [family, style] : names)
        out.push_back({family, style, composer != nullptr && !composer->hasFont(family, style)});
    return out;
}

void ModelDocument::composeDocument() {
    for (UID uid : stories())
        composeStoryThrough(uid, totalLength(uid));
}

void ModelDocument::composeStoryThrough(UID uid, std::int32_t position) {
    layoutOf(uid, position);
}

UID ModelDocument::frameOfColumn(const Story& from, std::int32_t column) const {
    for (UID frame : from.frames) {
        column -= item(frame)->shape->text.columns;
        if (column < 0) return frame;
    }
    return kInvalidUID;
}

UID ModelDocument::frameAt(UID uid, std::int32_t position) {
    const Story* found = story(uid);
    if (found == nullptr || position < 0 || position >= found->length()) return kInvalidUID;
    const StoryLayout* layout = layoutOf(uid, position);
    if (layout == nullptr) return found->frames.front();
    const std::int32_t column = layout->columnOf(position);
    return column < 0 ? kInvalidUID : frameOfColumn(*found, column);
}

UID ModelDocument::soleFrame(UID uid) const {
    const Story* found = story(uid);
    return found != nullptr && found->frames.size() == 1 ? found->frames.front() : kInvalidUID;
}

bool ModelDocument::isOverset(UID uid) {
    const Story* found = story(uid);
    if (found == nullptr) return false;
    const StoryLayout* layout = layoutOf(uid, found->length());
    return layout != nullptr && layout->isOverset();
}

std::optional<PMRect> ModelDocument::textBounds(UID uid, std::int32_t start, std::int32_t count) {
    const Story* found = story(uid);
    if (found == nullptr || start < 0 || count <= 0 || start >= found->length()) return std::nullopt;
    const std::int32_t limit = start + std::min(count, found->length() - start);
    const StoryLayout* layout = layoutOf(uid, limit - 1);
    if (layout == nullptr) return std::nullopt;
    std::vector<LineBounds> parts;
    layout->addBounds(start, limit, parts);
    std::optional<PMRect> bounds;
    const Spread* firstSpread = nullptr;
    for (const LineBounds& part : parts) {
        const PageItem& frame = *item(found->frames[static_cast<std::size_t>(part.frameIndex)]);
        const Spread* const showing = spreadHolding(frame);
        if (!bounds) firstSpread = showing;
        if (showing != firstSpread) continue;
        const PMRect inSpread = toSpread(frame).mapBounds(part.bounds);
        bounds = bounds ? bounds->united(inSpread) : inSpread;
    }
    return bounds;
}

}  // namespace tarnova
