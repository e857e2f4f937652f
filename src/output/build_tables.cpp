#include "output/build_tables.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "document/document.h"
#include "engine/session/preferences.h"
#include "engine/session/session.h"
#include "output/build_document.h"

namespace tarnova {
namespace {

struct tablesRec {
    handlePtr slots;
    handlePtr pages;
};

tablesRec& tables() {
    static tablesRec instance;
    return instance;
}

tablesRec& snapshot() {
    static tablesRec instance;
    return instance;
}

template <typename Entry>
Entry* entriesOf(const handlePtr& table) {
    return table ? reinterpret_cast<Entry*>(*table.get()) : nullptr;
}

/// Makes room for entry `count`. False when there is no memory; the table is then as it was.
template <typename Entry>
bool growTable(handlePtr& table, std::int32_t count) {
    if (!table) table.reset(newHandle(0));
    if (!table) return false;
    const std::size_t size = handleSize(table.get());
    if (static_cast<std::size_t>(count) * sizeof(Entry) < size) return true;
    return resizeHandle(table.get(), size + tableGrowth * sizeof(Entry)) == 0;
}

void freePaddedRecords(const handlePtr& slots, std::int32_t count) {
    for (std::int32_t i = 0; i < count; ++i)
        freeHandle(entriesOf<recordSlotRec>(slots)[i].paddedRecords);
}

buildCountsRec& counts() {
    return session();
}

/// A handle with a copy of the first `count` entries; null without memory.
template <typename Entry>
handlePtr copyEntries(const handlePtr& table, std::int32_t count) {
    const std::size_t bytes = static_cast<std::size_t>(count) * sizeof(Entry);
    handlePtr copy(newHandle(bytes));
    if (copy && bytes > 0) std::memcpy(*copy.get(), *table.get(), bytes);
    return copy;
}

/// Copies tables with as many entries as `used` says; `to` is replaced, its `toCounts` with it.
errorWord copyTables(const tablesRec& from, const buildCountsRec& used, tablesRec& to, buildCountsRec& toCounts) {
    tablesRec copy{copyEntries<recordSlotRec>(from.slots, used.slotCount),
                   copyEntries<pageMapRec>(from.pages, used.pageEntryCount)};
    if (!copy.pages) return errPageMapMemory;
    if (!copy.slots) return errSlotTableMemory;
    auto* const slots = entriesOf<recordSlotRec>(copy.slots);
    for (std::int32_t i = 0; i < used.slotCount; ++i) {
        if (cloneHandle(slots[i].paddedRecords) == 0) continue;
        freePaddedRecords(copy.slots, i);
        return errSlotTableMemory;
    }
    freePaddedRecords(to.slots, toCounts.slotCount);
    to = std::move(copy);
    toCounts = used;
    return 0;
}

/// A list with room for each sequence number in use, all free.
blockHandle newPaddedRecords() {
    const std::size_t count = std::max<std::size_t>(session().sequencesInUse, 1);
    blockHandle list = newHandle(count * sizeof(std::int32_t));
    if (list == nullptr) return nullptr;
    auto* const records = reinterpret_cast<std::int32_t*>(*list);
    std::fill(records, records + count, noPaddedRecord);
    return list;
}

/// Enters the record at the first free place unless it stands there already.
errorWord notePaddedRecord(const recordSlotRec& slot, std::int32_t recordNumber) {
    auto* const first = reinterpret_cast<std::int32_t*>(*slot.paddedRecords);
    auto* const limit = first + handleSize(slot.paddedRecords) / sizeof(std::int32_t);
    auto* const place = std::find_if(
        first, limit, [&](std::int32_t entry) { return entry == recordNumber || entry == noPaddedRecord; });
    if (place == limit) return errTooManyPadded;
    *place = recordNumber;
    return 0;
}

bool recordIsInData(std::int32_t recordNumber) {
    const auto& run = session();
    return recordNumber < static_cast<std::int32_t>(run.skipFirst + run.totalRecords);
}

const std::uint8_t* fillerText(std::int32_t recordNumber, const defaultStringSet& defaults) {
    const bool isStackPad = recordIsInData(recordNumber) || session().recordPassMode != passModeStep;
    session().fillersUsed |= isStackPad ? fillerStackPad : fillerEndOfFile;
    const defaultStringRec& entry = isStackPad ? defaults.stackPad : defaults.endOfFile;
    return entry.enable != 0 ? entry.string : nullptr;
}

}  // namespace

errorWord resetBuildTables(UIDRef document, errorWord priorError) {
    if (priorError != 0) return priorError;
    auto& run = session();
    freePaddedRecords(tables().slots, run.slotCount);
    run.slotCount = 0;
    run.pageEntryCount = 0;
    run.nextPageIndex = 0;
    run.templatePageCount = document.database->pageCount();
    return 0;
}

void freeBuildTables() {
    freePaddedRecords(tables().slots, session().slotCount);
    freePaddedRecords(snapshot().slots, session().countsSnapshot.slotCount);
    counts() = session().countsSnapshot = {};
    tables() = {};
    snapshot() = {};
}

errorWord snapshotBuildTables(errorWord priorError) {
    return priorError != 0 ? priorError : copyTables(tables(), counts(), snapshot(), session().countsSnapshot);
}

errorWord restoreBuildTables(errorWord priorError) {
    if (priorError != 0) return priorError;
    const errorWord error = copyTables(snapshot(), session().countsSnapshot, tables(), counts());
    if (error == 0) session().nextPageIndex = session().pageEntryCount;
    return error;
}

recordSlotRec* recordSlotAt(std::int32_t index) {
    if (index < 0 || index >= session().slotCount) return nullptr;
    return entriesOf<recordSlotRec>(tables().slots) + index;
}

pageMapRec* pageMapAt(std::int32_t index) {
    if (index < 0 || index >= session().pageEntryCount) return nullptr;
    return entriesOf<pageMapRec>(tables().pages) + index;
}

void removePageEntry(std::int32_t index) {
    pageMapRec* const page = pageMapAt(index);
    if (page == nullptr) return;
    std::copy(page + 1, entriesOf<pageMapRec>(tables().pages) + session().pageEntryCount, page);
    --session().pageEntryCount;
}

bool anySlotPastEnd() {
    const auto* const slots = entriesOf<recordSlotRec>(tables().slots);
    return std::any_of(slots, slots + session().slotCount,
                       [](const recordSlotRec& slot) { return (slot.pastEnd & 1) != 0; });
}

errorWord appendPageEntry(std::int32_t pageInSlot, errorWord priorError) {
    if (priorError != 0) return priorError;
    auto& run = session();
    if (!growTable<pageMapRec>(tables().pages, run.pageEntryCount)) return errPageMapMemory;
    entriesOf<pageMapRec>(tables().pages)[run.pageEntryCount] = {run.slotCount, pageInSlot, 0, 0, 0};
    ++run.pageEntryCount;
    return 0;
}

errorWord appendSlot(errorWord priorError) {
    if (priorError != 0) return priorError;
    auto& run = session();
    if (!growTable<recordSlotRec>(tables().slots, run.slotCount)) return errSlotTableMemory;
    recordSlotRec slot{};
    slot.slotIndex = run.slotCount;
    slot.firstRecord = noFirstRecord;
    slot.paddedRecords = newPaddedRecords();
    if (slot.paddedRecords == nullptr) return errSlotTableMemory;
    entriesOf<recordSlotRec>(tables().slots)[run.slotCount] = slot;
    ++run.slotCount;
    return 0;
}

std::int32_t recordNumberOfPage(std::int32_t pageEntry) {
    const auto& run = session();
    const pageMapRec* const page = pageMapAt(pageEntry);
    const std::int32_t slot = page != nullptr ? page->slot : std::max(run.slotCount - 1, 0);
    const auto recordsPerSlot = static_cast<std::int32_t>(run.recordPassMode == passModeStep ? run.stepBy : 1);
    return recordsPerSlot * slot + static_cast<std::int32_t>(run.skipFirst) + static_cast<std::int32_t>(run.recordBase);
}

std::int32_t recordNumberOfLink(std::int32_t pageEntry, std::int32_t sequence) {
    const auto& run = session();
    const std::int32_t first = recordNumberOfPage(pageEntry);
    if (run.recordPassMode == passModeStep) return first + sequence - 1;
    if (run.recordPassMode == passModeNoStepping) return first;
    const auto step = static_cast<std::int32_t>(std::max<std::uint32_t>(run.stepBy, 1));
    const auto stackHeight =
        (step - static_cast<std::int32_t>(run.stackFirst) + static_cast<std::int32_t>(run.stackLast) - 1) / step;
    return first + (sequence - 1) * stackHeight;
}

errorWord noteRecordRequest(std::int32_t pageEntry, std::int32_t recordNumber, const defaultStringSet& defaults,
                            recordRequestRec& out, errorWord priorError) {
    out = {};
    if (priorError != 0) return priorError;
    const auto& run = session();
    if (!runIsActive()) return 0;
    const pageMapRec* const page = pageMapAt(pageEntry);
    recordSlotRec* const slot = page != nullptr ? recordSlotAt(page->slot) : nullptr;
    errorWord error = 0;
    if (recordIsInData(recordNumber) && recordNumber < static_cast<std::int32_t>(run.skipFirst + run.stackLast)) {
        if (slot != nullptr) slot->hasData |= 1;
    } else {
        out.pastEnd = true;
        out.filler = fillerText(recordNumber, defaults);
        if (slot != nullptr) {
            if (appPrefs().pastEndCounts != 0) slot->pastEnd |= 1;
            error = notePaddedRecord(*slot, recordNumber);
        }
    }
    if (slot != nullptr) {
        slot->firstRecord = std::min(slot->firstRecord, recordNumber);
        slot->lastRecord = std::max(slot->lastRecord, recordNumber);
    }
    return error;
}

}  // namespace tarnova
