#include "tags/tag_record.h"

#include <algorithm>
#include <cstring>
#include <optional>
#include <string>

namespace tarnova {

namespace {

constexpr std::size_t auxKeysStoredMin = 2;  // bytes

enum class FieldKind : std::uint8_t { lockFlag, associateFlag, text, furtherKeys, droppedText, passedOver };

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
    {fieldLocked, FieldKind::lockFlag, nullptr, 0, false},
    {fieldAssociate, FieldKind::associateFlag, nullptr, 0, false},
    textRow<65, &tagDataRec::searchKey>(fieldKey, true),
    textRow<32, &tagDataRec::searchCriteriaName>(fieldCriteria, true),
    textRow<32, &tagDataRec::extractionRecordName>(fieldLink, true),
    textRow<32, &tagDataRec::ruleName>(fieldRule, true),
    textRow<32, &tagDataRec::styleRecordName>(fieldStyle, true),
    textRow<256, &tagDataRec::notes1>(fieldNotes[0], false),
    textRow<256, &tagDataRec::notes2>(fieldNotes[1], false),
    textRow<256, &tagDataRec::notes3>(fieldNotes[2], false),
    {fieldAuxKeys, FieldKind::furtherKeys, nullptr, 0, false},
    {fieldMediaString, FieldKind::droppedText, nullptr, 0, false},
    {fieldMediaPath, FieldKind::droppedText, nullptr, 0, false},
    {fieldPassedOver, FieldKind::passedOver, nullptr, 0, false},
};

/// Finds rows by the names of a record's fields. A record that we wrote has them in the order of the rows, so the
/// search goes on where the last one ended.
class RowFinder {
 public:
    /// Null for a name that nobody knows.
    const fieldRow* find(std::string_view name) {
        const auto hasName = [name](const fieldRow& known) { return known.name == name; };
        const fieldRow* row = std::find_if(expected, std::end(fieldRows), hasName);
        if (row == std::end(fieldRows)) {
            row = std::find_if(std::begin(fieldRows), expected, hasName);
            if (row == expected) return nullptr;
        }
        expected = row + 1;
        return row;
    }

 private:
    const fieldRow* expected = std::begin(fieldRows);
};

bool carriesKeys(const tagDataRec& tag) {
    return tag.tagKind == tagKindData || tag.tagKind == tagKindDataWithMedia;
}

void putText(StoredTagWriter& writer, const fieldRow& row, const std::uint8_t* text) {
    if (text[0] == 0 && !row.writtenEmpty) return;
    writer.stringField(row.name, pstrView(text).substr(0, row.capacityBytes - 1));
}

void putRow(StoredTagWriter& writer, const fieldRow& row, tagDataRec& tag) {
    switch (row.kind) {
        case FieldKind::lockFlag:
            if (tag.linkLocked != 0) writer.stringField(row.name, {});
            break;
        case FieldKind::associateFlag:
            if (tag.associateMe != 0) writer.stringField(row.name, {});
            break;
        case FieldKind::text:
            if (carriesKeys(tag)) putText(writer, row, row.member(tag));
            break;
        case FieldKind::furtherKeys:
            if (carriesKeys(tag) && handleSize(tag.auxKeys) >= auxKeysStoredMin)
                writer.field(row.name, {reinterpret_cast<const char*>(*tag.auxKeys), handleSize(tag.auxKeys)});
            break;
        case FieldKind::droppedText:
        case FieldKind::passedOver:
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

errorWord readField(const StoredTagField& field, RowFinder& rows, tagDataRec& tag, errorWord& memoryError) {
    const fieldRow* row = rows.find(field.name);
    if (row == nullptr) return errTagFieldUnknown;
    if (row->kind == FieldKind::passedOver) return 0;
    if (row->kind != FieldKind::furtherKeys) return readText(field.payload, *row, tag);
    if (const errorWord error = readFurtherKeys(field.payload, tag.auxKeys); error != 0) memoryError = error;
    return 0;
}

/// Memory that is missing for the further keys is told last: all other fields are read before.
errorWord readRecord(StoredTagReader& reader, tagDataRec& tag) {
    if (!reader.headerIsGood()) return errTagRefused;
    RowFinder rows;
    errorWord memoryError = 0;
    while (const std::optional<StoredTagField> field = reader.next())
        if (const errorWord error = readField(*field, rows, tag, memoryError); error != 0) return error;
    return reader.atEnd() ? memoryError : errTagRefused;
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
    StoredTagWriter writer(tag->tagKind, tag->linkLocked != 0);
    tagDataRec fields = *tag;
    for (const fieldRow& row : fieldRows)
        putRow(writer, row, fields);
    const std::optional<std::string> record = writer.finish();
    if (!record) return errTagMemory;
    *outBlock = static_cast<std::byte*>(newBlock(record->size()));
    if (*outBlock == nullptr) return errTagMemory;
    std::memcpy(*outBlock, record->data(), record->size());
    return 0;
}

errorWord tagRecordDecode(std::string_view block, tagDataRec* tag, std::uint32_t* outTotalLength,
                          std::uint16_t* outStoredKind, errorWord priorError) {
    if (priorError != 0) return priorError;
    if (block.data() == nullptr || tag == nullptr) return 0;
    tagRecordClear(*tag);
    if (tag->auxKeys != nullptr && resizeHandle(tag->auxKeys, 0) != 0) return errTagMemory;
    StoredTagReader reader(block);
    const errorWord error = readRecord(reader, *tag);
    if (error == errTagRefused) return error;
    if (outStoredKind != nullptr) *outStoredKind = reader.storedKind();
    if (error == errTagFieldUnknown) return error;
    if (outTotalLength != nullptr) *outTotalLength = static_cast<std::uint32_t>(block.size());
    if (error == 0) tag->tagStatus = tagStatusRead;
    return error;
}

}  // namespace tarnova
