// Tells what programs cost, this one and those that it runs.

#pragma once

#include <functional>
#include <string>
#include <vector>

namespace tarnova::bench {

struct costRec {
    bool ran = false;       // the program exists and exited with 0
    double cpuSeconds = 0;  // user and system
    double wallSeconds = 0;
    double peakMebibytes = 0;  // resident
};

/// What the program itself has cost so far, user and system.
[[nodiscard]] double cpuSeconds();

/// Runs `arguments` (the program first, found along PATH) in `folder`, its output thrown away.
[[nodiscard]] costRec runProgram(const std::vector<std::string>& arguments, const std::string& folder);

/// The best of several runs by CPU time: what the work costs when nothing else disturbs it.
[[nodiscard]] costRec bestOf(int runs, const std::vector<std::string>& arguments, const std::string& folder,
                             const std::function<void()>& before = {});

}  // namespace tarnova::bench
