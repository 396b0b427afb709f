#include "tools/projdir/Geodesy.h"

#include <cmath>

#include <gtest/gtest.h>

namespace ProjDir {
namespace {

void expectNear(const Vector& actual, const Vector& expected, double tolerance) {
    EXPECT_NEAR(actual.x(), expected.x(), tolerance);
    EXPECT_NEAR(actual.y(), expected.y(), tolerance);
    EXPECT_NEAR(actual.z(), expected.z(), tolerance);
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

TEST(GeodesyTest, AxesOfTheLocalFrameAreOrthogonal) {
    const LocalFrame frame = localFrameAt({-70, -33});
    EXPECT_NEAR(frame.east.dot(frame.north), 0, 1e-15);
    EXPECT_NEAR(frame.up.dot(frame.north), 0, 1e-15);
    EXPECT_NEAR(frame.north.norm(), 1, 1e-15);
    EXPECT_GT(frame.north.z(), 0);
    expectNear(localFrameAt({0, 0}).east, {0, 1, 0}, 1e-15);
}

struct PlacePair {
    LonLat left;
    LonLat right;
    double distance;
    double tolerance;
};

class DistanceTest : public testing::TestWithParam<PlacePair> {};

TEST_P(DistanceTest, IsThatOnTheGround) {
    EXPECT_NEAR(distanceInMetres(GetParam().left, GetParam().right), GetParam().distance, GetParam().tolerance);
}

// One second of the equator, of the meridian there (a (1 - e2) times the angle), the same place twice, the pole.
INSTANTIATE_TEST_SUITE_P(Places, DistanceTest,
                         testing::Values(PlacePair{{0, 0}, {1 / 3600.0, 0}, 30.9221, 0.0001},
                                         PlacePair{{10, 0}, {10, 1 / 3600.0}, 30.7151, 0.0001},
                                         PlacePair{{180, 10}, {-180, 10}, 0, 1e-8},
                                         PlacePair{{0, 90}, {120, 90}, 0, 1e-8}));

TEST(GeodesyTest, DistanceOfWhatIsNoNumberIsNone) {
    EXPECT_FALSE(distanceInMetres({0, 0}, {HUGE_VAL, HUGE_VAL}) <= 1e300);
}

}  // namespace
}  // namespace ProjDir
