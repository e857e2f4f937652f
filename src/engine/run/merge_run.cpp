#include "engine/run/merge_run.h"

#include <algorithm>

#include "data/data_source.h"
#include "data/label_sort.h"
#include "data/record_selection.h"
#include "data/translation_table.h"
#include "document/walk.h"
#include "engine/session/preferences.h"
#include "engine/session/session.h"
#include "engine/toolkit/messages.h"
#include "merge/pull_story_callback.h"
#include "merge/tag_value.h"
#include "output/build_document.h"
#include "output/build_tables.h"
#include "output/master_items.h"

namespace tarnova {
namespace {

/// Opens the data of the current definition and counts its records into `totalRecords`, header left out.
errorWord openRunData() {
    auto& run = session();
    dataSourceRec* source = nullptr;
    std::int16_t status = openStatusNothing;
    errorWord error = openCurrentData(source, status, nullptr, 0);
    if (error != 0) return error;
    if (source == nullptr) return errNoDataFileSet;
    error = loadTablesOf(*run.currentRecordDef, error);
    std::uint32_t count = 0;
    error = dataSourceRecordCount(source, 1, count, error);
    run.skipFirst = appPrefs().hasHeaderRecord != 0 ? 1 : 0;
    run.totalRecords = count > run.skipFirst ? count - run.skipFirst : 0;
    return error;
}

/// Settles the range or list against the file. What lies behind the range doesn't take part in the run, so that a last
/// slot is filled up with fillers and not with records that nobody asked for.
errorWord settleRange() {
    auto& run = session();
    if (fitRangeToData(run.totalRecords, 0) != 0) return errRangeBehindEnd;
    labelSortRec sort;
    errorWord error = 0;
    if (appPrefs().labelSort.labelSortOn != 0) {
        error = documentLabelSort(run.runDocument, sort, error);
        error = applyLabelSort(&sort, error);
    }
    run.runFirst = run.rangeFirst;
    run.runLast = run.rangeLast;
    run.totalRecords = run.rangeLast;
    return error;
}

/// One pass over the slots that the document holds now.
errorWord mergePass(UIDRef document, WalkScope scope) {
    auto& run = session();
    std::uint16_t cancel = 0;
    std::uint16_t changed = 0;
    ZavoPullStoryCallback texts(PMString{}, &changed);
    if (texts.GetInitError() != 0) return run.engineError != 0 ? run.engineError : errFailed;
    run.mergePassActive = 1;
    walkDocument(*document.database, nullptr, &texts, 1, run.slotCount * run.templatePageCount, scope,
                 appPrefs().skipHiddenLayers != 0, appPrefs().skipPasteboard != 0, nullptr, nullptr, &cancel, false);
    run.mergePassActive = 0;
    if (cancel != 0) run.cancelRun = 1;
    return run.engineError;
}

/// The copies of a page share the lines of what they keep unchanged, so those are made once, before the first copy.
void composeTemplate(Document& document) {
    document.composeDocument();
    document.markTemplate();
}

/// Moves the run behind the slots that were merged.
void advanceRun() {
    auto& run = session();
    const bool steps = run.recordPassMode == passModeStep;
    const std::uint32_t merged = static_cast<std::uint32_t>(run.slotCount) * (steps ? run.stepBy : 1);
    run.recordsDone = std::min(run.recordsDone + merged, run.recordsToDo);
    run.recordBase += merged;
}

/// Items of masters are shared by all copies of a page, so only a run of a single slot merges them.
WalkScope scopeOfRun(std::int32_t slotsOfRun) {
    return slotsOfRun > 1 ? WalkScope::pagesOnly : WalkScope::pagesAndUsedMasters;
}

/// Builds and merges slots in the document; the tables tell about them afterwards.
errorWord buildAndMerge(UIDRef document, WalkScope scope, bool showProgress) {
    errorWord error = resetBuildTables(document, 0);
    error = buildDocument(document, false, showProgress, true, false, error);
    if (error == 0) error = mergePass(document, scope);
    return error;
}

/// What the chunks are copies of: the document itself as it is, or with its masters' items as items of the pages. That
/// is done once, so that the items are the same in all chunks.
std::unique_ptr<Document> templateOfRun(Document& document, errorWord& error) {
    std::unique_ptr<Document> copy = document.documentCopy();
    if (session().slotTarget <= 1 || !runDetachesMasters()) return copy;
    error = copy->BeginCommandSequence("", false);
    error = detachMasterItems(copy->ref(), error);
    copy->EndCommandSequence();
    return copy;
}

void moveRunProgress(int& shownPercent) {
    const auto& run = session();
    const int percent = static_cast<int>(std::uint64_t{run.recordsDone} * 100 / std::max(run.recordsToDo, 1U));
    if (percent <= shownPercent) return;
    shownPercent = percent;
    statusDialog(PMString{}, percent, appPrefs().showProgress != 0, false, 0);
}

}  // namespace

errorWord startMergeRun(UIDRef document, errorWord priorError) {
    if (priorError != 0) return priorError;
    auto& run = session();
    run.engineRunType = engineRunMerge;
    run.runDocument = document;
    run.cancelRun = 0;
    resetRunLists();
    countLinks(document);
    if (run.textLinkCount == 0) return errNoTextLinks;
    if (run.stepBy == 0) run.stepBy = run.highestSequence;
    run.recordPassMode = passModeStep;
    errorWord error = openRunData();
    if (error == 0) error = settleRange();
    if (error != 0) return error;
    computeSlots();
    run.mergeOn = 1;
    run.runStage = runStageRunning;
    return 0;
}

errorWord mergeToBuiltDocument(UIDRef document, errorWord priorError) {
    if (priorError != 0) return priorError;
    Document& built = *document.database;
    const errorWord begun =
        built.BeginCommandSequence(PMString::ofKey("kZavoKelvaneMergeResultsFileBuildDocKey").view());
    if (begun != 0) return errCommandSequence;
    composeTemplate(built);
    errorWord error = buildAndMerge(document, scopeOfRun(session().slotTarget), appPrefs().showProgress != 0);
    error = pruneUnusedPages(document, error);
    if (error == 0) advanceRun();
    built.EndCommandSequence();
    return error;
}

errorWord mergeToOutput(UIDRef documentTemplate, PageOutput& output, errorWord priorError) {
    if (priorError != 0) return priorError;
    auto& run = session();
    errorWord error = 0;
    composeTemplate(*documentTemplate.database);
    const std::unique_ptr<Document> original = templateOfRun(*documentTemplate.database, error);
    const std::int32_t slotsOfChunk = std::max(chunkPages / std::max(original->pageCount(), 1), 1);
    const WalkScope scope = scopeOfRun(run.slotTarget);
    const std::int32_t slotsOfRun = run.slotTarget, pagesOfSlot = original->pageCount();
    std::int32_t slotsLeft = slotsOfRun;
    int shownPercent = 0;
    const PMString title = PMString::ofKey("kZavoBuildingDocumentMessageStringKey");
    error = statusDialog(title, 0, appPrefs().showProgress != 0, false, error);
    while (error == 0 && slotsLeft > 0 && run.cancelRun == 0) {
        const std::unique_ptr<Document> chunk = original->documentCopy();
        error = chunk->BeginCommandSequence("", false);
        run.slotTarget = std::min(slotsLeft, slotsOfChunk);
        chunk->setPlaceInOutput(pagesOfSlot * (slotsOfRun - slotsLeft), pagesOfSlot * (slotsLeft - run.slotTarget));
        if (error == 0) error = buildAndMerge(chunk->ref(), scope, false);
        if (error == 0 && run.cancelRun == 0) error = output.takePages(*chunk);
        if (error != 0) break;
        slotsLeft -= run.slotTarget;
        advanceRun();
        moveRunProgress(shownPercent);
    }
    statusDialog(title, -1, appPrefs().showProgress != 0, false, 0);
    return error;
}

void finishMergeRun() {
    auto& run = session();
    dataSourceCloseAll();
    run.masterNotes.clear();
    run.runDocument = kInvalidUIDRef;
    run.mergeOn = 0;
    run.runStage = runStageIdle;
}

}  // namespace tarnova
