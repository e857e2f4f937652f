#include "engine/run/run_stages.h"

#include <algorithm>

#include "data/data_source.h"
#include "document/document.h"
#include "engine/module/execute.h"
#include "engine/run/driver_run.h"
#include "engine/run/merge_pass.h"
#include "engine/run/run_scripts.h"
#include "engine/session/preferences_file.h"
#include "engine/session/session.h"
#include "engine/toolkit/messages.h"
#include "merge/keyword_links.h"
#include "merge/placed_pictures.h"
#include "output/build_document.h"
#include "output/build_tables.h"
#include "output/working_copy.h"

namespace tarnova {
namespace {

constexpr std::uint32_t barcodeRelay = signatureOf("Aqm6");
constexpr std::uint32_t barcodeModule = signatureOf("AQM8");
constexpr std::uint32_t commandRunChanges = 1331;

bool isDriverRun(std::uint32_t runType) {
    return runType == mergeRunDriver || runType == mergeRunDriverBySlot;
}

bool isLineTest(std::uint32_t runType) {
    return runType == mergeRunShortestLine || runType == mergeRunLongestLine;
}

/// Previews and line tests can be taken back by the run itself.
bool isTrial(std::uint32_t runType) {
    return runType == mergeRunPreview || runType == mergeRunTest || isLineTest(runType);
}

struct runNameRow {
    std::uint32_t runType;
    const char* key;
};
constexpr runNameRow runNames[] = {
    {mergeRunBuildDocument, "kZavoKelvaneMergeResultsFileBuildDocKey"},
    {mergeRunCurrentDocument, "kZavoKelvaneMergeResultsMergeCurrentDocumentKey"},
    {mergeRunPreview, "kZavoKelvaneMergeResultsPreviewPopupItemKey"},
    {mergeRunProof, "kZavoKelvaneMergeResultsProofLinksKey"},
    {mergeRunShortestLine, "kZavoKelvaneMergeResultsShortestLineTestKey"},
    {mergeRunLongestLine, "kZavoKelvaneMergeResultsLongestLineTestKey"},
    {mergeRunTest, "kZavoKelvaneMergeResultsTestPopupItem8Key"},
};

/// How undo calls a run of the type; empty for one that doesn't enter the list of undo.
PMString runName(std::uint32_t runType) {
    const auto* const row = std::find_if(std::begin(runNames), std::end(runNames),
                                         [runType](const runNameRow& known) { return known.runType == runType; });
    return row == std::end(runNames) ? PMString() : PMString::ofKey(row->key);
}

/// The changes of a run as one step of undo.
class RunSequence {
 public:
    explicit RunSequence(UIDRef itsDocument) : document(itsDocument) {
        if (document.database == nullptr) return;
        const PMString name = runName(appPrefs().mergeRunType);
        begun = document.database->BeginCommandSequence(name.view(), !name.empty()) == 0;
    }
    ~RunSequence() {
        if (begun) document.database->EndCommandSequence();
    }
    RunSequence(const RunSequence&) = delete;
    RunSequence& operator=(const RunSequence&) = delete;
    [[nodiscard]] errorWord error() const {
        return begun || document.database == nullptr ? errorWord{0} : errCommandSequence;
    }

 private:
    UIDRef document;
    bool begun = false;
};

/// The module for 2D barcodes hears of a run's beginning and end.
void tellBarcodeModule() {
    commandReply reply{};
    reply.callerSignature = barcodeModule;
    commandArgs args{};
    commandBlock block{resultNobodyAnswered, commandRunChanges, &reply, &args};
    moduleCall(barcodeRelay, 0, block);
}

// Stage 1.

void setUpDriver() {
    auto& run = session();
    run.jobFailed = startDriver(run.runDocument) ? 0 : 1;
    if (run.jobFailed != 0) return;
    run.stageDone = 0;
    run.runDocument = kInvalidUIDRef;
}

/// What each type of run needs beyond the slots. A preview has no window to move it on, so it shows its first slot.
void setUpForType(std::uint32_t runType) {
    auto& run = session();
    const bool steps = run.recordPassMode == passModeStep;
    const bool warns = runType == mergeRunBuildDocument || runType == mergeRunCurrentDocument || isDriverRun(runType);
    run.warnsAtEnd = warns && steps && appPrefs().warnAtEnd != 0 ? 1 : 0;
    run.askBeforeDelete = runType == mergeRunCurrentDocument || runType == mergeRunPreview ? 1 : 0;
    if (runType == mergeRunPreview || runType == mergeRunTest) {
        run.noAdvance = 1;
        run.recordsToDo = steps ? run.stepBy : 1;
    }
    if (isDriverRun(runType)) setUpDriver();
}

void setUp() {
    auto& run = session();
    const std::uint32_t runType = appPrefs().mergeRunType;
    run.stageDone = 1;
    runSessionScripts();
    run.inRun = 1;
    tellBarcodeModule();
    computeSlots();
    fitSlotsToRunType(runType);
    run.paddingUsed = run.noAdvance = 0;
    setUpForType(runType);
    run.runStage = run.cancelRun != 0 ? runStageFinishing : runStageRunning;
    if (run.armedState == armedReady) run.armedState = armedRunning;
}

// Stage 2.

/// One round: the slots are built and merged. `cancel` tells that it was stopped.
errorWord runPass(bool firstPass, std::uint16_t& cancel) {
    auto& run = session();
    UIDRef document;
    errorWord error = preparePass(firstPass, document, 0);
    error = mergePass(document, cancel, error);
    if (cancel == 0 && appPrefs().mergeRunType == mergeRunBuildDocument) error = pruneUnusedPages(document, error);
    if (error == 0 && anySlotPastEnd()) run.paddingUsed |= 1;
    if (error == 0 && document.database != nullptr) error = resetBuildTables(document, 0);
    return closePassDocument(document, error);
}

/// Passes until all records are merged.
errorWord runPasses() {
    auto& run = session();
    const std::uint32_t runType = appPrefs().mergeRunType;
    const PMString name = runName(runType);
    if (runType == mergeRunPreview && appPrefs().previewRevert != 0 && run.runDocument.database != nullptr) {
        run.runDocument.database->undoNamedStep(name.view());
    }
    const RunSequence sequence(run.recordsToDo > 0 ? run.runDocument : kInvalidUIDRef);
    errorWord error = sequence.error();
    bool firstPass = runType != mergeRunPreflight;
    while (error == 0 && run.recordsDone != run.recordsToDo && run.cancelRun == 0) {
        std::uint16_t cancel = 0;
        error = runPass(firstPass, cancel);
        firstPass = false;
        run.cancelRun |= cancel;
        run.jobPercent = static_cast<std::uint32_t>(std::uint64_t{run.recordsDone} * 100 / run.recordsToDo);
        if (appPrefs().oversetCheck != 0 && isTrial(runType)) break;
    }
    return error;
}

errorWord runProof() {
    auto& run = session();
    const RunSequence sequence(run.runDocument);
    std::uint16_t cancel = 0;
    const errorWord error = mergePass(run.runDocument, cancel, sequence.error());
    run.cancelRun |= cancel;
    return error;
}

/// A cancelled driver gets one turn more, so that it can put its things away.
errorWord runDriverTurn() {
    auto& run = session();
    bool isRunning = run.cancelRun != 0 || tickDriver();
    if (isRunning && run.cancelRun != 0) {
        run.jobCancelled = 1;
        static_cast<void>(tickDriver());
        isRunning = false;
    }
    if (!isRunning) run.stageDone = 1;
    return 0;
}

errorWord runForType(std::uint32_t runType) {
    auto& run = session();
    std::uint16_t cancel = 0;
    switch (runType) {
        case mergeRunDriver:
        case mergeRunDriverBySlot:
            return run.stageDone == 0 ? runDriverTurn() : errorWord{0};
        case mergeRunProof:
            return runProof();
        case mergeRunLinkReport:
        case mergeRunOversetReport:
            return run.passesDone == 0 ? mergePass(run.runDocument, cancel, 0) : errorWord{0};
        default:
            return runPasses();
    }
}

errorWord runTurn(errorWord priorError) {
    auto& run = session();
    if (alertService().cancelAsked()) run.cancelRun |= 1;
    errorWord error = priorError != 0 ? priorError : runForType(appPrefs().mergeRunType);
    if (error == 0) error = run.engineError;
    if (error != 0) run.jobFailed = 1;
    if (run.cancelRun != 0) run.jobCancelled = 1;
    if (error != 0 || run.cancelRun != 0) run.stageDone = 1;
    if (run.stageDone != 0) run.runStage = runStageFinishing;
    return error;
}

// Stage 3.

void clearRun() {
    auto& run = session();
    if (run.paddingUsed != 0 && run.warnsAtEnd != 0) reportError(nullptr, errFillerUsed);
    run.recordsToDo = run.recordsDone = 0;
    run.slotTarget = 0;
    run.runDocument = kInvalidUIDRef;
    run.runDefinition = nullptr;
    run.runDataFile = nullptr;
    run.runDataStatus = run.runDataEncoding = 0;
    UIDRef left;  // by a driver that didn't close it
    static_cast<void>(closeWorkingCopy(left, 0));
    run.workingCopyMade = run.docWasReopened = 0;
    run.templateFile.clear();
    run.sourceFile.clear();
    run.warnsAtEnd = run.paddingUsed = run.noAdvance = run.askBeforeDelete = run.trimDone = 0;
    run.masterNotes.clear();
    run.mergeOn = 0;
}

void freeDriverParameters() {
    auto& run = session();
    run.armedFile.clear();
    run.armedSecondFile.clear();
    run.armedText.clear();
    run.armedFileNumber = run.armedSecondNumber = run.armedTextNumber = 0;
}

void putRunTypeBack() {
    auto& run = session();
    if (run.savedRunType < 0) return;
    appPrefs().mergeRunType = static_cast<std::uint32_t>(run.savedRunType);
    savePreferences();
    run.savedRunType = -1;
}

errorWord finish(errorWord priorError) {
    auto& run = session();
    const std::uint32_t runType = appPrefs().mergeRunType;
    clearRun();
    dataSourceCloseAll();
    freeDriverParameters();
    run.stageDone = 1;
    run.passesDone = 0;
    run.runStage = runStageIdle;
    if (run.armedState == armedRunning) run.armedState = armedNot;
    run.unattended = 0;
    run.panelsStale = 1;
    tellBarcodeModule();
    keywordThaw();
    resetPictureRun();
    run.cancelRun = 0;
    run.inRun = 0;
    const bool writesBack = runType == mergeRunPreview || runType == mergeRunTest;
    errorWord error = priorError;
    if (writesBack && run.saveDefinitionToDocument != nullptr) error = run.saveDefinitionToDocument(error);
    if (!isDriverRun(runType)) run.jobPercent = 100;
    putRunTypeBack();
    return error;
}

}  // namespace

errorWord runStep(errorWord priorError) {
    auto& run = session();
    errorWord error = priorError;
    if (run.runStage == runStageSetUp) setUp();
    if (run.runStage == runStageRunning) error = runTurn(error);
    if (run.runStage == runStageFinishing) error = finish(error);
    return error;
}

}  // namespace tarnova
