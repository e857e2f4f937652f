// Commands that arm, start and watch runs.

#include "data/label_sort.h"
#include "data/record_selection.h"
#include "engine/module/command_rows.h"
#include "engine/module/driver_table.h"
#include "engine/module/front_document.h"
#include "engine/module/record_access.h"
#include "engine/run/idle_step.h"
#include "engine/run/price_run.h"
#include "engine/run/run_stages.h"
#include "engine/run/start_run.h"
#include "engine/session/session.h"
#include "output/control_frames.h"

namespace tarnova {

namespace {

void keepDriverParameters(const commandCall& call) {
    auto& run = session();
    run.armedFile = call.valueOr<IDFile>(1, {});
    run.armedFileNumber = call.valueOr<std::uint32_t>(2, 0);
    run.armedSecondFile = call.valueOr<IDFile>(3, {});
    run.armedSecondNumber = call.valueOr<std::uint32_t>(4, 0);
    run.armedText = call.valueOr<PMString>(7, {});
    run.armedTextNumber = call.valueOr<std::uint32_t>(8, 0);
}

std::int32_t armRun(commandCall& call) {
    auto& run = session();
    if (run.armedState == armedRunning || runIsActive()) return commandRunState;
    run.armedState = armedNot;
    beginJob(documentOrFront(call, 0));
    if (run.runDocument.database == nullptr) return commandDocument;
    call.put(5, run.allLinkCount);
    call.put(6, run.highestSequence);
    run.rangeFirst = run.rangeLast = 0;
    run.skipFirst = appPrefs().hasHeaderRecord;
    run.recordPassMode = appPrefs().recordPassMode;
    run.stepBy = 0;
    if (run.allLinkCount == 0) return commandNoLinks;
    controlFrameCheckRec controlFrames;
    const errorWord err = checkControlFrames(*run.runDocument.database, false, controlFrames, 0);
    if (err != 0) return failWith(err, commandControlFrames);
    keepDriverParameters(call);
    run.armedState = armedReady;
    return commandDone;
}

/// The settings of a label sort must be there when it is on; the run itself sorts.
errorWord checkLabelSort() {
    labelSortRec sort;
    return appPrefs().labelSort.labelSortOn != 0 ? documentLabelSort(session().runDocument, sort, 0) : errorWord{0};
}

/// The tests in front of every run of records.
std::int32_t validateRun() {
    openDataRec data;
    const std::int32_t opened = openData(data);
    if (opened != commandDone) return opened;
    if (fieldCountOf(*data.definition) == 0) return commandFieldList;
    std::uint32_t count = 0;
    const std::int32_t counted = countRecords(data, count);
    if (counted != commandDone) return counted;
    if (fitRangeToData(count, 0) != 0) return commandRangeBehind;
    return checkLabelSort() == 0 ? commandDone : commandLabelSort;
}

/// A run command needs an armed run, and whatever it refuses takes the arming with it.
std::int32_t startArmed(std::int32_t (*start)(std::uint32_t), std::uint32_t value) {
    auto& run = session();
    std::int32_t status = run.armedState == armedReady && !runIsActive() ? validateRun() : commandRunState;
    if (status == commandDone) status = start(value);
    if (status != commandDone && run.armedState != armedRunning) run.armedState = armedNot;
    return status;
}

std::int32_t startRunType(std::uint32_t runType) {
    return startScriptedRun(runType, 0) == 0 ? commandDone : commandLabelSort;
}

std::int32_t startDriverRun(std::uint32_t driverId) {
    if (findOutputDriver(driverId) == nullptr) return commandDriver;
    return startScriptedRun(mergeRunDriver, driverId) == 0 ? commandDone : commandLabelSort;
}

template <std::uint32_t runType>
std::int32_t runOfType(commandCall&) {
    return startArmed(startRunType, runType);
}
template <std::uint32_t driverId>
std::int32_t runDriver(commandCall&) {
    return startArmed(startDriverRun, driverId);
}

std::int32_t getRunStatus(commandCall& call) {
    auto& run = session();
    if (call.valueOr<std::uint16_t>(0, 0) != 0) run.cancelRun |= *call.item<std::uint16_t>(0);
    if (call.valueOr<std::uint8_t>(1, 0) != 0) idleStep();
    call.put(2, run.armedState);
    call.put(3, run.jobPercent);
    call.put(4, static_cast<std::uint32_t>(run.fontsInUse.size()));
    call.put(5, static_cast<std::uint32_t>(run.oversetFrames.size()));
    call.put(6, static_cast<std::uint32_t>(run.missingPictures.size()));
    call.put(7, run.jobCountA);
    call.put(8, run.jobCountB);
    call.put(9, run.jobCountC);
    if (auto* const signatures = call.item<std::vector<std::uint32_t>>(10))
        std::copy_if(std::begin(run.signatureTable), std::end(run.signatureTable), std::back_inserter(*signatures),
                     [](std::uint32_t signature) { return signature != 0; });
    call.put(11, run.fillerCount);
    call.put(12, run.noDataCount);
    call.put(13, run.badTagCount);
    call.put(14, static_cast<std::uint32_t>(run.assetList.size()));
    return commandDone;
}

std::int32_t armPriceRun(commandCall& call) {
    return startPriceRun(documentOrFront(call, 0)) ? commandDone : commandDocument;
}

bool priceRunIsOn() {
    return session().priceStart != 0 || session().priceActive != 0;
}

std::int32_t beginPriceRun(commandCall&) {
    if (priceRunIsOn() || runIsActive()) return commandRunState;
    session().priceStart = 1;
    session().unattended = 1;
    return commandDone;
}

std::int32_t processSelection(commandCall&) {
    if (priceRunIsOn() || runIsActive()) return commandRunState;
    const DocumentHost* const host = session().documentHost;
    const UIDRef document = frontDocument();
    if (host == nullptr || document.database == nullptr) return commandDocument;
    std::uint16_t cancel = 0;
    const errorWord error = priceSelection(document, host->selection(document), cancel, 0);
    if (error != 0) return failWith(error, commandFailed);
    return cancel == 0 ? commandDone : commandFailed;
}

std::int32_t getPriceRunStatus(commandCall& call) {
    const std::int32_t status = getRunStatus(call);
    call.put(2, priceRunIsOn() ? armedRunning : armedNot);
    return status;
}

using enum commandStage;
constexpr auto merge = commandMode::merge;
constexpr auto price = commandMode::price;
using enum argumentType;

constexpr commandArgument armArgs[] = {
    itemIn(0, uidRef, "the document; the one in front when not given"),
    itemIn(1, file, "output file, for a driver"),
    itemIn(2, u32, "its number"),
    itemIn(3, file, "second output file"),
    itemIn(4, u32, "its number"),
    itemOut(5, u32, "links of the document"),
    itemOut(6, u32, "records on a page: the highest sequence number of the links"),
    itemIn(7, string, "a text for the driver"),
    itemIn(8, u32, "its number"),
};
constexpr commandArgument preflightArgs[] = {
    itemIn(0, file, "report path"), itemIn(1, file, "second report path"), itemIn(2, u8, "report option"),
    itemIn(3, u8, "report option"), itemIn(4, u8, "report option"),
};
constexpr commandArgument documentArgs[] = {itemIn(0, uidRef, "the document; the one in front when not given")};
constexpr commandArgument statusArgs[] = {
    itemIn(0, u16, "not 0 asks the run to stop"),
    itemIn(1, u8, "1 gives the idle task one turn"),
    itemOut(2, u32, "armed: 0 no, 1 ready, 2 running"),
    itemOut(3, u32, "percent done"),
    itemOut(4, u32, "fonts in use"),
    itemOut(5, u32, "overset texts"),
    itemOut(6, u32, "missing and damaged pictures"),
    itemOut(7, u32, "first count of the driver"),
    itemOut(8, u32, "second count of the driver"),
    itemOut(9, u32, "third count of the driver"),
    itemOut(10, signatures, "the signatures"),
    itemOut(11, u32, "fillers used"),
    itemOut(12, u32, "values without data"),
    itemOut(13, u32, "bad tags"),
    itemOut(14, u32, "entries of the asset report"),
};

constexpr commandRow rows[] = {
    {508, "kKelvaneCmdArmRun", merge, second, armRun, armArgs, "Readies a merge run."},
    {1210, "kKelvaneCmdRunDriver11001", merge, second, runDriver<11001>, {}, "Starts an armed run to driver 11001."},
    {1246, "kKelvaneCmdRunDriver11007", merge, second, runDriver<11007>, {}, "Starts an armed run to driver 11007."},
    {1248, "kKelvaneCmdRunDriver11010", merge, second, runDriver<11010>, {}, "Starts an armed run to driver 11010."},
    {1250, "kKelvaneCmdRunDriver11011", merge, second, runDriver<11011>, {}, "Starts an armed run to driver 11011."},
    {1211,
     "kKelvaneCmdRunMergeCurrent",
     merge,
     second,
     runOfType<mergeRunCurrentDocument>,
     {},
     "Starts an armed run that merges the next records into the document."},
    {1212,
     "kKelvaneCmdRunBuildDocument",
     merge,
     second,
     runOfType<mergeRunBuildDocument>,
     {},
     "Starts an armed run that builds the document out for all records."},
    {1240, "kKelvaneCmdRunPreflight", merge, second, nullptr, preflightArgs, "Starts an armed preflight."},
    {550, "kKelvaneCmdArmPriceRun", price, second, armPriceRun, documentArgs, "Readies a price run."},
    {562,
     "kKelvaneCmdStartPriceRun",
     price,
     second,
     beginPriceRun,
     {},
     "Starts a price run: the texts of the document are filled by their keys at the next idle call."},
    {1273, "kKelvaneCmdProcessSelection", price, second, processSelection, {}, "Merges prices into the selection."},
    {567, "kKelvaneCmdGetPriceRunStatus", price, second, getPriceRunStatus, statusArgs, "How far a price run is."},
    {1206, "kKelvaneCmdGetRunStatus", merge, second, getRunStatus, statusArgs, "How far a run is."},
};

}  // namespace

std::span<const commandRow> runRows() {
    return rows;
}

}  // namespace tarnova
