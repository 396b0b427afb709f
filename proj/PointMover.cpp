#include "proj/PointMover.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <new>
#include <utility>

#include "CoordinateTransformation/Proj4Crs.h"
#include "CoordinateTransformation/TransExecException.h"
#include "crs/PointArithmetic.h"
#include "proj/classic/OperationPool.h"

namespace CoordinateTransformation {

PointMover::PointMover(const CrsSide& from, const CrsSide& to, double degreeOfTarget)
    : source(from),
      target(to),
      sourceDegree(std::abs(from.getPrimaryScaleFactor())),
      targetDegree(std::abs(degreeOfTarget)) {}

PointMover::~PointMover() = default;

namespace {

constexpr double NOT_A_NUMBER = std::numeric_limits<double>::quiet_NaN();

// `move` receives x, y, and z or null, and returns false if it cannot move the point.
template <typename Move>
std::size_t moveAll(const Points& points, Move move) {
    std::size_t failures = 0;
    std::ptrdiff_t at = 0;
    for (std::size_t i = 0; i < points.count; ++i, at += points.stride) {
        double x = points.x[at];
        double y = points.y[at];
        double z = points.z == nullptr ? 0.0 : points.z[at];
        const bool moved = move(x, y, points.z == nullptr ? nullptr : &z);
        points.x[at] = moved ? x : NOT_A_NUMBER;
        points.y[at] = moved ? y : NOT_A_NUMBER;
        if (points.z != nullptr) points.z[at] = moved ? z : NOT_A_NUMBER;
        if (points.failed != nullptr) points.failed[i] = !moved;
        failures += moved ? 0 : 1;
    }
    return failures;
}

// The length of a degree after bringOutOfProjForm.
double degreeOutOfProj(const CrsSide& target) { return 1 / target.getPrimaryScaleFactor(); }

class CompatibleMover : public PointMover {
public:
    CompatibleMover(const CrsSide& from, const CrsSide& to) : PointMover(from, to, to.getPrimaryScaleFactor()) {}

    std::size_t transform(const Points& points) override {
        // Local copies stay in registers.
        return moveAll(points, [from = source, to = target](double& x, double& y, double* z) {
            moveBetweenCompatible(from, to, x, y, z);
            return true;
        });
    }

    bool moveBack(double& x, double& y) override {
        moveBetweenCompatible(target, source, x, y, nullptr);
        return true;
    }
};

using ClassicProj::Position;

// Consecutive points in PROJ's form, easting first. PROJ receives some dozens at a time, because it would wait for
// values written immediately before.
struct Chunk {
    static constexpr std::size_t SIZE = 64;

    std::size_t first = 0;
    std::size_t size = 0;
    // Whether the points have heights: all or none of them do.
    bool haveHeights = false;
    Position points[SIZE];
};

struct EastNorth {
    EastNorth(const Points& points, const CrsSide& crs)
        : east(crs.isAxisOrderEastNorthOrLonLat() ? points.x : points.y),
          north(crs.isAxisOrderEastNorthOrLonLat() ? points.y : points.x) {}

    double* east;
    double* north;
};

class PooledMover : public PointMover {
public:
    PooledMover(const AbstractCrs& from, const AbstractCrs& to)
        : PointMover(CrsSide(from), CrsSide(to), degreeOutOfProj(CrsSide(to))),
          lease(definitionOf(from), definitionOf(to)) {
        requireOperation();
    }

    void renewAfterFork() override {
        if (lease.isUsable()) return;
        lease.renew();
        requireOperation();
    }

    std::size_t transform(const Points& points) override {
        std::size_t failures = 0;
        Chunk chunk;
        for (; chunk.first < points.count; chunk.first += chunk.size) {
            take(points, chunk);
            if (chunk.haveHeights)
                lease.move(chunk.points, chunk.size);
            else
                lease.moveFlat(chunk.points, chunk.size);
            failures += put(chunk, points);
        }
        return failures;
    }

    bool moveBack(double& x, double& y) override {
        undoBringOutOfProjForm(target, x, y);
        if (!target.isAxisOrderEastNorthOrLonLat()) std::swap(x, y);
        Position point{x, y, 0, ClassicProj::NO_TIME};
        lease.moveBack(point);
        x = point.x;
        y = point.y;
        if (!source.isAxisOrderEastNorthOrLonLat()) std::swap(x, y);
        undoBringIntoProjForm(source, x, y);
        return point.isFinite();
    }

private:
    static ClassicProj::projPJ definitionOf(const AbstractCrs& crs) {
        return static_cast<ClassicProj::projPJ>(static_cast<const Proj4Crs&>(crs).getProjDef());
    }

    void requireOperation() const {
        if (lease.makeError() != 0) throw TransExecException(ClassicProj::pj_strerrno(lease.makeError()));
    }

    // A height that is NaN counts as no height.
    void take(const Points& points, Chunk& chunk) const {
        // A local copy stays in registers.
        const CrsSide from = source;
        const EastNorth in(points, from);
        const std::size_t most = std::min(points.count - chunk.first, Chunk::SIZE);
        std::ptrdiff_t at = static_cast<std::ptrdiff_t>(chunk.first) * points.stride;
        for (chunk.size = 0; chunk.size < most; ++chunk.size, at += points.stride) {
            double east = in.east[at];
            double north = in.north[at];
            double z = points.z == nullptr ? NOT_A_NUMBER : points.z[at];
            bringIntoProjForm(from, east, north, &z);
            const bool hasHeight = !std::isnan(z);
            if (chunk.size == 0) chunk.haveHeights = hasHeight;
            if (hasHeight != chunk.haveHeights) return;
            chunk.points[chunk.size] = {east, north, hasHeight ? z : 0.0, ClassicProj::NO_TIME};
        }
    }

    std::size_t put(const Chunk& chunk, const Points& points) const {
        const CrsSide to = target;
        const EastNorth out(points, to);
        std::size_t failures = 0;
        std::ptrdiff_t at = static_cast<std::ptrdiff_t>(chunk.first) * points.stride;
        for (std::size_t i = 0; i < chunk.size; ++i, at += points.stride) {
            Position point = chunk.points[i];
            const bool failed = !point.isFinite();
            if (failed) point = {NOT_A_NUMBER, NOT_A_NUMBER, NOT_A_NUMBER, 0};
            bringOutOfProjForm(to, point.x, point.y, &point.z);
            out.east[at] = point.x;
            out.north[at] = point.y;
            if (points.z != nullptr) points.z[at] = chunk.haveHeights || failed ? point.z : NOT_A_NUMBER;
            if (points.failed != nullptr) points.failed[chunk.first + i] = failed;
            failures += failed ? 1 : 0;
        }
        return failures;
    }

    ClassicProj::OperationLease lease;
};

class HostMover : public PointMover {
public:
    HostMover(const AbstractCrs& from, const AbstractCrs& to, bool areCompatible)
        : PointMover(CrsSide(from), CrsSide(to),
                     areCompatible ? to.getPrimaryScaleFactor() : degreeOutOfProj(CrsSide(to))),
          compatible(areCompatible),
          sourceCopy(from.copy()),
          targetCopy(to.copy()) {}

    std::size_t transform(const Points& points) override {
        return moveAll(points,
                       [this](double& x, double& y, double* z) { return move(*sourceCopy, *targetCopy, x, y, z); });
    }

    // The way back must multiply by the scale factors, but `transformTo` divides by them. Multiplying by their squares
    // corrects that.
    bool moveBack(double& x, double& y) override {
        const double back = compatible ? 1 : target.getPrimaryScaleFactor() * target.getPrimaryScaleFactor();
        const double forth = compatible ? 1 : source.getPrimaryScaleFactor() * source.getPrimaryScaleFactor();
        multiply(x, y, back);
        const bool moved = move(*targetCopy, *sourceCopy, x, y, nullptr);
        multiply(x, y, forth);
        return moved;
    }

private:
    // A point fails for any exception of the host but std::bad_alloc.
    static bool move(const AbstractCrs& from, const AbstractCrs& to, double& x, double& y, double* z) {
        try {
            if (z == nullptr)
                from.transformTo(&to, x, y);
            else
                from.transformTo(&to, x, y, *z);
            return true;
        } catch (const std::bad_alloc&) {
            throw;
        } catch (...) {
            return false;
        }
    }

    const bool compatible;
    const std::unique_ptr<const AbstractCrs> sourceCopy;
    const std::unique_ptr<const AbstractCrs> targetCopy;
};

}  // namespace

std::unique_ptr<PointMover> makeCompatibleMover(const AbstractCrs& source, const AbstractCrs& target) {
    return std::make_unique<CompatibleMover>(CrsSide(source), CrsSide(target));
}

std::unique_ptr<PointMover> makePooledMover(const AbstractCrs& source, const AbstractCrs& target) {
    return std::make_unique<PooledMover>(source, target);
}

std::unique_ptr<PointMover> makeHostMover(const AbstractCrs& source, const AbstractCrs& target) {
    return std::make_unique<HostMover>(source, target, source.isCodeCompatible(&target));
}

}  // namespace CoordinateTransformation
