// Preferences that commands set and give by item. Own to this folder.

#pragma once

#include <cstdint>
#include <span>

#include "engine/module/command_call.h"
#include "engine/session/preferences.h"

namespace tarnova {

/// A flag of the preferences and the item that carries it.
struct preferenceByte {
    unsigned item;
    std::uint8_t appPrefsRec::*field;
};

/// Sets those whose items are given, as 0 and 1.
void takeBytes(const commandCall& call, std::span<const preferenceByte> bytes);
void giveBytes(const commandCall& call, std::span<const preferenceByte> bytes);

constexpr std::uint8_t flagOf(std::uint8_t value) {
    return value != 0 ? 1 : 0;
}

/// Saves the preferences when `status` is commandDone, and gives it back.
[[nodiscard]] std::int32_t saved(std::int32_t status);

}  // namespace tarnova
