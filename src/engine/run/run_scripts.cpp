#include "engine/run/run_scripts.h"

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "engine/module/execute.h"
#include "engine/session/session.h"
#include "engine/toolkit/id_file.h"
#include "engine/toolkit/memory.h"
#include "engine/toolkit/messages.h"
#include "engine/toolkit/pstring.h"
#include "engine/toolkit/strings.h"

namespace tarnova {
namespace {

namespace fs = std::filesystem;

constexpr std::uint32_t scriptModule = signatureOf("AQMS");
constexpr std::uint32_t commandRunScript = 1201;

/// Sends a script to the module. `outText` gets what it answers. False when there is a module and it failed.
bool runScript(const fs::path& script, PMString mode, std::string& outText) {
    Str255 name;
    pstrFromView(name, sizeof name, script.filename().string());
    IDFile folder(script.parent_path().string());
    char* text = nullptr;
    std::uint32_t length = 0;
    commandArgs args{};
    args.item0 = name;
    args.item1 = &folder;
    args.item2 = &text;
    args.item3 = &length;
    args.item4 = mode.empty() ? nullptr : &mode;
    commandReply reply{};
    commandBlock block{resultNobodyAnswered, commandRunScript, &reply, &args};
    moduleCall(scriptModule, 0, block);
    const blockPtr<char> owned(text);
    outText.assign(text == nullptr ? "" : text, text == nullptr ? 0 : length);
    return block.result == resultNobodyAnswered || (block.result == 0 && reply.status == 0);
}

bool isScript(const fs::directory_entry& entry) {
    const std::string name = entry.path().filename().string();
    std::error_code ignored;
    return !entry.is_directory(ignored) && name.front() != '.' && name.find(".jsx") != std::string::npos;
}

std::string lowered(const fs::path& path) {
    std::string name = path.filename().string();
    std::transform(name.begin(), name.end(), name.begin(), [](char c) { return ascii::lower(c); });
    return name;
}

std::vector<fs::path> sessionScripts() {
    const fs::path application(session().applicationFolder);
    fs::path folder = application / "Scripts/Scripts Panel/Tarnova/Session";
    std::error_code failure;
    if (!fs::is_directory(folder, failure)) folder = application / "Scripts/Tarnova/Session";
    std::vector<fs::path> scripts;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder, failure)) {
        if (isScript(entry)) scripts.push_back(entry.path());
    }
    std::sort(scripts.begin(), scripts.end(),
              [](const fs::path& a, const fs::path& b) { return lowered(a) < lowered(b); });
    return scripts;
}

}  // namespace

void runSessionScripts() {
    if (session().applicationFolder.empty() || !session().companionModules.contains(scriptModule)) return;
    for (const fs::path& script : sessionScripts()) {
        std::string answer;
        if (runScript(script, PMString{}, answer)) continue;
        PMString text(stringOfKey("kZavoRuleErrorLaunchingExternalScript"));
        const PMString name(script.filename().string());
        text.append(" [").append(name.view()).append("]");
        reportErrorString(text);
    }
}

std::int32_t runPreprocessingScript(const char* fileName) {
    if (session().applicationFolder.empty()) return 0;
    const fs::path script = fs::path(session().applicationFolder) / "Plug-Ins/Tarnova/Options/Common" / fileName;
    std::error_code failure;
    if (!fs::is_regular_file(script, failure)) return 0;
    std::string answer;
    const bool good = runScript(script, PMString(session().engineMode == modeMerge ? "VDP" : "Catalog"), answer);
    return good ? PMString(answer).number().value_or(0) : 0;
}

}  // namespace tarnova
