// The temporary files of an index build. Own to this folder.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "engine/toolkit/files.h"
#include "engine/toolkit/memory.h"
#include "engine/toolkit/types.h"

namespace tarnova {

// Names in the folder of the index. Tables of runs are small enough to stay in memory; the names that they had are
// still cleared away.
inline constexpr const char* tempRunTable = "idx1.tmp";
inline constexpr const char* tempRuns = "idx2.tmp";
inline constexpr const char* tempMergedRuns = "idxout.tmp";
inline constexpr const char* tempKeyTable = "km.tmp";
inline constexpr const char* tempKeyGroups = "kg.tmp";
inline constexpr const char* tempEntries = "ri.tmp";
inline constexpr const char* tempIndex = "ix.tmp";
inline constexpr const char* tempTuples = "idx3.tmp";
inline constexpr const char* tempTupleTable = "idx4.tmp";
inline constexpr const char* tempMergedTuples = "sidxout.tmp";
inline constexpr const char* buildLockName = ".lock";

/// Holds the right to build in a folder, and its temporary files, which go with it.
class BuildFolder {
 public:
    BuildFolder() = default;
    BuildFolder(const BuildFolder&) = delete;
    BuildFolder& operator=(const BuildFolder&) = delete;
    ~BuildFolder();

    /// Waits until no other build is under way in the folder of `indexPath`, then clears what an earlier one left.
    /// Errors: errTempFileName, errTempFileCreate, errTempFileDelete.
    [[nodiscard]] errorWord enter(const char* indexPath, errorWord priorError);

    std::string path(const char* name) const { return folder_ + name; }

 private:
    errorWord removeFiles() const;

    std::string folder_;  // with its separator; empty before enter
    int lock_ = -1;
};

/// Writes a temporary file through a buffer. The first failure stays; `finish` tells it.
class BlockWriter {
 public:
    BlockWriter() = default;
    BlockWriter(const BlockWriter&) = delete;
    BlockWriter& operator=(const BlockWriter&) = delete;
    ~BlockWriter() { fileClose(file_); }

    /// Creates the file. `writeError` is what a failed write comes to. Errors: errTempFileCreate, errTempFileDelete,
    /// errFileBuffer.
    [[nodiscard]] errorWord open(const std::string& path, std::size_t bufferBytes, errorWord writeError,
                                 errorWord priorError);

    void write(const void* bytes, std::size_t count) {
        if (capacity_ - used_ < count) {
            writeLarge(bytes, count);
            return;
        }
        std::memcpy(buffer_.get() + used_, bytes, count);
        used_ += count;
        written_ += count;
    }
    /// Bytes so far, those in the buffer included.
    std::uint64_t written() const { return written_; }

    /// Flushes and closes.
    [[nodiscard]] errorWord finish(errorWord priorError);

 private:
    void writeLarge(const void* bytes, std::size_t count);
    void writeOut(const void* bytes, std::size_t count);

    std::string path_;
    fileHandle file_ = noFile;
    blockPtr<std::uint8_t> buffer_;
    std::size_t capacity_ = 0, used_ = 0;
    std::uint64_t written_ = 0;
    errorWord writeError_ = 0;
    errorWord error_ = 0;
};

}  // namespace tarnova
