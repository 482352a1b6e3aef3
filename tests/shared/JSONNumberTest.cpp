#include "shared/JSONNumber.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <iostream>
#include <limits>
#include <random>

namespace {

std::string written(double value) {
    std::string output;
    EXPECT_TRUE(appendNumber(output, value));
    return output;
}

TEST(JSONNumber, doublesAreWrittenShort) {
    const std::pair<double, const char*> cases[] = {
        {0, "0"},
        {-0.0, "-0"},
        {1, "1"},
        {-1.5, "-1.5"},
        {0.1, "0.1"},
        {1700000000.5, "1700000000.5"},
        {1700000000123, "1700000000123"},
        {1700000000.1234567, "1700000000.1234567"},
        {0.0001, "0.0001"},
        {0.00001, "1e-05"},
        {9007199254740993.0, "9007199254740992"},
        {1e16, "10000000000000000"},
        {18014398509481984, "18014398509481984"},
        {18014398509481988, "1.8014398509481988e+16"},
        {1e300, "1e+300"},
        {5e-324, "5e-324"},
        {std::numeric_limits<double>::max(), "1.7976931348623157e+308"},
    };
    for (const auto& [value, expected] : cases) EXPECT_EQ(written(value), expected);
}

TEST(JSONNumber, randomDoublesComeBackBitForBit) {
    const auto seed = std::random_device{}();
    std::cout << "seed " << seed << std::endl;
    std::mt19937_64 random{seed};
    for (int round = 0; round < 20'000; ++round) {
        const auto value = std::bit_cast<double>(random());
        if (!std::isfinite(value)) continue;
        const std::string text = written(value);
        ASSERT_EQ(numberLength(text), text.size()) << text;
        const auto read = nearestDouble(text);
        ASSERT_TRUE(read) << text;
        ASSERT_EQ(std::bit_cast<std::uint64_t>(*read), std::bit_cast<std::uint64_t>(value)) << text;
    }
}

TEST(JSONNumber, integersHoweverTheyAreWritten) {
    struct Case {
        const char* text;
        std::optional<std::int64_t> asSigned;
        std::optional<std::uint64_t> asUnsigned;
    };
    constexpr auto none = std::nullopt;
    constexpr std::int64_t smallest = std::numeric_limits<std::int64_t>::min();
    const Case cases[] = {
        {"0", 0, 0},
        {"-0", 0, 0},
        {"3.0", 3, 3},
        {"1e2", 100, 100},
        {"1E+2", 100, 100},
        {"100e-2", 1, 1},
        {"1.25e2", 125, 125},
        {"1.25e1", none, none},
        {"3.5", none, none},
        {"1e-1", none, none},
        {"-7", -7, none},
        {"0e99999999999999999999", 0, 0},
        {"0.000e-99999999999999999999", 0, 0},
        {"1e99999999999999999999", none, none},
        {"1e-99999999999999999999", none, none},
        {"9223372036854775807", 9223372036854775807, 9223372036854775807u},
        {"9223372036854775807.0", 9223372036854775807, 9223372036854775807u},
        {"9223372036854775808", none, 9223372036854775808u},
        {"-9223372036854775808", smallest, none},
        {"-9223372036854775809", none, none},
        {"18446744073709551615", none, 18446744073709551615u},
        {"18446744073709551616", none, none},
        {"1e19", none, 10000000000000000000u},
        {"1e20", none, none},
        {"0.00000000000000000001e20", 1, 1},
        {"9007199254740993", 9007199254740993, 9007199254740993u},
    };
    for (const auto& [text, asSigned, asUnsigned] : cases) {
        EXPECT_EQ(exactSignedInteger(text), asSigned) << text;
        EXPECT_EQ(exactUnsignedInteger(text), asUnsigned) << text;
    }
}

TEST(JSONNumber, doublesBeyondTheirRange) {
    EXPECT_EQ(nearestDouble("1e400"), std::nullopt);
    EXPECT_EQ(nearestDouble("-1e400"), std::nullopt);
    EXPECT_EQ(nearestDouble("1e-400"), 0.0);
    EXPECT_EQ(nearestDouble("-0.0001e-400"), 0.0);
}

} // namespace
