#include "tools/projdir/Geodesy.h"

#include <cmath>
#include <ostream>

#include <gtest/gtest.h>

namespace ProjDir {
namespace {

TEST(AreaTest, SpreadsPointsFromBorderToBorder) {
    const auto points = sampleArea({-10, 40, 10, 60}, 3);
    ASSERT_EQ(points.size(), 9U);
    EXPECT_EQ(points.front().longitude, -10);
    EXPECT_EQ(points.front().latitude, 40);
    EXPECT_EQ(points[4].longitude, 0);
    EXPECT_EQ(points[4].latitude, 50);
    EXPECT_EQ(points.back().longitude, 10);
    EXPECT_EQ(points.back().latitude, 60);
}

TEST(AreaTest, CrossesThe180thMeridian) {
    const auto points = sampleArea({170, -20, -170, -10}, 3);
    ASSERT_EQ(points.size(), 9U);
    EXPECT_EQ(points[0].longitude, 170);
    EXPECT_EQ(points[1].longitude, 180);
    EXPECT_EQ(points[2].longitude, -170);
}

TEST(AreaTest, HoldsTheWholeWorld) {
    const auto points = sampleArea({-180, -90, 180, 90}, 2);
    EXPECT_EQ(points.front().longitude, -180);
    EXPECT_EQ(points.back().longitude, 180);
    EXPECT_EQ(points.back().latitude, 90);
}

struct AreaPair {
    Area left;
    Area right;
    bool overlap;
};

TEST(AreaTest, RecognisesOverlappingAreas) {
    const Area fiji{175, -20, -175, -10};
    for (const AreaPair& row :
         {AreaPair{{0, 0, 10, 10}, {5, 5, 15, 15}, true}, AreaPair{{0, 0, 10, 10}, {10, 10, 20, 20}, true},
          AreaPair{{0, 0, 10, 10}, {11, 0, 20, 10}, false}, AreaPair{{0, 0, 10, 10}, {0, 11, 10, 20}, false},
          AreaPair{fiji, {-180, -30, -178, 0}, true}, AreaPair{fiji, {178, -30, 179, 0}, true},
          AreaPair{fiji, {-170, -30, 170, 0}, false}, AreaPair{fiji, fiji, true},
          AreaPair{fiji, {-180, -90, 180, 90}, true}, AreaPair{{170, -20, 174, -10}, {-180, -20, -175, -10}, false}}) {
        EXPECT_EQ(overlap(row.left, row.right), row.overlap) << row.left.west << " " << row.right.west;
        EXPECT_EQ(overlap(row.right, row.left), row.overlap) << row.left.west << " " << row.right.west;
    }
}

TEST(AreaTest, MeasuresTheIntersection) {
    EXPECT_NEAR(commonExtent({0, 0, 10, 30}, {-5, -30, 5, 90}), 5 * 0.5, 1e-12);
    EXPECT_NEAR(commonExtent({175, 0, -175, 30}, {-180, -30, 180, 90}), 10 * 0.5, 1e-12);
    EXPECT_NEAR(commonExtent({-180, -30, 180, 90}, {175, 0, -175, 30}), 10 * 0.5, 1e-12);
    EXPECT_EQ(commonExtent({0, 0, 10, 30}, {11, 0, 20, 30}), 0);
    EXPECT_EQ(commonExtent({0, 0, 10, 30}, {0, 31, 10, 40}), 0);
}

TEST(AreaTest, FoldsLongitudes) {
    EXPECT_EQ(foldLongitude({181, 5}).longitude, -179);
    EXPECT_EQ(foldLongitude({-190, 5}).longitude, 170);
    EXPECT_EQ(foldLongitude({180, 5}).longitude, 180);
    EXPECT_EQ(foldLongitude({181, 5}).latitude, 5);
}

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

void PrintTo(const PlacePair& pair, std::ostream* stream) { *stream << pair.distance << " m"; }

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

TEST(GeodesyTest, TheDistanceOfNaNIsNaN) { EXPECT_FALSE(distanceInMetres({0, 0}, {HUGE_VAL, HUGE_VAL}) <= 1e300); }

const Vector POINT{3657660.66, 255768.55, 5201382.11};

// The worked example of the position vector transformation in IOGP Guidance Note 7-2, which gives centimetres.
TEST(HelmertTest, TurnsAsAPositionVector) {
    const Helmert helmert{{0, 0, 4.5}, {0, 0, 0.554}, 0.219};
    expectNear(helmert.apply(POINT), {3657660.78, 255778.43, 5201387.75}, 0.01);
}

TEST(HelmertTest, ComposesInOrder) {
    const Helmert first{{100, -200, 300}, {1, 2, -3}, 5};
    const Helmert second{{-50, 20, 10}, {0.5, -1, 2}, -2};
    expectNear(compose(first, second).apply(POINT), second.apply(first.apply(POINT)), 0.001);
    const Helmert translation{{1, 2, 3}, Vector::Zero(), 0};
    expectNear(compose(translation, translation).apply(POINT), POINT + Vector{2, 4, 6}, 1e-9);
}

TEST(HelmertTest, InvertsToAMillimetre) {
    const Helmert helmert{{598.1, 73.7, 418.2}, {0.202, 0.045, -2.455}, 6.7};
    expectNear(invert(helmert).apply(helmert.apply(POINT)), POINT, 0.001);
    expectNear(invert({{1, 2, 3}, Vector::Zero(), 0}).apply(POINT), POINT - Vector{1, 2, 3}, 1e-9);
}

TEST(HelmertTest, KnowsANullShift) {
    EXPECT_TRUE(Helmert{}.isNull());
    EXPECT_FALSE((Helmert{{0, 0, 1}, Vector::Zero(), 0}).isNull());
    EXPECT_FALSE((Helmert{Vector::Zero(), {0, 1, 0}, 0}).isNull());
    EXPECT_FALSE((Helmert{Vector::Zero(), Vector::Zero(), 1}).isNull());
}

TEST(HelmertTest, WritesSevenValuesAsShortAsTheyAre) {
    EXPECT_EQ(writeHelmert({{446.448, -125.157, 542.06}, {0.15, 0.247, 0.842}, -20.489}),
              "446.448,-125.157,542.06,0.15,0.247,0.842,-20.489");
    EXPECT_EQ(writeHelmert({{-0.0, 0, 0}, {-0.0, 0, 0}, -0.0}), "0,0,0,0,0,0,0");
}

TEST(HelmertTest, RoundsToTheWrittenDigits) {
    const Helmert rounded = roundForWriting({{1.00004, -2.00006, 0}, {0.1234564, -0.00000049, 0}, 3.33333333});
    EXPECT_EQ(writeHelmert(rounded), "1,-2.0001,0,0.123456,0,0,3.333333");
}

const Helmert SEVEN{{598.1, 73.7, 418.2}, {0.202, 0.045, -2.455}, 6.7};
const Helmert THREE{{-87, -98, -121}, Vector::Zero(), 0};
const Area WORLD{-180, -80, 170, 80};
const Area SMALL{9, 50, 9.5, 50.4};

ShiftSample makeSample(const LonLat& place, const Helmert& shift) {
    const Vector source = toGeocentric(WGS_84_ELLIPSOID, place, 100);
    return {source, shift.apply(source), localFrameAt(place)};
}

std::vector<ShiftSample> makeSamples(const Area& area, const Helmert& shift) {
    std::vector<ShiftSample> samples;
    for (const LonLat& place : sampleArea(area, 7)) samples.push_back(makeSample(place, shift));
    return samples;
}

void expectSame(const Helmert& actual, const Helmert& expected, double tolerance) {
    EXPECT_NEAR(actual.translation.x(), expected.translation.x(), tolerance);
    EXPECT_NEAR(actual.translation.y(), expected.translation.y(), tolerance);
    EXPECT_NEAR(actual.translation.z(), expected.translation.z(), tolerance);
    EXPECT_NEAR(actual.rotation.x(), expected.rotation.x(), tolerance);
    EXPECT_NEAR(actual.rotation.y(), expected.rotation.y(), tolerance);
    EXPECT_NEAR(actual.rotation.z(), expected.rotation.z(), tolerance);
    EXPECT_NEAR(actual.scale, expected.scale, tolerance);
}

TEST(HelmertFitTest, FindsSevenKnownParametersAgain) {
    expectSame(fitHelmert(makeSamples(WORLD, SEVEN), FitParameters::ALL_SEVEN, {}), SEVEN, 1e-6);
}

TEST(HelmertFitTest, FindsSevenKnownParametersFromAnyStart) {
    const Helmert start{{100, -300, 500}, {3, -1, 7}, -20};
    expectSame(fitHelmert(makeSamples(WORLD, SEVEN), FitParameters::ALL_SEVEN, start), SEVEN, 1e-6);
}

TEST(HelmertFitTest, FindsAKnownTranslationAgain) {
    expectSame(fitHelmert(makeSamples(SMALL, THREE), FitParameters::TRANSLATION, {}), THREE, 1e-6);
}

TEST(HelmertFitTest, TranslationDoesNotRotate) {
    const Helmert fitted = fitHelmert(makeSamples(WORLD, SEVEN), FitParameters::TRANSLATION, {});
    EXPECT_EQ(fitted.rotation.norm(), 0);
    EXPECT_EQ(fitted.scale, 0);
}

// Many sets of parameters are equivalent in a small area. Any of them moves its points correctly.
TEST(HelmertFitTest, FollowsAShiftInASmallArea) {
    const auto samples = makeSamples(SMALL, SEVEN);
    const Helmert fitted = fitHelmert(samples, FitParameters::ALL_SEVEN, THREE);
    EXPECT_LT(measureResidual(fitted, samples).largest, 0.05);
    EXPECT_LT(fitted.translation.norm(), 2000);
}

TEST(HelmertFitTest, StaysAtAStartThatFits) {
    expectSame(fitHelmert(makeSamples(SMALL, SEVEN), FitParameters::ALL_SEVEN, SEVEN), SEVEN, 1e-6);
}

TEST(HelmertFitTest, HalvesTheDifferenceOfTwoShifts) {
    std::vector<ShiftSample> samples = {makeSample({0, 0}, {{0, 10, 0}, Vector::Zero(), 0}),
                                        makeSample({0, 0}, {{0, 20, 0}, Vector::Zero(), 0})};
    const Helmert fitted = fitHelmert(samples, FitParameters::TRANSLATION, {});
    EXPECT_NEAR(fitted.translation.y(), 15, 1e-9);
    const Residual residual = measureResidual(fitted, samples);
    EXPECT_NEAR(residual.largest, 5, 1e-9);
    EXPECT_NEAR(residual.rootMeanSquare, 5, 1e-9);
}

TEST(HelmertFitTest, MeasuresHorizontallyOnly) {
    const std::vector<ShiftSample> samples = {makeSample({0, 0}, {{1000, 3, 4}, Vector::Zero(), 0}),
                                              makeSample({0, 0}, {})};
    const Residual residual = measureResidual({}, samples);
    EXPECT_NEAR(residual.largest, 5, 1e-9);
    EXPECT_NEAR(residual.mean, 2.5, 1e-9);
    EXPECT_NEAR(residual.rootMeanSquare, std::sqrt(12.5), 1e-9);
}

TEST(HelmertFitTest, NoSamplesLeaveNoResidual) {
    EXPECT_EQ(measureResidual(SEVEN, {}).largest, 0);
    expectSame(fitHelmert({}, FitParameters::ALL_SEVEN, SEVEN), SEVEN, 1e-12);
}

TEST(HelmertFitTest, AdoptsTheHeightsOfAnotherShift) {
    std::vector<ShiftSample> samples = {makeSample({0, 0}, {{0, 3, 4}, Vector::Zero(), 0})};
    adoptHeights(samples, {{50, 100, 100}, Vector::Zero(), 0});
    const Vector moved = samples.front().target - samples.front().source;
    EXPECT_NEAR(moved.x(), 50, 1e-6);
    EXPECT_NEAR(moved.y(), 3, 1e-6);
    EXPECT_NEAR(moved.z(), 4, 1e-6);
}

TEST(HelmertFitTest, SamplesStandOnTheirEllipsoids) {
    const ReferenceEllipsoid airy{6377563.396, 6356256.909};
    const ShiftSample sample = makeShiftSample(airy, {0, 0}, {90, 0});
    EXPECT_NEAR(sample.source.x(), airy.semiMajor, 1e-6);
    EXPECT_NEAR(sample.target.y(), WGS_84_ELLIPSOID.semiMajor, 1e-6);
    EXPECT_NEAR(sample.frame.up.y(), 1, 1e-12);
}

}  // namespace
}  // namespace ProjDir
