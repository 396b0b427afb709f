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

struct AreaPair {
    Area left;
    Area right;
    bool overlap;
};

TEST(AreaTest, KnowsWhatOverlaps) {
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

TEST(AreaTest, MeasuresWhatTwoHaveInCommon) {
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

}  // namespace
}  // namespace ProjDir
