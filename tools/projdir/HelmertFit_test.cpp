#include "tools/projdir/HelmertFit.h"

#include <cmath>

#include <gtest/gtest.h>

namespace ProjDir {
namespace {

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

// Many parameters do the same in a small area; whichever come out, they move its points as they should.
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
