#include "engine/module/record_access.h"

#include "data/key_index.h"
#include "data/translation_table.h"
#include "definitions/definition_state.h"
#include "engine/module/command_call.h"
#include "engine/module/current_definition.h"
#include "engine/session/session.h"
#include "engine/toolkit/text_encoding.h"

namespace tarnova {

namespace {

std::int32_t codeOfOpenStatus(errorWord error, std::int16_t status) {
    if (error == errPresetFileMissing) return failWith(error, commandDataFile);
    if (error != 0) return failWith(error, commandCount);
    switch (status) {
        case openStatusOpen:
        case openStatusDifference:
            return commandDone;
        case openStatusUtf16:
            return -6053;
        case openStatusThirdKind:
            return -6054;
        case openStatusDataType:
            return -6055;
        case openStatusUtf16Refused:
            return -6066;
        case openStatusThirdKindRefused:
            return -6067;
        case openStatusDataTypeRefused:
            return -6068;
        default:
            return commandCount;
    }
}

errorWord openSource(openDataRec& data, bool force, std::int16_t& status) {
    errorWord err = dataSourceOpen(data.definition, force ? 0 : 1, 1, force ? 1 : 0, data.source, status, nullptr,
                                   nullptr, nullptr, 0);
    if (err != 0 || data.source == nullptr) return err;
    definitionStateRec& state = definitionState();
    err = syncDefinitionWithSource(state.currentDefName, data.source, state.currentRecordDef, err);
    data.definition = state.currentRecordDef;
    data.encoding = data.source->keyIndex->header.encoding;
    return err;
}

/// Where a record number leads: nothing for a record that isn't fetched.
constexpr std::int32_t recordNotFetched = -2;
std::int32_t fileRecordOf(std::uint32_t number) {
    const sessionRec& run = session();
    const std::uint32_t header = headerRecords();
    const auto& list = run.recordList;
    if (!list.empty()) {
        if (number > list.size() || list[number - 1] == recordListPad) return recordNotFetched;
        return list[number - 1] + static_cast<std::int32_t>(header);
    }
    if (run.rangeLast != 0 && number > run.rangeLast) return recordNotFetched;
    return static_cast<std::int32_t>(std::min<std::uint32_t>(number - 1, INT32_MAX - 1) + header);
}

/// The first record behind the header that has the key; recordNotFetched when none has it.
std::int32_t fileRecordOfKey(const openDataRec& data, const std::uint8_t* key) {
    const keyIndexRec& index = *data.source->keyIndex;
    Str255 wanted;
    pstrSet(wanted, data.encoding != 0 ? pstrString(key) : utf8ToWindows1252(pstrView(key)));
    const entryRange group = keyIndexFindGroup(index, wanted, nullptr, nullptr);
    const std::uint32_t limit = group.offset + group.length;
    indexEntry entry;
    for (std::uint32_t at = group.offset; at < limit && keyIndexReadEntry(index, at, limit, entry); at += entry.length)
        if (entry.recordNumber >= headerRecords()) return static_cast<std::int32_t>(entry.recordNumber);
    return recordNotFetched;
}

/// Where the request leads to, in file order. 0, or the code that ends the fetch; a record that the run leaves out
/// gives 0 and recordNotFetched.
std::int32_t locate(const openDataRec& data, valueRequestRec& request, std::int32_t& fileRecord) {
    if (request.recordNumber == 0) {
        fileRecord = request.key == nullptr ? recordNotFetched : fileRecordOfKey(data, request.key);
        if (fileRecord == recordNotFetched) return commandFetch;
        request.recordNumber = static_cast<std::uint32_t>(fileRecord) + 1 - headerRecords();
        return commandDone;
    }
    fileRecord = fileRecordOf(request.recordNumber);
    if (fileRecord == recordNotFetched) return commandDone;
    std::uint32_t count = 0;
    const std::int32_t counted = countRecords(data, count);
    if (counted != commandDone) return counted;
    return fileRecord >= static_cast<std::int64_t>(count) + headerRecords() ? commandFetch : commandDone;
}

}  // namespace

std::uint32_t headerRecords() {
    return runIsActive() ? session().skipFirst : std::uint32_t{appPrefs().hasHeaderRecord != 0};
}

std::int32_t openData(openDataRec& data) {
    data.definition = currentDefinition();
    if (data.definition == nullptr) return commandDefinition;
    if (loadTablesOf(*data.definition, 0) != 0) return commandTranslation;
    std::int16_t status = openStatusNothing;
    const errorWord err = openSource(data, false, status);
    if (err != 0) return failWith(err, commandDataFile);
    return data.source == nullptr ? commandDataFile : commandDone;
}

std::int32_t openDataFile(std::string_view path, openDataRec& data) {
    data.definition = currentDefinition();
    if (data.definition == nullptr) return commandDefinition;
    session().unattended = 1;
    char* const preset = session().presetDataFilePath;
    preset[path.substr(0, pathCapacity - 1).copy(preset, pathCapacity - 1)] = 0;
    std::int16_t status = openStatusNothing;
    const errorWord err = openSource(data, !path.empty(), status);
    preset[0] = 0;
    return codeOfOpenStatus(err, status);
}

std::int32_t countRecords(const openDataRec& data, std::uint32_t& count) {
    std::uint32_t whole = 0;
    const errorWord err = dataSourceRecordCount(data.source, 1, whole, 0);
    const std::uint32_t header = headerRecords();
    count = whole > header ? whole - header : 0;
    return err == 0 ? commandDone : failWith(err, commandCount);
}

std::int32_t fetchValue(const openDataRec& data, valueRequestRec& request, std::string& value) {
    value.clear();
    fetchRequest fetch{};
    const std::int32_t located = locate(data, request, fetch.recordNumber);
    if (located != commandDone || fetch.recordNumber == recordNotFetched) return located;
    fetch.extraction = request.link;
    void* block = nullptr;
    std::uint32_t length = 0;
    std::int16_t status = fetchFound;
    const errorWord err = dataSourceFetch(data.source, &fetch, 1, block, length, status, 0);
    const blockPtr<char> owned(static_cast<char*>(block));
    if (err != 0) return failWith(err, commandFetch);
    if (status == fetchNoData) return commandDone;
    if (status != fetchFound) return status == fetchBadTag ? commandBadTag : commandFetch;
    const std::string_view bytes(owned.get(), length);
    if (data.encoding != 0 || isAscii(bytes)) {
        value = bytes;
    } else {
        appendWindows1252AsUtf8(value, bytes);
    }
    return commandDone;
}

}  // namespace tarnova
