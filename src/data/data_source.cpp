#include "data/data_source.h"

#include <cstring>

#include "data/error_place.h"
#include "data/key_index.h"
#include "data/source_list.h"
#include "definitions/definition_state.h"
#include "definitions/record_def_set.h"

namespace tarnova {

namespace {

// What the definition says about the source of its mode.
const std::uint8_t* sourceName(const recordDefRec& definition, std::int16_t mode) {
    return mode == dataAccessOdbc ? definition.odbcDataSourceName : definition.httpDataSourceName;
}

// Whether a fetch reads the same from both definitions: the field list, and all from keyField to osType.
bool readsTheSame(const recordDefRec& live, const recordDefRec& current) {
    constexpr std::size_t rulesAt = offsetof(recordDefFixedRec, ruleSetData2);
    constexpr std::size_t keyFieldAt = offsetof(recordDefFixedRec, keyField);
    const auto* const a = reinterpret_cast<const std::uint8_t*>(&live);
    const auto* const b = reinterpret_cast<const std::uint8_t*>(&current);
    if (std::memcmp(a + keyFieldAt, b + keyFieldAt, rulesAt - keyFieldAt) != 0 || live.osType != current.osType)
        return false;
    for (std::size_t i = 0; i < fieldNameCapacity; ++i) {
        if (std::memcmp(&live.fields[i], &current.fields[i], sizeof(fieldNameEntry)) != 0) return false;
        if (current.fields[i].fieldName[0] == 0) break;
    }
    return true;
}

// Takes over the definition. Its references belong to its set, which may be gone by the next fetch.
void copyDefinition(recordDefRec& live, const recordDefRec& current) {
    std::memcpy(&live, &current, sizeof live);
    live.signature = nullptr;
    live.ruleSetData2 = live.ruleSetData = nullptr;
    std::memset(live.searchCriteria, 0, sizeof live.searchCriteria);
    std::memset(live.extractions, 0, sizeof live.extractions);
    std::memset(live.styles, 0, sizeof live.styles);
}

// Whether the data file was changed after the index was made.
errorWord checkDate(keyIndexRec& index, bool& isNewer) {
    const std::uint32_t record = dataState().recordOfPass;
    if (record != 0 && record == index.datedAtRecord) return 0;
    std::uint32_t date = 0;
    const char* const path = index.header.dataFilePath;
    if (fileModDate(path, &date, 0) != 0) return errorAt(errDataFileDate, path);
    isNewer = static_cast<std::int32_t>(index.header.dataFileDate) < static_cast<std::int32_t>(date);
    index.datedAtRecord = isNewer ? 0 : record;
    return 0;
}

// Whether the loaded index still fits data file and definition; if so the definition takes effect. The copy of 73 KB is
// made only when something that a fetch reads has changed since the last one.
errorWord checkIndex(keyIndexRec& index, const recordDefRec& definition, bool& fits, errorWord priorError) {
    fits = false;
    if (priorError != 0) return priorError;
    bool isNewer = false;
    if (const errorWord err = checkDate(index, isNewer); err != 0) return err;
    if (isNewer || index.header.numberTable.size == 0) return 0;

    fits = index.liveFitsHeader && readsTheSame(index.liveDefinition, definition);
    if (fits) return 0;
    const auto& image = *reinterpret_cast<const recordDefRec*>(index.header.definitionImage);
    if (!definitionsReadAlike(image, definition, true)) return 0;
    copyDefinition(index.liveDefinition, definition);
    fits = index.liveFitsHeader = true;
    return 0;
}

struct openArguments {
    const recordDefRec& definition;
    std::uint8_t noPrompt, interactive, force;
    std::uint8_t* report;
    const char* givenPath;
};

// Brings the index of a source up to date.
errorWord openIndex(dataSourceRec& source, const openArguments& arguments, bool encodingChecked,
                    std::int16_t& openStatus) {
    const recordDefRec& definition = arguments.definition;
    errorWord err = 0;
    if (source.keyIndex == nullptr) err = keyIndexLoad(source, definition, err);
    bool fits = false;
    if (err == 0 && source.keyIndex != nullptr && arguments.force == 0)
        err = checkIndex(*source.keyIndex, definition, fits, err);
    if (err != 0 || fits) return err;

    keyIndexClose(source);
    std::int16_t buildStatus = openStatusOpen;
    err = keyIndexBuild(definition, source, arguments.noPrompt, arguments.interactive, encodingChecked ? 0 : 1,
                        buildStatus, arguments.report, err);
    if (buildStatus != openStatusOpen) openStatus = buildStatus;
    if (err != 0 || buildStatus < 0) return err;
    err = keyIndexLoad(source, definition, err);
    if (err == 0 && source.keyIndex == nullptr) openStatus = openStatusBadIndex;
    return source.keyIndex == nullptr ? err : checkIndex(*source.keyIndex, definition, fits, err);
}

// Asks for a data file when one is wanted. False when there is nothing to open.
bool decidePath(const openArguments& arguments, char* path, bool& asked, std::int16_t& openStatus, errorWord& err) {
    asked = (arguments.force != 0 || path[0] == 0) && arguments.noPrompt == 0;
    bool cancelled = false;
    if (asked)
        err = chooseDataFile(arguments.definition, path, arguments.force != 0, cancelled, openStatus,
                             arguments.givenPath, err);
    if (err == 0 && !cancelled && path[0] != 0) return true;
    if (openStatus >= 0) openStatus = openStatusNothing;
    return false;
}

errorWord openTextSource(const openArguments& arguments, dataSourceRec*& source, std::int16_t& openStatus) {
    char chosenPath[pathCapacity];
    const char* path = arguments.definition.databasePath;
    bool asked = false;
    errorWord err = 0;
    if (arguments.force != 0 || path[0] == 0) {
        std::memcpy(chosenPath, path, sizeof chosenPath);
        if (!decidePath(arguments, chosenPath, asked, openStatus, err)) return err;
        path = chosenPath;
    }
    dataSourceRec* found = findTextSource(path);
    if (found == nullptr) {
        found = addSource();
        if (found == nullptr) return errSourceMemory;
        std::memcpy(found->indexPath, path, strnlen(path, pathCapacity - 1));
    }
    err = openIndex(*found, arguments, asked, openStatus);
    if (err != 0 && openStatus >= 0) openStatus = openStatusNothing;
    if (openStatus >= 0)
        source = found;
    else
        removeSource(found);
    return err;
}

// A database or HTTP source. Their modules make the connections; this is as far as it goes without them.
errorWord openModuleSource(const recordDefRec& definition, std::int16_t mode, std::int16_t& openStatus) {
    openStatus = openStatusNothing;
    if (sourceName(definition, mode)[0] == 0) return 0;
    return mode == dataAccessOdbc ? errOdbcUnavailable : errHttpUnavailable;
}

}  // namespace

std::int16_t effectiveAccessMode(const recordDefRec& definition) {
    const auto answers = dataState().sourceModuleAnswers;
    const std::int16_t mode = definition.dataAccessMode;
    const bool isModuleMode = mode == dataAccessOdbc || mode == dataAccessHttp;
    return isModuleMode && answers != nullptr && answers(mode) ? mode : dataAccessText;
}

errorWord dataSourceOpen(const recordDefRec* definition, std::uint8_t noPrompt, std::uint8_t interactive,
                         std::uint8_t force, dataSourceRec*& source, std::int16_t& openStatus, std::uint16_t* encoding,
                         std::uint8_t* report, const char* givenPath, errorWord priorError) {
    if (priorError != 0) return priorError;
    source = nullptr;
    openStatus = definition == nullptr ? openStatusNothing : openStatusOpen;
    char* const currentPath = dataState().currentDataFilePath;
    currentPath[0] = 0;
    if (definition == nullptr) return encoding != nullptr ? errNoEncoding : errorWord{0};

    const std::int16_t mode = effectiveAccessMode(*definition);
    const openArguments arguments{*definition, noPrompt, interactive, force, report, givenPath};
    const errorWord err = mode == dataAccessText ? openTextSource(arguments, source, openStatus)
                                                 : openModuleSource(*definition, mode, openStatus);
    if (err != 0) return err;
    if (source == nullptr) return encoding != nullptr && openStatus != openStatusNothing ? errNoEncoding : errorWord{0};
    if (encoding != nullptr) *encoding = source->keyIndex->header.encoding;
    const char* const path = source->keyIndex->header.dataFilePath;
    std::memcpy(currentPath, path, std::strlen(path) + 1);
    return 0;
}

errorWord dataSourceRecordCount(const dataSourceRec* source, std::uint8_t trim, std::uint32_t& count,
                                errorWord priorError) {
    if (priorError != 0) return priorError;
    count = 0;
    if (source == nullptr || source->keyIndex == nullptr) return 0;
    const keyIndexRec& index = *source->keyIndex;
    count = keyIndexRecordCount(index);
    for (; trim != 0 && count > 0; --count) {
        recordPlace place;
        indexEntry entry;
        if (!keyIndexRecordAt(index, count - 1, place, nullptr)) continue;
        if (!keyIndexReadEntry(index, place.group.offset + place.offsetInGroup, place.group.offset + place.group.length,
                               entry))
            continue;
        if ((entry.flags & recordHasContent) != 0) break;
    }
    return 0;
}

errorWord dataSourceKeyAt(const dataSourceRec* source, std::uint32_t index, std::uint8_t* key, bool& found,
                          errorWord priorError) {
    if (priorError != 0) return priorError;
    key[0] = 0;
    found = false;
    if (source == nullptr || source->keyIndex == nullptr) return 0;
    const std::string_view text = keyIndexKeyAt(*source->keyIndex, index, found);
    if (found) pstrFromView(key, sizeof(Str255), text);
    return 0;
}

errorWord dataSourceFindKey(const keyIndexRec* index, const std::uint8_t* key, std::int32_t& recordNumber, bool& found,
                            errorWord priorError) {
    if (priorError != 0) return priorError;
    recordNumber = -1;
    found = false;
    if (index == nullptr || key == nullptr) return 0;
    const entryRange group = keyIndexFindGroup(*index, key, nullptr, nullptr);
    indexEntry entry;
    found = group.length > 0 && keyIndexReadEntry(*index, group.offset, group.offset + group.length, entry);
    if (found) recordNumber = static_cast<std::int32_t>(entry.recordNumber);
    return 0;
}

namespace {

errorWord textSourceInSync(const recordDefRec& definition, bool& exists, bool& inSync, char* dataFilePath) {
    auto& buffer = dataState().indexHeaderBuffer;
    if (buffer == nullptr) buffer.reset(static_cast<std::byte*>(newBlockClear(indexHeaderSize)));
    if (buffer == nullptr) return errHeaderBufferMemory;
    auto& header = *reinterpret_cast<indexHeader*>(buffer.get());
    std::size_t got = 0;
    const errorWord err = readIndexHeader(definition.databasePath, header, got, 0);
    if (err != 0 || got < indexHeaderSize) return err;

    std::uint32_t date = 0;
    exists = fileModDate(header.dataFilePath, &date, 0) == 0;
    if (dataFilePath != nullptr) std::memcpy(dataFilePath, header.dataFilePath, pathCapacity);
    const auto& image = *reinterpret_cast<const recordDefRec*>(header.definitionImage);
    inSync = exists && static_cast<std::int32_t>(header.dataFileDate) >= static_cast<std::int32_t>(date) &&
             pstrView(header.tag) == indexTag && definitionsReadAlike(image, definition, false);
    return 0;
}

void copyTriple(Str255* out, const std::uint8_t* name, const std::uint8_t* user, const std::uint8_t* password) {
    if (out == nullptr) return;
    pstrCopy(out[0], name);
    pstrCopy(out[1], user);
    pstrCopy(out[2], password);
}

// Stores another index path in a definition, through the exchange that keeps its records.
errorWord saveDatabasePath(const std::uint8_t* name, const char* path, errorWord priorError) {
    if (priorError != 0) return priorError;
    const auto block = newRecord<recordDefExchange>();
    if (block == nullptr) return errNoMemoryDefinition;
    pstrCopyBounded(block->name, name, sizeof block->name);
    block->exchangeOp = exchangeGet;
    errorWord err = recordDefExchangeRun(*block, 0);
    if (err != 0 || block->exchangeResult != 0) return err;
    std::memset(block->record.databasePath, 0, sizeof block->record.databasePath);
    std::memcpy(block->record.databasePath, path, strnlen(path, pathCapacity - 1));
    block->exchangeOp = exchangeSet;
    err = recordDefExchangeRun(*block, err);
    const auto save = dataState().saveDefinitionToDocument;
    return save != nullptr ? save(err) : err;
}

}  // namespace

errorWord dataSourceInSync(const recordDefRec* definition, bool& exists, bool& inSync, char* dataFilePath,
                           Str255* odbcTriple, Str255* httpTriple, errorWord priorError) {
    if (priorError != 0) return priorError;
    exists = inSync = false;
    if (dataFilePath != nullptr) dataFilePath[0] = 0;
    if (definition == nullptr) return 0;
    copyTriple(odbcTriple, definition->odbcDataSourceName, definition->odbcUserId, definition->odbcPassword);
    copyTriple(httpTriple, definition->httpDataSourceName, definition->httpUserId, definition->httpPassword);
    const std::int16_t mode = effectiveAccessMode(*definition);
    if (mode == dataAccessText) return textSourceInSync(*definition, exists, inSync, dataFilePath);
    exists = sourceName(*definition, mode)[0] != 0;
    if (!exists) return 0;
    return mode == dataAccessOdbc ? errOdbcUnavailable : errHttpUnavailable;
}

errorWord syncDefinitionWithSource(const std::uint8_t* name, const dataSourceRec* source, recordDefRec*& definition,
                                   errorWord priorError) {
    if (priorError != 0) return priorError;
    const recordDefSetRec* const set = definitionState().currentDefSet;
    definition = nullptr;
    errorWord err = findRecordDef(set, name, definition, 0);
    if (err != 0 || definition == nullptr || source == nullptr || source->keyIndex == nullptr) return err;
    if (std::strcmp(source->indexPath, definition->databasePath) == 0) return err;
    err = saveDatabasePath(name, source->indexPath, err);
    definition = nullptr;
    return findRecordDef(set, name, definition, err);
}

}  // namespace tarnova
