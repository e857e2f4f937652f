#include "engine/run/merge_pass.h"

#include <algorithm>

#include "document/walk.h"
#include "engine/session/preferences.h"
#include "engine/session/session.h"
#include "engine/toolkit/messages.h"
#include "merge/placed_pictures.h"
#include "merge/proof_callback.h"
#include "merge/pull_frame_callback.h"
#include "merge/pull_story_callback.h"
#include "output/after_merge.h"
#include "output/build_chunk.h"
#include "output/build_document.h"
#include "output/build_tables.h"

namespace tarnova {
namespace {

/// The lists that live as long as a pass, and the word that tells that one is on.
class PassScope {
 public:
    explicit PassScope(UIDRef document) {
        auto& run = session();
        run.mergePassActive = 1;
        run.changedFrames = UIDList{document.database, {}};
        run.deferredItems = UIDList{document.database, {}};
    }
    ~PassScope() {
        auto& run = session();
        run.walkFirstPage = run.walkLastPage = 0;
        run.changedFrames.reset();
        run.deferredItems.reset();
        run.mergePassActive = 0;
    }
    PassScope(const PassScope&) = delete;
    PassScope& operator=(const PassScope&) = delete;
};

/// Items of masters are shared by all slots, so only a pass of a single slot merges them; a report doesn't care.
WalkScope scopeOfPass() {
    if (session().slotTarget > 1) return WalkScope::pagesOnly;
    switch (appPrefs().mergeRunType) {
        case mergeRunProof:
        case mergeRunLinkReport:
        case mergeRunShortestLine:
        case mergeRunLongestLine:
        case mergeRunPreflight:
            return WalkScope::everything;
        default:
            return WalkScope::pagesAndUsedMasters;
    }
}

std::int32_t walkPass(UIDRef document, IFrameCallback* frames, IStoryCallback* texts, std::int32_t* outItemCount,
                      std::int32_t* outTextCount, std::uint16_t& cancel) {
    const auto& run = session();
    return walkDocument(*document.database, frames, texts, run.walkFirstPage, run.walkLastPage, scopeOfPass(),
                        appPrefs().skipHiddenLayers != 0, appPrefs().skipPasteboard != 0, outItemCount, outTextCount,
                        &cancel, run.layerRulePages > 0);
}

/// A run knows from its start whether the document has links on frames at all; most letters have none.
bool mayHaveFrameLinks() {
    return !runIsActive() || session().frameLinkCount > 0;
}

/// Merges the links on frames that aren't text frames. With progress, a walk in front counts the frames.
void framePass(UIDRef document, bool showProgress, std::uint16_t& cancel) {
    if (!mayHaveFrameLinks()) return;
    std::int32_t frameCount = 0;
    if (showProgress) walkPass(document, nullptr, nullptr, &frameCount, nullptr, cancel);
    std::uint16_t changed = 0;
    ZavoPullFrameCallback frames(
        showProgress ? PMString::ofKey("kZavoProcessingDocumentFramesMessageStringKey") : PMString{},
        FrameScope::otherFrames, &changed);
    if (frames.GetInitError() != 0) {
        cancel |= 1;
        return;
    }
    frames.SetTotal(frameCount);
    walkPass(document, &frames, nullptr, nullptr, nullptr, cancel);
}

/// Merges the links in text and on text frames. With progress, a walk in front counts the characters.
void textPass(UIDRef document, bool showProgress, std::uint16_t& cancel) {
    std::int32_t characters = 0;
    if (showProgress) walkPass(document, nullptr, nullptr, nullptr, &characters, cancel);
    std::uint16_t changed = 0;
    ZavoPullStoryCallback texts(
        showProgress ? PMString::ofKey("kZavoProcessingDocumentTextMessageStringKey") : PMString{}, &changed);
    ZavoPullFrameCallback frames(PMString{}, FrameScope::textFrames, nullptr);
    if (texts.GetInitError() != 0 || frames.GetInitError() != 0) {
        cancel |= 1;
        return;
    }
    texts.SetTotal(characters);
    walkPass(document, mayHaveFrameLinks() ? &frames : nullptr, &texts, nullptr, nullptr, cancel);
}

/// Shows each link by its name.
void proofPass(UIDRef document, std::uint16_t linkKinds, std::uint16_t& cancel) {
    ZavoProofFrameCallback frames;
    ZavoProofStoryCallback texts;
    inPassOrder(
        linkKinds, cancel, [&] { walkPass(document, &frames, nullptr, nullptr, nullptr, cancel); },
        [&] { walkPass(document, nullptr, &texts, nullptr, nullptr, cancel); });
}

std::int32_t slotsOfPass() {
    const auto& run = session();
    if (run.recordPassMode != passModeStep) return static_cast<std::int32_t>(run.recordsToDo);
    return static_cast<std::int32_t>((run.recordsToDo + run.stepBy - 1) / run.stepBy);
}

/// Moves the run behind the slots that were merged.
void advanceRun(std::int32_t slots) {
    auto& run = session();
    const bool steps = run.recordPassMode == passModeStep;
    const std::uint32_t merged = static_cast<std::uint32_t>(slots) * (steps ? run.stepBy : 1);
    run.recordsDone = std::min(run.recordsDone + merged, run.recordsToDo);
    if (run.noAdvance == 0) run.recordBase += merged;
}

/// Both texts in one run say that the range doesn't fit the layout.
void tellOfFillers() {
    auto& run = session();
    if (run.fillersUsed == (fillerStackPad | fillerEndOfFile)) {
        reportError(nullptr, errFillerUsed);
        run.fillerCount = 0;
    }
    run.fillersUsed = 0;
}

}  // namespace

void inPassOrder(std::uint16_t linkKinds, const std::uint16_t& cancel, const std::function<void()>& framePart,
                 const std::function<void()>& textPart) {
    const auto goesOn = [&cancel] { return cancel == 0 && session().engineError == 0; };
    const bool framesFirst = appPrefs().framesFirst != 0;
    if (framesFirst && linkKinds != linkKindsText) framePart();
    if (linkKinds != linkKindsFrames && goesOn()) textPart();
    if (!framesFirst && linkKinds != linkKindsText && goesOn()) framePart();
}

errorWord mergePass(UIDRef document, std::uint16_t& cancel, errorWord priorError) {
    if (priorError != 0) return priorError;
    auto& run = session();
    switch (appPrefs().mergeRunType) {
        case mergeRunProof: {
            const PassScope scope(document);
            proofPass(document, appPrefs().linkKinds, cancel);
            return run.engineError;
        }
        case mergeRunLinkReport:
        case mergeRunOversetReport:
            ++run.passesDone;  // neither report is there yet
            return 0;
        default:
            return mergeDocument(document, appPrefs().linkKinds, true, appPrefs().showProgress != 0, cancel);
    }
}

errorWord mergeDocument(UIDRef document, std::uint16_t linkKinds, bool pull, bool showProgress, std::uint16_t& cancel) {
    auto& run = session();
    const PassScope scope(document);
    const std::int32_t slots = slotsOfPass();
    run.walkFirstPage = 1;
    run.walkLastPage = slots * run.templatePageCount;
    run.mergeOn = pull ? 1 : 0;
    inPassOrder(
        linkKinds, cancel, [&] { framePass(document, showProgress, cancel); },
        [&] { textPass(document, showProgress, cancel); });
    if (cancel != 0 || run.engineError != 0) return run.engineError;
    const errorWord error = finishMergedPages(document, 0);
    if (error == 0) advanceRun(slots);
    return error;
}

errorWord mergeChunk(UIDRef document, const mergeChunkRec& chunk, std::uint32_t& outDone, std::uint16_t& cancel) {
    auto& run = session();
    if (chunk.first >= 1 && chunk.first <= run.totalRecords) run.recordBase = chunk.first - 1;
    run.recordsDone = 0;
    run.recordsToDo = std::min(chunk.limit > chunk.first ? chunk.limit - chunk.first : 0, run.totalRecords);
    run.stepBy = std::max<std::uint32_t>(chunk.stepBy, 1);
    run.recordPassMode = chunk.recordPassMode;
    auto& pictures = pictureRun();
    pictures.trackPlacedPictures = chunk.tracksPictures;
    pictures.strictPlacedPictures = chunk.tracksStrictly;
    pictures.bleedMargins = chunk.bleedMargins;
    pictures.pageSize = chunk.pageSize;
    const UnrecordedChanges unrecorded(document);
    errorWord error = unrecorded.error();
    if (error == 0) error = mergeDocument(document, appPrefs().linkKinds, chunk.pull, chunk.showProgress, cancel);
    if (anySlotPastEnd()) run.paddingUsed |= 1;
    tellOfFillers();
    outDone = run.recordsDone;
    if (chunk.pull && error == 0 && cancel == 0) advancePageTotals();
    return error;
}

}  // namespace tarnova
