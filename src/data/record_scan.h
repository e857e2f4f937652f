// The parser's fast way for the usual files: a field delimiter of one byte, a qualifier of at most one, and a record
// delimiter of CR, CR LF or LF. It gives exactly the entries of the byte machine. Own to this folder.
#pragma once

#include "data/record_parser.h"

namespace tarnova {

/// Whether scanRecords may read files of this form.
[[nodiscard]] bool scanApplies(const parserConfig& config);

/// Takes as much of the input as it can: all of it, or all but a last CR that may begin a record delimiter. Returns
/// early when the batch is full. A parse goes through with the function it began with.
[[nodiscard]] errorWord scanRecords(const parserConfig& config, parserState& state, parserInput& input,
                                    entryBatch& batch);

/// The byte machine, for delimiters of any length.
[[nodiscard]] errorWord stepRecords(const parserConfig& config, parserState& state, parserInput& input,
                                    entryBatch& batch);

}  // namespace tarnova
