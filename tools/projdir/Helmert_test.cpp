#include "tools/projdir/Helmert.h"

#include <gtest/gtest.h>

namespace ProjDir {
namespace {

const Vector POINT{3657660.66, 255768.55, 5201382.11};

void expectNear(const Vector& actual, const Vector& expected, double tolerance) {
    EXPECT_NEAR(actual.x(), expected.x(), tolerance);
    EXPECT_NEAR(actual.y(), expected.y(), tolerance);
    EXPECT_NEAR(actual.z(), expected.z(), tolerance);
}

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

TEST(HelmertTest, RoundsToWhatCanBeToldApart) {
    const Helmert rounded = roundForWriting({{1.00004, -2.00006, 0}, {0.1234564, -0.00000049, 0}, 3.33333333});
    EXPECT_EQ(writeHelmert(rounded), "1,-2.0001,0,0.123456,0,0,3.333333");
}

}  // namespace
}  // namespace ProjDir
