#include "CoordinateTransformation/AbstractCrs.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <limits>
#include <memory>
#include <type_traits>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/AbstractCrsTest.h"

namespace CoordinateTransformation {
namespace {

static_assert(std::is_abstract_v<AbstractCrs>);
static_assert(std::has_virtual_destructor_v<AbstractCrs>);
static_assert(!std::is_default_constructible_v<BareCrs>);
static_assert(std::is_same_v<decltype(std::declval<const AbstractCrs&>().copy()), AbstractCrs*>);
static_assert(std::is_same_v<decltype(std::declval<BareCrs&>().primaryCode), std::uint32_t>);

constexpr unsigned int LARGEST = std::numeric_limits<unsigned int>::max();

struct Codes {
    unsigned int primary;
    unsigned int secondary;
};

// A pointer to a virtual member contains the offset of its slot, plus one on some processors.
template <typename Member>
std::size_t slotOf(Member member) {
    std::size_t offset = 0;
    static_assert(sizeof member >= sizeof offset);
    std::memcpy(&offset, &member, sizeof offset);
    return offset / sizeof(void*);
}

// The order of the slots is part of the binary interface. The destructor, the second operation, has two slots.
TEST(AbstractCrsLayoutTest, KeepsTheOrderOfItsVirtualOperations) {
    EXPECT_EQ(slotOf(&AbstractCrs::copy), 0U);
    EXPECT_EQ(slotOf(&AbstractCrs::getUnitEquivalentInM), 3U);
    EXPECT_EQ(slotOf(&AbstractCrs::isCartesian), 4U);
    EXPECT_EQ(slotOf(&AbstractCrs::isGeographic), 5U);
    EXPECT_EQ(slotOf(&AbstractCrs::operator=), 6U);
    EXPECT_EQ(slotOf(&AbstractCrs::setDimFromCodes), 7U);
    EXPECT_EQ(slotOf(&AbstractCrs::setCode), 8U);
    EXPECT_EQ(slotOf(&AbstractCrs::setEpsgStandardAxisOrder), 9U);
    EXPECT_EQ(slotOf(&AbstractCrs::setCustomProperties), 10U);
    EXPECT_EQ(slotOf(&AbstractCrs::forceDim2D), 11U);
    EXPECT_EQ(slotOf(&AbstractCrs::setAxisOrderEastNorthOrLonLat), 12U);
    EXPECT_EQ(slotOf(&AbstractCrs::setDim), 13U);
}

TEST_F(AbstractCrsTest, StartsUnknownTwoDimensionalAndEastNorth) {
    const BareCrs crs(creator, transformer);
    EXPECT_EQ(shapeOf(crs), (Shape{0, 0, 2, 0}));
    EXPECT_EQ(crs.identifier, "");
    EXPECT_TRUE(crs.axisOrderEastNorthOrLonLat);
    EXPECT_EQ(crs.alias, "");
    EXPECT_EQ(crs.epsgVersion, "");
    EXPECT_EQ(crs.primaryScaleFactor, 1.0);
    EXPECT_EQ(crs.secCompoundScaleFactor, 1.0);
    EXPECT_EQ(&crs.getCreator(), &creator);
    EXPECT_EQ(&crs.transformer, &transformer);
}

TEST_F(AbstractCrsTest, CopiesEveryField) {
    const BareCrs source = givenFilled();
    const BareCrs copied(source);
    expectEveryFieldEqual(copied, source);
    const std::unique_ptr<BareCrs> owned(source.copy());
    EXPECT_NE(owned.get(), &source);
    expectEveryFieldEqual(*owned, source);
}

TEST_F(AbstractCrsTest, AssignsAllButIdentifierCreatorAndTransformer) {
    BareCrs target(otherCreator, otherTransformer);
    target.identifier = "EPSG:4326";
    const BareCrs targetBefore = target;
    const BareCrs source = givenFilled();
    AbstractCrs& targetAsBase = target;
    EXPECT_EQ(&(targetAsBase = source), &target);
    expectAssignedFieldsEqual(target, source);
    expectKeptFieldsEqual(target, targetBefore);
}

TEST_F(AbstractCrsTest, AssignsIntoAFilledTarget) {
    BareCrs target = givenFilled();
    const BareCrs source(otherCreator, otherTransformer);
    AbstractCrs& targetAsBase = target;
    targetAsBase = source;
    expectAssignedFieldsEqual(target, source);
    expectKeptFieldsEqual(target, givenFilled());
}

TEST_F(AbstractCrsTest, AssignmentToItselfChangesNothing) {
    BareCrs crs = givenFilled();
    AbstractCrs& crsAsBase = crs;
    const AbstractCrs& same = crs;
    EXPECT_EQ(&(crsAsBase = same), &crs);
    expectEveryFieldEqual(crs, givenFilled());
}

TEST_F(AbstractCrsTest, AnswersItsFields) {
    const BareCrs crs = givenFilled();
    EXPECT_EQ(crs.getPrimaryCode(), 27700U);
    EXPECT_EQ(crs.getSecCompoundCode(), 5701U);
    EXPECT_EQ(crs.getPrimaryScaleFactor(), 2.5);
    EXPECT_EQ(crs.getAlias(), "alias");
    EXPECT_EQ(crs.getEpsgVersion(), "6.12");
}

TEST_F(AbstractCrsTest, ReadsItsFivePropertiesAtOnce) {
    for (const bool eastNorth : {false, true}) {
        BareCrs crs = givenFilled();
        crs.axisOrderEastNorthOrLonLat = eastNorth;
        unsigned int primary = 0;
        unsigned int secondary = 0;
        bool flag = !eastNorth;
        double primaryScale = 0;
        double secCompoundScale = 0;
        crs.get(primary, secondary, flag, primaryScale, secCompoundScale);
        EXPECT_EQ(primary, 27700U);
        EXPECT_EQ(secondary, 5701U);
        EXPECT_EQ(flag, eastNorth);
        EXPECT_EQ(primaryScale, 2.5);
        EXPECT_EQ(secCompoundScale, 0.3048);
    }
}

TEST_F(AbstractCrsTest, ReadsTheStoredSecondaryFactorEvenInTwoDimensions) {
    BareCrs crs = given({25832, 0, 2, 0});
    crs.setSecCompoundScaleFactor(0.3048);
    unsigned int code = 0;
    bool flag = false;
    double primaryScale = 0;
    double secCompoundScale = 0;
    crs.get(code, code, flag, primaryScale, secCompoundScale);
    EXPECT_EQ(secCompoundScale, 0.3048);
}

// Every setter changes its own field and no other.
TEST_F(AbstractCrsTest, StoresOneFieldPerSetter) {
    const struct {
        const char* setter;
        std::function<void(BareCrs&)> call;
        std::function<void(BareCrs&)> expectedChange;
    } rows[] = {
        {"setAlias", [](BareCrs& crs) { crs.setAlias("CRS:84"); }, [](BareCrs& crs) { crs.alias = "CRS:84"; }},
        {"setAlias, empty", [](BareCrs& crs) { crs.setAlias(""); }, [](BareCrs& crs) { crs.alias.clear(); }},
        {"setEpsgVersion", [](BareCrs& crs) { crs.setEpsgVersion("7"); }, [](BareCrs& crs) { crs.epsgVersion = "7"; }},
        {"setPrimaryScaleFactor", [](BareCrs& crs) { crs.setPrimaryScaleFactor(-4); },
         [](BareCrs& crs) { crs.primaryScaleFactor = -4; }},
        {"setSecCompoundScaleFactor", [](BareCrs& crs) { crs.setSecCompoundScaleFactor(5); },
         [](BareCrs& crs) { crs.secCompoundScaleFactor = 5; }},
        {"setScaleFactors", [](BareCrs& crs) { crs.setScaleFactors(6, 7); },
         [](BareCrs& crs) {
             crs.primaryScaleFactor = 6;
             crs.secCompoundScaleFactor = 7;
         }},
        {"setAxisOrderEastNorthOrLonLat, true", [](BareCrs& crs) { crs.setAxisOrderEastNorthOrLonLat(true); },
         [](BareCrs& crs) { crs.axisOrderEastNorthOrLonLat = true; }},
        {"setAxisOrderEastNorthOrLonLat, false", [](BareCrs& crs) { crs.setAxisOrderEastNorthOrLonLat(false); },
         [](BareCrs& crs) { crs.axisOrderEastNorthOrLonLat = false; }},
        {"forceWmsAxisOrder", [](BareCrs& crs) { crs.forceWmsAxisOrder(); },
         [](BareCrs& crs) { crs.axisOrderEastNorthOrLonLat = true; }},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.setter);
        BareCrs crs = givenFilled();
        BareCrs expected = givenFilled();
        row.call(crs);
        row.expectedChange(expected);
        expectEveryFieldEqual(crs, expected);
    }
}

TEST_F(AbstractCrsTest, AnswersTheAxisOrderUnderBothNames) {
    BareCrs crs(creator, transformer);
    for (const bool eastNorth : {false, true, true, false}) {
        crs.setAxisOrderEastNorthOrLonLat(eastNorth);
        EXPECT_EQ(crs.isAxisOrderEastNorthOrLonLat(), eastNorth);
        EXPECT_EQ(crs.isWmsAxisOrder(), eastNorth);
    }
    crs.forceWmsAxisOrder();
    EXPECT_TRUE(crs.isWmsAxisOrder());
    crs.forceWmsAxisOrder();
    EXPECT_TRUE(crs.isWmsAxisOrder());
}

TEST_F(AbstractCrsTest, DerivesDimensionAndCompoundScaleFactor) {
    constexpr double primary = 2.5;
    constexpr double secondary = 0.3048;
    const struct {
        Shape shape;
        unsigned int dim;
        double compoundScaleFactor;
    } rows[] = {
        {{25832, 0, 2, 0}, 2, 1.0},
        {{4326, 0, 2, 0}, 2, 1.0},
        {{4979, 0, 3, 0}, 3, primary},
        {{27700, 5701, 2, 1}, 3, secondary},
        {{27700, 5701, 2, 0}, 2, 1.0},
        {{27700, 0, 2, 1}, 3, secondary},
        {{27700, 5701, 3, 0}, 3, primary},
        {{4979, 5773, 3, 1}, 4, secondary},
        {{0, 1, 2, 0}, 2, 1.0},
        {{0, 0, 1, 1}, 2, 1.0},
    };
    for (const auto& row : rows) {
        BareCrs crs = given(row.shape);
        crs.setScaleFactors(primary, secondary);
        EXPECT_EQ(crs.getDim(), row.dim) << row.shape;
        EXPECT_EQ(crs.getCompoundScaleFactor(), row.compoundScaleFactor) << row.shape;
    }
}

TEST_F(AbstractCrsTest, DistinguishesUnknownDefaultAndConcrete) {
    const struct {
        Codes codes;
        bool unknown;
        bool isDefault;
    } rows[] = {
        {{0, 0}, true, false},     {{0, 1}, false, true},        {{0, 2}, false, true},  {{0, LARGEST}, false, true},
        {{4326, 0}, false, false}, {{4326, 5773}, false, false}, {{1, 0}, false, false}, {{LARGEST, 0}, false, false},
    };
    for (const auto& row : rows) {
        const BareCrs crs = given({row.codes.primary, row.codes.secondary, 2, 0});
        EXPECT_EQ(crs.isUnknown(), row.unknown) << row.codes.primary << '*' << row.codes.secondary;
        EXPECT_EQ(crs.isDefault(), row.isDefault) << row.codes.primary << '*' << row.codes.secondary;
    }
}

TEST_F(AbstractCrsTest, BecomesUnknownOrDefaultByItsCodesAlone) {
    BareCrs crs = givenFilled();
    BareCrs expected = givenFilled();
    crs.setUnknown();
    expected.primaryCode = 0;
    expected.secCompoundCode = 0;
    expectEveryFieldEqual(crs, expected);
    crs.setDefault();
    expected.secCompoundCode = 1;
    expectEveryFieldEqual(crs, expected);
    EXPECT_FALSE(crs.isUnknown());
    EXPECT_TRUE(crs.isDefault());
    crs.setUnknown();
    EXPECT_TRUE(crs.isUnknown());
    EXPECT_FALSE(crs.isDefault());
}

void expectShapeChange(const BareCrs& before, const BareCrs& after, const Shape& expected) {
    BareCrs expectedCrs = before;
    expectedCrs.primaryCode = expected.primaryCode;
    expectedCrs.secCompoundCode = expected.secCompoundCode;
    expectedCrs.primaryDim = expected.primaryDim;
    expectedCrs.compoundDim = expected.compoundDim;
    expectEveryFieldEqual(after, expectedCrs);
}

TEST_F(AbstractCrsTest, ChangesItsDimensionOnRequest) {
    const struct {
        Shape before;
        unsigned int dim;
        Shape after;
    } rows[] = {
        {{4979, 0, 3, 0}, 2, {4326, 0, 2, 0}},
        {{4979, 0, 2, 0}, 2, {4326, 0, 2, 0}},
        {{4979, 5773, 3, 1}, 2, {4326, 0, 2, 0}},
        {{4979, 5773, 2, 1}, 2, {4326, 0, 2, 0}},
        {{4326, 0, 2, 0}, 3, {4979, 0, 3, 0}},
        {{4326, 5773, 2, 1}, 3, {4979, 0, 3, 0}},
        {{4326, 5773, 2, 1}, 2, {4326, 0, 2, 0}},
        {{27700, 5701, 2, 1}, 2, {27700, 0, 2, 0}},
        {{27700, 5701, 2, 0}, 2, {27700, 0, 2, 0}},
        {{4937, 5773, 3, 1}, 2, {4937, 0, 3, 0}},
        {{0, 1, 2, 0}, 2, {0, 0, 2, 0}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << row.before << " to " << row.dim);
        BareCrs crs = givenFilled();
        static_cast<AbstractCrs&>(crs) = given(row.before);
        const BareCrs before = crs;
        crs.setDim(row.dim);
        expectShapeChange(before, crs, row.after);
    }
}

TEST_F(AbstractCrsTest, IgnoresRequestsForOtherDimensions) {
    const struct {
        Shape shape;
        std::vector<unsigned int> ignored;
    } rows[] = {
        {{4326, 0, 2, 0}, {0, 1, 2, 4, LARGEST}},
        {{4326, 5773, 2, 1}, {0, 1, 4, LARGEST}},
        {{4979, 0, 3, 0}, {0, 1, 3, 4, LARGEST}},
        {{4979, 0, 2, 0}, {0, 1, 3, 4, LARGEST}},
        {{4979, 5773, 3, 1}, {0, 1, 3, 4}},
        {{25832, 0, 2, 0}, {0, 1, 2, 3, 4, LARGEST}},
        {{4937, 0, 3, 0}, {0, 1, 2, 3, 4}},
        {{27700, 5701, 2, 1}, {0, 1, 3, 4, LARGEST}},
        {{0, 0, 2, 0}, {0, 1, 2, 3}},
        {{0, 1, 2, 0}, {0, 1, 3}},
    };
    for (const auto& row : rows) {
        for (const unsigned int dim : row.ignored) {
            SCOPED_TRACE(testing::Message() << row.shape << " to " << dim);
            BareCrs crs = givenFilled();
            static_cast<AbstractCrs&>(crs) = given(row.shape);
            const BareCrs before = crs;
            crs.setDim(dim);
            expectEveryFieldEqual(crs, before);
        }
    }
}

TEST_F(AbstractCrsTest, ForcesTwoDimensionsAndKeepsItsCodes) {
    const struct {
        Shape before;
        Shape after;
    } rows[] = {
        {{4979, 0, 3, 0}, {4979, 0, 2, 0}},
        {{4326, 0, 2, 0}, {4326, 0, 2, 0}},
        {{27700, 5701, 2, 1}, {27700, 5701, 2, 0}},
        {{4979, 5773, 3, 1}, {4979, 5773, 2, 0}},
        {{0, 1, 2, 1}, {0, 1, 2, 0}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.before);
        BareCrs crs = givenFilled();
        static_cast<AbstractCrs&>(crs) = given(row.before);
        crs.setScaleFactors(2.5, 0.3048);
        const BareCrs before = crs;
        crs.forceDim2D();
        expectShapeChange(before, crs, row.after);
        EXPECT_EQ(crs.getDim(), 2U);
        EXPECT_EQ(crs.getCompoundScaleFactor(), 1.0);
    }
}

}  // namespace
}  // namespace CoordinateTransformation
