// The open documents of a program, each with its layout file: opening, saving, reverting, closing, and which is in
// front.

#pragma once

#include <memory>
#include <string>
#include <vector>

#include "document/document_host.h"
#include "host/model/document_model.h"

namespace tarnova {

struct layoutError;

class OpenDocuments final : public DocumentHost {
 public:
    /// Documents are given this composer when they are opened; it may be null.
    explicit OpenDocuments(std::shared_ptr<Composer> itsComposer) : composer(std::move(itsComposer)) {}

    /// Who is told of what happens to the documents; null: nobody. Must outlive its use.
    void setWatch(DocumentWatch* newWatch) { watch = newWatch; }
    /// Takes a new document over, in front of the others when it gets a window.
    DocumentModel& add(std::unique_ptr<DocumentModel> document, bool withWindow);
    /// The document that a reference names; null when it isn't open here.
    [[nodiscard]] DocumentModel* find(UIDRef document) const;
    [[nodiscard]] std::size_t count() const { return documents.size(); }
    /// Puts a document in front of the others, in a window if it has none. False when it isn't open here.
    bool bringToFront(UIDRef document);

    UIDRef frontDocument() const override;
    errorWord documentOpen(const std::string& path, bool withWindow, UIDRef& outDocument) override;
    errorWord documentSave(UIDRef document) override;
    errorWord documentSaveAs(UIDRef document, const std::string& path) override;
    errorWord documentSaveCopy(UIDRef document, const std::string& path) override;
    errorWord documentRevert(UIDRef document) override;
    errorWord documentRestore(UIDRef document, const Document& copy) override;
    errorWord documentClose(UIDRef document) override;
    bool documentHasWindow(UIDRef document) const override;
    errorWord documentShowWindow(UIDRef document) override;
    selectionRec selection(UIDRef document) const override;
    errorWord select(UIDRef document, const selectionRec& selection) override;
    const std::string& lastFailure() const override { return failure; }

 private:
    struct OpenDocument {
        std::unique_ptr<DocumentModel> document;
        bool hasWindow;
        selectionRec selected;
    };
    using Place = std::vector<OpenDocument>::const_iterator;

    [[nodiscard]] Place placeOf(UIDRef document) const;
    [[nodiscard]] DocumentModel* openFrom(const std::string& path) const;
    DocumentModel& insert(std::unique_ptr<DocumentModel> document, bool withWindow);
    void showInFront(Place place);
    void tell(DocumentSignal signal, UIDRef document);
    /// Tells of another document in front than `before`.
    void tellFront(UIDRef before);
    [[nodiscard]] std::unique_ptr<DocumentModel> read(const std::string& path);
    errorWord fail(std::string reason);
    errorWord failNotOpen();
    errorWord replace(DocumentModel& document, Document& by);

    std::shared_ptr<Composer> composer;
    std::vector<OpenDocument> documents;  // the front one last
    DocumentWatch* watch = nullptr;
    std::string failure;
};

}  // namespace tarnova
