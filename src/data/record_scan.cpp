#include "data/record_scan.h"

#include <bit>
#include <string_view>

#include "data/byte_mask.h"
#include "data/record_entry.h"

namespace tarnova {

namespace {

// The bytes that matter to a scan. Without a qualifier its place is taken by the field delimiter.
struct scanBytes {
    std::uint8_t field;
    std::uint8_t qualifier;
    std::uint8_t recordEnd;  // last byte of the record delimiter
    bool hasQualifier;
    bool crLf;
};

scanBytes scanBytesOf(const parserConfig& config) {
    scanBytes bytes;
    bytes.field = config.fieldDelimiter[1];
    bytes.hasQualifier = config.textQualifier[0] != 0;
    bytes.qualifier = bytes.hasQualifier ? config.textQualifier[1] : bytes.field;
    bytes.recordEnd = config.recordDelimiter[config.recordDelimiter[0]];
    bytes.crLf = config.recordDelimiter[0] == 2;
    return bytes;
}

class RecordScan {
 public:
    RecordScan(const parserConfig& config, parserState& state, parserInput& input, entryBatch& batch)
        : config_(config),
          state_(state),
          record_(state.record),
          input_(input),
          batch_(batch),
          bytes_(scanBytesOf(config)),
          start_(input.bytes + input.used),
          size_(input.size - input.used),
          recordStart_(std::size_t{0} - record_.dataLength) {}

    errorWord run();

 private:
    bool takeBlock(std::size_t base, std::uint64_t mask);
    bool takeByte(std::size_t at);
    void closeField(std::size_t limit, std::size_t next);
    bool endRecord(std::size_t limit, std::size_t next);
    void leave(std::size_t taken);

    const parserConfig& config_;
    parserState& state_;
    parsedRecord& record_;
    parserInput& input_;
    entryBatch& batch_;
    const scanBytes bytes_;
    const byteTriple wanted_{bytes_.field, bytes_.qualifier, bytes_.recordEnd};
    const std::uint8_t* start_;
    std::size_t size_;
    std::size_t recordStart_;     // where the record begins, from start_; wraps below 0 for one that began earlier
    std::size_t fieldStart_ = 0;  // first byte from start_ that isn't in the field's length yet
    errorWord error_ = 0;
};

// Adds the bytes up to `limit` to the field, and to the key in the key field.
void RecordScan::closeField(std::size_t limit, std::size_t next) {
    const std::size_t length = limit - fieldStart_;
    record_.fieldLengths[record_.fieldCount] += static_cast<std::uint32_t>(length);
    if (length > 0) record_.flags |= recordHasContent;
    if (inKeyField(config_, record_)) {
        qualifierFollower follower{static_cast<std::uint8_t>(state_.qualifierCount), state_.contentSeen};
        for (std::size_t at = fieldStart_; at < limit; ++at) {
            const std::uint8_t byte = start_[at];
            if (!bytes_.hasQualifier || byte != bytes_.qualifier)
                follower.takePlain();
            else if (!follower.takeQualifier())
                continue;
            appendKeyByte(record_, byte);
        }
        state_.qualifierCount = follower.qualifierCount;
        state_.contentSeen = follower.contentSeen;
    }
    fieldStart_ = next;
}

bool RecordScan::endRecord(std::size_t limit, std::size_t next) {
    closeField(limit, next);
    record_.dataLength = static_cast<std::uint32_t>(next - recordStart_);
    recordStart_ = next;
    state_.contentSeen = 0;
    state_.qualifierCount = 0;
    return storeRecord(state_, batch_);
}

// False when the scan has to stop behind this byte.
bool RecordScan::takeByte(std::size_t at) {
    const std::uint8_t byte = start_[at];
    if (bytes_.hasQualifier && byte == bytes_.qualifier) {
        state_.inQuotes ^= 1;
        return true;
    }
    if (state_.inQuotes != 0) return true;
    if (byte != bytes_.field) {
        if (!bytes_.crLf) return endRecord(at, at + 1);
        return at == 0 || start_[at - 1] != '\r' || endRecord(at - 1, at + 1);
    }
    closeField(at, at + 1);
    record_.delimiterLength = 1;
    record_.fieldLengths[++record_.fieldCount] = 0;
    state_.contentSeen = 0;
    state_.qualifierCount = 0;
    if (record_.fieldCount < recordFieldCapacity || at + 1 == size_) return true;
    error_ = tooManyFields(record_);
    return false;
}

// False when the scan has to stop; input_.used is then set.
bool RecordScan::takeBlock(std::size_t base, std::uint64_t mask) {
    for (; mask != 0; mask &= mask - 1) {
        const std::size_t at = base + static_cast<std::size_t>(std::countr_zero(mask));
        if (takeByte(at)) continue;
        leave(at + 1);
        return false;
    }
    return true;
}

void RecordScan::leave(std::size_t taken) {
    input_.used += taken;
    state_.bytesTaken += taken;
}

errorWord RecordScan::run() {
    if (size_ > 0 && record_.fieldCount == recordFieldCapacity) return tooManyFields(record_);
    const bool heldBack = bytes_.crLf && !input_.endOfFile && size_ > 0 && start_[size_ - 1] == '\r';
    const std::size_t limit = heldBack ? size_ - 1 : size_;

    std::size_t base = 0;
    for (; limit - base >= maskBlockSize; base += maskBlockSize)
        if (!takeBlock(base, maskOfBlock(start_ + base, wanted_))) return error_;
    if (base < limit && !takeBlock(base, maskOfTail(start_ + base, limit - base, wanted_))) return error_;

    if (input_.endOfFile) {
        state_.lastRecord = 1;
        leave(limit);
        endRecord(limit, limit);
        return 0;
    }
    closeField(limit, limit);
    record_.dataLength = static_cast<std::uint32_t>(limit - recordStart_);
    leave(limit);
    return 0;
}

}  // namespace

bool scanApplies(const parserConfig& config) {
    if (config.fieldDelimiter[0] != 1 || config.textQualifier[0] > 1) return false;
    const std::string_view record = pstrView(config.recordDelimiter);
    if (record != "\r" && record != "\n" && record != "\r\n") return false;
    const std::uint8_t field = config.fieldDelimiter[1], qualifier = config.textQualifier[1];
    const auto isLineEnd = [](std::uint8_t byte) { return byte == '\r' || byte == '\n'; };
    if (isLineEnd(field)) return false;
    return config.textQualifier[0] == 0 || (qualifier != field && !isLineEnd(qualifier));
}

errorWord scanRecords(const parserConfig& config, parserState& state, parserInput& input, entryBatch& batch) {
    return RecordScan(config, state, input, batch).run();
}

}  // namespace tarnova
