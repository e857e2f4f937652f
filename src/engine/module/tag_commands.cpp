// Commands on the links of a document: making, reading and counting them.

#include <algorithm>
#include <functional>

#include "document/document_host.h"
#include "engine/module/command_rows.h"
#include "engine/module/current_definition.h"
#include "engine/module/front_document.h"
#include "engine/module/tag_text_commands.h"
#include "engine/session/preferences.h"
#include "engine/session/session.h"
#include "engine/toolkit/messages.h"
#include "engine/toolkit/text_encoding.h"
#include "merge/field_markers.h"
#include "merge/tag_value.h"
#include "tags/change_keys.h"
#include "tags/tag_list.h"
#include "tags/tag_manager.h"

namespace tarnova {

namespace {

constexpr std::int32_t noneFound = 1;

template <std::size_t size>
void takeName(const commandCall& call, unsigned item, std::uint8_t (&field)[size]) {
    pstrSet(field, call.pascal(item));
}

/// The strings of a link from items in a row: key, link, style, rule, criteria, locked.
void takeTag(const commandCall& call, unsigned firstItem, tagDataRec& tag) {
    takeName(call, firstItem, tag.searchKey);
    takeName(call, firstItem + 1, tag.extractionRecordName);
    takeName(call, firstItem + 2, tag.styleRecordName);
    takeName(call, firstItem + 3, tag.ruleName);
    takeName(call, firstItem + 4, tag.searchCriteriaName);
    tag.linkLocked = call.valueOr<std::uint8_t>(firstItem + 5, 0) != 0 ? 1 : 0;
}

/// What comes out of one, in the same order but for the notes in the lock's place.
void giveTag(const commandCall& call, unsigned firstItem, const tagDataRec& tag) {
    call.putPascal(firstItem, pstrView(tag.searchKey));
    call.putPascal(firstItem + 1, pstrView(tag.extractionRecordName));
    call.putPascal(firstItem + 2, pstrView(tag.styleRecordName));
    call.putPascal(firstItem + 3, pstrView(tag.ruleName));
    call.putPascal(firstItem + 4, pstrView(tag.searchCriteriaName));
    call.putPascal(firstItem + 5, pstrView(tag.notes1));
}

bool storyExists(const UIDRef& story) {
    if (story.database == nullptr) return false;
    const std::vector<UID> stories = story.database->stories();
    return std::find(stories.begin(), stories.end(), story.uid) != stories.end();
}

std::int32_t tagTextRange(commandCall& call) {
    const auto story = call.valueOr<UIDRef>(0, {});
    if (!storyExists(story)) return commandDocument;
    std::int32_t start = call.valueOr<std::int32_t>(1, 0);
    const auto limit = static_cast<std::int32_t>(
        std::min<std::int64_t>(call.valueOr<std::int32_t>(2, 0), story.database->totalLength(story.uid)));
    std::int32_t length = limit - start;
    if (start < 0 || length <= 0) return commandDone;
    tagDataRec tag{};
    takeTag(call, 3, tag);
    std::byte* stored = nullptr;
    const errorWord err = tagRecordEncode(&tag, &stored, 0);
    const blockPtr<> owned(stored);
    if (err != 0) return failWith(err, commandMemory);
    tagStrings texts;
    tagStringsInit(texts, session().engineMode);
    const std::string_view data(reinterpret_cast<const char*>(stored), blockSize(stored));
    return dataTagManager().TagText(story, texts, data, start, length) == 0 ? commandDone : commandFailed;
}

std::int32_t tagFrame(commandCall& call) {
    const auto frame = call.valueOr<UIDRef>(0, {});
    if (!objectExists(frame)) return commandDocument;
    tagDataRec tag{};
    takeTag(call, 1, tag);
    const errorWord err = writeFrameTag(frame, tag, 0);
    return err == 0 ? commandDone : failWith(err, commandFailed);
}

/// Gives all links of an item a key: its own, those of its text, and those of what it holds.
std::int32_t changeKeysOf(UIDRef item, std::string_view key) {
    const errorWord err = changeFrameTreeKeys(item, key, ItemKinds::all);
    return err == 0 ? commandDone : failWith(err, commandFailed);
}

std::int32_t setFrameRecordKey(commandCall& call) {
    const auto frame = call.valueOr<UIDRef>(0, {});
    if (frame.database == nullptr) return commandDocument;
    if (!objectExists(frame)) return noneFound;
    return changeKeysOf(frame, std::to_string(call.valueOr<std::uint32_t>(1, 1)));
}

std::int32_t setSelectionKey(std::string_view key) {
    DocumentHost* const host = session().documentHost;
    const UIDRef document = frontDocument();
    if (host == nullptr || document.database == nullptr) return commandDocument;
    const selectionRec selection = host->selection(document);
    if (selection.story != kInvalidUID) {
        const errorWord err = changeKeysText({document.database, selection.story}, selection.range, key);
        return err == 0 ? commandDone : failWith(err, commandFailed);
    }
    const PMString title = PMString::ofKey("kZavoChangeKeysStringKey");
    if (document.database->BeginCommandSequence(title.view()) != 0) return failWith(errCommandSequence, commandFailed);
    std::int32_t status = commandDone;
    for (const UID item : selection.items)
        if (status == commandDone) status = changeKeysOf({document.database, item}, key);
    document.database->EndCommandSequence();
    return status;
}

std::int32_t setFrameKey(commandCall& call) {
    if (!call.given(0)) return setSelectionKey(call.pascal(1));
    const auto frame = call.valueOr<UIDRef>(0, {});
    return objectExists(frame) ? changeKeysOf(frame, call.pascal(1)) : commandDocument;
}

/// Which links are asked for: those whose record in the definition has this type, or all.
constexpr std::int32_t linkTypeAny = -1;

std::int32_t wantedType(const commandCall& call, unsigned item, std::int32_t& type) {
    type = call.valueOr<std::int32_t>(item, linkTypeAny);
    if (type < linkTypeAny) return commandLinkTypeLow;
    return type > linkTypeVxImage ? commandLinkTypeHigh : commandDone;
}

bool hasType(const tagDataRec& tag, std::int32_t type) {
    if (type == linkTypeAny) return true;
    const recordDefRec* const definition = currentDefinition();
    if (definition == nullptr) return false;
    const extractionRec* const link = linkNamed(*definition, pstrView(tag.extractionRecordName));
    return link != nullptr && link->type == type;
}

std::int32_t getTextLink(commandCall& call) {
    const auto story = call.valueOr<UIDRef>(0, {});
    if (!storyExists(story)) return commandDocument;
    std::int32_t type = linkTypeAny;
    const std::int32_t status = wantedType(call, 10, type);
    if (status != commandDone) return status;
    std::int32_t position = std::max(call.valueOr<std::int32_t>(1, 0), 0);
    tagDataRec tag{};
    textTagRec found;
    do {
        found = findNextTextTag(*story.database, story.uid, position);
        if (found.attribute == nullptr) return noneFound;
        const errorWord err = tagRecordDecode(found.attribute->data(), &tag, nullptr, nullptr, 0);
        if (err != 0) return failWith(err, commandFailed);
        position = found.start + found.length;
    } while (!hasType(tag, type));
    giveTag(call, 2, tag);
    call.put(8, found.start);
    call.put(9, found.length);
    if (call.valueOr<std::uint8_t>(11, 0) != 0)
        call.putString(12, utf32ToUtf8(story.database->textRead(story.uid, found.start, found.length)));
    return commandDone;
}

/// The text of a frame's story, without the mark at its end.
std::string textOf(const UIDRef& frame) {
    const UID story = frame.database->textOfFrame(frame.uid);
    if (story == kInvalidUID) return {};
    const textSpanRec thread = frame.database->threadSpan(story, 0);
    return utf32ToUtf8(frame.database->textRead(story, thread.start, std::max(thread.length - 1, 0)));
}

std::int32_t getFrameLink(commandCall& call) {
    const auto frame = call.valueOr<UIDRef>(0, {});
    if (!objectExists(frame)) return commandDocument;
    tagDataRec tag{};
    const errorWord err = readFrameTag(frame, tag, 0);
    if (err != 0) return failWith(err, commandFailed);
    if (tag.tagStatus != tagStatusRead) return noneFound;
    giveTag(call, 1, tag);
    if (call.valueOr<std::uint8_t>(7, 0) != 0) call.putString(8, textOf(frame));
    return commandDone;
}

/// Type of the frame's link, also 1 when there is none.
std::int32_t getFrameLinkType(commandCall& call) {
    const auto frame = call.valueOr<UIDRef>(0, {});
    if (!objectExists(frame)) return commandDocument;
    tagDataRec tag{};
    const errorWord err = readFrameTag(frame, tag, 0);
    if (err != 0) return failWith(err, commandFailed);
    std::int16_t type = linkTypePicture;
    if (tag.tagStatus == tagStatusRead) {
        const recordDefRec* const definition = currentDefinition();
        if (definition == nullptr) return commandDefinition;
        const extractionRec* const link = linkNamed(*definition, pstrView(tag.extractionRecordName));
        if (link == nullptr) return commandLink;
        type = link->type;
    }
    call.put(1, type);
    return commandDone;
}

std::int32_t hasLinks(commandCall& call) {
    const UIDRef document = documentOrFront(call, 0);
    if (document.database == nullptr) return commandDocument;
    call.put<std::uint16_t>(1, listTags(*document.database, session().engineMode).empty() ? 0 : 1);
    return commandDone;
}

/// A key that the text holds already is passed over unless duplicates are kept.
std::int32_t collectLinkKeys(commandCall& call) {
    PMString* const out = call.item<PMString>(0);
    const UIDRef document = documentOrFront(call, 3);
    if (out == nullptr) return commandFailed;
    if (document.database == nullptr) return commandDocument;
    const bool keepDuplicates = call.valueOr<std::uint16_t>(2, 0) != 0;
    for (const tagListRec& entry : listTags(*document.database, session().engineMode)) {
        if (entry.readError != 0) continue;
        const std::string key = hostText(entry.tag.searchKey);
        if (!keepDuplicates && out->bytes().find(key) != std::string::npos) continue;
        if (!out->empty()) out->append(call.string(1));
        out->append(key);
    }
    return commandDone;
}

errorWord fetchMarker(std::string_view name, std::int32_t record, std::uint16_t defaultSet, markerValueRec& out) {
    tagDataRec tag{};
    pstrFromView(tag.extractionRecordName, sizeof(tag.extractionRecordName), name);
    tagValueRec value;
    value.recordNumber = record;
    const errorWord error = fetchForTag(tag, defaultSet, value, 0);
    takeMarkerValue(value, out);
    return error;
}

/// The record's number counts from 0 in the file.
std::int32_t expandMarkers(commandCall& call) {
    PMString* const text = call.item<PMString>(0);
    if (text == nullptr) return commandFailed;
    const auto record = static_cast<std::int32_t>(call.valueOr<std::uint32_t>(1, 0));
    const auto defaultSet = call.valueOr<std::uint16_t>(2, defaultSetText);
    std::u32string characters = utf8ToUtf32(text->view());
    expandedMarkersRec markers;
    const auto fetch = [defaultSet](std::string_view name, std::int32_t wanted, markerValueRec& out) {
        return fetchMarker(name, wanted, defaultSet, out);
    };
    const errorWord error =
        expandFieldMarkers(characters, record, appPrefs().hasHeaderRecord != 0 ? 1 : 0, fetch, markers, 0);
    if (error != 0) return failWith(error, commandFailed);
    if (markers.count > 0) text->edit() = utf32ToUtf8(characters);
    return commandDone;
}

/// Does `action` with each of the listed items in one step that can be undone.
std::int32_t forEachItem(const commandCall& call, std::string_view titleKey, const char* alertKey,
                         const std::function<bool(UIDRef)>& action) {
    const UIDList* const list = call.item<UIDList>(0);
    if (list == nullptr || list->database == nullptr) return commandDocument;
    const auto isThere = [list](UID item) { return list->database->itemExists(item); };
    if (!std::all_of(list->uids.begin(), list->uids.end(), isThere)) return commandDocument;
    const PMString title = PMString::ofKey(titleKey);
    const errorWord err = list->database->BeginCommandSequence(title.view());
    if (err != 0) return failWith(err, commandFailed);
    const bool done = std::all_of(list->uids.begin(), list->uids.end(), [&](UID item) {
        return action({list->database, item});
    });
    list->database->EndCommandSequence();
    if (!done) reportErrorKey(alertKey);
    return done ? commandDone : commandFailed;
}

std::int32_t applyTagToItems(commandCall& call) {
    tagDataRec tag{};
    takeName(call, 1, tag.extractionRecordName);
    takeName(call, 2, tag.styleRecordName);
    takeName(call, 3, tag.ruleName);
    tag.linkLocked = call.valueOr<std::uint8_t>(4, 0) != 0 ? 1 : 0;
    pstrSet(tag.searchKey, std::to_string(call.valueOr<std::uint32_t>(5, 1)));
    return forEachItem(call, "kZavoAssignVariableLinksSequenceStringKey", "kZavoErrorApplySequenceFailed",
                       [&tag](UIDRef frame) { return writeFrameTag(frame, tag, 0) == 0; });
}

std::int32_t removeTagFromItems(commandCall& call) {
    return forEachItem(call, "kZavoRemoveVariableLinksSequenceStringKey", "kZavoErrorRemoveSequenceFailed",
                       [](UIDRef frame) { return dataTagManager().RemoveFrameTag(frame) == 0; });
}

using enum commandStage;
constexpr auto any = commandMode::any;
constexpr auto merge = commandMode::merge;
constexpr auto price = commandMode::price;
using enum argumentType;

constexpr commandArgument tagTextArgs[] = {
    itemIn(0, uidRef, "the story"), itemIn(1, i32, "start, in characters from 0"), itemIn(2, i32, "end, outside"),
    itemIn(3, pascal, "key"),       itemIn(4, pascal, "name of the link"),         itemIn(5, pascal, "style"),
    itemIn(6, pascal, "rule"),      itemIn(7, pascal, "search criteria"),          itemIn(8, u8, "the link is locked"),
};
constexpr commandArgument tagFrameArgs[] = {
    itemIn(0, uidRef, "the frame"),      itemIn(1, pascal, "key"),  itemIn(2, pascal, "name of the link"),
    itemIn(3, pascal, "style"),          itemIn(4, pascal, "rule"), itemIn(5, pascal, "search criteria"),
    itemIn(6, u8, "the link is locked"),
};
constexpr commandArgument textLinkArgs[] = {
    itemIn(0, uidRef, "the story"),
    itemIn(1, i32, "where to look from, in characters from 0"),
    itemOut(2, pascal, "key"),
    itemOut(3, pascal, "name of the link"),
    itemOut(4, pascal, "style"),
    itemOut(5, pascal, "rule"),
    itemOut(6, pascal, "search criteria"),
    itemOut(7, pascal, "notes"),
    itemOut(8, i32, "start of the link"),
    itemOut(9, i32, "its length"),
    itemIn(10, i32, "only links whose record has this type, 0 to 4; -1 all"),
    itemIn(11, u8, "1 gives the link's text too"),
    itemOut(12, string, "that text"),
};
constexpr commandArgument frameLinkArgs[] = {
    itemIn(0, uidRef, "the frame"),
    itemOut(1, pascal, "key"),
    itemOut(2, pascal, "name of the link"),
    itemOut(3, pascal, "style"),
    itemOut(4, pascal, "rule"),
    itemOut(5, pascal, "search criteria"),
    itemOut(6, pascal, "notes"),
    itemIn(7, u8, "1 gives the frame's text too"),
    itemOut(8, string, "that text"),
};
constexpr commandArgument frameKeyArgs[] = {
    itemIn(0, uidRef, "the frame; none for the selection"),
    itemIn(1, pascal, "the key"),
};
constexpr commandArgument frameRecordArgs[] = {itemIn(0, uidRef, "the frame"), itemIn(1, u32, "the record's number")};
constexpr commandArgument applyArgs[] = {
    itemIn(0, uidList, "page items"),    itemIn(1, pascal, "name of the link"),
    itemIn(2, pascal, "style"),          itemIn(3, pascal, "rule"),
    itemIn(4, u8, "the link is locked"), itemIn(5, u32, "the record's number, which becomes the key; 1 when not given"),
};
constexpr commandArgument itemsArgs[] = {itemIn(0, uidList, "page items")};
constexpr commandArgument linkTypeArgs[] = {
    itemIn(0, uidRef, "the frame"),
    itemOut(1, i16, "type of its link; 1 when it has none"),
};
constexpr commandArgument markerArgs[] = {
    itemInOut(0, string, "a text with field markers, then without"),
    itemIn(1, u32, "number of the record"),
    itemIn(2, u16, "a parameter of the fetch"),
};
constexpr commandArgument hasLinksArgs[] = {
    itemIn(0, uidRef, "the document; the one in front when not given"),
    itemOut(1, u16, "1 when it has a link"),
};
constexpr commandArgument keysArgs[] = {
    itemInOut(0, string, "the keys"),
    itemIn(1, string, "what stands between them"),
    itemIn(2, u16, "1 keeps duplicates"),
    itemIn(3, uidRef, "the document; the one in front when not given"),
};
constexpr commandArgument convertArgs[] = {
    itemIn(0, uidRef, "the document"),
    itemIn(1, u8, "0 text tags to links, 1 links to text tags"),
};

constexpr commandRow rows[] = {
    {557, "kKelvaneCmdTagTextRange", price, second, tagTextRange, tagTextArgs, "Makes a range of text a link."},
    {1271, "kKelvaneCmdTagTextRange", merge, second, tagTextRange, tagTextArgs, "Makes a range of text a link."},
    {1244, "kKelvaneCmdTagFrame", price, second, tagFrame, tagFrameArgs, "Makes a page item a link."},
    {1270, "kKelvaneCmdTagFrame", merge, second, tagFrame, tagFrameArgs, "Makes a page item a link."},
    {553, "kKelvaneCmdSetFrameKey", price, second, setFrameKey, frameKeyArgs, "Sets the key of a frame's links."},
    {1216, "kKelvaneCmdSetFrameRecordKey", merge, second, setFrameRecordKey, frameRecordArgs,
     "Makes a record's number the key of a frame's links; 1 for what holds none."},
    {592, "kKelvaneCmdGetTextLink", price, second, getTextLink, textLinkArgs, "The next link of a story; 1 for none."},
    {597, "kKelvaneCmdGetTextLink", merge, second, getTextLink, textLinkArgs, "The next link of a story; 1 for none."},
    {591, "kKelvaneCmdGetFrameLink", price, second, getFrameLink, frameLinkArgs, "The link of a frame; 1 for none."},
    {598, "kKelvaneCmdGetFrameLink", merge, second, getFrameLink, frameLinkArgs, "The link of a frame; 1 for none."},
    {582, "kKelvaneCmdApplyTagToSelection", any, second, applyTagToItems, applyArgs,
     "Makes page items links, in one step."},
    {583, "kKelvaneCmdRemoveTagFromSelection", any, second, removeTagFromItems, itemsArgs,
     "Takes the links off page items, in one step."},
    {1278, "kKelvaneCmdGetFrameLinkType", any, second, getFrameLinkType, linkTypeArgs, "Type of a frame's link."},
    {1275, "kKelvaneCmdExpandFieldMarkers", any, second, expandMarkers, markerArgs,
     "Fills the field markers of a text."},
    {548, "kKelvaneCmdHasLinks", any, second, hasLinks, hasLinksArgs, "Has a document any link?"},
    {568, "kKelvaneCmdCollectLinkKeys", any, second, collectLinkKeys, keysArgs, "The keys of a document's links."},
    {1233, "kKelvaneCmdConvertTags", price, second, convertTags, convertArgs, "Turns text tags into links and back."},
    {1257, "kKelvaneCmdConvertTags", merge, second, convertTags, convertArgs, "Turns text tags into links and back."},
};

}  // namespace

std::span<const commandRow> tagRows() {
    return rows;
}

}  // namespace tarnova
