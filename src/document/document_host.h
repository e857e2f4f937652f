// What the engine needs of the application around the documents: which are open and in front, and where they lie.

#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "document/document_tables.h"
#include "document/text_span.h"
#include "document/uid.h"
#include "engine/toolkit/types.h"

namespace tarnova {

/// What is selected in a document: a range of a text, page items, or cells of a table; all empty for nothing.
struct selectionRec {
    UID story = kInvalidUID;
    textSpanRec range;
    std::vector<UID> items;
    cellSelectionRec cells;
};

/// What the host tells of its documents. The numbers are those of its signals; `frontChanged` has none of its own.
enum class DocumentSignal : std::uint16_t {
    afterNew = 3596,
    afterOpen = 3599,
    beforeSave = 3600,
    beforeSaveAs = 3602,
    beforeSaveCopy = 3604,
    afterRevert = 3608,
    beforeClose = 3609,
    afterClose = 3610,
    frontChanged = 0
};

/// Whoever is told. The document may be changed, but neither opened, saved nor closed, by the one who is told.
class DocumentWatch {
 public:
    virtual ~DocumentWatch() = default;
    /// `document` is nothing behind a close, and for a front that no document has.
    virtual void Respond(DocumentSignal signal, UIDRef document) = 0;
};

/// The open documents. It owns them: a reference is good until its document is closed. Paths are UTF-8. An operation
/// that fails gives `errFailed`, sets the global error word, tells why in `lastFailure`, and changes neither a document
/// nor a file.
class DocumentHost {
 public:
    virtual ~DocumentHost() = default;

    /// The front one of the documents with a window, or the reference to nothing.
    [[nodiscard]] virtual UIDRef frontDocument() const = 0;
    /// Opens a file, in front of the others when it gets a window. One that is open already is given as it is.
    [[nodiscard]] virtual errorWord documentOpen(const std::string& path, bool withWindow, UIDRef& outDocument) = 0;
    /// Saves into the document's own file; one that was never saved has none, and that is a failure.
    [[nodiscard]] virtual errorWord documentSave(UIDRef document) = 0;
    /// Saves into another file, which becomes the document's own. It can't be that of another open document.
    [[nodiscard]] virtual errorWord documentSaveAs(UIDRef document, const std::string& path) = 0;
    /// Writes a copy. The document keeps its file, and changes that aren't saved stay so.
    [[nodiscard]] virtual errorWord documentSaveCopy(UIDRef document, const std::string& path) = 0;
    /// Brings the document back to its file, as it was saved last. References to it stay good; those to objects that
    /// are gone are as after a deletion, and nothing of before can be undone.
    [[nodiscard]] virtual errorWord documentRevert(UIDRef document) = 0;
    /// Brings the document to what a copy shows that was made of it (`documentCopy`), with the identity of all that is
    /// in it; the copy can be used again. References are as behind `documentRevert`.
    [[nodiscard]] virtual errorWord documentRestore(UIDRef document, const Document& copy) = 0;
    /// Closes without saving.
    [[nodiscard]] virtual errorWord documentClose(UIDRef document) = 0;
    [[nodiscard]] virtual bool documentHasWindow(UIDRef document) const = 0;
    /// Gives the document a window unless it has one, in front of the others.
    [[nodiscard]] virtual errorWord documentShowWindow(UIDRef document) = 0;
    /// What is selected, without what is gone meanwhile; nothing for a document that isn't open.
    [[nodiscard]] virtual selectionRec selection(UIDRef document) const = 0;
    /// Selects in the place of what was selected. A range outside of its text, and items and cells that aren't there,
    /// are a failure.
    [[nodiscard]] virtual errorWord select(UIDRef document, const selectionRec& selection) = 0;
    /// Why the last operation that failed did so, for the person who has to mend it.
    [[nodiscard]] virtual const std::string& lastFailure() const = 0;
};

}  // namespace tarnova
