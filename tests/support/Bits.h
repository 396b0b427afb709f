#pragma once

#include <cstdint>
#include <cstring>

namespace TestSupport {

// The bits of a number. 0 and -0 differ, and a NaN is equal to itself.
inline std::uint64_t bitsOf(double number) {
    std::uint64_t bits = 0;
    std::memcpy(&bits, &number, sizeof(bits));
    return bits;
}

inline bool haveSameBits(double left, double right) { return bitsOf(left) == bitsOf(right); }

}  // namespace TestSupport
