#pragma once

#include <cstddef>
#include <memory>

#include "CoordinateTransformation/AbstractCrs.h"

namespace CoordinateTransformation {

// What the arithmetic around a transformation asks of a CRS, as it was when this was made.
class CrsSide {
public:
    explicit CrsSide(const AbstractCrs& crs)
        : primaryScaleFactor(crs.getPrimaryScaleFactor()),
          compoundScaleFactor(crs.getCompoundScaleFactor()),
          eastNorth(crs.isAxisOrderEastNorthOrLonLat()),
          geographic(crs.isGeographic()) {}

    double getPrimaryScaleFactor() const { return primaryScaleFactor; }
    double getCompoundScaleFactor() const { return compoundScaleFactor; }
    bool isAxisOrderEastNorthOrLonLat() const { return eastNorth; }
    bool isGeographic() const { return geographic; }

private:
    double primaryScaleFactor;
    double compoundScaleFactor;
    bool eastNorth;
    bool geographic;
};

// Arrays of PointTransformer::transform.
struct Points {
    std::size_t count;
    double* x;
    double* y;
    double* z;
    std::ptrdiff_t stride;
    bool* failed;
};

// Moves points of one CRS to another. Made for one pair, and needs neither CRS afterwards.
//
// Not thread-safe.
class PointMover {
public:
    // `degreeOfTarget` is what a degree is in coordinates of the target, if that is geographic.
    PointMover(const CrsSide& from, const CrsSide& to, double degreeOfTarget);
    PointMover(const PointMover&) = delete;
    PointMover& operator=(const PointMover&) = delete;
    virtual ~PointMover();

    // Makes anew what a parent process has made. TransExecException if PROJ cannot make it again.
    virtual void renewAfterFork() {}
    // How many points fail; they become NaN.
    virtual std::size_t transform(const Points& points) = 0;
    // One point from target to source; false if it cannot be moved.
    virtual bool moveBack(double& x, double& y) = 0;

    const CrsSide source;
    const CrsSide target;
    // What a degree is in coordinates of a geographic CRS. The scale factors work differently on the two sides.
    const double sourceDegree;
    const double targetDegree;
};

// Of CRS of the same code.
std::unique_ptr<PointMover> makeCompatibleMover(const AbstractCrs& source, const AbstractCrs& target);
// With an operation out of the pool. Both CRS are Proj4Crs. TransExecException if PROJ cannot make the operation.
std::unique_ptr<PointMover> makePooledMover(const AbstractCrs& source, const AbstractCrs& target);
// Point by point through `transformTo` of copies.
std::unique_ptr<PointMover> makeHostMover(const AbstractCrs& source, const AbstractCrs& target);

}  // namespace CoordinateTransformation
