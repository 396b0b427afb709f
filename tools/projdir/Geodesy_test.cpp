#include "tools/projdir/Geodesy.h"

#include <cmath>
#include <gtest/gtest.h>

namespace ProjDir {
namespace {

void expectNear(const Vector& actual, const Vector& expected, double tolerance) {
    EXPECT_NEAR(actual.x, expected.x, tolerance);
    EXPECT_NEAR(actual.y, expected.y, tolerance);
    EXPECT_NEAR(actual.z, expected.z, tolerance);
}

// The worked example of the conversion in IOGP Guidance Note 7-2, which gives millimetres.
TEST(GeodesyTest, ConvertsToGeocentricCoordinates) {
    const LonLat place{2 + 7 / 60.0 + 46.380 / 3600, 53 + 48 / 60.0 + 33.820 / 3600};
    expectNear(toGeocentric(WGS_84_ELLIPSOID, place, 73.0), {3771793.968, 140253.342, 5124304.349}, 0.001);
}

TEST(GeodesyTest, PutsThePoleOnTheAxis) {
    expectNear(toGeocentric(WGS_84_ELLIPSOID, {30, 90}, 0), {0, 0, WGS_84_ELLIPSOID.semiMinor}, 1e-8);
    expectNear(toGeocentric(WGS_84_ELLIPSOID, {90, 0}, 1), {0, WGS_84_ELLIPSOID.semiMajor + 1, 0}, 1e-8);
}

TEST(GeodesyTest, DirectionsStandSquareOnEachOther) {
    const Directions directions = directionsAt({-70, -33});
    EXPECT_NEAR(dot(directions.east, directions.north), 0, 1e-15);
    EXPECT_NEAR(dot(directions.up, directions.north), 0, 1e-15);
    EXPECT_NEAR(lengthOf(directions.north), 1, 1e-15);
    EXPECT_GT(directions.north.z, 0);
    expectNear(directionsAt({0, 0}).east, {0, 1, 0}, 1e-15);
}

struct Pair {
    LonLat left;
    LonLat right;
    double distance;
    double tolerance;
};

class DistanceTest : public testing::TestWithParam<Pair> {};

TEST_P(DistanceTest, IsThatOnTheGround) {
    EXPECT_NEAR(distanceInMetres(GetParam().left, GetParam().right), GetParam().distance, GetParam().tolerance);
}

// One second of the equator, of the meridian there (a (1 - e2) times the angle), the same place twice, the pole.
INSTANTIATE_TEST_SUITE_P(Places, DistanceTest,
                         testing::Values(Pair{{0, 0}, {1 / 3600.0, 0}, 30.9221, 0.0001},
                                         Pair{{10, 0}, {10, 1 / 3600.0}, 30.7151, 0.0001},
                                         Pair{{180, 10}, {-180, 10}, 0, 1e-8}, Pair{{0, 90}, {120, 90}, 0, 1e-8}));

TEST(GeodesyTest, DistanceOfWhatIsNoNumberIsNone) {
    EXPECT_FALSE(distanceInMetres({0, 0}, {HUGE_VAL, HUGE_VAL}) <= 1e300);
}

}  // namespace
}  // namespace ProjDir
