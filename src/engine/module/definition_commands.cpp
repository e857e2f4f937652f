// Commands about the definitions: which one is current, what it says, its fields and links.

#include "definitions/definition_state.h"
#include "definitions/definition_store.h"
#include "definitions/document_definition.h"
#include "definitions/record_lists.h"
#include "engine/module/command_call.h"
#include "engine/module/command_rows.h"
#include "engine/module/current_definition.h"
#include "engine/module/execute.h"
#include "engine/module/front_document.h"
#include "engine/session/session.h"
#include "engine/toolkit/messages.h"
#include "tags/tag_list.h"

namespace tarnova {

namespace {

constexpr std::uint32_t signatureRules = signatureOf("AQMw");

std::int32_t getDefinitionName(commandCall& call) {
    const recordDefRec* const definition = currentDefinition();
    if (definition == nullptr) return commandDefinition;
    pstrFromView(call.reply.text, sizeof(Str255), pstrView(definition->name));
    if (auto* const file = static_cast<std::uint8_t*>(call.reply.auxPointer))
        pstrFromView(file, sizeof(Str255), pstrView(definitionState().currentDefSet->setName));
    return commandDone;
}

/// Sends the current definition's rules to the rules module again and stores them in the document.
void refreshRules() {
    const definitionStateRec& state = definitionState();
    if (state.putDefinitionRules != nullptr) state.putDefinitionRules(state.currentRecordDef);
    if (saveDefinitionToDocument(0) != 0) reportErrorKey("kZavoErrorSavingSlugWithDocument");
}

std::int32_t setDefinition(commandCall& call) {
    Str255 name;
    pstrSet(name, call.pascal(1));
    std::uint16_t flags = 0;
    const std::int32_t status = chooseDocumentDefinition(documentOrFront(call, 0), name, flags);
    if (status == commandDone && call.valueOr<std::uint8_t>(2, 0) == 1) refreshRules();
    return status;
}

std::int32_t reloadDocumentDefinitions(commandCall&) {
    std::uint16_t flags = 0;
    const std::int32_t status = documentDefinitionOnOpen(flags);
    if ((flags & definitionChangedFlag) != 0) session().panelsStale = 1;
    return status;
}

std::int32_t copyDefinitions(commandCall& call) {
    Str31 name;
    const std::int32_t status = copyDefinitionBetweenDocuments(call.valueOr<UIDRef>(0, {}), call.valueOr<UIDRef>(1, {}),
                                                               call.valueOr<std::uint8_t>(2, 0) != 0, name);
    call.putString(3, hostText(name));
    return status;
}

std::int32_t reselectDefinition(commandCall&) {
    const std::string_view name = pstrView(definitionState().currentDefName);
    if (name.empty()) return commandDefinition;
    bool found = false;
    const errorWord err = selectDefinition(name, found, 0);
    if (err != 0) return failWith(err, commandDefinition);
    return found ? commandDone : commandDefinition;
}

std::int32_t exportDefinitionFile(commandCall& call) {
    const IDFile* const file = call.item<IDFile>(0);
    if (file == nullptr || file->empty()) return commandFailed;
    const errorWord err = exportDefinitionsToPath(file->cstr(), 0);
    return err == 0 ? commandDone : failWith(err, err);
}

/// A document that names the definition which is now the current one gets its new text.
std::int32_t importDefinitionFile(commandCall& call) {
    const IDFile* const file = call.item<IDFile>(0);
    if (file == nullptr || file->empty()) return commandFailed;
    bool cancelled = false;
    const errorWord err = importDefinitions(file->cstr(), cancelled, 0);
    if (err != 0) return failWith(err, err);
    documentDefinitionOnSave(frontDocument());
    return commandDone;
}

/// The definition of that name, or the current one for an empty name.
const recordDefRec* definitionNamed(std::string_view name) {
    if (name.empty()) return currentDefinition();
    Str255 wanted;
    pstrSet(wanted, name);
    recordDefRec* definition = nullptr;
    return findRecordDef(definitionState().currentDefSet, wanted, definition, 0) == 0 ? definition : nullptr;
}

void putFlagged(const commandCall& call, unsigned index, const flaggedStr255Rec& text) {
    call.putString(index, text.enable != 0 ? hostText(text.string) : std::string());
}

std::int32_t getDefinitionInfo(commandCall& call) {
    const recordDefRec* const definition = definitionNamed(call.string(1));
    if (definition == nullptr) return commandDefinition;
    call.putString(0, hostText(definition->name));
    call.put(2, definition->dataAccessMode);
    call.putString(3, hostText(definition->keyField));
    call.put(4, definition->useKeyfieldCase);
    call.put(5, definition->fileType);
    call.putString(6, hostText(definition->fDelimiter));
    const bool qualified = definition->textQualifier.enable != 0;
    call.putString(7, qualified ? hostText(definition->textQualifier.string) : std::string());
    call.put(8, definition->osType);
    putFlagged(call, 9, definition->importTransTable);
    putFlagged(call, 10, definition->exportTransTable);
    call.putString(11, definition->ruleSet.enable != 0 ? hostText(definition->ruleSet.string) : std::string());
    const flaggedStr255Rec* const fragments[] = {&definition->sqlPrologue, &definition->sqlEpilogue,
                                                 &definition->sqlRowCount, &definition->reqPrologue,
                                                 &definition->reqEpilogue, &definition->reqRowCount};
    for (unsigned i = 0; i < std::size(fragments); ++i)
        putFlagged(call, 12 + i, *fragments[i]);
    call.putString(18, definition->pictureSearch.enable != 0 ? definition->pictureSearch.searchPath : "");
    call.put(19, definition->dataType);
    return commandDone;
}

/// A number wins over a name.
std::int32_t getFieldName(commandCall& call) {
    const recordDefRec* const definition = currentDefinition();
    if (definition == nullptr) return commandDefinition;
    std::int32_t number = call.valueOr<std::int32_t>(0, 0);
    if (call.given(0) && number != 0) {
        const std::string name = hostText(fieldNameOf(*definition, number));
        if (name.empty()) return commandFieldNumber;
        call.putString(1, name);
        return commandDone;
    }
    Str255 wanted;
    pstrSet(wanted, call.string(1));
    number = fieldNumberOf(*definition, wanted);
    if (number < 0) return commandFieldName;
    call.put(0, number);
    call.putString(1, hostText(fieldNameOf(*definition, number)));
    return commandDone;
}

const extractionRec* linkAt(const recordDefRec& definition, std::int64_t index) {
    return index >= 0 && index < extractionCount(definition) ? definition.extractions[index] : nullptr;
}

std::int32_t getLinkInfo(commandCall& call) {
    const recordDefRec* const definition = currentDefinition();
    if (definition == nullptr) return commandDefinition;
    const extractionRec* const link = linkAt(*definition, call.reply.inValue);
    if (link == nullptr) return commandLink;
    pstrFromView(call.reply.text, sizeof(Str255), pstrView(link->name));
    call.reply.outValue = fieldNumberOf(*definition, link->field);
    call.reply.outFlag = static_cast<std::uint8_t>(link->deleteline);
    call.reply.outWord = static_cast<std::uint32_t>(link->nodata);
    return commandDone;
}

std::int32_t getLinkType(commandCall& call) {
    const recordDefRec* const definition = currentDefinition();
    if (definition == nullptr) return commandDefinition;
    const extractionRec* const link = linkNamed(*definition, call.string(0));
    if (link == nullptr) return commandLink;
    call.put(1, link->type);
    return commandDone;
}

/// How often the link stands in the document.
std::uint32_t usesOf(const UIDRef& document, std::string_view linkName) {
    if (document.database == nullptr) return 0;
    std::uint32_t uses = 0;
    for (const tagListRec& tag : listTags(*document.database, session().engineMode))
        if (ascii::equalNoCase(pstrView(tag.tag.extractionRecordName), linkName)) ++uses;
    return uses;
}

void putLinkProperties(const commandCall& call, const recordDefRec& definition, const extractionRec& link) {
    call.putString(5, hostText(link.name));
    call.putString(6, hostText(link.field));
    call.put(7, fieldNumberOf(definition, link.field));
    call.put(8, link.type);
    call.put(9, link.nodata);
    call.putString(10, hostText(link.nodatastring));
    call.putString(11, hostText(link.notes));
    call.put(12, link.locked);
    putFlagged(call, 13, link.prefix);
    putFlagged(call, 14, link.suffix);
    call.put(15, link.missingasset);
    call.put(16, link.addPicBoxToGroup);
    call.put(17, link.importPosition);
    call.putString(18, hostText(link.dataFunction));
    call.putString(19, hostText(link.dataFormat));
    if (call.valueOr<std::uint8_t>(1, 0) != 0) call.put(20, usesOf(call.valueOr<UIDRef>(3, {}), pstrView(link.name)));
}

std::int32_t getLinkProperties(commandCall& call) {
    const recordDefRec* const definition = currentDefinition();
    if (definition == nullptr) return commandDefinition;
    call.put<std::uint32_t>(4, extractionCount(*definition));
    const std::string_view name = call.string(2);
    if (name.empty() && !call.given(0)) return commandDone;
    const extractionRec* const link =
        name.empty() ? linkAt(*definition, call.valueOr<std::int32_t>(0, -1)) : linkNamed(*definition, name);
    if (link == nullptr) return commandLink;
    putLinkProperties(call, *definition, *link);
    return commandDone;
}

/// Asks the rules module whether it is there; the rest of the command is its own.
std::int32_t getRule(commandCall& call) {
    commandBlock block{resultNobodyAnswered, call.block.command, &call.reply, &call.args};
    moduleCall(signatureRules, 0, block);
    return block.result == resultNobodyAnswered ? commandNoRulesModule : call.reply.status;
}

using enum commandStage;
constexpr auto any = commandMode::any;
constexpr auto merge = commandMode::merge;
constexpr auto price = commandMode::price;
using enum argumentType;

constexpr commandArgument definitionNameArgs[] = {
    replyOut(replyField::text, pascal, "name of the current definition"),
    replyOut(replyField::auxPointer, pascal, "name of the DDF file"),
};
constexpr commandArgument setDefinitionArgs[] = {
    itemIn(0, uidRef, "the document; the one in front when not given"),
    itemIn(1, pascal, "name of the definition; empty: the one that the document carries is taken into the set"),
    itemIn(2, u8, "1 sends its rules to the rules module again and stores them in the document"),
};
constexpr commandArgument linkInfoArgs[] = {
    replyIn(replyField::inValue, u32, "index of the link, from 0"),
    replyOut(replyField::text, pascal, "its name"),
    replyOut(replyField::outValue, i32, "number of its field, from 1; -1 when the definition has none of that name"),
    replyOut(replyField::outFlag, u8, "its deleteline"),
    replyOut(replyField::outWord, u32, "its nodata"),
};
constexpr commandArgument linkTypeArgs[] = {itemIn(0, string, "name of the link"), itemOut(1, i16, "its type")};
constexpr commandArgument definitionInfoArgs[] = {
    itemOut(0, string, "name"),
    itemIn(1, string, "name of the definition; empty: the current one"),
    itemOut(2, i16, "access: 0 text file, 1 ODBC, 2 HTTP"),
    itemOut(3, string, "key field"),
    itemOut(4, u8, "keys are compared case-sensitively"),
    itemOut(5, i16, "field delimiter: 0 tab, 1 comma, 2 space, 3 semicolon, 4 caret, 5 the text"),
    itemOut(6, string, "text of the field delimiter"),
    itemOut(7, string, "text qualifier; empty when off"),
    itemOut(8, i16, "record delimiter: 0 CR, 1 CR LF, 2 LF, 3 found from the file"),
    itemOut(9, string, "import translation table"),
    itemOut(10, string, "export translation table"),
    itemOut(11, string, "rule set"),
    itemOut(12, string, "SQL prologue"),
    itemOut(13, string, "SQL epilogue"),
    itemOut(14, string, "SQL row count"),
    itemOut(15, string, "request prologue"),
    itemOut(16, string, "request epilogue"),
    itemOut(17, string, "request row count"),
    itemOut(18, string, "picture search folder"),
    itemOut(19, i16, "encoding: 0 8-bit, 1 UTF-8, 2 found from the bytes"),
};
constexpr commandArgument fieldNameArgs[] = {
    itemInOut(0, i32, "number of the field, from 1; 0: found by its name"),
    itemInOut(1, string, "name of the field"),
};
constexpr commandArgument linkPropertiesArgs[] = {
    itemIn(0, i32, "index of the link, from 0"),
    itemIn(1, u8, "1 counts its uses in the document"),
    itemIn(2, string, "name of the link, which wins over the index"),
    itemIn(3, uidRef, "the document of that count"),
    itemOut(4, u32, "number of all links"),
    itemOut(5, string, "name"),
    itemOut(6, string, "field"),
    itemOut(7, i32, "number of the field, -1 for none"),
    itemOut(8, i16, "type"),
    itemOut(9, i16, "nodata"),
    itemOut(10, string, "text for no data"),
    itemOut(11, string, "notes"),
    itemOut(12, u8, "locked"),
    itemOut(13, string, "prefix"),
    itemOut(14, string, "suffix"),
    itemOut(15, i16, "missingasset"),
    itemOut(16, u8, "addPicBoxToGroup"),
    itemOut(17, i16, "importPosition"),
    itemOut(18, string, "dataFunction"),
    itemOut(19, string, "dataFormat"),
    itemOut(20, u32, "uses in the document"),
};
constexpr commandArgument ruleArgs[] = {
    itemIn(0, i32, "index of the rule, from 0"),
    itemIn(1, string, "name of the rule"),
};
constexpr commandArgument ddfArgs[] = {itemIn(0, file, "the DDF file")};
constexpr commandArgument copyArgs[] = {
    itemIn(0, uidRef, "source document"),
    itemIn(1, uidRef, "target document; may be none"),
    itemIn(2, u8, "1 replaces a definition of the same name in the set"),
    itemOut(3, string, "name of the definition"),
};

constexpr commandRow rows[] = {
    {512, "kKelvaneCmdGetLinkInfo", any, first, getLinkInfo, linkInfoArgs, "A variable link by its index."},
    {528, "kKelvaneCmdGetDefinitionName", any, first, getDefinitionName, definitionNameArgs,
     "Name of the current definition."},
    {546,
     "kKelvaneCmdReloadDocumentDefinitions",
     any,
     first,
     reloadDocumentDefinitions,
     {},
     "Sees to it that the set has the definition of the document in front, which may bring it along."},
    {558, "kKelvaneCmdSetDefinition", price, second, setDefinition, setDefinitionArgs,
     "Makes a definition the current one and that of the document."},
    {1207, "kKelvaneCmdSetDefinition", merge, second, setDefinition, setDefinitionArgs,
     "Makes a definition the current one and that of the document."},
    {584, "kKelvaneCmdGetLinkType", any, second, getLinkType, linkTypeArgs, "Type of a link."},
    {593, "kKelvaneCmdGetDefinitionInfo", merge, second, getDefinitionInfo, definitionInfoArgs,
     "Properties of a definition."},
    {599, "kKelvaneCmdGetDefinitionInfo", price, second, getDefinitionInfo, definitionInfoArgs,
     "Properties of a definition."},
    {595, "kKelvaneCmdGetFieldName", any, second, getFieldName, fieldNameArgs, "Number and name of a field."},
    {1237, "kKelvaneCmdGetFieldName", any, second, getFieldName, fieldNameArgs, "Number and name of a field."},
    {590, "kKelvaneCmdGetLinkProperties", price, second, getLinkProperties, linkPropertiesArgs,
     "Properties of a link, or the number of links."},
    {594, "kKelvaneCmdGetLinkProperties", merge, second, getLinkProperties, linkPropertiesArgs,
     "Properties of a link, or the number of links."},
    {596, "kKelvaneCmdGetRule", merge, second, getRule, ruleArgs, "A rule, from the rules module."},
    {1404, "kKelvaneCmdExportDefinitions", any, second, exportDefinitionFile, ddfArgs,
     "Writes all definitions to a DDF file."},
    {1405, "kKelvaneCmdImportDefinitions", any, second, importDefinitionFile, ddfArgs,
     "Replaces all definitions by those of a DDF file."},
    {1260, "kKelvaneCmdCopyDefinitions", any, second, copyDefinitions, copyArgs,
     "Takes the definition that a document carries into the set and names it in another document."},
    {2021, "kKelvaneCmdRefreshRules", any, first, nullptr, {}, "Sends the definition's rules to the rules module."},
    {2024, "kKelvaneCmdStoreRules", any, first, nullptr, {}, "Stores the rules of the rules module."},
    {2025, "kKelvaneCmdReselectDefinition", any, first, reselectDefinition, {}, "Selects the current definition anew."},
};

}  // namespace

std::span<const commandRow> definitionRows() {
    return rows;
}

}  // namespace tarnova
