#include "host/render/output_file.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <system_error>

namespace tarnova {

namespace {

constexpr std::size_t bufferBytes = 1 << 20;

/// Takes eight bytes at a time; the rest is padded with zeros, so the count goes in too.
void mix(std::array<std::uint64_t, 2>& hash, std::string_view bytes) {
    const auto step = [&hash](std::uint64_t word) {
        hash[0] = (hash[0] ^ word) * 0x9FB21C651E98DF25u;
        hash[0] ^= hash[0] >> 32;
        hash[1] = (hash[1] + word) * 0xD6E8FEB86659FD93u;
        hash[1] ^= hash[1] >> 29;
    };
    std::size_t at = 0;
    for (; bytes.size() - at >= 8; at += 8) {
        std::uint64_t word;
        std::memcpy(&word, bytes.data() + at, 8);
        step(word);
    }
    std::uint64_t rest = 0;
    std::memcpy(&rest, bytes.data() + at, bytes.size() - at);
    step(rest);
    step(bytes.size());
}

std::string reasonOfErrno(int number) {
    return std::generic_category().message(number);
}

/// Makes the new name of a file durable; that some file systems refuse this for a folder is no failure.
void syncFolderOf(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    const std::string folder = slash == std::string::npos ? "." : path.substr(0, slash + 1);
    const int descriptor = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0) return;
    (void)::fsync(descriptor);
    ::close(descriptor);
}

}  // namespace

bool OutputFile::open(const std::string& targetPath) {
    discard();
    target = targetPath;
    message.clear();
    flushed = 0;
    pending.clear();
    struct stat status {};
    if (::stat(target.c_str(), &status) == 0 && !S_ISREG(status.st_mode)) {
        fail(S_ISDIR(status.st_mode) ? "it is a folder" : "it is no plain file");
        return false;
    }
    return createTemporary();
}

/// Beside the target, so that it can take its place; with the usual permissions of a new file.
bool OutputFile::createTemporary() {
    static std::atomic<unsigned> counter{0};
    constexpr int attempts = 100;  // names may be taken by what a crashed program left
    for (int i = 0; i < attempts && descriptor < 0; ++i) {
        temporary = fmt::format("{}.{}-{}.tmp", target, ::getpid(), counter++);
        descriptor = ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (descriptor < 0 && errno != EEXIST) break;
    }
    if (descriptor >= 0) return true;
    const int reason = errno;
    temporary.clear();
    fail(reasonOfErrno(reason));
    return false;
}

void OutputFile::write(std::string_view bytes) {
    while (!bytes.empty() && !failed()) {
        const std::size_t count = std::min(bytes.size(), bufferBytes - pending.size());
        pending.put(bytes.substr(0, count));
        bytes.remove_prefix(count);
        if (pending.size() == bufferBytes && !flush()) return;
    }
}

bool OutputFile::flush() {
    mix(hash, pending.view());
    std::string_view rest = pending.view();
    while (!rest.empty()) {
        const ssize_t count = ::write(descriptor, rest.data(), rest.size());
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) {
            fail(reasonOfErrno(errno));
            return false;
        }
        rest.remove_prefix(static_cast<std::size_t>(count));
    }
    flushed += pending.size();
    pending.clear();
    return true;
}

bool OutputFile::finish() {
    if (failed() || !flush()) return false;
    const bool synced = ::fsync(descriptor) == 0 || errno == EINVAL || errno == EROFS;
    const int syncErrno = errno;
    const bool closed = ::close(descriptor) == 0;
    const int closeErrno = errno;
    descriptor = -1;
    if (!synced || !closed) {
        fail(reasonOfErrno(synced ? closeErrno : syncErrno));
        return false;
    }
    if (::rename(temporary.c_str(), target.c_str()) != 0) {
        fail(reasonOfErrno(errno));
        return false;
    }
    temporary.clear();
    syncFolderOf(target);
    return true;
}

void OutputFile::discard() {
    if (descriptor >= 0) ::close(descriptor);
    descriptor = -1;
    if (!temporary.empty()) ::unlink(temporary.c_str());
    temporary.clear();
}

void OutputFile::fail(std::string_view reason) {
    if (!failed()) message = fmt::format("\"{}\" can't be written: {}", target, reason);
    discard();
}

std::array<std::uint64_t, 2> OutputFile::contentHash() const {
    std::array<std::uint64_t, 2> result = hash;
    mix(result, pending.view());
    return result;
}

}  // namespace tarnova
