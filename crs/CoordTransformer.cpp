#include "CoordinateTransformation/CoordTransformer.h"

#include <utility>

#include "CoordinateTransformation/AbstractCrs.h"
#include "CoordinateTransformation/BBoxType.h"

namespace CoordinateTransformation {
namespace {

constexpr double RADIANS_PER_DEGREE = 0.017453292519943295;
constexpr double DEGREES_PER_RADIAN = 57.29577951308232;

// Nearly every CRS has the factor 1, by which a division is exact and can be spared.
void divide(double& x, double& y, double factor) {
    if (factor == 1.0) return;
    x /= factor;
    y /= factor;
}

void multiply(double& x, double& y, double factor) {
    x *= factor;
    y *= factor;
}

}  // namespace

BBoxType::~BBoxType() = default;

CoordTransformer::~CoordTransformer() = default;

void CoordTransformer::transformTo(const AbstractCrs* source, const AbstractCrs* target, double& x, double& y,
                                   double* z) const {
    if (!prepare(source, target, x, y, z)) return;
    transformCoordinates(source, target, x, y, z);
    followUp(source, target, x, y, z);
}

// Intended: the scale factors work differently on the two paths, and in prepare and followUp.
bool CoordTransformer::prepare(const AbstractCrs* source, const AbstractCrs* target, double& x, double& y,
                               double* z) const {
    if (source->isCodeCompatible(target)) {
        if (source->isAxisOrderEastNorthOrLonLat() != target->isAxisOrderEastNorthOrLonLat()) std::swap(x, y);
        multiply(x, y, target->getPrimaryScaleFactor() / source->getPrimaryScaleFactor());
        if (z != nullptr) *z *= target->getCompoundScaleFactor() / source->getCompoundScaleFactor();
        return false;
    }
    divide(x, y, source->getPrimaryScaleFactor());
    if (z != nullptr) *z *= source->getCompoundScaleFactor();
    if (source->isGeographic()) multiply(x, y, RADIANS_PER_DEGREE);
    return true;
}

void CoordTransformer::followUp(const AbstractCrs* /*source*/, const AbstractCrs* target, double& x, double& y,
                                double* z) const {
    divide(x, y, target->getPrimaryScaleFactor());
    if (z != nullptr) *z *= target->getCompoundScaleFactor();
    if (target->isGeographic()) multiply(x, y, DEGREES_PER_RADIAN);
}

}  // namespace CoordinateTransformation
