#include "bench/process.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>

namespace tarnova::bench {
namespace {

double secondsOf(const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

[[noreturn]] void becomeProgram(const std::vector<std::string>& arguments, const std::string& folder) {
    std::vector<char*> list;
    for (const std::string& argument : arguments)
        list.push_back(const_cast<char*>(argument.c_str()));
    list.push_back(nullptr);
    const int nowhere = open("/dev/null", O_RDWR);
    dup2(nowhere, STDIN_FILENO);
    dup2(nowhere, STDOUT_FILENO);
    if (chdir(folder.c_str()) == 0) execvp(list[0], list.data());
    _exit(127);
}

}  // namespace

costRec runProgram(const std::vector<std::string>& arguments, const std::string& folder) {
    const auto start = std::chrono::steady_clock::now();
    const pid_t child = fork();
    if (child == 0) becomeProgram(arguments, folder);
    int status = 0;
    rusage usage{};
    wait4(child, &status, 0, &usage);
    const std::chrono::duration<double> wall = std::chrono::steady_clock::now() - start;
    return {WIFEXITED(status) && WEXITSTATUS(status) == 0, secondsOf(usage.ru_utime) + secondsOf(usage.ru_stime),
            wall.count(), static_cast<double>(usage.ru_maxrss) / 1024};
}

double cpuSeconds() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return secondsOf(usage.ru_utime) + secondsOf(usage.ru_stime);
}

costRec bestOf(int runs, const std::vector<std::string>& arguments, const std::string& folder,
               const std::function<void()>& before) {
    costRec best;
    for (int i = 0; i < runs; ++i) {
        if (before) before();
        const costRec next = runProgram(arguments, folder);
        if (!next.ran) return next;
        if (i == 0 || next.cpuSeconds < best.cpuSeconds) best = next;
    }
    return best;
}

}  // namespace tarnova::bench
