#include "output/working_copy.h"

#include <filesystem>
#include <string>
#include <utility>

#include "document/document.h"
#include "document/document_host.h"
#include "engine/session/preferences_file.h"
#include "engine/session/session.h"
#include "engine/toolkit/messages.h"
#include "engine/toolkit/pstring.h"
#include "output/build_document.h"
#include "output/build_tables.h"
#include "output/master_items.h"

namespace tarnova {
namespace {

namespace fs = std::filesystem;

constexpr char documentFontsFolder[] = "Document fonts";

/// The host's result as an error of ours; why it failed becomes the error's parameter.
errorWord hostResult(errorWord result, errorWord error) {
    if (result == 0) return 0;
    const DocumentHost* const host = session().documentHost;
    if (host != nullptr) pstrFromView(session().pendingErrorParam, sizeof(Str255), host->lastFailure());
    return error;
}

std::string ownFileOf(const Document& document) {
    return document.documentName().empty() ? std::string() : document.documentFolder() + "/" + document.documentName();
}

void copyDocumentFonts(const Document& document, const std::string& folder) {
    const fs::path from = fs::path(document.documentFolder()) / documentFontsFolder;
    const fs::path to = fs::path(folder) / documentFontsFolder;
    std::error_code failure;
    if (!fs::is_directory(from, failure)) return;
    fs::copy(from, to, fs::copy_options::recursive | fs::copy_options::overwrite_existing, failure);
    const PMString names[] = {PMString(from.string()), PMString(to.string())};
    if (failure) reportErrorKey("kZavoErrorCopyingDocumentFontsFolderKey", &names[0], &names[1]);
}

errorWord openTemplate(UIDRef& outDocument) {
    auto& run = session();
    if (run.documentHost == nullptr || run.templateFile.empty()) return errWorkingCopyOpen;
    const bool hidden = appPrefs().workingCopyHidden != 0;
    const errorWord opened = run.documentHost->documentOpen(run.templateFile, !hidden, outDocument);
    return hostResult(opened, errWorkingCopyOpen);
}

}  // namespace

errorWord saveWorkingCopy(UIDRef document, bool copyFonts, errorWord priorError) {
    if (priorError != 0) return priorError;
    auto& run = session();
    const std::string folder = tempFilesFolder();
    if (run.documentHost == nullptr || document.database == nullptr || folder.empty()) return errWorkingCopySave;
    const Document& source = *document.database;
    if (source.documentName().empty()) return errWorkingCopySave;
    std::error_code ignored;  // the host tells what it can't write
    fs::create_directories(folder, ignored);
    if (copyFonts && appPrefs().copyDocumentFonts != 0) copyDocumentFonts(source, folder);
    const std::string path = folder + "/" + source.documentName();
    const errorWord error = hostResult(run.documentHost->documentSaveCopy(document, path), errWorkingCopySave);
    if (error != 0) return error;
    run.templateFile = path;
    run.sourceFile = ownFileOf(source);
    run.sourceWindowShown = run.documentHost->documentHasWindow(document) ? 1 : 0;
    run.workingCopyMade = 1;
    return snapshotBuildTables(0);
}

errorWord openWorkingCopy(UIDRef& outDocument, errorWord priorError) {
    if (priorError != 0) return priorError;
    auto& run = session();
    errorWord error = 0;
    if (run.templateDoc.database == nullptr) {
        error = openTemplate(run.templateDoc);
        if (error != 0) return error;
        run.templateCopy = run.templateDoc.database->documentCopy();
        run.templatePrepared = run.trimDone = 0;
        error = restoreBuildTables(0);
    }
    outDocument = run.templateDoc;
    return error;
}

errorWord closeWorkingCopy(UIDRef& outDocument, errorWord priorError) {
    auto& run = session();
    outDocument = kInvalidUIDRef;
    const UIDRef open = std::exchange(run.templateDoc, kInvalidUIDRef);
    run.templateCopy.reset();
    if (open.database == nullptr || run.documentHost == nullptr) return priorError;
    const errorWord error = hostResult(run.documentHost->documentClose(open), errWorkingCopyClose);
    return priorError != 0 ? priorError : error;
}

errorWord saveSourceDocument(UIDRef document, errorWord priorError) {
    if (priorError != 0) return priorError;
    auto& run = session();
    if (run.documentHost == nullptr || document.database == nullptr) return errSourceSave;
    const errorWord error = hostResult(run.documentHost->documentSave(document), errSourceSave);
    if (error != 0) return error;
    run.sourceFile = ownFileOf(*document.database);
    run.sourceWindowShown = run.documentHost->documentHasWindow(document) ? 1 : 0;
    return 0;
}

errorWord reopenSourceDocument(UIDRef& outDocument, errorWord priorError) {
    if (priorError != 0) return priorError;
    auto& run = session();
    if (run.documentHost == nullptr || run.sourceFile.empty()) return errSourceReopen;
    const bool withWindow = run.sourceWindowShown != 0;
    return hostResult(run.documentHost->documentOpen(run.sourceFile, withWindow, outDocument), errSourceReopen);
}

errorWord resetToSnapshot(UIDRef document, errorWord priorError) {
    if (priorError != 0) return priorError;
    auto& run = session();
    if (document.database == nullptr || document.database != run.templateDoc.database || !run.templateCopy) {
        return errFailed;
    }
    const errorWord error = run.documentHost->documentRestore(document, *run.templateCopy);
    return restoreBuildTables(hostResult(error, errWorkingCopyOpen));
}

errorWord prepareWorkingTemplate(UIDRef document, bool detachMasters, errorWord priorError) {
    auto& run = session();
    if (priorError != 0 || document.database != run.templateDoc.database || run.templatePrepared != 0) {
        return priorError;
    }
    composeTemplate(document);
    errorWord error = 0;
    if (detachMasters && runDetachesMasters()) error = detachMasterItems(document, 0);
    if (error != 0) return error;
    run.templateCopy = document.database->documentCopy();
    run.templatePrepared = 1;
    return 0;
}

errorWord preparePass(bool firstPass, UIDRef& outDocument, errorWord priorError) {
    if (priorError != 0) return priorError;
    auto& run = session();
    errorWord error = 0;
    run.docWasReopened = 0;
    outDocument = run.runDocument;
    if (outDocument.database != nullptr) {
        run.workingCopyMade = 1;  // the document is the template itself
        error = resetBuildTables(outDocument, 0);
    } else if (run.workingCopyMade == 0) {
        error = reopenSourceDocument(outDocument, 0);
        if (error == 0) error = resetBuildTables(outDocument, 0);
        run.docWasReopened = 1;
    } else {
        error = openTemplate(outDocument);
        if (error == 0) error = restoreBuildTables(0);
        run.docWasReopened = 1;
    }
    if (error == 0 && run.slotTarget > 1) composeTemplate(outDocument);
    error = buildDocument(outDocument, {false, appPrefs().showProgress != 0, true, firstPass, false}, error);
    if (error == 0 && run.workingCopyMade == 0) error = saveWorkingCopy(outDocument, false, 0);
    return error;
}

errorWord closePassDocument(UIDRef document, errorWord priorError) {
    auto& run = session();
    if (run.docWasReopened == 0 || document.database == nullptr) return priorError;
    run.docWasReopened = 0;
    const errorWord error = hostResult(run.documentHost->documentClose(document), errWorkingCopyClose);
    return priorError != 0 ? priorError : error;
}

}  // namespace tarnova
