#include "engine/module/front_document.h"

#include "document/document.h"
#include "document/document_host.h"
#include "engine/session/session.h"

namespace tarnova {

UIDRef frontDocument() {
    return session().documentHost == nullptr ? UIDRef{} : session().documentHost->frontDocument();
}

UIDRef documentOrFront(const commandCall& call, unsigned item) {
    const auto document = call.valueOr<UIDRef>(item, {});
    return document.database != nullptr ? document : frontDocument();
}

bool objectExists(const UIDRef& object) {
    return object.database != nullptr && object.database->itemExists(object.uid);
}

}  // namespace tarnova
