#pragma once

#include "CoordinateTransformation/Export.h"

namespace CoordinateTransformation {

class AbstractCrs;

/// Transforms points from one CRS into another. Decides whether PROJ is needed at all: between CRS of the same code
/// coordinates are only exchanged and rescaled. Converts coordinates to the form that PROJ takes, and results to the
/// form of the target.
///
/// Threads: any thread may call it. Has no state; a copy copies nothing.
class COORDTRANS_EXPORT CoordTransformer {
public:
    virtual ~CoordTransformer();

    /// Transforms one point in place. `x` and `y` are in the order of each CRS's axis flag, in degrees for a geographic
    /// CRS; `z` is null for a two-dimensional point. Throws TransExecException with PROJ's text when the point cannot
    /// be transformed; the variables then hold intermediate values.
    ///
    /// Between CRS of the same code (4326 and 4979 count as one) `x` and `y` are multiplied by the quotient of the
    /// primary scale factors, target over source, and `z` by that of the compound factors. Otherwise `x` and `y` are
    /// divided by the source's primary factor before the transformation and by the target's after it, and `z` is
    /// multiplied by the source's compound factor before and by the target's after it. REQUIRES: `source` and `target`
    /// are not null.
    void transformTo(const AbstractCrs* source, const AbstractCrs* target, double& x, double& y, double* z) const;

    /// Transforms scaled coordinates in the order of the axis flags, angles in radians. Throws Misconfigured for a null
    /// source or target and TransExecException for a point that cannot be transformed.
    virtual void transformCoordinates(const AbstractCrs* source, const AbstractCrs* target, double& x, double& y,
                                      double* z) const = 0;

private:
    COORDTRANS_INTERNAL bool prepare(const AbstractCrs* source, const AbstractCrs* target, double& x, double& y,
                                     double* z) const;
    COORDTRANS_INTERNAL void followUp(const AbstractCrs* source, const AbstractCrs* target, double& x, double& y,
                                      double* z) const;
};

}  // namespace CoordinateTransformation
