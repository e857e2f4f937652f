// Opening the current definition's data and taking values out of it, as commands need it. Own to this folder.

#pragma once

#include <string>
#include <string_view>

#include "data/data_source.h"
#include "definitions/record_def.h"

namespace tarnova {

/// The data of the current definition, open.
struct openDataRec {
    const recordDefRec* definition = nullptr;
    dataSourceRec* source = nullptr;
    std::uint16_t encoding = 0;  // 0 Windows-1252, 1 UTF-8
};

/// Opens the data as it stands. 0, commandDefinition, commandTranslation, or commandDataFile.
[[nodiscard]] std::int32_t openData(openDataRec& data);

/// Opens `path` as the data file of the current definition, without a question; an empty path opens what it has. The
/// session is `unattended` afterwards. 0 or a code of opening a data file.
[[nodiscard]] std::int32_t openDataFile(std::string_view path, openDataRec& data);

/// Records of the file, its header left out. commandCount on a failure.
[[nodiscard]] std::int32_t countRecords(const openDataRec& data, std::uint32_t& count);

/// 1 when the first record of the data is a header and doesn't count.
[[nodiscard]] std::uint32_t headerRecords();

/// Which value is asked for: a link of a record, or of the first record that has a key.
struct valueRequestRec {
    const extractionRec* link = nullptr;
    std::uint32_t recordNumber = 0;     // from 1, as people count; 0: by `key`
    const std::uint8_t* key = nullptr;  // Pascal string, UTF-8
};

/// Fetches a value as UTF-8; `request` gets the number of a record that was found by its key. The header has no key. No
/// data, and a record behind the run's range, give an empty value. 0, commandBadTag, or commandFetch, also for a record
/// behind the end of the file.
[[nodiscard]] std::int32_t fetchValue(const openDataRec& data, valueRequestRec& request, std::string& value);

}  // namespace tarnova
