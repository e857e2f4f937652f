#include "data/record_filter.h"

#include <unicode/uchar.h>

#include <string>
#include <vector>

#include "data/data_source.h"
#include "data/record_range.h"
#include "data/record_selection.h"
#include "data/translation_table.h"
#include "definitions/definition_state.h"
#include "definitions/record_def_set.h"
#include "engine/session/session.h"
#include "engine/toolkit/messages.h"
#include "engine/toolkit/text_encoding.h"

namespace tarnova {

namespace {

std::u32string lowered(std::u32string text) {
    for (char32_t& c : text)
        c = static_cast<char32_t>(u_tolower(static_cast<UChar32>(c)));
    return text;
}

/// The data that a filter walks, and the link that it asks.
struct filterSourceRec {
    dataSourceRec* source = nullptr;
    const extractionRec* link = nullptr;
    std::uint16_t encoding = 0;
    std::uint32_t recordCount = 0;  // the header among them
};

/// Opens the current definition's data; a text says why not.
const char* openForFilter(std::string_view linkName, filterSourceRec& opened, bool& cancelled) {
    if (linkName.empty()) return "The variable link name is empty.";
    definitionStateRec& state = definitionState();
    if (reselectCurrentRecordDef(0) != 0 || state.currentRecordDef == nullptr) return "The DDF was not found.";
    Str255 name;
    pstrSet(name, linkName);
    extractionRec* link = nullptr;
    if (findExtraction(state.currentRecordDef, name, link, 0) != 0 || link == nullptr)
        return "The specified variable link name was not found.";
    std::int16_t status = openStatusNothing;
    const errorWord err =
        dataSourceOpen(state.currentRecordDef, 0, 1, 0, opened.source, status, &opened.encoding, nullptr, nullptr, 0);
    cancelled = err == 0 && status == openStatusNothing && dataState().pickDataFile != nullptr;
    if (cancelled) return nullptr;
    if (err != 0 || opened.source == nullptr) return "The specified database file was not found.";
    // Saving the source into the definition replaces it, and with it the link.
    if (syncDefinitionWithSource(state.currentDefName, opened.source, state.currentRecordDef, 0) != 0 ||
        state.currentRecordDef == nullptr || findExtraction(state.currentRecordDef, name, link, 0) != 0)
        return "The DDF could not be loaded.";
    opened.link = link;
    if (dataSourceRecordCount(opened.source, 1, opened.recordCount, 0) != 0)
        return "Unable to get the database record count.";
    const flaggedStr255Rec& table = state.currentRecordDef->importTransTable;
    static constexpr std::uint8_t noName[1] = {0};
    return loadImportTable(table.enable != 0 ? table.string : noName) == transTableLoaded
               ? nullptr
               : "Unable to load the import transtable.";
}

struct fetchedTextRec {
    bool hasData = false;
    std::u32string text;  // lower case; of data only
};

/// False when the record can't be fetched.
bool fetchText(const filterSourceRec& opened, std::int32_t recordNumber, bool wantsText, fetchedTextRec& fetched) {
    fetchRequest request{};
    request.recordNumber = recordNumber;
    request.extraction = opened.link;
    request.defaultSet = defaultSetText;
    void* block = nullptr;
    std::uint32_t length = 0;
    std::int16_t status = fetchFound;
    const errorWord err = dataSourceFetch(opened.source, &request, 0, block, length, status, 0);
    const blockPtr<char> owned(static_cast<char*>(block));
    // The stand-in of a field without data may be no text at all.
    if (err != 0 || (block == nullptr && status != fetchNoData)) return false;
    fetched.hasData = status != fetchNoData;
    fetched.text.clear();
    if (!wantsText || !fetched.hasData) return true;
    const std::string_view bytes(owned.get(), length);
    const bool isUtf8Text = status != fetchFound || opened.encoding != 0;
    fetched.text = lowered(isUtf8Text ? utf8ToUtf32(bytes) : windows1252ToUtf32(bytes));
    return true;
}

}  // namespace

std::uint32_t filterRecords(std::string_view linkName, filterType type, std::string_view wanted,
                            std::uint32_t skipFirst, PMString& rangeText, bool& cancelled) {
    rangeText.clear();
    cancelled = false;
    filterSourceRec opened;
    const char* failure = openForFilter(linkName, opened, cancelled);
    const std::u32string wantedText = lowered(utf8ToUtf32(wanted));
    std::vector<std::int32_t> found;
    fetchedTextRec fetched;
    const bool walks = failure == nullptr && !cancelled;
    for (std::uint32_t position = skipFirst; walks && position < opened.recordCount; ++position) {
        const std::int32_t number = recordOfPosition(static_cast<std::int32_t>(position), skipFirst);
        if (number == recordListPad) continue;
        if (!fetchText(opened, number, type == filterType::contains, fetched)) {
            failure = "Unable to get the database record.";
            break;
        }
        const bool isKept = type == filterType::noData ? !fetched.hasData
                            : type == filterType::data
                                ? fetched.hasData
                                : fetched.hasData && fetched.text.find(wantedText) != std::u32string::npos;
        if (isKept) found.push_back(static_cast<std::int32_t>(skipFirst != 0 ? position : position + 1));
    }
    if (failure != nullptr) reportErrorString(PMString(failure));
    rangeText = rangeTextOf(found);
    return static_cast<std::uint32_t>(found.size());
}

}  // namespace tarnova
