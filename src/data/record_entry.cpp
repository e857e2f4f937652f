#include "data/record_entry.h"

#include <string>

#include "data/error_place.h"

namespace tarnova {

namespace {

void beginNextRecord(parsedRecord& record) {
    record.dataOffset += record.dataLength;
    record.dataLength = 0;
    ++record.recordNumber;
    record.flags = 0;
    record.key[0] = 0;
    record.fieldCount = 0;
    record.delimiterLength = 0;
    record.fieldLengths[0] = 0;
}

void writeEntry(std::uint8_t* at, const parsedRecord& record, std::uint32_t size) {
    store32(at + entryLengthAt, size);
    store32(at + entryFlagsAt, record.flags);
    store32(at + entryDataOffsetAt, record.dataOffset);
    store32(at + entryDataLengthAt, record.dataLength);
    store32(at + entryRecordNumberAt, record.recordNumber);
    std::memcpy(at + entryKeyAt, record.key, std::size_t{1} + record.key[0]);
    at += entryKeyAt + 1 + record.key[0];
    store32(at, record.fieldCount + 1);
    store32(at + 4, record.delimiterLength);
    std::memcpy(at + 8, record.fieldLengths, std::size_t{4} * (record.fieldCount + 1));
}

}  // namespace

bool storeRecord(parserState& state, entryBatch& batch) {
    const parsedRecord& record = state.record;
    const std::uint32_t size = record.key[0] + 21 + 4 * (record.fieldCount + 1 + 2);
    if (batch.capacity - batch.used < size || batch.referenceCount == batch.referenceCapacity) {
        batch.full = true;
        state.entryPending = 1;
        return false;
    }
    writeEntry(batch.bytes + batch.used, record, size);
    batch.references[batch.referenceCount++] = static_cast<std::uint32_t>(batch.used);
    batch.used += size;
    state.entryPending = 0;
    state.finished = state.lastRecord;
    beginNextRecord(state.record);
    return true;
}

errorWord tooManyFields(const parsedRecord& record) {
    return errorAt(errTooManyFields, std::to_string(std::uint64_t{record.recordNumber} + 1));
}

}  // namespace tarnova
