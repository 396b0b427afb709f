#include "tools/projdir/DefinitionMaker.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tools/projdir/Geodesy.h"

namespace ProjDir {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

class DefinitionMakerTest : public testing::Test {
protected:
    static const RegistryCrs& find(unsigned int code) {
        static const ProjContext context;
        static const std::vector<RegistryCrs> registry = readRegistry(context);
        for (const RegistryCrs& crs : registry)
            if (crs.code == code) return crs;
        throw std::runtime_error("no CRS " + std::to_string(code));
    }

    static CrsOutcome make(unsigned int code, const DefinitionOptions& options = {}) {
        DefinitionMaker maker(options);
        return maker.make(find(code));
    }

    static std::string textOf(unsigned int code, const DefinitionOptions& options = {}) {
        const CrsOutcome outcome = make(code, options);
        return outcome.definition ? outcome.definition->text : "left out: " + outcome.omission;
    }
};

// Parameters as the EPSG dataset publishes them: of the shifts of these datums PROJ takes these.
TEST_F(DefinitionMakerTest, TakesThePublishedShiftThatPROJUses) {
    EXPECT_THAT(textOf(27700), HasSubstr("+ellps=airy +towgs84=446.448,-125.157,542.06,0.15,0.247,0.842,-20.489 "));
    EXPECT_THAT(textOf(31370),
                HasSubstr("+ellps=intl +towgs84=-106.8686,52.2978,-103.7239,0.3366,-0.457,1.8422,-1.2747 "));
    EXPECT_THAT(textOf(21781), HasSubstr("+ellps=bessel +towgs84=674.374,15.056,405.346,0,0,0,0 "));
    EXPECT_THAT(textOf(28992), HasSubstr("+towgs84=565.4171,50.3319,465.5524,"));
}

TEST_F(DefinitionMakerTest, WritesANullShiftWhereItIsPublished) {
    EXPECT_EQ(textOf(25832), "+proj=utm +zone=32 +ellps=GRS80 +towgs84=0,0,0,0,0,0,0 +units=m +no_defs");
    EXPECT_EQ(textOf(4936), "+proj=geocent +ellps=GRS80 +towgs84=0,0,0,0,0,0,0 +units=m +no_defs");
}

TEST_F(DefinitionMakerTest, WritesNoShiftWherePROJKnowsNone) {
    const CrsOutcome outcome = make(2334);  // Xian 1980
    EXPECT_EQ(outcome.definition->text,
              "+proj=tmerc +lat_0=0 +lon_0=117 +k=1 +x_0=20500000 +y_0=0 +ellps=IAU76 +units=m +no_defs");
    EXPECT_EQ(outcome.definition->shift.kind, ShiftKind::UNKNOWN);
    EXPECT_TRUE(outcome.definition->hasUnknownPart);
}

TEST_F(DefinitionMakerTest, WritesWgs84ByItsName) {
    EXPECT_EQ(textOf(4326), "+proj=longlat +datum=WGS84 +no_defs");
    EXPECT_EQ(textOf(4978), "+proj=geocent +datum=WGS84 +units=m +no_defs");
    EXPECT_EQ(textOf(3857), "+proj=webmerc +datum=WGS84 +units=m +no_defs");
    EXPECT_EQ(make(4326).definition->shift.kind, ShiftKind::WGS_84);
}

// PROJ uses a grid all over the zone; the published parameters stay three metres away.
TEST_F(DefinitionMakerTest, FitsParametersToAGrid) {
    const CrsOutcome outcome = make(31467);
    EXPECT_EQ(outcome.definition->shift.kind, ShiftKind::FITTED);
    EXPECT_LT(outcome.definition->shift.residual.largest, 3);
    EXPECT_GT(outcome.definition->shift.residual.largest, 0.1);
}

TEST_F(DefinitionMakerTest, TakesTheGridWhenItMay) {
    EXPECT_EQ(textOf(31467, {true, false}),
              "+proj=tmerc +lat_0=0 +lon_0=9 +k=1 +x_0=3500000 +y_0=0 +ellps=bessel +nadgrids=BETA2007.gsb +units=m "
              "+no_defs");
    EXPECT_THAT(textOf(27700, {true, false}), HasSubstr("+towgs84="));
}

// Beside its grid PROJ uses parameters in a corner of the area, where the grid has no values.
TEST_F(DefinitionMakerTest, TakesNoGridThatDoesNotReachAllOverTheArea) {
    EXPECT_THAT(textOf(4314, {true, false}), HasSubstr("+towgs84="));
}

TEST_F(DefinitionMakerTest, KeepsTheMeridianAndTheUnits) {
    EXPECT_THAT(textOf(27572), HasSubstr("+towgs84=-168,-60,320,0,0,0,0 +pm=paris +units=m"));
    EXPECT_THAT(textOf(32040), HasSubstr("+units=us-ft"));
}

TEST_F(DefinitionMakerTest, KnowsTheAxisOrder) {
    EXPECT_TRUE(make(31467).definition->isNorthFirst);
    EXPECT_FALSE(make(25832).definition->isNorthFirst);
    EXPECT_FALSE(make(2053).definition->isNorthFirst);
}

TEST_F(DefinitionMakerTest, SaysWhyACrsIsLeftOut) {
    EXPECT_THAT(textOf(4807), StartsWith("left out: its angular unit is the grad"));
    EXPECT_EQ(textOf(5701), "left out: a vertical CRS has no classic definition");
    EXPECT_EQ(textOf(4296), "left out: it has no area of use");
}

TEST_F(DefinitionMakerTest, CountsTheOperationsOfTheArea) {
    const CrsOutcome outcome = make(5514);  // PROJ has one operation for Czechia, another for Slovakia
    ASSERT_GE(outcome.shares.size(), 2U);
    EXPECT_GE(outcome.shares[0].points, outcome.shares[1].points);
    std::size_t points = 0;
    for (const OperationShare& share : outcome.shares) points += share.points;
    EXPECT_EQ(points, 81U);
}

TEST_F(DefinitionMakerTest, LooksCloserWherePROJKnowsAnOperationInACornerOnly) {
    const CrsOutcome outcome = make(2164);  // Locodjo 1965, whose operation reaches over a part of Ivory Coast
    std::size_t points = 0;
    for (const OperationShare& share : outcome.shares) points += share.points;
    EXPECT_EQ(points, 625U);
    EXPECT_EQ(outcome.definition->shift.kind, ShiftKind::PUBLISHED);
    EXPECT_TRUE(outcome.definition->hasUnknownPart);
}

TEST_F(DefinitionMakerTest, MakesCheckPointsOnDemand) {
    EXPECT_TRUE(make(25832).checkPoints.empty());
    const CrsOutcome outcome = make(31467, {false, true});
    ASSERT_EQ(outcome.checkPoints.size(), 64U);
    EXPECT_GT(outcome.checkPoints.front().crs[0], 5e6);  // northing first
    EXPECT_TRUE(outcome.checkPoints.front().isKnown);
    EXPECT_LT(distanceInMetres(outcome.checkPoints.front().wgs84, {7.5, 47.27}), 1);
}

TEST_F(DefinitionMakerTest, DoesNotDependOnWhatItMadeBefore) {
    DefinitionMaker maker({});
    for (const unsigned int code : {4314U, 31466U, 31467U, 31468U})
        EXPECT_EQ(maker.make(find(code)).definition->text, textOf(code)) << code;
}

}  // namespace
}  // namespace ProjDir
