#include "cli/exec/exec_documents.h"

#include <fmt/format.h>

#include <algorithm>

#include "cli/exec/exec_fault.h"
#include "host/text/composer.h"

namespace tarnova {

ExecDocuments::ExecDocuments() : open(makeComposer()) {}

void ExecDocuments::require(errorWord error, const std::string& path) const {
    if (error == 0) return;
    throw ExecFault(path.empty() ? open.lastFailure() : path + ": " + open.lastFailure());
}

std::uint32_t ExecDocuments::handleFor(Document* document) {
    const std::uint32_t known = handleOf(document);
    if (known != 0) return known;
    handles[++lastHandle] = document;
    return lastHandle;
}

std::uint32_t ExecDocuments::openFile(const std::string& path) {
    UIDRef document;
    require(open.documentOpen(path, true, document), path);
    return handleFor(document.database);
}

std::uint32_t ExecDocuments::add(std::unique_ptr<DocumentModel> document) {
    return handleFor(&open.add(std::move(document), true));
}

DocumentModel& ExecDocuments::at(std::int64_t handle) const {
    const auto found = handles.find(static_cast<std::uint32_t>(handle));
    if (handle < 0 || handle > UINT32_MAX || found == handles.end())
        throw ExecFault(fmt::format("no open document {}", handle));
    return *open.find({found->second, kInvalidUID});
}

std::string ExecDocuments::save(std::int64_t handle, const std::string& path) {
    DocumentModel& document = at(handle);
    require(path.empty() ? open.documentSave(document.ref()) : open.documentSaveAs(document.ref(), path), path);
    return path.empty() ? document.documentFolder() + "/" + document.documentName() : path;
}

void ExecDocuments::close(std::int64_t handle) {
    require(open.documentClose(at(handle).ref()), {});
    handles.erase(static_cast<std::uint32_t>(handle));
}

void ExecDocuments::bringToFront(std::int64_t handle) {
    open.bringToFront(at(handle).ref());
}

std::uint32_t ExecDocuments::front() const {
    return handleOf(open.frontDocument().database);
}

std::uint32_t ExecDocuments::handleOf(const Document* document) const {
    const auto found = std::find_if(handles.begin(), handles.end(),
                                    [document](const auto& entry) { return entry.second == document; });
    return found == handles.end() ? 0 : found->first;
}

}  // namespace tarnova
