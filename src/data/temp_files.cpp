#include "data/temp_files.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include "data/error_place.h"
#include "data/key_index.h"

namespace tarnova {

namespace {

constexpr const char* tempNames[] = {tempRunTable, tempRuns,  tempMergedRuns, tempKeyTable,   tempKeyGroups,
                                     tempEntries,  tempIndex, tempTuples,     tempTupleTable, tempMergedTuples};

}  // namespace

BuildFolder::~BuildFolder() {
    if (lock_ < 0) return;
    static_cast<void>(removeFiles());
    ::close(lock_);
}

errorWord BuildFolder::enter(const char* indexPath, errorWord priorError) {
    if (priorError != 0) return priorError;
    const std::string path(indexPath);
    const std::size_t slash = path.rfind('/');
    if (slash == std::string::npos || slash + 1 == path.size()) return errorAt(errTempFileName, path);
    folder_ = path.substr(0, slash + 1);
    const std::string lockPath = folder_ + buildLockName;
    lock_ = ::open(lockPath.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, S_IRUSR | S_IWUSR);
    if (lock_ < 0 || ::flock(lock_, LOCK_EX) != 0) return errorAt(errTempFileCreate, lockPath);
    return removeFiles();
}

errorWord BuildFolder::removeFiles() const {
    for (const char* name : tempNames)
        if (fileDelete(path(name).c_str(), nullptr, 0) != 0) return errorAt(errTempFileDelete, path(name));
    return 0;
}

errorWord BlockWriter::open(const std::string& path, std::size_t bufferBytes, errorWord writeError,
                            errorWord priorError) {
    if (priorError != 0) return priorError;
    path_ = path;
    writeError_ = writeError;
    buffer_.reset(static_cast<std::uint8_t*>(newBlock(bufferBytes)));
    if (buffer_ == nullptr) return errFileBuffer;
    capacity_ = bufferBytes;
    errorWord err = fileErrorAs(fileDelete(path.c_str(), nullptr, 0), errTempFileDelete, path);
    if (err != 0) return err;
    err = fileCreate(path.c_str(), 0);
    err = fileOpen(path.c_str(), fileWriteOnly, &file_, nullptr, err);
    return fileErrorAs(err, errTempFileCreate, path);
}

void BlockWriter::writeOut(const void* bytes, std::size_t count) {
    if (error_ == 0 && fileWrite(file_, bytes, &count, nullptr, 0) != 0) error_ = errorAt(writeError_, path_);
}

void BlockWriter::writeLarge(const void* bytes, std::size_t count) {
    writeOut(buffer_.get(), used_);
    used_ = 0;
    written_ += count;
    if (count > capacity_) {
        writeOut(bytes, count);
        return;
    }
    std::memcpy(buffer_.get(), bytes, count);
    used_ = count;
}

errorWord BlockWriter::finish(errorWord priorError) {
    if (used_ > 0) writeOut(buffer_.get(), used_);
    used_ = 0;
    fileClose(file_);
    file_ = noFile;
    buffer_.reset();
    capacity_ = 0;
    return priorError != 0 ? priorError : error_;
}

}  // namespace tarnova
