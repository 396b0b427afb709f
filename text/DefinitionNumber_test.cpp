#include <cmath>
#include <cstdint>
#include <cstring>
#include <random>
#include <string>
#include <string_view>
#include <version>

#include <gtest/gtest.h>
#ifdef __cpp_lib_to_chars
#include <array>
#include <charconv>
#endif

#include "tests/support/Bits.h"
#include "tests/support/GroupingLocale.h"
#include "text/NumericText.h"

namespace CoordinateTransformation {
namespace {

using TestSupport::bitsOf;

// Numbers as definitions have them.
struct Reading {
    const char* text;
    double number;
};

constexpr Reading READINGS[] = {{"0", 0},
                                {"-0", -0.0},
                                {"42", 42},
                                {"+42", 42},
                                {"-42", -42},
                                {"598.1", 598.1},
                                {"-.25", -0.25},
                                {".5", 0.5},
                                {"5.", 5},
                                {"5.e1", 50},
                                {"1e2", 100},
                                {"1E-1", 0.1},
                                {"1e+2", 100},
                                {"6356752.314245179", 6356752.314245179},
                                {"0.1000000000000000055511151231257827021181583404541015625", 0.1},
                                {"0.0000000000000000000000000000000000000000000000000012345", 1.2345e-51},
                                {"4.9406564584124654e-324", 4.9406564584124654e-324},
                                {"1.7976931348623157e308", 1.7976931348623157e308},
                                {"1e-400", 0},
                                {"1e-99999999999999999999", 0},
                                {"12abc", 12},
                                {"12,5", 12},
                                {"1.5.5", 1.5},
                                {"1e", 1},
                                {"1e+", 1},
                                {"1ex", 1},
                                {"0x10", 0},
                                {"", 0},
                                {"+", 0},
                                {"-", 0},
                                {".", 0},
                                {"e5", 0},
                                {"--3", 0},
                                {"- 3", 0},
                                {"x2", 0},
                                {"na", 0},
                                {"in", 0}};

void expectReadings() {
    for (const auto& [text, number] : READINGS) EXPECT_EQ(bitsOf(readDouble(text)), bitsOf(number)) << text;
}

TEST(DefinitionNumberTest, ReadsTheNumberThatATextBeginsWith) { expectReadings(); }

TEST(DefinitionNumberTest, ReadsNoFiniteNumberWhereThereIsNone) {
    for (const char* text : {"nan", "NaN", "-nan", "nanometre", "nan(7)"})
        EXPECT_TRUE(std::isnan(readDouble(text))) << text;
    for (const char* text : {"inf", "Infinity", "+INF", "1e309", "9e99999999999999999999", "2e308abc"})
        EXPECT_EQ(readDouble(text), HUGE_VAL) << text;
    for (const char* text : {"-inf", "-1e309"}) EXPECT_EQ(readDouble(text), -HUGE_VAL) << text;
}

TEST(DefinitionNumberTest, TakesANumberOffTheFrontOfAText) {
    const struct {
        const char* text;
        double number;
        const char* rest;
    } texts[] = {
        {"12/39.37", 12, "/39.37"}, {"52d9'22\"N", 52, "d9'22\"N"}, {"-9.5e-1W", -0.95, "W"}, {"90E", 90, "E"},
        {"5e+", 5, "e+"},           {"1.5.5", 1.5, ".5"},           {"+.5 ", 0.5, " "},       {"7.", 7, ""},
    };
    for (const auto& [text, number, rest] : texts) {
        std::string_view left = text;
        EXPECT_EQ(takeDouble(left), number) << text;
        EXPECT_EQ(left, rest) << text;
    }
}

TEST(DefinitionNumberTest, TakesNothingOffATextThatBeginsWithNoNumber) {
    for (const std::string_view text : {"", "+", "-", ".", "-.", "e5", "+-5", "--3", " 3", "-x2", "na"}) {
        std::string_view left = text;
        EXPECT_EQ(takeDouble(left), std::nullopt) << text;
        EXPECT_EQ(left, text) << text;
    }
}

TEST(DefinitionNumberTest, WritesNoMoreCharactersThanItTakes) {
    const struct {
        double number;
        const char* text;
    } numbers[] = {{0, "0"},
                   {-0.0, "-0"},
                   {6378137, "6378137"},
                   {6356752.314245179, "6356752.314245179"},
                   {6356752.3142451793, "6356752.314245179"},
                   {0.1, "0.1"},
                   {-0.000001, "-1e-06"},
                   {0.0001, "1e-04"},
                   {0.00025, "0.00025"},
                   {100000, "1e+05"},
                   {123000, "123000"},
                   {0.30000000000000004, "0.30000000000000004"},
                   {1e300, "1e+300"},
                   {4.9406564584124654e-324, "5e-324"}};
    for (const auto& [number, text] : numbers) EXPECT_EQ(writeDouble(number), text);
}

TEST(DefinitionNumberTest, AreTheSameInAnyLocale) {
    const GroupingLocale locale;
    expectReadings();
    EXPECT_EQ(writeDouble(-1234567.25), "-1234567.25");
    EXPECT_EQ(writeDouble(0.000001234), "1.234e-06");
}

#ifdef __cpp_lib_to_chars
double readByStandard(const std::string& text) {
    double number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

std::string writeByStandard(double number) {
    std::array<char, 64> text{};
    return {text.data(), std::to_chars(text.data(), text.data() + text.size(), number).ptr};
}

void expectAgreement(double number) {
    const std::string shortest = writeByStandard(number);
    EXPECT_EQ(bitsOf(readDouble(shortest)), bitsOf(number)) << shortest;
    const std::string text = writeDouble(number);
    EXPECT_EQ(bitsOf(readByStandard(text)), bitsOf(number)) << text;
    EXPECT_EQ(bitsOf(readDouble(text)), bitsOf(number)) << text;
}

// A fixed seed gives the same numbers in every run.
TEST(DefinitionNumberTest, AgreeWithTheStandardLibraryBitForBit) {
    std::mt19937_64 random(20240229);
    std::uniform_real_distribution<double> axes(6.3e6, 6.4e6);
    std::uniform_real_distribution<double> shifts(-1000, 1000);
    for (int i = 0; i < 5000; ++i) {
        expectAgreement(axes(random));
        expectAgreement(shifts(random));
        expectAgreement(std::round(shifts(random) * 1000) / 1000);
        const std::uint64_t bits = random();
        double any = 0;
        std::memcpy(&any, &bits, sizeof(any));
        if (std::isfinite(any)) expectAgreement(any);
        if (HasFailure()) return;
    }
}
#endif

}  // namespace
}  // namespace CoordinateTransformation
