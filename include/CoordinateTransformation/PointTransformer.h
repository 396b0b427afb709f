#pragma once

#include <cstddef>
#include <memory>

#include "CoordinateTransformation/Export.h"

namespace CoordinateTransformation {

class AbstractCrs;
class PointMover;

/// A box in the axis order of its CRS: x is the first axis, y the second.
struct Bounds {
    /// Least coordinate of the first axis.
    double minX;
    /// Least coordinate of the second axis.
    double minY;
    /// Greatest coordinate of the first axis.
    double maxX;
    /// Greatest coordinate of the second axis.
    double maxY;
};

/// Moves many points, or boxes, from one CRS into another. Takes axis orders, scale factors and codes of both as they
/// are when it is made, and needs neither afterwards.
///
/// Threads: one at a time for each object. Objects do not wait for each other, nor for `AbstractCrs::transformTo`,
/// while points are transformed. A process may fork at any time: in the child an object goes on with the first call.
///
/// Owns what it works with; can be moved, and is only assigned to or destroyed afterwards. Making one for a pair of CRS
/// that is in use is cheap enough for every request.
///
/// If a CRS has a creator or transformer of the host's own, each point goes through the `transformTo` of a copy of it,
/// and creator and transformer are needed as long as that.
class COORDTRANS_EXPORT PointTransformer {
public:
    /// TransExecException with PROJ's text when PROJ cannot make the operation for points without heights. If it cannot
    /// make that for heights alone, for want of a geoid grid, only points with heights fail. While the process ends,
    /// PROJ makes nothing more: only operations that are there and not in use serve.
    PointTransformer(const AbstractCrs& source, const AbstractCrs& target);
    /// Takes over what `other` works with.
    PointTransformer(PointTransformer&& other) noexcept;
    /// The same; what this one had goes back for others to use.
    PointTransformer& operator=(PointTransformer&& other) noexcept;
    PointTransformer(const PointTransformer&) = delete;
    PointTransformer& operator=(const PointTransformer&) = delete;
    ~PointTransformer();

    /// Transforms `count` points in place and returns the number of those that failed. Units and axis order are those
    /// of `AbstractCrs::transformTo`, and so is each result, to the bit. A point that fails becomes NaN in all its
    /// ordinates and touches no other.
    ///
    /// TransExecException in the child of a fork if PROJ cannot make the operation again.
    ///
    /// \param count how many points.
    /// \param x of the first point, its first axis.
    /// \param y of the first point, its second axis.
    /// \param z null for two-dimensional points.
    /// \param stride from one point to the next, in doubles: 3 where x, y and z of a point stand together.
    /// \param failed for each point whether it failed, or null.
    std::size_t transform(std::size_t count, double* x, double* y, double* z = nullptr, std::ptrdiff_t stride = 1,
                          bool* failed = nullptr);

    /// The box around `bounds` in the target: that of its corners, of `pointsPerEdge` further points on each edge and,
    /// in a geographic target, of a pole inside. If only a part can be transformed, it is the box of that part.
    ///
    /// A geographic box that crosses the antimeridian has its least longitude greater than its greatest, in `bounds`
    /// and in the result. With a pole inside, longitudes are those from -180 to 180. A box may be a line or a point.
    ///
    /// BBoxOutOfBounds naming the box if none of its points can be transformed, if it is not finite, or if a minimum is
    /// greater than its maximum on an axis other than longitude.
    ///
    /// \param bounds in the axis order of the source.
    /// \param pointsPerEdge at most 10,000 are used, and at least 2 for a geographic target.
    Bounds transformBounds(const Bounds& bounds, unsigned int pointsPerEdge = 21);

private:
    std::unique_ptr<PointMover> mover;
};

}  // namespace CoordinateTransformation
