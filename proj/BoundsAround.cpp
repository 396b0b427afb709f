#include "proj/BoundsAround.h"

#include <algorithm>
#include <cmath>

#include "CoordinateTransformation/BBoxOutOfBounds.h"
#include "proj/PointMover.h"
#include "text/NumericText.h"

namespace CoordinateTransformation {
namespace {

[[noreturn]] void refuse(const Bounds& bounds) {
    throw BBoxOutOfBounds("BoundingBox: out of bounds! No point of " + writeDouble(bounds.minX) + ", " +
                          writeDouble(bounds.minY) + ", " + writeDouble(bounds.maxX) + ", " + writeDouble(bounds.maxY) +
                          " can be transformed");
}

// One axis of a box. `fullTurn` is 0 except for longitudes, which may extend across the antimeridian.
struct Side {
    Side(double from, double to, double turn)
        : least(from), greatest(to), fullTurn(turn), extent(to - from >= 0 ? to - from : to - from + turn) {}

    bool isValid() const { return extent >= 0 && std::isfinite(extent); }
    bool holdsInside(double value) const {
        double offset = value - least;
        if (fullTurn > 0) offset -= std::floor(offset / fullTurn) * fullTurn;
        return 0 < offset && offset < extent;
    }

    bool isHalfTurn() const { return fullTurn > 0 && extent >= fullTurn / 2; }

    double least;
    double greatest;
    double fullTurn;
    double extent;
};

struct Box {
    Box(const Bounds& bounds, const PointMover& mover)
        : x(bounds.minX, bounds.maxX, turnOf(mover, true)), y(bounds.minY, bounds.maxY, turnOf(mover, false)) {}

    static double turnOf(const PointMover& mover, bool eastNorth) {
        const bool isLongitude =
            mover.source.isGeographic() && mover.source.isAxisOrderEastNorthOrLonLat() == eastNorth;
        return isLongitude ? 360 * mover.sourceDegree : 0;
    }
    bool holdsInside(double px, double py) const { return x.holdsInside(px) && y.holdsInside(py); }
    bool isHalfAround() const { return x.isHalfTurn() || y.isHalfTurn(); }

    Side x;
    Side y;
};

// Walks around the box in a ring, or over a grid inside, and calls `take` with the target coordinates of each point
// that can be transformed.
template <typename Take>
class Walk {
public:
    Walk(const Box& around, unsigned int pointsPerSide, PointMover& pointMover, Take taker)
        : box(around), points(pointsPerSide), mover(pointMover), take(taker) {}

    // Each side begins exactly at the corner of the box.
    void goAround() {
        const double stepX = box.x.extent / points;
        const double stepY = box.y.extent / points;
        goAlong(box.x.least, box.y.greatest, 0, -stepY);
        goAlong(box.x.least, box.y.least, stepX, 0);
        goAlong(box.x.greatest, box.y.least, 0, stepY);
        goAlong(box.x.greatest, box.y.greatest, -stepX, 0);
    }

    void goInside(unsigned int rows) {
        const double stepX = box.x.extent / (rows + 1);
        const double stepY = box.y.extent / (rows + 1);
        for (unsigned int row = 1; row <= rows; ++row)
            for (unsigned int column = 1; column <= rows; ++column)
                visit(box.x.least + column * stepX, box.y.least + row * stepY);
    }

    bool hasFailed() const { return failed; }

private:
    void goAlong(double x, double y, double stepX, double stepY) {
        for (unsigned int i = 0; i < points; ++i) visit(x + i * stepX, y + i * stepY);
    }

    void visit(double x, double y) {
        if (mover.transform({1, &x, &y, nullptr, 1, nullptr}) == 0 && std::isfinite(x) && std::isfinite(y))
            take(x, y);
        else
            failed = true;
    }

    const Box& box;
    const unsigned int points;
    PointMover& mover;
    Take take;
    bool failed = false;
};

constexpr unsigned int MOST_POINTS_PER_EDGE = 10000;
constexpr unsigned int FEWEST_POINTS_AROUND_THE_EARTH = 2;

constexpr unsigned int ROWS_INSIDE = 31;

template <typename Take>
Walk<Take> goAround(const Box& box, unsigned int pointsPerEdge, PointMover& mover, Take take) {
    const unsigned int fewest = mover.target.isGeographic() ? FEWEST_POINTS_AROUND_THE_EARTH : 0;
    // A corner belongs to the side that begins there.
    const unsigned int points = std::clamp(pointsPerEdge, fewest, MOST_POINTS_PER_EDGE) + 1;
    Walk<Take> walk(box, points, mover, take);
    walk.goAround();
    return walk;
}

// The image of the edges encloses that of the box only if the projection maps the box continuously to the plane, which
// it does not for a box around half the earth or beyond its limits.
Bounds plainBounds(const Bounds& bounds, const Box& box, unsigned int pointsPerEdge, PointMover& mover) {
    Range x;
    Range y;
    auto walk = goAround(box, pointsPerEdge, mover, [&x, &y](double px, double py) {
        x.add(px);
        y.add(py);
    });
    if (walk.hasFailed() || box.isHalfAround()) walk.goInside(ROWS_INSIDE);
    if (x.isEmpty()) refuse(bounds);
    return {x.least, y.least, x.greatest, y.greatest};
}

bool holdsPole(const Box& box, double latitude, PointMover& mover) {
    const bool eastNorth = mover.target.isAxisOrderEastNorthOrLonLat();
    double x = eastNorth ? 0 : latitude;
    double y = eastNorth ? latitude : 0;
    return mover.moveBack(x, y) && box.holdsInside(x, y);
}

void addPoles(const Box& box, PointMover& mover, Range& longitudes, Range& latitudes) {
    for (const double latitude : {90 * mover.targetDegree, -90 * mover.targetDegree}) {
        if (!holdsPole(box, latitude, mover)) continue;
        latitudes.add(latitude);
        longitudes = {-180 * mover.targetDegree, 180 * mover.targetDegree};
    }
}

Bounds geographicBounds(const Bounds& bounds, const Box& box, unsigned int pointsPerEdge, PointMover& mover) {
    const bool eastNorth = mover.target.isAxisOrderEastNorthOrLonLat();
    LongitudesAround around(mover.targetDegree);
    Range latitudes;
    goAround(box, pointsPerEdge, mover, [&around, &latitudes, eastNorth](double x, double y) {
        around.add(eastNorth ? x : y);
        latitudes.add(eastNorth ? y : x);
    });
    if (latitudes.isEmpty()) refuse(bounds);
    Range longitudes = around.close();
    addPoles(box, mover, longitudes, latitudes);
    if (eastNorth) return {longitudes.least, latitudes.least, longitudes.greatest, latitudes.greatest};
    return {latitudes.least, longitudes.least, latitudes.greatest, longitudes.greatest};
}

}  // namespace

LongitudesAround::LongitudesAround(double degree)
    : halfTurn(180 * degree), fullTurn(360 * degree), leap(200 * degree) {}

void LongitudesAround::add(double longitude) {
    if (unrolled.isEmpty())
        first = longitude;
    else
        countTurns(longitude - last);
    last = longitude;
    if (longitude + turns < unrolled.least) western = longitude;
    if (longitude + turns > unrolled.greatest) eastern = longitude;
    unrolled.add(longitude + turns);
}

Range LongitudesAround::close() {
    if (unrolled.isEmpty()) return unrolled;
    countTurns(first - last);
    const bool goesAllAround = turns != 0 || unrolled.greatest - unrolled.least >= fullTurn;
    return goesAllAround ? Range{-halfTurn, halfTurn} : Range{western, eastern};
}

void LongitudesAround::countTurns(double step) {
    if (step > leap) turns -= fullTurn;
    if (step < -leap) turns += fullTurn;
}

Bounds boundsAround(const Bounds& bounds, unsigned int pointsPerEdge, PointMover& mover) {
    const Box box(bounds, mover);
    if (!box.x.isValid() || !box.y.isValid()) refuse(bounds);
    return mover.target.isGeographic() ? geographicBounds(bounds, box, pointsPerEdge, mover)
                                       : plainBounds(bounds, box, pointsPerEdge, mover);
}

}  // namespace CoordinateTransformation
