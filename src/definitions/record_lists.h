// What the three arrays of a definition (search criteria, variable links, price styles) have in common.

#pragma once

#include <algorithm>
#include <cstdint>
#include <span>

#include "definitions/definition_pool.h"
#include "definitions/record_def_set.h"

namespace tarnova {

template <typename Record>
struct recordListTraits;

template <>
struct recordListTraits<searchCriteriaRec> {
    static constexpr errorWord noMemory = errNoMemorySearchCriteria;
    static constexpr auto array = &recordDefRec::searchCriteria;
};

template <>
struct recordListTraits<extractionRec> {
    static constexpr errorWord noMemory = errNoMemoryExtraction;
    static constexpr auto array = &recordDefRec::extractions;
};

template <>
struct recordListTraits<styleRec> {
    static constexpr errorWord noMemory = errNoMemoryStyle;
    static constexpr auto array = &recordDefRec::styles;
};

/// The whole array, up to its capacity.
template <typename Record>
std::span<Record*> recordSlots(recordDefRec& definition) {
    return definition.*recordListTraits<Record>::array;
}

/// The records that are there.
template <typename Record>
std::span<Record* const> recordsOf(const recordDefRec& definition) {
    const std::span<Record* const> slots = definition.*recordListTraits<Record>::array;
    const auto end = std::partition_point(slots.begin(), slots.end(), [](Record* record) { return record != nullptr; });
    return slots.first(static_cast<std::size_t>(end - slots.begin()));
}

template <typename Record>
std::uint16_t recordCount(const recordDefRec& definition) {
    return static_cast<std::uint16_t>(recordsOf<Record>(definition).size());
}

/// Index of the first record of that name without regard to case, or -1.
template <typename Record>
std::int32_t recordIndex(const recordDefRec& definition, const std::uint8_t* name) {
    if (name == nullptr || name[0] == 0) return -1;
    const auto records = recordsOf<Record>(definition);
    const auto found = std::find_if(records.begin(), records.end(),
                                    [name](const Record* record) { return pstrEqualNoCase(record->name, name) == 0; });
    return found == records.end() ? -1 : static_cast<std::int32_t>(found - records.begin());
}

/// Index at which a record named `name` stands by name, behind any of the same name.
template <typename Record>
std::size_t recordPlace(const recordDefRec& definition, const std::uint8_t* name) {
    const auto records = recordsOf<Record>(definition);
    const auto place = std::upper_bound(
        records.begin(), records.end(), name,
        [](const std::uint8_t* wanted, const Record* record) { return pstrCompare(wanted, record->name) < 0; });
    return static_cast<std::size_t>(place - records.begin());
}

/// A new record's values that aren't 0.
inline void setRecordDefaults(searchCriteriaRec&) {}
inline void setRecordDefaults(extractionRec&) {}
inline void setRecordDefaults(styleRec& style) {
    style.checkPrice = 1;
    for (priceGroupRec& group : style.groups) {
        group.currency.sizeSymbol = 1;
        group.currency.symbolSize = fixedHundredPercent;
    }
}

/// Adds a record at `index` and moves the ones from there on; null when the array is full.
template <typename Record>
[[nodiscard]] errorWord addRecordAt(recordDefSetRec& set, recordDefRec& definition, std::size_t index,
                                    const std::uint8_t* name, Record*& record, errorWord priorError) {
    if (priorError != 0) return priorError;
    record = nullptr;
    const std::span<Record*> slots = recordSlots<Record>(definition);
    const std::size_t count = recordCount<Record>(definition);
    if (count == slots.size()) return 0;
    record = static_cast<Record*>(definitionPoolAllocate(*set.pool, sizeof(Record)));
    if (record == nullptr) return recordListTraits<Record>::noMemory;
    setRecordDefaults(*record);
    pstrCopyBounded(record->name, name, sizeof(Str31));
    std::move_backward(slots.begin() + static_cast<std::ptrdiff_t>(index),
                       slots.begin() + static_cast<std::ptrdiff_t>(count),
                       slots.begin() + static_cast<std::ptrdiff_t>(count) + 1);
    slots[index] = record;
    return 0;
}

/// Frees the record at `index` and closes the gap.
template <typename Record>
void removeRecordAt(recordDefSetRec& set, recordDefRec& definition, std::size_t index) {
    const std::span<Record*> slots = recordSlots<Record>(definition);
    definitionPoolFree(*set.pool, slots[index]);
    std::move(slots.begin() + static_cast<std::ptrdiff_t>(index) + 1, slots.end(),
              slots.begin() + static_cast<std::ptrdiff_t>(index));
    slots.back() = nullptr;
}

}  // namespace tarnova
