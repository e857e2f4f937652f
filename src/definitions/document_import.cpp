// Bringing the definition of a document's file into the set without showing that document.

#include <algorithm>

#include "definitions/definition_state.h"
#include "definitions/definition_store.h"
#include "definitions/document_definition.h"
#include "definitions/document_store.h"
#include "definitions/slug.h"
#include "document/document_host.h"
#include "engine/session/session.h"
#include "engine/toolkit/choosers.h"
#include "engine/toolkit/messages.h"

namespace tarnova {

namespace {

constexpr std::uint16_t messageReplace = 21;
constexpr std::size_t nameLimit = sizeof(Str31) - 1;

/// A document that is there for the time of a look, and closed again unless it was open before.
class VisitedDocument {
 public:
    VisitedDocument(DocumentHost& itsHost, const std::string& path) : host(itsHost) {
        if (host.documentOpen(path, false, document) != 0) document = {};
    }
    ~VisitedDocument() {
        if (document.database != nullptr && !host.documentHasWindow(document))
            static_cast<void>(host.documentClose(document));
    }
    VisitedDocument(const VisitedDocument&) = delete;
    VisitedDocument& operator=(const VisitedDocument&) = delete;

    UIDRef document;

 private:
    DocumentHost& host;
};

errorWord checkName(std::string_view name) {
    const bool special =
        std::any_of(name.begin(), name.end(), [](char c) { return isNameSpecialChar(static_cast<std::uint8_t>(c)); });
    if (name.empty() || special) return errNameTooShort;
    return name.size() > nameLimit ? errNameTooLong : errorWord{0};
}

/// False: cancelled.
bool askName(std::uint8_t* name, errorWord& err) {
    std::string text = pstrString(name);
    if (!chooserService().askText(PMString::ofKey("kZavoImportDDFNameTitleKey"), nameLimit, text)) return false;
    err = checkName(text);
    if (err == 0) pstrFromView(name, sizeof(Str31), text);
    return err == 0;
}

bool askToReplace(const std::uint8_t* name) {
    Str31 kind;
    pstrSet(kind, "Database Definition");
    Str255 text;
    messageText(text, messageReplace);
    return askChoice(text, true, 1, kind, name);
}

errorWord nameInFront(UIDRef front) {
    if (front.database == nullptr) return 0;
    const std::uint8_t* const name = definitionState().currentDefName;
    pstrCopyBounded(definitionState().documentSettings.docDefName, name, sizeof(Str31));
    if (!nameDocumentDefinition(front, name)) reportErrorKey("kZavoErrorSavingSlugWithDocument");
    return 0;
}

}  // namespace

errorWord importDefinitionFromDocument(const std::string& path, bool saveToDocument, std::uint8_t* name,
                                       errorWord priorError) {
    name[0] = 0;
    if (priorError != 0) return priorError;
    DocumentHost* const host = session().documentHost;
    if (host == nullptr) return errDocumentOpen;
    const VisitedDocument visited(*host, path);
    if (visited.document.database == nullptr) return errDocumentOpen;
    const handlePtr slug = readSlug(visited.document, storeOfCopies);
    if (slug == nullptr) return errDocumentSlug;
    Str31 slugName, target, defaultName;
    errorWord err = slugDefinitionName(slug.get(), 0, slugName, 0);
    if (err != 0) return err;
    defaultDefName(defaultName);
    pstrCopy(target, slugName);

    const UIDRef front = host->frontDocument();
    documentSettingsRec settings{};
    if (front.database != nullptr) static_cast<void>(readDocumentSettings(front, session().engineMode, settings));
    const bool always = appPrefs().alwaysUseDocumentDDF != 0;
    if (always) pstrCopy(target, defaultName);
    if (!always && pstrEqualNoCase(settings.docDefName, defaultName) != 0) {
        if (!askName(target, err)) return err;
        recordDefRec* there = nullptr;
        err = findRecordDef(definitionState().currentDefSet, target, there, err);
        if (err != 0 || (there != nullptr && !askToReplace(target))) return err;
    }
    err = adoptSlug(slugName, target, slug.get(), true, err);
    bool found = false;
    err = selectDefinition(pstrView(target), found, err);
    if (err != 0) return err;
    pstrCopy(name, target);
    session().panelsStale = 1;
    err = nameInFront(front);
    const bool isDefault = pstrEqualNoCase(definitionState().currentDefName, defaultName) == 0;
    return saveToDocument && isDefault ? saveDefinitionToDocument(err) : err;
}

}  // namespace tarnova
