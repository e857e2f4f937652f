#include "modules/drivers/worker_process.h"

#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <span>
#include <string_view>

namespace tarnova {
namespace {

struct taskRec {
    std::int32_t firstSlot;
    std::int32_t slotLimit;
};
constexpr std::int64_t noResult = -1;

bool writeAll(int file, std::string_view bytes) {
    std::size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t count = ::pwrite(file, bytes.data() + done, bytes.size() - done, static_cast<off_t>(done));
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return false;
        done += static_cast<std::size_t>(count);
    }
    return true;
}

bool readAll(int file, std::string& bytes) {
    std::size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t count = ::pread(file, bytes.data() + done, bytes.size() - done, static_cast<off_t>(done));
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return false;
        done += static_cast<std::size_t>(count);
    }
    return true;
}

template <typename Message>
bool sendMessage(int channel, const Message& message) {
    ssize_t sent = -1;
    do {
        sent = ::send(channel, &message, sizeof message, MSG_NOSIGNAL);
    } while (sent < 0 && errno == EINTR);
    return sent == sizeof message;
}

/// False when the other side is gone.
template <typename Message>
bool receiveMessage(int channel, Message& message) {
    ssize_t received = -1;
    do {
        received = ::recv(channel, &message, sizeof message, 0);
    } while (received < 0 && errno == EINTR);
    return received == sizeof message;
}

std::int64_t doTask(const WorkerProcess::Work& work, const taskRec& task, int memory) {
    try {
        const std::optional<std::string> bytes = work(task.firstSlot, task.slotLimit);
        return bytes && writeAll(memory, *bytes) ? static_cast<std::int64_t>(bytes->size()) : noResult;
    } catch (...) {
        return noResult;
    }
}

/// Ends without a word to what the program has open: those things are the parent's.
[[noreturn]] void workToTheEnd(const WorkerProcess::Work& work, int channel, std::span<const int> memories) {
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    taskRec task{};
    for (std::size_t turn = 0; receiveMessage(channel, task); ++turn) {
        if (!sendMessage(channel, doTask(work, task, memories[turn % memories.size()]))) break;
    }
    ::_exit(0);
}

}  // namespace

WorkerProcess::~WorkerProcess() {
    if (process > 0) {
        ::kill(process, SIGKILL);
        while (::waitpid(process, nullptr, 0) < 0 && errno == EINTR) {
        }
    }
    if (channel >= 0) ::close(channel);
    for (const int memory : memories) {
        if (memory >= 0) ::close(memory);
    }
}

void WorkerProcess::start(const Work& work) {
    for (int& memory : memories) {
        memory = ::memfd_create("tarnova-pages", MFD_CLOEXEC);
        if (memory < 0) return;
    }
    int ends[2];
    if (::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) != 0) return;
    channel = ends[0];
    process = ::fork();
    if (process == 0) {
        ::close(ends[0]);
        workToTheEnd(work, ends[1], memories);
    }
    ::close(ends[1]);
}

void WorkerProcess::give(std::int32_t firstSlot, std::int32_t slotLimit) {
    if (process > 0) static_cast<void>(sendMessage(channel, taskRec{firstSlot, slotLimit}));  // `take` sees a failure
}

std::optional<std::string_view> WorkerProcess::take() {
    std::int64_t size = noResult;
    const int memory = memories[tasksTaken++ % mostTasks];
    if (process <= 0 || !receiveMessage(channel, size) || size == noResult) return std::nullopt;
    result.resize(static_cast<std::size_t>(size));
    return readAll(memory, result) ? std::optional<std::string_view>(result) : std::nullopt;
}

}  // namespace tarnova
