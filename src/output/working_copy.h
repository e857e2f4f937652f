// The working copy: the template of a run as a file of its own in the folder of temporary files, so that chunks can be
// built and merged while the user's document stays as it is; and the opening of what a pass works on.
//
// Every operation goes through `session().documentHost`; without one it fails. Where the host says why it failed, that
// is `pendingErrorParam`.

#pragma once

#include "document/uid.h"
#include "engine/toolkit/types.h"

namespace tarnova {

inline constexpr errorWord errSourceSave = 320;
inline constexpr errorWord errSourceReopen = 321;
inline constexpr errorWord errWorkingCopySave = 322;  // also: the document has no file of its own
inline constexpr errorWord errWorkingCopyOpen = 323;
inline constexpr errorWord errWorkingCopyClose = 324;

/// Saves a copy of the document under its name into the folder of temporary files and takes a snapshot of the build
/// tables. With `copyFonts`, and unless the preference is off, the folder "Document fonts" beside the document goes
/// first; that failing is told and nothing more.
[[nodiscard]] errorWord saveWorkingCopy(UIDRef document, bool copyFonts, errorWord priorError);

/// Opens the working copy and puts the snapshot in place of the build tables; one that is open is given as it is.
[[nodiscard]] errorWord openWorkingCopy(UIDRef& outDocument, errorWord priorError);

/// Closes the working copy; with none open nothing happens. `outDocument` is nothing afterwards.
[[nodiscard]] errorWord closeWorkingCopy(UIDRef& outDocument, errorWord priorError);

/// Saves the document to its own file and remembers that, and whether it has a window.
[[nodiscard]] errorWord saveSourceDocument(UIDRef document, errorWord priorError);
[[nodiscard]] errorWord reopenSourceDocument(UIDRef& outDocument, errorWord priorError);

/// Puts the open working copy back to the template, and the build tables to their snapshot. Errors: errFailed for any
/// other document.
[[nodiscard]] errorWord resetToSnapshot(UIDRef document, errorWord priorError);

/// Readies the working copy's template for its first chunk: composed, masters' items made items of the pages with
/// `detachMasters`, marked as what repeats. Once for all chunks; another document is left alone.
[[nodiscard]] errorWord prepareWorkingTemplate(UIDRef document, bool detachMasters, errorWord priorError);

/// Opens what a pass of the run works on and builds its slots: the run's document itself while that is open, else the
/// working copy, else the user's document, of which a working copy is then made. `outDocument` is that document.
[[nodiscard]] errorWord preparePass(bool firstPass, UIDRef& outDocument, errorWord priorError);

/// Closes what `preparePass` opened.
[[nodiscard]] errorWord closePassDocument(UIDRef document, errorWord priorError);

}  // namespace tarnova
