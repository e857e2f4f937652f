// Keyword links: values that the engine knows itself, as the date, the page or a running number.
//
// A link is a keyword link when its function, or its name when it has none, begins with "_" and with the text of a
// keyword. The texts are translatable, so another language may have others.

#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "definitions/record_def.h"
#include "document/uid.h"
#include "engine/toolkit/pstring.h"
#include "engine/toolkit/types.h"
#include "merge/tag_value.h"

namespace tarnova {

/// In the order in which a text is tried against them; it is the first whose text it begins with.
enum class Keyword : std::uint8_t {
    timeStart,
    time,
    dateLong,
    date,
    documentName,
    pageName,
    pageNumber,
    recordNumber,
    consecutiveNumber,
    pageSetPageNumber,
    pageSetPageCount,
    jobCount,
    jobsToProcess,
    day,
    monthName,
    month,
    yearLong,
    year,
    read2DBarcodeData,
    sheetCounter,
    jobSheetCounter,
};

/// Start, end and form of running numbers, as the numbering dialogs keep them in the preferences.
struct numberingOptionsRec {
    std::int32_t start;
    std::int32_t end;
    std::int32_t width;        // digits at least
    std::uint8_t prefix[124];  // Pascal strings
    std::uint8_t suffix[124];
};
static_assert(sizeof(numberingOptionsRec) == 260);

/// The numbering options of the preferences, and their pad character ("0" when none is set).
[[nodiscard]] numberingOptionsRec numberingOptions();
void setNumberingOptions(const numberingOptionsRec& options);
[[nodiscard]] std::string numberingPad();

/// A number in their form: prefix, pad characters up to the width, digits, suffix. UTF-8.
[[nodiscard]] std::string numberedText(const numberingOptionsRec& options, std::string_view pad, std::int64_t number);

/// What keywords read of the run. The counters are set by the run and by its output.
struct keywordStateRec {
    std::uint32_t jobCount = 1;
    std::uint32_t jobsToProcess = 1;
    std::int64_t sheetBase = 0;               // sheets of this output in front of the page table
    std::int64_t jobSheetBase = 0;            // and of the whole job
    std::vector<std::uint32_t> sheetWeights;  // sheets of a page by slot; behind the end the one before counts
};
[[nodiscard]] keywordStateRec& keywordState();

/// Where a keyword is evaluated.
struct keywordPlaceRec {
    UIDRef document;
    std::int32_t position = 0;   // of the record in the run, from 0 with the header counted
    std::int32_t pageEntry = 0;  // position of the link's page in the document, from 0
    UID frame = kInvalidUID;     // of a link on a frame; none: the link is in text
};

/// The keyword of a link, if it is one.
[[nodiscard]] std::optional<Keyword> keywordOf(const extractionRec& link);

/// Puts the keyword's text in place of the value; a status of no data becomes "found". What is no keyword link, or has
/// nothing to say at its place, stays as it is. Errors: errValueMemory.
[[nodiscard]] errorWord keywordValue(const extractionRec& link, tagValueRec& value, const keywordPlaceRec& place,
                                     errorWord priorError);

/// Holds what must not change during a run: dates, the time of its start, the document's name. The other takes them
/// back, so that the clock counts again.
void keywordFreeze(UIDRef document);
void keywordThaw();

/// Whether a link needs no field of the data: it is a text link with a function, or has the name of a keyword for
/// which a field was never needed.
[[nodiscard]] bool keywordIsKnown(const extractionRec& link);

/// Between the keyword and the name that dialogs show of it; empty for other texts.
[[nodiscard]] std::string keywordToFunctionName(std::string_view text);
[[nodiscard]] std::string functionNameToKeyword(std::string_view name);

}  // namespace tarnova
