// The layout file (".tvd"): a document as UTF-8 JSON. docs/layout-format.md tells every member.

#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "host/model/document_model.h"

namespace tarnova {

/// Why a layout couldn't be read or written, for the person who has to mend it.
struct layoutError {
    std::string message;
    int line = 0;  // of the file, from 1; 0 when no line is to blame
};

/// Opens a layout. Null, with the reason in `error`, when it can't be read or isn't right in every member.
[[nodiscard]] std::unique_ptr<DocumentModel> openLayout(const std::string& path, layoutError& error);
/// The same from bytes; the document has no location. `folder` is where relative paths of pictures are looked up whose
/// size the layout leaves out; empty: the current one.
[[nodiscard]] std::unique_ptr<DocumentModel> readLayout(std::string_view bytes, layoutError& error,
                                                        const std::string& folder = {});

/// Writes the document whole, and tells it its location. The bytes go to a new file in the same folder, which takes the
/// place of the old one when it is safe on the disk; on failure the old one stays as it was and nothing else is left.
[[nodiscard]] bool saveLayout(DocumentModel& document, const std::string& path, layoutError& error);
/// The same, but the document's own location stays, and so does what it knows of changes that aren't saved.
[[nodiscard]] bool saveLayoutCopy(const DocumentModel& document, const std::string& path, layoutError& error);
/// The bytes of the file: the same for the same document. Reading and writing them again gives them back. For a file in
/// another folder than the document's the relative paths of pictures are written from the root; an empty folder stands
/// for the document's own.
[[nodiscard]] std::string writeLayout(const DocumentModel& document, const std::string& folder = {});

}  // namespace tarnova
