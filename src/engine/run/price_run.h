// The price run: the links of a document are filled in place, each from the record that its key finds.

#pragma once

#include <cstdint>
#include <string>

#include "document/document_host.h"
#include "document/uid.h"
#include "engine/toolkit/types.h"

namespace tarnova {

/// How a priced document came out. What its links came to is counted in `linkReport`.
struct priceSummaryRec {
    std::int16_t status = 0;  // fetchStatus of the worst link
    std::string text;         // that link, as `linkCountsRec::lowestText`
    errorWord message = 0;    // error of the table that says it for people; 0: all links found their values
};
/// Of the last document.
[[nodiscard]] const priceSummaryRec& lastPriceSummary();

/// Notes the document and clears what an earlier run left; the run begins at the next idle step once `priceStart` is
/// set. False without a document.
[[nodiscard]] bool startPriceRun(UIDRef document);

/// One turn: a run that was asked for is carried out and cleaned up behind. Gives the error to be shown.
[[nodiscard]] errorWord priceStep(errorWord priorError);

/// Merges one document in price mode, as one step of undo. `cancel` gets bit 0 when it was stopped, `done` whether it
/// came to its end and no link failed. With `openedFile` an empty `document` is a file that couldn't be opened.
[[nodiscard]] errorWord priceDocument(UIDRef document, bool openedFile, std::uint16_t& cancel, bool& done,
                                      errorWord priorError);

/// Merges what is selected in a document, a range of a text or page items with what they hold, in price mode and as one
/// step of undo.
[[nodiscard]] errorWord priceSelection(UIDRef document, const selectionRec& selection, std::uint16_t& cancel,
                                       errorWord priorError);

}  // namespace tarnova
