#include "data/key_index.h"

#include <algorithm>
#include <cstring>

#include "data/record_entry.h"
#include "definitions/record_def_set.h"

namespace tarnova {

namespace {

constexpr std::uint32_t groupRecordFixedSize = 8;  // offset and length of the entries, in front of the key

std::uint8_t folded(char byte, bool caseSensitive) {
    const auto value = static_cast<std::uint8_t>(byte);
    return caseSensitive ? value : ascii::upper(value);
}

// Text of a Pascal string field in outside bytes, whose length byte may say anything.
std::string_view checkedText(const std::uint8_t* field, std::size_t fieldSize) {
    return {reinterpret_cast<const char*>(field + 1), std::min<std::size_t>(field[0], fieldSize - 1)};
}

std::int32_t checkedFieldNumber(const recordDefFixedRec& definition, std::string_view name) {
    for (const fieldNameEntry& entry : definition.fields) {
        if (entry.fieldName[0] == 0) break;
        if (ascii::equalNoCase(checkedText(entry.fieldName, sizeof entry.fieldName), name)) return entry.fieldNumber;
    }
    return -1;
}

bool isCaseSensitive(const keyIndexRec& index) {
    return reinterpret_cast<const recordDefRec*>(index.header.definitionImage)->useKeyfieldCase != 0;
}

// The group record at `position` of the key table. Both were checked when the index was loaded.
const std::uint8_t* groupRecordAt(const keyIndexRec& index, std::uint32_t position) {
    return index.keyGroups + load32(index.keyTable + std::size_t{position} * sizeof(indexSection));
}

entryRange rangeOfGroup(const std::uint8_t* groupRecord) {
    return {load32(groupRecord), load32(groupRecord + 4)};
}

std::string_view keyOfGroup(const std::uint8_t* groupRecord) {
    return pstrView(groupRecord + groupRecordFixedSize);
}

}  // namespace

int keyCompare(std::string_view a, std::string_view b, bool caseSensitive) {
    const std::size_t common = std::min(a.size(), b.size());
    if (caseSensitive) {
        const int order = common == 0 ? 0 : std::memcmp(a.data(), b.data(), common);
        if (order != 0) return order;
    } else {
        for (std::size_t i = 0; i < common; ++i) {
            const int order = folded(a[i], false) - folded(b[i], false);
            if (order != 0) return order;
        }
    }
    return a.size() == b.size() ? 0 : (a.size() < b.size() ? -1 : 1);
}

std::uint64_t keyPrefixOf(std::string_view key, bool caseSensitive) {
    std::uint64_t prefix = 0;
    for (std::size_t i = 0; i < sizeof prefix; ++i)
        prefix = prefix << 8 | (i < key.size() ? folded(key[i], caseSensitive) : 0u);
    return prefix;
}

bool definitionsReadAlike(const recordDefFixedRec& built, const recordDefFixedRec& current, bool withCustomDelimiter) {
    const auto text = [](const auto& field) { return checkedText(field, sizeof field); };
    if (built.useKeyfieldCase != current.useKeyfieldCase || built.fileType != current.fileType ||
        built.osType != current.osType || built.dataType != current.dataType)
        return false;
    if (withCustomDelimiter && current.fileType == fileTypeCustom && text(built.fDelimiter) != text(current.fDelimiter))
        return false;
    if ((built.textQualifier.enable != 0) != (current.textQualifier.enable != 0)) return false;
    if (current.textQualifier.enable != 0 && text(built.textQualifier.string) != text(current.textQualifier.string))
        return false;
    return checkedFieldNumber(built, text(built.keyField)) == checkedFieldNumber(current, text(current.keyField));
}

std::uint32_t keyIndexKeyCount(const keyIndexRec& index) {
    return index.header.keyTable.size / sizeof(indexSection);
}

std::uint32_t keyIndexRecordCount(const keyIndexRec& index) {
    return index.header.numberTable.size / sizeof(numberTableEntry);
}

std::string_view keyIndexKeyAt(const keyIndexRec& index, std::uint32_t position, bool& found) {
    found = position < keyIndexKeyCount(index);
    return found ? keyOfGroup(groupRecordAt(index, position)) : std::string_view{};
}

entryRange keyIndexFindGroup(const keyIndexRec& index, const std::uint8_t* key, const std::uint8_t* prefix,
                             const std::uint8_t* suffix) {
    Str255 joined = {};
    for (const std::uint8_t* part : {prefix, key, suffix})
        if (part != nullptr) pstrAppend(joined, part);
    const std::string_view wanted = pstrView(joined);
    const bool caseSensitive = isCaseSensitive(index);
    const std::uint64_t wantedPrefix = keyPrefixOf(wanted, caseSensitive);

    std::uint32_t low = 0, high = keyIndexKeyCount(index);
    while (low != high) {
        const std::uint32_t middle = low + (high - low) / 2;
        const std::uint64_t middlePrefix = index.keyPrefixes[middle];
        int order = wantedPrefix < middlePrefix ? -1 : (wantedPrefix > middlePrefix ? 1 : 0);
        if (order == 0) {
            const std::uint8_t* groupRecord = groupRecordAt(index, middle);
            order = keyCompare(wanted, keyOfGroup(groupRecord), caseSensitive);
            if (order == 0) return rangeOfGroup(groupRecord);
        }
        if (order > 0)
            low = middle + 1;
        else
            high = middle;
    }
    return {0, 0};
}

bool keyIndexRecordAt(const keyIndexRec& index, std::uint32_t recordNumber, recordPlace& place, std::uint8_t* outKey) {
    place = {};
    if (recordNumber >= keyIndexRecordCount(index)) return false;
    numberTableEntry entry;
    std::memcpy(&entry, index.numberTable + std::size_t{recordNumber} * sizeof entry, sizeof entry);
    if (entry.keyIndex >= keyIndexKeyCount(index)) return false;
    const std::uint8_t* groupRecord = groupRecordAt(index, entry.keyIndex);
    place.group = rangeOfGroup(groupRecord);
    place.offsetInGroup = entry.offsetInGroup;
    if (outKey != nullptr) pstrCopy(outKey, groupRecord + groupRecordFixedSize);
    return entry.offsetInGroup < place.group.length;
}

bool keyIndexEntryOf(const keyIndexRec& index, std::uint32_t recordNumber, std::uint32_t& offset) {
    if (recordNumber >= keyIndexRecordCount(index)) return false;
    numberTableEntry entry;
    std::memcpy(&entry, index.numberTable + std::size_t{recordNumber} * sizeof entry, sizeof entry);
    if (entry.keyIndex >= keyIndexKeyCount(index)) return false;
    const std::uint32_t start = index.groupStarts[entry.keyIndex];
    offset = start + entry.offsetInGroup;
    return entry.offsetInGroup < index.header.entries.size - start;
}

bool keyIndexReadEntry(const keyIndexRec& index, std::uint32_t offset, std::uint32_t limit, indexEntry& entry) {
    if (limit > index.header.entries.size || offset > limit || limit - offset < storedFieldLengthsAt) return false;
    const std::uint8_t* const at = index.entries + offset;
    entry.length = load32(at + entryLengthAt);
    entry.flags = load32(at + entryFlagsAt);
    entry.dataOffset = load32(at + entryDataOffsetAt);
    entry.dataLength = load32(at + entryDataLengthAt);
    entry.recordNumber = load32(at + entryRecordNumberAt);
    entry.fieldCount = load32(at + storedFieldCountAt);
    entry.delimiterLength = load32(at + storedDelimiterLengthAt);
    entry.fieldLengths = at + storedFieldLengthsAt;
    return entry.length >= storedFieldLengthsAt && entry.length <= limit - offset &&
           entry.fieldCount <= (entry.length - storedFieldLengthsAt) / 4;
}

}  // namespace tarnova
