#pragma once

#include <array>
#include <cstddef>

namespace ProjDir {

// The normal equations of a least-squares problem of seven unknowns, some of which may be unused.
//
// A plain value.
class SymmetricSystem {
public:
    static constexpr std::size_t SIZE = 7;
    using Row = std::array<double, SIZE>;

    // Adds the equation row . unknowns = value with the weight.
    void addEquation(const Row& row, double value, double weight);

    // The solution of least length among those that fit best. Directions in which the equations say less than
    // the `cutOff`th part of what they say in the strongest stay zero.
    Row solve(double cutOff) const;

private:
    std::array<Row, SIZE> matrix{};
    Row rightSide{};
};

}  // namespace ProjDir
