#pragma once

#include <cstddef>
#include <memory>

#include "CoordinateTransformation/Export.h"

namespace CoordinateTransformation {

class AbstractCrs;
class PointMover;

/// A box in the axis order of its CRS: x is the first axis, y the second.
struct Bounds {
    /// The least coordinate of the first axis.
    double minX;
    /// The least coordinate of the second axis.
    double minY;
    /// The greatest coordinate of the first axis.
    double maxX;
    /// The greatest coordinate of the second axis.
    double maxY;
};

/// Transforms many points, or boxes, from one CRS into another. Uses axis orders, scale factors and codes of both CRS
/// as they are when it is made, and needs neither CRS afterwards.
///
/// Threads: one at a time for each object. While points are transformed, an object waits neither for other objects nor
/// for `AbstractCrs::transformTo`. A process may fork at any time; in the child an object continues with its next call.
///
/// Owns its operation. It can be moved from; then it can only be assigned to or destroyed. Making one for a pair of CRS
/// in use is cheap enough for every request.
///
/// If a CRS has a creator or transformer of the host's own, each point goes through the `transformTo` of a copy of that
/// CRS, and its creator and transformer must outlive this object.
class COORDTRANS_EXPORT PointTransformer {
public:
    /// Throws TransExecException with PROJ's text when PROJ cannot make the operation for points without heights. If
    /// PROJ can make that one but, for want of a geoid grid, not the one for heights, only points with heights fail.
    /// While the process ends, PROJ makes no new operations; only idle ones serve.
    PointTransformer(const AbstractCrs& source, const AbstractCrs& target);
    /// Takes the operation of `other`.
    PointTransformer(PointTransformer&& other) noexcept;
    /// Takes the operation of `other` and returns its own to the pool.
    PointTransformer& operator=(PointTransformer&& other) noexcept;
    PointTransformer(const PointTransformer&) = delete;
    PointTransformer& operator=(const PointTransformer&) = delete;
    ~PointTransformer();

    /// Transforms `count` points in place and returns the number of points that failed. Units and axis order are those
    /// of `AbstractCrs::transformTo`, and each result is the same, to the bit. All ordinates of a point that fails
    /// become NaN; other points are not affected.
    ///
    /// Throws TransExecException in the child of a fork if PROJ cannot make the operation again.
    ///
    /// \param count the number of points.
    /// \param x the first axis of the first point.
    /// \param y the second axis of the first point.
    /// \param z the height of the first point, or null for two-dimensional points.
    /// \param stride the distance from one point to the next, in doubles: 3 where x, y and z of a point are adjacent.
    /// \param failed receives, for each point, whether it failed; may be null.
    std::size_t transform(std::size_t count, double* x, double* y, double* z = nullptr, std::ptrdiff_t stride = 1,
                          bool* failed = nullptr);

    /// Returns the box around `bounds` in the target: the box of its corners, of `pointsPerEdge` further points on each
    /// edge and, in a geographic target, of a pole inside. In a projected target, a box that is wider than 180 degrees
    /// or has points on its edges that cannot be transformed counts with 31 by 31 points inside. If only a part of all
    /// these can be transformed, it is the box of that part.
    ///
    /// In a geographic box across the antimeridian, in `bounds` or in the result, the least longitude is greater than
    /// the greatest. With a pole inside, the result has the longitudes from -180 to 180. A box may be a line or a
    /// point.
    ///
    /// Throws BBoxOutOfBounds, naming the box, if none of its points can be transformed, if it is not finite, or if a
    /// minimum is greater than its maximum on an axis other than longitude.
    ///
    /// \param bounds the box, in the axis order of the source.
    /// \param pointsPerEdge at most 10,000 are used, and at least 2 for a geographic target.
    Bounds transformBounds(const Bounds& bounds, unsigned int pointsPerEdge = 21);

private:
    std::unique_ptr<PointMover> mover;
};

}  // namespace CoordinateTransformation
