#include "merge/pull_story_callback.h"

#include <algorithm>

#include "document/document.h"
#include "engine/session/preferences.h"
#include "engine/session/session.h"
#include "engine/toolkit/alerts.h"
#include "engine/toolkit/messages.h"
#include "engine/toolkit/text_encoding.h"
#include "output/build_tables.h"

namespace tarnova {
namespace {

constexpr std::uint16_t storyTouched = 1;
constexpr std::int16_t runRefusedTag = -6029;

constexpr char32_t paragraphReturn = U'\r';

bool isBlank(char32_t c) {
    return c == U' ' || c == U'\t' || c == U'\r' || c == U'\n' || c == U'\u00A0' || c == U'\u2028';
}

std::string_view trimBlanks(std::string_view text) {
    const std::size_t first = text.find_first_not_of(' ');
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

void appendData(std::u32string& out, std::string_view bytes, bool isUtf8Text) {
    if (isUtf8Text) {
        appendUtf8AsUtf32(out, bytes);
        return;
    }
    out.reserve(out.size() + bytes.size());
    for (const char byte : bytes)
        out.push_back(codePointOfWindows1252(static_cast<std::uint8_t>(byte)));
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
    : ZavoStoryCallback(!statusText.empty(), std::move(statusText)),
      sharedChanged(changedWord),
      mergeOn(session().mergeOn) {
    wantsFrame = false;  // asked for only where the page can't be known without composition
    dataSourceRec* source = nullptr;
    std::int16_t status = openStatusNothing;
    session().engineError = openCurrentData(source, status, nullptr, session().engineError);
    initError = session().engineError != 0 || source == nullptr ? 1 : 0;
}

bool ZavoPullStoryCallback::StoryBegin(UIDRef story) {
    if (alertService().cancelAsked()) *cancel |= 1;
    if (*cancel != 0) return false;
    storyPageKnown = commonPageEntry(story, storyPageEntry);
    return true;
}

bool ZavoPullStoryCallback::TagIsMine(UIDRef story, const TagAttribute& attribute) {
    if (attribute.ownerName() != engineName()) return false;
    if (runEndsThread && runLength < 2) return false;
    if (story.database->hasOwnedItem(story.uid, position, runLength)) return false;
    value = tagValueRec{};
    keepMode = false;
    deleteMode = false;
    deleteLine = deletelineNothing;
    auto& error = session().engineError;
    error = tagRecordDecode(attribute.data(), &tagRec, nullptr, nullptr, error);
    return error == 0;
}

std::int32_t ZavoPullStoryCallback::TagProcess(UIDRef story) {
    changed |= storyTouched;
    auto& error = session().engineError;
    error = chooseRecord(story, error);
    error = prepareValue(error);
    if (error == 0) decideAction();
    error = replaceRun(story, error);
    value = tagValueRec{};
    position = tagStart + tagLength;
    return 0;
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

/// The record by page and sequence number, and its value or, behind the end of the run's records, a filler. In a price
/// run the key finds the record.
errorWord ZavoPullStoryCallback::chooseRecord(UIDRef story, errorWord priorError) {
    if (priorError != 0) return priorError;
    if (session().engineRunType == engineRunPrice) return fetchForTag(tagRec, defaultSetText, value, 0);
    const std::int32_t pageEntry = pageEntryOfTag(story);
    std::int32_t sequence = 0;
    pstrToLong(tagRec.searchKey, &sequence);
    value.recordNumber = recordNumberOfLink(pageEntry, std::max(sequence, 1));
    recordRequestRec request;
    errorWord error = noteRecordRequest(pageEntry, value.recordNumber, appPrefs().textDefaults, request, 0);
    if (!request.pastEnd) return fetchForTag(tagRec, defaultSetText, value, error);
    error = fetchForTag(tagRec, defaultSetText, value, error);
    if (value.status == fetchBadTag) return error;
    error = takeHostText(request.filler, value, error);
    value.status = appPrefs().pastEndCounts != 0 ? fetchNoMatch : fetchFound;
    return error;
}

/// Blanks off both ends, and prefix and suffix around a value that was found; the result is in `newText`.
errorWord ZavoPullStoryCallback::prepareValue(errorWord priorError) {
    newText.clear();
    if (priorError != 0 || !value.bytes) return priorError;
    std::string_view bytes(value.bytes.get(), value.length);
    if (appPrefs().trimValues != 0) bytes = trimBlanks(bytes);
    if (bytes.empty() && value.status == fetchFound) value.status = fetchNoData;
    const extractionRec* const link = value.extraction;
    const bool affixes = link != nullptr && value.status == fetchFound && tagRec.styleRecordName[0] == 0;
    if (affixes && link->prefix.enable != 0) appendUtf8AsUtf32(newText, pstrView(link->prefix.string));
    appendData(newText, bytes, value.isHostText || value.encoding == 1);
    if (affixes && link->suffix.enable != 0) appendUtf8AsUtf32(newText, pstrView(link->suffix.string));
    return 0;
}

void ZavoPullStoryCallback::decideAction() {
    keepMode = static_cast<bool>(value.bytes);
    const extractionRec* const link = value.extraction;
    lockedLink = tagRec.linkLocked != 0 || (link != nullptr && (link->locked != 0 || link->ignoreLink != 0));
    deleteLine = link != nullptr ? link->deleteline : deletelineNothing;
    auto& run = session();
    switch (value.status) {
        case fetchNoMatch:
            ++run.fillerCount;
            break;
        case fetchNoData:
            if (link->nodata == nodataGlobal) ++run.noDataCount;
            if (link->nodata == nodataDelete) deleteMode = true;
            keepMode = link->nodata == nodataGlobal || link->nodata == nodataCustom;  // also for an empty text
            break;
        case fetchBadTag:
            refuseTag();
            break;
        case fetchAbort:
            *cancel |= 1;
            break;
        default:
            break;
    }
}

/// A tag that names what doesn't exist ends a merge: half-filled pages must never reach a press.
void ZavoPullStoryCallback::refuseTag() {
    auto& run = session();
    reportErrorParams(nullptr, errTagRefused, tagRec.extractionRecordName);
    run.runResult = runRefusedTag;
    ++run.badTagCount;
    *cancel |= 1;
}

errorWord ZavoPullStoryCallback::replaceRun(UIDRef story, errorWord priorError) {
    if (priorError != 0 || mergeOn == 0 || lockedLink) return priorError;
    if (deleteMode) return deleteRun(story);
    if (!keepMode) return 0;
    // One replacement for the whole run: the new text takes the attributes of the run's first character, its tag
    // among them, whatever the rest of the run looked like.
    return replaceTagText(story, newText, false);
}

errorWord ZavoPullStoryCallback::deleteRun(UIDRef story) {
    errorWord error = removeTag(story);
    if (error == 0) error = replaceTagText(story, {}, true);
    if (error != 0) return error;
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
