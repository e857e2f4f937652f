// Masters in a run of several slots. An item of a master is shared by all its pages, so that no record could have it
// for itself; before the template is copied, such items become items of the pages.

#pragma once

#include "document/uid.h"
#include "engine/toolkit/types.h"

namespace tarnova {

/// Lists the document's masters in `masterNotes`, with whether a record may change what they show: an item that is
/// marked as variable or that holds a link of the engine mode's store, on the master itself or on any that is related
/// to it by what they are based on, in either direction.
void gatherMasters(UIDRef document);

/// What `gatherMasters` found of a master; false for one that it didn't see.
[[nodiscard]] bool masterIsVariable(UIDRef master);

/// Whether the type of the run lets items of masters become items of pages: previews, merges into the current document,
/// line tests and preflights work on the masters themselves.
[[nodiscard]] bool runDetachesMasters();

/// A page of the document has rules, as the rules module tells; false without the module.
[[nodiscard]] bool documentHasPageRules(UIDRef document);

/// Makes the items of masters items of the pages that show them, on locked layers too, takes the masters off those
/// pages, and marks what is there now as the template that repeats. A page stays as it is when the rules module reads
/// its rule attributes and these are of no kind, or of the kinds 23 or 24. Without a master in use nothing is changed.
[[nodiscard]] errorWord detachMasterItems(UIDRef document, errorWord priorError);

}  // namespace tarnova
