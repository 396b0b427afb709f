// A separate program, because it replaces the global allocation functions.

#include "tests/support/AllocationFailure.h"

#include <map>

#include <gtest/gtest.h>

#include "CoordinateTransformation/CrsDescriptions.h"
#include "CoordinateTransformation/PointTransformer.h"
#include "tests/support/Proj4Test.h"

namespace CoordinateTransformation {
namespace {

using TestSupport::allocations;

TEST(AxisOrderTableAllocationFailureTest, ReadsEveryRowOrFails) {
    const TestSupport::TemporaryDirectory directory;
    const std::string path =
        directory.write("epsg-axisorder.csv", "4326;ne\n31467;                                   ne\n25832;en\n");
    const std::map<unsigned int, bool> expected = {{4326, false}, {25832, true}, {31467, false}};
    const auto load = [&path] {
        axisOrderTable.clear();
        loadAxisOrderTable(path);
    };
    EXPECT_GT(TestSupport::expectAllOrNothing(load, [&expected] { return axisOrderTable == expected; }), 10);
    axisOrderTable.clear();
}

TEST(CrsDescriptionsAllocationFailureTest, AreAllReadOrNone) {
    const TestSupport::TemporaryDirectory directory;
    const std::string path = directory.write(
        "epsg-info.csv",
        "code,name,kind,area,west,south,east,north,unit,unit_length,datum,datum_id,shift_source,shift_accuracy,"
        "largest_distance,replaced_by\n"
        "7,a name that no small buffer holds,geographic,,,,,,degree,0.0174532925199433,a datum of a long name,,,,,8\n"
        "8,another name that no small buffer holds,projected,an area of some length,1,2,3,4,metre,1,,,,,,\n");
    CrsDescriptions read;
    const auto isWhole = [&read] {
        return read.size() == 2 && read.find(7)->replacedBy.front() == 8 &&
               read.find(8)->area == "an area of some length";
    };
    EXPECT_GT(TestSupport::expectAllOrNothing([&] { read = CrsDescriptions(path); }, isWhole), 20);
}

class TransformationAllocationTest : public TestSupport::Proj4Test {
protected:
    // The number of allocations for `points` points from `source` to `target`.
    static long allocationsFor(const AbstractCrs& source, const AbstractCrs& target, int points) {
        const long before = allocations;
        for (int i = 0; i < points; ++i) {
            double x = 9;
            double y = 50 + i * 0.001;
            double z = 100;
            source.transformTo(&target, x, y, z);
            source.transformTo(&target, x = 9, y = 50);
        }
        return allocations - before;
    }
};

TEST_F(TransformationAllocationTest, HappensForTheFirstPointOfAPairAlone) {
    const Proj4Crs source = crsInOrder(4326, true);
    const Proj4Crs targets[] = {crsOf(25832), crsOf(31467), crsOf(4258)};
    for (const Proj4Crs& target : targets) EXPECT_GT(allocationsFor(source, target, 1), 0) << target.getPrimaryCode();
    for (int turn = 0; turn < 100; ++turn)
        for (const Proj4Crs& target : targets)
            EXPECT_EQ(allocationsFor(source, target, 10), 0) << target.getPrimaryCode() << " in turn " << turn;
}

TEST_F(TransformationAllocationTest, NeverHappensBetweenCrsOfOneCode) {
    const Proj4Crs source = crsOf(4326);
    Proj4Crs scaled = crsOf(4979);
    scaled.setPrimaryScaleFactor(2);
    EXPECT_EQ(allocationsFor(source, scaled, 1000), 0);
    EXPECT_EQ(allocationsFor(scaled, source, 1000), 0);
}

TEST_F(TransformationAllocationTest, NeverHappensInArraysAndBoxes) {
    const Proj4Crs source = crsInOrder(4326, true);
    for (const unsigned int code : {25832U, 31467U, 4258U, 4979U}) {
        PointTransformer there(source, crsOf(code));
        PointTransformer back(crsOf(code), source);
        double x[200];
        double y[200];
        double z[200];
        const long before = allocations;
        for (int turn = 0; turn < 10; ++turn) {
            for (int i = 0; i < 200; ++i) {
                x[i] = 9;
                y[i] = i % 3 == 0 ? 99 : 50;
                z[i] = i;
            }
            there.transform(200, x, y, z);
            back.transform(200, x, y);
            back.transformBounds(there.transformBounds({8, 49, 10, 51}));
        }
        EXPECT_EQ(allocations, before) << code;
    }
}

// The operation is taken from the pool and returned to it.
TEST_F(TransformationAllocationTest, HappensOnceForATransformerOfAPairInUse) {
    const Proj4Crs source = crsOf(4326);
    const Proj4Crs target = crsOf(25832);
    { const PointTransformer first(source, target); }
    const long before = allocations;
    for (int i = 0; i < 10; ++i) const PointTransformer next(source, target);
    EXPECT_EQ(allocations, before + 10);
}

class HostTransformer : public CoordTransformer {
public:
    void transformCoordinates(const AbstractCrs*, const AbstractCrs*, double&, double&, double*) const override {}
};

TEST_F(TransformationAllocationTest, LosesNothingWhenATransformerCannotBeMade) {
    const HostTransformer host;
    const Proj4Crs source = crsOf(4326);
    const Proj4Crs own(creator, host, 25832, 0, true);
    { const PointTransformer first(source, crsOf(25832)); }
    const auto making = [&source](const Proj4Crs& target) {
        return TestSupport::allocationsOf([&source, &target] { const PointTransformer made(source, target); });
    };
    EXPECT_GE(making(crsOf(25832)), 1);
    EXPECT_GE(making(crsOf(4979)), 1);
    EXPECT_GE(making(own), 3);
}

}  // namespace
}  // namespace CoordinateTransformation
