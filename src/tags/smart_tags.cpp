#include "tags/smart_tags.h"

#include <algorithm>

#include "tags/tag_attribute.h"

namespace tarnova {

ZavoSmartTagsCallback::ZavoSmartTagsCallback() {
    wantsFrame = false;
}

bool ZavoSmartTagsCallback::TagIsMine(UIDRef story, const TagAttribute& attribute) {
    return tagIsOwn(attribute) && runCarriesTag(*story.database, story.uid, position, runLength, runEndsThread) &&
           tagRecordDecode(attribute.data(), &tag, nullptr, nullptr, 0) == 0;
}

std::int32_t ZavoSmartTagsCallback::TagProcess(UIDRef story) {
    if (tagLength < 2) return 0;
    std::int32_t key = 0;
    pstrToLong(tag.searchKey, &key);
    ++count;
    highest = std::max(highest, key);
    text = story.database->textRead(story.uid, tagStart, tagLength - tagTail);
    return 0;
}

void countSmartTags(Document& document, std::int32_t& outTagCount, std::int32_t& outHighestKey) {
    ZavoSmartTagsCallback texts;
    std::uint16_t cancel = 0;
    walkDocument(document, nullptr, &texts, 0, 0, WalkScope::everything, false, false, nullptr, nullptr, &cancel, true);
    outTagCount = texts.tagCount();
    outHighestKey = texts.highestKey();
}

}  // namespace tarnova
