#include "CoordinateTransformation/CoordTransformer.h"

#include "CoordinateTransformation/AbstractCrs.h"
#include "CoordinateTransformation/BBoxType.h"
#include "crs/PointArithmetic.h"

namespace CoordinateTransformation {

BBoxType::~BBoxType() = default;

CoordTransformer::~CoordTransformer() = default;

void CoordTransformer::transformTo(const AbstractCrs* source, const AbstractCrs* target, double& x, double& y,
                                   double* z) const {
    if (!prepare(source, target, x, y, z)) return;
    transformCoordinates(source, target, x, y, z);
    followUp(source, target, x, y, z);
}

bool CoordTransformer::prepare(const AbstractCrs* source, const AbstractCrs* target, double& x, double& y,
                               double* z) const {
    if (source->isCodeCompatible(target)) {
        moveBetweenCompatible(*source, *target, x, y, z);
        return false;
    }
    bringIntoProjForm(*source, x, y, z);
    return true;
}

void CoordTransformer::followUp(const AbstractCrs* /*source*/, const AbstractCrs* target, double& x, double& y,
                                double* z) const {
    bringOutOfProjForm(*target, x, y, z);
}

}  // namespace CoordinateTransformation
