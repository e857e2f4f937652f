#include <algorithm>
#include <span>

#include "definitions/record_def_set.h"

namespace tarnova {

namespace {

std::span<const fieldNameEntry> fieldsOf(const recordDefFixedRec& definition) {
    return {definition.fields, fieldCountOf(definition)};
}

}  // namespace

std::uint16_t fieldCountOf(const recordDefFixedRec& definition) {
    const auto* end = std::find_if(std::begin(definition.fields), std::end(definition.fields),
                                   [](const fieldNameEntry& entry) { return entry.fieldName[0] == 0; });
    return static_cast<std::uint16_t>(end - definition.fields);
}

void insertFieldName(recordDefFixedRec& definition, std::uint16_t fieldNumber, const std::uint8_t* name) {
    if (name == nullptr || name[0] == 0) return;
    const std::uint16_t count = fieldCountOf(definition);
    if (count == fieldNameCapacity) return;
    fieldNameEntry entry{fieldNumber, {}};
    pstrCopyBounded(entry.fieldName, name, sizeof(entry.fieldName));
    fieldNameEntry* const end = definition.fields + count;
    fieldNameEntry* const place = std::upper_bound(
        definition.fields, end, entry,
        [](const fieldNameEntry& a, const fieldNameEntry& b) { return pstrCompare(a.fieldName, b.fieldName) < 0; });
    std::move_backward(place, end, end + 1);
    *place = entry;
}

std::int32_t fieldNumberOf(const recordDefFixedRec& definition, const std::uint8_t* name) {
    if (name == nullptr || name[0] == 0) return -1;
    for (const fieldNameEntry& entry : fieldsOf(definition)) {
        if (pstrEqualNoCase(entry.fieldName, name) == 0) return entry.fieldNumber;
    }
    return -1;
}

const std::uint8_t* fieldNameOf(const recordDefFixedRec& definition, std::int32_t fieldNumber) {
    static constexpr std::uint8_t noName[1] = {0};
    for (const fieldNameEntry& entry : fieldsOf(definition)) {
        if (entry.fieldNumber == fieldNumber) return entry.fieldName;
    }
    return noName;
}

}  // namespace tarnova
