#include "merge/pull_story_callback.h"

#include <algorithm>
#include <memory>

#include "definitions/definition_state.h"
#include "definitions/record_def_set.h"
#include "document/document.h"
#include "engine/session/preferences.h"
#include "engine/session/session.h"
#include "engine/toolkit/alerts.h"
#include "merge/delete_question.h"
#include "merge/link_report.h"
#include "merge/price_layout.h"
#include "merge/text_import.h"
#include "output/build_tables.h"
#include "tags/tag_attribute.h"

namespace tarnova {
namespace {

constexpr std::uint16_t storyTouched = 1;

constexpr char32_t paragraphReturn = U'\r';

bool isBlank(char32_t c) {
    return c == U' ' || c == U'\t' || c == U'\r' || c == U'\n' || c == U'\u00A0' || c == U'\u2028';
}

/// The page entry on which all frames of a story lie, or nothing when they lie on several (or the story has none).
bool commonPageEntry(UIDRef story, std::int32_t& pageEntry) {
    const Document& document = *story.database;
    if (const UID frame = document.soleFrame(story.uid); frame != kInvalidUID) {
        pageEntry = std::max(document.pageIndex(document.pageOfItem(frame).page), 0);
        return true;
    }
    const std::vector<UID> frames = document.framesOfStory(story.uid);
    if (frames.empty()) return false;
    const UID page = document.pageOfItem(frames.front()).page;
    const bool same = std::all_of(frames.begin() + 1, frames.end(),
                                  [&](UID frame) { return document.pageOfItem(frame).page == page; });
    pageEntry = std::max(document.pageIndex(page), 0);
    return same;
}

}  // namespace

ZavoPullStoryCallback::ZavoPullStoryCallback(PMString statusText, std::uint16_t* changedWord)
    : TagTrimmer(std::move(statusText)),
      LinkMerge(defaultSetText),
      sharedChanged(changedWord),
      mergeOn(session().mergeOn) {
    initError = openData() ? 0 : 1;
}

bool ZavoPullStoryCallback::StoryBegin(UIDRef story) {
    if (alertService().cancelAsked()) *cancel |= 1;
    if (*cancel != 0) return false;
    storyRef = story;
    storyPageKnown = commonPageEntry(story, storyPageEntry);
    linkKeys.beginStory();
    return true;
}

bool ZavoPullStoryCallback::TagIsMine(UIDRef story, const TagAttribute& attribute) {
    if (!TagTrimmer::TagIsMine(story, attribute)) return false;
    tagIsGone = false;
    return readTag(attribute.data());
}

std::int32_t ZavoPullStoryCallback::TagProcess(UIDRef story) {
    changed |= storyTouched;
    auto& error = session().engineError;
    bool isMerged = true;
    error = prepareTag(story, isMerged, error);
    if (isMerged) {
        error = chooseRecord(error);
        error = prepareValue(error);
        if (error == 0) decideAction(*cancel);
        error = linkReport().isOn ? replaceAndReport(story, error) : replaceRun(story, error);
    }
    if (isPriceRun() && !tagIsGone) linkKeys.pass({story, tagStart, tagLength - tagTail}, tagRec);
    value = tagValueRec{};
    position = tagStart + tagLength;
    return 0;
}

/// Says whether the tag is merged now. In a price run the links whose key stands on their page wait for the second
/// round, which merges just them.
errorWord ZavoPullStoryCallback::prepareTag(UIDRef story, bool& isMerged, errorWord priorError) {
    errorWord error = priorError;
    if (error == 0 && appPrefs().trimTagText != 0 && session().trimDone == 0) {
        error = trimTag(story, tagIsGone);
        isMerged = !tagIsGone;
    }
    if (error != 0 || !isMerged || !isPriceRun()) return error;
    extractionRec* link = nullptr;
    error = findExtraction(definitionState().currentRecordDef, tagRec.extractionRecordName, link, error);
    if (error != 0 || link == nullptr) return error;
    auto& run = session();
    const bool waits = keyStandsOnPage(*link);
    if (waits != (run.secondRound != 0)) {
        if (waits) ++run.deferredLinkCount;
        isMerged = false;
        return 0;
    }
    return link->magicKeyNumbers[0] == keyTypeOwn ? errorWord{0} : settleKey(story, *link);
}

/// Finds the link's key and stores it in its tag.
errorWord ZavoPullStoryCallback::settleKey(UIDRef story, const extractionRec& link) {
    linkPlaceRec place{story, tagStart, tagLength - tagTail};
    if (keyStandsOnPage(link)) {
        const Document& document = *story.database;
        const std::int32_t pageEntry = pageEntryOfTag(story);
        if (pageEntry < document.pageCount()) place.page = document.pageAt(pageEntry);
    }
    linkKeys.settle(place, link, firstOnTracker(), tagRec);
    std::byte* block = nullptr;
    const errorWord error = tagRecordEncode(&tagRec, &block, 0);
    if (error != 0) return error;
    const blockPtr<std::byte> owned(block);
    return replaceTagData(story, {reinterpret_cast<const char*>(block), blockSize(block)});
}

keywordPlaceRec ZavoPullStoryCallback::placeOfLink() {
    return {storyRef.database->ref(), recordPosition, pageEntryOfTag(storyRef)};
}

/// Position of the tag's page in the built document. A link in an overset part counts with the story's last frame.
std::int32_t ZavoPullStoryCallback::pageEntryOfTag(UIDRef story) {
    if (storyPageKnown) return storyPageEntry;
    Document& document = *story.database;
    UID frame = document.frameAt(story.uid, tagStart);
    if (frame == kInvalidUID) {
        const std::vector<UID> frames = document.framesOfStory(story.uid);
        if (!frames.empty()) frame = frames.back();
    }
    return std::max(document.pageIndex(document.pageOfItem(frame).page), 0);
}

/// Replaces the run and tells what became of its text.
errorWord ZavoPullStoryCallback::replaceAndReport(UIDRef story, errorWord priorError) {
    if (priorError != 0) return priorError;
    const auto runText = [&] { return story.database->textRead(story.uid, tagStart, tagLength - tagTail); };
    linkReportRec link{tagRec, story};
    if (linkReport().wantsPages) link.pageEntry = pageEntryOfTag(story);
    link.locked = lockedLink;
    // A keyword needs no record.
    const bool isKeyword = value.extraction != nullptr && keywordOf(*value.extraction);
    link.status = isKeyword ? fetchFound : value.status;
    link.oldText = runText();
    const errorWord error = replaceRun(story, 0);
    if (error != 0) return error;
    if (!tagIsGone) link.newText = runText();
    const bool isSame = link.oldText == link.newText;
    link.state = tagIsGone ? LinkState::deleted : isSame ? LinkState::unchanged : LinkState::changed;
    reportLink(link);
    return 0;
}

errorWord ZavoPullStoryCallback::replaceRun(UIDRef story, errorWord priorError) {
    if (priorError != 0 || mergeOn == 0 || lockedLink) return priorError;
    if (deleteMode) return deleteRun(story);
    if (!hasValue) return 0;
    if (importsValue(value)) return replaceByImport(story);
    if (value.style != nullptr) return replaceByPrice(story);
    // One replacement for the whole run: the new text takes the attributes of the run's first character, its tag
    // among them, whatever the rest of the run looked like.
    return replaceTagText(story, newText, false);
}

/// The same for a link with a price style: what an earlier price left on the run goes first. A text that stands in for
/// a price is none.
errorWord ZavoPullStoryCallback::replaceByPrice(UIDRef story) {
    const std::int32_t length = tagLength - tagTail;
    const priceAttributesRec noted = notePriceAttributes(story, tagStart, length);
    errorWord error = resetPriceAttributes(story, tagStart, noted, 0);
    if (value.status != fetchFound) return error != 0 ? error : replaceTagText(story, newText, false);
    const formattedPriceRec price = formatPrice(newText, *value.style, appPrefs().priceTrailingText != 0);
    if (error == 0) error = replaceTagText(story, price.text, false);
    return layoutPrice(story, tagStart, price, *value.style, noted, error);
}

/// The same for a link that imports. The imported text has attributes of its own, so that the tag is laid over it anew.
errorWord ZavoPullStoryCallback::replaceByImport(UIDRef story) {
    Document& document = *story.database;
    const TagAttribute* const stored = ownTagOf(document.attributeRunAt(story.uid, tagStart).attributes);
    if (stored == nullptr) return errFailed;
    const auto tag = std::make_shared<const TagAttribute>(stored->attributeClass(), stored->content());
    const std::int32_t before = document.totalLength(story.uid);
    bool imported = false;
    const errorWord error = importValue(story, tagStart, tagLength - tagTail, value, newText, imported, *cancel);
    if (error != 0 || !imported) return error;
    const std::int32_t growth = document.totalLength(story.uid) - before;
    storyEnd += growth;
    tagLength += growth;
    const std::int32_t length = tagLength - tagTail;
    return length > 0 ? document.attributeApply(story.uid, tagStart, length, tag) : errorWord{0};
}

errorWord ZavoPullStoryCallback::deleteRun(UIDRef story) {
    const DeleteAnswer answer = askDelete(*story.database, pageEntryOfTag(story), tagRec);
    if (answer == DeleteAnswer::notice)
        return replaceTagText(story, PMString::ofKey("kZavoLinkDeletedStringKey").codePoints(), false);
    if (answer == DeleteAnswer::keep) return 0;
    tagIsGone = true;
    errorWord error = removeTag(story);
    if (error == 0) error = replaceTagText(story, {}, true);
    if (error != 0) return error;
    const std::int16_t deleteLine = value.extraction->deleteline;
    if (deleteLine != deletelineNothing) queueParagraph(story, tagStart, deleteLine == deletelineAlways);
    return 0;
}

void ZavoPullStoryCallback::queueParagraph(UIDRef story, std::int32_t atPosition, bool unconditional) {
    const std::int32_t start = story.database->paragraphAt(story.uid, atPosition).start;
    if (!paragraphQueue.empty() && paragraphQueue.back().position == start) {
        paragraphQueue.back().unconditional |= unconditional;
        return;
    }
    paragraphQueue.push_back({start, unconditional});
}

std::int32_t ZavoPullStoryCallback::StoryEnd(UIDRef story) {
    if (mergeOn == 0) changed = 0;
    if (sharedChanged != nullptr) *sharedChanged |= changed;
    auto& error = session().engineError;
    error = cleanParagraphs(story, error);
    if (changed != 0 && error == 0) checkOverset(story);
    changed = 0;
    return 0;
}

errorWord ZavoPullStoryCallback::cleanParagraphs(UIDRef story, errorWord priorError) {
    errorWord error = priorError;
    for (auto entry = paragraphQueue.rbegin(); entry != paragraphQueue.rend() && error == 0; ++entry) {
        error = cleanParagraph(story, *entry);
    }
    paragraphQueue.clear();
    return error;
}

errorWord ZavoPullStoryCallback::cleanParagraph(UIDRef story, const queuedParagraphRec& entry) {
    Document& document = *story.database;
    const textSpanRec paragraph = document.paragraphAt(story.uid, entry.position);
    const textSpanRec thread = document.threadSpan(story.uid, entry.position);
    const std::u32string text = document.textRead(story.uid, paragraph.start, paragraph.length);
    if (!entry.unconditional && !std::all_of(text.begin(), text.end(), isBlank)) return 0;

    std::int32_t start = paragraph.start;
    std::int32_t limit = paragraph.start + paragraph.length;
    if (limit == thread.start + thread.length) {
        --limit;  // the closing mark stays
        const bool takesReturn = appPrefs().trimTagText != 0 && start - thread.start >= 2 &&
                                 document.textRead(story.uid, start - 2, 1).front() != paragraphReturn;
        if (takesReturn) --start;
    }
    if (limit == start) return 0;
    storyEnd -= limit - start;
    return document.textDelete(story.uid, start, limit - start);
}

/// Composes the story to its end and counts it with its slot when it doesn't fit.
void ZavoPullStoryCallback::checkOverset(UIDRef story) {
    Document& document = *story.database;
    document.composeStoryThrough(story.uid, document.totalLength(story.uid));
    if (!document.isOverset(story.uid)) return;
    const pageMapRec* const page = pageMapAt(storyPageEntry);
    recordSlotRec* const slot = page != nullptr ? recordSlotAt(page->slot) : nullptr;
    if (slot == nullptr) return;
    ++slot->missingTextCount;
    constexpr std::uint16_t flagYes = 1;
    if (appPrefs().flagTextErrors == flagYes) slot->hasMergeError |= 1;
}

}  // namespace tarnova
