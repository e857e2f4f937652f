// A part of the work, done by a fork of the program that knows all that the program knows at that moment, and ends when
// it has handed over its result.

#pragma once

#include <sys/types.h>

#include <functional>
#include <optional>
#include <string>

namespace tarnova {

class WorkerProcess {
 public:
    WorkerProcess() = default;
    ~WorkerProcess();  // a worker whose result nobody took is ended
    WorkerProcess(const WorkerProcess&) = delete;
    WorkerProcess& operator=(const WorkerProcess&) = delete;

    /// Forks, once; the fork runs `work` and ends. What `work` changes is the fork's own, files apart. Without a
    /// process to be had, `result` gives nothing.
    void start(const std::function<std::optional<std::string>()>& work);
    /// Waits for the worker. Nothing when `work` gave nothing or the worker died.
    [[nodiscard]] std::optional<std::string> result();

 private:
    pid_t process = -1;
    int memory = -1;  // a file in memory that takes the result
};

}  // namespace tarnova
