// Time of day and waiting.
#pragma once

#include <cstdint>

#include "engine/toolkit/pstring.h"

namespace tarnova {

struct dateTimeRec {
    std::uint16_t year;   // four digits
    std::uint16_t month;  // 1 to 12
    std::uint16_t day;    // 1 to 31
    std::uint16_t hour;   // 0 to 23
    std::uint16_t minute;
    std::uint16_t second;
    std::uint16_t dayOfWeek;  // 0 is Sunday
};
static_assert(sizeof(dateTimeRec) == 14);

inline constexpr std::uint32_t ticksPerSecond = 60;

/// Seconds since 1 January 1970, 00:00 UTC.
void clockSeconds(std::uint32_t* outSeconds);
/// Local time of `seconds`.
void secondsToDateTime(std::uint32_t seconds, dateTimeRec* out);
/// Ticks of 1/60 second since some moment before the program began; never goes back.
std::uint32_t clockTicks();
/// Waits `count` ticks; gives clockTicks() at the end when `outTicks` isn't null.
void delayTicks(std::uint32_t count, std::uint32_t* outTicks);
/// Local time such as "9:05 AM": 12-hour clock without leading zero. Noon is "12:00 PM", midnight "0:00 AM". `out` takes
/// 9 bytes.
void timeOfDayText(std::uint8_t* out);

/// Takes the time from `seconds` from now on, for repeatable runs; null goes back to the system's clock. Ticks are not
/// touched.
void installClock(std::uint32_t (*seconds)());

}  // namespace tarnova
