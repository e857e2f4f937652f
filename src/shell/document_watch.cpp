#include "shell/document_watch.h"

#include "definitions/document_definition.h"
#include "document/document.h"
#include "engine/module/execute.h"
#include "engine/session/session.h"

namespace tarnova {

namespace {

constexpr std::uint32_t modulesCmdDocumentClosed = 402;

/// A document that the engine itself opened is worked with at once, in front or not.
void takeOpened(UIDRef document) {
    sessionRec& current = session();
    const Document& opened = *document.database;
    const IDFile file = IDFile(opened.documentFolder()).child(opened.documentName());
    if (current.engineOpenedFileSet == 0 || !(file == current.engineOpenedFile)) return;
    current.engineOpenedFileSet = 0;
    documentDefinitionOnFront(document);
}

void followFront(UIDRef document) {
    if (document.database == nullptr || session().inRun != 0 || session().priceBatch != 0) return;
    documentDefinitionOnFront(document);
    session().panelsStale = 1;
}

void tellModules() {
    for (const auto& [signature, module] : session().companionModules) {
        commandReply reply{};
        commandArgs args{};
        commandBlock block{resultNobodyAnswered, modulesCmdDocumentClosed, &reply, &args};
        module->Execute(block);
    }
}

void forgetClosed() {
    sessionRec& current = session();
    const UIDRef front = current.documentHost == nullptr ? UIDRef{} : current.documentHost->frontDocument();
    if (current.inRun == 0) {
        documentDefinitionOnFront(front);
        if (front.database == nullptr) current.documentSettings = {};
    }
    current.panelsStale = 1;
    tellModules();
}

}  // namespace

void ZavoDocWatchResponder::Respond(DocumentSignal signal, UIDRef document) {
    switch (signal) {
        case DocumentSignal::afterNew:
        case DocumentSignal::beforeSave:
        case DocumentSignal::beforeSaveAs:
        case DocumentSignal::beforeSaveCopy:
            return documentDefinitionOnSave(document);
        case DocumentSignal::afterOpen:
            return takeOpened(document);
        case DocumentSignal::afterRevert:
            return documentDefinitionOnFront(document);
        case DocumentSignal::frontChanged:
            return followFront(document);
        case DocumentSignal::afterClose:
            return forgetClosed();
        case DocumentSignal::beforeClose:
            return;
    }
}

}  // namespace tarnova
