#pragma once

#include <string>

#include "tools/projdir/Geodesy.h"

namespace ProjDir {

constexpr double RADIANS_PER_ARC_SECOND = RADIANS_PER_DEGREE / 3600;
constexpr double MILLION = 1e6;

// A shift between two geocentric systems, in the sense of "+towgs84": position vector, small angles,
// X' = T + (1 + S) (X + R x X).
struct Helmert {
    Vector translation = Vector::Zero();  // metres
    Vector rotation = Vector::Zero();     // arc-seconds
    double scale = 0;                     // parts per million

    Vector apply(const Vector& point) const;
    bool isNull() const;
};

// `second` after `first`, to first order: what is left out stays below a millimetre for shifts of real datums.
Helmert compose(const Helmert& first, const Helmert& second);

// To first order.
Helmert invert(const Helmert& helmert);

// Rounded to what can be told apart on the ground: 0.1 mm, 0.000001 arc-seconds, 0.000001 ppm.
Helmert roundForWriting(const Helmert& helmert);

// The seven values of "+towgs84".
std::string writeHelmert(const Helmert& helmert);

}  // namespace ProjDir
