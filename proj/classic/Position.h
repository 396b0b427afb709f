#pragma once

#include <cmath>

namespace ClassicProj {

// A point in PROJ's form. It is not finite after a failure.
struct Position {
    double x;
    double y;
    double z;
    double time;

    // The difference x - x is 0 only for a finite number, so one comparison covers all three.
    bool isFinite() const { return (x - x) + (y - y) + (z - z) == 0; }
};

// PROJ's value for a point without a time.
constexpr double NO_TIME = HUGE_VAL;

}  // namespace ClassicProj
