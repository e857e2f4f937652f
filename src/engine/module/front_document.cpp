#include "engine/module/front_document.h"

#include "document/document_host.h"
#include "engine/session/session.h"

namespace tarnova {

UIDRef documentOrFront(const commandCall& call, unsigned item) {
    const auto document = call.valueOr<UIDRef>(item, {});
    if (document.database != nullptr) return document;
    return session().documentHost == nullptr ? UIDRef{} : session().documentHost->frontDocument();
}

}  // namespace tarnova
