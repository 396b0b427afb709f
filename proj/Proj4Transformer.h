#pragma once

#include "CoordinateTransformation/CoordTransformer.h"

namespace CoordinateTransformation {

// Transforms points through PROJ, one at a time under proj4TransformLock. Takes every CRS for a Proj4Crs.
//
// Thread-safe. No state.
class Proj4Transformer : public CoordTransformer {
public:
    void transformCoordinates(const AbstractCrs* source, const AbstractCrs* target, double& x, double& y,
                              double* z) const override;
};

// The one of the process, made at load or at first use, if that is earlier: a host's static initialisers may run
// before those of a static library. Never destroyed; null if memory ran out when it was made.
Proj4Transformer* getProj4Transformer();

// The same under the name that it has once the library is loaded. Null before, so the library reads it through
// the function.
extern Proj4Transformer* theProj4Transformer;

}  // namespace CoordinateTransformation
