#pragma once

#include <cstdint>
#include <cstring>

namespace TestSupport {

// Tells 0 from -0, and a NaN is the same as itself.
inline std::uint64_t bitsOf(double number) {
    std::uint64_t bits = 0;
    std::memcpy(&bits, &number, sizeof(bits));
    return bits;
}

inline bool haveSameBits(double left, double right) { return bitsOf(left) == bitsOf(right); }

}  // namespace TestSupport
