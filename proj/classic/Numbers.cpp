#include "proj/classic/Numbers.h"

#include <algorithm>
#include <cstdlib>
#include <iomanip>
#include <limits>
#include <locale>
#include <sstream>
#include <utility>

namespace ClassicProj {

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

// Far beyond the range of double, and far from overflow.
constexpr long LARGEST_EXPONENT = 1000000000;

long takeExponent(std::string_view text) {
    if (!takeAnyOf(text, "eE")) return 0;
    const bool negative = takeSign(text);
    long exponent = 0;
    for (const char digit : takeDigits(text)) exponent = std::min(exponent * 10 + (digit - '0'), LARGEST_EXPONENT);
    return negative ? -exponent : exponent;
}

bool isSameLetter(char lower, char any) { return any == lower || any == lower - 'a' + 'A'; }

bool beginsWith(std::string_view text, std::string_view word) {
    return text.size() >= word.size() && std::equal(word.begin(), word.end(), text.begin(), isSameLetter);
}

double readWord(std::string_view text) {
    if (beginsWith(text, "nan")) return std::numeric_limits<double>::quiet_NaN();
    return beginsWith(text, "inf") ? std::numeric_limits<double>::infinity() : 0;
}

// Without a decimal point there is nothing in the text that a locale could change.
double readWithoutPoint(const std::string& digits, long exponent) {
    return std::strtod((digits + "e" + std::to_string(exponent)).c_str(), nullptr);
}

std::string writeDigits(double number, int digits) {
    std::ostringstream text;
    text.exceptions(std::ios::badbit);
    text.imbue(std::locale::classic());
    text << std::setprecision(digits) << number;
    return std::move(text).str();
}

}  // namespace

double readNumber(std::string_view text) {
    const bool negative = takeSign(text);
    std::string digits = takeDigits(text);
    std::string fraction;
    if (takeAnyOf(text, ".")) fraction = takeDigits(text);
    digits += fraction;
    const long exponent = takeExponent(text) - static_cast<long>(fraction.size());
    if (digits.empty()) return negative ? 0 - readWord(text) : readWord(text);
    return (negative ? -1 : 1) * readWithoutPoint(digits, exponent);
}

std::string writeNumber(double number) {
    std::string text;
    for (const int digits : {15, 16, 17}) {
        text = writeDigits(number, digits);
        if (readNumber(text) == number) break;
    }
    return text;
}

}  // namespace ClassicProj
