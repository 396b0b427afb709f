#include "tools/crsctl/points/FixedDecimals.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>

namespace crsctl {
namespace {

__extension__ typedef unsigned __int128 Wide;

constexpr int FRACTION_BITS = 52;
constexpr int EXPONENT_BIAS = 1075;  // of the value taken as an integer times a power of two
constexpr std::uint64_t FRACTION_MASK = (std::uint64_t{1} << FRACTION_BITS) - 1;
constexpr int EXPONENT_MASK = 0x7FF;

constexpr std::array<std::uint64_t, MAX_DECIMALS + 1> powersOfTen() {
    std::array<std::uint64_t, MAX_DECIMALS + 1> powers{};
    std::uint64_t power = 1;
    for (auto& entry : powers) {
        entry = power;
        power *= 10;
    }
    return powers;
}

constexpr auto POWERS_OF_TEN = powersOfTen();

constexpr std::array<char, 200> digitPairs() {
    std::array<char, 200> pairs{};
    for (std::size_t i = 0; i < 100; ++i) {
        pairs[2 * i] = static_cast<char>('0' + i / 10);
        pairs[2 * i + 1] = static_cast<char>('0' + i % 10);
    }
    return pairs;
}

constexpr auto DIGIT_PAIRS = digitPairs();

// The magnitude times ten to the power `decimals`, rounded half to even. It is mantissa * 2^-shift with an exact
// product below 2^113, so that all of it fits into 128 bits. False when the result does not fit into 64.
bool scaledAndRounded(std::uint64_t bits, int decimals, std::uint64_t& result) {
    const int exponent = static_cast<int>(bits >> FRACTION_BITS) & EXPONENT_MASK;
    const std::uint64_t mantissa = (bits & FRACTION_MASK) | (exponent == 0 ? 0 : FRACTION_MASK + 1);
    const int shift = EXPONENT_BIAS - (exponent == 0 ? 1 : exponent);
    if (shift <= 0) return false;
    const Wide product = static_cast<Wide>(mantissa) * POWERS_OF_TEN[static_cast<std::size_t>(decimals)];
    if (shift > 114) {
        result = 0;
        return true;
    }
    const Wide quotient = product >> shift;
    if (quotient >= UINT64_MAX) return false;
    const Wide remainder = product - (quotient << shift);
    const Wide half = static_cast<Wide>(1) << (shift - 1);
    result = static_cast<std::uint64_t>(quotient);
    if (remainder > half || (remainder == half && (result & 1U) != 0)) ++result;
    return true;
}

// The digits of `number`, at least `atLeast` of them, ending before `end`. Returns their begin.
char* writeDigitsBefore(char* end, std::uint64_t number, int atLeast) {
    const char* const limit = end - atLeast;
    while (number >= 10) {
        end -= 2;
        std::memcpy(end, &DIGIT_PAIRS[2 * (number % 100)], 2);
        number /= 100;
    }
    if (number > 0) *--end = static_cast<char>('0' + number);
    while (end > limit) *--end = '0';
    return end;
}

}  // namespace

char* writeFixed(char* out, double value, int decimals) {
    std::uint64_t bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    std::uint64_t scaled = 0;
    if (!scaledAndRounded(bits & ~(std::uint64_t{1} << 63U), decimals, scaled))
        return std::to_chars(out, out + LONGEST_FIXED_DECIMAL, value, std::chars_format::fixed, decimals).ptr;
    std::array<char, 24> digits;
    char* const end = digits.data() + digits.size();
    const char* const begin = writeDigitsBefore(end, scaled, decimals + 1);
    const auto integerDigits = static_cast<std::size_t>(end - begin - decimals);
    if (std::signbit(value)) *out++ = '-';
    std::memcpy(out, begin, integerDigits);
    out += integerDigits;
    if (decimals == 0) return out;
    *out++ = '.';
    std::memcpy(out, begin + integerDigits, static_cast<std::size_t>(decimals));
    return out + decimals;
}

}  // namespace crsctl
