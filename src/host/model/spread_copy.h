// Copies one spread behind the last: new UIDs, shared contents, the same stamps.

#pragma once

#include "host/model/model_document.h"

namespace tarnova {

class SpreadCopy {
 public:
    SpreadCopy(ModelDocument& itsDocument, const Spread& itsSource) : document(itsDocument), source(itsSource) {}
    /// Gives 0, or an error when the document has no UIDs left; then nothing was copied.
    [[nodiscard]] errorWord make();

 private:
    void copyPages(Spread& to);

    ModelDocument& document;
    const Spread& source;
};

}  // namespace tarnova
