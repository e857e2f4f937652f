#include "tags/remove_tags.h"

#include "engine/toolkit/messages.h"
#include "rules/rule_info.h"
#include "tags/tag_attribute.h"
#include "tags/tag_manager.h"

namespace tarnova {

ZavoRemoveInfoFrameCallback::ZavoRemoveInfoFrameCallback(removedInfoCounts& itsCounts)
    : ZavoFrameCallback(true, PMString::ofKey("kZavoProcessingDocumentFramesMessageStringKey")), counts(itsCounts) {}

bool ZavoRemoveInfoFrameCallback::FrameBegin() {
    ruleInfoRec rule;
    const bool hasRule = getBoxRule(frameRef, rule) == 0 && rule.state == 0;
    const bool hasTag = itemDataView(frameRef, ItemDataPlace::pageItem, signature, walkState().engineMode).has_value();
    if (!hasRule && !hasTag) return false;
    if (hasTag && dataTagManager().RemoveFrameTag(frameRef) != 0) hasFailed = true;
    forgetBoxRule(frameRef);
    ++counts.frames;
    return false;
}

ZavoRemoveInfoCallback::ZavoRemoveInfoCallback(removedInfoCounts& itsCounts)
    : ZavoStoryCallback(true, PMString::ofKey("kZavoRemovingInfoMessageStringKey")), counts(itsCounts) {
    wantsFrame = false;
}

bool ZavoRemoveInfoCallback::TagIsMine(UIDRef, const TagAttribute& attribute) {
    return tagIsOwn(attribute);
}

std::int32_t ZavoRemoveInfoCallback::TagProcess(UIDRef story) {
    if (removeTag(story) != 0) hasFailed = true;
    ++counts.texts;
    return 0;
}

bool removeAllTags(UIDRef document, removedInfoCounts& outCounts) {
    outCounts = {};
    const PMString title = PMString::ofKey("kZavoRemoveInfoSequenceStringKey");
    bool good = document.database != nullptr && document.database->BeginCommandSequence(title.view()) == 0;
    if (good) {
        Document& target = *document.database;
        std::int32_t items = 0, characters = 0;
        const auto walk = [&](IFrameCallback* frames, IStoryCallback* stories) {
            std::uint16_t cancel = 0;
            walkDocument(target, frames, stories, 0, 0, WalkScope::everything, false, false, &items, &characters,
                         &cancel, true);
        };
        walk(nullptr, nullptr);
        {
            ZavoRemoveInfoFrameCallback frames(outCounts);
            frames.SetTotal(items);
            walk(&frames, nullptr);
            good = !frames.failed();
        }
        ZavoRemoveInfoCallback stories(outCounts);
        stories.SetTotal(characters);
        walk(nullptr, &stories);
        good = good && !stories.failed();
        for (std::int32_t page = 0; page < target.pageCount(); ++page)
            forgetPageRule(document, page);
        target.EndCommandSequence();
    }
    if (!good) reportErrorKey("kZavoErrorRemoveInfoSequenceFailed");
    return good;
}

}  // namespace tarnova
