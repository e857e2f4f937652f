// From a data file to a definition: recognises encoding, delimiters, qualifier and field names from the file's first
// line, and makes fields and variable links of them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "data/text_kind.h"
#include "definitions/record_def_set.h"
#include "engine/toolkit/types.h"

namespace tarnova {

inline constexpr errorWord errSetupUtf16 = 351;
inline constexpr errorWord errSetupThirdKind = 352;

struct quickSetupField {
    std::string name;  // UTF-8, clean and unique, 1 to 31 bytes
    bool isPicture;    // the name in the file began with "@"
};

struct quickSetupAnalysis {
    bool cancelled = false;  // the user refused a file that looks binary; nothing else is filled then
    textKind kind = textKind::ascii;
    std::int16_t dataType = dataTypeEightBit;  // or dataTypeUtf8
    std::int16_t osType = osTypeLf;            // line end of the first line
    std::uint8_t delimiter = '\t';
    std::uint8_t qualifier = 0;  // 0: none
    std::vector<quickSetupField> fields;
    bool tooManyFields = false;  // the first line has more names than a definition can hold
};

/// What is known about a file before it is analysed; the rest is found out.
struct quickSetupKnown {
    std::optional<std::uint8_t> delimiter;
    std::optional<std::uint8_t> qualifier;  // 0: none
    std::optional<std::int16_t> dataType;   // dataTypeEightBit or dataTypeUtf8
};

/// What a person may choose before a definition is made of an analysis.
struct quickSetupChoices {
    bool detectLineEnd = true;   // osType 3: found out anew at each index build
    bool isNew = true;           // false: a remap of fields, which keeps the other settings and the variable links
    std::vector<bool> selected;  // fields that get a variable link; empty: all
    std::int16_t nodata = nodataGlobal;
    Str31 nodatastring = {};
    std::int16_t deleteline = 0;
};

/// Analyses a data file. It is read in pieces; the first line must end in the first 4 MiB. Errors: errSetupUtf16,
/// errSetupThirdKind, errDataRead; pendingErrorParam names the file.
[[nodiscard]] errorWord quickSetupAnalyze(const char* path, quickSetupAnalysis& analysis, errorWord priorError);
/// The same where something is known beforehand.
[[nodiscard]] errorWord quickSetupAnalyzeAs(const char* path, const quickSetupKnown& known,
                                            quickSetupAnalysis& analysis, errorWord priorError);

/// Gives the definition `name` of `set` (made when it isn't there) the fields and settings of an analysis and, unless
/// it is a remap, one variable link for each selected field. Without any field it fails with errFailed and shows
/// kZavoErrorNoFieldNamesDefined. Errors: those of record_def_set.h.
[[nodiscard]] errorWord quickSetupDefinition(recordDefSetRec& set, const std::uint8_t* name,
                                             const quickSetupAnalysis& analysis, const quickSetupChoices& choices,
                                             recordDefRec*& definition, errorWord priorError);

/// Variable links of a definition whose field is no longer in its field list, by index in its extractions.
[[nodiscard]] std::vector<std::size_t> unmappedExtractions(const recordDefRec& definition);

/// The same as `quickSetupDefinition` without links, for a definition that needn't belong to a set: the field list, the
/// key field and how the file is read.
void applyQuickSetup(recordDefFixedRec& definition, const quickSetupAnalysis& analysis,
                     const quickSetupChoices& choices);

}  // namespace tarnova
