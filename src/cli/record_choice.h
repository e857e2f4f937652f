// The options by which `tarnova merge` takes some of the records, sorts them for labels and maps their bytes.

#pragma once

#include <cstdint>
#include <string>

#include "document/uid.h"

namespace CLI {
class App;
}

namespace tarnova {

struct verbContext;

struct recordChoiceRec {
    std::string records;      // "1-5,8,10-12", or "10-" for all from the tenth; empty: all
    std::string filter;       // LINK with data, LINK= without data, LINK=TEXT containing the text; empty: none
    std::string sortLabels;   // "3x8", then ",rows", ",spread", ",reverse" as wanted; empty: not sorted
    std::string importTable;  // a file, or the name of a table; empty: the definition's
};

/// Adds the options to a verb.
void addRecordOptions(CLI::App& verb, recordChoiceRec& choice);

/// Whether the options can be read. False after telling why, with the exit status for wrong usage.
[[nodiscard]] bool recordChoiceFits(const recordChoiceRec& choice, verbContext& context);

/// Makes the choice the session's for a run of the current definition's data into `layout` with `step` records on a
/// page (0: as many as its links take). False after telling why.
[[nodiscard]] bool takeRecordChoice(const recordChoiceRec& choice, UIDRef layout, std::uint32_t step);

}  // namespace tarnova
