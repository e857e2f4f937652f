// How the rows of the command table are written, and the groups of rows that it is made of. Own to this folder.

#pragma once

#include "engine/module/command_table.h"

namespace tarnova {

constexpr commandArgument itemIn(unsigned index, argumentType type, const char* meaning) {
    return {argumentPlace::item, static_cast<std::uint8_t>(index), type, argumentWay::in, meaning};
}
constexpr commandArgument itemOut(unsigned index, argumentType type, const char* meaning) {
    return {argumentPlace::item, static_cast<std::uint8_t>(index), type, argumentWay::out, meaning};
}
constexpr commandArgument itemInOut(unsigned index, argumentType type, const char* meaning) {
    return {argumentPlace::item, static_cast<std::uint8_t>(index), type, argumentWay::inOut, meaning};
}
constexpr commandArgument numberIn(unsigned index, const char* meaning) {
    return {argumentPlace::number, static_cast<std::uint8_t>(index), argumentType::u32, argumentWay::in, meaning};
}
constexpr commandArgument numberInOut(unsigned index, const char* meaning) {
    return {argumentPlace::number, static_cast<std::uint8_t>(index), argumentType::u32, argumentWay::inOut, meaning};
}
constexpr commandArgument numberOut(unsigned index, const char* meaning) {
    return {argumentPlace::number, static_cast<std::uint8_t>(index), argumentType::u32, argumentWay::out, meaning};
}
constexpr commandArgument flagIn(unsigned index, const char* meaning) {
    return {argumentPlace::flag, static_cast<std::uint8_t>(index), argumentType::u8, argumentWay::in, meaning};
}
constexpr commandArgument textIn(unsigned index, const char* meaning) {
    return {argumentPlace::text, static_cast<std::uint8_t>(index), argumentType::pascal, argumentWay::in, meaning};
}
constexpr commandArgument replyIn(replyField field, argumentType type, const char* meaning) {
    return {argumentPlace::reply, static_cast<std::uint8_t>(field), type, argumentWay::in, meaning};
}
constexpr commandArgument replyOut(replyField field, argumentType type, const char* meaning) {
    return {argumentPlace::reply, static_cast<std::uint8_t>(field), type, argumentWay::out, meaning};
}

[[nodiscard]] std::span<const commandRow> moduleRows();
[[nodiscard]] std::span<const commandRow> driverRows();
[[nodiscard]] std::span<const commandRow> definitionRows();
[[nodiscard]] std::span<const commandRow> dataRows();
[[nodiscard]] std::span<const commandRow> optionRows();
[[nodiscard]] std::span<const commandRow> preferenceRows();
[[nodiscard]] std::span<const commandRow> searchPathRows();
[[nodiscard]] std::span<const commandRow> runRows();
[[nodiscard]] std::span<const commandRow> tagRows();
[[nodiscard]] std::span<const commandRow> frameRows();
[[nodiscard]] std::span<const commandRow> reportRows();
[[nodiscard]] std::span<const commandRow> buildRows();
[[nodiscard]] std::span<const commandRow> workingCopyRows();

}  // namespace tarnova
