#pragma once

#include <algorithm>
#include <limits>

#include "CoordinateTransformation/PointTransformer.h"

namespace CoordinateTransformation {

class PointMover;

// As PointTransformer::transformBounds. Allocates nothing but the text of its failure.
//
// REQUIRES: `mover` is of this process.
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

// The longitudes that are met on the way around a box. A step of more than 200 degrees goes over the antimeridian:
// around the whole earth, with two further points on each edge, steps are of 120 degrees, and of 240 over the
// antimeridian.
class LongitudesAround {
public:
    // `degree` is the unit of longitudes.
    explicit LongitudesAround(double degree);

    void add(double longitude);
    // Back where it began: the westernmost longitude and the easternmost, or all of them. Empty without any.
    Range close();

private:
    void countTurns(double step);

    const double halfTurn;
    const double fullTurn;
    const double leap;
    // Of longitudes that go on beyond the antimeridian.
    Range unrolled;
    double turns = 0;
    double first = 0;
    double last = 0;
    // Those of the least and of the greatest.
    double western = 0;
    double eastern = 0;
};

}  // namespace CoordinateTransformation
