#pragma once

#include "CoordinateTransformation/Export.h"

namespace CoordinateTransformation {

class AbstractCrs;

/// Moves points from one CRS into another. Decides whether a projection library is needed at all (CRS of the
/// same code only exchange axes and rescale), brings coordinates into its form and the result into the
/// target's.
///
/// Threads: safe to call from any thread. No state; a copy copies nothing.
class COORDTRANS_EXPORT CoordTransformer {
public:
    virtual ~CoordTransformer();

    /// Transforms one point in place. `x` and `y` are in the order of each CRS's axis flag, in degrees for a
    /// geographic CRS; `z` is null for a two-dimensional point. TransExecException with PROJ's text when the
    /// point cannot be transformed; the variables then hold intermediate values.
    /// REQUIRES: `source` and `target` are not null.
    void transformTo(AbstractCrs const* source, AbstractCrs const* target, double& x, double& y, double* z) const;

    /// The transformation itself: takes angles in radians and scaled coordinates, in the order of the axis
    /// flags. Misconfigured for a null source or target.
    virtual void transformCoordinates(AbstractCrs const* source, AbstractCrs const* target, double& x, double& y,
                                      double* z) const = 0;

private:
    bool prepare(AbstractCrs const* source, AbstractCrs const* target, double& x, double& y, double* z) const;
    void followUp(AbstractCrs const* source, AbstractCrs const* target, double& x, double& y, double* z) const;
};

}  // namespace CoordinateTransformation
