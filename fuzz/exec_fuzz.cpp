// Any lines as an automation session: each is answered with one JSON object, or with nothing when it is blank or a
// comment, and a session behind it starts again. Paths stay in a folder of the target's own.

#include <rapidjson/document.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "cli/exec/exec_session.h"
#include "engine/session/session.h"
#include "shell/startup.h"

namespace {

using namespace tarnova;

/// The folder that the target works in, with the files that the corpus names.
struct workFolder {
    std::string path;
    workFolder() {
        char name[] = "/tmp/tarnova-exec-fuzz-XXXXXX";
        path = mkdtemp(name);
        std::filesystem::current_path(path);
        std::ofstream("c.ddf") << "\"Customers\" recordDefinition; TARNOVAJNT signature; 1:\"Code\", 2:\"City\" "
                                  "fieldName; \"Code\" keyField; 1 dataType; 1 fileType; 2 osType;\n"
                                  "\"City\" extractionRecord; \"City\" field;\n";
        std::ofstream("c.csv") << "Code,City\nA1,Graz\nB2,Linz\n";
        std::ofstream("c.tvd") << "{\"tarnovaLayout\": 1, \"pages\": [{\"items\": [{\"uid\": 100, \"bounds\": [10, 10, "
                                  "190, 90], \"text\": \"To {{City}}\"}]}]}";
    }
    ~workFolder() { std::filesystem::remove_all(path); }
};

/// A path out of the folder, and more pages than are needed to find a fault, are left out.
bool mayRun(const std::string& line) {
    if (line.find_first_of("/\\") != std::string::npos || line.find("..") != std::string::npos) return false;
    constexpr std::size_t digitsMost = 2;
    const auto isDigit = [](char c) { return std::isdigit(static_cast<unsigned char>(c)) != 0; };
    const bool makesPages = line.find("new") != std::string::npos;
    return !makesPages || std::search_n(line.begin(), line.end(), static_cast<int>(digitsMost) + 1, true,
                                        [&](char c, bool) { return isDigit(c); }) == line.end();
}

void answerLine(ExecSession& exec, const std::string& line) {
    const auto text = exec.answer(line);
    if (!text) return;
    rapidjson::Document answer;
    if (answer.Parse(text->data(), text->size()).HasParseError() || !answer.IsObject()) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr int linesMost = 30;
    static const workFolder folder;
    sessionReset();
    ZavoStartupShutdown shell;
    if (shell.Startup("app", "home") != 0) std::filesystem::remove_all("home");
    {
        ExecSession exec;
        std::istringstream lines(std::string(reinterpret_cast<const char*>(data), size));
        int count = 0;
        for (std::string line; count < linesMost && std::getline(lines, line); ++count)
            if (mayRun(line)) answerLine(exec, line);
    }
    shell.Shutdown();
    return 0;
}
