#include "merge/tag_value.h"

#include <cstring>

#include "data/data_state.h"
#include "data/record_selection.h"
#include "definitions/definition_state.h"
#include "definitions/record_def_set.h"
#include "engine/session/session.h"
#include "engine/toolkit/pstring.h"
#include "engine/toolkit/text_encoding.h"

namespace tarnova {
namespace {

/// The link's record and search criteria by the names of the tag. `found` is false when the tag names what doesn't
/// exist.
errorWord findNamedRecords(const recordDefRec* definition, const tagDataRec& tag, tagValueRec& value, bool& found) {
    extractionRec* link = nullptr;
    searchCriteriaRec* criteria = nullptr;
    styleRec* style = nullptr;
    errorWord error = findExtraction(definition, tag.extractionRecordName, link, 0);
    error = findSearchCriteria(definition, tag.searchCriteriaName, criteria, error);
    error = findStyle(definition, tag.styleRecordName, style, error);
    value.extraction = link;
    value.criteria = criteria;
    value.style = style;
    const bool criteriaFound = tag.searchCriteriaName[0] == 0 || criteria != nullptr;
    const bool styleFound = tag.styleRecordName[0] == 0 || style != nullptr;
    found = link != nullptr && criteriaFound && styleFound;
    return error;
}

errorWord takeStandIn(const defaultStringRec& text, tagValueRec& value) {
    return takeHostText(text.enable != 0 ? text.string : nullptr, value, 0);
}

const defaultStringSet& defaultsOf(std::uint16_t defaultSet) {
    return defaultSet == defaultSetText ? appPrefs().textDefaults : appPrefs().pictureDefaults;
}

errorWord takeBadTag(std::uint16_t defaultSet, tagValueRec& value) {
    value.status = fetchBadTag;
    return takeStandIn(defaultsOf(defaultSet).badTag, value);
}

/// A place of a label sort without a record.
errorWord takeStackPad(std::uint16_t defaultSet, tagValueRec& value) {
    value.status = fetchFound;
    return takeStandIn(defaultsOf(defaultSet).stackPad, value);
}

}  // namespace

errorWord openCurrentData(dataSourceRec*& source, std::int16_t& openStatus, std::uint16_t* encoding,
                          errorWord priorError) {
    source = nullptr;
    openStatus = openStatusNothing;
    if (priorError != 0) return priorError;
    errorWord error = reselectCurrentRecordDef(0);
    auto& state = definitionState();
    if (error != 0 || state.currentRecordDef == nullptr) return error;
    error = dataSourceOpen(state.currentRecordDef, 0, 1, 0, source, openStatus, encoding, nullptr, nullptr, error);
    if (error != 0 || source == nullptr) return error;
    return syncDefinitionWithSource(state.currentDefName, source, state.currentRecordDef, error);
}

errorWord fetchForTag(const tagDataRec& tag, std::uint16_t defaultSet, tagValueRec& value, errorWord priorError) {
    if (priorError != 0) return priorError;
    const bool isInPass = session().mergePassActive != 0 && value.recordNumber >= 0;
    dataState().recordOfPass = isInPass ? static_cast<std::uint32_t>(value.recordNumber) + 1 : 0;
    dataSourceRec* source = nullptr;
    std::int16_t openStatus = openStatusNothing;
    errorWord error = openCurrentData(source, openStatus, &value.encoding, 0);
    dataState().recordOfPass = 0;
    const recordDefRec* const definition = definitionState().currentRecordDef;
    if (error != 0 || definition == nullptr || source == nullptr) return error;
    bool found = false;
    error = findNamedRecords(definition, tag, value, found);
    if (error != 0) return error;
    if (!found) return takeBadTag(defaultSet, value);

    fetchRequest request{};
    request.recordNumber = recordOfPosition(value.recordNumber, session().skipFirst);
    if (value.recordNumber >= 0 && request.recordNumber == recordListPad) return takeStackPad(defaultSet, value);
    request.key = tag.searchKey;
    request.extraction = value.extraction;
    request.criteriaNamed = tag.searchCriteriaName[0] != 0 ? 1 : 0;
    request.criteria = value.criteria;
    request.defaultSet = defaultSet;
    void* block = nullptr;
    error = dataSourceFetch(source, &request, 1, block, value.length, value.status, error);
    value.bytes.reset(static_cast<char*>(block));
    value.isHostText = value.status != fetchFound;
    value.recordNumber = request.recordNumber;
    return error;
}

errorWord takeHostBytes(std::string_view text, tagValueRec& value, errorWord priorError) {
    if (priorError != 0) return priorError;
    value.isHostText = true;
    value.length = 0;
    value.bytes.reset(static_cast<char*>(newBlock(text.size())));
    if (!value.bytes) return errValueMemory;
    value.length = static_cast<std::uint32_t>(text.size());
    std::memcpy(value.bytes.get(), text.data(), text.size());
    return 0;
}

errorWord takeHostText(const std::uint8_t* text, tagValueRec& value, errorWord priorError) {
    if (priorError != 0) return priorError;
    if (text != nullptr) return takeHostBytes(pstrView(text), value, 0);
    value.bytes.reset();
    value.length = 0;
    value.isHostText = true;
    return 0;
}

void appendValueText(std::u32string& out, std::string_view bytes, const tagValueRec& value) {
    if (value.isHostText || value.encoding == 1) {
        appendUtf8AsUtf32(out, bytes);
        return;
    }
    out.reserve(out.size() + bytes.size());
    for (const char byte : bytes)
        out.push_back(codePointOfWindows1252(static_cast<std::uint8_t>(byte)));
}

}  // namespace tarnova
