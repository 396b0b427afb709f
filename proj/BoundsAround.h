#pragma once

#include "CoordinateTransformation/PointTransformer.h"

namespace CoordinateTransformation {

class PointMover;

// As PointTransformer::transformBounds. Allocates nothing but the text of its failure.
//
// REQUIRES: `mover` is of this process.
Bounds boundsAround(const Bounds& bounds, unsigned int pointsPerEdge, PointMover& mover);

}  // namespace CoordinateTransformation
