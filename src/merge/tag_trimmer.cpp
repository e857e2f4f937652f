#include "merge/tag_trimmer.h"

#include <string>
#include <string_view>
#include <utility>

#include "document/document.h"
#include "document/walk.h"
#include "engine/session/session.h"
#include "tags/tag_attribute.h"

namespace tarnova {

TagTrimmer::TagTrimmer(PMString statusText) : ZavoStoryCallback(!statusText.empty(), std::move(statusText)) {
    wantsFrame = false;
}

bool TagTrimmer::TagIsMine(UIDRef story, const TagAttribute& attribute) {
    return attribute.ownerName() == engineName() &&
           runCarriesTag(*story.database, story.uid, position, runLength, runEndsThread);
}

std::int32_t TagTrimmer::TagProcess(UIDRef story) {
    const std::int32_t start = tagStart + tagLength;
    bool isGone = false;
    session().engineError = trimTag(story, isGone);
    position = start;
    return session().engineError;
}

errorWord TagTrimmer::trimTag(UIDRef story, bool& isGone) {
    constexpr std::u32string_view white = U" \t";
    Document& document = *story.database;
    const std::u32string text = document.textRead(story.uid, tagStart, tagLength - tagTail);
    const std::size_t first = text.find_first_not_of(white);
    if (first == text.npos) {
        isGone = true;
        return removeTag(story);
    }
    const auto lead = static_cast<std::int32_t>(first);
    const auto limit = static_cast<std::int32_t>(text.find_last_not_of(white)) + 1;
    const auto trail = static_cast<std::int32_t>(text.size()) - limit;
    errorWord error = 0;
    if (trail > 0) {
        error = document.attributeRemove(story.uid, tagStart + limit, tagLength - limit, tagClassOfMode());
        tagLength = limit;
        tagTail = 0;
    }
    if (error == 0 && lead > 0) {
        error = document.attributeRemove(story.uid, tagStart, lead, tagClassOfMode());
        tagStart += lead;
        tagLength -= lead;
    }
    return error;
}

errorWord trimAllTags(UIDRef document, bool showProgress, errorWord priorError) {
    if (priorError != 0 || appPrefs().trimTagText == 0) return priorError;
    TagTrimmer texts(showProgress ? PMString::ofKey("kZavoProcessingDocumentTextMessageStringKey") : PMString{});
    std::uint16_t cancel = 0;
    walkDocument(*document.database, nullptr, &texts, 0, 0, WalkScope::everything, false, false, nullptr, nullptr,
                 &cancel, true);
    return session().engineError;
}

}  // namespace tarnova
