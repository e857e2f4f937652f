#include "engine/run/start_run.h"

#include <algorithm>

#include "data/data_source.h"
#include "data/label_sort.h"
#include "data/record_selection.h"
#include "data/translation_table.h"
#include "document/document.h"
#include "document/document_host.h"
#include "engine/run/merge_pass.h"
#include "engine/run/run_scripts.h"
#include "engine/session/preferences_file.h"
#include "engine/session/session.h"
#include "engine/toolkit/messages.h"
#include "merge/keyword_links.h"
#include "merge/placed_pictures.h"
#include "merge/tag_value.h"
#include "output/build_document.h"
#include "output/master_items.h"

namespace tarnova {
namespace {

constexpr int buttonAbort = 2;
constexpr int buttonYes = 1;

bool isReportWithoutRecords(std::uint32_t runType) {
    return runType == mergeRunLinkReport || runType == mergeRunOversetReport;
}

/// Variable pictures are searched from the document's folder.
bool needsSavedDocument(const Document& document) {
    const auto& run = session();
    const bool hasPictures = run.frameLinkCount > 0 || run.pictureLinkCount > 0 || run.hasGroupPictureLink != 0;
    return hasPictures && document.documentName().empty();
}

void warnOfBarcodeFrames() {
    const auto& run = session();
    if (run.nonBarcodeFrameLink[0] == 0) return;
    const PMString name(pstrView(run.nonBarcodeFrameLink));
    reportErrorKey("kZavoRead2DBarcodeDataFuncAssignedToNon2DBarcodeFrameWarningKey", &name);
}

/// The merge dialog with the values as they stand. False when a question behind it stops the run.
bool takeDialogValues() {
    auto& run = session();
    run.priceStart = run.priceActive = run.priceBatch = 0;
    return appPrefs().rulesEnabled != 0 || askChoiceKey("kZavoRulesDisabledWarningKey", false, buttonAbort);
}

/// What comes before the definition is loaded. False when the run stops here, with nothing more to say.
bool mayStart(const Document& document, bool showDialog) {
    if (needsSavedDocument(document)) {
        reportErrorKey("kZavoDocumentNotSavedMsgKey");
        return false;
    }
    warnOfBarcodeFrames();
    if (runPreprocessingScript(scriptBeforeRun) != 0) return false;
    return !showDialog || takeDialogValues();
}

errorWord loadDefinition() {
    auto& run = session();
    const errorWord error = reselectCurrentRecordDef(0);
    run.runDefinition = run.currentRecordDef;
    run.skipFirst = appPrefs().hasHeaderRecord != 0 ? 1 : 0;
    run.recordPassMode = appPrefs().recordPassMode;
    const std::uint32_t runType = appPrefs().mergeRunType;
    if (runType == mergeRunShortestLine || runType == mergeRunLongestLine) {
        run.engineRunType = engineRunLineTest;
        run.recordPassMode = passModeStep;
    }
    return error;
}

errorWord checkLinkKinds() {
    const auto& run = session();
    const std::uint16_t kinds = appPrefs().linkKinds;
    if (kinds == linkKindsBoth && run.allLinkCount == 0) return errNoLinks;
    if (kinds == linkKindsFrames && run.frameLinkCount == 0) return errNoFrameLinks;
    return kinds == linkKindsText && run.textLinkCount == 0 ? errNoTextLinks : errorWord{0};
}

/// Opens the data of the run and counts its records, header left out.
errorWord openRunData(std::uint32_t& outRecords) {
    auto& run = session();
    std::uint16_t encoding = 0;
    errorWord error = openCurrentData(run.runDataFile, run.runDataStatus, &encoding, 0);
    if (error != 0) return error;
    if (run.runDataFile == nullptr) return errNoDataFileSet;
    run.runDataEncoding = static_cast<std::int16_t>(encoding);
    if (appPrefs().mergeRunType != mergeRunProof) error = loadTablesOf(*run.currentRecordDef, error);
    error = dataSourceRecordCount(run.runDataFile, 1, outRecords, error);
    outRecords -= std::min(outRecords, run.skipFirst);
    return error;
}

errorWord readyRecords() {
    std::uint32_t records = 0;
    errorWord error = checkLinkKinds();
    if (error == 0) error = openRunData(records);
    if (error != 0) return error;
    return fitRangeToData(records, 0) == 0 ? errorWord{0} : errRangeBehindEnd;
}

bool userKeepsPageRules(UIDRef document) {
    if (appPrefs().mergeRunType != mergeRunBuildDocument || !documentHasPageRules(document)) return true;
    return askChoiceKey("kVxBuildDocWithPageRulesWarning", true, buttonYes);
}

/// Sorts the records for labels when that is on.
errorWord sortLabels() {
    if (appPrefs().labelSort.labelSortOn == 0) return 0;
    labelSortRec sort;
    const errorWord error = documentLabelSort(session().runDocument, sort, 0);
    return applyLabelSort(&sort, error);
}

/// The step is that of the links unless the user said another.
errorWord enterSetUp() {
    auto& run = session();
    const bool hasRecords = !isReportWithoutRecords(appPrefs().mergeRunType);
    const errorWord error = hasRecords ? sortLabels() : errorWord{0};
    if (error != 0) return error;
    run.runFirst = run.rangeFirst;
    run.runLast = run.rangeLast;
    if (run.stepBy == 0) run.stepBy = run.highestSequence;
    keywordFreeze(run.runDocument);
    run.runStage = runStageSetUp;
    run.panelsStale = 1;
    return 0;
}

}  // namespace

void beginJob(UIDRef document) {
    auto& run = session();
    run.engineRunType = engineRunMerge;
    resetRunLists();
    resetPictureRun();
    run.recordList.clear();
    run.slotCopies.clear();
    run.pageTotal = run.pageTotalOfFile = 0;
    run.slotsInFront = run.slotsOfOutput = 0;
    run.fillersUsed = run.smartTagsApplied = run.trimDone = 0;
    run.runResult = 0;
    run.cancelRun = 0;
    run.runDocument = document;
    countLinks(document);
}

errorWord startScriptedRun(std::uint32_t runType, std::uint32_t driverId) {
    auto& run = session();
    appPrefs().mergeRunType = runType;
    run.selectedDriver = driverId;
    if (driverId != 0) appPrefs().selectedDriverId = driverId;
    savePreferences();
    const errorWord error = enterSetUp();
    if (error == 0) run.unattended = 1;
    return error;
}

errorWord startMergeRunOn(UIDRef document, errorWord priorError, bool showDialog) {
    if (priorError != 0) return priorError;
    if (document.database == nullptr) return errNoDocument;
    beginJob(document);
    if (!mayStart(*document.database, showDialog)) return 0;
    errorWord error = loadDefinition();
    const std::uint32_t runType = appPrefs().mergeRunType;
    if (error == 0 && !isReportWithoutRecords(runType)) error = readyRecords();
    if (error != 0 || !userKeepsPageRules(document)) return error;
    session().selectedDriver =
        runType == mergeRunDriverBySlot ? appPrefs().selectedDriverId2 : appPrefs().selectedDriverId;
    return enterSetUp();
}

errorWord startMergeRun(errorWord priorError, bool showDialog) {
    const DocumentHost* const host = session().documentHost;
    return startMergeRunOn(host == nullptr ? kInvalidUIDRef : host->frontDocument(), priorError, showDialog);
}

}  // namespace tarnova
