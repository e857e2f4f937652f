// Ctrl-C: the first one asks the run to stop cleanly, the second one ends the program.

#pragma once

namespace tarnova {

inline constexpr int exitInterrupted = 130;  // what a shell expects of a program that SIGINT ended

/// From here on SIGINT and SIGTERM are noted once each and then act as before, and a file at its size limit fails.
void watchInterrupts();
[[nodiscard]] bool wasInterrupted();

}  // namespace tarnova
