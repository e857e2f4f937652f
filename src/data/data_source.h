// The one door through which the rest of the engine reaches data: open a definition's source, count its records, take
// the value of one field of one record. A text file is indexed once and found through its index from then on. Opening
// is cheap when nothing has changed, so callers open again before every fetch: that is how a changed data file or a
// changed definition is noticed. Main thread only.
#pragma once

#include <cstdint>

#include "data/data_state.h"
#include "definitions/record_def.h"
#include "engine/toolkit/files.h"
#include "engine/toolkit/memory.h"
#include "engine/toolkit/types.h"

namespace tarnova {

struct connectionRec;
struct keyIndexRec;

/// One open source. Owned by dataState().dataSourceList.
struct dataSourceRec {
    dataSourceRec* next;  // circular
    dataSourceRec* prev;
    char indexPath[pathCapacity];  // text file: path of its index, the definition's databasePath
    keyIndexRec* keyIndex;         // not null: the text source is open
    Str255 odbcSource[3];          // data source name, user id, password
    connectionRec* odbcConnection;
    Str255 httpSource[3];  // base address, user id, password
    connectionRec* httpConnection;
};

// openStatus: the outcome of an open beside the error word. At 0 or above the source is usable.
inline constexpr std::int16_t openStatusOpen = 0;
inline constexpr std::int16_t openStatusDifference = 1;  // a difference between definition and data was accepted
inline constexpr std::int16_t openStatusUtf16 = 2;       // an encoding warning was accepted: the file is UTF-16,
inline constexpr std::int16_t openStatusThirdKind = 3;   // of a third kind,
inline constexpr std::int16_t openStatusDataType = 4;    // doesn't match the definition's dataType
inline constexpr std::int16_t openStatusNothing = -1;    // cancelled, or no path or source name
inline constexpr std::int16_t openStatusNoIndex = -2;    // the index file doesn't exist
inline constexpr std::int16_t openStatusBadIndex = -3;   // it is unreadable, or the data file it names is missing
inline constexpr std::int16_t openStatusRefused = -4;    // the user refused data that doesn't match the definition
inline constexpr std::int16_t openStatusUtf16Refused = -5;
inline constexpr std::int16_t openStatusThirdKindRefused = -6;
inline constexpr std::int16_t openStatusDataTypeRefused = -7;

// fetchStatus: the outcome of a fetch beside the error word.
inline constexpr std::int16_t fetchFound = 0;
inline constexpr std::int16_t fetchBadTag = -1;   // the tag names what doesn't exist
inline constexpr std::int16_t fetchNoMatch = -2;  // no record has this key or number, or none passes the tests
inline constexpr std::int16_t fetchNoData = -3;   // the field is empty or missing
inline constexpr std::int16_t fetchAbort = -6;    // an HTTP or SQL source asked to abort

inline constexpr errorWord errSourceMemory = 30;
inline constexpr errorWord errPresetFileMissing = 31;
inline constexpr errorWord errIndexCreate = 32;
inline constexpr errorWord errValueMemory = 33;
inline constexpr errorWord errIndexDelete = 60;
inline constexpr errorWord errOdbcUnavailable = 280;
inline constexpr errorWord errNoEncoding = 362;
inline constexpr errorWord errHttpUnavailable = 363;

/// What a caller asks of a fetch. All references are borrowed for the call; a string is a Pascal string. A text source
/// reads the first six fields only.
struct fetchRequest {
    std::int32_t recordNumber;          // from 0, in file order; below 0 the record is searched by `key`, and then this
                                        // becomes the number of the record found
    const std::uint8_t* key;            // may be null
    const extractionRec* extraction;    // may be null
    std::uint8_t criteriaNamed;         // 1: a search criteria name was given
    const searchCriteriaRec* criteria;  // the search criteria found for that name; may be null
    std::uint16_t defaultSet;           // defaultSetText or defaultSetFrame

    const std::uint8_t* ddfName;
    const std::uint8_t* extractionName;
    const std::uint8_t* criteriaName;
    const std::uint8_t* styleName;
    const std::uint8_t* docName;
    const std::uint8_t* pageName;
    const std::uint8_t* pageNumber;
    const std::uint8_t* notes1;
    const std::uint8_t* notes2;
    const std::uint8_t* notes3;
    blockHandle labelTree;
};

/// Opens the source of `definition`, or finds it open and up to date; that way costs one date query and a few
/// comparisons, and no allocation. `noPrompt`: never ask for a source. `interactive`: the checks of the data may ask.
/// `force`: ask for a source again and rebuild. `source` is null unless `openStatus` is 0 or above. `encoding` (may be
/// null) gets 0 for 8-bit text, 1 for UTF-8. `report` (may be null) is a Str255 to which remarks are appended.
/// `givenPath` (may be null) is the data file to take instead of asking. The definition may be edited in place between
/// opens: what a fetch depends on is compared each time. Errors: errSourceMemory, errNoEncoding, those of
/// key_index.h and chooseDataFile; pendingErrorParam names the file.
[[nodiscard]] errorWord dataSourceOpen(const recordDefRec* definition, std::uint8_t noPrompt, std::uint8_t interactive,
                                       std::uint8_t force, dataSourceRec*& source, std::int16_t& openStatus,
                                       std::uint16_t* encoding, std::uint8_t* report, const char* givenPath,
                                       errorWord priorError);

/// Number of records; with `trim` up to the last that has any content (the one behind a final record delimiter has
/// none). 0 for a null source and for kinds of source that can't tell.
[[nodiscard]] errorWord dataSourceRecordCount(const dataSourceRec* source, std::uint8_t trim, std::uint32_t& count,
                                              errorWord priorError);

/// The value of one field of one record. `value` is a block of `length` bytes in the data's encoding, without a
/// terminator, or null; the caller frees it with freeBlock. For a `fetchStatus` below 0 it is the stand-in text of that
/// status, which is the host's text and not the data's: `asUtf8` asks for UTF-8, which it is already. Without source or
/// without number and key: no value and status 0. Error: errValueMemory.
[[nodiscard]] errorWord dataSourceFetch(dataSourceRec* source, fetchRequest* request, std::uint16_t asUtf8,
                                        void*& value, std::uint32_t& length, std::int16_t& fetchStatus,
                                        errorWord priorError);

/// The distinct key at `index` (from 0) of the sorted keys. `key` is a Str255; empty when not found.
[[nodiscard]] errorWord dataSourceKeyAt(const dataSourceRec* source, std::uint32_t index, std::uint8_t* key,
                                        bool& found, errorWord priorError);

/// Number of the first record with `key`, without any field tests; -1 when there is none.
[[nodiscard]] errorWord dataSourceFindKey(const keyIndexRec* index, const std::uint8_t* key, std::int32_t& recordNumber,
                                          bool& found, errorWord priorError);

/// Whether the source of `definition` is there, and whether its index still fits, without opening anything. The outputs
/// behind `inSync` may be null: the data file's path (`pathCapacity` bytes) and the two triples.
[[nodiscard]] errorWord dataSourceInSync(const recordDefRec* definition, bool& exists, bool& inSync, char* dataFilePath,
                                         Str255* odbcTriple, Str255* httpTriple, errorWord priorError);

/// Writes the path or triple of an open source back into the definition `name` of the current set when they differ, and
/// gives the definition, looked up anew because saving replaces it. Null when there is none.
[[nodiscard]] errorWord syncDefinitionWithSource(const std::uint8_t* name, const dataSourceRec* source,
                                                 recordDefRec*& definition, errorWord priorError);

/// Closes every source. Always does its work.
void dataSourceCloseAll();

/// Closes the sources of the queued index files, deletes the files and empties the queue. Error: errIndexDelete, which
/// leaves the rest of the queue.
[[nodiscard]] errorWord runIndexDeleteQueue(std::vector<std::string>& queue, errorWord priorError);

/// Decides on a data file (the preset one while nobody watches, `givenPath`, or one that the user picks), checks its
/// encoding and makes an empty index for it. `indexPath` (`pathCapacity` bytes) is the old index and becomes the new
/// one. Nothing is touched when `cancelled`. With `force` the old index is deleted. Errors: errPresetFileMissing,
/// errIndexCreate, errIndexDelete, errIndexHeaderWrite, errIndexHeaderOpen; pendingErrorParam names the file.
[[nodiscard]] errorWord chooseDataFile(const recordDefRec& definition, char* indexPath, bool force, bool& cancelled,
                                       std::int16_t& openStatus, const char* givenPath, errorWord priorError);

/// The definition's access mode as it stands here: modes whose module doesn't answer count as text files.
[[nodiscard]] std::int16_t effectiveAccessMode(const recordDefRec& definition);

}  // namespace tarnova
