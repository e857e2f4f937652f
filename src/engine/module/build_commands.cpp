// Commands by which a driver builds and merges a document chunk by chunk.

#include "engine/module/command_call.h"
#include "engine/module/command_rows.h"

namespace tarnova {

namespace {

using enum commandStage;
constexpr auto any = commandMode::any;
using enum argumentType;

constexpr commandArgument mergeChunkArgs[] = {
    numberIn(0, "first record of the chunk, from 1"),
    numberIn(1, "last record"),
    numberIn(2, "records on a page"),
    numberIn(3, "the pass mode"),
    flagIn(0, "the merge replaces the links"),
    flagIn(1, "placed pictures are tracked"),
    flagIn(2, "placed pictures are tracked strictly"),
    flagIn(3, "shows progress"),
    itemIn(0, uidRef, "the document"),
    itemOut(1, u32, "records done"),
};
constexpr commandArgument buildChunkArgs[] = {
    itemIn(0, uidRef, "the document"), numberIn(0, "slots wanted"), flagIn(0, "sweeps first"),
    flagIn(1, "shows progress"),       flagIn(2, "several slots"),  flagIn(3, "replicates sections"),
    flagIn(4, "detaches masters"),
};
constexpr commandArgument chunkNumberArgs[] = {numberIn(0, "a counter"), numberIn(1, "a counter")};

constexpr commandRow rows[] = {
    {1203, "kKelvaneCmdMergeChunk", commandMode::merge, second, nullptr, mergeChunkArgs,
     "Merges a chunk of a built document."},
    {504, "kKelvaneCmdMergeChunk", any, second, nullptr, mergeChunkArgs, "Merges a chunk of a built document."},
    {573, "kKelvaneCmdBuildChunk", any, second, nullptr, buildChunkArgs, "Builds slots of a run to a driver."},
    {576, "kKelvaneCmdSetChunkNumbers", any, second, nullptr, chunkNumberArgs, "Sets the counters of a chunk."},
    {621, "kKelvaneCmdResetChunkCounter", any, second, nullptr, {}, "Clears the second running page total."},
};

}  // namespace

std::span<const commandRow> buildRows() {
    return rows;
}

}  // namespace tarnova
