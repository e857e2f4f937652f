// Commands by which a driver builds and merges a document chunk by chunk.

#include "engine/module/command_call.h"
#include "engine/module/command_rows.h"
#include "engine/run/merge_pass.h"
#include "engine/session/session.h"
#include "output/build_chunk.h"
#include "output/working_copy.h"

namespace tarnova {

namespace {

constexpr std::int32_t commandBadRequest = 1;

std::int32_t buildChunkOfRun(commandCall& call) {
    const auto document = call.valueOr<UIDRef>(0, {});
    if (document.database == nullptr) return commandDocument;
    const commandArgs& args = call.args;
    const chunkOptionsRec options{args.flag0 != 0, args.flag1 != 0, args.flag2 != 0, args.flag3 != 0, args.flag4 != 0};
    const auto wanted = static_cast<std::int32_t>(std::min<std::uint32_t>(args.num0, INT32_MAX));
    const errorWord error = buildChunk(document, wanted, options, 0);
    call.args.num0 = static_cast<std::uint32_t>(session().slotCount);
    return error == 0 ? commandDone : failWith(error, commandFailed);
}

/// A length in points with 16 fraction bits.
double pointsIn(const commandCall& call, unsigned item) {
    constexpr double one = 65536;
    return call.valueOr<std::int32_t>(item, 0) / one;
}

std::int32_t mergeChunkOfRun(commandCall& call) {
    const auto document = call.valueOr<UIDRef>(0, {});
    if (document.database == nullptr) return commandDocument;
    const commandArgs& args = call.args;
    mergeChunkRec chunk{args.num0, args.num1, args.num2, args.num3, args.flag0 != 0, args.flag3 != 0};
    chunk.tracksPictures = args.flag1 != 0;
    chunk.tracksStrictly = args.flag2 != 0;
    chunk.bleedMargins = {pointsIn(call, 2), pointsIn(call, 3), pointsIn(call, 4), pointsIn(call, 5)};
    chunk.pageSize = {pointsIn(call, 6), pointsIn(call, 7)};
    std::uint32_t done = 0;
    std::uint16_t cancel = 0;
    const errorWord error = mergeChunk(document, chunk, done, cancel);
    call.put(1, done);
    if (cancel != 0) session().cancelRun |= 1;
    if (error != 0) session().engineError = error;
    return cancel != 0 ? commandFailed : commandDone;
}

std::int32_t setChunkNumbers(commandCall& call) {
    session().slotsInFront = static_cast<std::int32_t>(call.args.num0);
    session().slotsOfOutput = static_cast<std::int32_t>(call.args.num1);
    return commandDone;
}

std::int32_t resetChunkCounter(commandCall&) {
    session().pageTotalOfFile = 0;
    return commandDone;
}

std::int32_t resetChunk(commandCall& call) {
    const errorWord error = resetToSnapshot(call.valueOr<UIDRef>(0, {}), 0);
    if (error == errFailed) return commandBadRequest;
    return error == 0 ? commandDone : failWith(error, commandFailed);
}

using enum commandStage;
constexpr auto any = commandMode::any;
using enum argumentType;

constexpr commandArgument mergeChunkArgs[] = {
    numberIn(0, "first record of the chunk, from 1"),
    numberIn(1, "the record behind the last"),
    numberIn(2, "records on a page"),
    numberIn(3, "the pass mode"),
    flagIn(0, "the merge replaces the links"),
    flagIn(1, "a picture that was placed before isn't placed again (see command 575)"),
    flagIn(2, "only in a frame of the same shape and fit"),
    flagIn(3, "shows progress"),
    itemIn(0, uidRef, "the document"),
    itemOut(1, u32, "records done"),
    itemIn(2, i32, "margin beyond the left side of a page, in points with 16 fraction bits"),
    itemIn(3, i32, "beyond the top"),
    itemIn(4, i32, "beyond the right side"),
    itemIn(5, i32, "beyond the bottom"),
    itemIn(6, i32, "width of a page, likewise"),
    itemIn(7, i32, "its height"),
};
constexpr commandArgument buildChunkArgs[] = {
    itemIn(0, uidRef, "the document"),
    numberInOut(0, "slots wanted, then slots built"),
    flagIn(0, "trims all tags first, where that is wanted, and not each before its merge"),
    flagIn(1, "shows progress"),
    flagIn(2, "several slots"),
    flagIn(3, "replicates sections"),
    flagIn(4, "makes items of masters items of the pages"),
};
constexpr commandArgument chunkNumberArgs[] = {
    numberIn(0, "slots of the output in front of the chunk"),
    numberIn(1, "slots of the output in all; 0: the chunk is all of it"),
};
constexpr commandArgument snapshotArgs[] = {itemIn(0, uidRef, "the working copy")};

constexpr commandRow rows[] = {
    {1203, "kKelvaneCmdMergeChunk", commandMode::merge, second, mergeChunkOfRun, mergeChunkArgs,
     "Merges a chunk of a built document."},
    {504, "kKelvaneCmdMergeChunk", any, second, mergeChunkOfRun, mergeChunkArgs, "Merges a chunk of a built document."},
    {573, "kKelvaneCmdBuildChunk", any, second, buildChunkOfRun, buildChunkArgs, "Builds slots of a run to a driver."},
    {576, "kKelvaneCmdSetChunkNumbers", any, second, setChunkNumbers, chunkNumberArgs,
     "Says where a chunk stands in its output, for printed numbers."},
    {586, "kKelvaneCmdResetToSnapshot", any, second, resetChunk, snapshotArgs,
     "Puts the working copy and the tables back to their snapshot."},
    {621, "kKelvaneCmdResetChunkCounter", any, second, resetChunkCounter, {}, "Clears the second running page total."},
};

}  // namespace

std::span<const commandRow> buildRows() {
    return rows;
}

}  // namespace tarnova
