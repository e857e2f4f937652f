#include "document/document_looks.h"

namespace tarnova {

DocumentLooks* looksOf(Document& document) {
    return dynamic_cast<DocumentLooks*>(&document);
}

}  // namespace tarnova
