// A program of its own: it replaces the global allocation functions.

#include "tests/support/AllocationFailure.h"

#include <fstream>
#include <gtest/gtest.h>
#include <map>
#include <string>

#include "proj/AxisOrderTable.h"
#include "tests/support/TemporaryDirectory.h"

namespace CoordinateTransformation {
namespace {

using TestSupport::succeedsWithout;

class AxisOrderTableAllocationFailureTest : public testing::Test {
protected:
    void SetUp() override { std::ofstream(path) << "4326;ne\n31467;                                   ne\n25832;en\n"; }
    void TearDown() override { getAxisOrderTable().clear(); }

    const TestSupport::TemporaryDirectory directory;
    const std::string path = directory.file("epsg-axisorder.csv");
};

TEST_F(AxisOrderTableAllocationFailureTest, ReadsEveryRowOrFails) {
    const std::map<unsigned int, bool> expected = {{4326, false}, {25832, true}, {31467, false}};
    int allocations = 0;
    for (bool succeeded = false; !succeeded; ++allocations) {
        getAxisOrderTable().clear();
        succeeded = succeedsWithout(allocations, [this] { loadAxisOrderTable(path); });
        EXPECT_TRUE(!succeeded || getAxisOrderTable() == expected) << "without allocation " << allocations;
    }
    EXPECT_GT(allocations, 10);
}

}  // namespace
}  // namespace CoordinateTransformation
