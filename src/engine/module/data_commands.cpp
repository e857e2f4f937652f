// Commands about the data: opening a file, counting its records, taking values.

#include <cstring>

#include "engine/module/command_call.h"
#include "engine/module/command_rows.h"
#include "engine/module/current_definition.h"
#include "engine/module/front_document.h"
#include "engine/module/record_access.h"
#include "engine/session/session.h"
#include "merge/asset_search.h"

namespace tarnova {

namespace {

/// A C string field of a reply, ended at its size at the latest.
std::string_view replyPath(const commandReply& reply) {
    const auto* const text = reinterpret_cast<const char*>(reply.text);
    return {text, strnlen(text, replyTextBytes)};
}

std::int32_t openAndCount(std::string_view path, std::uint32_t& count) {
    openDataRec data;
    const std::int32_t opened = openDataFile(path, data);
    if (data.source == nullptr) return opened;
    const std::int32_t counted = countRecords(data, count);
    return opened != commandDone ? opened : counted;
}

std::int32_t openDataFileCommand(commandCall& call) {
    const std::int32_t status = openAndCount(replyPath(call.reply), call.reply.count);
    call.reply.hasHeader = appPrefs().hasHeaderRecord;
    session().unattended = 0;
    return status;
}

std::int32_t openDataFileEx(commandCall& call) {
    const IDFile* const path = call.item<IDFile>(0);
    std::uint32_t count = 0;
    const std::int32_t status = openAndCount(path == nullptr ? std::string_view() : path->path(), count);
    call.put(1, count);
    return status;
}

std::int32_t getRecordCount(commandCall& call) {
    call.reply.hasHeader = appPrefs().hasHeaderRecord;
    if (!session().recordList.empty()) {
        call.reply.isSubset = 1;
        call.reply.count = static_cast<std::uint32_t>(session().recordList.size());
        return commandDone;
    }
    openDataRec data;
    const std::int32_t status = openData(data);
    return status == commandDone ? countRecords(data, call.reply.count) : status;
}

std::string sourceName(const recordDefRec& definition) {
    switch (effectiveAccessMode(definition)) {
        case dataAccessOdbc:
            return hostText(definition.odbcDataSourceName);
        case dataAccessHttp:
            return hostText(definition.httpDataSourceName);
        default:
            return std::string(IDFile(session().currentDataFilePath).fileName());
    }
}

std::int32_t getDataSourceName(commandCall& call) {
    constexpr std::size_t shownCharacters = 7;
    const recordDefRec* const definition = currentDefinition();
    if (definition == nullptr) return commandDefinition;
    const PMString name(sourceName(*definition));
    std::u32string shown = name.codePoints();
    shown.resize(std::min(shown.size(), shownCharacters));
    pstrFromView(call.reply.text, sizeof(Str255), PMString(shown).view());
    return commandDone;
}

/// The picture that a value names; empty when there is none of that name. The values of a text or article link name a
/// file only when its record says so.
std::int32_t findPicture(const openDataRec& data, const valueRequestRec& request, const std::string& value,
                         const UIDRef& document, std::string& path) {
    constexpr std::size_t nameLimit = 1024;
    path.clear();
    const bool isText = request.link->type == linkTypeText || request.link->type == linkTypeArticle;
    if (value.size() >= nameLimit || (isText && request.link->isafile == 0)) return commandDone;
    const pictureSearchRec& folder = data.definition->pictureSearch;
    assetSearchRec search;
    search.document = document.database;
    search.name = value;
    search.encoding = data.encoding;
    if (folder.enable != 0) search.searchFolder = folder.searchPath;
    search.searchBelow = folder.subDirs != 0;
    search.useMasters = request.link->type == linkTypeGroupPicture && appPrefs().groupPicturesUseMasters != 0;
    bool found = false;
    std::uint32_t kind = assetKindFile;
    const errorWord err = findAsset(search, path, found, kind, 0);
    return err == 0 ? commandDone : failWith(err, commandFetch);
}

std::int32_t getFieldValue(commandCall& call) {
    const recordDefRec* const definition = currentDefinition();
    if (definition == nullptr) return commandDefinition;
    valueRequestRec request;
    request.link = linkNamed(*definition, pstrView(call.reply.text));
    if (request.link == nullptr) return commandLink;
    openDataRec data;
    std::int32_t status = openData(data);
    if (status != commandDone) return status;
    request.link = linkNamed(*data.definition, pstrView(call.reply.text));
    request.recordNumber = call.args.num0;
    request.key = call.args.text0;
    std::string value, picture;
    status = fetchValue(data, request, value);
    if (status == commandDone && call.args.flag0 != 0)
        status = findPicture(data, request, value, frontDocument(), picture);
    if (status != commandDone) return status;
    call.args.num0 = static_cast<std::uint32_t>(value.size());
    call.args.num1 = static_cast<std::uint32_t>(picture.size());
    call.args.num2 = request.recordNumber;
    if (!call.putOwned(0, value)) return commandMemory;
    return picture.empty() || call.putOwned(1, picture) ? commandDone : commandMemory;
}

/// The link and the style that a fetch names must exist.
std::int32_t findNames(const commandCall& call, const recordDefRec& definition, const extractionRec*& link) {
    link = linkNamed(definition, call.string(1));
    if (link == nullptr) return commandLink;
    if (call.string(2).empty()) return commandDone;
    Str255 name;
    pstrSet(name, call.string(2));
    styleRec* style = nullptr;
    return findStyle(&definition, name, style, 0) == 0 && style != nullptr ? commandDone : commandBadTag;
}

std::int32_t fetchByNames(const commandCall& call, valueRequestRec& request) {
    openDataRec data;
    std::int32_t status = openData(data);
    if (status == commandDone) status = findNames(call, *data.definition, request.link);
    if (status != commandDone) return status;
    std::string value, picture;
    status = fetchValue(data, request, value);
    call.putString(4, value);
    call.put(5, static_cast<std::uint32_t>(value.size()));
    if (status == commandDone && call.valueOr<std::uint8_t>(3, 0) != 0)
        status = findPicture(data, request, value, documentOrFront(call, 7), picture);
    call.putString(6, picture);
    return status;
}

std::int32_t fetchUnattended(const commandCall& call, valueRequestRec request) {
    session().unattended = 1;
    const std::int32_t status = fetchByNames(call, request);
    session().unattended = 0;
    return status;
}

std::int32_t fetchRecordValue(commandCall& call) {
    valueRequestRec request;
    request.recordNumber = call.valueOr<std::uint32_t>(0, 0);
    return request.recordNumber == 0 ? commandFetch : fetchUnattended(call, request);
}

std::int32_t fetchKeyValue(commandCall& call) {
    valueRequestRec request;
    request.key = call.item<std::uint8_t>(0);
    return request.key == nullptr ? commandFailed : fetchUnattended(call, request);
}

/// Values of a link in all records, as far as they can be had.
std::int32_t listValues(const openDataRec& data, const extractionRec* link, std::uint32_t count,
                        std::vector<PMString>& list) {
    valueRequestRec request;
    request.link = link;
    std::string value;
    for (request.recordNumber = 1; request.recordNumber <= count; ++request.recordNumber) {
        const std::int32_t status = fetchValue(data, request, value);
        if (status != commandDone) return status;
        list.emplace_back(value);
    }
    return commandDone;
}

std::int32_t listLinkValues(commandCall& call) {
    const std::string_view name = call.string(0), secondName = call.string(2);
    const recordDefRec* const definition = currentDefinition();
    if (definition == nullptr) return commandDefinition;
    if (name.empty()) return commandLinkNameEmpty;
    if (linkNamed(*definition, name) == nullptr) return commandLinkUnknown;
    if (!secondName.empty() && linkNamed(*definition, secondName) == nullptr) return commandSecondLinkUnknown;
    openDataRec data;
    std::uint32_t count = 0;
    std::int32_t status = openData(data);
    if (status == commandDone) status = countRecords(data, count);
    auto* const list = call.item<std::vector<PMString>>(1);
    if (status == commandDone && list != nullptr)
        status = listValues(data, linkNamed(*data.definition, name), count, *list);
    auto* const secondList = call.item<std::vector<PMString>>(3);
    if (status == commandDone && secondList != nullptr && !secondName.empty())
        status = listValues(data, linkNamed(*data.definition, secondName), count, *secondList);
    return status;
}

/// The values of a group for one record, joined.
std::int32_t joinGroup(const openDataRec& data, const valueGroup& group, std::uint32_t record, std::string& joined) {
    joined.clear();
    std::string value;
    for (const linkAndStyleRec& pair : group) {
        valueRequestRec request;
        request.link = linkNamed(*data.definition, pstrView(pair.linkName));
        request.recordNumber = record;
        if (request.link == nullptr) return commandBadTag;
        const std::int32_t status = fetchValue(data, request, value);
        if (status != commandDone) return status == commandBadTag ? commandBadTag : commandLookUp;
        joined += value;
    }
    return commandDone;
}

std::int32_t collectFieldValues(commandCall& call) {
    const auto* const groups = call.item<std::vector<valueGroup>>(0);
    auto* const list = call.item<std::vector<PMString>>(3);
    if (groups == nullptr || list == nullptr) return commandFailed;
    openDataRec data;
    const std::int32_t opened = openData(data);
    if (opened != commandDone) return opened;
    const auto recordFirst = std::max<std::int64_t>(call.valueOr<std::int32_t>(1, 1), 1);
    const std::int64_t recordLast = call.valueOr<std::int32_t>(2, 0);
    std::string joined;
    for (std::int64_t record = recordFirst; record <= recordLast; ++record) {
        for (const valueGroup& group : *groups) {
            const std::int32_t status = joinGroup(data, group, static_cast<std::uint32_t>(record), joined);
            if (status != commandDone) return status;
            list->emplace_back(joined);
        }
    }
    return commandDone;
}

using enum commandStage;
constexpr auto any = commandMode::any;
constexpr auto merge = commandMode::merge;
constexpr auto price = commandMode::price;
using enum argumentType;

constexpr commandArgument openArgs[] = {
    replyIn(replyField::text, cString, "path of the data file; empty: the one that the definition has"),
    replyOut(replyField::count, u32, "number of its records, the header not counted"),
    replyOut(replyField::hasHeader, u16, "the file has a header row"),
    replyOut(replyField::headerHint, u16, "reserved"),
};
constexpr commandArgument openExArgs[] = {
    itemIn(0, file, "the data file; empty: the one that the definition has"),
    itemOut(1, u32, "number of its records, the header not counted"),
};
constexpr commandArgument fieldValueArgs[] = {
    replyIn(replyField::text, pascal, "name of the link"),
    numberInOut(0, "number of the record, from 1; 0: found by its key. Then the value's length in bytes"),
    numberOut(1, "length of the picture's path"),
    numberOut(2, "number of the record, also of one that was found by its key"),
    textIn(0, "the key"),
    textIn(1, "a second key"),
    flagIn(0, "1 finds the picture as well that the value names"),
    itemOut(0, ownedText, "the value"),
    itemOut(1, ownedText, "path of the picture; none when it isn't found"),
};
constexpr commandArgument recordCountArgs[] = {
    replyOut(replyField::count, u32, "number of records, the header not counted"),
    replyOut(replyField::isSubset, u8, "the count is that of a record list"),
    replyOut(replyField::hasHeader, u16, "the file has a header row"),
};
constexpr commandArgument sourceNameArgs[] = {
    replyOut(replyField::text, pascal, "first 7 characters of the name of the data source"),
};
constexpr commandArgument fetchRecordArgs[] = {
    itemIn(0, u32, "number of the record, from 1"),
    itemIn(1, string, "name of the link"),
    itemIn(2, string, "name of a style"),
    itemIn(3, u8, "1 finds the picture as well that the value names"),
    itemOut(4, string, "the value"),
    itemOut(5, u32, "its length in bytes"),
    itemOut(6, string, "path of the picture; empty when it isn't found"),
    itemIn(7, uidRef, "the document; the one in front when not given"),
};
constexpr commandArgument fetchKeyArgs[] = {
    itemIn(0, pascal, "the key"),
    itemIn(1, string, "name of the link"),
    itemIn(2, string, "name of a style"),
    itemIn(3, u8, "1 finds the picture as well that the value names"),
    itemOut(4, string, "the value"),
    itemOut(5, u32, "its length in bytes"),
    itemOut(6, string, "path of the picture; empty when it isn't found"),
    itemIn(7, uidRef, "the document; the one in front when not given"),
    itemIn(8, pascal, "a second key"),
};
constexpr commandArgument listValuesArgs[] = {
    itemIn(0, string, "name of the link"),
    itemOut(1, strings, "its values, a text for each record"),
    itemIn(2, string, "name of a second link"),
    itemOut(3, strings, "the values of that one"),
};
constexpr commandArgument collectArgs[] = {
    itemIn(0, valueGroups, "the groups"),
    itemIn(1, i32, "first record, from 1"),
    itemIn(2, i32, "last record"),
    itemOut(3, strings, "for each record, the joined values of each group"),
};

constexpr commandRow rows[] = {
    {503, "kKelvaneCmdOpenDataFile", any, first, openDataFileCommand, openArgs,
     "Opens the data file of the current definition and counts its records."},
    {559, "kKelvaneCmdOpenDataFileEx", price, second, openDataFileEx, openExArgs,
     "Opens the data file of the current definition; the session is unattended from then on."},
    {1209, "kKelvaneCmdOpenDataFileEx", merge, second, openDataFileEx, openExArgs,
     "Opens the data file of the current definition."},
    {525, "kKelvaneCmdGetFieldValue", any, first, getFieldValue, fieldValueArgs, "The value of one link."},
    {529, "kKelvaneCmdGetRecordCount", any, first, getRecordCount, recordCountArgs, "Number of records."},
    {1292, "kKelvaneCmdGetDataSourceName", any, first, getDataSourceName, sourceNameArgs, "Name of the data source."},
    {1208, "kKelvaneCmdFetchRecordValue", merge, second, fetchRecordValue, fetchRecordArgs,
     "The value of a link in a record."},
    {1238, "kKelvaneCmdFetchRecordValue", price, second, fetchRecordValue, fetchRecordArgs,
     "The value of a link in a record."},
    {1242, "kKelvaneCmdFetchKeyValue", price, second, fetchKeyValue, fetchKeyArgs,
     "The value of a link in the first record that has a key."},
    {1254, "kKelvaneCmdListLinkValues", price, second, listLinkValues, listValuesArgs,
     "The values of a link in all records."},
    {1258, "kKelvaneCmdListLinkValues", merge, second, listLinkValues, listValuesArgs,
     "The values of a link in all records."},
    {1234, "kKelvaneCmdCollectFieldValues", any, second, collectFieldValues, collectArgs,
     "Joined values of groups of links in a range of records."},
};

}  // namespace

std::span<const commandRow> dataRows() {
    return rows;
}

}  // namespace tarnova
