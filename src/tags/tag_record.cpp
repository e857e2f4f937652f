#include "tags/tag_record.h"

#include <algorithm>
#include <cstring>

#include "engine/toolkit/byte_order.h"

namespace tarnova {

namespace {

constexpr std::size_t recordVersionOffset = 4;
constexpr std::size_t recordKindOffset = 6;
constexpr std::size_t fieldNameLength = 5;
constexpr std::size_t fieldHeaderBytes = 8;  // size word, the name's length, the name
constexpr std::size_t fieldNameOffset = 2;
constexpr std::size_t fieldSizeMax = 65535;
constexpr std::size_t auxKeysStoredMin = 2;  // bytes

enum class FieldKind : std::uint8_t { lockFlag, associateFlag, text, furtherKeys, droppedText, skipped };

struct fieldRow {
    std::string_view name;
    FieldKind kind;
    std::uint8_t* (*member)(tagDataRec&);  // of a text
    std::size_t capacityBytes;             // of its member, length byte included
    bool writtenEmpty;
};

template <auto field>
std::uint8_t* memberOf(tagDataRec& tag) {
    return tag.*field;
}

template <std::size_t size, std::uint8_t (tagDataRec::*field)[size]>
constexpr fieldRow textRow(std::string_view name, bool writtenEmpty) {
    return {name, FieldKind::text, memberOf<field>, size, writtenEmpty};
}

// In the order in which a record is written; the last three are only read.
constexpr fieldRow fieldRows[] = {
    {"lk.r1", FieldKind::lockFlag, nullptr, 0, false},
    {"am.r1", FieldKind::associateFlag, nullptr, 0, false},
    textRow<65, &tagDataRec::searchKey>("ky.r1", true),
    textRow<32, &tagDataRec::searchCriteriaName>("sc.r1", true),
    textRow<32, &tagDataRec::extractionRecordName>("er.r1", true),
    textRow<32, &tagDataRec::ruleName>("rl.r1", true),
    textRow<32, &tagDataRec::styleRecordName>("sr.r1", true),
    textRow<256, &tagDataRec::notes1>("m1.r1", false),
    textRow<256, &tagDataRec::notes2>("m2.r1", false),
    textRow<256, &tagDataRec::notes3>("m3.r1", false),
    {"ak.r1", FieldKind::furtherKeys, nullptr, 0, false},
    {"ms.r1", FieldKind::droppedText, nullptr, 0, false},
    {"mp.r1", FieldKind::droppedText, nullptr, 0, false},
    {"cn.r1", FieldKind::skipped, nullptr, 0, false},
};

const fieldRow* rowOfName(std::string_view name) {
    const auto* row = std::find_if(std::begin(fieldRows), std::end(fieldRows),
                                   [name](const fieldRow& known) { return known.name == name; });
    return row == std::end(fieldRows) ? nullptr : row;
}

bool carriesKeys(const tagDataRec& tag) {
    return tag.tagKind == tagKindData || tag.tagKind == tagKindDataWithMedia;
}

/// Assembles a record from its start; `bytes` is full once a field didn't fit.
struct recordBuffer {
    std::byte bytes[tagRecordCapacity];
    std::size_t size = tagRecordHeaderBytes;
    bool full = false;

    void putField(std::string_view name, const void* payload, std::size_t payloadBytes) {
        const std::size_t room = std::min(tagRecordCapacity - size, fieldSizeMax);
        full = full || room < fieldHeaderBytes || room - fieldHeaderBytes < payloadBytes;
        if (full) return;
        std::byte* field = bytes + size;
        storeBig16(field, static_cast<std::uint16_t>(fieldHeaderBytes + payloadBytes));
        field[fieldNameOffset] = std::byte{fieldNameLength};
        std::memcpy(field + fieldNameOffset + 1, name.data(), fieldNameLength);
        std::memcpy(field + fieldHeaderBytes, payload, payloadBytes);
        size += fieldHeaderBytes + payloadBytes;
    }
};

void putText(recordBuffer& buffer, const fieldRow& row, const std::uint8_t* text) {
    if (text[0] == 0 && !row.writtenEmpty) return;
    std::uint8_t cut[pstrMaxLength + 1];
    pstrCopyBounded(cut, text, row.capacityBytes);
    buffer.putField(row.name, cut, std::size_t{1} + cut[0]);
}

void putRow(recordBuffer& buffer, const fieldRow& row, tagDataRec& tag) {
    constexpr std::uint8_t emptyText = 0;
    switch (row.kind) {
        case FieldKind::lockFlag:
            if (tag.linkLocked != 0) buffer.putField(row.name, &emptyText, sizeof emptyText);
            break;
        case FieldKind::associateFlag:
            if (tag.associateMe != 0) buffer.putField(row.name, &emptyText, sizeof emptyText);
            break;
        case FieldKind::text:
            if (carriesKeys(tag)) putText(buffer, row, row.member(tag));
            break;
        case FieldKind::furtherKeys:
            if (carriesKeys(tag) && handleSize(tag.auxKeys) >= auxKeysStoredMin)
                buffer.putField(row.name, *tag.auxKeys, handleSize(tag.auxKeys));
            break;
        case FieldKind::droppedText:
        case FieldKind::skipped:
            break;
    }
}

errorWord readText(std::string_view payload, const fieldRow& row, tagDataRec& tag) {
    if (payload.empty()) return errTagRefused;
    const std::size_t length = static_cast<std::uint8_t>(payload[0]);
    if (payload.size() - 1 < length) return errTagRefused;
    if (row.kind == FieldKind::lockFlag) tag.linkLocked = 1;
    if (row.kind == FieldKind::associateFlag) tag.associateMe = 1;
    if (row.kind != FieldKind::text) return 0;
    if (length + 1 > row.capacityBytes) return errTagRefused;
    std::memcpy(row.member(tag), payload.data(), length + 1);
    return 0;
}

errorWord readFurtherKeys(std::string_view payload, blockHandle auxKeys) {
    if (auxKeys == nullptr) return 0;
    const std::size_t size = payload.size() < auxKeysStoredMin ? 0 : payload.size();
    if (resizeHandle(auxKeys, size) != 0) return errTagMemory;
    if (size != 0) std::memcpy(*auxKeys, payload.data(), size);
    return 0;
}

errorWord readField(std::string_view field, tagDataRec& tag, errorWord& memoryError) {
    if (field[fieldNameOffset] != fieldNameLength) return errTagFieldUnknown;
    const fieldRow* row = rowOfName(field.substr(fieldNameOffset + 1, fieldNameLength));
    if (row == nullptr) return errTagFieldUnknown;
    if (row->kind == FieldKind::skipped) return 0;
    const std::string_view payload = field.substr(fieldHeaderBytes);
    if (row->kind != FieldKind::furtherKeys) return readText(payload, *row, tag);
    if (const errorWord error = readFurtherKeys(payload, tag.auxKeys); error != 0) memoryError = error;
    return 0;
}

/// Memory that is missing for the further keys is told last: all other fields are read before.
errorWord readRecord(std::string_view block, tagDataRec& tag) {
    if (block.size() < tagRecordHeaderBytes || loadBig32(block.data()) != block.size()) return errTagRefused;
    errorWord memoryError = 0;
    for (std::string_view rest = block.substr(tagRecordHeaderBytes); !rest.empty();) {
        if (rest.size() < fieldHeaderBytes) return errTagRefused;
        const std::size_t fieldBytes = loadBig16(rest.data());
        if (fieldBytes < fieldHeaderBytes || rest.size() < fieldBytes) return errTagRefused;
        if (const errorWord error = readField(rest.substr(0, fieldBytes), tag, memoryError); error != 0) return error;
        rest.remove_prefix(fieldBytes);
    }
    return memoryError;
}

}  // namespace

void tagRecordClear(tagDataRec& tag) {
    for (const fieldRow& row : fieldRows)
        if (row.kind == FieldKind::text) row.member(tag)[0] = 0;
    tag.linkLocked = 0;
    tag.associateMe = 0;
    tag.tagKind = tagKindData;
}

errorWord tagRecordEncode(const tagDataRec* tag, std::byte** outBlock, errorWord priorError) {
    if (priorError != 0) return priorError;
    if (tag == nullptr || outBlock == nullptr) return 0;
    *outBlock = nullptr;
    recordBuffer buffer;
    tagDataRec fields = *tag;
    for (const fieldRow& row : fieldRows)
        putRow(buffer, row, fields);
    if (buffer.full) return errTagMemory;
    storeBig32(buffer.bytes, static_cast<std::uint32_t>(buffer.size));
    storeBig16(buffer.bytes + recordVersionOffset, tagRecordVersion);
    storeBig16(buffer.bytes + recordKindOffset,
               static_cast<std::uint16_t>(2 * tag->tagKind + (tag->linkLocked != 0 ? 1 : 0)));
    *outBlock = static_cast<std::byte*>(newBlock(buffer.size));
    if (*outBlock == nullptr) return errTagMemory;
    std::memcpy(*outBlock, buffer.bytes, buffer.size);
    return 0;
}

errorWord tagRecordDecode(std::string_view block, tagDataRec* tag, std::uint32_t* outTotalLength,
                          std::uint16_t* outStoredKind, errorWord priorError) {
    if (priorError != 0) return priorError;
    if (block.data() == nullptr || tag == nullptr) return 0;
    tagRecordClear(*tag);
    if (tag->auxKeys != nullptr && resizeHandle(tag->auxKeys, 0) != 0) return errTagMemory;
    const errorWord error = readRecord(block, *tag);
    if (error == errTagRefused) return error;
    if (outStoredKind != nullptr) *outStoredKind = loadBig16(block.data() + recordKindOffset);
    if (error == errTagFieldUnknown) return error;
    if (outTotalLength != nullptr) *outTotalLength = static_cast<std::uint32_t>(block.size());
    if (error == 0) tag->tagStatus = tagStatusRead;
    return error;
}

}  // namespace tarnova
