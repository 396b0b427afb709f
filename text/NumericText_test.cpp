#include "text/NumericText.h"

#include <array>
#include <cerrno>
#include <cfloat>
#include <climits>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <optional>
#include <random>
#include <string>

#include <gtest/gtest.h>

#include "QSHelpers/ConversionError.h"
#include "QSHelpers/UnexpectedException.h"
#include "tests/support/Failures.h"
#include "tests/support/GroupingLocale.h"

namespace QSHelpers {
namespace {

using TestSupport::reportOf;

constexpr double INFINITE = std::numeric_limits<double>::infinity();
constexpr double NOT_A_NUMBER = std::numeric_limits<double>::quiet_NaN();

const std::string ZEROS_307(307, '0');
const std::string ZEROS_323(323, '0');
const std::string NINES_1000(1000, '9');

unsigned int readCode(const std::string& text) { return convertTextToNumeric<unsigned int>(text, true, true); }
double readFactor(const std::string& text) { return convertTextToNumeric<double>(text, false, false); }
std::string writePlain(double value) { return convertNumericToText(value, -1, false); }
std::string writeScientific(double value) { return convertNumericToText(value, -1, true); }

template <typename Read>
void expectRefused(Read read, const std::string& text) {
    EXPECT_EQ(reportOf<ConversionError>([&] { read(text); }),
              "qvConversionError: convertTextToNumeric: Value '" + text + "'");
}

TEST(TextToCodeTest, ReadsWholeNumbers) {
    const struct {
        const char* text;
        unsigned int value;
    } accepted[] = {{"0", 0},
                    {"4326", 4326},
                    {"007", 7},
                    {"12 ", 12},
                    {"12   ", 12},
                    {" 12", 12},
                    {" +12", 12},
                    {"+ 12", 12},
                    {" + 12 ", 12},
                    {"+12", 12},
                    {"4294967295", 4294967295},
                    {"4294967290", 4294967290},
                    {"429496729", 429496729},
                    {"000000000000000000001", 1}};
    for (const auto& row : accepted) EXPECT_EQ(readCode(row.text), row.value) << row.text;
}

TEST(TextToCodeTest, RefusesWhatIsNoCodeAsAWhole) {
    const std::string refused[] = {"",     " ",    "   ",   "+",    "-",   "+ ",   "++1",  "+-1",     "+ +1", "-1",
                                   "-0",   "- 1",  " -1",   "1-",   "1+",  "12 3", "1 2 ", "12x",     "x12",  "12\t",
                                   "\t12", "12\n", "\r12",  "1.5",  "1,5", "1.",   ".1",   "1e3",     "1E3",  "1e",
                                   "0x10", "12 x", "1'000", "1 e3", "nan", "inf",  "1_0",  "\xC2\xB2"};
    const std::string tooLarge[] = {"4294967296", "4294967300", "9999999999", "42949672950", "99999999999999999999"};
    for (const std::string& text : refused) expectRefused(readCode, text);
    for (const std::string& text : tooLarge) expectRefused(readCode, text);
    for (const std::string& nul : {std::string("12\0", 3), std::string("\0", 1), std::string("1\0 2", 4)})
        expectRefused(readCode, nul);
}

TEST(TextToUnsignedTest, MultipliesAnIntegerPowerOfTenInto32Bits) {
    const struct {
        std::string text;
        unsigned int value;
    } accepted[] = {
        {"1e3", 1000},          {"1E+3", 1000},         {"12e0", 12},        {"1.5", 0},  {"15e-1", 0}, {"1.5e1", 15},
        {"1e10", 1410065408},   {"1e18", 2808348672},   {"3e9", 3000000000}, {"1e19", 0}, {"7e40", 0},  {"7e400", 0},
        {"1e" + NINES_1000, 0}, {"1e-" + NINES_1000, 0}};
    for (const auto& row : accepted)
        EXPECT_EQ(convertTextToNumeric<unsigned int>(row.text, true, false), row.value) << row.text;
}

TEST(TextToUnsignedTest, WrapsANegativeNumberThatIsNotRefused) {
    EXPECT_EQ(convertTextToNumeric<unsigned int>("-5", false, true), 4294967291U);
    EXPECT_EQ(convertTextToNumeric<unsigned int>("-0", false, true), 0U);
    EXPECT_EQ(convertTextToNumeric<unsigned int>("-2e3", false, false), 4294965296U);
}

TEST(TextToUnsignedTest, RefusesADigitTooManyEvenInTheFraction) {
    const auto read = [](const std::string& text) { return convertTextToNumeric<unsigned int>(text, false, false); };
    EXPECT_EQ(read("4.294967295"), 0U);
    expectRefused(read, "4.294967296");
    expectRefused(read, "1.00000000000");
}

TEST(TextToDoubleTest, ReadsMantissaTimesAPowerOfTen) {
    const struct {
        std::string text;
        double value;
    } accepted[] = {{"1.5", 1.5},
                    {"1,5", 1.5},
                    {"-1.5", -1.5},
                    {" - 1,5  ", -1.5},
                    {"+2", 2},
                    {"5.", 5},
                    {".5", 0.5},
                    {",5", 0.5},
                    {"-.5", -0.5},
                    {"1e3", 1000},
                    {"1E3", 1000},
                    {"1e+3", 1000},
                    {"1e03 ", 1000},
                    {"1e-3", 1 * std::pow(10.0, -3)},
                    {"0.3", 3 * std::pow(10.0, -1)},
                    {"0.9996", 9996 * std::pow(10.0, -4)},
                    {"1.25e2", 125 * std::pow(10.0, 0)},
                    {"12.5e-1", 125 * std::pow(10.0, -2)},
                    {"4294967296", 4294967296.0},
                    {"0", 0},
                    {"0e0", 0},
                    {"0e-400", 0},
                    {"1e-400", 0},
                    {"1e308", std::pow(10.0, 308)},
                    {"17976931348623157e292", 17976931348623157.0 * std::pow(10.0, 292)},
                    {"0.00001e310", std::pow(10.0, 305)},
                    {"1e-" + NINES_1000, 0},
                    {"0." + std::string(400, '0') + "5", 0},
                    {"0.5" + std::string(300, '0'), 5 * std::pow(10.0, -1)},
                    {std::string(1000, '0') + "7", 7}};
    for (const auto& row : accepted) EXPECT_DOUBLE_EQ(readFactor(row.text), row.value) << row.text;
}

TEST(TextToDoubleTest, RoundsAsTheProductOfMantissaAndPowerDoes) {
    EXPECT_EQ(readFactor("0.3"), 3 * std::pow(10.0, -1));
    EXPECT_EQ(readFactor("0.9996"), 9996 * std::pow(10.0, -4));
    EXPECT_EQ(readFactor("-0.9996"), -9996 * std::pow(10.0, -4));
}

TEST(TextToDoubleTest, KeepsTheSignOfZero) {
    EXPECT_TRUE(std::signbit(readFactor("-0")));
    EXPECT_FALSE(std::signbit(readFactor("0")));
}

TEST(TextToDoubleTest, RefusesWhatIsNoNumberAsAWhole) {
    const std::string refused[] = {"",      " ",     "+",    "-",     "--1",   "-+1",   ".",     ",",
                                   "-.",    "1..5",  "1.,5", "1.5.2", "e5",    ".e5",   "1e",    "1e+",
                                   "1e-",   "1e ",   "1e+ ", "1e 5",  "1e5.0", "1e5e5", "1e5,0", "1e++5",
                                   "1e+-5", "1e5x",  "1e5-", "1.5x",  "1. 5",  ". 5",   "1.5\t", "\t1.5",
                                   "1 e5",  "1.5 2", "nan",  "inf",   "-inf",  "0x1p3", "1f",    "1.5-"};
    for (const std::string& text : refused) expectRefused(readFactor, text);
}

TEST(TextToDoubleTest, RefusesWhatADoubleCannotHold) {
    const std::string refused[] = {"1e309",
                                   "-1e309",
                                   "1.8e308",
                                   "1e" + NINES_1000,
                                   "2" + std::string(308, '0'),
                                   "1" + std::string(309, '0'),
                                   "1" + std::string(400, '0') + "e-400",
                                   NINES_1000};
    for (const std::string& text : refused) expectRefused(readFactor, text);
    EXPECT_DOUBLE_EQ(readFactor("1" + std::string(308, '0')), 1e308);
}

TEST(TextToDoubleTest, RefusesAResultThatIsNotANumber) {
    expectRefused(readFactor, "0e400");
    expectRefused(readFactor, "-0e" + NINES_1000);
}

TEST(TextToDoubleTest, HonoursTheFlagsOfTheCaller) {
    const auto positive = [](const std::string& text) { return convertTextToNumeric<double>(text, true, false); };
    const auto whole = [](const std::string& text) { return convertTextToNumeric<double>(text, false, true); };
    EXPECT_EQ(positive("1.5"), 1.5);
    EXPECT_EQ(positive("1e-1"), std::pow(10.0, -1));
    expectRefused(positive, "-1.5");
    EXPECT_EQ(whole("-15"), -15);
    expectRefused(whole, "1.5");
    expectRefused(whole, "1e3");
    expectRefused(whole, "1,");
}

TEST(IntegerToTextTest, WritesDecimalDigits) {
    EXPECT_EQ(convertNumericToText(0U), "0");
    EXPECT_EQ(convertNumericToText(25832U), "25832");
    EXPECT_EQ(convertNumericToText(4294967295U), "4294967295");
    EXPECT_EQ(convertNumericToText(0), "0");
    EXPECT_EQ(convertNumericToText(-7), "-7");
    EXPECT_EQ(convertNumericToText(INT_MAX), "2147483647");
    EXPECT_EQ(convertNumericToText(INT_MIN), "-2147483648");
}

TEST(DoubleToTextTest, WritesPositiveInfinityAsOneNulCharacter) {
    const std::string nul(1, '\0');
    EXPECT_EQ(convertNumericToText(INFINITE, -1, false), nul);
    EXPECT_EQ(convertNumericToText(INFINITE, -1, true), nul);
    EXPECT_EQ(convertNumericToText(INFINITE, 3, false), nul);
    EXPECT_EQ(convertNumericToText(INFINITE, INT_MAX, true), nul);
}

TEST(DoubleToTextTest, WritesNegativeInfinityAndNaNOnTheOrdinaryPaths) {
    for (const bool scientific : {false, true}) {
        for (const int precision : {-1, 0, 3, INT_MAX}) {
            EXPECT_EQ(convertNumericToText(-INFINITE, precision, scientific), "-inf") << precision;
            EXPECT_EQ(convertNumericToText(NOT_A_NUMBER, precision, scientific), "nan") << precision;
        }
    }
}

TEST(DoubleToTextTest, WritesFifteenSignificantDigitsWithoutExponent) {
    const struct {
        double value;
        std::string text;
    } rows[] = {{1, "1"},
                {-1, "-1"},
                {0, "0"},
                {-0.0, "0"},
                {0.9996, "0.9996"},
                {2.5e-7, "0.00000025"},
                {-2.5e-7, "-0.00000025"},
                {1e20, "100000000000000000000"},
                {100, "100"},
                {100.5, "100.5"},
                {0.1, "0.1"},
                {0.1 + 0.2, "0.3"},
                {1.0 / 3, "0.333333333333333"},
                {2.0 / 3, "0.666666666666667"},
                {200.0 / 3, "66.6666666666667"},
                {-1e-5, "-0.00001"},
                {9.999999999999999e22, "100000000000000000000000"},
                {0.99999999999999989, "1"},
                {0.00099999999999999998, "0.001"},
                {12345678901234.5, "12345678901234.5"},
                {123456789012345.0, "123456789012345"},
                {123456789012345.6, "123456789012346"},
                {1234567890123456.0, "1234567890123460"},
                {99999999999999.95, "100000000000000"},
                {999999999999999.0, "999999999999999"},
                {9999999999999999.0, "10000000000000000"},
                {6378137, "6378137"},
                {298.257223563, "298.257223563"},
                {DBL_MAX, "179769313486232" + std::string(294, '0')},
                {-DBL_MAX, "-179769313486232" + std::string(294, '0')},
                {DBL_MIN, "0." + ZEROS_307 + "22250738585072"},
                {DBL_TRUE_MIN, "0." + ZEROS_323 + "494065645841247"},
                {-DBL_TRUE_MIN, "-0." + ZEROS_323 + "494065645841247"}};
    for (const auto& row : rows) EXPECT_EQ(writePlain(row.value), row.text);
}

TEST(DoubleToTextTest, TakesEveryNegativePrecisionAlike) {
    EXPECT_EQ(convertNumericToText(0.1, -7, false), "0.1");
    EXPECT_EQ(convertNumericToText(0.1, INT_MIN, false), "0.1");
    EXPECT_EQ(convertNumericToText(1.5, INT_MIN, true), "1.5e+00");
}

TEST(DoubleToTextTest, DropsTheTrailingZerosOfAScientificMantissa) {
    const struct {
        double value;
        const char* text;
    } rows[] = {{1, "1.e+00"},
                {0, "0.e+00"},
                {-0.0, "-0.e+00"},
                {1e10, "1.e+10"},
                {1.5, "1.5e+00"},
                {-1.5, "-1.5e+00"},
                {1e100, "1.e+100"},
                {1.05e-100, "1.05e-100"},
                {0.1, "1.e-01"},
                {1.0 / 3, "3.333333333333333e-01"},
                {DBL_MAX, "1.797693134862316e+308"},
                {DBL_TRUE_MIN, "4.940656458412465e-324"}};
    for (const auto& row : rows) EXPECT_EQ(writeScientific(row.value), row.text);
}

TEST(DoubleToTextTest, WritesAsManyPlacesAsAskedFor) {
    const struct {
        double value;
        int precision;
        bool scientific;
        const char* text;
    } rows[] = {{2.5, 0, false, "2"},
                {3.5, 0, false, "4"},
                {0.125, 2, false, "0.12"},
                {1.005, 2, false, "1.00"},
                {1234.5678, 3, false, "1234.568"},
                {-0.0004, 3, false, "-0.000"},
                {-0.0, 1, false, "-0.0"},
                {1e20, 2, false, "100000000000000000000.00"},
                {1234.5678, 3, true, "1.235e+03"},
                {1234.5678, 0, true, "1e+03"},
                {0, 2, true, "0.00e+00"},
                {1e-300, 1, true, "1.0e-300"},
                {0.1, 20, false, "0.10000000000000000555"}};
    for (const auto& row : rows) EXPECT_EQ(convertNumericToText(row.value, row.precision, row.scientific), row.text);
}

void expectTooLong(double value, int precision, bool scientific) {
    EXPECT_EQ(reportOf<UnexpectedException>([&] { convertNumericToText(value, precision, scientific); }),
              "qvUnexpectedException: Internal error converting double to string: buffer too small.");
}

TEST(DoubleToTextTest, RefusesATextOf500CharactersAndMore) {
    EXPECT_EQ(convertNumericToText(1.0, 497, false).size(), 499U);
    EXPECT_EQ(convertNumericToText(-1.0, 496, false).size(), 499U);
    EXPECT_EQ(convertNumericToText(1.0, 493, true).size(), 499U);
    EXPECT_EQ(convertNumericToText(1e300, 197, false).size(), 499U);
    expectTooLong(1.0, 498, false);
    expectTooLong(-1.0, 497, false);
    expectTooLong(1.0, 494, true);
    expectTooLong(1e300, 198, false);
    expectTooLong(1.0, 499, false);
    expectTooLong(0.0, 500, false);
    expectTooLong(1.0, INT_MAX, false);
    expectTooLong(DBL_MAX, INT_MAX, true);
}

template <typename Number>
std::string printed(const char* pattern, int precision, Number value) {
    std::array<char, 1000> buffer{};
    std::snprintf(buffer.data(), buffer.size(), pattern, precision, value);
    return buffer.data();
}

// Values of every magnitude, including denormal ones, the same in every run.
class RandomDoubles {
public:
    double next() {
        const double mantissa = std::uniform_real_distribution<double>(1, 10)(generator);
        const int exponent = std::uniform_int_distribution<int>(-323, 307)(generator);
        const double value =
            std::strtod((printed("%.*f", 17, mantissa) + "e" + std::to_string(exponent)).c_str(), nullptr);
        return generator() % 2 == 0 ? value : -value;
    }
    double nextBetweenExponents(int low, int high) {
        const double mantissa = std::uniform_real_distribution<double>(1, 10)(generator);
        return mantissa * std::pow(10.0, std::uniform_int_distribution<int>(low, high)(generator));
    }

private:
    std::mt19937_64 generator{20240229};
};

bool isWellFormedPlain(const std::string& text) {
    const auto point = text.find('.');
    const bool plain = text.find_first_not_of("-0123456789.") == std::string::npos;
    const bool trimmed = point == std::string::npos || (text.back() != '0' && text.back() != '.');
    return plain && trimmed && point != 0 && text.size() < 500;
}

TEST(DoubleToTextTest, KeepsFifteenDigitsOfValuesOfEveryMagnitude) {
    RandomDoubles values;
    for (int i = 0; i < 20000; ++i) {
        const double value = values.next();
        const std::string text = writePlain(value);
        EXPECT_TRUE(isWellFormedPlain(text)) << text;
        EXPECT_EQ(printed("%.*Le", 14, std::strtold(text.c_str(), nullptr)), printed("%.*e", 14, value)) << text;
    }
}

TEST(DoubleToTextTest, IsReadBackAsTheSameFifteenDigits) {
    RandomDoubles values;
    for (int i = 0; i < 20000; ++i) {
        const std::string text = writePlain(values.nextBetweenExponents(-290, 20));
        EXPECT_EQ(writePlain(readFactor(text)), text);
    }
}

TEST(DoubleToTextTest, AgreesWithPrintfInTheClassicLocale) {
    RandomDoubles values;
    for (int i = 0; i < 5000; ++i) {
        const double value = values.next();
        const int precision = i % 180;
        EXPECT_EQ(convertNumericToText(value, precision, false), printed("%.*f", precision, value));
        EXPECT_EQ(convertNumericToText(value, precision, true), printed("%.*e", precision, value));
    }
}

TEST(NumericTextTest, IsTheSameInEveryLocale) {
    const GroupingLocale locale;
    EXPECT_EQ(convertNumericToText(4294967295U), "4294967295");
    EXPECT_EQ(convertNumericToText(-1234567), "-1234567");
    EXPECT_EQ(writePlain(1234567.5), "1234567.5");
    EXPECT_EQ(writeScientific(1234567.5), "1.2345675e+06");
    EXPECT_EQ(convertNumericToText(1234567.5, 2, false), "1234567.50");
    EXPECT_EQ(readFactor("1234567.5"), 1234567.5);
    EXPECT_EQ(readCode("1234567"), 1234567U);
    expectRefused(readCode, "1.23.45.67");
}

static_assert(TRIM_LEFT == 0 && TRIM_RIGHT == 1 && TRIM_BOTH == 2);

TEST(TrimWhitespaceTest, RemovesWhitespaceFromTheChosenEnds) {
    constexpr char NO_BREAK_SPACE[] = "\xC2\xA0";
    const struct {
        const char* text;
        const char* left;
        const char* right;
        const char* both;
    } rows[] = {{"", "", "", ""},
                {"a", "a", "a", "a"},
                {" a ", "a ", " a", "a"},
                {"\r\n\t a\r\n\t ", "a\r\n\t ", "\r\n\t a", "a"},
                {" a b ", "a b ", " a b", "a b"},
                {" ", "", "", ""},
                {"\t\r\n ", "", "", ""},
                {"\va\f", "\va\f", "\va\f", "\va\f"},
                {NO_BREAK_SPACE, NO_BREAK_SPACE, NO_BREAK_SPACE, NO_BREAK_SPACE}};
    for (const auto& row : rows) {
        EXPECT_EQ(trimWhitespace(row.text, TRIM_LEFT), row.left) << row.text;
        EXPECT_EQ(trimWhitespace(row.text, TRIM_RIGHT), row.right) << row.text;
        EXPECT_EQ(trimWhitespace(row.text, TRIM_BOTH), row.both) << row.text;
    }
}

TEST(TrimWhitespaceTest, KeepsNulCharacters) {
    EXPECT_EQ(trimWhitespace(std::string(" \0 ", 3), TRIM_BOTH), std::string(1, '\0'));
}

TEST(ErrnoTest, IsAsItWasAfterAConversion) {
    errno = 4711;
    readFactor("1e-400");
    EXPECT_THROW(readFactor("1e400"), ConversionError);
    EXPECT_THROW(readFactor("anything"), ConversionError);
    convertTextToNumeric<unsigned int>("1e-400", true, false);
    writePlain(DBL_MIN);
    convertNumericToText(DBL_TRUE_MIN, -1, true);
    EXPECT_THROW(convertNumericToText(DBL_MAX, INT_MAX, true), UnexpectedException);
    EXPECT_EQ(errno, 4711);
}

}  // namespace
}  // namespace QSHelpers
