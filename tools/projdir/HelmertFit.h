#pragma once

#include <cstddef>
#include <vector>

#include "tools/projdir/Helmert.h"

namespace ProjDir {

// A point in its own geocentric system, and where it lies in that of WGS 84.
struct ShiftSample {
    Vector source = Vector::Zero();
    Vector target = Vector::Zero();
    // At the target.
    LocalFrame frame;
};

ShiftSample makeShiftSample(const ReferenceEllipsoid& sourceEllipsoid, const LonLat& source, const LonLat& target);

// Lifts the targets to the heights that `shift` gives.
void adoptHeights(std::vector<ShiftSample>& samples, const Helmert& shift);

// Horizontal distances in metres.
struct Residual {
    double mean = 0;
    double rootMeanSquare = 0;
    double largest = 0;
};

// How far `shift` misses the targets horizontally.
Residual measureResidual(const Helmert& shift, const std::vector<ShiftSample>& samples);

// How many of the targets it misses by more than so many metres.
std::size_t countBeyond(const Helmert& shift, const std::vector<ShiftSample>& samples, double metres);

enum class FitParameters { TRANSLATION, ALL_SEVEN };

// The shift that misses the targets least, by least squares. Squares of heights count next to nothing: they settle
// what horizontal distances leave open. What both hardly tell, in a small area, stays as in `start`.
Helmert fitHelmert(const std::vector<ShiftSample>& samples, FitParameters parameters, const Helmert& start);

}  // namespace ProjDir
