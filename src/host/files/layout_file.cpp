#include "host/files/layout_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>

#include "host/files/json_tree.h"
#include "host/files/layout_fault.h"
#include "host/files/layout_reader.h"
#include "host/files/layout_writer.h"

namespace tarnova {

namespace {

std::string systemReason() {
    return std::strerror(errno);
}

/// A file that closes itself.
class OpenFile {
 public:
    OpenFile(const std::string& path, int flags) : descriptor(::open(path.c_str(), flags | O_CLOEXEC, 0666)) {}
    ~OpenFile() { close(); }
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;
    [[nodiscard]] int number() const { return descriptor; }
    bool close() {
        const int closed = descriptor;
        descriptor = -1;
        return closed < 0 || ::close(closed) == 0;
    }

 private:
    int descriptor;
};

/// False, with errno set, when the file can't be read.
bool readWhole(int file, std::string& out) {
    char piece[65536];
    for (;;) {
        const ssize_t count = ::read(file, piece, sizeof piece);
        if (count == 0) return true;
        if (count < 0 && errno != EINTR) return false;
        if (count > 0) out.append(piece, static_cast<std::size_t>(count));
        if (out.size() > jsonBytesLimit) {
            errno = EFBIG;
            return false;
        }
    }
}

bool writeWhole(int file, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t count = ::write(file, bytes.data(), bytes.size());
        if (count < 0 && errno != EINTR) return false;
        if (count > 0) bytes.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
}

/// Puts the bytes under a name of their own in the folder, safe on the disk.
bool writeNewFile(const std::string& path, std::string_view bytes) {
    OpenFile file(path, O_WRONLY | O_CREAT | O_EXCL);
    return file.number() >= 0 && writeWhole(file.number(), bytes) && ::fsync(file.number()) == 0 && file.close();
}

/// So that the new name outlives a crash; a folder that can't be synced doesn't undo the save.
void syncFolder(const std::string& folder) {
    const OpenFile opened(folder, O_RDONLY | O_DIRECTORY);
    if (opened.number() >= 0) static_cast<void>(::fsync(opened.number()));
}

bool replaceFile(const std::string& folder, const std::string& path, std::string_view bytes, std::string& reason) {
    const std::string temporary = path + "." + std::to_string(::getpid()) + ".new";
    ::unlink(temporary.c_str());  // left by a process that had the same number
    if (writeNewFile(temporary, bytes) && ::rename(temporary.c_str(), path.c_str()) == 0) {
        syncFolder(folder);
        return true;
    }
    reason = systemReason();
    ::unlink(temporary.c_str());
    return false;
}

/// The folder of a file, from the root.
std::string folderOf(const std::string& path) {
    std::error_code code;
    return std::filesystem::absolute(path, code).parent_path().string();
}

void setLocationOf(DocumentModel& document, const std::string& path) {
    document.setLocation(folderOf(path), std::filesystem::path(path).filename().string());
}

}  // namespace

std::unique_ptr<DocumentModel> readLayout(std::string_view bytes, layoutError& error, const std::string& folder) {
    error = {};
    try {
        const JsonTree tree(bytes);
        return LayoutReader(tree, folder).read();
    } catch (const LayoutFault& fault) {
        error = {fault.what(), fault.line()};
    } catch (const std::bad_alloc&) {
        error = {"There isn't enough memory for this layout.", 0};
    }
    return nullptr;
}

std::unique_ptr<DocumentModel> openLayout(const std::string& path, layoutError& error) {
    error = {};
    const OpenFile file(path, O_RDONLY);
    struct stat status {};
    if (file.number() < 0 || ::fstat(file.number(), &status) != 0) {
        error.message = "The layout \"" + path + "\" can't be opened: " + systemReason() + ".";
        return nullptr;
    }
    if (!S_ISREG(status.st_mode)) {
        error.message = "\"" + path + "\" is no file that could hold a layout.";
        return nullptr;
    }
    std::string bytes;
    if (!readWhole(file.number(), bytes)) {
        error.message = "The layout \"" + path + "\" can't be read: " + systemReason() + ".";
        return nullptr;
    }
    std::unique_ptr<DocumentModel> document = readLayout(bytes, error, folderOf(path));
    if (document != nullptr) setLocationOf(*document, path);
    return document;
}

std::string writeLayout(const DocumentModel& document, const std::string& folder) {
    return LayoutWriter(document, folder).write();
}

bool saveLayout(DocumentModel& document, const std::string& path, layoutError& error) {
    if (!saveLayoutCopy(document, path, error)) return false;
    setLocationOf(document, path);
    return true;
}

bool saveLayoutCopy(const DocumentModel& document, const std::string& path, layoutError& error) {
    error = {};
    if (document.nextUid() > fileUidLimit) {
        error.message = "The document has used up the UIDs that a layout file can hold.";
        return false;
    }
    LayoutWriter writer(document, folderOf(path));
    const std::string bytes = writer.write();
    if (bytes.size() > jsonBytesLimit || writer.isTooDeep()) {
        error.message = bytes.size() > jsonBytesLimit
                            ? "The document is too large for a layout file, which has at most 1 GiB."
                            : "The document has groups or items in texts that are nested too deep for a layout file.";
        return false;
    }
    std::string reason;
    const std::string folder = std::filesystem::path(path).parent_path().string();
    if (!replaceFile(folder.empty() ? "." : folder, path, bytes, reason)) {
        error.message = "The layout \"" + path + "\" can't be written: " + reason + ".";
        return false;
    }
    return true;
}

}  // namespace tarnova
