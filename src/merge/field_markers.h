// Field markers: "<$Name>" or "[$Name]" in a value stands for the value of another link, of the same record or, with
// "++" or "--" behind the name, of the next or the one before.

#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "definitions/record_def.h"
#include "engine/toolkit/types.h"
#include "merge/tag_value.h"

namespace tarnova {

/// The value of a marker's link.
struct markerValueRec {
    std::u32string text;      // stand-in texts too
    std::int16_t status = 0;  // fetchStatus
    std::int16_t nodata = 0;  // setting of the link
};

/// Takes over what a fetch gave for a marker's link.
void takeMarkerValue(const tagValueRec& value, markerValueRec& out);

/// Fetches the value of the link `name` (UTF-8) for a record by its position.
using MarkerFetch = std::function<errorWord(std::string_view name, std::int32_t record, markerValueRec& out)>;

struct expandedMarkersRec {
    std::int32_t count = 0;   // markers that were worked on, literal ones among them
    std::int16_t status = 0;  // the last that left its marker in place; 0: none did
};

/// Puts values in place of the markers of one form: of "<$..>" when the text has any, else of "[$..]". Of nested
/// markers the innermost is replaced. A marker with a backslash in front of both ends stays, without the backslashes.
/// `record` is the position of the text's own record; the one before the first, `firstRecord`, is the first.
[[nodiscard]] errorWord expandFieldMarkers(std::u32string& text, std::int32_t record, std::int32_t firstRecord,
                                           const MarkerFetch& fetch, expandedMarkersRec& out, errorWord priorError);

/// Whether all markers of a text name links of the definition, without a look at data.
[[nodiscard]] bool fieldMarkersAreKnown(std::u32string_view text, const recordDefRec& definition);

}  // namespace tarnova
