#include "tags/link_check.h"

#include "tags/tag_attribute.h"

namespace tarnova {

bool ZavoCheckForFrameLinksCallback::TagIsMine(std::string_view) {
    *cancel = 1;
    return false;
}

ZavoCheckForTextLinksCallback::ZavoCheckForTextLinksCallback() {
    wantsFrame = false;
}

bool ZavoCheckForTextLinksCallback::TagIsMine(UIDRef story, const TagAttribute& attribute) {
    if (tagIsOwn(attribute) && runCarriesTag(*story.database, story.uid, position, runLength, runEndsThread))
        *cancel = 1;
    return false;
}

bool itemHasLinks(UIDRef item) {
    ZavoCheckForFrameLinksCallback frames;
    ZavoCheckForTextLinksCallback texts;
    std::uint16_t cancel = 0;
    walkItem(item, &frames, &texts, &cancel);
    return cancel != 0;
}

}  // namespace tarnova
