// A part of the work, done by a fork of the program that knows all that the program knows at that moment. It is given
// one task after another and hands over a result for each.

#pragma once

#include <sys/types.h>

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace tarnova {

class WorkerProcess {
 public:
    /// What a worker does with a task, a range of slots. Nothing when it couldn't.
    using Work = std::function<std::optional<std::string>(std::int32_t firstSlot, std::int32_t slotLimit)>;

    /// So many tasks may be given whose results nobody took: a worker has the next one when it ends with one.
    static constexpr std::size_t mostTasks = 2;

    WorkerProcess() = default;
    ~WorkerProcess();  // ends the fork, whatever it is at
    WorkerProcess(const WorkerProcess&) = delete;
    WorkerProcess& operator=(const WorkerProcess&) = delete;

    /// Forks, once; the fork does `work` for each task. What `work` changes is the fork's own, files apart. Without a
    /// process to be had, `take` gives nothing.
    void start(const Work& work);
    void give(std::int32_t firstSlot, std::int32_t slotLimit);
    /// Waits for the result of the oldest task that was given; valid until the next one. Nothing when `work` gave
    /// nothing or the worker died.
    [[nodiscard]] std::optional<std::string_view> take();

 private:
    pid_t process = -1;
    int channel = -1;                                // tasks to the fork, the sizes of results from it
    std::array<int, mostTasks> memories = {-1, -1};  // files in memory that take results by turns
    std::size_t tasksTaken = 0;
    std::string result;
};

}  // namespace tarnova
