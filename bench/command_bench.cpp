// Field values through the engine's front door beside the same fetches inside the engine: what a command block adds.
// Run: command_bench FOLDER [VALUES]

#include <fmt/format.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

#include "data/data_source.h"
#include "definitions/definition_state.h"
#include "definitions/definition_store.h"
#include "engine/module/execute.h"
#include "engine/session/preferences_file.h"
#include "engine/session/session.h"
#include "engine/toolkit/memory.h"
#include "merge/tag_value.h"

namespace tarnova::bench {
namespace {

constexpr std::uint32_t defaultValues = 10000;
constexpr int rounds = 5;
constexpr double ratioLimit = 3;

constexpr char definitionText[] =
    "\"Bench\" recordDefinition; TARNOVAJNT signature; 1:\"Code\", 2:\"Name\", 3:\"City\" fieldName; \"Code\" "
    "keyField;\n"
    "1 dataType; 1 fileType; 2 osType; TRUE \"\\\"\" textQualifier;\n"
    "\"City\" extractionRecord; \"City\" field;\n";

bool prepare(const std::string& folder, std::uint32_t values) {
    std::filesystem::create_directories(folder);
    std::ofstream(folder + "/bench.ddf") << definitionText;
    std::ofstream data(folder + "/bench.csv");
    data << "Code,Name,City\n";
    for (std::uint32_t i = 1; i <= values; ++i)
        data << fmt::format("C-{:06},\"Customer {}\",Springfield {}\n", i, i, i % 997);
    data.close();
    sessionInit();
    settleDataFolder(folder, folder);
    loadPreferences();
    bool found = false, cancelled = false;
    errorWord err = openDefinitionStore(false, nullptr, 0);
    err = importDefinitions((folder + "/bench.ddf").c_str(), cancelled, err);
    err = selectDefinition("Bench", found, err);
    commandReply reply{};
    (folder + "/bench.csv").copy(reinterpret_cast<char*>(reply.text), replyTextBytes - 1);
    commandBlock block{resultNobodyAnswered, 503, &reply, nullptr};
    ZavoKelvaneModule().Execute(block);
    return err == 0 && found && reply.status == 0 && reply.count == values;
}

/// Total length of the values, so that both ways are known to have fetched the same.
std::uint64_t fetchByEngine(std::uint32_t values) {
    std::uint64_t bytes = 0;
    tagDataRec tag{};
    pstrSet(tag.extractionRecordName, "City");
    for (std::uint32_t record = 1; record <= values; ++record) {
        tagValueRec value;
        value.recordNumber = static_cast<std::int32_t>(record);
        if (fetchForTag(tag, defaultSetText, value, 0) == 0) bytes += value.length;
    }
    return bytes;
}

std::uint64_t fetchByCommand(std::uint32_t values) {
    std::uint64_t bytes = 0;
    ZavoKelvaneModule door;
    for (std::uint32_t record = 1; record <= values; ++record) {
        commandReply reply{};
        commandArgs args{};
        char* value = nullptr;
        pstrFromView(reply.text, sizeof(Str255), "City");
        args.num0 = record;
        args.item0 = &value;
        commandBlock block{resultNobodyAnswered, 525, &reply, &args};
        door.Execute(block);
        if (reply.status == 0) bytes += args.num0;
        freeBlock(value);
    }
    return bytes;
}

double bestSeconds(std::uint64_t (*fetch)(std::uint32_t), std::uint32_t values, std::uint64_t& bytes) {
    double best = 1e9;
    for (int i = 0; i < rounds; ++i) {
        const auto start = std::chrono::steady_clock::now();
        bytes = fetch(values);
        best = std::min(best, std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
    }
    return best;
}

int runBench(const std::string& folder, std::uint32_t values) {
    if (!prepare(folder, values)) {
        fmt::print(stderr, "command_bench: {} can't be prepared\n", folder);
        return 1;
    }
    std::uint64_t engineBytes = 0, commandBytes = 0;
    const double engine = bestSeconds(fetchByEngine, values, engineBytes);
    const double command = bestSeconds(fetchByCommand, values, commandBytes);
    dataSourceCloseAll();
    fmt::print("{} field values: engine {:.2f} ms, command 525 {:.2f} ms, ratio {:.2f} (at most {})\n", values,
               engine * 1e3, command * 1e3, command / engine, ratioLimit);
    return engineBytes == commandBytes && engineBytes > 0 && command <= ratioLimit * engine ? 0 : 1;
}

}  // namespace
}  // namespace tarnova::bench

int main(int argumentCount, char** arguments) {
    const std::string folder = argumentCount > 1 ? arguments[1] : "command_bench";
    const auto values = argumentCount > 2 ? static_cast<std::uint32_t>(std::stoul(arguments[2])) : std::uint32_t{0};
    return tarnova::bench::runBench(folder, values == 0 ? tarnova::bench::defaultValues : values);
}
