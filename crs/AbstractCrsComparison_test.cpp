#include <cmath>
#include <functional>
#include <limits>

#include <gtest/gtest.h>

#include "CoordinateTransformation/AbstractCrs.h"
#include "tests/support/AbstractCrsTest.h"

namespace CoordinateTransformation {
namespace {

constexpr double NOT_A_NUMBER = std::numeric_limits<double>::quiet_NaN();

struct Comparison {
    bool equal;
    bool codeCompatible;
    bool compatible;
};

void expectCompare(const AbstractCrs& one, const AbstractCrs& other, const Comparison& expected) {
    EXPECT_EQ(one == other, expected.equal);
    EXPECT_EQ(one != other, !expected.equal);
    EXPECT_EQ(one.isEqual(&other), expected.equal);
    EXPECT_EQ(one.isCodeCompatible(&other), expected.codeCompatible);
    EXPECT_EQ(one.isCompatible(&other), expected.compatible);
}

void expectCompareBothWays(const AbstractCrs& one, const AbstractCrs& other, const Comparison& expected) {
    expectCompare(one, other, expected);
    expectCompare(other, one, expected);
}

constexpr Comparison ALIKE = {true, true, true};
constexpr Comparison OTHER_CODE = {false, false, false};
constexpr Comparison ONLY_CODE_COMPATIBLE = {false, true, false};
constexpr Comparison EQUAL_BUT_INCOMPATIBLE = {true, true, false};
constexpr Comparison COMPATIBLE_BUT_UNEQUAL = {false, true, true};

struct Difference {
    const char* field;
    std::function<void(BareCrs&)> make;
    Comparison expected;
};

TEST_F(AbstractCrsTest, ComparesCompoundsThatDifferInOneField) {
    const Difference differences[] = {
        {"none", [](BareCrs&) {}, ALIKE},
        {"primaryCode", [](BareCrs& crs) { crs.primaryCode = 25832; }, OTHER_CODE},
        {"secCompoundCode", [](BareCrs& crs) { crs.secCompoundCode = 5783; }, COMPATIBLE_BUT_UNEQUAL},
        {"secCompoundCode, 0", [](BareCrs& crs) { crs.secCompoundCode = 0; }, COMPATIBLE_BUT_UNEQUAL},
        {"primaryDim", [](BareCrs& crs) { crs.primaryDim = 2; }, ONLY_CODE_COMPATIBLE},
        {"compoundDim", [](BareCrs& crs) { crs.compoundDim = 0; }, ONLY_CODE_COMPATIBLE},
        {"axis order", [](BareCrs& crs) { crs.axisOrderEastNorthOrLonLat = true; }, ONLY_CODE_COMPATIBLE},
        {"alias", [](BareCrs& crs) { crs.alias = "other"; }, COMPATIBLE_BUT_UNEQUAL},
        {"alias, case", [](BareCrs& crs) { crs.alias = "Alias"; }, COMPATIBLE_BUT_UNEQUAL},
        {"alias, blank", [](BareCrs& crs) { crs.alias = "alias "; }, COMPATIBLE_BUT_UNEQUAL},
        {"alias, none", [](BareCrs& crs) { crs.alias.clear(); }, COMPATIBLE_BUT_UNEQUAL},
        {"identifier", [](BareCrs& crs) { crs.identifier = "other"; }, ALIKE},
        {"epsgVersion", [](BareCrs& crs) { crs.epsgVersion = "7"; }, ALIKE},
        {"primary factor", [](BareCrs& crs) { crs.primaryScaleFactor = 2; }, EQUAL_BUT_INCOMPATIBLE},
        {"primary factor, last bit", [](BareCrs& crs) { crs.primaryScaleFactor = std::nextafter(2.5, 3); },
         EQUAL_BUT_INCOMPATIBLE},
        {"primary factor, NaN", [](BareCrs& crs) { crs.primaryScaleFactor = NOT_A_NUMBER; }, EQUAL_BUT_INCOMPATIBLE},
        {"secondary factor", [](BareCrs& crs) { crs.secCompoundScaleFactor = 2; }, EQUAL_BUT_INCOMPATIBLE},
        {"secondary factor, last bit", [](BareCrs& crs) { crs.secCompoundScaleFactor = std::nextafter(0.3048, 1); },
         EQUAL_BUT_INCOMPATIBLE},
        {"secondary factor, NaN", [](BareCrs& crs) { crs.secCompoundScaleFactor = NOT_A_NUMBER; },
         EQUAL_BUT_INCOMPATIBLE},
    };
    for (const Difference& difference : differences) {
        SCOPED_TRACE(difference.field);
        BareCrs changed = givenFilled();
        difference.make(changed);
        expectCompareBothWays(givenFilled(), changed, difference.expected);
    }
}

TEST_F(AbstractCrsTest, ComparesOnlyTheFactorsThatCountInItsDimension) {
    const struct {
        Shape shape;
        Difference difference;
    } rows[] = {
        {{25832, 0, 2, 0}, {"secondary factor", [](BareCrs& crs) { crs.secCompoundScaleFactor = 2; }, ALIKE}},
        {{25832, 0, 2, 0}, {"NaN", [](BareCrs& crs) { crs.secCompoundScaleFactor = NOT_A_NUMBER; }, ALIKE}},
        {{4979, 0, 3, 0}, {"secondary factor", [](BareCrs& crs) { crs.secCompoundScaleFactor = 2; }, ALIKE}},
        {{4979, 0, 3, 0}, {"primary factor", [](BareCrs& crs) { crs.primaryScaleFactor = 2; }, EQUAL_BUT_INCOMPATIBLE}},
        {{27700, 5701, 2, 1}, {"2D", [](BareCrs& crs) { crs.forceDim2D(); }, ONLY_CODE_COMPATIBLE}},
        // Compatibility depends only on the total dimension and the effective compound factor.
        {{27700, 5701, 2, 1},
         {"3+0 dimensions",
          [](BareCrs& crs) {
              crs.primaryDim = 3;
              crs.compoundDim = 0;
          },
          COMPATIBLE_BUT_UNEQUAL}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << row.shape << ", " << row.difference.field);
        BareCrs changed = given(row.shape);
        row.difference.make(changed);
        expectCompareBothWays(given(row.shape), changed, row.difference.expected);
    }
}

TEST_F(AbstractCrsTest, DoesNotCompareCreatorAndTransformer) {
    BareCrs one(creator, transformer);
    BareCrs other(otherCreator, otherTransformer);
    expectCompareBothWays(one, other, ALIKE);
}

TEST_F(AbstractCrsTest, IsNeverCompatibleWhereAFactorThatCountsIsNotANumber) {
    const struct {
        Shape shape;
        double primary;
        double secondary;
        Comparison expected;
    } rows[] = {
        {{25832, 0, 2, 0}, NOT_A_NUMBER, 1, EQUAL_BUT_INCOMPATIBLE},
        {{4979, 0, 3, 0}, NOT_A_NUMBER, 1, EQUAL_BUT_INCOMPATIBLE},
        {{27700, 5701, 2, 1}, 1, NOT_A_NUMBER, EQUAL_BUT_INCOMPATIBLE},
        {{27700, 5701, 2, 0}, 1, NOT_A_NUMBER, ALIKE},
        {{4979, 0, 3, 0}, 1, NOT_A_NUMBER, ALIKE},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.shape);
        BareCrs crs = given(row.shape);
        crs.setScaleFactors(row.primary, row.secondary);
        const BareCrs twin = crs;
        expectCompareBothWays(crs, twin, row.expected);
        expectCompare(crs, crs, row.expected);
    }
}

TEST_F(AbstractCrsTest, ComparesCodesAndTheTwoDimensionsOfWgs84) {
    constexpr Shape WGS84_2D = {4326, 0, 2, 0};
    constexpr Shape WGS84_3D = {4979, 0, 3, 0};
    constexpr Shape WGS84_3D_FORCED_TO_2D = {4979, 0, 2, 0};
    const struct {
        Shape one;
        Shape other;
        Comparison expected;
    } rows[] = {
        {WGS84_2D, WGS84_2D, ALIKE},
        {WGS84_3D, WGS84_3D, ALIKE},
        {WGS84_2D, WGS84_3D, ONLY_CODE_COMPATIBLE},
        {WGS84_2D, WGS84_3D_FORCED_TO_2D, COMPATIBLE_BUT_UNEQUAL},
        {WGS84_3D, {4326, 5773, 2, 1}, COMPATIBLE_BUT_UNEQUAL},
        {WGS84_2D, {4258, 0, 2, 0}, OTHER_CODE},
        {WGS84_3D, {4258, 0, 2, 0}, OTHER_CODE},
        {WGS84_3D, {4937, 0, 3, 0}, OTHER_CODE},
        {WGS84_2D, {0, 0, 2, 0}, OTHER_CODE},
        {WGS84_3D, {0, 1, 2, 0}, OTHER_CODE},
        {WGS84_2D, {5773, 4979, 2, 0}, OTHER_CODE},
        {{0, 0, 2, 0}, {0, 0, 2, 0}, ALIKE},
        {{0, 0, 2, 0}, {0, 1, 2, 0}, COMPATIBLE_BUT_UNEQUAL},
        {{4258, 0, 2, 0}, {4937, 0, 3, 0}, OTHER_CODE},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << row.one << " and " << row.other);
        expectCompareBothWays(given(row.one), given(row.other), row.expected);
    }
}

TEST_F(AbstractCrsTest, IsEqualToItsCounterpartOnceInItsDimension) {
    const BareCrs flat = given({4326, 0, 2, 0});
    const BareCrs spatial = given({4979, 0, 3, 0});
    BareCrs raised = flat;
    raised.setDim(3);
    expectCompareBothWays(raised, spatial, ALIKE);
    BareCrs lowered = spatial;
    lowered.setDim(2);
    expectCompareBothWays(lowered, flat, ALIKE);
}

}  // namespace
}  // namespace CoordinateTransformation
