#include "engine/toolkit/files.h"

#include <gtest/gtest.h>

#include <cerrno>

#include "engine/toolkit/run_log.h"
#include "engine/toolkit/toolkit_state.h"
#include "tests/engine/toolkit/temp_folder.h"

namespace tarnova {
namespace {

class Files : public testing::Test {
 protected:
    fileHandle open(const std::string& path, std::int16_t mode) {
        fileHandle file = noFile;
        EXPECT_EQ(fileOpen(path.c_str(), mode, &file, nullptr, 0), 0);
        EXPECT_GE(file, 1);
        return file;
    }
    TempFolder folder_;
    std::uint16_t errno_ = 0;
};

TEST_F(Files, ReadStopsAtTheEndWithoutAnError) {
    const std::string bytes(filePieceBytes + 100, 'x');  // more than the system gets in one piece
    const fileHandle file = open(folder_.file("a", bytes), fileReadOnly);
    std::string buffer(bytes.size() + 50, '\0');
    std::size_t count = buffer.size();
    EXPECT_EQ(fileRead(file, buffer.data(), &count, &errno_, 0), 0);
    EXPECT_EQ(count, bytes.size());
    EXPECT_EQ(errno_, fileAtEnd);
    EXPECT_EQ(buffer.substr(0, count), bytes);
    count = 1;
    EXPECT_EQ(fileWrite(file, "x", &count, &errno_, 0), errFileWrite) << "opened for reading only";
    EXPECT_EQ(errno_, EBADF);
    fileClose(file);
}

TEST_F(Files, PositionsAndSizes) {
    const fileHandle file = open(folder_.file("a", "0123456789"), fileReadWrite);
    struct testRow {
        std::int16_t from;
        std::int64_t offset, position;
    };
    const testRow rows[] = {{0, 3, 3}, {1, 4, 4}, {fileFromHere, 2, 6}, {fileFromHere, -1, 5}, {fileFromEnd, -2, 8}};
    std::int64_t value = 0;
    for (const auto& [from, offset, position] : rows) {
        EXPECT_EQ(fileSeek(file, from, offset, nullptr, 0), 0);
        EXPECT_EQ(filePosition(file, &value, nullptr, 0), 0);
        EXPECT_EQ(value, position);
    }
    EXPECT_EQ(fileSeek(file, 4, 0, nullptr, 0), errFileSeek);
    EXPECT_EQ(fileSeek(file, -1, 0, nullptr, 0), errFileSeek);
    EXPECT_EQ(fileSeek(file, fileFromStart, -1, nullptr, 0), errFileSeek);
    EXPECT_EQ(fileSetSize(file, 4, nullptr, 0), 0);
    EXPECT_EQ(fileSize(file, &value, nullptr, 0), 0);
    EXPECT_EQ(value, 4);
    EXPECT_EQ(filePosition(file, &value, nullptr, 0), 0);
    EXPECT_EQ(value, 8) << "asking for the size keeps the position";
    fileClose(file);
    fileClose(noFile);
    EXPECT_EQ(fileSize(file, &value, nullptr, 0), errFileSize) << "closed";
    EXPECT_EQ(fileSetSize(file, 4, nullptr, 0), errFileSetSize);
    EXPECT_EQ(filePosition(file, &value, nullptr, 0), errFilePosition);
    std::size_t count = 1;
    EXPECT_EQ(fileRead(file, &value, &count, nullptr, 0), errFileRead);
}

TEST_F(Files, WhatIsAndIsNotThere) {
    const std::string there = folder_.file("a", "abc"), missing = folder_.path("none"), inside = folder_.path("");
    EXPECT_EQ(fileCreate(there.c_str(), 0), errFileCreate);
    EXPECT_EQ(fileCreate(folder_.path("new").c_str(), 0), 0);
    fileHandle file = 77;
    EXPECT_EQ(fileOpen(missing.c_str(), fileReadOnly, &file, &errno_, 0), errFileOpen);
    EXPECT_EQ(errno_, ENOENT);
    EXPECT_EQ(file, noFile);
    EXPECT_EQ(fileOpen(there.c_str(), 4, &file, nullptr, 0), errFileOpen);
    EXPECT_EQ(fileOpen(inside.c_str(), fileReadOnly, &file, nullptr, 0), errFileOpen) << "a folder";
    EXPECT_EQ(fileIsPlain(there.c_str()), 1);
    EXPECT_EQ(fileIsPlain(inside.c_str()), 0);
    EXPECT_EQ(fileIsPlain(missing.c_str()), 0);
    EXPECT_EQ(fileSizeOfPath(there.c_str(), nullptr), 3);
    EXPECT_EQ(fileSizeOfPath(missing.c_str(), &errno_), 0);
    EXPECT_EQ(errno_, ENOENT);
    std::uint32_t seconds = 0;
    EXPECT_EQ(fileModDate(there.c_str(), &seconds, 0), 0);
    EXPECT_GT(seconds, 1600000000u);
    for (const char* path : {"", missing.c_str(), inside.c_str()}) {
        EXPECT_EQ(fileModDate(path, &seconds, 0), errFileModDate) << path;
    }
    EXPECT_EQ(fileDelete(missing.c_str(), &errno_, 0), 0) << "nothing to delete is no failure";
    EXPECT_EQ(errno_, 2);
    EXPECT_EQ(fileDelete(inside.c_str(), nullptr, 0), errFileDelete);
    EXPECT_EQ(fileDelete(there.c_str(), &errno_, 0), 0);
    EXPECT_EQ(errno_, 0);
    EXPECT_EQ(fileIsPlain(there.c_str()), 0);
}

TEST_F(Files, ARunningErrorTouchesNothing) {
    constexpr errorWord prior = 77;
    const std::string a = folder_.file("a", "A"), b = folder_.file("b", "B"), fresh = folder_.path("fresh");
    const fileHandle open1 = open(a, fileReadWrite);
    fileHandle file = 5;
    std::size_t count = 1;
    std::int64_t value = 9;
    std::uint32_t seconds = 9;
    std::string text = "kept";
    errno_ = 9;
    const errorWord results[] = {fileCreate(fresh.c_str(), prior),
                                 fileOpen(a.c_str(), fileReadOnly, &file, &errno_, prior),
                                 fileRead(open1, text.data(), &count, &errno_, prior),
                                 fileWrite(open1, "zz", &count, &errno_, prior),
                                 fileSeek(open1, fileFromEnd, 0, &errno_, prior),
                                 filePosition(open1, &value, &errno_, prior),
                                 fileSize(open1, &value, &errno_, prior),
                                 fileSetSize(open1, 0, &errno_, prior),
                                 fileDelete(a.c_str(), &errno_, prior),
                                 fileModDate(a.c_str(), &seconds, prior),
                                 fileExchange(a.c_str(), b.c_str(), prior),
                                 fileReadWhole(a.c_str(), text, 100, prior),
                                 fileWriteWhole(b.c_str(), "new", prior)};
    for (std::size_t i = 0; i < std::size(results); ++i)
        EXPECT_EQ(results[i], prior) << "operation " << i;
    fileClose(open1);
    EXPECT_EQ(folder_.bytesOf("a") + folder_.bytesOf("b") + text, "ABkept");
    EXPECT_EQ(fileIsPlain(fresh.c_str()), 0);
    EXPECT_TRUE(file == 5 && count == 1 && value == 9 && seconds == 9 && errno_ == 9);
}

TEST_F(Files, ExchangeIsAllOrNothing) {
    using exchange = errorWord (*)(const char*, const char*, errorWord);
    for (const exchange run : {exchange(fileExchange), exchange(fileExchangeByRenames)}) {
        const std::string a = folder_.file("a", "A"), b = folder_.file("b", "B"), missing = folder_.path("none");
        folder_.file(exchangeFileName, "left over");
        EXPECT_EQ(run(a.c_str(), b.c_str(), 0), 0);
        EXPECT_EQ(folder_.bytesOf("a"), "B");
        EXPECT_EQ(folder_.bytesOf("b"), "A");
        EXPECT_EQ(folder_.bytesOf(exchangeFileName), "(no file)");
        EXPECT_EQ(run(a.c_str(), missing.c_str(), 0), errFileExchange);
        EXPECT_EQ(run(missing.c_str(), a.c_str(), 0), errFileExchange);
        EXPECT_EQ(folder_.bytesOf("a"), "B") << "put back";
        EXPECT_EQ(folder_.bytesOf("none"), "(no file)");
    }
}

TEST_F(Files, WholeFiles) {
    const std::string path = folder_.file("a", "old");
    std::string bytes = "kept";
    EXPECT_EQ(fileReadWhole(path.c_str(), bytes, 2, 0), errFileRead) << "longer than allowed";
    EXPECT_EQ(bytes, "kept");
    EXPECT_EQ(fileReadWhole(path.c_str(), bytes, 3, 0), 0);
    EXPECT_EQ(bytes, "old");
    std::filesystem::permissions(path, std::filesystem::perms(0640));
    EXPECT_EQ(fileWriteWhole(path.c_str(), "new", 0), 0);
    EXPECT_EQ(folder_.bytesOf("a"), "new");
    EXPECT_EQ(std::filesystem::status(path).permissions(), std::filesystem::perms(0640)) << "rights stay";
    std::filesystem::create_directory(folder_.path("sub"));
    EXPECT_NE(fileWriteWhole(folder_.path("sub").c_str(), "new", 0), 0) << "a folder stands there";
    using Entries = std::filesystem::directory_iterator;
    EXPECT_EQ(std::distance(Entries(folder_.path("")), Entries()), 2) << "nothing stays behind";
}

TEST_F(Files, MacPaths) {
    const std::string tooLong = "/" + std::string(pathCapacity, 'x'), fits(pathCapacity - 1, 'y');
    struct testRow {
        std::string in, out;
    };
    const testRow rows[] = {
        {"/Volumes/Disk/Pics/a.eps", "Disk:/Pics/a.eps"},
        {"/Users/me/a.eps", "Users:/me/a.eps"},
        {"/Disk", "Disk:"},
        {"Pics/a.eps", "Pics/a.eps"},
        {"", ""},
        {fits, fits},
        {tooLong, ""},
    };
    for (const auto& [in, out] : rows) {
        char buffer[pathCapacity];
        macPathToPosix(in.c_str(), buffer);
        EXPECT_EQ(buffer, out) << in;
    }
}

TEST_F(Files, RunLogEndsItsLines) {
    toolkitStateRec state;
    installToolkitState(&state);
    EXPECT_EQ(runLogAppend("nowhere"), 0);
    state.runLogPath = folder_.path("log");
    EXPECT_EQ(runLogAppend("a"), 0);
    EXPECT_EQ(runLogAppend("b\r"), 0);
    EXPECT_EQ(folder_.bytesOf("log"), "a\r\nb\r");
    state.runLogPath = folder_.path("no/such/log");
    EXPECT_EQ(runLogAppend("a"), -1);
    installToolkitState(nullptr);
}

}  // namespace
}  // namespace tarnova
