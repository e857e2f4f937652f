// What the engine and an output driver say to each other: the engine starts the driver once (driverStart), gives it a
// turn at each idle step (driverTick), and answers its deferred commands (driverDone). Between these a driver works the
// engine through commands. The records go in place of the reply and the arguments of a command block; their offsets are
// those of docs/output-drivers.md.

#pragma once

#include <cstddef>
#include <cstdint>

#include "document/uid.h"
#include "engine/module/command_block.h"
#include "engine/toolkit/id_file.h"
#include "engine/toolkit/pm_string.h"

namespace tarnova {

// Commands that the engine sends. A result other than 0, or a status in the record other than 0, is a failure.
inline constexpr std::uint32_t driverStart = 306;  // driverStartRec, driverArgsRec
inline constexpr std::uint32_t driverTick = 307;   // driverStartRec with the signature only, driverArgsRec
inline constexpr std::uint32_t driverDone = 402;   // driverAnswerRec

/// The job of a run, as it stands when the driver is started. What it points to stays the engine's, until the run ends.
struct driverStartRec {
    std::int32_t status;  // of the driver: 0 accepts the run
    std::uint8_t reserved4[92];
    UIDRef document;           // 96; the driver's own from here on
    std::int32_t firstRecord;  // 112, from 1
    std::int32_t recordLimit;  // 116, the record behind the last
    std::int32_t stepBy;
    std::int32_t recordPassMode;
    std::int32_t skipFirst;
    std::int32_t stackFirst;
    std::int32_t stackLast;
    std::int32_t slotTarget;     // 140, slots of the whole run
    std::uint8_t driverOptionA;  // 144
    std::uint8_t reserved145[15];
    std::uint32_t driverModule;   // 160
    std::uint8_t unattended;      // 164
    std::uint8_t suppressAlerts;  // 165
    std::uint8_t driverOptionB;   // 166
    std::uint8_t driverOptionC;   // 167
    const IDFile* file;           // 168, of the arming command; null when none was given
    std::uint32_t fileNumber;     // 176
    std::uint32_t reserved180;
    const IDFile* secondFile;        // 184
    std::uint32_t secondFileNumber;  // 192
    std::uint32_t reserved196;
    const PMString* text;      // 200
    std::uint32_t textNumber;  // 208
    std::uint8_t reserved212[12];
};
static_assert(offsetof(driverStartRec, document) == 96 && offsetof(driverStartRec, firstRecord) == 112);
static_assert(offsetof(driverStartRec, slotTarget) == 140 && offsetof(driverStartRec, driverOptionA) == 144);
static_assert(offsetof(driverStartRec, driverModule) == 160 && offsetof(driverStartRec, unattended) == 164);
static_assert(offsetof(driverStartRec, file) == 168 && offsetof(driverStartRec, secondFile) == 184);
static_assert(offsetof(driverStartRec, text) == 200 && offsetof(driverStartRec, textNumber) == 208);
static_assert(sizeof(driverStartRec) == 224);

/// Arguments of start and tick. The pointers are set for a tick only.
struct driverArgsRec {
    std::uint8_t reserved0[124];
    std::uint32_t sequencesInUse;  // 124, of the document
    std::uint8_t reserved128[456];
    std::uint8_t* keepRunning;  // 584; left at 0, the driver is done
    std::uint32_t* jobValue;
    std::uint32_t* jobPercent;
    std::uint32_t* jobCountA;
    std::uint32_t* jobCountB;
    std::uint32_t* jobCountC;
    std::uint8_t* jobFailed;
    std::uint8_t* jobCancelled;  // comes in as 1 when the run was cancelled: the driver's last turn
    std::uint8_t reserved648[1792];
};
static_assert(offsetof(driverArgsRec, sequencesInUse) == 124 && offsetof(driverArgsRec, keepRunning) == 584);
static_assert(offsetof(driverArgsRec, jobCancelled) == 640 && sizeof(driverArgsRec) == 2440);

/// The answer to a deferred command.
struct driverAnswerRec {
    std::int32_t status;    // 0, or what went wrong
    std::uint32_t command;  // that is answered
    UIDRef document;        // of commands that give one
    std::uint8_t cancelled;
    std::uint8_t reserved[16079];
};
static_assert(sizeof(driverAnswerRec) == 16104);

/// Hands a start, tick or answer record to the module of the driver. 0, or the result or the status that it left.
[[nodiscard]] std::int32_t callDriver(std::uint32_t signature, std::uint32_t command, driverStartRec& record,
                                      driverArgsRec& args);
[[nodiscard]] std::int32_t callDriver(std::uint32_t signature, std::uint32_t command, driverAnswerRec& record);

/// Answers the deferred command that is outstanding, if there is one: its driver gets `status` and `document`.
void answerDriver(std::int32_t status, UIDRef document, bool cancelled);

}  // namespace tarnova
