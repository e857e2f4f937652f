// The two tables that describe a built document: which slot each page belongs to, and what each slot received.
//
// Both are relocatable blocks that grow by 256 entries. They stay as they are after a merge until the next reset, so
// that an output can read them.

#pragma once

#include <cstdint>

#include "data/default_strings.h"
#include "document/uid.h"
#include "engine/toolkit/memory.h"
#include "engine/toolkit/types.h"

namespace tarnova {

inline constexpr errorWord errPageMapMemory = 305;
inline constexpr errorWord errSlotTableMemory = 306;

inline constexpr std::int32_t tableGrowth = 256;  // entries
inline constexpr std::int32_t noFirstRecord = 0x7fffffff;
inline constexpr std::int32_t noPaddedRecord = -1;

/// One copy of the template.
struct recordSlotRec {
    std::int32_t slotIndex;  // its own position, from 0
    std::int32_t reserved;
    std::int32_t firstRecord;       // lowest record merged into the slot; noFirstRecord when none was
    std::int32_t lastRecord;        // highest; 0 when none was
    std::int32_t missingTextCount;  // overset stories
    std::int32_t missingPictureCount;
    std::int32_t damagedPictureCount;
    UIDRef fileNameFrame;
    UIDRef copiesFrame;
    std::uint16_t hasData;        // bit 0: a link pulled a record inside the run's range
    std::uint16_t pastEnd;        // bit 0: a link asked for a record behind it, and such positions count
    std::uint16_t hasMergeError;  // bit 0: a counter above was raised while its preference was on
    blockHandle paddedRecords;    // i32 for each sequence number in use: distinct records asked for behind the range
};

/// One page of the built document, in page order.
struct pageMapRec {
    std::int32_t slot;
    std::int32_t pageInSlot;  // position in the template, from 0
    std::uint16_t pageFlags;  // not 0: takes no part in printed numbering and isn't pruned
    std::uint16_t removeMe;   // bit 0: deleted when the merge of the chunk ends
    std::int32_t linkCount;
};

static_assert(sizeof(recordSlotRec) == 80);
static_assert(sizeof(pageMapRec) == 16);

/// Empties both tables for a document; the template is what the document holds now.
[[nodiscard]] errorWord resetBuildTables(UIDRef document, errorWord priorError);
/// Frees the tables and their snapshot, at the engine's end.
void freeBuildTables();

/// Copies both tables, with the padded records of each slot, in place of the last snapshot; or puts the snapshot in
/// place of the tables. Without memory errSlotTableMemory or errPageMapMemory, and nothing has changed.
[[nodiscard]] errorWord snapshotBuildTables(errorWord priorError);
[[nodiscard]] errorWord restoreBuildTables(errorWord priorError);

/// Entry of the table, or null behind its end. Valid until the table grows.
[[nodiscard]] recordSlotRec* recordSlotAt(std::int32_t index);
[[nodiscard]] pageMapRec* pageMapAt(std::int32_t index);

/// Takes the entry of a page that is gone out of the page map.
void removePageEntry(std::int32_t index);

/// Whether a link of any slot asked for a record behind the range.
[[nodiscard]] bool anySlotPastEnd();

/// Appends an entry for a page that now exists, in the slot under construction.
[[nodiscard]] errorWord appendPageEntry(std::int32_t pageInSlot, errorWord priorError);
/// Appends the slot behind its pages.
[[nodiscard]] errorWord appendSlot(errorWord priorError);

/// Number of the first record of a page, 0-based in the file: (`stepBy` in step mode, else 1) x slot + `skipFirst` +
/// `recordBase`. Behind the page map the last slot counts on.
[[nodiscard]] std::int32_t recordNumberOfPage(std::int32_t pageEntry);
/// Record of a link with sequence number `sequence` (from 1) on a page. In step mode the links of a page take records
/// in a row; in the stack modes they lie a whole stack apart, so that one cut through a pile gives consecutive records.
/// Without stepping every link takes the page's record.
[[nodiscard]] std::int32_t recordNumberOfLink(std::int32_t pageEntry, std::int32_t sequence);

/// What `noteRecordRequest` says of a record behind the range.
struct recordRequestRec {
    bool pastEnd = false;
    const std::uint8_t* filler = nullptr;  // Pascal string of `defaults`; null when its flag is off
};

/// Notes that a link on the page pulls the record. A record behind the range gets a filler text: the stack pad inside
/// the data or in the stack modes, else the end of file. Errors: `errTooManyPadded`.
[[nodiscard]] errorWord noteRecordRequest(std::int32_t pageEntry, std::int32_t recordNumber,
                                          const defaultStringSet& defaults, recordRequestRec& out,
                                          errorWord priorError);

}  // namespace tarnova
