#pragma once

#include <array>
#include <cstddef>

namespace ProjDir {

// The normal equations of a least-squares problem of seven unknowns, some of which may be unused.
//
// A plain value.
class NormalEquations {
public:
    static constexpr std::size_t SIZE = 7;
    using Coefficients = std::array<double, SIZE>;
    using Unknowns = std::array<double, SIZE>;

    // Adds the equation coefficients . unknowns = value with the weight.
    void addEquation(const Coefficients& coefficients, double value, double weight);

    // The solution of least length among those that fit best. Directions in which the equations say less than
    // the `cutOff`th part of what they say in the strongest stay zero.
    Unknowns solve(double cutOff) const;

private:
    std::array<Coefficients, SIZE> matrix{};
    Coefficients rightSide{};
};

}  // namespace ProjDir
