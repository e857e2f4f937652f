// Reading an index takes all its sections and the data file into memory. Memory that we read into, and not a mapping of
// the file: a data file that somebody shortens while it is mapped would end the program at the next fetch.

#include <sys/mman.h>

#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>

#include "data/error_place.h"
#include "data/key_index.h"
#include "data/record_entry.h"

namespace tarnova {

namespace {

constexpr std::size_t largePagesMaxBytes = 32 << 20;

enum class loadResult { done, damaged };

// Fetches jump about in these blocks; large pages spare most of them a walk through the page tables. Getting large
// pages costs more than that for the largest blocks.
void adviseLargePages(void* block, std::size_t size) {
    if (size > largePagesMaxBytes) return;
    constexpr std::uintptr_t largePage = 2 << 20;
    const std::uintptr_t start = (reinterpret_cast<std::uintptr_t>(block) + largePage - 1) & ~(largePage - 1);
    const std::uintptr_t limit = (reinterpret_cast<std::uintptr_t>(block) + size) & ~(largePage - 1);
    if (start < limit) static_cast<void>(::madvise(reinterpret_cast<void*>(start), limit - start, MADV_HUGEPAGE));
}

// A block with `size` bytes of the file from `offset` on, null for a size of 0. The file has been found long enough, so
// that a short read is a read error.
errorWord readSection(fileHandle file, std::int64_t offset, std::uint32_t size, std::uint8_t*& block,
                      errorWord memoryError, errorWord readError) {
    if (size == 0) return 0;
    block = static_cast<std::uint8_t*>(newBlock(size));
    if (block == nullptr) return memoryError;
    adviseLargePages(block, size);
    std::size_t count = size;
    errorWord err = fileSeek(file, fileFromStart, offset, nullptr, 0);
    err = fileRead(file, block, &count, nullptr, err);
    return err == 0 && count == size ? errorWord{0} : readError;
}

bool sectionFits(const indexSection& section, std::int64_t fileBytes) {
    return std::int64_t{section.offset} + section.size <= fileBytes;
}

bool headerFits(const indexHeader& header, std::int64_t fileBytes) {
    return sectionFits(header.keyTable, fileBytes) && sectionFits(header.keyGroups, fileBytes) &&
           sectionFits(header.entries, fileBytes) && sectionFits(header.numberTable, fileBytes) &&
           header.keyTable.size % sizeof(indexSection) == 0 && header.numberTable.size % sizeof(numberTableEntry) == 0;
}

errorWord readSections(keyIndexRec& index, errorWord priorError) {
    if (priorError != 0) return priorError;
    const indexHeader& header = index.header;
    struct sectionRow {
        const indexSection& section;
        std::uint8_t*& block;
        errorWord memoryError, readError;
    };
    const sectionRow rows[] = {
        {header.keyTable, index.keyTable, errKeyTableMemory, errKeyTableRead},
        {header.keyGroups, index.keyGroups, errKeyGroupsMemory, errKeyGroupsRead},
        {header.entries, index.entries, errEntriesMemory, errEntriesRead},
        {header.numberTable, index.numberTable, errNumberTableMemory, errNumberTableRead},
    };
    for (const sectionRow& row : rows) {
        const errorWord err =
            readSection(index.file, row.section.offset, row.section.size, row.block, row.memoryError, row.readError);
        if (err != 0) return err;
    }
    return 0;
}

// Checks that each key has a group record inside the key groups, and that this names entries inside the entries; takes
// the keys' prefixes and the groups' starts on the way.
bool keysFit(keyIndexRec& index, bool caseSensitive) {
    const indexHeader& header = index.header;
    for (std::uint32_t i = 0; i < keyIndexKeyCount(index); ++i) {
        const std::uint8_t* const row = index.keyTable + std::size_t{i} * sizeof(indexSection);
        const std::uint32_t offset = load32(row), length = load32(row + 4);
        if (offset > header.keyGroups.size || length > header.keyGroups.size - offset || length < 9) return false;
        const std::uint8_t* const group = index.keyGroups + offset;
        const std::uint32_t entriesAt = load32(group), entriesSize = load32(group + 4);
        if (entriesAt > header.entries.size || entriesSize > header.entries.size - entriesAt) return false;
        if (group[8] > length - 9) return false;
        index.keyPrefixes[i] = keyPrefixOf(pstrView(group + 8), caseSensitive);
        index.groupStarts[i] = entriesAt;
    }
    return true;
}

errorWord checkKeys(keyIndexRec& index, loadResult& result, errorWord priorError) {
    if (priorError != 0 || index.header.keyTable.size == 0) return priorError;
    index.keyPrefixes =
        static_cast<std::uint64_t*>(newBlock(std::size_t{keyIndexKeyCount(index)} * sizeof(std::uint64_t)));
    index.groupStarts =
        static_cast<std::uint32_t*>(newBlock(std::size_t{keyIndexKeyCount(index)} * sizeof(std::uint32_t)));
    if (index.keyPrefixes == nullptr || index.groupStarts == nullptr) return errKeyTableMemory;
    adviseLargePages(index.keyPrefixes, blockSize(index.keyPrefixes));
    adviseLargePages(index.groupStarts, blockSize(index.groupStarts));
    const auto* image = reinterpret_cast<const recordDefRec*>(index.header.definitionImage);
    if (!keysFit(index, image->useKeyfieldCase != 0)) result = loadResult::damaged;
    return 0;
}

errorWord readDataFile(keyIndexRec& index, errorWord priorError) {
    if (priorError != 0) return priorError;
    const char* const path = index.header.dataFilePath;
    fileHandle file = noFile;
    std::int64_t size = 0;
    errorWord err = fileOpen(path, fileReadOnly, &file, nullptr, 0);
    err = fileSize(file, &size, nullptr, err);
    if (err == 0 && size > std::numeric_limits<std::uint32_t>::max()) err = errFilePositioning;
    if (err == 0) {
        index.dataSize = static_cast<std::uint32_t>(size);
        err = readSection(file, 0, index.dataSize, index.data, errDataMemory, errDataLoad);
    } else if (err != errFilePositioning) {
        err = errDataLoad;
    }
    fileClose(file);
    return errorAt(err, path);
}

errorWord loadOpenIndex(keyIndexRec& index, std::int64_t fileBytes, const char* path, loadResult& result) {
    result = headerFits(index.header, fileBytes) ? loadResult::done : loadResult::damaged;
    if (result == loadResult::damaged) return 0;
    errorWord err = readSections(index, 0);
    err = errorAt(checkKeys(index, result, err), path);
    return result == loadResult::damaged ? err : readDataFile(index, err);
}

bool hasIndexTag(const indexHeader& header) {
    return pstrView(header.tag) == indexTag;
}

}  // namespace

errorWord readIndexHeader(const char* indexPath, indexHeader& header, std::size_t& got, errorWord priorError) {
    if (priorError != 0) return priorError;
    got = 0;
    std::memset(&header, 0, sizeof header);
    fileHandle file = noFile;
    if (fileOpen(indexPath, fileReadOnly, &file, nullptr, 0) != 0) return 0;
    got = sizeof header;
    const errorWord err = fileRead(file, &header, &got, nullptr, 0);
    fileClose(file);
    header.dataFilePath[pathCapacity - 1] = 0;
    return fileErrorAs(err, errIndexHeaderRead, indexPath);
}

errorWord keyIndexLoad(dataSourceRec& source, const recordDefRec& definition, errorWord priorError) {
    if (priorError != 0) return priorError;
    keyIndexClose(source);
    fileHandle file = noFile;
    if (fileOpen(source.indexPath, fileReadOnly, &file, nullptr, 0) != 0) return 0;
    auto* const index = static_cast<keyIndexRec*>(newBlockClear(sizeof(keyIndexRec)));
    if (index == nullptr) {
        fileClose(file);
        return errIndexMemory;
    }
    source.keyIndex = index;
    index->file = file;

    std::size_t got = indexHeaderSize;
    std::int64_t fileBytes = 0;
    errorWord err = fileRead(file, &index->header, &got, nullptr, 0);
    err = fileErrorAs(fileSize(file, &fileBytes, nullptr, err), errIndexHeaderRead, source.indexPath);
    index->header.dataFilePath[pathCapacity - 1] = 0;

    loadResult result = loadResult::damaged;
    if (err == 0 && got == indexHeaderSize && hasIndexTag(index->header))
        err = loadOpenIndex(*index, fileBytes, source.indexPath, result);
    if (err != 0 || result == loadResult::damaged) {
        keyIndexClose(source);
        return err;
    }
    std::memcpy(&index->liveDefinition, &definition, sizeof definition);
    return 0;
}

void keyIndexClose(dataSourceRec& source) {
    keyIndexRec* const index = source.keyIndex;
    if (index == nullptr) return;
    source.keyIndex = nullptr;
    for (void* block :
         {static_cast<void*>(index->keyTable), static_cast<void*>(index->keyGroups), static_cast<void*>(index->entries),
          static_cast<void*>(index->numberTable), static_cast<void*>(index->keyPrefixes),
          static_cast<void*>(index->groupStarts), static_cast<void*>(index->data)})
        freeBlock(block);
    fileClose(index->file);
    freeBlock(index);
}

}  // namespace tarnova
