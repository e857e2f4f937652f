// Sorting a file's entries by key: batches that fit into memory are sorted and written as runs, and the runs are
// merged. Entries of equal keys stay in file order. Own to this folder.
#pragma once

#include <cstdint>
#include <vector>

#include "data/index_build.h"
#include "data/record_entry.h"
#include "data/temp_files.h"

namespace tarnova {

/// What decides an entry's place: the first 16 bytes of its key as two numbers, and where to find the rest.
struct entryReference {
    std::uint64_t prefix;
    std::uint64_t secondPrefix;
    std::uint32_t offset;  // in the batch
    std::uint32_t keyLength;
};

/// One run of sorted entries in tempRuns.
struct entryRun {
    std::uint64_t offset;
    std::uint64_t size;  // bytes
};

inline std::string_view keyOfEntry(const std::uint8_t* entry) {
    return pstrView(entry + entryKeyAt);
}

/// The entries of one data file in key order, once `collect` has gone over it. The last batch stays in memory: a small
/// file never touches a temporary file.
class EntryRuns {
 public:
    EntryRuns(const BuildFolder& folder, const indexBuildLimits& limits, bool caseSensitive)
        : folder_(folder), limits_(limits), caseSensitive_(caseSensitive) {}

    /// Parses the file into sorted runs. Errors: errFileBuffer, errDataRead, errEntryWrite, those of parseRecords.
    [[nodiscard]] errorWord collect(const parserConfig& config, const char* dataFilePath, bool isUtf8,
                                    errorWord priorError);
    /// Merges runs until so few are left that EntryMerge takes them at once. Errors: errMergeRead, errMergeWrite,
    /// errIndexExchange, errFileBuffer.
    [[nodiscard]] errorWord mergeToFew(errorWord priorError);

    std::uint32_t recordCount() const { return recordCount_; }
    std::size_t runCount() const { return runs_.size(); }

 private:
    friend class EntryMerge;

    errorWord makeBuffers();
    errorWord parseFile(const parserConfig& config, fileHandle file, bool isUtf8);
    errorWord refill(fileHandle file, parserInput& input);
    void sortBatch();
    errorWord writeBatch();
    bool continuesRun() const;
    bool sortsBefore(const entryReference& a, const entryReference& b) const;
    errorWord mergePass();

    const BuildFolder& folder_;
    const indexBuildLimits& limits_;
    const bool caseSensitive_;
    blockPtr<std::uint8_t> readBuffer_, batchBytes_;
    blockPtr<std::uint32_t> batchOffsets_;
    blockPtr<entryReference> order_;  // the batch, sorted
    entryBatch batch_{};
    BlockWriter runWriter_;
    bool runsOpen_ = false;
    Str64 lastKey_{};  // of the run that is open
    std::vector<entryRun> runs_;
    std::uint32_t recordCount_ = 0;
};

/// Gives entries of several runs in order.
class EntryMerge {
 public:
    explicit EntryMerge(const EntryRuns& runs) : owner_(runs) {}
    EntryMerge(const EntryMerge&) = delete;
    EntryMerge& operator=(const EntryMerge&) = delete;
    ~EntryMerge() { fileClose(file_); }

    /// Takes runs [first, limit) and, with `withBatch`, the batch in memory behind them. `readError` is what a failed
    /// read comes to.
    [[nodiscard]] errorWord open(std::size_t first, std::size_t limit, bool withBatch, errorWord readError,
                                 errorWord priorError);
    /// The next entry, valid until the next call; null at the end and after an error.
    const std::uint8_t* next();
    errorWord error() const { return error_; }

 private:
    // One run that is being read, or the batch. They stand in file order, which decides between equal keys.
    struct source {
        const std::uint8_t* entry = nullptr;
        std::uint64_t prefix = 0;
        blockPtr<std::uint8_t> buffer;  // null for the batch
        std::size_t at = 0, filled = 0;
        std::uint64_t fileAt = 0, fileLeft = 0;
        std::size_t batchAt = 0;
    };

    bool advance(source& from);
    bool fill(source& from);
    bool comesFirst(std::size_t a, std::size_t b) const;
    void sink(std::size_t at);

    const EntryRuns& owner_;
    fileHandle file_ = noFile;
    std::vector<source> sources_;
    std::vector<std::size_t> heap_;  // of indexes into sources_
    bool started_ = false;
    errorWord readError_ = 0;
    errorWord error_ = 0;
};

}  // namespace tarnova
