// Keeps the session in step with the documents of the host: which definition is current follows the document in front,
// and a document that is saved takes its definition along.

#pragma once

#include "document/document_host.h"

namespace tarnova {

class ZavoDocWatchResponder final : public DocumentWatch {
 public:
    void Respond(DocumentSignal signal, UIDRef document) override;
};

}  // namespace tarnova
