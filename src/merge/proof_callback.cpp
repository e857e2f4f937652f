#include "merge/proof_callback.h"

#include "document/document.h"
#include "engine/session/session.h"
#include "engine/toolkit/text_encoding.h"
#include "merge/message_picture.h"
#include "merge/picture_placing.h"
#include "tags/tag_attribute.h"

namespace tarnova {

std::u32string proofText(const tagDataRec& tag) {
    const std::string_view key = pstrView(tag.searchKey);
    std::string text = "{{";
    if (!key.empty() && key != "1") text.append(key).append(":");
    const std::string_view name = pstrView(tag.extractionRecordName);  // old definitions may hold either encoding
    return utf8ToUtf32(text.append(isUtf8(name) ? std::string(name) : windows1252ToUtf8(name)).append("}}"));
}

ZavoProofStoryCallback::ZavoProofStoryCallback() {
    wantsFrame = false;
}

bool ZavoProofStoryCallback::TagIsMine(UIDRef story, const TagAttribute& attribute) {
    return tagIsOwn(attribute) && runCarriesTag(*story.database, story.uid, position, runLength, runEndsThread) &&
           tagRecordDecode(attribute.data(), &tag, nullptr, nullptr, 0) == 0;
}

std::int32_t ZavoProofStoryCallback::TagProcess(UIDRef story) {
    auto& error = session().engineError;
    if (error == 0) error = replaceTagText(story, proofText(tag), false);
    return 0;
}

bool ZavoProofFrameCallback::TagIsMine(std::string_view data) {
    return tagRecordDecode(data, &tag, nullptr, nullptr, 0) == 0;
}

std::int32_t ZavoProofFrameCallback::TagProcess() {
    auto& error = session().engineError;
    if (error != 0) return 0;
    const std::u32string text = proofText(tag);
    const bool isText = frameRef.database->isTextFrame(frameRef.uid);
    error = isText ? setFrameText(frameRef, text) : messagePicture(frameRef, text, 1, proofSwatch, true);
    return 0;
}

}  // namespace tarnova
