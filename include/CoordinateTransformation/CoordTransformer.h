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
    ///
    /// Between CRS of the same code (4326 and 4979 count as one) `x` and `y` are multiplied by the target's
    /// primary scale factor over the source's, `z` likewise by the compound factors. Otherwise `x` and `y` are
    /// divided by the source's primary factor before and by the target's after the transformation, and `z` is
    /// multiplied by the source's compound factor before and by the target's after it.
    /// REQUIRES: `source` and `target` are not null.
    void transformTo(const AbstractCrs* source, const AbstractCrs* target, double& x, double& y, double* z) const;

    /// The transformation itself: takes angles in radians and scaled coordinates, in the order of the axis
    /// flags. Misconfigured for a null source or target, TransExecException for a point that cannot be
    /// transformed.
    virtual void transformCoordinates(const AbstractCrs* source, const AbstractCrs* target, double& x, double& y,
                                      double* z) const = 0;

private:
    COORDTRANS_INTERNAL bool prepare(const AbstractCrs* source, const AbstractCrs* target, double& x, double& y,
                                     double* z) const;
    COORDTRANS_INTERNAL void followUp(const AbstractCrs* source, const AbstractCrs* target, double& x, double& y,
                                      double* z) const;
};

}  // namespace CoordinateTransformation
