#include <memory>
#include <vector>

#include <gtest/gtest.h>

#include "CoordinateTransformation/AbstractCrs.h"
#include "CoordinateTransformation/CoordTransformer.h"
#include "tests/support/AbstractCrsTest.h"

namespace CoordinateTransformation {
namespace {

// Records its arguments and moves the point.
class RecordingTransformer : public CoordTransformer {
public:
    struct Call {
        const AbstractCrs* source;
        const AbstractCrs* target;
        double* x;
        double* y;
        double* z;
    };

    void transformCoordinates(const AbstractCrs* source, const AbstractCrs* target, double& x, double& y,
                              double* z) const override {
        calls.push_back({source, target, &x, &y, z});
        x += 100;
        y += 200;
        if (z != nullptr) *z += 300;
    }

    mutable std::vector<Call> calls;
};

class AbstractCrsTransformationTest : public AbstractCrsTest {
protected:
    BareCrs givenCrsOf(const CoordTransformer& crsTransformer, unsigned int code) const {
        BareCrs crs(creator, crsTransformer);
        crs.primaryCode = code;
        return crs;
    }

    RecordingTransformer recorder;
    RecordingTransformer otherRecorder;
    double x = 1;
    double y = 2;
    double z = 3;
};

TEST_F(AbstractCrsTransformationTest, PassesItsPointsToItsTransformer) {
    const BareCrs source = givenCrsOf(recorder, 25832);
    const BareCrs target = givenCrsOf(otherRecorder, 27700);
    source.transformTo(&target, x, y, z);
    source.transformTo(&target, x, y);
    ASSERT_EQ(recorder.calls.size(), 2U);
    for (const auto& call : recorder.calls) {
        EXPECT_EQ(call.source, &source);
        EXPECT_EQ(call.target, &target);
        EXPECT_EQ(call.x, &x);
        EXPECT_EQ(call.y, &y);
    }
    EXPECT_EQ(recorder.calls.front().z, &z);
    EXPECT_EQ(recorder.calls.back().z, nullptr);
    EXPECT_EQ(x, 201);
    EXPECT_EQ(y, 402);
    EXPECT_EQ(z, 303);
    EXPECT_TRUE(otherRecorder.calls.empty());
}

TEST_F(AbstractCrsTransformationTest, LeavesItToTheTransformerWhetherToCalculate) {
    const BareCrs source = givenCrsOf(recorder, 25832);
    BareCrs target = givenCrsOf(recorder, 25832);
    target.setAxisOrderEastNorthOrLonLat(false);
    source.transformTo(&target, x, y, z);
    EXPECT_EQ(x, 2);
    EXPECT_EQ(y, 1);
    EXPECT_EQ(z, 3);
    EXPECT_TRUE(recorder.calls.empty());
}

TEST_F(AbstractCrsTransformationTest, KeepsItsTransformerInAnAssignmentAndGivesItToACopy) {
    BareCrs assigned = givenCrsOf(recorder, 25832);
    const BareCrs target = givenCrsOf(otherRecorder, 27700);
    static_cast<AbstractCrs&>(assigned) = givenCrsOf(otherRecorder, 31467);
    assigned.transformTo(&target, x, y);
    EXPECT_EQ(recorder.calls.size(), 1U);
    const std::unique_ptr<AbstractCrs> copied(assigned.copy());
    copied->transformTo(&target, x, y, z);
    EXPECT_EQ(recorder.calls.size(), 2U);
    EXPECT_TRUE(otherRecorder.calls.empty());
}

}  // namespace
}  // namespace CoordinateTransformation
