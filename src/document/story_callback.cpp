#include "document/story_callback.h"

#include <algorithm>
#include <memory>
#include <utility>

#include "document/document.h"
#include "document/walk_state.h"
#include "engine/toolkit/messages.h"
#include "engine/toolkit/toolkit_state.h"

namespace tarnova {

namespace {

constexpr std::int32_t noTextToWalk = 1;  // result for a story that isn't there
constexpr std::int32_t progressSteps = 10;

/// The class of the tags of the engine mode's store.
TextAttributeClass tagClassInUse() {
    return walkState().engineMode == 0 ? TextAttributeClass::kelvaneTag : TextAttributeClass::tallyraTag;
}

}  // namespace

ZavoStoryCallback::ZavoStoryCallback(bool withProgress, PMString statusText)
    : showProgress(withProgress ? 1 : 0), message(std::move(statusText)) {
    statusDialog(message, 0, showProgress != 0, false, toolkitState().engineError);
    initError = 0;
}

ZavoStoryCallback::~ZavoStoryCallback() {
    statusDialog(message, -1, showProgress != 0, false, toolkitState().engineError);
}

std::int32_t ZavoStoryCallback::Process(UIDRef story, std::int32_t& start, std::int32_t& length, UIDRef,
                                        std::uint16_t* cancelWord) {
    if (!story || story.database->totalLength(story.uid) == 0) return noTextToWalk;
    cancel = cancelWord;
    tagLength = 0;
    threadStart = threadLimit = 0;
    if (!StoryBegin(story)) return 0;
    position = start;
    storyEnd = start + length;
    if (const std::int32_t result = scan(story); result != 0) return result;
    storyBase += storyEnd;
    const std::int32_t result = StoryEnd(story);
    length = storyEnd - start;
    return result;
}

std::int32_t ZavoStoryCallback::scan(UIDRef story) {
    while (position < storyEnd && *cancel == 0) {
        readRun(story);
        if (tagLength > 0 && continuesTag()) {
            tagLength += runLength;
        } else if (tagLength > 0) {
            if (const std::int32_t result = closeTag(story); result != 0) return result;
            if (toolkitState().engineError != 0) break;
            continue;  // the run that ended the tag is read anew: the text and its attributes may be others now
        } else if (runTag != nullptr && TagIsMine(story, *runTag)) {
            openTag();
        }
        if (toolkitState().engineError != 0) break;
        position += std::max(runLength, 1);
        if (showProgress != 0) moveProgress();
    }
    return tagLength > 0 ? closeTag(story) : 0;
}

// The thread is asked for only where the scan leaves it; a tag that was worked on may have changed it.
void ZavoStoryCallback::readRun(UIDRef story) {
    const Document& document = *story.database;
    if (position < threadStart || position >= threadLimit) {
        const textSpanRec thread = document.threadSpan(story.uid, position);
        threadStart = thread.start;
        threadLimit = thread.start + thread.length;
    }
    const attributeRunRec run = document.attributeRunAt(story.uid, position);
    runLength = std::min(run.length, threadLimit - position);
    runEndsThread = position + runLength >= threadLimit;
    runTag = run.attributes == nullptr
                 ? nullptr
                 : static_cast<const TagAttribute*>(run.attributes->QueryByClassID(tagClassInUse()));
}

bool ZavoStoryCallback::continuesTag() const {
    return runTag != nullptr && runTag->tagId() == tagId && position == tagStart + tagLength &&
           position != tagThreadLimit;
}

void ZavoStoryCallback::openTag() {
    tagStart = position;
    tagLength = runLength;
    tagThreadLimit = threadLimit;
    tagId = runTag->tagId();
}

std::int32_t ZavoStoryCallback::closeTag(UIDRef story) {
    tagTail = tagStart + tagLength >= tagThreadLimit ? 1 : 0;
    frameRef = kInvalidUIDRef;
    if (wantsFrame) frameRef = {story.database, frameOfTag(story)};
    const std::int32_t result = TagProcess(story);
    tagLength = 0;
    threadStart = threadLimit = 0;
    return result;
}

// A story in a single frame isn't composed for the answer, which a merge asks for at every tag.
UID ZavoStoryCallback::frameOfTag(UIDRef story) const {
    const UID sole = story.database->soleFrame(story.uid);
    return sole != kInvalidUID ? sole : story.database->frameAt(story.uid, tagStart);
}

errorWord ZavoStoryCallback::replaceTagText(UIDRef story, std::u32string_view text, bool keepCharacters) {
    const std::int32_t before = story.database->totalLength(story.uid);
    const errorWord error = story.database->textReplace(story.uid, tagStart, tagLength - tagTail, text, keepCharacters);
    if (error != 0) return error;
    const std::int32_t growth = story.database->totalLength(story.uid) - before;
    storyEnd += growth;
    tagLength += growth;
    position = tagStart + tagLength;
    return 0;
}

errorWord ZavoStoryCallback::replaceTagData(UIDRef story, std::string_view data) {
    const TextAttributeClass store = tagClassInUse();
    const attributeRunRec run = story.database->attributeRunAt(story.uid, tagStart);
    const TextAttribute* stored = run.attributes == nullptr ? nullptr : run.attributes->QueryByClassID(store);
    if (stored == nullptr) return errFailed;
    TagAttribute::Content content = static_cast<const TagAttribute*>(stored)->content();
    content.data = data;
    return story.database->attributeApply(story.uid, tagStart, tagLength,
                                          std::make_shared<const TagAttribute>(store, std::move(content)));
}

errorWord ZavoStoryCallback::removeTag(UIDRef story) {
    return story.database->attributeRemove(story.uid, tagStart, tagLength, tagClassInUse());
}

void ZavoStoryCallback::moveProgress() {
    if (total <= 0) return;
    const std::int64_t walked = static_cast<std::int64_t>(storyBase) + position;
    const auto tenth = static_cast<std::int32_t>(walked * progressSteps / total);
    if (tenth <= lastTenth) return;
    lastTenth = tenth;
    statusDialog(message, tenth * 100 / progressSteps, true, false, toolkitState().engineError);
}

}  // namespace tarnova
