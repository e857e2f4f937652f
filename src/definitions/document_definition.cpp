#include "definitions/document_definition.h"

#include <cstring>

#include "definitions/definition_state.h"
#include "definitions/definition_store.h"
#include "definitions/document_store.h"
#include "definitions/slug.h"
#include "document/document_host.h"
#include "engine/session/session.h"
#include "engine/toolkit/messages.h"

namespace tarnova {

namespace {

UIDRef frontDocument() {
    return session().documentHost == nullptr ? UIDRef{} : session().documentHost->frontDocument();
}

bool alwaysUsesDocument() {
    return appPrefs().alwaysUseDocumentDDF != 0;
}

std::uint8_t* docDefName() {
    return definitionState().documentSettings.docDefName;
}

void setDocDefName(const std::uint8_t* name) {
    definitionState().documentSettings = {};
    pstrCopyBounded(docDefName(), name, sizeof(Str31));
}

bool isDefaultName(const std::uint8_t* name) {
    Str31 defaultName;
    defaultDefName(defaultName);
    return pstrEqualNoCase(name, defaultName) == 0;
}

bool setHas(const std::uint8_t* name) {
    recordDefRec* definition = nullptr;
    return findRecordDef(definitionState().currentDefSet, name, definition, 0) == 0 && definition != nullptr;
}

/// Names a definition in a document, and in the session's image when it is the one in front.
bool nameIn(UIDRef document, const std::uint8_t* name) {
    if (document.database == frontDocument().database) setDocDefName(name);
    return nameDocumentDefinition(document, name);
}

/// The same with the current definition, for one that may be nothing; a refusal is shown.
void nameCurrentIn(UIDRef document) {
    if (document.database == nullptr || nameIn(document, definitionState().currentDefName)) return;
    reportErrorKey("kZavoErrorSavingSlugWithDocument");
}

/// Writes the text of a definition of the set as a document's slug; nothing when the set has none of that name.
errorWord writeDefinitionTo(UIDRef document, const std::uint8_t* name, errorWord priorError) {
    handlePtr text;
    const errorWord err = definitionToText(name, text, priorError);
    if (err != 0 || text == nullptr) return err;
    return writeSlug(document, text.get()) ? errorWord{0} : errFailed;
}

errorWord selectNamed(const std::uint8_t* name, errorWord priorError) {
    bool found = false;
    return selectDefinition(pstrView(name), found, priorError);
}

/// Takes the slug's first definition into the set as `target` and makes it the current one.
errorWord adoptAndSelect(blockHandle slug, const std::uint8_t* target, bool clearPath, errorWord priorError) {
    Str31 source;
    errorWord err = slugDefinitionName(slug, 0, source, priorError);
    err = adoptSlug(source, target, slug, clearPath, err);
    err = selectNamed(target, err);
    if (err == 0) session().panelsStale = 1;
    return err;
}

errorWord adoptAsDefault(blockHandle slug, bool clearPath) {
    Str31 name;
    defaultDefName(name);
    const errorWord err = adoptAndSelect(slug, name, clearPath, 0);
    setDocDefName(name);
    return err;
}

/// Whether the slug is what the set would write of its definition of that name: then it comes from here, and so does its
/// data path.
bool isSlugOfSet(blockHandle slug, const std::uint8_t* name) {
    handlePtr text;
    return definitionToText(name, text, 0) == 0 && text != nullptr && handleSize(text.get()) == handleSize(slug) &&
           std::memcmp(*text, *slug, handleSize(slug)) == 0;
}

void keepError(errorWord err) {
    if (session().engineError == 0) session().engineError = err;
}

void keepError(errorWord err, const std::uint8_t* parameter) {
    if (session().engineError != 0) return;
    session().engineError = err;
    pstrCopy(session().pendingErrorParam, parameter);
}

bool worksThroughDocuments() {
    const sessionRec& current = session();
    return runIsActive() || current.inRun != 0 || current.priceActive != 0 || current.priceBatch != 0;
}

/// Asks unless nobody watches: then the document's definition is taken over, as the first button says.
bool takesMissingDefinition(const std::uint8_t* slugName) {
    if (session().unattended != 0) return true;
    PMString text = PMString::ofKey("kZavoWarningMissingDDF"), name;
    pmFromPstr(name, slugName, false);
    pmSubstitute(text, &name);
    return askChoice(text, true, 1);
}

std::int32_t takeMissingDefinition(blockHandle slug, std::uint16_t& flags) {
    Str31 name;
    errorWord err = slugDefinitionName(slug, 0, name, 0);
    if (err == 0 && !alwaysUsesDocument() && !takesMissingDefinition(name)) return documentDefinitionFailed;
    if (err == 0) err = alwaysUsesDocument() ? adoptAsDefault(slug, true) : adoptAndSelect(slug, name, true, 0);
    keepError(err);
    if (err != 0) return documentDefinitionFailed;
    flags |= definitionChangedFlag;
    return 0;
}

/// The definition that the document names is looked for in the set.
void selectNamedByDocument() {
    if (setHas(docDefName())) return keepError(selectNamed(docDefName(), 0));
    if (appPrefs().missingDefinitionIsError != 0) keepError(errDocumentDefinition, docDefName());
    if (definitionState().putDefinitionRules != nullptr) definitionState().putDefinitionRules(nullptr);
}

}  // namespace

errorWord saveDefinitionToDocument(errorWord priorError) {
    const UIDRef document = frontDocument();
    if (priorError != 0 || document.database == nullptr) return priorError;
    const std::uint8_t* const name = definitionState().currentDefName;
    return nameIn(document, name) ? writeDefinitionTo(document, name, 0) : errFailed;
}

void documentDefinitionOnSave(UIDRef document) {
    const std::uint8_t* const name = definitionState().currentDefName;
    if (document.database == nullptr || runIsActive() || session().inRun != 0 || name[0] == 0) return;
    documentSettingsRec settings;
    static_cast<void>(readDocumentSettings(document, storeOfCopies, settings));
    if (settings.docDefName[0] != 0 && pstrEqualNoCase(settings.docDefName, name) != 0) return;
    bool stored = nameIn(document, name);
    if (stored && appPrefs().saveSlugWithDocument != 0) {
        handlePtr text;
        stored = definitionToText(name, text, 0) == 0;
        Str31 slugName = {};
        const handlePtr old = text == nullptr ? readSlug(document, storeOfCopies) : nullptr;
        if (old != nullptr && slugDefinitionName(old.get(), 0, slugName, 0) != 0) slugName[0] = 0;
        const bool staysAsItIs = !stored || (text == nullptr && pstrEqualNoCase(slugName, name) == 0);
        if (!staysAsItIs) stored = writeSlug(document, text.get());
    }
    if (!stored) reportErrorKey("kZavoErrorSavingSlugWithDocument");
}

std::int32_t documentDefinitionOnOpen(std::uint16_t& flags) {
    flags = 0;
    const UIDRef document = frontDocument();
    if (document.database == nullptr) return documentDefinitionNoDocument;
    documentSettingsRec& settings = definitionState().documentSettings;
    if (!readDocumentSettings(document, session().engineMode, settings)) {
        nameCurrentIn(document);
        return 0;
    }
    if (alwaysUsesDocument()) defaultDefName(docDefName());
    if (setHas(docDefName())) return 0;
    const handlePtr slug = readSlug(document, session().engineMode);
    if (slug != nullptr) return takeMissingDefinition(slug.get(), flags);
    keepError(errDefinitionMissing, docDefName());
    return documentDefinitionFailed;
}

void documentDefinitionOnFront(UIDRef document) {
    if (document.database == nullptr || worksThroughDocuments()) return;
    const std::uint16_t store = session().engineMode;
    if (!readDocumentSettings(document, store, definitionState().documentSettings))
        setDocDefName(definitionState().currentDefName);
    const bool isDefault = isDefaultName(docDefName());
    const handlePtr slug = isDefault || alwaysUsesDocument() ? readSlug(document, store) : nullptr;
    if (slug == nullptr) {
        if (!alwaysUsesDocument()) selectNamedByDocument();
        return;
    }
    Str31 slugName;
    errorWord err = slugDefinitionName(slug.get(), 0, slugName, 0);
    const bool keepsPath = isDefaultName(slugName) || isSlugOfSet(slug.get(), slugName);
    if (err == 0) err = adoptAsDefault(slug.get(), !keepsPath);
    keepError(err);
}

std::int32_t copyDefinitionBetweenDocuments(UIDRef source, UIDRef target, bool overwrite, std::uint8_t* name) {
    name[0] = 0;
    const handlePtr slug = source.database != nullptr ? readSlug(source, storeOfCopies) : nullptr;
    if (slug == nullptr) return documentDefinitionMissing;
    errorWord err = slugDefinitionName(slug.get(), 0, name, 0);
    if (alwaysUsesDocument()) defaultDefName(name);
    if (err == 0 && setHas(name) && !overwrite) return 0;
    err = adoptAndSelect(slug.get(), name, true, err);
    if (err == 0 && target.database != nullptr) {
        if (!nameIn(target, name)) return documentDefinitionFailed;
        if (isDefaultName(name)) err = writeDefinitionTo(target, name, err);
    }
    keepError(err);
    return err == 0 ? 0 : documentDefinitionFailed;
}

std::int32_t chooseDocumentDefinition(UIDRef document, const std::uint8_t* name, std::uint16_t& flags) {
    flags = 0;
    if (name[0] != 0) {
        if (!setHas(name)) return documentDefinitionMissing;
        keepError(selectNamed(name, 0));
        nameCurrentIn(document);
    } else {
        if (document.database == nullptr) return documentDefinitionNoDocument;
        const handlePtr slug = readSlug(document, storeOfCopies);
        Str31 slugName;
        if (slug == nullptr || slugDefinitionName(slug.get(), 0, slugName, 0) != 0) return documentDefinitionUnread;
        if (!nameIn(document, slugName)) reportErrorKey("kZavoErrorSavingSlugWithDocument");
        Str31 target;
        pstrCopy(target, slugName);
        if (alwaysUsesDocument()) defaultDefName(target);
        if (adoptAndSelect(slug.get(), target, true, 0) != 0) return documentDefinitionUnread;
    }
    flags |= definitionChangedFlag;
    session().panelsStale = 1;
    const recordDefRec* const definition = definitionState().currentRecordDef;
    if (definition == nullptr) return documentDefinitionMissing;
    const flaggedStr255Rec& table = definition->importTransTable;
    const bool isLoaded = table.enable == 0 || loadImportTable(table.string) == transTableLoaded;
    return isLoaded ? 0 : documentDefinitionTable;
}

bool hasDocumentDefinition(std::uint8_t* name) {
    if (name != nullptr) name[0] = 0;
    const UIDRef document = frontDocument();
    const handlePtr slug = document.database != nullptr ? readSlug(document, session().engineMode) : nullptr;
    if (slug == nullptr) return false;
    Str31 slugName;
    const bool isReadable = slugDefinitionName(slug.get(), 0, slugName, 0) == 0;
    if (isReadable && name != nullptr) pstrCopy(name, slugName);
    return isReadable;
}

}  // namespace tarnova
