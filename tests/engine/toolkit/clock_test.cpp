#include "engine/toolkit/clock.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>

namespace tarnova {
namespace {

class Clock : public testing::Test {
 protected:
    void SetUp() override {
        ::setenv("TZ", "UTC0", 1);
        ::tzset();
    }
    void TearDown() override {
        installClock(nullptr);
        ::unsetenv("TZ");
        ::tzset();
    }
};

std::uint32_t secondsNow = 0;

TEST_F(Clock, DateOfSeconds) {
    dateTimeRec date{};
    secondsToDateTime(1709208000, &date);  // 29 February 2024, 12:00:00, a Thursday
    EXPECT_EQ(date.year, 2024);
    EXPECT_EQ(date.month, 2);
    EXPECT_EQ(date.day, 29);
    EXPECT_EQ(date.hour, 12);
    EXPECT_EQ(date.dayOfWeek, 4);
    secondsToDateTime(0xFFFFFFFF, &date);  // the number is unsigned: no wrap to 1901
    EXPECT_EQ(date.year, 2106);
}

TEST_F(Clock, TimeOfDay) {
    installClock([] { return secondsNow; });
    struct testRow {
        std::uint32_t hour, minute;
        const char* text;
    };
    for (const auto& [hour, minute, text] : {testRow{0, 0, "0:00 AM"},
                                             {9, 5, "9:05 AM"},
                                             {11, 59, "11:59 AM"},
                                             {12, 0, "12:00 PM"},
                                             {13, 7, "1:07 PM"},
                                             {23, 59, "11:59 PM"}}) {
        secondsNow = (hour * 60 + minute) * 60;
        Str31 out = {};
        timeOfDayText(out);
        EXPECT_EQ(pstrView(out), text);
    }
}

TEST_F(Clock, DelayWaitsItsTicks) {
    const std::uint32_t start = clockTicks();
    std::uint32_t end = 0;
    delayTicks(3, &end);
    EXPECT_GE(end - start, 3u);
    EXPECT_LT(end - start, 60u);
}

}  // namespace
}  // namespace tarnova
