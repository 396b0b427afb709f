#include "tools/common/FixedDecimals.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>

namespace Tools {
namespace {

__extension__ typedef unsigned __int128 Wide;

constexpr int FRACTION_BITS = 52;
constexpr int EXPONENT_BIAS = 1075;  // of a value written as an integer times a power of two
constexpr std::uint64_t FRACTION_MASK = (std::uint64_t{1} << FRACTION_BITS) - 1;
constexpr int EXPONENT_MASK = 0x7FF;

constexpr int MOST_DIGITS = 20;

constexpr std::array<std::uint64_t, MOST_DIGITS> powersOfTen() {
    std::array<std::uint64_t, MOST_DIGITS> powers{};
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

// Sets `result` to the magnitude times 10^decimals, rounded half to even. The exact product of mantissa and power of
// ten is below 2^113, so it fits into 128 bits. Returns false if the result does not fit into 64 bits.
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

// Returns the number of decimal digits; 1 for 0.
int digitCount(std::uint64_t number) {
    const int bits = 64 - __builtin_clzll(number | 1U);
    const int least = bits * 1233 >> 12;  // times the logarithm of 2 to the base of 10
    return least + (number >= POWERS_OF_TEN[static_cast<std::size_t>(least)] ? 1 : 0);
}

// Removes the last `count` digits from `number` and writes them before `end`. Returns their beginning.
char* moveDigitsBefore(char* end, std::uint64_t& number, int count) {
    for (; count > 1; count -= 2) {
        end -= 2;
        std::memcpy(end, &DIGIT_PAIRS[2 * (number % 100)], 2);
        number /= 100;
    }
    if (count == 0) return end;
    *--end = static_cast<char>('0' + number % 10);
    number /= 10;
    return end;
}

}  // namespace

char* writeFixed(char* out, double value, int decimals) {
    std::uint64_t bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    std::uint64_t scaled = 0;
    if (!scaledAndRounded(bits & ~(std::uint64_t{1} << 63U), decimals, scaled))
        return std::to_chars(out, out + LONGEST_FIXED_DECIMAL, value, std::chars_format::fixed, decimals).ptr;
    if (std::signbit(value)) *out++ = '-';
    const int digits = std::max(digitCount(scaled), decimals + 1);
    char* const end = out + digits + (decimals > 0 ? 1 : 0);
    char* next = moveDigitsBefore(end, scaled, decimals);
    if (decimals > 0) *--next = '.';
    moveDigitsBefore(next, scaled, digits - decimals);
    return end;
}

}  // namespace Tools
