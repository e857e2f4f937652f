#include "engine/module/preference_access.h"

#include "engine/session/preferences_file.h"

namespace tarnova {

void takeBytes(const commandCall& call, std::span<const preferenceByte> bytes) {
    for (const auto& [item, field] : bytes)
        if (call.given(item)) appPrefs().*field = flagOf(*call.item<std::uint8_t>(item));
}

void giveBytes(const commandCall& call, std::span<const preferenceByte> bytes) {
    for (const auto& [item, field] : bytes)
        call.put(item, appPrefs().*field);
}

std::int32_t saved(std::int32_t status) {
    if (status == commandDone) savePreferences();
    return status;
}

}  // namespace tarnova
