// A run of the program: the engine with a folder of its own for temporary files, pushed from its start to its end.

#pragma once

#include <cstdint>
#include <string>

#include "cli/engine_client.h"
#include "engine/toolkit/types.h"

namespace tarnova {

/// One at a time. Its folder goes with it, and Ctrl-C asks the run to stop from its construction on.
class RunJob {
 public:
    RunJob();
    ~RunJob();
    RunJob(const RunJob&) = delete;
    RunJob& operator=(const RunJob&) = delete;

    /// Opens the layout in front. Null after telling why on standard error.
    [[nodiscard]] DocumentModel* open(const std::string& path) { return engine.open(path); }

    /// The pictures that the last run couldn't show. One to an output (`toOutput`) hands its pages over bit by bit, and
    /// its driver counts; any other has all in its report.
    [[nodiscard]] PictureProblems pictureProblems(bool toOutput) const;

    /// Runs a command. False after telling why it was refused.
    [[nodiscard]] bool send(EngineCommand& command);
    /// The same for a command without items.
    [[nodiscard]] bool send(std::uint32_t command);
    /// Starts an armed run by its command and pushes it to its end. False when it failed, was refused or was stopped;
    /// what went wrong is told by then.
    [[nodiscard]] bool run(std::uint32_t command);
    /// The same for a run that was started already; `error` is that of its start.
    [[nodiscard]] bool runStarted(errorWord error);
    /// Starts a price run that was armed, and pushes it to its end.
    [[nodiscard]] bool runPrice();

 private:
    [[nodiscard]] bool push();

    EngineClient engine;
    std::string folder;
    std::string userFolder;
};

}  // namespace tarnova
