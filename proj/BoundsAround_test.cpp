#include "proj/BoundsAround.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <ostream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "CoordinateTransformation/BBoxOutOfBounds.h"
#include "CoordinateTransformation/PointTransformer.h"
#include "proj/Proj4Transformer.h"
#include "tests/support/Proj4Test.h"
#include "tests/support/ProjBounds.h"

namespace CoordinateTransformation {
namespace {

constexpr double INFINITE = std::numeric_limits<double>::infinity();
constexpr double NOT_A_NUMBER = std::numeric_limits<double>::quiet_NaN();

std::string textOf(const Bounds& box) {
    std::ostringstream text;
    text << box.minX << ", " << box.minY << ", " << box.maxX << ", " << box.maxY;
    return text.str();
}

// The tolerance is relative to the greater extent.
void expectNear(const Bounds& box, const Bounds& expected, double tolerance) {
    const double size = std::max({std::abs(expected.maxX - expected.minX), std::abs(expected.maxY - expected.minY),
                                  std::abs(expected.maxX) * 1e-6});
    EXPECT_NEAR(box.minX, expected.minX, tolerance * size);
    EXPECT_NEAR(box.minY, expected.minY, tolerance * size);
    EXPECT_NEAR(box.maxX, expected.maxX, tolerance * size);
    EXPECT_NEAR(box.maxY, expected.maxY, tolerance * size);
}

struct Projection {
    unsigned int code;
    const char* text;
    // In degrees.
    double longitude;
    double latitude;
};

void PrintTo(const Projection& projection, std::ostream* stream) { *stream << projection.code; }

const Projection PROJECTIONS[] = {
    {25832, "+proj=utm +zone=32 +datum=WGS84 +units=m", 9, 50},
    {32601, "+proj=utm +zone=1 +datum=WGS84 +units=m", -177, 10},
    {3857, "+proj=merc +a=6378137 +b=6378137 +units=m +nadgrids=@null", 20, 10},
    {3035, "+proj=laea +lat_0=52 +lon_0=10 +x_0=4321000 +y_0=3210000 +datum=WGS84 +units=m", 12, 51},
    {3413, "+proj=stere +lat_0=90 +lat_ts=70 +lon_0=-45 +datum=WGS84 +units=m", -45, 75},
    {3031, "+proj=stere +lat_0=-90 +lat_ts=-71 +datum=WGS84 +units=m", 30, -75},
    {2154, "+proj=lcc +lat_0=46.5 +lon_0=3 +lat_1=49 +lat_2=44 +x_0=700000 +y_0=6600000 +datum=WGS84 +units=m", 3, 46},
    {3832, "+proj=merc +lon_0=150 +datum=WGS84 +units=m", 170, -10},
    {6933, "+proj=cea +lat_ts=30 +datum=WGS84 +units=m", -60, 20},
    {9001, "+proj=tmerc +lon_0=178 +k=0.9996 +x_0=500000 +datum=WGS84 +units=m", 178, -18},
};

class BoundsAroundTest : public TestSupport::Proj4Test {
protected:
    BoundsAroundTest() {
        std::string epsg =
            "<4326> +proj=longlat +datum=WGS84 +no_defs <>\n"
            "<9003> +proj=longlat +ellps=bessel +towgs84=598.1,73.7,418.2 +no_defs <>\n"
            "<9005> +proj=stere +lat_0=90 +lat_ts=70 +x_0=2000000 +y_0=1000000 +datum=WGS84 +no_defs <>\n";
        for (const Projection& projection : PROJECTIONS)
            epsg += "<" + std::to_string(projection.code) + "> " + projection.text + " <>\n";
        givenEpsg(epsg);
    }

    // Applies scale factors, which multiply coordinates of a source and divide those of a target.
    Bounds scaled(const Bounds& box, unsigned int from, double fromFactor, unsigned int to, double toFactor) const {
        Proj4Crs source = crsInOrder(from, true);
        Proj4Crs target = crsInOrder(to, true);
        source.setPrimaryScaleFactor(fromFactor);
        target.setPrimaryScaleFactor(toFactor);
        return PointTransformer(source, target).transformBounds(box);
    }

    Bounds transform(const Bounds& box, unsigned int from, unsigned int to, unsigned int pointsPerEdge = 21) const {
        return PointTransformer(crsInOrder(from, true), crsInOrder(to, true)).transformBounds(box, pointsPerEdge);
    }
};

class AgreesWithProjTest : public BoundsAroundTest, public testing::WithParamInterface<Projection> {};

class AroundTheEarthTest : public AgreesWithProjTest {};

INSTANTIATE_TEST_SUITE_P(Projections, AroundTheEarthTest, testing::ValuesIn(PROJECTIONS),
                         [](const auto& projection) { return std::to_string(projection.param.code); });

// Requests for everything ask for such boxes. Their edges alone lie far from the area of a conic projection.
TEST_P(AroundTheEarthTest, HoldsTheAreaOfTheProjection) {
    const Projection& projection = GetParam();
    const Bounds area = transform(
        {projection.longitude - 3, projection.latitude - 3, projection.longitude + 3, projection.latitude + 3}, 4326,
        projection.code);
    for (const Bounds& wide : {Bounds{-180, -90, 180, 90}, {-180, -80, 180, 80}, {-179.9, -85, 179.9, 90}}) {
        const Bounds box = transform(wide, 4326, projection.code, 2);
        SCOPED_TRACE(textOf(box));
        EXPECT_LE(box.minX, area.minX);
        EXPECT_LE(box.minY, area.minY);
        EXPECT_GE(box.maxX, area.maxX);
        EXPECT_GE(box.maxY, area.maxY);
    }
}

INSTANTIATE_TEST_SUITE_P(Projections, AgreesWithProjTest, testing::ValuesIn(PROJECTIONS),
                         [](const auto& projection) { return std::to_string(projection.param.code); });

// Boxes of many sizes around a point in the projection's area, in both directions, with few and many points on each
// edge.
TEST_P(AgreesWithProjTest, OnTheSamePoints) {
    const TestSupport::ProjBounds proj(GetParam().text);
    int boxes = 0;
    for (const double width : {0.001, 0.5, 4.0, 11.0})
        for (const double height : {0.001, 0.7, 3.0, 9.0})
            for (const unsigned int points : {2U, 21U}) {
                const Bounds box{GetParam().longitude - width / 2, GetParam().latitude - height / 2,
                                 GetParam().longitude + width / 2, GetParam().latitude + height / 2};
                SCOPED_TRACE(textOf(box) + " " + std::to_string(points));
                const Bounds projected = transform(box, 4326, GetParam().code, points);
                expectNear(projected, proj.project(box, static_cast<int>(points)), 1e-9);
                expectNear(transform(projected, GetParam().code, 4326, points),
                           proj.unproject(projected, static_cast<int>(points)), 1e-9);
                boxes += 2;
            }
    EXPECT_EQ(boxes, 64);
}

TEST_F(BoundsAroundTest, HoldsThePoleInside) {
    const Bounds north = transform({-1e6, -1e6, 1e6, 1e6}, 3413, 4326);
    EXPECT_EQ(north.minX, -180);
    EXPECT_EQ(north.maxX, 180);
    EXPECT_EQ(north.maxY, 90);
    // The corners are 1,414 km from the pole.
    EXPECT_NEAR(north.minY, 76.9, 0.3);
    const Bounds south = transform({-1e6, -1e6, 1e6, 1e6}, 3031, 4326);
    EXPECT_EQ(south.minY, -90);
    EXPECT_EQ(south.minX, -180);
    EXPECT_EQ(south.maxX, 180);
}

TEST_F(BoundsAroundTest, HoldsThePoleInEveryAxisOrder) {
    for (const bool sourceEastNorth : {true, false})
        for (const bool targetEastNorth : {true, false}) {
            const Bounds around{1.5e6, 0.5e6, 2.5e6, 1.5e6};
            const Bounds exchanged{around.minY, around.minX, around.maxY, around.maxX};
            PointTransformer transformer(crsInOrder(9005, sourceEastNorth), crsInOrder(4326, targetEastNorth));
            const Bounds box = transformer.transformBounds(sourceEastNorth ? around : exchanged);
            EXPECT_EQ(targetEastNorth ? box.maxY : box.maxX, 90);
            EXPECT_EQ(targetEastNorth ? box.maxX : box.maxY, 180);
        }
}

// A transformer that cannot transform the pole.
class OneWayTransformer : public CoordTransformer {
public:
    void transformCoordinates(const AbstractCrs* source, const AbstractCrs* target, double& x, double& y,
                              double* z) const override {
        if (source->isGeographic()) throw std::runtime_error("one way");
        getProj4Transformer()->transformCoordinates(source, target, x, y, z);
    }
};

TEST_F(BoundsAroundTest, HoldsNoPoleThatCannotBeMoved) {
    const OneWayTransformer host;
    PointTransformer transformer(Proj4Crs(creator, host, 25832, 0, false), Proj4Crs(creator, host, 4326, 0, false));
    EXPECT_LT(transformer.transformBounds({-1000, -1000, 1000, 1000}).maxY, 1);
}

TEST_F(BoundsAroundTest, HoldsThePoleOfASourceThatIsGeographicToo) {
    const Bounds expected{-180, 80, 180, 90};
    // The pole of the Bessel ellipsoid is near that of WGS 84, and inside the box.
    for (const Bounds& box : {Bounds{-180, 80, 180, 90}, Bounds{0, 80, 360, 90}}) {
        const Bounds cap = transform(box, 9003, 4326);
        EXPECT_EQ(cap.minX, expected.minX);
        EXPECT_EQ(cap.maxX, expected.maxX);
        EXPECT_NEAR(cap.minY, expected.minY, 0.01);
        EXPECT_NEAR(cap.maxY, expected.maxY, 0.01);
    }
}

// The pole of WGS 84 is near that of the Bessel ellipsoid, at 173 degrees west.
TEST_F(BoundsAroundTest, HoldsThePoleInABoxAcrossTheAntimeridian) {
    for (const Bounds& box : {Bounds{170, 80, -170, 90}, Bounds{170, 80, 190, 90}, Bounds{-190, 80, -170, 90}}) {
        const Bounds cap = transform(box, 9003, 4326);
        EXPECT_EQ(cap.maxY, 90);
        EXPECT_EQ(cap.minX, -180);
        EXPECT_EQ(cap.maxX, 180);
    }
    EXPECT_LT(transform({-170, 80, 170, 90}, 9003, 4326).maxY, 90);
    EXPECT_LT(transform({170, 80, -175, 90}, 9003, 4326).maxY, 90);
}

TEST_F(BoundsAroundTest, CountsDegreesByTheScaleFactors) {
    const Bounds north = scaled({-5e5, -5e5, 5e5, 5e5}, 3413, 0.5, 4326, 4);
    EXPECT_EQ(north.minX, -45);
    EXPECT_EQ(north.maxX, 45);
    EXPECT_EQ(north.maxY, 22.5);
    const Bounds across = scaled({356, -38, -356, -34}, 4326, 2, 9001, 1);
    expectNear(across, transform({178, -19, -178, -17}, 4326, 9001), 1e-12);
    const Bounds back = scaled(across, 9001, 1, 4326, 0.5);
    EXPECT_GT(back.minX, back.maxX);
    EXPECT_NEAR(back.minX, 356, 0.1);
    const Bounds same = scaled({340, -40, -340, 40}, 4326, 2, 4326, 4);
    EXPECT_EQ(same.minX, 680);
    EXPECT_EQ(same.maxX, -680);
    const Bounds pole = scaled({340, 160, -340, 180}, 9003, 2, 4326, 1);
    EXPECT_EQ(pole.maxY, 90);
}

// A host's transformer that forwards to the library's; the points of its CRS go through it.
class AskingTransformer : public CoordTransformer {
public:
    void transformCoordinates(const AbstractCrs* source, const AbstractCrs* target, double& x, double& y,
                              double* z) const override {
        getProj4Transformer()->transformCoordinates(source, target, x, y, z);
    }
};

TEST_F(BoundsAroundTest, IsTheSameThroughTheTransformerOfAHost) {
    const AskingTransformer host;
    struct Case {
        unsigned int source;
        unsigned int target;
        Bounds box;
    };
    const Case cases[] = {{3413, 4326, {-1e6, -1e6, 1e6, 1e6}},
                          {9001, 4326, {3e5, -2e6, 7e5, -1e6}},
                          {9003, 4326, {170, 80, -170, 90}},
                          {4326, 4326, {170, -20, -170, 20}}};
    for (const Case& row : cases)
        for (const double factor : {1.0, 2.0}) {
            const Bounds box{row.box.minX * factor, row.box.minY * factor, row.box.maxX * factor,
                             row.box.maxY * factor};
            Proj4Crs source(creator, host, row.source, 0, false);
            Proj4Crs target(creator, host, row.target, 0, false);
            source.setPrimaryScaleFactor(factor);
            target.setPrimaryScaleFactor(4);
            SCOPED_TRACE(testing::Message() << row.source << " " << row.target << " " << factor);
            expectNear(PointTransformer(source, target).transformBounds(box),
                       scaled(box, row.source, factor, row.target, 4), 0);
        }
}

TEST_F(BoundsAroundTest, HasTheLeastLongitudeInTheWestOfTheAntimeridian) {
    // 178 degrees east to 178 west, and back.
    const Bounds projected = transform({178, -19, -178, -17}, 4326, 9001);
    EXPECT_LT(projected.minX, projected.maxX);
    EXPECT_NEAR(projected.minX, 500000, 1);
    const Bounds back = transform(projected, 9001, 4326);
    EXPECT_GT(back.minX, back.maxX);
    EXPECT_NEAR(back.minX, 178, 0.05);
    EXPECT_NEAR(back.maxX, -178, 0.05);
}

TEST_F(BoundsAroundTest, KeepsToTheAxisOrders) {
    const Bounds box{5, 48, 8, 52};
    const Bounds projected = transform(box, 4326, 25832);
    PointTransformer northFirst(crsInOrder(4326, false), crsInOrder(25832, false));
    const Bounds exchanged = northFirst.transformBounds({box.minY, box.minX, box.maxY, box.maxX});
    EXPECT_EQ(exchanged.minX, projected.minY);
    EXPECT_EQ(exchanged.minY, projected.minX);
    EXPECT_EQ(exchanged.maxX, projected.maxY);
    EXPECT_EQ(exchanged.maxY, projected.maxX);
}

TEST_F(BoundsAroundTest, CrossesTheAntimeridianWithLatitudeFirstToo) {
    PointTransformer there(crsInOrder(4326, false), crsInOrder(9001, true));
    const Bounds projected = there.transformBounds({-19, 178, -17, -178});
    PointTransformer back(crsInOrder(9001, true), crsInOrder(4326, false));
    const Bounds box = back.transformBounds(projected);
    EXPECT_LT(box.minX, box.maxX);
    EXPECT_GT(box.minY, box.maxY);
}

TEST_F(BoundsAroundTest, TakesPointsAndLinesForBoxes) {
    const Bounds point = transform({9, 50, 9, 50}, 4326, 25832);
    EXPECT_EQ(point.minX, point.maxX);
    EXPECT_EQ(point.minY, point.maxY);
    EXPECT_NEAR(point.minX, 500000, 1e-6);
    const Bounds line = transform({9, 50, 9, 51}, 4326, 25832);
    EXPECT_NEAR(line.minX, line.maxX, 1e-6);
    EXPECT_GT(line.maxY, line.minY + 100000);
}

TEST_F(BoundsAroundTest, LeavesBoxesOfTheSameCodeAsTheyAre) {
    const Bounds box = transform({5, 48, 8, 52}, 4326, 4326);
    expectNear(box, {5, 48, 8, 52}, 0);
    const Bounds across = transform({170, -20, -170, 20}, 4326, 4326);
    EXPECT_EQ(across.minX, 170);
    EXPECT_EQ(across.maxX, -170);
    const Bounds all = transform({-180, -90, 180, 90}, 4326, 4326);
    expectNear(all, {-180, -90, 180, 90}, 0);
}

TEST_F(BoundsAroundTest, IsTheBoxOfWhatCanBeTransformed) {
    // The poles have no place in the Mercator projection.
    const Bounds box = transform({0, 0, 10, 90}, 4326, 3857);
    EXPECT_NEAR(box.maxX, 1113194.9, 0.1);
    EXPECT_TRUE(std::isfinite(box.maxY));
}

// The southern edge cannot be transformed, so no point of an edge is as far south as points inside.
TEST_F(BoundsAroundTest, HoldsThePointsInsideIfAnEdgeCannotBeTransformed) {
    const Bounds inside = transform({20, -85, 20, -85}, 4326, 2154);
    const Bounds box = transform({-60, -90, 100, 50}, 4326, 2154);
    EXPECT_LT(box.minY, inside.minY);
    EXPECT_LT(box.minX, inside.minX);
    EXPECT_GT(box.maxX, inside.maxX);
}

TEST_F(BoundsAroundTest, RefusesWhatNoPointCanBeTransformedOf) {
    const Bounds bad[] = {{1e30, 1e30, 2e30, 2e30},   {NOT_A_NUMBER, 0, 1, 1}, {0, 0, 1, NOT_A_NUMBER},
                          {0, 0, INFINITE, INFINITE}, {5, 52, 8, 48},          {500, 48, 8, 52}};
    for (const Bounds& box : bad) EXPECT_THROW(transform(box, 4326, 25832), BBoxOutOfBounds);
    try {
        transform({6, 100, 15, 47.5}, 4326, 25832);
        ADD_FAILURE() << "transformed";
    } catch (const BBoxOutOfBounds& failure) {
        EXPECT_EQ(std::string(failure.what()),
                  "BoundingBox: out of bounds! No point of 6, 100, 15, 47.5 can be transformed");
    }
}

TEST_F(BoundsAroundTest, TakesAnyNumberOfPointsForAnEdge) {
    const Bounds box{5, 48, 8, 52};
    const Bounds corners = transform(box, 4326, 3035, 0);
    const Bounds fine = transform(box, 4326, 3035, 1000);
    EXPECT_LE(fine.minY, corners.minY);
    EXPECT_GE(fine.maxY, corners.maxY);
    expectNear(transform(box, 4326, 3035, 4000000000U), transform(box, 4326, 3035, 10000), 0);
    expectNear(transform(fine, 3035, 4326, 0), transform(fine, 3035, 4326, 2), 0);
    // The step from corner to corner would cross the antimeridian.
    const Bounds nearlyAll = transform({-2e7, -1e7, 2e7, 1e7}, 3857, 4326, 0);
    EXPECT_NEAR(nearlyAll.minX, -179.663, 1e-3);
    EXPECT_NEAR(nearlyAll.maxX, 179.663, 1e-3);
}

struct Ring {
    const char* name;
    std::vector<double> longitudes;
    double western;
    double eastern;
};

void PrintTo(const Ring& ring, std::ostream* stream) { *stream << ring.name; }

const Ring RINGS[] = {
    {"OneLongitude", {7}, 7, 7},
    {"Box", {5, 5, 8, 8}, 5, 8},
    {"BoxFromTheEast", {8, 8, 5, 5}, 5, 8},
    {"AcrossTheAntimeridian", {178, 178, -178, -178}, 178, -178},
    {"AcrossFromTheEast", {-178, -178, 178, 178}, 178, -178},
    {"ThereAndBackAcross", {170, 175, -175, -170, -175, 175}, 170, -170},
    {"WideBox", {-100, 0, 90, 0}, -100, 90},
    {"AroundAPoleToTheEast", {-150, -60, 30, 120}, -180, 180},
    {"AroundAPoleToTheWest", {120, 30, -60, -150}, -180, 180},
    {"WholeEarth", {-180, -60, 60, 180, 180, 60, -60, -180}, -180, 180},
    {"StepsOfTwoHundredDegrees", {-100, 100}, -100, 100},
    {"StepsOfTwoHundredAndForty", {120, -120}, 120, -120},
    {"OnTheAntimeridian", {180, -180, 180}, 180, 180},
};

class LongitudesAroundTest : public testing::TestWithParam<Ring> {};

INSTANTIATE_TEST_SUITE_P(Rings, LongitudesAroundTest, testing::ValuesIn(RINGS),
                         [](const auto& ring) { return std::string(ring.param.name); });

TEST_P(LongitudesAroundTest, AreFromTheWesternmostToTheEasternmost) {
    for (const double degree : {1.0, 0.25}) {
        LongitudesAround around(degree);
        for (const double longitude : GetParam().longitudes) around.add(longitude * degree);
        const Range range = around.close();
        EXPECT_EQ(range.least, GetParam().western * degree);
        EXPECT_EQ(range.greatest, GetParam().eastern * degree);
    }
}

TEST(NoLongitudesAroundTest, AreEmpty) { EXPECT_TRUE(LongitudesAround(1).close().isEmpty()); }

}  // namespace
}  // namespace CoordinateTransformation
