// Runs the program as a person would: arguments in, exit status and both outputs out.

#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "source_folder.h"

namespace tarnova {

struct outcomeRec {
    int status = -1;  // exit status; -1 when the program died of a signal
    std::string output;
    std::string messages;
};

class ProgramTest : public testing::Test {
 protected:
    ProgramTest() {
        std::string pattern = (std::filesystem::temp_directory_path() / "tarnova-cli-XXXXXX").string();
        folder = mkdtemp(pattern.data());
    }
    ~ProgramTest() override { std::filesystem::remove_all(folder); }

    /// Runs `tarnova ARGUMENTS` (shell words) in the test's folder, with data folders of its own.
    outcomeRec run(const std::string& arguments) { return shell(std::string(TARNOVA_PROGRAM) + " " + arguments); }

    outcomeRec shell(const std::string& command) {
        const std::string line =
            "cd '" + folder + "' && XDG_DATA_HOME='" + folder + "/home' " + command + " 2>messages";
        outcomeRec outcome;
        FILE* const pipe = popen(line.c_str(), "r");
        std::array<char, 4096> buffer{};
        for (std::size_t n = 0; (n = fread(buffer.data(), 1, buffer.size(), pipe)) > 0;) {
            outcome.output.append(buffer.data(), n);
        }
        const int ended = pclose(pipe);
        outcome.status = WIFEXITED(ended) ? WEXITSTATUS(ended) : -1;
        outcome.messages = read("messages");
        return outcome;
    }

    void write(const std::string& name, std::string_view bytes) const {
        std::ofstream(folder + "/" + name, std::ios::binary) << bytes;
    }
    [[nodiscard]] std::string read(const std::string& name) const {
        std::ifstream file(folder + "/" + name, std::ios::binary);
        std::stringstream all;
        all << file.rdbuf();
        return all.str();
    }
    [[nodiscard]] bool exists(const std::string& name) const { return std::filesystem::exists(folder + "/" + name); }
    [[nodiscard]] static std::string source(const std::string& path) { return TARNOVA_SOURCE_FOLDER "/" + path; }

    std::string folder;
};

}  // namespace tarnova
