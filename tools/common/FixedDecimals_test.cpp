#include "tools/common/FixedDecimals.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <limits>
#include <random>
#include <string>

#include <gtest/gtest.h>

namespace Tools {
namespace {

std::string fixedText(double value, int decimals) {
    std::array<char, LONGEST_FIXED_DECIMAL> buffer{};
    return {buffer.data(), writeFixed(buffer.data(), value, decimals)};
}

std::string printed(double value, int decimals) {
    std::array<char, LONGEST_FIXED_DECIMAL + 1> buffer{};
    std::snprintf(buffer.data(), buffer.size(), "%.*f", decimals, value);
    return buffer.data();
}

std::string converted(double value, int decimals) {
    std::array<char, LONGEST_FIXED_DECIMAL> buffer{};
    char* const begin = buffer.data();
    return {begin, std::to_chars(begin, begin + buffer.size(), value, std::chars_format::fixed, decimals).ptr};
}

void expectExact(double value) {
    for (int decimals = 0; decimals <= MAX_DECIMALS; ++decimals) {
        ASSERT_EQ(fixedText(value, decimals), printed(value, decimals)) << value << " with " << decimals;
        ASSERT_EQ(fixedText(value, decimals), converted(value, decimals)) << value << " with " << decimals;
    }
}

TEST(FixedDecimals, RoundTheBinaryValueHalfToEven) {
    EXPECT_EQ(fixedText(0.5, 0), "0");
    EXPECT_EQ(fixedText(1.5, 0), "2");
    EXPECT_EQ(fixedText(2.5, 0), "2");
    EXPECT_EQ(fixedText(0.125, 2), "0.12");
    EXPECT_EQ(fixedText(0.375, 2), "0.38");
    // The binary value of 1.005 lies below it.
    EXPECT_EQ(fixedText(1.005, 2), "1.00");
    EXPECT_EQ(fixedText(999999.9996, 3), "1000000.000");
}

TEST(FixedDecimals, KeepTheSignOfZero) {
    EXPECT_EQ(fixedText(-0.0, 3), "-0.000");
    EXPECT_EQ(fixedText(-0.0004, 3), "-0.000");
    EXPECT_EQ(fixedText(0.0, 0), "0");
}

TEST(FixedDecimals, CarryIntoTheNumberBeforeThePoint) {
    EXPECT_EQ(fixedText(0.9999, 3), "1.000");
    EXPECT_EQ(fixedText(-9.9996, 3), "-10.000");
    EXPECT_EQ(fixedText(99.5, 0), "100");
    EXPECT_EQ(fixedText(-0.5, 0), "-0");
    EXPECT_EQ(fixedText(-0.75, 0), "-1");
}

TEST(FixedDecimals, KeepTheZerosBehindThePoint) {
    EXPECT_EQ(fixedText(1.0625, 4), "1.0625");
    EXPECT_EQ(fixedText(1.0625, 8), "1.06250000");
    EXPECT_EQ(fixedText(0.0009765625, 10), "0.0009765625");
    EXPECT_EQ(fixedText(8, 18), "8.000000000000000000");
}

// The sign, the digits before the point, the point and the decimals of the largest number.
TEST(FixedDecimals, AreNoLongerThanDeclared) {
    const std::string longest = fixedText(std::numeric_limits<double>::lowest(), MAX_DECIMALS);
    EXPECT_LE(longest.size(), LONGEST_FIXED_DECIMAL);
    EXPECT_EQ(longest.size(), 1U + 309U + 1U + 18U);
    EXPECT_EQ(longest.substr(0, 11), "-1797693134");
}

class ExactDecimals : public testing::TestWithParam<double> {};

TEST_P(ExactDecimals, AreThoseOfPrintf) {
    expectExact(GetParam());
    expectExact(-GetParam());
}

INSTANTIATE_TEST_SUITE_P(Limits, ExactDecimals,
                         testing::Values(0.0, std::numeric_limits<double>::denorm_min(),
                                         std::numeric_limits<double>::min(), std::numeric_limits<double>::max(),
                                         std::numeric_limits<double>::epsilon(), 1.0, 9.0, 10.0, 99.0, 100.0, 0.1, 0.05,
                                         1e-18, 5e-19, 4.9999999999999999e-19, 4503599627370496.5, 9007199254740991.0,
                                         9007199254740992.0, 9007199254740993.0, 1e15, 1e16, 1e17, 1e18, 1e19,
                                         1.8446744073709552e19, 1.8446744073709550e19, 18446744073709.551, 1e22, 1e23,
                                         1e300, 500000.0, 5538630.7025));

TEST(FixedDecimals, AreThoseOfPrintfForAnyBits) {
    std::mt19937_64 random(20220831);
    for (int i = 0; i < 20000; ++i) {
        const std::uint64_t bits = random() & ~(std::uint64_t{0x7FF} << 52U);
        const std::uint64_t exponent = random() % 0x7FF;
        const std::uint64_t all = bits | (exponent << 52U);
        double value = 0;
        std::memcpy(&value, &all, sizeof value);
        const int decimals = static_cast<int>(random() % (MAX_DECIMALS + 1));
        ASSERT_EQ(fixedText(value, decimals), printed(value, decimals)) << value << " with " << decimals;
    }
}

TEST(FixedDecimals, AreThoseOfPrintfForCoordinates) {
    std::mt19937_64 random(4326);
    std::uniform_real_distribution<double> anywhere(-2e7, 2e7);
    for (int i = 0; i < 20000; ++i) {
        const double value = anywhere(random);
        const int decimals = static_cast<int>(random() % 13);
        ASSERT_EQ(fixedText(value, decimals), printed(value, decimals)) << value << " with " << decimals;
    }
}

// Multiples of a power of two are ties at the place before their last.
TEST(FixedDecimals, AreThoseOfPrintfAtTies) {
    std::mt19937_64 random(31467);
    for (int i = 0; i < 20000; ++i) {
        const int places = static_cast<int>(random() % 12) + 1;
        const double value = std::ldexp(static_cast<double>(random() % 1000000000), -places);
        ASSERT_EQ(fixedText(value, places - 1), printed(value, places - 1)) << value;
    }
}

}  // namespace
}  // namespace Tools
