// A merge of records into copies of a template, from the data's opening to the last page.
//
// A run to an output works in chunks: a copy of the template is expanded by a few slots, merged, handed to the output
// and dropped, so that memory is bounded by the chunk, whatever the number of records. A built document is one chunk,
// merged into the document itself.

#pragma once

#include <cstdint>

#include "document/document.h"
#include "engine/toolkit/types.h"

namespace tarnova {

/// Takes the merged pages of a run, in order.
class PageOutput {
 public:
    virtual ~PageOutput() = default;
    /// All pages of `built` are merged and belong to the output; the document is gone after the call. A non-zero result
    /// ends the run with it.
    [[nodiscard]] virtual errorWord takePages(Document& built) = 0;
};

/// Pages that a chunk of a run to an output holds at most (at least one slot is built).
inline constexpr std::int32_t chunkPages = 64;

/// Starts a merge of the current definition's data into the document: counts the links, opens the data and settles the
/// range. `rangeFirst` and `rangeLast` of the session count from 1, both 0 for all records; the range is cut to the
/// file, as is a record list, which the label sort of the document then sorts when it is on. Translation tables are
/// loaded. A `stepBy` of 0 becomes the highest sequence number of the links. Errors: 332 no text links, 191 the range
/// begins behind the last record, 109 no data file, 262 and 264 a translation table is missing, errLabelSort, and what
/// opening the data gives.
[[nodiscard]] errorWord startMergeRun(UIDRef document, errorWord priorError);

/// Merges every record of the run into the document itself: its pages once for each slot. One undoable step.
[[nodiscard]] errorWord mergeToBuiltDocument(UIDRef document, errorWord priorError);

/// Merges every record of the run into copies of the template, chunk by chunk, and gives their pages to `output`. The
/// template isn't changed but for `markTemplate`.
[[nodiscard]] errorWord mergeToOutput(UIDRef documentTemplate, PageOutput& output, errorWord priorError);

/// Ends the run, after a failure too: closes the data and clears the run's fields. What the run reports (counters, the
/// census) stays until the next start.
void finishMergeRun();

}  // namespace tarnova
