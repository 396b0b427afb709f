#include "CoordinateTransformation/CoordTransformer.h"

#include <cmath>
#include <limits>
#include <ostream>
#include <stdexcept>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>

#include "proj/Proj4Locks.h"
#include "tests/support/FakeCrs.h"

namespace CoordinateTransformation {
namespace {

using TestSupport::FakeCreator;
using TestSupport::FakeCrs;

static_assert(std::has_virtual_destructor_v<CoordTransformer> && sizeof(CoordTransformer) == sizeof(void*));

constexpr double RADIANS_PER_DEGREE = 0.017453292519943295;
constexpr double DEGREES_PER_RADIAN = 57.29577951308232;
constexpr double NO_HEIGHT = -9999;

struct Point {
    double x;
    double y;
    double z = NO_HEIGHT;
};

bool operator==(const Point& left, const Point& right) {
    return left.x == right.x && left.y == right.y && left.z == right.z;
}

std::ostream& operator<<(std::ostream& stream, const Point& point) {
    stream.precision(17);
    return stream << "(" << point.x << ", " << point.y << ", " << point.z << ")";
}

// Records its arguments and replaces the point by `result`.
class RecordingTransformer : public CoordTransformer {
public:
    struct Call {
        const AbstractCrs* source;
        const AbstractCrs* target;
        Point point;
    };

    void transformCoordinates(const AbstractCrs* source, const AbstractCrs* target, double& x, double& y,
                              double* z) const override {
        calls.push_back({source, target, {x, y, z == nullptr ? NO_HEIGHT : *z}});
        if (fails) throw std::runtime_error("no");
        x = result.x;
        y = result.y;
        if (z != nullptr) *z = result.z;
    }

    mutable std::vector<Call> calls;
    Point result{0, 0, 0};
    bool fails = false;
};

// A CRS given by its code, scale factors and axis order.
struct CrsCase {
    unsigned int primary = 25832;
    unsigned int secondary = 0;
    double primaryScale = 1;
    double secCompoundScale = 1;
    bool eastNorth = true;
};

class CoordTransformerTest : public testing::Test {
protected:
    FakeCrs crsOf(const CrsCase& wanted) const {
        FakeCrs crs(creator, transformer, wanted.primary, wanted.secondary);
        crs.setScaleFactors(wanted.primaryScale, wanted.secCompoundScale);
        crs.setAxisOrderEastNorthOrLonLat(wanted.eastNorth);
        return crs;
    }
    Point transformed(const CrsCase& from, const CrsCase& to, Point point) const {
        const FakeCrs source = crsOf(from);
        const FakeCrs target = crsOf(to);
        transformer.transformTo(&source, &target, point.x, point.y, point.z == NO_HEIGHT ? nullptr : &point.z);
        return point;
    }

    const FakeCreator creator;
    RecordingTransformer transformer;
};

// The result between CRS of one code for the point (3, 5, 7) with a height and (3, 5) without.
struct CompatibleCase {
    const char* name;
    CrsCase source;
    CrsCase target;
    Point withHeight;
};

void PrintTo(const CompatibleCase& pair, std::ostream* stream) { *stream << pair.name; }

class CompatibleCrsTest : public CoordTransformerTest, public testing::WithParamInterface<CompatibleCase> {
protected:
    const CompatibleCase& pair = GetParam();
};

// Needs neither the lock nor the transformation.
TEST_P(CompatibleCrsTest, MovesPointsByItself) {
    const std::lock_guard<SpinningMutex> held(proj4TransformLock);
    EXPECT_EQ(transformed(pair.source, pair.target, {3, 5, 7}), pair.withHeight);
    EXPECT_EQ(transformed(pair.source, pair.target, {3, 5}), (Point{pair.withHeight.x, pair.withHeight.y}));
    transformed(pair.target, pair.source, {3, 5, 7});
    EXPECT_TRUE(transformer.calls.empty());
}

const CrsCase UTM{25832};
const CrsCase FLAT{4326};
const CrsCase SOLID{4979};

CrsCase scaled(CrsCase crs, double primary, double secCompound = 1) {
    crs.primaryScale = primary;
    crs.secCompoundScale = secCompound;
    return crs;
}

CrsCase compound(CrsCase crs) {
    crs.secondary = 5783;
    return crs;
}

CrsCase northEast(CrsCase crs) {
    crs.eastNorth = false;
    return crs;
}

INSTANTIATE_TEST_SUITE_P(
    All, CompatibleCrsTest,
    testing::Values(
        CompatibleCase{"Equal", UTM, UTM, {3, 5, 7}},
        CompatibleCase{"NorthEastBoth", northEast(UTM), northEast(UTM), {3, 5, 7}},
        CompatibleCase{"NorthEastToEastNorth", northEast(UTM), UTM, {5, 3, 7}},
        CompatibleCase{"EastNorthToNorthEast", UTM, northEast(UTM), {5, 3, 7}},
        CompatibleCase{"GeographicInOppositeOrders", FLAT, northEast(FLAT), {5, 3, 7}},
        CompatibleCase{"ScaledTarget", UTM, scaled(UTM, 10), {30, 50, 7}},
        CompatibleCase{"ScaledSource", scaled(UTM, 2), UTM, {1.5, 2.5, 7}},
        CompatibleCase{"ScaledBoth", scaled(UTM, 2), scaled(UTM, 10), {15, 25, 7}},
        CompatibleCase{"ScaledInOppositeOrders", northEast(scaled(UTM, 2)), scaled(UTM, 10), {25, 15, 7}},
        CompatibleCase{"CompoundFactorOfAFlatCrs", scaled(UTM, 1, 8), scaled(UTM, 1, 16), {3, 5, 7}},
        CompatibleCase{"CompoundTarget", UTM, compound(scaled(UTM, 1, 8)), {3, 5, 56}},
        CompatibleCase{"CompoundSource", compound(scaled(UTM, 1, 8)), UTM, {3, 5, 0.875}},
        CompatibleCase{"CompoundBoth", compound(scaled(UTM, 2, 4)), compound(scaled(UTM, 10, 8)), {15, 25, 14}},
        CompatibleCase{"TwoToThreeDimensions", FLAT, SOLID, {3, 5, 7}},
        CompatibleCase{"TwoToThreeScaledDimensions", scaled(FLAT, 2), scaled(SOLID, 10), {15, 25, 70}},
        CompatibleCase{"ThreeToTwoScaledDimensions", scaled(SOLID, 2), scaled(FLAT, 10), {15, 25, 3.5}},
        CompatibleCase{
            "ThreeDimensionsIgnoreTheCompoundFactor", scaled(SOLID, 2, 100), scaled(SOLID, 10, 1000), {15, 25, 35}}),
    [](const auto& pair) { return std::string(pair.param.name); });

// 3 * (0.1 / 0.3) and (3 * 0.1) / 0.3 differ in the last place.
TEST_F(CoordTransformerTest, FormsTheQuotientOfTheFactorsFirst) {
    volatile double tenth = 0.1;
    volatile double threeTenths = 0.3;
    const double expected = 3 * (tenth / threeTenths);
    ASSERT_NE(expected, (3 * tenth) / threeTenths);
    const Point horizontal = transformed(scaled(UTM, threeTenths), scaled(UTM, tenth), {3, 3});
    EXPECT_EQ(horizontal, (Point{expected, expected}));
    EXPECT_EQ(transformed(scaled(SOLID, threeTenths), scaled(SOLID, tenth), {3, 3, 3}).z, expected);
}

// The point (3, 5, 7) as the transformation receives it, and the final result when the transformation returns (11, 13,
// 17).
struct TransformedCase {
    const char* name;
    CrsCase source;
    CrsCase target;
    Point in;
    Point out;
};

void PrintTo(const TransformedCase& pair, std::ostream* stream) { *stream << pair.name; }

class TransformedCrsTest : public CoordTransformerTest, public testing::WithParamInterface<TransformedCase> {
protected:
    TransformedCrsTest() { transformer.result = {11, 13, 17}; }
    const TransformedCase& pair = GetParam();
};

TEST_P(TransformedCrsTest, MovesPointsWithAndWithoutHeights) {
    EXPECT_EQ(transformed(pair.source, pair.target, {3, 5, 7}), pair.out);
    EXPECT_EQ(transformed(pair.source, pair.target, {3, 5}), (Point{pair.out.x, pair.out.y}));
    ASSERT_EQ(transformer.calls.size(), 2U);
    EXPECT_EQ(transformer.calls.front().point, pair.in);
    EXPECT_EQ(transformer.calls.back().point, (Point{pair.in.x, pair.in.y}));
}

const CrsCase GAUSS{31467};

Point inRadians(double x, double y, double z) { return {x * RADIANS_PER_DEGREE, y * RADIANS_PER_DEGREE, z}; }
Point inDegrees(double x, double y, double z) { return {x * DEGREES_PER_RADIAN, y * DEGREES_PER_RADIAN, z}; }

// The transformation exchanges the axes.
INSTANTIATE_TEST_SUITE_P(
    All, TransformedCrsTest,
    testing::Values(
        TransformedCase{"Projected", UTM, GAUSS, {3, 5, 7}, {11, 13, 17}},
        TransformedCase{"InAnyAxisOrder", northEast(UTM), GAUSS, {3, 5, 7}, {11, 13, 17}},
        TransformedCase{"ScaledSource", scaled(UTM, 10), GAUSS, {3.0 / 10, 5.0 / 10, 7}, {11, 13, 17}},
        TransformedCase{"ScaledTarget", UTM, scaled(GAUSS, 10), {3, 5, 7}, {11.0 / 10, 13.0 / 10, 17}},
        TransformedCase{"CompoundFactorOfAFlatCrs", scaled(UTM, 1, 8), scaled(GAUSS, 1, 8), {3, 5, 7}, {11, 13, 17}},
        TransformedCase{"CompoundSource", compound(scaled(UTM, 2, 8)), GAUSS, {1.5, 2.5, 56}, {11, 13, 17}},
        TransformedCase{"CompoundTarget", UTM, compound(scaled(GAUSS, 2, 8)), {3, 5, 7}, {5.5, 6.5, 136}},
        TransformedCase{"GeographicSource", FLAT, GAUSS, inRadians(3, 5, 7), {11, 13, 17}},
        TransformedCase{"GeographicTarget", UTM, FLAT, {3, 5, 7}, inDegrees(11, 13, 17)},
        TransformedCase{"GeographicBoth", FLAT, {4258}, inRadians(3, 5, 7), inDegrees(11, 13, 17)},
        TransformedCase{
            "ScaledGeographicSource", scaled(FLAT, 10), GAUSS, inRadians(3.0 / 10, 5.0 / 10, 7), {11, 13, 17}},
        TransformedCase{
            "ScaledGeographicTarget", UTM, scaled(FLAT, 10), {3, 5, 7}, inDegrees(11.0 / 10, 13.0 / 10, 17)},
        TransformedCase{
            "ThreeDimensionalSource", scaled(SOLID, 10), GAUSS, inRadians(3.0 / 10, 5.0 / 10, 70), {11, 13, 17}},
        TransformedCase{
            "ThreeDimensionalTarget", UTM, scaled(SOLID, 10), {3, 5, 7}, inDegrees(11.0 / 10, 13.0 / 10, 170)}),
    [](const auto& pair) { return std::string(pair.param.name); });

TEST_F(CoordTransformerTest, PassesTheTwoCrsOn) {
    const FakeCrs source = crsOf(UTM);
    const FakeCrs target = crsOf(GAUSS);
    double x = 1;
    double y = 2;
    transformer.transformTo(&source, &target, x, y, nullptr);
    ASSERT_EQ(transformer.calls.size(), 1U);
    EXPECT_EQ(transformer.calls.front().source, &source);
    EXPECT_EQ(transformer.calls.front().target, &target);
}

TEST_F(CoordTransformerTest, LeavesThePointAsItWasBeforeAFailure) {
    transformer.fails = true;
    const FakeCrs source = crsOf(scaled(FLAT, 10));
    const FakeCrs target = crsOf(compound(scaled(UTM, 10, 8)));
    Point point{3, 5, 7};
    EXPECT_THROW(transformer.transformTo(&source, &target, point.x, point.y, &point.z), std::runtime_error);
    EXPECT_EQ(point, inRadians(3.0 / 10, 5.0 / 10, 7));
}

TEST_F(CoordTransformerTest, LetsNumbersThroughThatAreNone) {
    const double infinity = std::numeric_limits<double>::infinity();
    EXPECT_EQ(transformed(UTM, UTM, {infinity, -infinity, 7}), (Point{infinity, -infinity, 7}));
    EXPECT_TRUE(std::isnan(transformed(UTM, scaled(UTM, 2), {std::nan(""), 5, 7}).x));
    transformed(UTM, GAUSS, {infinity, 5, 7});
    EXPECT_EQ(transformer.calls.front().point, (Point{infinity, 5, 7}));
}

}  // namespace
}  // namespace CoordinateTransformation
