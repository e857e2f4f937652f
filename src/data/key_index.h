// The key index: a file that says for each record of a data file where its bytes and fields lie, and for each distinct
// key which records have it. Built by one pass over the data file and an external sort; read whole into memory. The
// format stands in docs/index-format.md.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "data/data_source.h"
#include "data/record_parser.h"
#include "definitions/record_def.h"
#include "engine/toolkit/files.h"
#include "engine/toolkit/memory.h"
#include "engine/toolkit/types.h"

namespace tarnova {

inline constexpr char indexTag[] = "r14";
inline constexpr std::size_t indexHeaderSize = 75072;

inline constexpr errorWord errKeyTableRead = 1;
inline constexpr errorWord errKeyTableMemory = 2;
inline constexpr errorWord errKeyGroupsRead = 3;
inline constexpr errorWord errKeyGroupsMemory = 4;
inline constexpr errorWord errEntriesRead = 5;
inline constexpr errorWord errEntriesMemory = 6;
inline constexpr errorWord errDataLoad = 7;
inline constexpr errorWord errDataMemory = 8;
inline constexpr errorWord errIndexHeaderRead = 9;
inline constexpr errorWord errIndexMemory = 10;
inline constexpr errorWord errDataFileDate = 11;
inline constexpr errorWord errTempFileName = 12;
inline constexpr errorWord errEntryWrite = 15;
inline constexpr errorWord errRunTableWrite = 17;
inline constexpr errorWord errMergeRead = 18;
inline constexpr errorWord errMergeWrite = 21;
inline constexpr errorWord errGroupRead = 22;
inline constexpr errorWord errKeyTableWrite = 23;
inline constexpr errorWord errKeyGroupsWrite = 24;
inline constexpr errorWord errEntriesWrite = 25;
inline constexpr errorWord errSectionRead = 26;
inline constexpr errorWord errSectionWrite = 27;
inline constexpr errorWord errSectionBuffer = 28;
inline constexpr errorWord errIndexHeaderFill = 29;
inline constexpr errorWord errIndexHeaderWrite = 50;  // of a new, empty index
inline constexpr errorWord errIndexHeaderOpen = 51;
inline constexpr errorWord errHeaderBufferMemory = 110;
inline constexpr errorWord errIndexExchange = 119;
inline constexpr errorWord errTupleWrite = 170;
inline constexpr errorWord errTupleRead = 177;
inline constexpr errorWord errNumberTableWrite = 178;
inline constexpr errorWord errNumberTableRead = 180;
inline constexpr errorWord errNumberTableMemory = 181;
inline constexpr errorWord errTempFileCreate = 202;
inline constexpr errorWord errTempFileDelete = 203;

/// Place of a section in an index file, bytes from its start.
struct indexSection {
    std::uint32_t offset;
    std::uint32_t size;
};

/// The head of an index file, in machine byte order.
struct indexHeader {
    std::uint8_t tag[256];  // Pascal string; another one makes the file a placeholder
    char dataFilePath[pathCapacity];
    std::uint32_t dataFileDate;  // seconds; compared as signed
    std::uint16_t encoding;      // resolvedEightBit or resolvedUtf8
    std::uint16_t zero;
    indexSection keyTable;     // one indexSection a distinct key, in key order: its group record in keyGroups
    indexSection keyGroups;    // group records: offset and length of its entries, then the key as a Pascal string
    indexSection entries;      // entries without their keys, by key, then in file order
    indexSection numberTable;  // one numberTableEntry a record, in record order
    /// recordDefRec that the index was built from; databasePath is empty and references are null. Outside bytes: string
    /// lengths in it are to be checked.
    alignas(8) std::uint8_t definitionImage[sizeof(recordDefRec)];
};
static_assert(sizeof(indexHeader) == indexHeaderSize);
static_assert(offsetof(indexHeader, dataFileDate) == 1280);
static_assert(offsetof(indexHeader, keyTable) == 1288);
static_assert(offsetof(indexHeader, numberTable) == 1312);
static_assert(offsetof(indexHeader, definitionImage) == 1320);

struct numberTableEntry {
    std::uint32_t keyIndex;       // into the key table
    std::uint32_t offsetInGroup;  // bytes
};

/// The loaded index. Sections are checked at loading so far as that costs no walk over the entries; an entry is checked
/// when it is used.
struct keyIndexRec {
    indexHeader header;
    recordDefRec liveDefinition;  // the definition of the last open; its references are null
    bool liveFitsHeader;          // liveDefinition asks for no other index than this one
    std::uint32_t datedAtRecord;  // dataStateRec::recordOfPass when the data file's date was asked last
    fileHandle file;              // stays open while the index is loaded
    std::uint8_t* keyTable;       // the four sections, owned; null when empty
    std::uint8_t* keyGroups;
    std::uint8_t* entries;
    std::uint8_t* numberTable;
    std::uint64_t* keyPrefixes;  // of each key of the key table, see keyPrefixOf; owned, null without keys
    std::uint32_t* groupStarts;  // where each key's entries begin; owned, null without keys
    std::uint8_t* data;          // the whole data file, owned; null when empty
    std::uint32_t dataSize;
};

/// Where a group's entries lie: bytes from the start of the entries. A `length` of 0: nothing was found.
struct entryRange {
    std::uint32_t offset;
    std::uint32_t length;
};

/// Place of one record: its group and where in it its entry begins.
struct recordPlace {
    entryRange group;
    std::uint32_t offsetInGroup;
};

/// One entry, as found in a loaded index. The field lengths lie unaligned behind it.
struct indexEntry {
    std::uint32_t length;
    std::uint32_t flags;
    std::uint32_t dataOffset;
    std::uint32_t dataLength;
    std::uint32_t recordNumber;
    std::uint32_t fieldCount;
    std::uint32_t delimiterLength;
    const std::uint8_t* fieldLengths;  // fieldCount 32-bit numbers
};

/// Loads the index at source.indexPath with its data file. keyIndex stays null when the file is missing, is no index or
/// is damaged. Errors: 2, 4, 6, 181 and 8 without memory, 1, 3, 5, 180 and 7 on read errors, 9, 10; pendingErrorParam
/// names the file.
[[nodiscard]] errorWord keyIndexLoad(dataSourceRec& source, const recordDefRec& definition, errorWord priorError);

/// Builds the index file at source.indexPath for the data file that it names. `noPrompt`: don't ask for a data file
/// when it names none. `checkEncoding`: check the data file's encoding first. A failure leaves the old index in place.
/// Memory: at most 64 MiB, whatever the size of the data file. Errors: those above that say so, errTooManyFields with
/// the record's number, errFilePositioning when data file or index pass 4 GB.
[[nodiscard]] errorWord keyIndexBuild(const recordDefRec& definition, dataSourceRec& source, std::uint8_t noPrompt,
                                      std::uint8_t interactive, std::uint8_t checkEncoding, std::int16_t& openStatus,
                                      std::uint8_t* report, errorWord priorError);

/// Frees the index of a source; null is ignored. Always does its work.
void keyIndexClose(dataSourceRec& source);

/// The group of `prefix` + `key` + `suffix`, cut at 255 bytes. `prefix` and `suffix` may be null.
[[nodiscard]] entryRange keyIndexFindGroup(const keyIndexRec& index, const std::uint8_t* key,
                                           const std::uint8_t* prefix, const std::uint8_t* suffix);

/// Place of a record. False when there is none of that number. `outKey` (a Str255) may be null.
[[nodiscard]] bool keyIndexRecordAt(const keyIndexRec& index, std::uint32_t recordNumber, recordPlace& place,
                                    std::uint8_t* outKey);

/// Where the entry of a record begins, bytes from the start of the entries; the fetch's short way to it. False when
/// there is no record of that number.
[[nodiscard]] bool keyIndexEntryOf(const keyIndexRec& index, std::uint32_t recordNumber, std::uint32_t& offset);

/// The key at `position` of the key table, as a view into the index; `found` false behind the last.
[[nodiscard]] std::string_view keyIndexKeyAt(const keyIndexRec& index, std::uint32_t position, bool& found);

/// Number of distinct keys, and of records (the empty one behind a final record delimiter included).
[[nodiscard]] std::uint32_t keyIndexKeyCount(const keyIndexRec& index);
[[nodiscard]] std::uint32_t keyIndexRecordCount(const keyIndexRec& index);

/// Reads the entry at `offset` of the entries. False when it leaves `limit` (bytes from the start of the entries) or
/// isn't whole.
[[nodiscard]] bool keyIndexReadEntry(const keyIndexRec& index, std::uint32_t offset, std::uint32_t limit,
                                     indexEntry& entry);

/// Negative, 0 or positive. Bytes compare unsigned; without `caseSensitive` a to z fold to upper case first. When the
/// common part is equal the shorter key sorts first.
[[nodiscard]] int keyCompare(std::string_view a, std::string_view b, bool caseSensitive);

/// The first 8 bytes of a key (folded as keyCompare does) as a number, so that different numbers sort as their keys do.
[[nodiscard]] std::uint64_t keyPrefixOf(std::string_view key, bool caseSensitive);

/// Whether an index that was built from `built` still serves `current`. `withCustomDelimiter` compares fDelimiter,
/// which only counts when fileType is 5.
[[nodiscard]] bool definitionsReadAlike(const recordDefFixedRec& built, const recordDefFixedRec& current,
                                        bool withCustomDelimiter);

/// Reads the header of an index file. `got` is how many bytes it has, at most indexHeaderSize; the rest is cleared. A
/// file that can't be opened gives `got` 0 and no error. Error: errIndexHeaderRead.
[[nodiscard]] errorWord readIndexHeader(const char* indexPath, indexHeader& header, std::size_t& got,
                                        errorWord priorError);

/// What an index file says without being loaded.
struct indexSummary {
    std::uint32_t keyCount;
    std::uint32_t recordCount;  // up to the last record that has content, a header record included
    std::uint16_t encoding;     // resolvedEightBit or resolvedUtf8
    std::uint64_t fileBytes;
};

/// Reads a summary from the file. Error: errIndexHeaderRead, also when it is no whole index.
[[nodiscard]] errorWord readIndexSummary(const char* indexPath, indexSummary& summary, errorWord priorError);

/// Folder of the index files: dataState().indexFolder, or the default below the user's data folder.
[[nodiscard]] std::string indexFolderPath();

/// Makes the folder and in it an index that names `dataFilePath` and has no tag, so that the next open builds it.
/// `indexPath` (`pathCapacity` bytes) gets its path. Then the folder is pruned to the limit of the preferences. Errors:
/// errIndexCreate, errIndexHeaderWrite, errIndexHeaderOpen.
[[nodiscard]] errorWord makeIndexFile(const recordDefRec& definition, const char* dataFilePath, char* indexPath,
                                      errorWord priorError);

/// Deletes the oldest plain files of the folder until `limit` are left; names that begin with a full stop don't count.
void pruneIndexFolder(const std::string& folder, std::size_t limit);

/// Path of the index that serves `dataPath` when it is read as `definition` says. It is the same each time for the same
/// file and way of reading, and another one for any other. Empty when the file can't be found.
[[nodiscard]] std::string stableIndexPath(const recordDefRec& definition, std::string_view dataPath);

/// Makes the index at `indexPath` as a placeholder for `dataPath`, unless a file is there that was surely built from
/// this data file as it is now. False when it can't be made.
[[nodiscard]] bool prepareIndexFile(std::string_view indexPath, std::string_view dataPath);

}  // namespace tarnova
