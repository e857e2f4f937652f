// The documents of an automation session: those that are open in its host, by handle.

#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>

#include "host/files/open_documents.h"

namespace tarnova {

/// Handles count from 1 and are never used again. An operation throws ExecFault when it fails or there is no such
/// document.
class ExecDocuments {
 public:
    ExecDocuments();

    [[nodiscard]] DocumentHost& host() { return open; }
    void setWatch(DocumentWatch* watch) { open.setWatch(watch); }
    /// Opens a file in front of the others. One that is open already comes to the front under its handle.
    std::uint32_t openFile(const std::string& path);
    /// Takes a new document over, in front of the others.
    std::uint32_t add(std::unique_ptr<DocumentModel> document);
    [[nodiscard]] DocumentModel& at(std::int64_t handle) const;
    /// Saves into its own file, or with a path into that one; gives the path.
    std::string save(std::int64_t handle, const std::string& path);
    void close(std::int64_t handle);
    void bringToFront(std::int64_t handle);
    /// Handle of the document in front, or 0.
    [[nodiscard]] std::uint32_t front() const;
    /// Handle of an open document, or 0.
    [[nodiscard]] std::uint32_t handleOf(const Document* document) const;

 private:
    std::uint32_t handleFor(Document* document);
    void require(errorWord error, const std::string& path) const;

    OpenDocuments open;
    std::map<std::uint32_t, Document*> handles;
    std::uint32_t lastHandle = 0;
};

}  // namespace tarnova
