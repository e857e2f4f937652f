#include "tags/tag_manager.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <memory>
#include <string>

#include "document/item_data.h"
#include "document/table_commands.h"
#include "document/walk_state.h"
#include "engine/toolkit/messages.h"

namespace tarnova {

namespace {

constexpr std::int32_t resultDone = 0;
constexpr std::int32_t resultFailed = 1;
constexpr std::uint16_t storeKelvane = 0;

std::byte* copyOfBytes(std::string_view bytes) {
    auto* copy = static_cast<std::byte*>(newBlock(bytes.size()));
    if (copy != nullptr && !bytes.empty()) std::memcpy(copy, bytes.data(), bytes.size());
    return copy;
}

void giveStrings(const TagAttribute& attribute, tagStrings* outStrings) {
    if (outStrings == nullptr) return;
    *outStrings = {attribute.ownerName(), attribute.highlightMode(), attribute.highlightColour(), attribute.spare()};
}

/// Answers of the three find operations.
std::int32_t giveTag(const textTagRec& tag, tagStrings* outStrings, std::int32_t& position, std::int32_t& length,
                     std::byte** outData, std::int32_t& outFoundPosition, std::int32_t& outFoundLength) {
    if (outData != nullptr) *outData = nullptr;
    outFoundPosition = tag.start;
    outFoundLength = tag.length;
    if (tag.attribute == nullptr) return resultDone;
    position = tag.start;
    length = tag.length;
    giveStrings(*tag.attribute, outStrings);
    if (outData != nullptr) *outData = copyOfBytes(tag.attribute->data());
    return resultDone;
}

errorWord removeTags(UIDRef story, std::int32_t position, std::int32_t limit) {
    Document& document = *story.database;
    while (position < limit) {
        const textTagRec tag = findTextTag(document, story.uid, position, limit - position);
        if (tag.attribute == nullptr) return 0;
        const errorWord error = document.attributeRemove(story.uid, tag.start, tag.length, tagClassOfMode());
        if (error != 0) return error;
        position = tag.start + tag.length;
    }
    return 0;
}

std::uint32_t tagIdAt(const Document& document, UID story, std::int32_t position) {
    const TagAttribute* tag = ownTagOf(document.attributeRunAt(story, position).attributes);
    return tag != nullptr ? tag->tagId() : 0;
}

/// Pasted text may have brought an identity that nobody has seen: the neighbours are asked once more.
std::uint32_t tagIdFor(UIDRef story, std::int32_t start, std::int32_t length) {
    const Document& document = *story.database;
    const std::uint32_t before = start > 0 ? tagIdAt(document, story.uid, start - 1) : 0;
    const std::uint32_t behind = tagIdAt(document, story.uid, start + length);
    std::uint32_t id = newTagId(document);
    while (id == before || id == behind)
        id = newTagId(document);
    return id;
}

/// The end of a range that a caller gives, whatever its numbers.
std::int32_t limitOf(std::int32_t position, std::int32_t length) {
    constexpr std::int64_t last = std::numeric_limits<std::int32_t>::max();
    return static_cast<std::int32_t>(std::min(std::int64_t{position} + std::max(length, 0), last));
}

/// A range that runs to the story's end, cut in front of its closing character.
std::int32_t lengthInText(UIDRef story, std::int32_t position, std::int32_t length) {
    const std::int32_t textLimit = story.database->totalLength(story.uid) - 1;
    return std::clamp(length, 0, std::max(textLimit - position, 0));
}

bool beginSequence(UIDRef object, std::string_view title) {
    if (object.database != nullptr && object.database->BeginCommandSequence(title) == 0) return true;
    reportErrorKey("kZavoErrorMergeSequenceFailed");
    return false;
}

std::int32_t setEntry(UIDRef frame, std::uint32_t type, std::string_view data, std::uint16_t store) {
    return itemDataSet(frame, ItemDataPlace::pageItem, type, data.data(), data.size(), store) == 1 ? resultDone
                                                                                                   : resultFailed;
}

std::int32_t getEntry(UIDRef frame, std::uint32_t type, std::byte** outData, std::uint16_t store) {
    return itemDataGet(frame, ItemDataPlace::pageItem, type, outData, nullptr, store) == 1 ? resultDone : resultFailed;
}

std::int32_t removeEntry(UIDRef frame, std::uint32_t type, std::uint16_t store) {
    return setEntry(frame, type, std::string_view{}, store);
}

std::int32_t giveNothing(std::byte** outData) {
    if (outData != nullptr) *outData = nullptr;
    return resultFailed;
}

std::int32_t layOverTable(ITableCommands* commands, const tagStrings& strings, std::string_view data) {
    if (commands == nullptr || !commands->CanApplyOverrides()) return resultFailed;
    const auto attribute = std::make_shared<NokDataTagTableAttr>();
    attribute->setOwnerName(strings.ownerName);
    attribute->setHighlightMode(strings.highlightMode);
    attribute->setHighlightColour(strings.highlightColour);
    attribute->setSpare(strings.spare);
    attribute->setTagId(newTableTagId());
    attribute->setData(data);
    return commands->ApplyOverride(attribute) == 0 ? resultDone : resultFailed;
}

}  // namespace

std::int32_t ZavoDataTagManager::TagText(UIDRef story, const tagStrings& strings, std::string_view data,
                                         std::int32_t& position, std::int32_t& length) {
    if (!story || position < 0) return resultFailed;
    length = lengthInText(story, position, length);
    if (removeTags(story, position, position + length) != 0) {
        reportErrorKey("kZavoErrorRemoveSequenceFailed");
        return resultFailed;
    }
    if (data.empty() || length == 0) return resultDone;
    TagAttribute::Content content{strings.ownerName,
                                  strings.highlightMode,
                                  strings.highlightColour,
                                  strings.spare,
                                  tagIdFor(story, position, length),
                                  std::string(data)};
    const auto attribute = std::make_shared<const TagAttribute>(tagClassOfMode(), std::move(content));
    return story.database->attributeApply(story.uid, position, length, attribute) == 0 ? resultDone : resultFailed;
}

std::int32_t ZavoDataTagManager::GetTextTag(UIDRef story, tagStrings* outStrings, std::int32_t& position,
                                            std::int32_t& length, std::byte** outData, std::int32_t& outFoundPosition,
                                            std::int32_t& outFoundLength) {
    const textTagRec tag = story ? findTextTag(*story.database, story.uid, position, length) : textTagRec{};
    return giveTag(tag, outStrings, position, length, outData, outFoundPosition, outFoundLength);
}

std::int32_t ZavoDataTagManager::GetNextTextTag(UIDRef story, tagStrings* outStrings, std::int32_t& position,
                                                std::int32_t& length, std::byte** outData,
                                                std::int32_t& outFoundPosition, std::int32_t& outFoundLength) {
    const textTagRec tag =
        story ? findNextTextTag(*story.database, story.uid, limitOf(position, length)) : textTagRec{};
    return giveTag(tag, outStrings, position, length, outData, outFoundPosition, outFoundLength);
}

std::int32_t ZavoDataTagManager::GetPreviousTextTag(UIDRef story, tagStrings* outStrings, std::int32_t& position,
                                                    std::int32_t& length, std::byte** outData,
                                                    std::int32_t& outFoundPosition, std::int32_t& outFoundLength) {
    const textTagRec tag = story ? findPreviousTextTag(*story.database, story.uid, position) : textTagRec{};
    return giveTag(tag, outStrings, position, length, outData, outFoundPosition, outFoundLength);
}

std::int32_t ZavoDataTagManager::RemoveTextTag(UIDRef story, const tagStrings&, std::int32_t& position,
                                               std::int32_t& length) {
    if (!story) return resultFailed;
    if (length == 0) {
        const textTagRec tag = findTextTag(*story.database, story.uid, position, 0);
        if (tag.attribute == nullptr) return resultDone;
        position = tag.start;
        length = tag.length;
    }
    if (removeTags(story, position, limitOf(position, length)) == 0) return resultDone;
    reportErrorKey("kZavoErrorRemoveSequenceFailed");
    return resultFailed;
}

std::int32_t ZavoDataTagManager::WithTextTag(UIDRef story, const textTagAction& action, std::string_view title,
                                             std::int32_t& position, std::int32_t& length) {
    if (!story) return resultDone;
    const Document& document = *story.database;
    const textTagRec tag = findTextTag(document, story.uid, position, length);
    if (tag.attribute == nullptr || !beginSequence(story, title)) return resultDone;
    position = tag.start;
    length = lengthInText(story, tag.start, tag.length);
    const std::int32_t result = action(story, position, length);
    story.database->EndCommandSequence();
    const textTagRec after = findTextTag(document, story.uid, position, 0);
    length = after.attribute != nullptr ? lengthInText(story, after.start, after.length) : 0;
    if (after.attribute != nullptr) position = after.start;
    return result;
}

std::int32_t ZavoDataTagManager::SetFrameTag(UIDRef frame, const tagStrings&, std::string_view data) {
    return setEntry(frame, itemDataFrameTag, data, walkState().engineMode);
}

std::int32_t ZavoDataTagManager::GetFrameTag(UIDRef frame, const tagStrings&, std::byte** outData) {
    return getEntry(frame, itemDataFrameTag, outData, walkState().engineMode);
}

std::int32_t ZavoDataTagManager::Reserved9(UIDRef, const tagStrings&, std::byte** outData) {
    return giveNothing(outData);
}

std::int32_t ZavoDataTagManager::Reserved10(UIDRef, const tagStrings&, std::byte** outData) {
    return giveNothing(outData);
}

std::int32_t ZavoDataTagManager::RemoveFrameTag(UIDRef frame) {
    return removeEntry(frame, itemDataFrameTag, walkState().engineMode);
}

std::int32_t ZavoDataTagManager::RunTagSequence(UIDRef story, UIDRef target, const targetAction& action,
                                                std::string_view title) {
    if (!beginSequence(story, title)) return resultDone;
    const std::int32_t result = action(target);
    story.database->EndCommandSequence();
    return result;
}

std::int32_t ZavoDataTagManager::SetChartTag(UIDRef frame, const tagStrings&, std::string_view data) {
    return setEntry(frame, itemDataChartTag, data, walkState().engineMode);
}

std::int32_t ZavoDataTagManager::GetChartTag(UIDRef frame, const tagStrings&, std::byte** outData) {
    return getEntry(frame, itemDataChartTag, outData, walkState().engineMode);
}

std::int32_t ZavoDataTagManager::Reserved15(UIDRef, const tagStrings&, std::byte** outData) {
    return giveNothing(outData);
}

std::int32_t ZavoDataTagManager::Reserved16(UIDRef, const tagStrings&, std::byte** outData) {
    return giveNothing(outData);
}

std::int32_t ZavoDataTagManager::RemoveChartTag(UIDRef frame) {
    return removeEntry(frame, itemDataChartTag, walkState().engineMode);
}

std::int32_t ZavoDataTagManager::TagTable(UIDRef table, const tagStrings& strings, std::string_view data) {
    if (data.empty()) return resultDone;
    return layOverTable(table ? table.database->tableCommands(table.uid) : nullptr, strings, data);
}

std::int32_t ZavoDataTagManager::GetTableTag(UIDRef table, tagStrings* outStrings, std::byte** outData) {
    const INokDataTagTableAttr* attribute = table ? table.database->tableAttribute(table.uid) : nullptr;
    if (attribute == nullptr) return giveNothing(outData);
    if (outStrings != nullptr) {
        *outStrings = {attribute->ownerName(), attribute->highlightMode(), attribute->highlightColour(),
                       attribute->spare()};
    }
    if (outData != nullptr) *outData = attribute->copyData();
    return resultDone;
}

std::int32_t ZavoDataTagManager::TagTableCommands(ITableCommands* tableCommands, const tagStrings& strings) {
    return layOverTable(tableCommands, strings, {});
}

std::int32_t ZavoDataTagManager::RemoveTableTag(UIDRef table, const tagStrings&) {
    if (!table) return resultFailed;
    const auto command = CmdUtils::CreateCommand<NokClearTableOverridesCmd>(NokClearTableOverridesCmdData{{table.uid}});
    return CmdUtils::ProcessCommand(*table.database, *command) == 0 ? resultDone : resultFailed;
}

std::int32_t ZavoDataTagManager::SetActionFrameAttr(UIDRef frame, const tagStrings&, std::string_view data) {
    return setEntry(frame, itemDataActionFrame, data, storeKelvane);
}

std::int32_t ZavoDataTagManager::GetActionFrameAttr(UIDRef frame, const tagStrings&, std::byte** outData) {
    static_cast<void>(getEntry(frame, itemDataActionFrame, outData, storeKelvane));
    return resultDone;
}

std::int32_t ZavoDataTagManager::RemoveActionFrameAttr(UIDRef frame) {
    return removeEntry(frame, itemDataActionFrame, storeKelvane);
}

IZavoDataTagManager& dataTagManager() {
    static ZavoDataTagManager manager;
    return manager;
}

errorWord readFrameTag(UIDRef frame, tagDataRec& tag, errorWord priorError) {
    if (priorError != 0) return priorError;
    tag.tagStatus = tagStatusNone;
    const std::optional<std::string_view> stored =
        itemDataView(frame, ItemDataPlace::pageItem, itemDataFrameTag, walkState().engineMode);
    return stored ? tagRecordDecode(*stored, &tag, nullptr, nullptr, 0) : 0;
}

errorWord writeFrameTag(UIDRef frame, const tagDataRec& tag, errorWord priorError) {
    std::byte* block = nullptr;
    const errorWord error = tagRecordEncode(&tag, &block, priorError);
    if (error != 0) return error;
    const blockPtr<> owned(block);
    const bool stored = itemDataSet(frame, ItemDataPlace::pageItem, itemDataFrameTag, block, blockSize(block),
                                    walkState().engineMode) == 1;
    return stored ? 0 : errFailed;
}

}  // namespace tarnova
