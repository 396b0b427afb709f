#include "tools/projdir/BestOperation.h"

#include <gtest/gtest.h>

#include "tools/projdir/Geodesy.h"

namespace ProjDir {
namespace {

TEST(BestOperationTest, KeepsTheOrderOfTheRegistry) {
    ProjContext context;
    BestOperation northFirst(context, 4258);
    const auto points = northFirst.sample({{9, 50}});
    ASSERT_EQ(points.size(), 1U);
    EXPECT_NEAR(points.front().crs[0], 50, 1e-9);
    EXPECT_NEAR(points.front().crs[1], 9, 1e-9);
    EXPECT_NEAR(points.front().wgs84.longitude, 9, 1e-9);
    EXPECT_NEAR(points.front().wgs84.latitude, 50, 1e-9);
}

TEST(BestOperationTest, ReturnsToThePlaceItCameFrom) {
    ProjContext context;
    BestOperation best(context, 27700);
    for (const ReferencePoint& point : best.sample({{-2, 52}, {-4, 57}}))
        EXPECT_LT(distanceInMetres(point.wgs84, point.crs[0] > 300000 ? LonLat{-2, 52} : LonLat{-4, 57}), 0.001);
}

TEST(BestOperationTest, NamesTheOperationOfEachPoint) {
    ProjContext context;
    BestOperation best(context, 27700);
    const auto points = best.sampleWithOperations({{-2, 52}, {-8.95, 60.99}});
    ASSERT_EQ(points.size(), 2U);
    const UsedOperation& inside = best.used()[points[0].operation];
    EXPECT_EQ(inside.source, "EPSG:1314");
    EXPECT_FALSE(inside.isBallpark);
    EXPECT_TRUE(inside.gridShift.empty());
    // The registry's operation ends short of the corner of the area.
    EXPECT_TRUE(best.used()[points[1].operation].isBallpark);
}

TEST(BestOperationTest, NamesTheInstalledFileOfAGrid) {
    ProjContext context;
    BestOperation best(context, 31467);
    const auto points = best.sampleWithOperations({{9, 51}});
    ASSERT_EQ(points.size(), 1U);
    EXPECT_EQ(best.used()[points[0].operation].gridShift, "BETA2007.gsb");
}

TEST(BestOperationTest, KnowsThatItKnowsNothing) {
    ProjContext context;
    BestOperation best(context, 4610);  // Xian 1980
    const auto points = best.sampleWithOperations({{110, 30}});
    ASSERT_EQ(points.size(), 1U);
    EXPECT_TRUE(best.used()[points[0].operation].isBallpark);
}

TEST(BestOperationTest, HasNoPointsWithoutAnOperation) {
    ProjContext context;
    BestOperation best(context, 999999);
    EXPECT_TRUE(best.sample({{9, 50}}).empty());
    EXPECT_TRUE(best.sampleWithOperations({{9, 50}}).empty());
}

}  // namespace
}  // namespace ProjDir
