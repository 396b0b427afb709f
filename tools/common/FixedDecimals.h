#pragma once

#include <cstddef>

namespace Tools {

constexpr int MAX_DECIMALS = 18;
// Enough for any finite number: sign, 309 digits, point, decimals.
constexpr std::size_t LONGEST_FIXED_DECIMAL = 332;

// Writes `value` at `out` exactly as printf's "%.*f" does, and returns the end. Rounds the exact binary value, ties to
// even. A negative value that rounds to zero keeps its sign.
// REQUIRES: `value` is finite, 0 <= decimals <= MAX_DECIMALS, LONGEST_FIXED_DECIMAL bytes at `out`.
char* writeFixed(char* out, double value, int decimals);

}  // namespace Tools
