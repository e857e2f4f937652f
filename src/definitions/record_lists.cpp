#include "definitions/record_lists.h"

namespace tarnova {

namespace {

template <typename Record>
errorWord findRecord(const recordDefRec* definition, const std::uint8_t* name, Record*& record, errorWord priorError) {
    if (priorError != 0) return priorError;
    record = nullptr;
    if (definition == nullptr) return 0;
    const std::int32_t index = recordIndex<Record>(*definition, name);
    if (index >= 0) record = recordsOf<Record>(*definition)[static_cast<std::size_t>(index)];
    return 0;
}

template <typename Record>
errorWord insertRecord(recordDefSetRec& set, recordDefRec& definition, const std::uint8_t* name, Record*& record,
                       errorWord priorError) {
    if (priorError != 0) return priorError;
    return addRecordAt(set, definition, recordPlace<Record>(definition, name), name, record, 0);
}

}  // namespace

errorWord findSearchCriteria(const recordDefRec* definition, const std::uint8_t* name, searchCriteriaRec*& record,
                             errorWord priorError) {
    return findRecord(definition, name, record, priorError);
}

errorWord findExtraction(const recordDefRec* definition, const std::uint8_t* name, extractionRec*& record,
                         errorWord priorError) {
    return findRecord(definition, name, record, priorError);
}

errorWord findStyle(const recordDefRec* definition, const std::uint8_t* name, styleRec*& record, errorWord priorError) {
    return findRecord(definition, name, record, priorError);
}

std::uint16_t searchCriteriaCount(const recordDefRec& definition) {
    return recordCount<searchCriteriaRec>(definition);
}

std::uint16_t extractionCount(const recordDefRec& definition) {
    return recordCount<extractionRec>(definition);
}

std::uint16_t styleCount(const recordDefRec& definition) {
    return recordCount<styleRec>(definition);
}

errorWord insertSearchCriteria(recordDefSetRec& set, recordDefRec& definition, const std::uint8_t* name,
                               searchCriteriaRec*& record, errorWord priorError) {
    return insertRecord(set, definition, name, record, priorError);
}

errorWord insertExtraction(recordDefSetRec& set, recordDefRec& definition, const std::uint8_t* name,
                           extractionRec*& record, errorWord priorError) {
    return insertRecord(set, definition, name, record, priorError);
}

errorWord insertStyle(recordDefSetRec& set, recordDefRec& definition, const std::uint8_t* name, styleRec*& record,
                      errorWord priorError) {
    return insertRecord(set, definition, name, record, priorError);
}

}  // namespace tarnova
