#pragma once

#include <cmath>

namespace ClassicProj {

// A point as PROJ takes and gives it. Not finite once it has failed.
struct Position {
    double x;
    double y;
    double z;
    double time;

    // A difference is 0 for finite numbers alone; one comparison serves all three.
    bool isFinite() const { return (x - x) + (y - y) + (z - z) == 0; }
};

// PROJ's value for a point without a time.
constexpr double NO_TIME = HUGE_VAL;

}  // namespace ClassicProj
