#include "text/NumericText.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <locale>
#include <optional>
#include <sstream>
#include <system_error>
#include <utility>

#include "QSHelpers/ConversionError.h"
#include "QSHelpers/UnexpectedException.h"
#include "platform/ErrnoGuard.h"

namespace QSHelpers {
namespace {

constexpr int BUFFER_SIZE = 500;
constexpr int SIGNIFICANT_DIGITS = 15;
constexpr int SCIENTIFIC_PLACES = 15;
constexpr char WHITESPACE[] = "\r\n\t ";

// Part of the interface.
constexpr char POSITIVE_INFINITY_CHARACTER = '\0';

bool appendDigit(std::uint32_t& mantissa, unsigned int digit) {
    constexpr std::uint32_t LARGEST = std::numeric_limits<std::uint32_t>::max();
    if (mantissa > LARGEST / 10 || mantissa * 10 > LARGEST - digit) return false;
    mantissa = mantissa * 10 + digit;
    return true;
}

bool appendDigit(double& mantissa, unsigned int digit) {
    constexpr double LARGEST = 1.7976931348623157e308;
    constexpr double LARGEST_TENTH = 1.7976931348623158e307;
    if (mantissa > LARGEST_TENTH || mantissa * 10 > LARGEST - digit) return false;
    mantissa = mantissa * 10 + digit;
    return true;
}

template <typename Mantissa>
class NumberReader {
public:
    NumberReader(const std::string& text, bool negativeRefused, bool onlyIntegers)
        : position(text.data()),
          end(text.data() + text.size()),
          rejectNegative(negativeRefused),
          integerOnly(onlyIntegers) {}

    bool read() { return readLead() && readMantissa() && readExponent() && readTrail(); }

    bool isNegative() const { return negative; }
    Mantissa getMantissa() const { return mantissa; }
    double getPowerOfTen() const { return std::pow(10.0, static_cast<double>(exponent - fractionDigits)); }

private:
    bool readLead() {
        skipBlanks();
        if (!at('+') && !at('-')) return true;
        negative = *position++ == '-';
        skipBlanks();
        return !(negative && rejectNegative);
    }

    bool readMantissa() {
        bool anyDigit = false;
        bool separatorSeen = false;
        for (; atDigit() || at('.') || at(','); ++position) {
            if (!atDigit()) {
                if (integerOnly || separatorSeen) return false;
                separatorSeen = true;
                continue;
            }
            if (!appendDigit(mantissa, digit())) return false;
            anyDigit = true;
            fractionDigits += separatorSeen ? 1 : 0;
        }
        return anyDigit;
    }

    bool readExponent() {
        if (!at('E') && !at('e')) return true;
        ++position;
        const bool negativeExponent = at('-');
        if (at('+') || at('-')) ++position;
        if (integerOnly || !atDigit()) return false;
        for (; atDigit(); ++position) exponent = exponent < EXPONENT_BOUND ? exponent * 10 + digit() : exponent;
        exponent = negativeExponent ? -exponent : exponent;
        return true;
    }

    bool readTrail() {
        skipBlanks();
        return position == end;
    }

    void skipBlanks() {
        while (at(' ')) ++position;
    }

    bool at(char c) const { return position != end && *position == c; }
    bool atDigit() const { return position != end && *position >= '0' && *position <= '9'; }
    unsigned int digit() const { return static_cast<unsigned int>(*position - '0'); }

    // Further exponent digits change nothing: no text has enough fraction digits to compensate for them.
    static constexpr std::int64_t EXPONENT_BOUND = 100'000'000'000'000'000;

    const char* position;
    const char* end;
    bool rejectNegative;
    bool integerOnly;
    bool negative = false;
    Mantissa mantissa = 0;
    std::int64_t fractionDigits = 0;
    std::int64_t exponent = 0;
};

[[noreturn]] void refuse(const std::string& text) {
    throw ConversionError("convertTextToNumeric: Value '" + text + "'");
}

// A power below one gives 0. So does a power too large for a 64-bit integer: the language leaves that conversion
// undefined, and 0 is the low 32 bits of the x86-64 result.
std::uint32_t lowBitsOf(double powerOfTen) {
    constexpr double BEYOND_64_BITS = 9223372036854775808.0;
    return powerOfTen < BEYOND_64_BITS ? static_cast<std::uint32_t>(static_cast<std::uint64_t>(powerOfTen)) : 0;
}

// The text of at most 499 characters, or nothing. A precision at which no number fits is reduced; "nan" and "-inf"
// ignore it and always fit.
std::optional<std::string> format(double value, std::chars_format form, int precision) {
    char buffer[BUFFER_SIZE - 1];
    const auto [end, error] =
        std::to_chars(buffer, buffer + sizeof buffer, value, form, std::min(precision, BUFFER_SIZE));
    return error == std::errc() ? std::optional<std::string>(std::in_place, buffer, end) : std::nullopt;
}

[[noreturn]] void refuseTooLong() {
    throw UnexpectedException("Internal error converting double to string: buffer too small.");
}

std::string formatWithPrecision(double value, int precision, bool scientific) {
    const auto text = format(value, scientific ? std::chars_format::scientific : std::chars_format::fixed, precision);
    if (!text) refuseTooLong();
    return *text;
}

std::string formatScientific(double value) {
    auto text = format(value, std::chars_format::scientific, SCIENTIFIC_PLACES);
    if (!text) {
        std::ostringstream stream;
        stream.imbue(std::locale::classic());
        stream << value;
        throw ConversionError("convertNumericToText (scientific): Value '" + stream.str() + "'");
    }
    const auto exponent = text->find('e');
    if (exponent != std::string::npos) {
        const auto mantissaEnd = text->find_last_not_of('0', exponent - 1) + 1;
        text->erase(mantissaEnd, exponent - mantissaEnd);
    }
    return *text;
}

// A finite value above zero as 0.D1D2D3... times ten to the power of integerDigits.
struct RoundedValue {
    std::string digits;
    int integerDigits;
};

RoundedValue roundToSignificantDigits(double value) {
    const std::string text = *format(value, std::chars_format::scientific, SIGNIFICANT_DIGITS - 1);
    const auto exponentMark = text.find('e');
    std::string digits = text.substr(0, 1) + text.substr(2, exponentMark - 2);
    digits.erase(digits.find_last_not_of('0') + 1);
    return {digits, std::stoi(text.substr(exponentMark + 1)) + 1};
}

std::string writePlain(const RoundedValue& value) {
    if (value.integerDigits <= 0)
        return "0." + std::string(static_cast<std::size_t>(-value.integerDigits), '0') + value.digits;
    const auto integerDigits = static_cast<std::size_t>(value.integerDigits);
    if (value.digits.size() <= integerDigits)
        return value.digits + std::string(integerDigits - value.digits.size(), '0');
    return value.digits.substr(0, integerDigits) + "." + value.digits.substr(integerDigits);
}

std::string formatPlain(double value) {
    if (std::isnan(value)) return "nan";
    if (std::isinf(value)) return "-inf";
    if (value == 0) return "0";
    std::string text = (value < 0 ? "-" : "") + writePlain(roundToSignificantDigits(std::fabs(value)));
    if (text.size() >= BUFFER_SIZE) refuseTooLong();
    return text;
}

void readNumber(const std::string& text, bool rejectNegative, bool integerOnly, unsigned int& value) {
    NumberReader<std::uint32_t> number(text, rejectNegative, integerOnly);
    if (!number.read()) refuse(text);
    const std::uint32_t magnitude = lowBitsOf(number.getPowerOfTen()) * number.getMantissa();
    value = number.isNegative() ? 0U - magnitude : magnitude;
}

void readNumber(const std::string& text, bool rejectNegative, bool integerOnly, double& value) {
    NumberReader<double> number(text, rejectNegative, integerOnly);
    if (!number.read()) refuse(text);
    const double sign = number.isNegative() ? -1 : 1;
    value = sign * number.getMantissa() * number.getPowerOfTen();
    if (!std::isfinite(value)) refuse(text);
}

}  // namespace

template <typename T>
T convertTextToNumeric(const std::string& text, bool rejectNegative, bool integerOnly) {
    const CoordinateTransformation::ErrnoGuard errnoGuard;
    T value;
    readNumber(text, rejectNegative, integerOnly, value);
    return value;
}

// Instantiations rather than specialisations: g++ exports specialisations from the shared library despite hidden
// visibility.
template unsigned int convertTextToNumeric<unsigned int>(const std::string&, bool, bool);
template double convertTextToNumeric<double>(const std::string&, bool, bool);

std::string convertNumericToText(unsigned int value) { return std::to_string(value); }

std::string convertNumericToText(int value) { return std::to_string(value); }

std::string convertNumericToText(double value, int precision, bool scientific) {
    const CoordinateTransformation::ErrnoGuard errnoGuard;
    if (value == std::numeric_limits<double>::infinity()) return std::string(1, POSITIVE_INFINITY_CHARACTER);
    if (precision >= 0) return formatWithPrecision(value, precision, scientific);
    return scientific ? formatScientific(value) : formatPlain(value);
}

std::string trimWhitespace(const std::string& text, TrimMode mode) {
    const auto first = mode == TRIM_RIGHT ? 0 : text.find_first_not_of(WHITESPACE);
    const auto last = mode == TRIM_LEFT ? text.size() : text.find_last_not_of(WHITESPACE) + 1;
    return first < last ? text.substr(first, last - first) : std::string();
}

}  // namespace QSHelpers

namespace CoordinateTransformation {
namespace {

bool takeAnyOf(std::string_view& text, std::string_view characters) {
    if (text.empty() || characters.find(text.front()) == std::string_view::npos) return false;
    text.remove_prefix(1);
    return true;
}

bool takeSign(std::string_view& text) {
    const bool negative = !text.empty() && text.front() == '-';
    takeAnyOf(text, "+-");
    return negative;
}

std::string takeDigits(std::string_view& text) {
    std::string digits(text.substr(0, text.find_first_not_of("0123456789")));
    text.remove_prefix(digits.size());
    return digits;
}

// Far outside the range of double, but far from integer overflow.
constexpr long LARGEST_EXPONENT = 1000000000;

long takeExponent(std::string_view& text) {
    std::string_view rest = text;
    if (!takeAnyOf(rest, "eE")) return 0;
    const bool negative = takeSign(rest);
    const std::string digits = takeDigits(rest);
    if (digits.empty()) return 0;
    text = rest;
    long exponent = 0;
    for (const char digit : digits) exponent = std::min(exponent * 10 + (digit - '0'), LARGEST_EXPONENT);
    return negative ? -exponent : exponent;
}

constexpr std::pair<std::string_view, double> WORDS[] = {{"nan", std::numeric_limits<double>::quiet_NaN()},
                                                         {"inf", std::numeric_limits<double>::infinity()}};

bool isSameLetter(char lower, char any) { return any == lower || any == lower - 'a' + 'A'; }

bool beginsWith(std::string_view text, std::string_view word) {
    return text.size() >= word.size() && std::equal(word.begin(), word.end(), text.begin(), isSameLetter);
}

std::optional<double> takeWord(std::string_view& text) {
    for (const auto& [word, number] : WORDS) {
        if (!beginsWith(text, word)) continue;
        text.remove_prefix(word.size());
        return number;
    }
    return std::nullopt;
}

// Without a decimal point the text does not depend on the locale.
double readWithoutPoint(const std::string& digits, long exponent) {
    return std::strtod((digits + "e" + std::to_string(exponent)).c_str(), nullptr);
}

std::optional<double> takeMagnitude(std::string_view& text) {
    std::string_view rest = text;
    std::string digits = takeDigits(rest);
    std::string fraction;
    if (takeAnyOf(rest, ".")) fraction = takeDigits(rest);
    digits += fraction;
    if (digits.empty()) return takeWord(text);
    text = rest;
    const long exponent = takeExponent(text) - static_cast<long>(fraction.size());
    return readWithoutPoint(digits, exponent);
}

}  // namespace

std::optional<double> takeDouble(std::string_view& text) {
    std::string_view rest = text;
    const bool negative = takeSign(rest);
    const std::optional<double> magnitude = takeMagnitude(rest);
    if (!magnitude) return std::nullopt;
    text = rest;
    return negative ? -*magnitude : *magnitude;
}

double readDouble(std::string_view text) { return takeDouble(text).value_or(0); }

std::string writeDouble(double number) {
    constexpr std::size_t LONGEST_DOUBLE = 24;
    char text[LONGEST_DOUBLE];
    return {text, std::to_chars(text, text + sizeof text, number).ptr};
}

}  // namespace CoordinateTransformation
