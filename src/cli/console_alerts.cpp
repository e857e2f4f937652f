#include "cli/console_alerts.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>

namespace tarnova {
namespace {

constexpr int barWidth = 40;
constexpr std::chrono::milliseconds redrawInterval{100};

}  // namespace

ConsoleAlerts::ConsoleAlerts() : drawsBar(isatty(STDERR_FILENO) != 0) {}

int ConsoleAlerts::ask(const alertRec& alert) {
    eraseBar();
    fmt::print(stderr, "tarnova: {}\n", alert.text);
    if (alert.kind == alertKind::error) {
        ++errors;
    } else if (const auto button = static_cast<std::size_t>(alert.defaultButton);
               button >= 1 && button <= alert.buttons.size()) {
        fmt::print(stderr, "tarnova: going on with \"{}\"\n", alert.buttons[button - 1]);
    }
    return alert.defaultButton;
}

pictureAnswer ConsoleAlerts::askPicture(const pictureProblemRec& problem, std::string&) {
    eraseBar();
    fmt::print(stderr, "tarnova: {}\n", problem.text);
    return pictureAnswer::goOn;
}

void ConsoleAlerts::openStatus(const std::string& text) {
    title = text;
    lastDrawn = {};
    draw(0);
}

void ConsoleAlerts::moveStatus(int percent) {
    draw(percent);
}

void ConsoleAlerts::closeStatus() {
    eraseBar();
}

void ConsoleAlerts::eraseBar() {
    if (!barVisible) return;
    fmt::print(stderr, "\r\x1b[K");
    std::fflush(stderr);
    barVisible = false;
}

void ConsoleAlerts::draw(int percent) {
    const auto now = std::chrono::steady_clock::now();
    if (!drawsBar || (now - lastDrawn < redrawInterval && percent < 100)) return;
    lastDrawn = now;
    const int filled = std::clamp(percent, 0, 100) * barWidth / 100;
    fmt::print(stderr, "\r\x1b[K{} [{:<{}}] {:3}%", title, std::string(static_cast<std::size_t>(filled), '#'), barWidth,
               percent);
    std::fflush(stderr);
    barVisible = true;
}

}  // namespace tarnova
