#include "host/files/open_documents.h"

#include <algorithm>
#include <filesystem>
#include <utility>

#include "document/error_utils.h"
#include "host/files/import_text_filters.h"
#include "host/files/layout_file.h"

namespace tarnova {

namespace {

/// The path of the document's own file; empty when it was never saved.
std::string fileOf(const DocumentModel& document) {
    if (document.documentName().empty()) return {};
    return (std::filesystem::path(document.documentFolder()) / document.documentName()).string();
}

/// Whether two paths lead to one file, which may not be there yet.
bool isSameFile(const std::string& one, const std::string& other) {
    std::error_code code;
    if (one.empty() || other.empty()) return false;
    if (std::filesystem::equivalent(one, other, code)) return true;
    return std::filesystem::absolute(one, code).lexically_normal() ==
           std::filesystem::absolute(other, code).lexically_normal();
}

/// A selection without a range counts as one inside.
bool rangeIsInside(const DocumentModel& document, const selectionRec& selection) {
    if (selection.story == kInvalidUID) return true;
    const std::vector<UID> stories = document.stories();
    if (std::find(stories.begin(), stories.end(), selection.story) == stories.end()) return false;
    const std::int32_t length = document.totalLength(selection.story);
    const textSpanRec& range = selection.range;
    return range.start >= 0 && range.length >= 0 && range.start <= length && range.length <= length - range.start;
}

std::string reasonOf(const layoutError& error) {
    return error.line == 0 ? error.message : "Line " + std::to_string(error.line) + ": " + error.message;
}

}  // namespace

void OpenDocuments::tell(DocumentSignal signal, UIDRef document) {
    if (watch != nullptr) watch->Respond(signal, document);
}

void OpenDocuments::tellFront(UIDRef before) {
    const UIDRef front = frontDocument();
    if (front.database != before.database) tell(DocumentSignal::frontChanged, front);
}

DocumentModel& OpenDocuments::add(std::unique_ptr<DocumentModel> document, bool withWindow) {
    const UIDRef before = frontDocument();
    DocumentModel& added = insert(std::move(document), withWindow);
    tell(DocumentSignal::afterNew, added.ref());
    tellFront(before);
    return added;
}

DocumentModel& OpenDocuments::insert(std::unique_ptr<DocumentModel> document, bool withWindow) {
    addTextImportFilters();
    document->setComposer(composer);
    DocumentModel& added = *document;
    const auto behind = withWindow ? documents.end() : documents.begin();
    documents.insert(behind, OpenDocument{std::move(document), withWindow, {}});
    return added;
}

DocumentModel* OpenDocuments::find(UIDRef document) const {
    const Place place = placeOf(document);
    return place == documents.end() ? nullptr : place->document.get();
}

OpenDocuments::Place OpenDocuments::placeOf(UIDRef document) const {
    return std::find_if(documents.begin(), documents.end(),
                        [&](const OpenDocument& open) { return open.document.get() == document.database; });
}

DocumentModel* OpenDocuments::openFrom(const std::string& path) const {
    const auto found = std::find_if(documents.begin(), documents.end(),
                                    [&](const OpenDocument& open) { return isSameFile(fileOf(*open.document), path); });
    return found == documents.end() ? nullptr : found->document.get();
}

void OpenDocuments::showInFront(Place place) {
    const auto at = documents.begin() + (place - documents.begin());
    at->hasWindow = true;
    std::rotate(at, at + 1, documents.end());
}

std::unique_ptr<DocumentModel> OpenDocuments::read(const std::string& path) {
    layoutError error;
    std::unique_ptr<DocumentModel> document = openLayout(path, error);
    if (document == nullptr) fail(reasonOf(error));
    return document;
}

errorWord OpenDocuments::fail(std::string reason) {
    failure = std::move(reason);
    ErrorUtils::PMSetGlobalErrorCode(kFailure);
    return errFailed;
}

errorWord OpenDocuments::failNotOpen() {
    return fail("The document isn't open any more.");
}

bool OpenDocuments::bringToFront(UIDRef document) {
    const Place place = placeOf(document);
    if (place == documents.end()) return false;
    const UIDRef before = frontDocument();
    showInFront(place);
    tellFront(before);
    return true;
}

UIDRef OpenDocuments::frontDocument() const {
    if (documents.empty() || !documents.back().hasWindow) return kInvalidUIDRef;
    return documents.back().document->ref();
}

errorWord OpenDocuments::documentOpen(const std::string& path, bool withWindow, UIDRef& outDocument) {
    outDocument = kInvalidUIDRef;
    const UIDRef before = frontDocument();
    DocumentModel* document = openFrom(path);
    const bool isOpen = document != nullptr;
    if (!isOpen) {
        std::unique_ptr<DocumentModel> opened = read(path);
        if (opened == nullptr) return errFailed;
        document = &insert(std::move(opened), withWindow);
    }
    outDocument = document->ref();
    if (withWindow) showInFront(placeOf(outDocument));
    if (!isOpen) tell(DocumentSignal::afterOpen, outDocument);
    tellFront(before);
    return 0;
}

errorWord OpenDocuments::documentSave(UIDRef document) {
    DocumentModel* const found = find(document);
    if (found == nullptr) return failNotOpen();
    const std::string path = fileOf(*found);
    if (path.empty()) return fail("The document was never saved; give it a file first.");
    tell(DocumentSignal::beforeSave, document);
    layoutError error;
    return saveLayout(*found, path, error) ? 0 : fail(reasonOf(error));
}

errorWord OpenDocuments::documentSaveAs(UIDRef document, const std::string& path) {
    DocumentModel* const found = find(document);
    if (found == nullptr) return failNotOpen();
    const DocumentModel* const other = openFrom(path);
    if (other != nullptr && other != found) {
        return fail("\"" + path + "\" is the file of another open document; close that one first.");
    }
    tell(DocumentSignal::beforeSaveAs, document);
    layoutError error;
    return saveLayout(*found, path, error) ? 0 : fail(reasonOf(error));
}

errorWord OpenDocuments::documentSaveCopy(UIDRef document, const std::string& path) {
    const DocumentModel* const found = find(document);
    if (found == nullptr) return failNotOpen();
    if (openFrom(path) != nullptr) {
        return fail("\"" + path + "\" is the file of an open document; a copy needs a file of its own.");
    }
    tell(DocumentSignal::beforeSaveCopy, document);
    layoutError error;
    return saveLayoutCopy(*found, path, error) ? 0 : fail(reasonOf(error));
}

errorWord OpenDocuments::documentRevert(UIDRef document) {
    DocumentModel* const found = find(document);
    if (found == nullptr) return failNotOpen();
    const std::string path = fileOf(*found);
    if (path.empty()) return fail("The document was never saved; there is nothing to go back to.");
    const std::unique_ptr<DocumentModel> saved = read(path);
    if (saved == nullptr) return errFailed;
    const errorWord error = replace(*found, *saved);
    if (error == 0) tell(DocumentSignal::afterRevert, document);
    return error;
}

errorWord OpenDocuments::documentRestore(UIDRef document, const Document& copy) {
    DocumentModel* const found = find(document);
    if (found == nullptr) return failNotOpen();
    return replace(*found, *copy.documentCopy());
}

errorWord OpenDocuments::replace(DocumentModel& document, Document& by) {
    auto* const model = dynamic_cast<DocumentModel*>(&by);
    if (model != nullptr && document.replaceBy(*model) == 0) return 0;
    return fail("The document can't go back in the middle of a change.");
}

errorWord OpenDocuments::documentClose(UIDRef document) {
    const Place place = placeOf(document);
    if (place == documents.end()) return failNotOpen();
    tell(DocumentSignal::beforeClose, document);
    documents.erase(placeOf(document));
    tell(DocumentSignal::afterClose, kInvalidUIDRef);
    return 0;
}

bool OpenDocuments::documentHasWindow(UIDRef document) const {
    const Place place = placeOf(document);
    return place != documents.end() && place->hasWindow;
}

errorWord OpenDocuments::documentShowWindow(UIDRef document) {
    const Place place = placeOf(document);
    if (place == documents.end()) return failNotOpen();
    const UIDRef before = frontDocument();
    if (!place->hasWindow) showInFront(place);
    tellFront(before);
    return 0;
}

selectionRec OpenDocuments::selection(UIDRef document) const {
    const Place place = placeOf(document);
    if (place == documents.end()) return {};
    selectionRec selected = place->selected;
    const DocumentModel& model = *place->document;
    std::erase_if(selected.items, [&model](UID item) { return !model.itemExists(item); });
    if (!rangeIsInside(model, selected)) selected.story = kInvalidUID;
    return selected;
}

errorWord OpenDocuments::select(UIDRef document, const selectionRec& selection) {
    const Place place = placeOf(document);
    if (place == documents.end()) return failNotOpen();
    const DocumentModel& model = *place->document;
    for (const UID item : selection.items)
        if (!model.itemExists(item)) return fail("There is no page item " + std::to_string(item) + " to be selected.");
    if (!rangeIsInside(model, selection))
        return fail("The range doesn't lie in story " + std::to_string(selection.story) + ".");
    if (selection.cells.table != kInvalidUID && model.rowCount(selection.cells.table) == 0)
        return fail("There is no table " + std::to_string(selection.cells.table) + ".");
    documents[static_cast<std::size_t>(place - documents.begin())].selected = selection;
    return 0;
}

}  // namespace tarnova
