// A program of its own: it replaces the global allocation functions.

#include "tests/support/AllocationFailure.h"

#include <map>

#include <gtest/gtest.h>

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

class TransformationAllocationTest : public TestSupport::Proj4Test {
protected:
    // Allocations for `points` points that go from `source` to `target`.
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

}  // namespace
}  // namespace CoordinateTransformation
