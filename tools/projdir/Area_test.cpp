#include "tools/projdir/Area.h"

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

}  // namespace
}  // namespace ProjDir
