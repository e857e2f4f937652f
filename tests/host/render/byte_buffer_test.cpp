#include "host/render/byte_buffer.h"

#include <gtest/gtest.h>

#include <limits>

namespace tarnova {
namespace {

TEST(ByteBuffer, NumbersAreShortAndExact) {
    const std::pair<double, const char*> rows[] = {{0, "0"},
                                                   {-0.00001, "0"},
                                                   {1, "1"},
                                                   {-1, "-1"},
                                                   {0.5, ".5"},
                                                   {-0.5, "-.5"},
                                                   {612, "612"},
                                                   {1.25, "1.25"},
                                                   {0.0001, ".0001"},
                                                   {0.00004, "0"},
                                                   {0.99996, "1"},
                                                   {-99.9999, "-99.9999"},
                                                   {100.01, "100.01"},
                                                   {1e300, "1000000000"},
                                                   {-1e300, "-1000000000"},
                                                   {std::numeric_limits<double>::quiet_NaN(), "0"}};
    for (const auto& [value, text] : rows) {
        ByteBuffer out;
        out.putNumber(value);
        EXPECT_EQ(out.view(), text) << value;
    }
}

TEST(ByteBuffer, DecimalsAndIntegers) {
    struct TestRow {
        std::int64_t scaled;
        int decimals;
        const char* text;
    };
    const TestRow rows[] = {{14400, 3, "14.4"}, {-50, 3, "-.05"}, {7, 0, "7"}, {-12, 0, "-12"}, {1001, 3, "1.001"}};
    for (const auto& [scaled, decimals, text] : rows) {
        ByteBuffer out;
        out.putFixed(scaled, decimals);
        EXPECT_EQ(out.view(), text) << scaled;
    }
    ByteBuffer out;
    out.putInteger(std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(out.view(), "-9223372036854775808");
}

TEST(ByteBuffer, KeepsWhatItHoldsWhenItGrows) {
    ByteBuffer out;
    std::string expected;
    for (int i = 0; i < 5000; ++i) {
        out.putInteger(i);
        out.put(i % 2 == 0 ? ' ' : '\n');
        expected += std::to_string(i) + (i % 2 == 0 ? ' ' : '\n');
    }
    EXPECT_EQ(out.view(), expected);
    out.truncate(3);
    EXPECT_EQ(out.view(), expected.substr(0, 3));
}

}  // namespace
}  // namespace tarnova
