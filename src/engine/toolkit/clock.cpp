#include "engine/toolkit/clock.h"

#include <chrono>
#include <cstdio>
#include <ctime>
#include <thread>

namespace tarnova {

namespace {

std::uint32_t systemSeconds() {
    return static_cast<std::uint32_t>(std::time(nullptr));
}

std::uint32_t (*secondsSource)() = systemSeconds;

}  // namespace

void clockSeconds(std::uint32_t* outSeconds) {
    *outSeconds = secondsSource();
}

void secondsToDateTime(std::uint32_t seconds, dateTimeRec* out) {
    const std::time_t time = seconds;
    std::tm local{};
    ::localtime_r(&time, &local);
    const auto word = [](int value) { return static_cast<std::uint16_t>(value); };
    *out = {word(local.tm_year + 1900), word(local.tm_mon + 1), word(local.tm_mday), word(local.tm_hour),
            word(local.tm_min),         word(local.tm_sec),     word(local.tm_wday)};
}

std::uint32_t clockTicks() {
    using ticks = std::chrono::duration<std::int64_t, std::ratio<1, ticksPerSecond>>;
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return static_cast<std::uint32_t>(std::chrono::duration_cast<ticks>(now).count());
}

void delayTicks(std::uint32_t count, std::uint32_t* outTicks) {
    const std::uint32_t start = clockTicks();
    // The difference is right across the wrap of the 32-bit tick count.
    while (clockTicks() - start < count)
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    if (outTicks != nullptr) *outTicks = clockTicks();
}

void timeOfDayText(std::uint8_t* out) {
    std::uint32_t seconds = 0;
    dateTimeRec now{};
    clockSeconds(&seconds);
    secondsToDateTime(seconds, &now);
    const int hour = now.hour > 12 ? now.hour - 12 : now.hour;
    char text[16];
    std::snprintf(text, sizeof text, "%d:%02d %s", hour, now.minute % 60, now.hour < 12 ? "AM" : "PM");
    pstrFromView(out, sizeof "12:59 PM", text);
}

void installClock(std::uint32_t (*seconds)()) {
    secondsSource = seconds != nullptr ? seconds : systemSeconds;
}

}  // namespace tarnova
