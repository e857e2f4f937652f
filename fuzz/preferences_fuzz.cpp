// A preferences' file of any bytes: taken or replaced by defaults, and every field can be read; what is saved then is
// taken as it is. The input is the whole file when its first byte is odd, else it is laid over a good one.

#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>

#include "engine/session/preference_names.h"
#include "engine/session/preferences_file.h"
#include "engine/session/session.h"
#include "engine/toolkit/files.h"

namespace {

using namespace tarnova;

struct workFolder {
    std::string path;
    workFolder() {
        char name[] = "/tmp/tarnova-preferences-fuzz-XXXXXX";
        path = mkdtemp(name);
    }
    ~workFolder() { std::filesystem::remove_all(path); }
};

std::string liveBytes() {
    return {reinterpret_cast<const char*>(&appPrefs()), sizeof(appPrefsRec)};
}

/// The file that an input stands for. Two bytes say where it is laid over a good one.
std::string fileOf(const std::uint8_t* data, std::size_t size) {
    const std::string rest(reinterpret_cast<const char*>(data), size);
    if (size < 3 || data[0] % 2 != 0) return rest.substr(size == 0 ? 0 : 1);
    std::string file = liveBytes();
    const std::size_t at = (data[1] * 256U + data[2]) % file.size();
    const std::size_t length = std::min(size - 3, file.size() - at);
    return file.replace(at, length, rest, 3, length);
}

/// Strings end inside their fields.
void readAll() {
    const auto* const first = reinterpret_cast<const std::uint8_t*>(&appPrefs());
    for (const preferenceField& field : preferenceFields()) {
        const std::uint8_t* const at = first + field.offset;
        if (field.type == preferenceType::pascal && *at >= field.size) std::abort();
        if (field.type == preferenceType::text && std::memchr(at, 0, field.size) == nullptr) std::abort();
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const workFolder folder;
    sessionReset();
    settleDataFolder("", folder.path);
    std::filesystem::create_directories(session().dataFolder + "/Config");
    if (fileWriteWhole(preferencesPath().c_str(), fileOf(data, size), 0) != 0) std::abort();
    loadPreferences();
    readAll();
    savePreferences();
    const std::string saved = liveBytes();
    sessionReset();
    settleDataFolder("", folder.path);
    loadPreferences();
    if (liveBytes() != saved) std::abort();
    return 0;
}
