// The value of one link: from a decoded tag to the bytes that the data gives for it.

#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "data/data_source.h"
#include "definitions/record_def.h"
#include "engine/toolkit/memory.h"
#include "engine/toolkit/types.h"
#include "tags/tag_record.h"

namespace tarnova {

struct tagValueRec {
    const extractionRec* extraction = nullptr;  // the link's record; null when the definition has none of that name
    const searchCriteriaRec* criteria = nullptr;
    const styleRec* style = nullptr;
    blockPtr<char> bytes;      // the value; null when there is none to put in place
    std::uint32_t length = 0;  // of `bytes`
    bool isHostText = false;   // a stand-in text of ours (UTF-8), not bytes of the data
    std::int16_t status = 0;   // fetchStatus
    // Position in the run, from 0 with the header counted; behind the fetch the record that was found.
    std::int32_t recordNumber = -1;
    std::uint16_t encoding = 0;  // of data bytes: 0 Windows-1252, 1 UTF-8
};

/// Opens the data of the current definition as it stands now, and writes a new source back into the definition. Cheap
/// when nothing changed: it runs before each fetch. `source` is null below `openStatus` 0.
[[nodiscard]] errorWord openCurrentData(dataSourceRec*& source, std::int16_t& openStatus, std::uint16_t* encoding,
                                        errorWord priorError);

/// Fetches the value of a tag. `value.recordNumber` says which record, as a position that goes through the record list
/// and becomes the number of the record; a place without a record gives the stack pad. Below 0 it is searched by the
/// tag's key. A link
/// or search criteria that the definition doesn't have give `fetchStatus` -1 and the bad tag text, without a fetch.
[[nodiscard]] errorWord fetchForTag(const tagDataRec& tag, std::uint16_t defaultSet, tagValueRec& value,
                                    errorWord priorError);

/// Makes a text of ours (UTF-8) the value; the status stays.
[[nodiscard]] errorWord takeHostBytes(std::string_view text, tagValueRec& value, errorWord priorError);

/// Appends the value's characters, or those of a part of its bytes.
void appendValueText(std::u32string& out, std::string_view bytes, const tagValueRec& value);
inline void appendValueText(std::u32string& out, const tagValueRec& value) {
    appendValueText(out, {value.bytes.get(), value.length}, value);
}

/// Makes `text`, a Pascal string of ours, the value; null or an unset text leaves none.
[[nodiscard]] errorWord takeHostText(const std::uint8_t* text, tagValueRec& value, errorWord priorError);

}  // namespace tarnova
