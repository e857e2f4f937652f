// The record number table under construction. Entries come in key order and are wanted in record order; record numbers
// are dense, so no sort is needed: the table is filled window by window. Own to this folder.
#pragma once

#include <cstdint>
#include <vector>

#include "data/index_build.h"
#include "data/temp_files.h"

namespace tarnova {

class NumberTable {
 public:
    NumberTable(const BuildFolder& folder, const indexBuildLimits& limits, std::uint32_t recordCount)
        : folder_(folder), limits_(limits), recordCount_(recordCount) {}

    /// Errors: errFileBuffer, those of BlockWriter::open.
    [[nodiscard]] errorWord begin(errorWord priorError);
    void add(std::uint32_t recordNumber, numberTableEntry entry);
    /// Writes the table in record order. Errors: errTupleWrite, errTupleRead, errFileBuffer.
    [[nodiscard]] errorWord writeTo(BlockWriter& out, errorWord priorError);

 private:
    struct tuple {
        std::uint32_t recordNumber;
        numberTableEntry entry;
    };
    // Tuples of one window that lie one behind the other in tempTuples.
    struct chunk {
        std::uint64_t offset;
        std::size_t count;
    };
    struct window {
        std::vector<tuple> gathered;
        std::vector<chunk> chunks;
    };

    bool isSmall() const { return recordCount_ <= limits_.windowRecords; }
    void writeChunk(window& into);
    errorWord scatter(const window& from, fileHandle file, std::uint32_t firstRecord);

    const BuildFolder& folder_;
    const indexBuildLimits& limits_;
    const std::uint32_t recordCount_;
    blockPtr<numberTableEntry> table_;  // one window
    std::vector<window> windows_;       // none when the whole table fits into one
    std::size_t windowTuples_ = 0;      // gathered before they are written
    BlockWriter tuples_;
};

}  // namespace tarnova
