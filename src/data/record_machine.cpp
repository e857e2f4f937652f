// The byte machine. Three delimiters are matched side by side; a byte is settled as plain text only when it can't be
// part of any of them any more. Bytes from `anchor` on are unsettled. When one delimiter becomes whole, what was
// unsettled in front of it is plain text, whatever else had begun to match there.

#include "data/record_entry.h"
#include "data/record_scan.h"

namespace tarnova {

namespace {

enum class matchResult { none, partial, whole };

matchResult matchByte(const std::uint8_t* delimiter, std::uint32_t& matched, std::uint8_t byte) {
    if (delimiter[0] == 0 || delimiter[1 + matched] != byte) {
        matched = 0;
        return matchResult::none;
    }
    if (++matched < delimiter[0]) return matchResult::partial;
    matched = 0;
    return matchResult::whole;
}

std::uint32_t nextInRing(std::uint32_t position) {
    return position + 1 == parserRingSize ? 0 : position + 1;
}

void settleByte(const parserConfig& config, parserState& state) {
    parsedRecord& record = state.record;
    state.qualifierCount = 0;
    state.contentSeen = 1;
    record.flags |= recordHasContent;
    ++record.fieldLengths[record.fieldCount];
    ++record.dataLength;
    if (inKeyField(config, record)) appendKeyByte(record, state.ring[state.anchor]);
    state.anchor = nextInRing(state.anchor);
}

// Settles what lies in front of the last `keep` examined bytes.
void settlePending(const parserConfig& config, parserState& state, std::uint32_t keep) {
    std::uint32_t pending = (state.readPos + parserRingSize - state.anchor) % parserRingSize;
    for (; pending > keep; --pending)
        settleByte(config, state);
    state.qualifierMatch = state.recordMatch = state.fieldMatch = 0;
}

void takeQualifier(const parserConfig& config, parserState& state) {
    const std::uint8_t* qualifier = config.textQualifier;
    settlePending(config, state, qualifier[0]);
    parsedRecord& record = state.record;
    record.fieldLengths[record.fieldCount] += qualifier[0];
    record.dataLength += qualifier[0];
    if (state.contentSeen != 0) ++state.qualifierCount;
    if (state.qualifierCount > 1) {
        if (inKeyField(config, record))
            for (std::uint32_t i = 1; i <= qualifier[0]; ++i)
                appendKeyByte(record, qualifier[i]);
        state.qualifierCount -= 2;
    }
    state.contentSeen = 1;
    state.inQuotes ^= 1;
    state.anchor = state.readPos;
    record.flags |= recordHasContent;
}

void takeRecordDelimiter(const parserConfig& config, parserState& state) {
    settlePending(config, state, config.recordDelimiter[0]);
    state.record.dataLength += config.recordDelimiter[0];
    state.contentSeen = 0;
    state.inQuotes = 0;
    state.qualifierCount = 0;
    state.anchor = state.readPos;
}

void takeFieldDelimiter(const parserConfig& config, parserState& state) {
    settlePending(config, state, config.fieldDelimiter[0]);
    parsedRecord& record = state.record;
    record.delimiterLength = config.fieldDelimiter[0];
    record.dataLength += config.fieldDelimiter[0];
    record.fieldLengths[++record.fieldCount] = 0;
    state.qualifierCount = 0;
    state.contentSeen = 0;
    state.anchor = state.readPos;
}

// Examines the byte in front of readPos. True when it ends the record.
bool examineByte(const parserConfig& config, parserState& state, std::uint8_t byte) {
    const matchResult qualifier = matchByte(config.textQualifier, state.qualifierMatch, byte);
    if (qualifier == matchResult::whole) {
        takeQualifier(config, state);
        return false;
    }
    matchResult record = matchResult::none, field = matchResult::none;
    if (state.inQuotes == 0) {
        record = matchByte(config.recordDelimiter, state.recordMatch, byte);
        if (record == matchResult::whole) {
            takeRecordDelimiter(config, state);
            return true;
        }
        field = matchByte(config.fieldDelimiter, state.fieldMatch, byte);
        if (field == matchResult::whole) {
            takeFieldDelimiter(config, state);
            return false;
        }
    }
    if (qualifier == matchResult::none && record == matchResult::none && field == matchResult::none) {
        settleByte(config, state);
        state.readPos = state.anchor;  // a failed run is searched again from its second byte
    }
    return false;
}

}  // namespace

errorWord stepRecords(const parserConfig& config, parserState& state, parserInput& input, entryBatch& batch) {
    for (;;) {
        if (state.readPos == state.writePos) {
            if (input.used == input.size) break;
            state.ring[state.writePos] = input.bytes[input.used++];
            state.writePos = nextInRing(state.writePos);
            ++state.bytesTaken;
        }
        if (state.record.fieldCount == recordFieldCapacity) return tooManyFields(state.record);
        const std::uint8_t byte = state.ring[state.readPos];
        state.readPos = nextInRing(state.readPos);
        if (examineByte(config, state, byte) && !storeRecord(state, batch)) return 0;
    }
    if (!input.endOfFile) return 0;
    settlePending(config, state, 0);
    state.lastRecord = 1;
    storeRecord(state, batch);
    return 0;
}

}  // namespace tarnova
