#include "engine/module/tag_text_commands.h"

#include "engine/module/front_document.h"
#include "tags/tag_text.h"

namespace tarnova {

std::int32_t convertTags(commandCall& call) {
    const auto document = call.valueOr<UIDRef>(0, {});
    if (document.database == nullptr) return commandDocument;
    const bool toText = call.valueOr<std::uint8_t>(1, 0) != 0;
    const bool good = toText ? convertLinksToText(document) : convertTextToLinks(document);
    return good ? commandDone : commandFailed;
}

}  // namespace tarnova
