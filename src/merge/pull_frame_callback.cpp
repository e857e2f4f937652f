#include "merge/pull_frame_callback.h"

#include <algorithm>

#include "data/record_selection.h"
#include "definitions/definition_state.h"
#include "definitions/record_def_set.h"
#include "document/document.h"
#include "engine/module/execute.h"
#include "engine/session/preferences.h"
#include "engine/session/session.h"
#include "engine/toolkit/alerts.h"
#include "engine/toolkit/text_encoding.h"
#include "merge/delete_question.h"
#include "merge/link_keys.h"
#include "merge/link_report.h"
#include "merge/price_layout.h"
#include "merge/text_import.h"
#include "output/build_tables.h"
#include "tags/tag_attribute.h"
#include "tags/tag_manager.h"

namespace tarnova {
namespace {

constexpr std::uint16_t frameTouched = 1;
constexpr std::uint32_t imageModule = signatureOf("AQMp");
constexpr std::uint32_t commandGiveImage = 1320;

bool isLine(const Document& document, UID frame) {
    const pathInfoRec path = document.pathInfo(frame);
    return path.pathCount == 1 && path.firstKind == pathInfoRec::Kind::line;
}

/// Lines hold nothing; text frames take text but for files; any other frame takes it when its link is one for text.
bool takesText(UIDRef frame, const extractionRec* link) {
    if (isLine(*frame.database, frame.uid)) return false;
    const std::int16_t type = link != nullptr ? link->type : linkTypeText;
    if (frame.database->isTextFrame(frame.uid)) return type != linkTypeArticle && type != linkTypeGroupPicture;
    return link != nullptr && type == linkTypeText;
}

/// Three blocks of a module one behind the other.
std::string joined(const blockPtr<> (&parts)[3]) {
    std::string out;
    for (const blockPtr<>& part : parts)
        if (part != nullptr) out.append(reinterpret_cast<const char*>(part.get()), blockSize(part.get()));
    return out;
}

}  // namespace

ZavoPullFrameCallback::ZavoPullFrameCallback(PMString statusText, FrameScope itsScope, std::uint16_t* changedWord)
    : ZavoFrameCallback(!statusText.empty(), std::move(statusText)),
      LinkMerge(defaultSetFrame),
      scope(itsScope),
      sharedChanged(changedWord),
      mergeOn(session().mergeOn) {
    initError = openData() ? 0 : 1;
}

bool ZavoPullFrameCallback::FrameBegin() {
    if (sharedChanged != nullptr) *sharedChanged = 0;
    hadTag = false;
    if (scope == FrameScope::both) return true;
    return frameRef.database->isTextFrame(frameRef.uid) == (scope == FrameScope::textFrames);
}

bool ZavoPullFrameCallback::isChanged() {
    const auto& list = session().changedFrames;
    if (!list || list->database != frameRef.database) return false;
    for (; changedRead < list->uids.size(); ++changedRead)
        changedKnown.insert(list->uids[changedRead]);
    return changedKnown.contains(frameRef.uid);
}

void ZavoPullFrameCallback::noteChanged() {
    if (auto& list = session().changedFrames) list->uids.push_back(frameRef.uid);
}

bool ZavoPullFrameCallback::TagIsMine(std::string_view data) {
    if (alertService().cancelAsked()) *cancel |= 1;
    if (*cancel != 0 || isChanged()) return false;
    assetFound = false;
    assetKind = 0;
    fit = {};
    pdf = {};
    frameResult = framePlaced;
    oldPath.clear();
    newPath.clear();
    const Document& document = *frameRef.database;
    pageEntry = std::max(document.pageIndex(document.pageOfItem(frameRef.uid).page), 0);
    hadTag = readTag(data);
    return hadTag;
}

keywordPlaceRec ZavoPullFrameCallback::placeOfLink() {
    return {frameRef.database->ref(), recordPosition, pageEntry, frameRef.uid};
}

std::string ZavoPullFrameCallback::pageName() const {
    const Document& document = *frameRef.database;
    return pageEntry < document.pageCount() ? document.pageName(document.pageAt(pageEntry)) : std::string();
}

std::int32_t ZavoPullFrameCallback::TagProcess() {
    changed |= frameTouched;
    auto& error = session().engineError;
    bool isMergedNow = true;
    error = prepareFrameTag(isMergedNow, error);
    if (!isMergedNow) return 0;
    error = chooseRecord(error);
    error = fetchModuleImage(error);
    error = prepareValue(error);
    if (error == 0) decideAction(*cancel);
    const bool reports = linkReport().isOn;
    if (reports && isTextContent) oldPath = frameText();
    if (isTextContent) {
        error = mergeTextFrame(error);
    } else {
        error = findFrameAsset(error);
        error = applyFrameValue(error);
    }
    if (reports && error == 0) reportFrame();
    value = tagValueRec{};
    return 0;
}

/// Of a text frame; empty for other frames, and one that has gone.
std::string ZavoPullFrameCallback::frameText() const {
    const Document& document = *frameRef.database;
    const UID story = document.itemExists(frameRef.uid) ? document.textOfFrame(frameRef.uid) : kInvalidUID;
    if (story == kInvalidUID) return {};
    const textSpanRec thread = document.threadSpan(story, 0);
    return utf32ToUtf8(document.textRead(story, thread.start, thread.length - 1));
}

/// Tells what became of the frame: its text, or the path of its picture.
void ZavoPullFrameCallback::reportFrame() {
    linkReportRec link{tagRec, frameRef};
    link.pageEntry = pageEntry;
    link.locked = lockedLink;
    const bool isKeyword = value.extraction != nullptr && keywordOf(*value.extraction);
    link.status = isKeyword ? fetchFound : value.status;
    link.oldText = utf8ToUtf32(oldPath);
    link.newText = utf8ToUtf32(isTextContent ? frameText() : newPath);
    const bool isGone = !frameRef.database->itemExists(frameRef.uid);
    link.state = isGone ? LinkState::deleted : link.oldText == link.newText ? LinkState::unchanged : LinkState::changed;
    reportLink(link);
}

/// Says whether the tag is merged now, and whether its frame takes text. In a price run the links whose key stands on
/// their page wait for the second round, which merges just them.
errorWord ZavoPullFrameCallback::prepareFrameTag(bool& isMergedNow, errorWord priorError) {
    if (priorError != 0) return priorError;
    extractionRec* link = nullptr;
    const errorWord error =
        findExtraction(definitionState().currentRecordDef, tagRec.extractionRecordName, link, priorError);
    isTextContent = takesText(frameRef, link);
    if (error != 0 || !isPriceRun()) return error;
    auto& run = session();
    const bool waits = link != nullptr && keyStandsOnPage(*link);
    if (waits != (run.secondRound != 0)) {
        if (waits) ++run.deferredLinkCount;
        isMergedNow = false;
        return 0;
    }
    return waits ? settleKey(*link) : errorWord{0};
}

/// Finds the link's key and stores it in its tag.
errorWord ZavoPullFrameCallback::settleKey(const extractionRec& link) {
    const UID page = frameRef.database->pageOfItem(frameRef.uid).page;
    LinkKeys().settle({frameRef, 0, 0, page}, link, firstOnTracker(), tagRec);
    return writeFrameTag(frameRef, tagRec, 0);
}

/// The link of an image module has what the module says as its value.
errorWord ZavoPullFrameCallback::fetchModuleImage(errorWord priorError) {
    if (priorError != 0 || value.extraction == nullptr || value.extraction->type != linkTypeVxImage) return priorError;
    std::byte* given[3] = {};
    commandArgs args{};
    args.item0 = &frameRef;
    args.item1 = &value.recordNumber;
    args.item2 = &given[0];
    args.item3 = &given[1];
    args.item4 = &given[2];
    commandReply reply{};
    commandBlock block{resultNobodyAnswered, commandGiveImage, &reply, &args};
    moduleCall(imageModule, 0, block);
    const blockPtr<> parts[3] = {blockPtr<>(given[0]), blockPtr<>(given[1]), blockPtr<>(given[2])};
    if (block.result == 0 && reply.status == 0) {
        value.status = fetchFound;
        return takeHostBytes(joined(parts), value, 0);
    }
    const defaultStringRec& noData = appPrefs().pictureDefaults.noData;
    value.status = fetchNoData;
    return takeHostText(noData.enable != 0 ? noData.string : nullptr, value, 0);
}

errorWord ZavoPullFrameCallback::mergeTextFrame(errorWord priorError) {
    if (priorError != 0 || !isMerged() || (!hasValue && !deleteMode)) return priorError;
    Document& document = *frameRef.database;
    if (!document.isTextFrame(frameRef.uid)) {
        if (document.convertToTextFrame(frameRef.uid) != 0) return 0;
        noteChanged();
    }
    const UID story = document.textOfFrame(frameRef.uid);
    if (story == kInvalidUID) return 0;
    // The frame's own link says what its text is, so there can be none within.
    const textSpanRec thread = document.threadSpan(story, 0);
    const errorWord error = document.attributeRemove(story, thread.start, thread.length - 1, tagClassOfMode());
    return error != 0 ? error : replaceFrameText(story);
}

errorWord ZavoPullFrameCallback::replaceFrameText(UID story) {
    if (deleteMode) return deleteFrame("kZavoLinkDeletedStringKey");
    Document& document = *frameRef.database;
    const UIDRef text{&document, story};
    const textSpanRec thread = document.threadSpan(story, 0);
    const std::int32_t length = thread.length - 1;
    const extractionRec* const link = value.extraction;
    if (link != nullptr && link->importFilter != importFilterNone && value.status == fetchFound) {
        std::int32_t imported = 0;
        return importFormattedValue(text, thread.start, length, value, newText, imported);
    }
    errorWord error = 0;
    if (value.style != nullptr && length > 0) {
        const priceAttributesRec noted = notePriceAttributes(text, thread.start, length);
        error = resetPriceAttributes(text, thread.start, noted, error);
    }
    return error != 0 ? error : document.textReplace(story, thread.start, length, newText, false);
}

/// Takes the frame off its page, or shows the text of `noticeKey` in it, as the user wants.
errorWord ZavoPullFrameCallback::deleteFrame(std::string_view noticeKey) {
    switch (askDelete(*frameRef.database, pageEntry, tagRec)) {
        case DeleteAnswer::remove:
            return frameRef.database->deleteItem(frameRef.uid);
        case DeleteAnswer::notice:
            return showText(PMString::ofKey(noticeKey).codePoints());
        case DeleteAnswer::keep:
            break;
    }
    return 0;
}

std::int32_t ZavoPullFrameCallback::FrameEnd() {
    if (sharedChanged != nullptr) *sharedChanged = changed;
    if (hadTag) noteProblem();
    changed = 0;
    return 0;
}

/// Enters a missing or damaged picture in the report, and counts it with its slot.
void ZavoPullFrameCallback::noteProblem() {
    const bool isMissing = frameResult == frameMissing;
    if (!isMissing && (frameResult != frameDamaged || isPriceRun())) return;
    if (!isPriceRun() && appPrefs().logMissing == 0) return;
    auto& run = session();
    pictureNoteRec note;
    note.frame = frameRef;
    note.page.set(pageName());
    const std::int32_t record = isPriceRun() ? value.recordNumber : recordOfPosition(recordPosition, run.skipFirst);
    note.record = record - static_cast<std::int32_t>(run.skipFirst);
    note.fileName.set(newPath);
    note.text.set(isMissing ? pictureNoteMissing : pictureNoteDamaged);
    run.missingPictures.push_back(note);
    run.reportOrder.push_back({reportKindPicture, static_cast<std::uint32_t>(run.missingPictures.size() - 1)});
    if (isPriceRun()) return;
    const pageMapRec* const page = pageMapAt(pageEntry);
    recordSlotRec* const slot = page != nullptr ? recordSlotAt(page->slot) : nullptr;
    if (slot == nullptr) return;
    ++(isMissing ? slot->missingPictureCount : slot->damagedPictureCount);
    constexpr std::uint16_t flagYes = 1;
    if (appPrefs().flagPictureErrors == flagYes) slot->hasMergeError |= 1;
}

}  // namespace tarnova
