#include <gtest/gtest.h>
#include <ostream>

#include "proj/classic/PairOperations.h"
#include "tests/support/GroupingLocale.h"

namespace ClassicProj {

bool operator==(const StageText& left, const StageText& right) {
    return left.text == right.text && left.backwards == right.backwards && left.isGridShift == right.isGridShift;
}

void PrintTo(const StageText& stage, std::ostream* stream) {
    *stream << (stage.backwards ? "backwards " : "") << (stage.isGridShift ? "shared " : "") << stage.text;
}

namespace {

using Stages = std::vector<StageText>;

const Ellipsoid WGS_84{6378137.0, 6356752.3142, 0.00669437999};
const Ellipsoid GRS_80{6378137.0, 6356752.3141, 0.00669438002};
const Ellipsoid BESSEL{6377397.155, 6356078.963, 0.00667437223};

const std::string CART_WGS_84 = "+proj=cart +a=6378137 +b=6356752.3142";
const std::string CART_GRS_80 = "+proj=cart +a=6378137 +b=6356752.3141";
const std::string CART_BESSEL = "+proj=cart +a=6377397.155 +b=6356078.963";
const std::string SHIFT =
    "+proj=helmert +convention=position_vector +x=598.1 +y=73.7 +z=418.2 +rx=0.202 +ry=0.045 "
    "+rz=-2.455 +s=6.7";
const std::string TRANSLATION = "+proj=helmert +x=674.374 +y=15.056 +z=405.346";
const std::string NO_TRANSLATION = "+proj=helmert +x=0 +y=0 +z=0";

Definition definitionOf(const char* datum, const Ellipsoid& ellipsoid, const char* step = "") {
    Definition definition;
    definition.isLongLat = *step == '\0';
    definition.step = step;
    definition.datum = readDatum(ParameterList(datum), ellipsoid, WGS_84);
    return definition;
}

// The CRS that pairs are made of; a geographic CRS has no step of its own.
const Definition NO_DATUM = definitionOf("", BESSEL);
const Definition PROJECTED = definitionOf("", WGS_84, "+proj=utm");
const Definition LAMBERT = definitionOf("", WGS_84, "+proj=lcc");
const Definition WORLD = definitionOf("+towgs84=0,0,0", WGS_84);
const Definition WORLD_UTM = definitionOf("+towgs84=0,0,0", WGS_84, "+proj=utm");
const Definition EUROPE = definitionOf("+towgs84=0,0,0", GRS_80);
const Definition UNSHIFTED_BESSEL = definitionOf("+towgs84=0,0,0", BESSEL);
const Definition SHIFTED = definitionOf("+towgs84=598.1,73.7,418.2,0.202,0.045,-2.455,6.7", BESSEL);
const Definition SHIFTED_TMERC =
    definitionOf("+towgs84=598.1,73.7,418.2,0.202,0.045,-2.455,6.7", BESSEL, "+proj=tmerc");
const Definition TRANSLATED = definitionOf("+towgs84=674.374,15.056,405.346", BESSEL);
const Definition GRIDDED = definitionOf("+nadgrids=@a,b", BESSEL);
const Definition GRIDDED_TMERC = definitionOf("+nadgrids=@a,b", BESSEL, "+proj=tmerc");
const Definition OTHERWISE_GRIDDED = definitionOf("+nadgrids=c", BESSEL);
const Definition NULL_GRID = definitionOf("+nadgrids=@null", BESSEL);

StageText step(const std::string& text) { return {text, false, false}; }
StageText backwards(const std::string& text) { return {text, true, false}; }
StageText grids(const std::string& names) { return {"+proj=hgridshift +grids=" + names, false, true}; }
StageText gridsBackwards(const std::string& names) { return {"+proj=hgridshift +grids=" + names, true, true}; }

template <typename... Texts>
StageText pipeline(Texts... steps) {
    return step("+proj=pipeline" + (... + (" +step " + std::string(steps))));
}

std::string inverse(const std::string& text) { return "+inv " + text; }

struct PairCase {
    const char* name;
    const Definition& source;
    const Definition& target;
    Stages stages;
};

void PrintTo(const PairCase& pair, std::ostream* stream) { *stream << pair.name; }

class PairStagesTest : public testing::TestWithParam<PairCase> {};

TEST_P(PairStagesTest, WritesTheClassicOrder) {
    EXPECT_EQ(writeStages(GetParam().source, GetParam().target, false), GetParam().stages);
}

TEST_P(PairStagesTest, NeedsNoMoreWithHeightsWhereThereIsNoGeoid) {
    EXPECT_EQ(writeStages(GetParam().source, GetParam().target, true), GetParam().stages);
}

INSTANTIATE_TEST_SUITE_P(
    WithoutDatumStep, PairStagesTest,
    testing::Values(PairCase{"NothingChanges", NO_DATUM, NO_DATUM, {}},
                    PairCase{"OnlyTheTargetIsProjected", NO_DATUM, PROJECTED, {step("+proj=utm")}},
                    PairCase{"OnlyTheSourceIsProjected", PROJECTED, NO_DATUM, {backwards("+proj=utm")}},
                    PairCase{"BothAreProjected", PROJECTED, LAMBERT, {pipeline("+inv +proj=utm", "+proj=lcc")}},
                    PairCase{"OneHasNoDatum", SHIFTED, NO_DATUM, {}},
                    PairCase{"OneHasNoDatumBesideGrids", NO_DATUM, GRIDDED, {}},
                    PairCase{"BothAreOnWgs84", WORLD, EUROPE, {}},
                    PairCase{"BothHaveOneShift", SHIFTED_TMERC, SHIFTED, {backwards("+proj=tmerc")}},
                    PairCase{"BothHaveTheSameGrids", GRIDDED, GRIDDED_TMERC, {step("+proj=tmerc")}}),
    [](const auto& pair) { return std::string(pair.param.name); });

INSTANTIATE_TEST_SUITE_P(
    Geocentric, PairStagesTest,
    testing::Values(
        PairCase{"FromAShift", SHIFTED, WORLD, {pipeline(CART_BESSEL, SHIFT, inverse(CART_WGS_84))}},
        PairCase{"ToAShift", EUROPE, SHIFTED, {pipeline(CART_GRS_80, inverse(SHIFT), inverse(CART_BESSEL))}},
        PairCase{"FromATranslation", TRANSLATED, WORLD, {pipeline(CART_BESSEL, TRANSLATION, inverse(CART_WGS_84))}},
        PairCase{"FromOneShiftToAnother",
                 SHIFTED,
                 TRANSLATED,
                 {pipeline(CART_BESSEL, SHIFT, inverse(TRANSLATION), inverse(CART_BESSEL))}},
        PairCase{"AZeroShiftOfAnotherEllipsoid",
                 UNSHIFTED_BESSEL,
                 WORLD,
                 {pipeline(CART_BESSEL, NO_TRANSLATION, inverse(CART_WGS_84))}},
        PairCase{"BetweenProjections",
                 SHIFTED_TMERC,
                 WORLD_UTM,
                 {pipeline(inverse("+proj=tmerc"), CART_BESSEL, SHIFT, inverse(CART_WGS_84), "+proj=utm")}}),
    [](const auto& pair) { return std::string(pair.param.name); });

INSTANTIATE_TEST_SUITE_P(
    Grids, PairStagesTest,
    testing::Values(
        PairCase{"OfTheSource", GRIDDED, WORLD, {grids("@a,b")}},
        PairCase{"OfTheTarget", WORLD, GRIDDED, {gridsBackwards("@a,b")}},
        PairCase{"OfBoth", GRIDDED, OTHERWISE_GRIDDED, {grids("@a,b"), gridsBackwards("c")}},
        PairCase{"BetweenProjections",
                 GRIDDED_TMERC,
                 WORLD_UTM,
                 {backwards("+proj=tmerc"), grids("@a,b"), step("+proj=utm")}},
        PairCase{
            "BesideAnotherEllipsoid", GRIDDED, EUROPE, {grids("@a,b"), pipeline(CART_WGS_84, inverse(CART_GRS_80))}},
        PairCase{"BesideAShift",
                 GRIDDED,
                 SHIFTED_TMERC,
                 {grids("@a,b"), pipeline(CART_WGS_84, inverse(SHIFT), inverse(CART_BESSEL), "+proj=tmerc")}},
        PairCase{"FromAShift",
                 SHIFTED,
                 GRIDDED,
                 {pipeline(CART_BESSEL, SHIFT, inverse(CART_WGS_84)), gridsBackwards("@a,b")}},
        PairCase{"ThatShiftNothing", NULL_GRID, WORLD, {}},
        PairCase{"ThatShiftNothingBesideAShift",
                 NULL_GRID,
                 TRANSLATED,
                 {pipeline(CART_WGS_84, inverse(TRANSLATION), inverse(CART_BESSEL))}},
        PairCase{"ThatShiftNothingBesideOthers", NULL_GRID, GRIDDED, {gridsBackwards("@a,b")}}),
    [](const auto& pair) { return std::string(pair.param.name); });

TEST(NullGridTest, HasSeveralSpellings) {
    for (const char* names : {"null", "@null", "null,@null"}) {
        const std::string text = std::string("+nadgrids=") + names;
        EXPECT_EQ(writeStages(definitionOf(text.c_str(), BESSEL), WORLD, false), Stages{}) << names;
    }
    EXPECT_EQ(writeStages(definitionOf("+nadgrids=a,null", BESSEL), WORLD, false), Stages{grids("a,null")});
}

class GeoidTest : public testing::Test {
protected:
    static Definition withGeoid(Definition definition, const std::string& names) {
        definition.geoidGrids = names;
        return definition;
    }
    static StageText geoid(const std::string& names) { return {"+proj=vgridshift +grids=" + names, false, true}; }
    static StageText geoidBackwards(const std::string& names) {
        return {"+proj=vgridshift +grids=" + names, true, true};
    }
};

TEST_F(GeoidTest, CountsOnlyForPointsWithHeights) {
    const Definition source = withGeoid(WORLD, "egm");
    EXPECT_EQ(writeStages(source, WORLD, false), Stages{});
    EXPECT_EQ(writeStages(source, WORLD, true), Stages{geoidBackwards("egm")});
    EXPECT_EQ(writeStages(WORLD, source, false), Stages{});
    EXPECT_EQ(writeStages(WORLD, source, true), Stages{geoid("egm")});
}

TEST_F(GeoidTest, StandsOnBothSidesOfTheDatumStep) {
    const Stages expected = {backwards("+proj=tmerc"), geoidBackwards("german"),
                             pipeline(CART_BESSEL, SHIFT, inverse(CART_WGS_84)), geoid("egm"), step("+proj=utm")};
    EXPECT_EQ(writeStages(withGeoid(SHIFTED_TMERC, "german"), withGeoid(WORLD_UTM, "egm"), true), expected);
}

TEST_F(GeoidTest, StandsOutsideTheGridsOfTheDatum) {
    const Stages expected = {geoidBackwards("german"), grids("@a,b"), geoid("egm")};
    EXPECT_EQ(writeStages(withGeoid(GRIDDED, "german"), withGeoid(WORLD, "egm"), true), expected);
}

TEST(StageNumberTest, AreWrittenForPrecisionAndInAnyLocale) {
    const GroupingLocale locale;
    const Definition source = definitionOf("+towgs84=1234.5,-0.000001,0.1", {6378249.1453260001, 6356514.966, 0.0068});
    const std::string expected =
        "+proj=pipeline +step +proj=cart +a=6378249.145326 +b=6356514.966 +step +proj=helmert +x=1234.5 +y=-1e-06 "
        "+z=0.1 +step +inv " +
        CART_WGS_84;
    EXPECT_EQ(writeStages(source, WORLD, false), Stages{step(expected)});
}

}  // namespace
}  // namespace ClassicProj
