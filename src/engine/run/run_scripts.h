// The scripts that a run starts through the script module. Without the module nothing runs and nothing is said.

#pragma once

#include <cstdint>

namespace tarnova {

/// Starts every script of the session folder of the application, by name. One that fails is told, and the next follows.
void runSessionScripts();

/// Runs the script of that name in "Plug-Ins/Tarnova/Options/Common" below the application, with the engine mode as its
/// argument. Gives the number that it answers; 0 without the file, the module or a number.
[[nodiscard]] std::int32_t runPreprocessingScript(const char* fileName);

inline constexpr char scriptBeforeRun[] = "Qel Preprocessing.jsxbin";

}  // namespace tarnova
