#pragma once

#include <cstddef>
#include <memory>

#include "CoordinateTransformation/AbstractCrs.h"

namespace CoordinateTransformation {

// The properties of a CRS that the arithmetic around a transformation needs, recorded when this was made.
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

// The arrays of PointTransformer::transform.
struct Points {
    std::size_t count;
    double* x;
    double* y;
    double* z;
    std::ptrdiff_t stride;
    bool* failed;
};

// Moves points from one CRS to another. Made for one pair; needs neither CRS afterwards.
//
// Not thread-safe.
class PointMover {
public:
    // `degreeOfTarget` is the length of a degree in coordinates of a geographic target.
    PointMover(const CrsSide& from, const CrsSide& to, double degreeOfTarget);
    PointMover(const PointMover&) = delete;
    PointMover& operator=(const PointMover&) = delete;
    virtual ~PointMover();

    // Remakes in the child of a fork the parts that the parent made. Throws TransExecException if PROJ cannot make them
    // again.
    virtual void renewAfterFork() {}
    // Moves the points and returns the number of points that failed; those become NaN.
    virtual std::size_t transform(const Points& points) = 0;
    // Moves one point from target to source. Returns false if it cannot be moved.
    virtual bool moveBack(double& x, double& y) = 0;

    const CrsSide source;
    const CrsSide target;
    // The length of a degree in coordinates of a geographic CRS. The scale factors work differently on the two sides.
    const double sourceDegree;
    const double targetDegree;
};

// Moves points between CRS of the same code.
std::unique_ptr<PointMover> makeCompatibleMover(const AbstractCrs& source, const AbstractCrs& target);
// Moves points with an operation from the pool. Both CRS are Proj4Crs. Throws TransExecException if PROJ cannot make
// the operation.
std::unique_ptr<PointMover> makePooledMover(const AbstractCrs& source, const AbstractCrs& target);
// Moves each point through `transformTo` of copies of the CRS.
std::unique_ptr<PointMover> makeHostMover(const AbstractCrs& source, const AbstractCrs& target);

}  // namespace CoordinateTransformation
