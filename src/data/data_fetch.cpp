// From a request to a value, in a text source: find the record's entry, find the field in it, copy the value.

#include <cstring>

#include "data/data_source.h"
#include "data/default_strings.h"
#include "data/field_value.h"
#include "data/key_index.h"
#include "data/record_entry.h"
#include "definitions/record_def_set.h"
#include "engine/session/preferences.h"

namespace tarnova {

namespace {

// A located record: its entry, and its bytes in the data file.
struct locatedRecord {
    indexEntry entry;
    const std::uint8_t* bytes = nullptr;  // null: nothing located
};

// A walk over the fields of one record, forward only.
class FieldWalk {
 public:
    explicit FieldWalk(const locatedRecord& record) : record_(record) {}

    /// Goes to field `number`, from 1. False when it lies behind the last field, in front of where the walk stands, or
    /// outside the record's bytes, which a damaged index may say.
    bool goTo(std::int64_t number) {
        if (number < number_) return false;
        while (number_ < number && number_ < record_.entry.fieldCount) {
            offset_ += std::uint64_t{length()} + record_.entry.delimiterLength;
            ++number_;
        }
        return number_ == number && number <= record_.entry.fieldCount &&
               offset_ + length() <= record_.entry.dataLength;
    }
    const std::uint8_t* bytes() const { return record_.bytes + offset_; }
    std::uint32_t length() const { return load32(record_.entry.fieldLengths + 4 * (number_ - 1)); }

 private:
    const locatedRecord& record_;
    std::int64_t number_ = 1;
    std::uint64_t offset_ = 0;
};

// Reads the entry at `offset` of the entries, which must end in front of `limit`. False for one that is damaged or
// whose bytes aren't in the data any more.
bool takeEntry(const keyIndexRec& index, std::uint32_t limit, std::uint32_t offset, locatedRecord& record) {
    indexEntry& entry = record.entry;
    if (!keyIndexReadEntry(index, offset, limit, entry)) return false;
    if (entry.dataOffset > index.dataSize || entry.dataLength > index.dataSize - entry.dataOffset) return false;
    if (entry.fieldCount == 0) return false;
    // An empty data file has no bytes, but its one empty record exists.
    static constexpr std::uint8_t noBytes = 0;
    record.bytes = index.data != nullptr ? index.data + entry.dataOffset : &noBytes;
    return true;
}

bool passesTest(const keyIndexRec& index, const fieldSearchRec& test, bool caseSense, FieldWalk& walk) {
    const recordDefRec& live = index.liveDefinition;
    const std::int32_t number = fieldNumberOf(live, test.field);
    if (number < 1 || !walk.goTo(number)) return false;
    return fieldValueEquals(walk.bytes(), walk.length(), test.string, live.textQualifier, caseSense);
}

bool passesTests(const keyIndexRec& index, const locatedRecord& record, const searchCriteriaRec* criteria) {
    if (criteria == nullptr) return true;
    const bool anyIsEnough = criteria->context == searchContextOr;
    bool passes = !anyIsEnough;
    FieldWalk walk(record);
    for (const fieldSearchRec& test : criteria->fieldSearch) {
        if (test.enable == 0) break;
        const bool passed = passesTest(index, test, criteria->caseSense != 0, walk);
        passes = anyIsEnough ? passes || passed : passes && passed;
    }
    return passes;
}

void locateByNumber(const keyIndexRec& index, const fetchRequest& request, locatedRecord& record) {
    std::uint32_t offset = 0;
    if (!keyIndexEntryOf(index, static_cast<std::uint32_t>(request.recordNumber), offset)) return;
    takeEntry(index, index.header.entries.size, offset, record);
}

// The first record of the group, in file order, that passes the tests.
void locateByKey(const keyIndexRec& index, fetchRequest& request, locatedRecord& record) {
    const searchCriteriaRec* const criteria = request.criteria;
    const auto affix = [&](const flaggedStr31Rec& text) { return text.enable != 0 ? text.string : nullptr; };
    const entryRange group =
        keyIndexFindGroup(index, request.key, criteria != nullptr ? affix(criteria->prefix) : nullptr,
                          criteria != nullptr ? affix(criteria->suffix) : nullptr);
    const std::uint32_t limit = group.offset + group.length;
    for (std::uint32_t offset = group.offset; offset < limit; offset += record.entry.length) {
        locatedRecord candidate;
        if (!takeEntry(index, limit, offset, candidate)) return;
        record.entry = candidate.entry;
        if (!passesTests(index, candidate, criteria)) continue;
        record = candidate;
        request.recordNumber = static_cast<std::int32_t>(candidate.entry.recordNumber);
        return;
    }
}

struct fetchedValue {
    void*& value;
    std::uint32_t& length;
    std::int16_t& status;
};

errorWord deliverText(const fetchedValue& out, std::string_view text) {
    if (text.empty()) return 0;
    out.value = newBlock(text.size());
    if (out.value == nullptr) return errValueMemory;
    std::memcpy(out.value, text.data(), text.size());
    out.length = static_cast<std::uint32_t>(text.size());
    return 0;
}

// Stand-in texts are the host's UTF-8, so that asking for UTF-8 changes nothing.
errorWord deliverDefault(const fetchedValue& out, std::int16_t status, const defaultStringRec& text) {
    out.status = status;
    return text.enable != 0 ? deliverText(out, pstrView(text.string)) : errorWord{0};
}

errorWord deliverNoData(const fetchedValue& out, const extractionRec& extraction, const defaultStringSet& set) {
    if (extraction.nodata != nodataCustom) return deliverDefault(out, fetchNoData, set.noData);
    out.status = fetchNoData;
    return deliverText(out, pstrView(extraction.nodatastring));
}

errorWord deliverField(const keyIndexRec& index, const FieldWalk& walk, const fetchedValue& out) {
    const recordDefRec& live = index.liveDefinition;
    auto* const value = static_cast<std::uint8_t*>(newBlock(walk.length()));
    if (value == nullptr) return errValueMemory;
    out.length = copyFieldValue(value, walk.bytes(), walk.length(), live.textQualifier, live.vtTranslation);
    if (out.length > 0)
        out.value = value;
    else
        freeBlock(value);
    return 0;
}

errorWord takeValue(const keyIndexRec& index, const locatedRecord& record, const fetchRequest& request,
                    const defaultStringSet& set, const fetchedValue& out) {
    if (record.bytes == nullptr) return deliverDefault(out, fetchNoMatch, set.noMatch);
    if (request.extraction == nullptr) return deliverDefault(out, fetchBadTag, set.badTag);
    const std::int32_t number = fieldNumberOf(index.liveDefinition, request.extraction->field);
    FieldWalk walk(record);
    if (number >= 1 && walk.goTo(number) && walk.length() > 0) {
        const errorWord err = deliverField(index, walk, out);
        if (err != 0 || out.value != nullptr) return err;
    }
    return deliverNoData(out, *request.extraction, set);
}

}  // namespace

errorWord dataSourceFetch(dataSourceRec* source, fetchRequest* request, std::uint16_t asUtf8, void*& value,
                          std::uint32_t& length, std::int16_t& fetchStatus, errorWord priorError) {
    static_cast<void>(asUtf8);  // stand-in texts are UTF-8 either way
    if (priorError != 0) return priorError;
    value = nullptr;
    length = 0;
    fetchStatus = fetchFound;
    if (source == nullptr || request == nullptr || source->keyIndex == nullptr) return 0;
    if (request->recordNumber < 0 && (request->key == nullptr || request->key[0] == 0)) return 0;

    const fetchedValue out{value, length, fetchStatus};
    const defaultStringSet& set =
        request->defaultSet == defaultSetFrame ? appPrefs().pictureDefaults : appPrefs().textDefaults;
    if (request->criteriaNamed != 0 && request->criteria == nullptr)
        return deliverDefault(out, fetchBadTag, set.badTag);

    const keyIndexRec& index = *source->keyIndex;
    locatedRecord record;
    if (request->recordNumber >= 0)
        locateByNumber(index, *request, record);
    else
        locateByKey(index, *request, record);
    return takeValue(index, record, *request, set, out);
}

}  // namespace tarnova
