#pragma once

#include "CoordinateTransformation/CoordTransformer.h"

namespace CoordinateTransformation {

// Transforms points through PROJ, one at a time under proj4TransformLock. Takes every CRS for a Proj4Crs.
//
// Thread-safe. No state.
class Proj4Transformer : public CoordTransformer {
public:
    void transformCoordinates(AbstractCrs const* source, AbstractCrs const* target, double& x, double& y,
                              double* z) const override;
};

// The one of the process, made at load and never destroyed; null if memory ran out then.
extern Proj4Transformer* theProj4Transformer;

}  // namespace CoordinateTransformation
