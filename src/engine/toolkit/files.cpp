#include "engine/toolkit/files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>

namespace tarnova {

namespace {

void noteErrno(std::uint16_t* outErrno, int number) {
    if (outErrno != nullptr) *outErrno = static_cast<std::uint16_t>(number);
}

// The result of a step of the system, with its errno.
errorWord checked(bool good, errorWord error, std::uint16_t* outErrno) {
    const int number = good ? 0 : errno;
    noteErrno(outErrno, number);
    return good ? errorWord{0} : error;
}

bool plainFileInfo(const char* path, struct stat& info) {
    return path != nullptr && *path != '\0' && ::stat(path, &info) == 0 && !S_ISDIR(info.st_mode);
}

// A descriptor above 0, so that 0 can mean "no file" even where standard input is closed.
int openAboveZero(const char* path, int flags) {
    const int descriptor = ::open(path, flags | O_CLOEXEC, S_IRUSR | S_IWUSR);
    if (descriptor != 0) return descriptor;
    const int moved = ::fcntl(descriptor, F_DUPFD_CLOEXEC, 1);
    ::close(descriptor);
    return moved;
}

int openFlagsOf(std::int16_t mode) {
    switch (mode) {
        case 0:
        case 3:
            return O_RDWR;
        case fileReadOnly:
            return O_RDONLY;
        case fileWriteOnly:
            return O_WRONLY;
        default:
            return -1;
    }
}

bool isFolderDescriptor(int descriptor) {
    struct stat info {};
    return ::fstat(descriptor, &info) == 0 && S_ISDIR(info.st_mode);
}

std::string besidePath(const char* path, std::string_view name) {
    const std::string_view whole = path;
    return std::string(whole.substr(0, whole.rfind('/') + 1)).append(name);
}

bool renamed(const char* from, const char* to) {
    return std::rename(from, to) == 0;
}

// A new file that everybody may use as far as the file at `target` or, without one, the user's mask lets them.
int createBeside(const char* temporary, const char* target) {
    const int descriptor = ::open(temporary, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    struct stat info {};
    if (descriptor >= 0 && plainFileInfo(target, info)) ::fchmod(descriptor, info.st_mode & 07777);
    return descriptor;
}

}  // namespace

errorWord fileCreate(const char* path, errorWord priorError) {
    if (priorError != 0) return priorError;
    const int descriptor = openAboveZero(path, O_RDWR | O_CREAT | O_EXCL);
    if (descriptor < 0) return errFileCreate;
    ::close(descriptor);
    return 0;
}

errorWord fileOpen(const char* path, std::int16_t mode, fileHandle* outHandle, std::uint16_t* outErrno,
                   errorWord priorError) {
    if (priorError != 0) return priorError;
    *outHandle = noFile;
    const int flags = openFlagsOf(mode);
    int descriptor = flags == -1 ? -1 : openAboveZero(path, flags);
    if (flags == -1) errno = EINVAL;
    if (descriptor > 0 && isFolderDescriptor(descriptor)) {
        ::close(descriptor);
        descriptor = -1;
        errno = EISDIR;
    }
    if (descriptor > 0) *outHandle = descriptor;
    return checked(descriptor > 0, errFileOpen, outErrno);
}

void fileClose(fileHandle handle) {
    if (handle >= 1) ::close(handle);
}

errorWord fileRead(fileHandle handle, void* buffer, std::size_t* inoutCount, std::uint16_t* outErrno,
                   errorWord priorError) {
    if (priorError != 0) return priorError;
    auto* const bytes = static_cast<char*>(buffer);
    const std::size_t wanted = *inoutCount;
    std::size_t done = 0;
    ssize_t got = 1;
    while (done < wanted && got > 0) {
        got = ::read(handle, bytes + done, std::min(wanted - done, filePieceBytes));
        if (got < 0 && errno == EINTR)
            got = 1;
        else if (got > 0)
            done += static_cast<std::size_t>(got);
    }
    *inoutCount = done;
    const errorWord err = checked(got >= 0, errFileRead, outErrno);
    if (err == 0 && done < wanted) noteErrno(outErrno, fileAtEnd);
    return err;
}

errorWord fileWrite(fileHandle handle, const void* buffer, std::size_t* inoutCount, std::uint16_t* outErrno,
                    errorWord priorError) {
    if (priorError != 0) return priorError;
    const auto* const bytes = static_cast<const char*>(buffer);
    const std::size_t wanted = *inoutCount;
    std::size_t done = 0;
    bool good = true;
    while (done < wanted && good) {
        const std::size_t piece = std::min(wanted - done, filePieceBytes);
        const ssize_t put = ::write(handle, bytes + done, piece);
        if (put < 0 && errno == EINTR) continue;
        if (put > 0) done += static_cast<std::size_t>(put);
        good = put == static_cast<ssize_t>(piece);
    }
    *inoutCount = done;
    return checked(good, errFileWrite, outErrno);
}

errorWord fileSeek(fileHandle handle, std::int16_t from, std::int64_t offset, std::uint16_t* outErrno,
                   errorWord priorError) {
    if (priorError != 0) return priorError;
    constexpr int origins[] = {SEEK_SET, SEEK_SET, SEEK_END, SEEK_CUR};
    const bool known = from >= 0 && from <= fileFromHere;
    if (!known) errno = EINVAL;
    return checked(known && ::lseek(handle, offset, origins[from]) >= 0, errFileSeek, outErrno);
}

errorWord filePosition(fileHandle handle, std::int64_t* out, std::uint16_t* outErrno, errorWord priorError) {
    if (priorError != 0) return priorError;
    const off_t position = ::lseek(handle, 0, SEEK_CUR);
    if (position >= 0) *out = position;
    return checked(position >= 0, errFilePosition, outErrno);
}

errorWord fileSize(fileHandle handle, std::int64_t* out, std::uint16_t* outErrno, errorWord priorError) {
    if (priorError != 0) return priorError;
    struct stat info {};
    const bool good = ::fstat(handle, &info) == 0;
    if (good) *out = info.st_size;
    return checked(good, errFileSize, outErrno);
}

errorWord fileSetSize(fileHandle handle, std::int64_t size, std::uint16_t* outErrno, errorWord priorError) {
    if (priorError != 0) return priorError;
    return checked(::ftruncate(handle, size) == 0, errFileSetSize, outErrno);
}

errorWord fileDelete(const char* path, std::uint16_t* outErrno, errorWord priorError) {
    if (priorError != 0) return priorError;
    const errorWord err = checked(::unlink(path) == 0, errFileDelete, outErrno);
    return err != 0 && errno == ENOENT ? errorWord{0} : err;
}

std::uint16_t fileIsPlain(const char* path) {
    struct stat info {};
    return plainFileInfo(path, info) ? 1 : 0;
}

errorWord fileModDate(const char* path, std::uint32_t* outSeconds, errorWord priorError) {
    if (priorError != 0) return priorError;
    struct stat info {};
    if (!plainFileInfo(path, info)) return errFileModDate;
    *outSeconds = static_cast<std::uint32_t>(info.st_mtime);
    return 0;
}

std::int64_t fileSizeOfPath(const char* path, std::uint16_t* outErrno) {
    fileHandle file = noFile;
    std::int64_t size = 0;
    errorWord err = fileOpen(path, fileReadOnly, &file, outErrno, 0);
    err = fileSize(file, &size, outErrno, err);
    fileClose(file);
    return err == 0 ? size : 0;
}

errorWord fileExchange(const char* a, const char* b, errorWord priorError) {
    if (priorError != 0) return priorError;
    const std::string temporary = besidePath(a, exchangeFileName);
    if (fileDelete(temporary.c_str(), nullptr, 0) != 0) return errFileExchange;
    // One step of the system where it offers one: then no moment exists at which either name is missing.
    if (::renameat2(AT_FDCWD, a, AT_FDCWD, b, RENAME_EXCHANGE) == 0) return 0;
    return errno == EINVAL || errno == ENOSYS ? fileExchangeByRenames(a, b, 0) : errFileExchange;
}

errorWord fileExchangeByRenames(const char* a, const char* b, errorWord priorError) {
    if (priorError != 0) return priorError;
    const std::string temporary = besidePath(a, exchangeFileName);
    if (fileDelete(temporary.c_str(), nullptr, 0) != 0) return errFileExchange;
    if (!renamed(a, temporary.c_str())) return errFileExchange;
    if (!renamed(b, a)) {
        renamed(temporary.c_str(), a);
        return errFileExchange;
    }
    if (renamed(temporary.c_str(), b)) return 0;
    if (renamed(a, b)) renamed(temporary.c_str(), a);
    return errFileExchange;
}

errorWord fileReadWhole(const char* path, std::string& out, std::size_t maxBytes, errorWord priorError) {
    if (priorError != 0) return priorError;
    fileHandle file = noFile;
    std::int64_t size = 0;
    errorWord err = fileOpen(path, fileReadOnly, &file, nullptr, 0);
    err = fileSize(file, &size, nullptr, err);
    if (err == 0 && static_cast<std::uint64_t>(size) > maxBytes) err = errFileRead;
    std::string bytes;
    if (err == 0) bytes.resize(static_cast<std::size_t>(size));
    std::size_t count = bytes.size();
    err = fileRead(file, bytes.data(), &count, nullptr, err);
    fileClose(file);
    if (err != 0) return err;
    bytes.resize(count);
    out = std::move(bytes);
    return 0;
}

errorWord fileWriteWhole(const char* path, std::string_view bytes, errorWord priorError) {
    if (priorError != 0) return priorError;
    // Of this process alone: two programs that write the file at a time must not meet in it.
    const std::string temporary = std::string(path) + "." + std::to_string(::getpid()) + ".new";
    errorWord err = fileDelete(temporary.c_str(), nullptr, 0);
    if (err != 0) return err;
    const int descriptor = createBeside(temporary.c_str(), path);
    if (descriptor < 0) return errFileCreate;
    std::size_t count = bytes.size();
    err = fileWrite(descriptor, bytes.data(), &count, nullptr, 0);
    if (::close(descriptor) != 0 && err == 0) err = errFileWrite;
    if (err == 0 && !renamed(temporary.c_str(), path)) err = errFileExchange;
    if (err != 0) ::unlink(temporary.c_str());
    return err;
}

void macPathToPosix(const char* in, char* out) {
    std::string path = in;
    if (path.starts_with('/')) {
        constexpr std::string_view volumes = "/Volumes/";
        path.erase(0, path.starts_with(volumes) ? volumes.size() : 1);
        const std::size_t slash = path.find('/');
        path.insert(slash == std::string::npos ? path.size() : slash, 1, ':');
    }
    if (path.size() >= pathCapacity) path.clear();
    std::memcpy(out, path.c_str(), path.size() + 1);
}

}  // namespace tarnova
