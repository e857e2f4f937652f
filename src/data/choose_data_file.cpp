#include <cstring>
#include <filesystem>

#include "data/data_source.h"
#include "data/error_place.h"
#include "data/key_index.h"
#include "data/questions.h"
#include "data/source_list.h"
#include "data/text_kind.h"
#include "engine/toolkit/messages.h"

namespace tarnova {

namespace {

constexpr std::uint16_t messagePromptStart = 14;  // in front of the definition's name
constexpr std::uint16_t messagePromptEnd = 17;    // behind it

// Which data file to take. False: cancelled.
bool pickPath(const recordDefRec& definition, const char* givenPath, std::string& path, errorWord& err) {
    const dataStateRec& state = dataState();
    if (toolkitState().unattended != 0 && state.presetDataFilePath[0] != 0) {
        path = state.presetDataFilePath;
        if (fileIsPlain(path.c_str()) == 0) err = errorAt(errPresetFileMissing, path);
        return err == 0;
    }
    if (givenPath != nullptr && fileIsPlain(givenPath) != 0) {
        path = givenPath;
        return true;
    }
    if (state.pickDataFile == nullptr) return false;
    PMString prompt = messageString(messagePromptStart);
    prompt.append(pstrView(definition.name)).append(messageString(messagePromptEnd));
    return state.pickDataFile(prompt, path) && !path.empty();
}

}  // namespace

errorWord chooseDataFile(const recordDefRec& definition, char* indexPath, bool force, bool& cancelled,
                         std::int16_t& openStatus, const char* givenPath, errorWord priorError) {
    if (priorError != 0) return priorError;
    std::string path;
    errorWord err = 0;
    cancelled = !pickPath(definition, givenPath, path, err);
    if (err != 0 || cancelled) return err;
    std::error_code failure;
    const std::filesystem::path whole = std::filesystem::absolute(path, failure);
    if (!failure) path = whole.native();

    bool accepted = false;
    err = checkDataFileEncodingOf(definition, path.c_str(), accepted, openStatus, err);
    cancelled = !accepted;
    if (err != 0 || cancelled) return err;
    if (force && indexPath[0] != 0) {
        auto& queue = dataState().indexDeleteQueue;
        queue.emplace_back(indexPath);
        err = runIndexDeleteQueue(queue, err);
    }
    return makeIndexFile(definition, path.c_str(), indexPath, err);
}

errorWord runIndexDeleteQueue(std::vector<std::string>& queue, errorWord priorError) {
    if (priorError != 0) return priorError;
    while (!queue.empty()) {
        const std::string path = queue.front();
        while (dataSourceRec* source = findTextSource(path.c_str()))
            removeSource(source);
        if (fileDelete(path.c_str(), nullptr, 0) != 0) return errorAt(errIndexDelete, path);
        queue.erase(queue.begin());
    }
    return 0;
}

}  // namespace tarnova
