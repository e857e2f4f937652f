#include "engine/run/driver_run.h"

#include "engine/module/driver_protocol.h"
#include "engine/module/driver_table.h"
#include "engine/session/session.h"

namespace tarnova {
namespace {

std::uint32_t moduleOfRun() {
    const outputDriverRec* const driver = findOutputDriver(session().selectedDriver);
    return driver == nullptr ? 0 : driver->driverModule;
}

template <typename Value>
const Value* orNull(const Value& value) {
    return value.empty() ? nullptr : &value;
}

driverStartRec startRecord(UIDRef document) {
    const auto& run = session();
    const appPrefsRec& prefs = appPrefs();
    driverStartRec start{};
    start.document = document;
    start.firstRecord = static_cast<std::int32_t>(run.recordBase + 1);
    start.recordLimit = static_cast<std::int32_t>(run.recordsToDo) + start.firstRecord;
    start.stepBy = static_cast<std::int32_t>(run.stepBy);
    start.recordPassMode = static_cast<std::int32_t>(run.recordPassMode);
    start.skipFirst = static_cast<std::int32_t>(run.skipFirst);
    start.stackFirst = static_cast<std::int32_t>(run.stackFirst);
    start.stackLast = static_cast<std::int32_t>(run.stackLast);
    start.slotTarget = run.slotTarget;
    start.driverOptionA = prefs.driverOptionA;
    start.driverModule = moduleOfRun();
    start.unattended = run.unattended;
    start.suppressAlerts = run.unattended != 0 && run.showAlertsUnattended == 0 ? 1 : 0;
    start.driverOptionB = prefs.driverOptionB;
    start.driverOptionC = prefs.driverOptionC;
    start.file = orNull(run.armedFile);
    start.fileNumber = run.armedFileNumber;
    start.secondFile = orNull(run.armedSecondFile);
    start.secondFileNumber = run.armedSecondNumber;
    start.text = orNull(run.armedText);
    start.textNumber = run.armedTextNumber;
    return start;
}

}  // namespace

bool startDriver(UIDRef document) {
    driverStartRec start = startRecord(document);
    driverArgsRec args{};
    args.sequencesInUse = session().sequencesInUse;
    return start.driverModule != 0 && callDriver(start.driverModule, driverStart, start, args) == 0;
}

bool tickDriver() {
    auto& run = session();
    driverStartRec record{};
    record.driverModule = moduleOfRun();
    std::uint8_t keepRunning = 0;
    driverArgsRec args{};
    args.keepRunning = &keepRunning;
    args.jobValue = &run.jobValue;
    args.jobPercent = &run.jobPercent;
    args.jobCountA = &run.jobCountA;
    args.jobCountB = &run.jobCountB;
    args.jobCountC = &run.jobCountC;
    args.jobFailed = &run.jobFailed;
    args.jobCancelled = &run.jobCancelled;
    return callDriver(record.driverModule, driverTick, record, args) == 0 && keepRunning != 0;
}

}  // namespace tarnova
