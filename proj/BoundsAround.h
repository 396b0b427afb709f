#pragma once

#include <algorithm>
#include <limits>

#include "CoordinateTransformation/PointTransformer.h"

namespace CoordinateTransformation {

class PointMover;

// Implements PointTransformer::transformBounds. Allocates only the text of its failure.
//
// REQUIRES: `mover` was made in this process.
Bounds boundsAround(const Bounds& bounds, unsigned int pointsPerEdge, PointMover& mover);

struct Range {
    double least = std::numeric_limits<double>::infinity();
    double greatest = -std::numeric_limits<double>::infinity();

    void add(double value) {
        least = std::min(least, value);
        greatest = std::max(greatest, value);
    }
    bool isEmpty() const { return least > greatest; }
};

// The range of the longitudes on the way around a box. A step of more than 200 degrees crosses the antimeridian: around
// the whole earth, with two further points on each edge, a step is 120 degrees, and 240 across the antimeridian.
class LongitudesAround {
public:
    // `degree` is the length of a degree in the unit of the longitudes.
    explicit LongitudesAround(double degree);

    void add(double longitude);
    // Returns to the first longitude. Returns the westernmost and the easternmost longitude, or the full turn. Empty if
    // no longitude was added.
    Range close();

private:
    void countTurns(double step);

    const double halfTurn;
    const double fullTurn;
    const double leap;
    // The range of the longitudes continued across the antimeridian.
    Range unrolled;
    double turns = 0;
    double first = 0;
    double last = 0;
    // The original longitudes of its least and greatest value.
    double western = 0;
    double eastern = 0;
};

}  // namespace CoordinateTransformation
