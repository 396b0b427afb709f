#include "tools/common/FixedDecimals.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>

namespace Tools {
namespace {

__extension__ typedef unsigned __int128 Wide;

constexpr int MANTISSA_BITS = std::numeric_limits<double>::digits;
constexpr double MANTISSA_SCALE = 0x1p53;
constexpr int PRODUCT_BITS = 113;  // of a mantissa times 10^MAX_DECIMALS

constexpr auto POWERS_OF_TEN = [] {
    std::array<std::uint64_t, MAX_DECIMALS + 1> powers{1};
    for (std::size_t i = 1; i < powers.size(); ++i) powers[i] = 10 * powers[i - 1];
    return powers;
}();

// Returns the magnitude times the power of ten, rounded half to even, or nothing if the result does not fit. The
// product of mantissa and power is exact.
std::optional<std::uint64_t> scaledAndRounded(double magnitude, std::uint64_t power) {
    int exponent = 0;
    const double mantissa = std::frexp(magnitude, &exponent) * MANTISSA_SCALE;
    const Wide product = static_cast<Wide>(static_cast<std::uint64_t>(mantissa)) * power;
    const int shift = MANTISSA_BITS - exponent;
    if (shift <= 0) return std::nullopt;
    if (shift > PRODUCT_BITS + 1) return 0;
    const Wide isOdd = product >> shift & 1U;
    const Wide rounded = (product + (Wide{1} << (shift - 1)) - 1 + isOdd) >> shift;
    if (rounded > std::numeric_limits<std::uint64_t>::max()) return std::nullopt;
    return static_cast<std::uint64_t>(rounded);
}

}  // namespace

char* writeFixed(char* out, double value, int decimals) {
    char* const limit = out + LONGEST_FIXED_DECIMAL;
    const std::uint64_t power = POWERS_OF_TEN[static_cast<std::size_t>(decimals)];
    const std::optional<std::uint64_t> scaled = scaledAndRounded(std::abs(value), power);
    if (!scaled) return std::to_chars(out, limit, value, std::chars_format::fixed, decimals).ptr;
    if (std::signbit(value)) *out++ = '-';
    char* const point = std::to_chars(out, limit, *scaled / power).ptr;
    if (decimals == 0) return point;
    // The power keeps the zeros behind the point, and the point replaces its 1.
    char* const end = std::to_chars(point, limit, power + *scaled % power).ptr;
    *point = '.';
    return end;
}

}  // namespace Tools
