#include "engine/run/price_run.h"

#include "data/data_source.h"
#include "definitions/definition_state.h"
#include "document/document.h"
#include "document/document_host.h"
#include "document/walk.h"
#include "engine/run/merge_pass.h"
#include "engine/run/run_scripts.h"
#include "engine/session/session.h"
#include "engine/toolkit/messages.h"
#include "merge/first_on_links.h"
#include "merge/keyword_links.h"
#include "merge/link_report.h"
#include "merge/placed_pictures.h"
#include "merge/pull_frame_callback.h"
#include "merge/pull_story_callback.h"
#include "merge/tag_value.h"
#include "output/after_merge.h"

namespace tarnova {
namespace {

constexpr errorWord errRuleRefusedLink = 357;

// What is said of a document at its end.
constexpr errorWord messageNoData = 120;
constexpr errorWord messageProblems = 121;
constexpr errorWord messageNoValue = 122;

/// The session as it is while a document is priced.
class PriceScope {
 public:
    explicit PriceScope(UIDRef document) {
        auto& run = session();
        run.inRun = 1;
        run.engineRunType = engineRunPrice;
        run.mergeOn = 1;
        run.skipFirst = appPrefs().hasHeaderRecord;
        run.changedFrames = UIDList{document.database, {}};
        run.deferredItems = UIDList{document.database, {}};
        keywordFreeze(document);
        startFirstOnTracker(document);
        startLinkReport();
    }
    ~PriceScope() {
        auto& run = session();
        endLinkReport();
        endFirstOnTracker();
        keywordThaw();
        run.changedFrames.reset();
        run.deferredItems.reset();
        run.mergeOn = 0;
        run.inRun = 0;
    }
    PriceScope(const PriceScope&) = delete;
    PriceScope& operator=(const PriceScope&) = delete;
};

errorWord openPriceData() {
    if (reselectCurrentRecordDef(0) != 0 || definitionState().currentRecordDef == nullptr) {
        pstrCopy(session().pendingErrorParam, definitionState().currentDefName);
        return errNoDataFileSet;
    }
    dataSourceRec* source = nullptr;
    std::int16_t status = openStatusNothing;
    const errorWord error = openCurrentData(source, status, nullptr, 0);
    return error == 0 && source == nullptr ? errNoDataFileSet : error;
}

std::int32_t walkPrices(UIDRef document, IFrameCallback* frames, IStoryCallback* texts, std::int32_t* outTextCount,
                        std::uint16_t& cancel) {
    const auto& run = session();
    const appPrefsRec& prefs = appPrefs();
    const WalkScope scope = prefs.processScope > 0 ? WalkScope::everything : WalkScope::pagesOnly;
    return walkDocument(*document.database, frames, texts, run.walkFirstPage, run.walkLastPage, scope,
                        prefs.skipHiddenLayers != 0, prefs.skipPasteboard != 0, nullptr, outTextCount, &cancel, false);
}

/// The pass over texts and text frames, in the user's page range. With progress, a walk in front counts the characters.
void priceTexts(UIDRef document, std::uint16_t& cancel) {
    const bool showProgress = appPrefs().showProgress != 0;
    std::int32_t characters = 0;
    if (showProgress) walkPrices(document, nullptr, nullptr, &characters, cancel);
    std::uint16_t changed = 0;
    ZavoPullStoryCallback texts(
        showProgress ? PMString::ofKey("kZavoProcessingDocumentTextMessageStringKey") : PMString{}, &changed);
    ZavoPullFrameCallback frames(PMString{}, FrameScope::textFrames, nullptr);
    if (texts.GetInitError() != 0 || frames.GetInitError() != 0) {
        cancel |= 1;
        return;
    }
    texts.SetTotal(characters);
    walkPrices(document, &frames, &texts, nullptr, cancel);
}

/// The pass over the frames that aren't text frames.
void priceFrames(UIDRef document, std::uint16_t& cancel) {
    ZavoPullFrameCallback frames(PMString{}, FrameScope::otherFrames, nullptr);
    if (frames.GetInitError() != 0) {
        cancel |= 1;
        return;
    }
    walkPrices(document, &frames, nullptr, nullptr, cancel);
}

/// Links that need the finished layout wait for the second round.
template <typename Merge>
void inTwoRounds(const std::uint16_t& cancel, Merge merge) {
    auto& run = session();
    run.deferredLinkCount = 0;
    for (run.secondRound = 0; run.secondRound < 2; ++run.secondRound) {
        if (run.secondRound == 1 && run.deferredLinkCount == 0) break;
        merge();
        if (cancel != 0 || run.engineError != 0) break;
    }
    run.secondRound = 0;
}

priceSummaryRec& priceSummary() {
    static priceSummaryRec summary;
    return summary;
}

errorWord messageOfStatus(std::int16_t status) {
    switch (status) {
        case fetchFound:
            return 0;
        case fetchNoData:
            return messageNoData;
        case fetchNoMatch:
        case fetchBadTag:
            return messageNoValue;
        default:
            return messageProblems;
    }
}

void summarize() {
    const linkCountsRec& counts = linkReport().counts;
    priceSummary() = {counts.lowestStatus, counts.lowestText, messageOfStatus(counts.lowestStatus)};
}

/// Does `merge` in price mode, in two rounds and as one step of undo with the name, and sums up.
template <typename Merge>
errorWord priceAsOneStep(UIDRef document, const char* nameKey, const std::uint16_t& cancel, Merge merge) {
    priceSummary() = {};
    const PriceScope scope(document);
    errorWord error = openPriceData();
    if (error != 0) return error;
    if (document.database->BeginCommandSequence(PMString::ofKey(nameKey).view()) != 0) {
        reportErrorKey("kZavoErrorMergeSequenceFailed");
        return errFailed;
    }
    inTwoRounds(cancel, merge);
    document.database->EndCommandSequence();
    error = session().engineError;
    summarize();
    if (error != 0) return error;
    noteUsedFonts(*document.database);
    document.database->composeDocument();
    return 0;
}

PMString progressText(const char* key) {
    return appPrefs().showProgress != 0 ? PMString::ofKey(key) : PMString{};
}

void priceTextRange(UIDRef story, textSpanRec range, std::uint16_t& cancel) {
    std::uint16_t changed = 0;
    ZavoPullStoryCallback texts(progressText("kZavoProcessingTextSelectionMessageStringKey"), &changed);
    if (texts.GetInitError() != 0) {
        cancel |= 1;
        return;
    }
    std::int32_t start = range.start, length = range.length;
    texts.SetTotal(length);
    texts.Process(story, start, length, kInvalidUIDRef, &cancel);
}

void priceItems(Document& document, const std::vector<UID>& items, std::uint16_t& cancel) {
    std::uint16_t changed = 0;
    ZavoPullFrameCallback frames(progressText("kZavoProcessingFrameSelectionMessageStringKey"), FrameScope::both,
                                 nullptr);
    ZavoPullStoryCallback texts(PMString{}, &changed);
    if (texts.GetInitError() != 0 || frames.GetInitError() != 0) {
        cancel |= 1;
        return;
    }
    for (const UID item : items) {
        if (cancel == 0 && document.itemClass(item) != ItemClass::none)
            processItem({&document, item}, &frames, &texts, &cancel);
    }
}

void clearPriceRun() {
    auto& run = session();
    run.priceStart = run.priceActive = run.priceBatch = 0;
    run.unattended = 0;
    run.runDocument = kInvalidUIDRef;
    run.jobPercent = 100;
}

}  // namespace

const priceSummaryRec& lastPriceSummary() {
    return priceSummary();
}

bool startPriceRun(UIDRef document) {
    resetRunLists();
    resetPictureRun();
    auto& run = session();
    run.runDocument = document;
    run.ruleRefusedLink = 0;
    run.runResult = 0;
    run.cancelRun = 0;
    return document.database != nullptr;
}

errorWord priceStep(errorWord priorError) {
    auto& run = session();
    if (run.priceStart == 0 || run.priceActive != 0) return priorError;
    run.priceStart = 0;
    run.priceActive = 1;
    run.jobPercent = 0;
    runSessionScripts();
    UIDRef document = run.runDocument;
    if (document.database == nullptr && run.documentHost != nullptr) document = run.documentHost->frontDocument();
    std::uint16_t cancel = 0;
    bool done = false;
    const errorWord error = priceDocument(document, false, cancel, done, priorError);
    run.jobFailed = error == 0 ? 0 : 1;
    run.jobCancelled = cancel != 0 ? 1 : 0;
    dataSourceCloseAll();
    if (error == 0 && cancel == 0) reportError(nullptr, priceSummary().message);
    if (run.ruleRefusedLink != 0) reportError(nullptr, errRuleRefusedLink);
    run.ruleRefusedLink = 0;
    clearPriceRun();
    return error;
}

errorWord priceDocument(UIDRef document, bool openedFile, std::uint16_t& cancel, bool& done, errorWord priorError) {
    done = false;
    if (priorError != 0) return priorError;
    if (document.database == nullptr) return openedFile ? errNoDocumentOpen : errNoDocument;
    const errorWord error = priceAsOneStep(document, "kZavoPriceDocumentStringKey", cancel, [&] {
        inPassOrder(
            appPrefs().linkKinds, cancel, [&] { priceFrames(document, cancel); },
            [&] { priceTexts(document, cancel); });
    });
    done = error == 0 && cancel == 0 && priceSummary().status >= 0;
    return error;
}

errorWord priceSelection(UIDRef document, const selectionRec& selection, std::uint16_t& cancel, errorWord priorError) {
    if (priorError != 0) return priorError;
    if (!startPriceRun(document)) return errNoDocument;
    const errorWord error = priceAsOneStep(document, "kZavoPriceRangeStringKey", cancel, [&] {
        if (selection.story != kInvalidUID) {
            priceTextRange({document.database, selection.story}, selection.range, cancel);
        } else {
            priceItems(*document.database, selection.items, cancel);
        }
    });
    dataSourceCloseAll();
    session().ruleRefusedLink = 0;
    session().runDocument = kInvalidUIDRef;
    return error;
}

}  // namespace tarnova
