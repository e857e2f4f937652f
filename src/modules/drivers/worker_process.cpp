#include "modules/drivers/worker_process.h"

#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <string_view>
#include <utility>

namespace tarnova {
namespace {

bool writeAll(int file, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t count = ::write(file, bytes.data(), bytes.size());
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return false;
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
}

std::optional<std::string> readAll(int file) {
    struct stat status {};
    if (::fstat(file, &status) != 0) return std::nullopt;
    std::string bytes(static_cast<std::size_t>(status.st_size), '\0');
    std::size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t count = ::pread(file, bytes.data() + done, bytes.size() - done, static_cast<off_t>(done));
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return std::nullopt;
        done += static_cast<std::size_t>(count);
    }
    return bytes;
}

int waitFor(pid_t process) {
    int status = -1;
    while (::waitpid(process, &status, 0) < 0 && errno == EINTR) {
    }
    return status;
}

/// Ends without a word to what the program has open: those things are the parent's.
[[noreturn]] void workAndEnd(const std::function<std::optional<std::string>()>& work, int memory) {
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    bool good = false;
    try {
        const std::optional<std::string> bytes = work();
        good = bytes && writeAll(memory, *bytes);
    } catch (...) {
        good = false;
    }
    ::_exit(good ? 0 : 1);
}

}  // namespace

WorkerProcess::~WorkerProcess() {
    if (process > 0) {
        ::kill(process, SIGKILL);
        waitFor(process);
    }
    if (memory >= 0) ::close(memory);
}

void WorkerProcess::start(const std::function<std::optional<std::string>()>& work) {
    memory = ::memfd_create("tarnova-pages", MFD_CLOEXEC);
    if (memory < 0) return;
    process = ::fork();
    if (process == 0) workAndEnd(work, memory);
}

std::optional<std::string> WorkerProcess::result() {
    if (process <= 0) return std::nullopt;
    const int status = waitFor(std::exchange(process, -1));
    return WIFEXITED(status) && WEXITSTATUS(status) == 0 ? readAll(memory) : std::nullopt;
}

}  // namespace tarnova
