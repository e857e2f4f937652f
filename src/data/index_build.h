// The stages of an index build. Own to this folder; tests set the limits low to reach what only large files reach.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "data/key_index.h"
#include "data/record_parser.h"

namespace tarnova {

/// Sizes of a build's buffers. Together they stay below 48 MiB, whatever the size of the data file.
struct indexBuildLimits {
    std::size_t batchBytes = 16 << 20;         // entries sorted at a time; at least entryMaxSize
    std::size_t readBytes = 1 << 20;           // of the data file
    std::size_t writeBytes = 256 << 10;        // in front of each file that is written
    std::size_t mergeWays = 64;                // runs merged at a time, at least 2
    std::size_t mergeBytes = 64 << 10;         // of each of them; at least entryMaxSize
    std::uint32_t windowRecords = 1u << 20;    // part of the record number table that is in memory
    std::size_t windowBufferBytes = 32 << 10;  // tuples gathered for each other part; at least one
};

/// Builds the index at `indexPath` for `dataFilePath`, beside it under temporary names, and puts it in place when it is
/// whole. `progress` shows the progress window. Errors: as keyIndexBuild.
[[nodiscard]] errorWord buildIndexFile(const recordDefRec& definition, const char* indexPath, const char* dataFilePath,
                                       const indexBuildLimits& limits, bool progress, errorWord priorError);

}  // namespace tarnova
