#pragma once

#include "CoordinateTransformation/CoordTransformer.h"

namespace CoordinateTransformation {

// Transforms points through PROJ, one at a time under proj4TransformLock. Assumes that every CRS is a Proj4Crs.
//
// Thread-safe. Has no state.
class Proj4Transformer : public CoordTransformer {
public:
    void transformCoordinates(const AbstractCrs* source, const AbstractCrs* target, double& x, double& y,
                              double* z) const override;
};

// The transformer of the process. It is made at load, or at an earlier first use: a host's static initialisers may run
// before those of a static library. Never destroyed; null if memory ran out when it was made.
Proj4Transformer* getProj4Transformer();

// The same transformer, as a variable. It is null until the library is loaded, so the library itself calls the
// function.
extern Proj4Transformer* theProj4Transformer;

}  // namespace CoordinateTransformation
