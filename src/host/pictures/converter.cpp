#include "host/pictures/converter.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <cstdio>

#include "host/pictures/picture_format.h"

namespace tarnova {

namespace {

constexpr int exitNotThere = 127;

/// The input as a file without a name, so that writing it never waits for the reader.
int fileOf(std::string_view input) {
    std::FILE* file = std::tmpfile();
    if (file == nullptr) return -1;
    const bool written = std::fwrite(input.data(), 1, input.size(), file) == input.size() && std::fflush(file) == 0;
    const int number = written ? ::fcntl(::fileno(file), F_DUPFD_CLOEXEC, 3) : -1;
    std::fclose(file);
    if (number >= 0) ::lseek(number, 0, SEEK_SET);
    return number;
}

void bound(int resource, rlim_t limit) {
    const rlimit both{limit, limit};
    ::setrlimit(static_cast<__rlimit_resource>(resource), &both);
}

/// Between fork and exec: nothing but calls that are safe there.
[[noreturn]] void becomeProgram(const char* const* arguments, int input, int output, int seconds) {
    ::dup2(input, STDIN_FILENO);
    ::dup2(output, STDOUT_FILENO);
    const int nowhere = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
    ::dup2(nowhere, STDERR_FILENO);
    bound(RLIMIT_AS, converterMemory);
    bound(RLIMIT_CPU, static_cast<rlim_t>(seconds));
    bound(RLIMIT_CORE, 0);
    ::execvp(arguments[0], const_cast<char* const*>(arguments));
    ::_exit(exitNotThere);
}

/// Takes the output up to its end; false when time or room run out.
bool takeOutput(int from, int seconds, std::string& out) {
    using Clock = std::chrono::steady_clock;
    const Clock::time_point limit = Clock::now() + std::chrono::seconds(seconds);
    std::array<char, 65536> piece;
    for (;;) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(limit - Clock::now()).count();
        pollfd wait{from, POLLIN, 0};
        const int ready = left <= 0 ? 0 : ::poll(&wait, 1, static_cast<int>(left));
        if (ready < 0 && errno == EINTR) continue;
        if (ready <= 0) return false;
        const ssize_t count = ::read(from, piece.data(), piece.size());
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return count == 0;
        out.append(piece.data(), static_cast<std::size_t>(count));
        if (out.size() > converterOutput) return false;
    }
}

ConverterEnd endOf(int status) {
    if (WIFEXITED(status) && WEXITSTATUS(status) == 0) return ConverterEnd::done;
    if (WIFEXITED(status) && WEXITSTATUS(status) == exitNotThere) return ConverterEnd::notThere;
    return WIFSIGNALED(status) && (WTERMSIG(status) == SIGXCPU || WTERMSIG(status) == SIGKILL)
               ? ConverterEnd::outOfBounds
               : ConverterEnd::failed;
}

}  // namespace

ConverterEnd runConverter(const char* const* arguments, std::string_view input, int seconds, std::string& out) {
    out.clear();
    const int source = fileOf(input);
    int pipe[2] = {-1, -1};
    if (source < 0 || ::pipe2(pipe, O_CLOEXEC) != 0) {
        if (source >= 0) ::close(source);
        return ConverterEnd::failed;
    }
    const pid_t child = ::fork();
    if (child == 0) becomeProgram(arguments, source, pipe[1], seconds);
    ::close(source);
    ::close(pipe[1]);
    const bool whole = child > 0 && takeOutput(pipe[0], seconds, out);
    ::close(pipe[0]);
    if (child < 0) return ConverterEnd::failed;
    if (!whole) ::kill(child, SIGKILL);
    int status = 0;
    while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    return whole ? endOf(status) : ConverterEnd::outOfBounds;
}

std::string convertedToPdf(const char* const* arguments, std::string_view input, const std::string& kind,
                           const std::string& maker) {
    constexpr int drawingSeconds = 20;
    std::string out;
    switch (runConverter(arguments, input, drawingSeconds, out)) {
        case ConverterEnd::done:
            return out;
        case ConverterEnd::notThere:
            throw PictureFault(kind + " files need the program " + arguments[0] + " (" + maker +
                               "), which isn't there.");
        case ConverterEnd::outOfBounds:
            throw PictureFault("The " + kind + " file takes too long, or too much room, to be drawn.");
        default:
            throw PictureFault("The " + kind + " file is damaged.");
    }
}

}  // namespace tarnova
