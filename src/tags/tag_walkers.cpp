#include "tags/tag_walkers.h"

#include "engine/toolkit/messages.h"
#include "engine/toolkit/text_encoding.h"
#include "tags/tag_attribute.h"

namespace tarnova {

namespace {

void walkStories(Document& document, IStoryCallback& stories) {
    std::uint16_t cancel = 0;
    walkDocument(document, nullptr, &stories, 0, 0, WalkScope::everything, false, false, nullptr, nullptr, &cancel,
                 true);
}

}  // namespace

ZavoToggleStoryCallback::ZavoToggleStoryCallback(bool itsShowLabels) : showLabels(itsShowLabels) {
    wantsFrame = false;
}

bool ZavoToggleStoryCallback::TagIsMine(UIDRef story, const TagAttribute& attribute) {
    if (!tagIsOwn(attribute) || !runCarriesTag(*story.database, story.uid, position, runLength, runEndsThread)) {
        return false;
    }
    shown = showLabels ? attribute.label() : attribute.spare();
    return true;
}

std::int32_t ZavoToggleStoryCallback::TagProcess(UIDRef story) {
    if (replaceTagText(story, utf8ToUtf32(shown), true) != 0) hasFailed = true;
    return 0;
}

ZavoTraceStoryCallback::ZavoTraceStoryCallback() {
    wantsFrame = false;
}

bool ZavoTraceStoryCallback::TagIsMine(UIDRef story, const TagAttribute& attribute) {
    if (!tagIsOwn(attribute) || !runCarriesTag(*story.database, story.uid, position, runLength, runEndsThread)) {
        return false;
    }
    label = attribute.label();
    return true;
}

std::int32_t ZavoTraceStoryCallback::TagProcess(UIDRef) {
    const PMString name(label), start(std::to_string(tagStart)), length(std::to_string(tagLength - tagTail));
    PMString text = PMString::ofKey("kZavoTagAlertStringKey");
    pmSubstitute(text, &name, &start, &length);
    if (!askChoice(text, true, 1)) *cancel = 1;
    return 0;
}

bool showTagLabels(UIDRef document, bool showLabels) {
    const PMString title = PMString::ofKey("kZavoDisplaySequenceStringKey");
    bool good = document.database->BeginCommandSequence(title.view()) == 0;
    if (good) {
        ZavoToggleStoryCallback stories(showLabels);
        walkStories(*document.database, stories);
        document.database->EndCommandSequence();
        good = !stories.failed();
    }
    if (!good) reportErrorKey("kZavoErrorDisplaySequenceFailed");
    return good;
}

void traceTags(UIDRef document) {
    ZavoTraceStoryCallback stories;
    walkStories(*document.database, stories);
}

}  // namespace tarnova
