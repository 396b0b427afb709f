#include "CoordinateTransformation/PointTransformer.h"

#include <typeinfo>
#include <utility>

#include "CoordinateTransformation/Proj4Crs.h"
#include "platform/ErrnoGuard.h"
#include "proj/BoundsAround.h"
#include "proj/PointMover.h"
#include "proj/Proj4Transformer.h"

namespace CoordinateTransformation {
namespace {

// A class derived from Proj4Crs may override its operations.
bool isOfTheLibrary(const AbstractCrs& crs, const CoordTransformer& transformer) {
    return typeid(crs) == typeid(Proj4Crs) && &transformer == getProj4Transformer();
}

}  // namespace

PointTransformer::PointTransformer(const AbstractCrs& source, const AbstractCrs& target) {
    const ErrnoGuard errnoGuard;
    if (!isOfTheLibrary(source, source.transformer) || !isOfTheLibrary(target, target.transformer))
        mover = makeHostMover(source, target);
    else if (source.isCodeCompatible(&target))
        mover = makeCompatibleMover(source, target);
    else
        mover = makePooledMover(source, target);
}

PointTransformer::PointTransformer(PointTransformer&& other) noexcept = default;

PointTransformer& PointTransformer::operator=(PointTransformer&& other) noexcept {
    const ErrnoGuard errnoGuard;
    mover = std::move(other.mover);
    return *this;
}

PointTransformer::~PointTransformer() {
    const ErrnoGuard errnoGuard;
    mover.reset();
}

std::size_t PointTransformer::transform(std::size_t count, double* x, double* y, double* z, std::ptrdiff_t stride,
                                        bool* failed) {
    const ErrnoGuard errnoGuard;
    mover->renewAfterFork();
    return mover->transform({count, x, y, z, stride, failed});
}

Bounds PointTransformer::transformBounds(const Bounds& bounds, unsigned int pointsPerEdge) {
    const ErrnoGuard errnoGuard;
    mover->renewAfterFork();
    return boundsAround(bounds, pointsPerEdge, *mover);
}

}  // namespace CoordinateTransformation
