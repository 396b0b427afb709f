// The effect of pj_transform between the datums of two CRS.

#include <cstdint>
#include <cstring>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <proj.h>

#include "proj/classic/ClassicProj.h"
#include "tests/support/ClassicMoves.h"
#include "tests/support/GroupingLocale.h"
#include "tests/support/TemporaryDirectory.h"

namespace ClassicProj {
namespace {

using namespace TestSupport;

const std::string WORLD = "+proj=longlat +datum=WGS84";
const std::string WORLD_GEOCENTRIC = "+proj=geocent +datum=WGS84";
const Point HERE{9, 50, 100};

// A datum given by its definition, with its ellipsoid and shift.
struct ShiftedDatum {
    const char* name;
    const char* definition;
    Figure figure;
    Shift shift;
};

void PrintTo(const ShiftedDatum& datum, std::ostream* stream) { *stream << datum.definition; }

// Within 0.1 mm: PROJ treats the geocentric steps of GRS 80 and WGS 84 as one.
constexpr double TENTH_OF_A_MILLIMETRE = 1e-4;

class DatumShiftTest : public testing::TestWithParam<ShiftedDatum> {
protected:
    void SetUp() override { searchOnlyIn({}); }
    const std::string definition = GetParam().definition;
};

TEST_P(DatumShiftTest, MovesPointsToWgs84) {
    const Point expected = shifted(GetParam().shift, geocentric(GetParam().figure, HERE));
    const Point actual = moved("+proj=longlat " + definition, WORLD_GEOCENTRIC, HERE);
    EXPECT_LT(distance(actual, expected), TENTH_OF_A_MILLIMETRE) << actual << expected;
}

TEST_P(DatumShiftTest, MovesPointsFromWgs84) {
    const Point expected = shiftedBack(GetParam().shift, geocentric(WGS84, HERE));
    const Point actual = moved(WORLD, "+proj=geocent " + definition, HERE);
    EXPECT_LT(distance(actual, expected), TENTH_OF_A_MILLIMETRE) << actual << expected;
}

TEST_P(DatumShiftTest, MovesPointsBetweenGeographicCrs) {
    const Point there = moved("+proj=longlat " + definition, WORLD, HERE);
    const Point expected = shifted(GetParam().shift, geocentric(GetParam().figure, HERE));
    EXPECT_LT(distance(geocentric(WGS84, there), expected), TENTH_OF_A_MILLIMETRE) << there;
}

TEST_P(DatumShiftTest, TakesAMissingHeightForZero) {
    const std::string geographic = "+proj=longlat " + definition;
    const Point flat = moved(geographic, WORLD, {9, 50, -1}, Heights::WITHOUT);
    const Point expected = moved(geographic, WORLD, {9, 50, 0});
    EXPECT_EQ(flat.x, expected.x);
    EXPECT_EQ(flat.y, expected.y);
    EXPECT_EQ(flat.z, -1);
}

// proj.org, "Geodetic datums" of PROJ 7.
INSTANTIATE_TEST_SUITE_P(
    Named, DatumShiftTest,
    testing::Values(
        ShiftedDatum{"GGRS87", "+datum=GGRS87", GRS80, {-199.87, 74.79, 246.62}},
        ShiftedDatum{"Carthage", "+datum=carthage", CLARKE_1880_IGN, {-263, 6, 431}},
        ShiftedDatum{
            "Hermannskogel", "+datum=hermannskogel", BESSEL, {577.326, 90.129, 463.919, 5.137, 1.474, 5.297, 2.4232}},
        ShiftedDatum{
            "Ireland1965", "+datum=ire65", AIRY_MODIFIED, {482.530, -130.596, 564.557, -1.042, -0.214, -0.631, 8.15}},
        ShiftedDatum{
            "NewZealand1949", "+datum=nzgd49", INTERNATIONAL, {59.47, -5.04, 187.44, 0.47, -0.1, 1.024, -4.5993}},
        ShiftedDatum{
            "GreatBritain1936", "+datum=OSGB36", AIRY, {446.448, -125.157, 542.060, 0.1502, 0.2470, 0.8421, -20.4894}}),
    [](const auto& datum) { return std::string(datum.param.name); });

INSTANTIATE_TEST_SUITE_P(
    ByParameters, DatumShiftTest,
    testing::Values(
        ShiftedDatum{"Three", "+ellps=bessel +towgs84=674.374,15.056,405.346", BESSEL, {674.374, 15.056, 405.346}},
        ShiftedDatum{"Seven",
                     "+ellps=bessel +towgs84=598.1,73.7,418.2,0.202,0.045,-2.455,6.7",
                     BESSEL,
                     {598.1, 73.7, 418.2, 0.202, 0.045, -2.455, 6.7}},
        ShiftedDatum{"One", "+ellps=bessel +towgs84=600", BESSEL, {600}},
        ShiftedDatum{"Four", "+ellps=bessel +towgs84=600,70,400,5", BESSEL, {600, 70, 400, 5}},
        ShiftedDatum{"OnlyAScale", "+ellps=intl +towgs84=0,0,0,0,0,0,20", INTERNATIONAL, {0, 0, 0, 0, 0, 0, 20}},
        ShiftedDatum{"AllZeroOnAnotherEllipsoid", "+ellps=bessel +towgs84=0,0,0", BESSEL, {}},
        ShiftedDatum{
            "OfAnEllipsoidByItsAxes", "+a=6378206.4 +b=6356583.8 +towgs84=-8,160,176", CLARKE_1866, {-8, 160, 176}},
        ShiftedDatum{"WithBlanks", "+ellps = bessel +towgs84=598.1, 73.7 ,418.2", BESSEL, {598.1, 73.7, 418.2}},
        ShiftedDatum{"WithTextForNumbers", "+ellps=bessel +towgs84=598.1m,x73.7,418.2", BESSEL, {598.1, 0, 418.2}},
        ShiftedDatum{"BesideADatum", "+datum=GGRS87 +towgs84=1,2,3", GRS80, {1, 2, 3}}),
    [](const auto& datum) { return std::string(datum.param.name); });

TEST(DatumShiftBetweenTwoTest, GoesThroughWgs84) {
    const Shift german{598.1, 73.7, 418.2, 0.202, 0.045, -2.455, 6.7};
    const Shift british{446.448, -125.157, 542.060, 0.1502, 0.2470, 0.8421, -20.4894};
    const Point expected = shiftedBack(british, shifted(german, geocentric(BESSEL, HERE)));
    const Point actual = moved("+proj=longlat +ellps=bessel +towgs84=598.1,73.7,418.2,0.202,0.045,-2.455,6.7",
                               "+proj=geocent +datum=OSGB36", HERE);
    EXPECT_LT(distance(actual, expected), TENTH_OF_A_MILLIMETRE) << actual << expected;
}

// A projection on the sphere of the semi-major axis does not change the ellipsoid of the datum.
TEST(DatumShiftOfAPlateCarreeTest, IsThatOfItsEllipsoid) {
    const std::string plate = "+proj=eqc +ellps=bessel +towgs84=598.1,73.7,418.2,0.202,0.045,-2.455,6.7";
    const Shift shift{598.1, 73.7, 418.2, 0.202, 0.045, -2.455, 6.7};
    const Point there{BESSEL.a * HERE.x * RADIANS, BESSEL.a * HERE.y * RADIANS, HERE.z};
    const Point expected = shifted(shift, geocentric(BESSEL, HERE));
    const Point actual = moved(plate, WORLD_GEOCENTRIC, there);
    EXPECT_LT(distance(actual, expected), TENTH_OF_A_MILLIMETRE) << actual << expected;
    expectNear(moved("+proj=geocent +ellps=bessel +towgs84=598.1,73.7,418.2,0.202,0.045,-2.455,6.7", plate,
                     geocentric(BESSEL, HERE)),
               there, 1e-5);
}

TEST(DatumShiftBetweenTwoTest, ReadsItsNumbersInAnyLocale) {
    const GroupingLocale locale;
    const Point expected = shifted({1674.5, 0.25, 0}, geocentric(INTERNATIONAL, HERE));
    const Point actual = moved("+proj=longlat +ellps=intl +towgs84=1674.5,0.25,0", WORLD_GEOCENTRIC, HERE);
    EXPECT_LT(distance(actual, expected), TENTH_OF_A_MILLIMETRE) << actual << expected;
}

// Without a shift, longitude, latitude and height stay the same, whatever the ellipsoids.
class NoDatumShiftTest : public testing::TestWithParam<std::pair<const char*, const char*>> {};

TEST_P(NoDatumShiftTest, LeavesGeographicCoordinatesAlone) {
    const std::string left = std::string("+proj=longlat ") + GetParam().first;
    const std::string right = std::string("+proj=longlat ") + GetParam().second;
    expectNear(moved(left, right, HERE), HERE, ANGLE_TOLERANCE);
    expectNear(moved(right, left, HERE), HERE, ANGLE_TOLERANCE);
}

INSTANTIATE_TEST_SUITE_P(
    All, NoDatumShiftTest,
    testing::Values(std::pair("+ellps=bessel", "+datum=WGS84"), std::pair("+ellps=bessel", "+ellps=WGS84"),
                    std::pair("+ellps=bessel", "+ellps=bessel +towgs84=598.1,73.7,418.2"),
                    std::pair("+ellps=intl", "+ellps=bessel +nadgrids=BETA2007.gsb"),
                    std::pair("+R=6371000", "+datum=WGS84"), std::pair("+datum=WGS84", "+datum=NAD83"),
                    std::pair("+datum=WGS84", "+ellps=GRS80 +towgs84=0,0,0,0,0,0,0"),
                    std::pair("+ellps=bessel +towgs84=1,2,3", "+ellps=bessel +towgs84=1,2,3,0,0,0,0"),
                    std::pair("+datum=potsdam", "+ellps=bessel +nadgrids=@BETA2007.gsb"),
                    std::pair("+ellps=WGS84 +nadgrids=@null", "+datum=WGS84"),
                    std::pair("+ellps=bessel +nadgrids=@null", "+datum=WGS84"),
                    std::pair("+a=6378137 +b=6378137 +nadgrids=@null", "+datum=WGS84"),
                    std::pair("+ellps=bessel +nadgrids=@missing.gsb", "+datum=WGS84"),
                    std::pair("+datum=NAD27", "+datum=WGS84")));

// A grid has an edge. A list without shifts has no grid, so even a point beyond the pole is not moved.
TEST(NullGridTest, HasSeveralSpellingsAndNoEdge) {
    for (const char* names : {"null", "@null", "null,@null", "@null,null"}) {
        const Point there{200, 95, 100};
        expectNear(moved(std::string("+proj=longlat +ellps=bessel +nadgrids=") + names, WORLD, there), there,
                   ANGLE_TOLERANCE);
    }
}

// PROJ keeps the shifts of a grid in single precision.
constexpr double GRID_TOLERANCE = 1e-10;

// Shifts in arc-seconds, positive to the north and to the east, at a node of each grid and in the middle of one of its
// meshes, where the shift is the mean of four nodes. They are read from the files, whose format has them positive to
// the west.
struct GridShift {
    const char* name;
    const char* definition;
    double longitude;
    double latitude;
    double eastward;
    double northward;
};

void PrintTo(const GridShift& shift, std::ostream* stream) { *stream << shift.name; }

class GridShiftTest : public testing::TestWithParam<GridShift> {
protected:
    void SetUp() override { searchOnlyIn({}); }

    const std::string gridded = std::string("+proj=longlat ") + GetParam().definition;
    const Point unshifted{GetParam().longitude, GetParam().latitude, 100};
    const Point shiftedByGrid{GetParam().longitude + GetParam().eastward / 3600,
                              GetParam().latitude + GetParam().northward / 3600, 100};
};

TEST_P(GridShiftTest, MovesPointsToWgs84) {
    expectNear(moved(gridded, WORLD, unshifted), shiftedByGrid, GRID_TOLERANCE);
}

TEST_P(GridShiftTest, MovesPointsFromWgs84) {
    expectNear(moved(WORLD, gridded, shiftedByGrid), unshifted, GRID_TOLERANCE);
}

TEST_P(GridShiftTest, KeepsTheTurnOfALongitude) {
    for (const double turn : {360, -360}) {
        const Point there{unshifted.x + turn, unshifted.y, unshifted.z};
        const Point shiftedThere{shiftedByGrid.x + turn, shiftedByGrid.y, shiftedByGrid.z};
        expectNear(moved(gridded, WORLD, there), shiftedThere, GRID_TOLERANCE);
        expectNear(moved(WORLD, gridded, shiftedThere), there, GRID_TOLERANCE);
    }
}

constexpr double MESH_EASTWARD = -(3.761898994445801 + 3.6774001121520996 + 3.766439914703369 + 3.6811320781707764) / 4;
constexpr double MESH_NORTHWARD = -(4.133027076721191 + 4.135500907897949 + 4.172945022583008 + 4.175432205200195) / 4;

INSTANTIATE_TEST_SUITE_P(
    All, GridShiftTest,
    testing::Values(
        GridShift{"Germany", "+ellps=bessel +nadgrids=BETA2007.gsb", 9, 50, -3.761898994445801, -4.133027076721191},
        GridShift{"BetweenNodes", "+ellps=bessel +nadgrids=BETA2007.gsb", 8 + 55.0 / 60, 50.05, MESH_EASTWARD,
                  MESH_NORTHWARD},
        GridShift{"Potsdam", "+datum=potsdam", 9, 50, -3.761898994445801, -4.133027076721191},
        GridShift{"France", "+a=6378249.2 +b=6356515 +nadgrids=ntf_r93.gsb", 4, 47, -2.276331901550293,
                  -0.1858759969472885},
        GridShift{"WithoutAnOptionalGrid", "+ellps=bessel +nadgrids=@missing.gsb,BETA2007.gsb", 9, 50,
                  -3.761898994445801, -4.133027076721191},
        GridShift{"BeforeAShift", "+ellps=bessel +nadgrids=BETA2007.gsb +towgs84=600,70,400", 9, 50, -3.761898994445801,
                  -4.133027076721191},
        GridShift{"BeforeTheNullGrid", "+ellps=bessel +nadgrids=BETA2007.gsb,null", 9, 50, -3.761898994445801,
                  -4.133027076721191},
        GridShift{"BesideTheNullGrid", "+ellps=bessel +nadgrids=BETA2007.gsb,null", -60, -30, 0, 0},
        GridShift{"BeforeTheOptionalNullGrid", "+ellps=bessel +nadgrids=BETA2007.gsb,@null", 9, 50, -3.761898994445801,
                  -4.133027076721191},
        GridShift{"BesideTheOptionalNullGrid", "+ellps=bessel +nadgrids=BETA2007.gsb,@null", -60, -30, 0, 0},
        GridShift{"OutsideBesideTheNullGrid", "+ellps=bessel +nadgrids=BETA2007.gsb, null", 170, 10, 0, 0}),
    [](const auto& shift) { return std::string(shift.param.name); });

TEST(GridShiftBesideHelmertTest, MeetsItOnWgs84) {
    const Point onWgs84{9 - 3.761898994445801 / 3600, 50 - 4.133027076721191 / 3600, 100};
    const Point expected =
        shiftedBack({446.448, -125.157, 542.060, 0.1502, 0.2470, 0.8421, -20.4894}, geocentric(WGS84, onWgs84));
    const Point actual =
        moved("+proj=longlat +ellps=bessel +nadgrids=BETA2007.gsb", "+proj=geocent +datum=OSGB36", HERE);
    EXPECT_LT(distance(actual, expected), TENTH_OF_A_MILLIMETRE) << actual << expected;
}

class GridFileTest : public testing::Test {
protected:
    void TearDown() override { searchOnlyIn({}); }
    static int error(const std::string& source, Point point) { return move(source, WORLD, point); }

    const TemporaryDirectory directory;
};

TEST_F(GridFileTest, IsLookedForInTheSearchDirectories) {
    std::filesystem::copy_file(std::string(proj_grid_info("BETA2007.gsb").filename), directory.file("own.gsb"));
    searchOnlyIn({directory.name()});
    const Point there = moved("+proj=longlat +ellps=bessel +nadgrids=own.gsb", WORLD, HERE);
    expectNear(there, {9 - 3.761898994445801 / 3600, 50 - 4.133027076721191 / 3600, 100}, GRID_TOLERANCE);
}

TEST_F(GridFileTest, IsAnErrorWhenItIsMissing) {
    EXPECT_NE(error("+proj=longlat +ellps=bessel +nadgrids=missing.gsb", HERE), 0);
    EXPECT_NE(error("+proj=longlat +ellps=bessel +nadgrids=missing.gsb,BETA2007.gsb", HERE), 0);
    EXPECT_EQ(error("+proj=longlat +ellps=bessel +nadgrids=@missing.gsb", HERE), 0);
}

TEST_F(GridFileTest, MayNameTheNullGridAmongHeights) {
    expectNear(moved(WORLD + " +geoidgrids=@null", WORLD, HERE), HERE, ANGLE_TOLERANCE);
}

TEST_F(GridFileTest, IsAnErrorWhenItIsNoGrid) {
    directory.write("broken.gsb", "no grid at all");
    searchOnlyIn({directory.name()});
    EXPECT_NE(error("+proj=longlat +ellps=bessel +nadgrids=broken.gsb", HERE), 0);
}

template <typename Number>
void append(std::string& bytes, Number number) {
    char memory[sizeof(Number)];
    std::memcpy(memory, &number, sizeof(Number));
    bytes.append(memory, sizeof(Number));
}

template <typename Number>
void appendBigEndian(std::string& bytes, Number number) {
    std::string own;
    append(own, number);
    bytes.append(own.rbegin(), own.rend());
}

// A grid of 2 by 2 nodes around the date line, from 170 to 190 degrees, with a shift of one degree to the east (CTABLE
// V2; little-endian, longitudes positive to the west).
std::string gridAtTheDateLine() {
    std::string bytes = "CTABLE V2.0" + std::string(85, '\0');
    for (const double degrees : {170, -10, 20, 20}) append(bytes, degrees * RADIANS);
    for (const std::int32_t size : {2, 2, 0, 0, 0, 0, 0, 0}) append(bytes, size);
    for (int node = 0; node < 4; ++node) {
        append(bytes, static_cast<float>(-1 * RADIANS));
        append(bytes, 0.0F);
    }
    return bytes;
}

TEST_F(GridFileTest, ShiftsAcrossTheDateLine) {
    directory.write("dateline.ct2", gridAtTheDateLine());
    searchOnlyIn({directory.name()});
    const std::string gridded = "+proj=longlat +ellps=bessel +nadgrids=dateline.ct2";
    for (const double longitude : {179.5, 180.5, -179.5, -180.5, 175.0, 188.5, 535.5}) {
        const Point here{longitude, 5, 100};
        const Point there{longitude + 1, 5, 100};
        // One degree in single precision.
        expectNear(moved(gridded, WORLD, here), there, 1e-7);
        expectNear(moved(WORLD, gridded, there), here, 1e-7);
    }
}

// A geoid of 2 by 2 nodes from 190 to 210 degrees: 30 m (GTX; big-endian).
std::string geoidBeyondTheDateLine() {
    std::string bytes;
    for (const double degrees : {40, 190, 20, 20}) appendBigEndian(bytes, degrees);
    for (const std::int32_t size : {2, 2}) appendBigEndian(bytes, size);
    for (int node = 0; node < 4; ++node) appendBigEndian(bytes, 30.0F);
    return bytes;
}

TEST_F(GridFileTest, HoldsPointsOnAnyTurn) {
    directory.write("east.gtx", geoidBeyondTheDateLine());
    searchOnlyIn({directory.name()});
    for (const char* grid : {"east.gtx", "@missing.gtx,east.gtx"}) {
        const std::string heights = WORLD + " +geoidgrids=" + grid;
        for (const double longitude : {200, -160, 560, -520}) {
            expectNear(moved(heights, WORLD, {longitude, 50, 100}), {longitude, 50, 130}, ANGLE_TOLERANCE);
            expectNear(moved(WORLD, heights, {longitude, 50, 100}), {longitude, 50, 70}, ANGLE_TOLERANCE);
        }
    }
}

TEST_F(GridFileTest, IsAnErrorForAPointOutsideOfIt) {
    for (const Point& point : {Point{-60, -30, 0}, Point{9, 60, 0}, Point{0, 50, 0}})
        EXPECT_NE(error("+proj=longlat +ellps=bessel +nadgrids=BETA2007.gsb", point), 0) << point;
}

// Heights of the geoid above the ellipsoid: a node of the file, and the middle of one of its meshes.
constexpr double GEOID = 48.23596954345703;
constexpr double GEOID_OF_MESH = (48.23596954345703 + 48.36968994140625 + 48.243072509765625 + 48.287841796875) / 4;
const std::string GEOID_GRID = " +geoidgrids=egm96_15.gtx";

class GeoidTest : public testing::TestWithParam<Move> {
protected:
    void SetUp() override { searchOnlyIn({}); }
};

TEST_P(GeoidTest, MovesHeights) {
    expectNear(moved(GetParam().source, GetParam().target, GetParam().from), GetParam().to, ANGLE_TOLERANCE);
}

INSTANTIATE_TEST_SUITE_P(
    All, GeoidTest,
    testing::Values(
        Move{"OfTheSource", WORLD + GEOID_GRID, WORLD, HERE, {9, 50, 100 + GEOID}},
        Move{"OfTheTarget", WORLD, WORLD + GEOID_GRID, HERE, {9, 50, 100 - GEOID}},
        Move{"OfBoth", WORLD + GEOID_GRID, WORLD + GEOID_GRID + " +pm=1", HERE, {8, 50, 100}},
        Move{"BetweenNodes", WORLD + GEOID_GRID, WORLD, {9.125, 50.125, 0}, {9.125, 50.125, GEOID_OF_MESH}},
        Move{"InTheGulfOfGuinea", WORLD + GEOID_GRID, WORLD, {0, 0, 0}, {0, 0, 17.161579132080078}},
        Move{"OnTheSouthernHemisphere", WORLD + GEOID_GRID, WORLD, {-60, -30, 0}, {-60, -30, 17.788869857788086}},
        Move{"BeyondTheDateLine", WORLD + GEOID_GRID, WORLD, {300, -30, 0}, {300, -30, 17.788869857788086}},
        Move{"BeyondTheDateLineOfTheTarget", WORLD, WORLD + GEOID_GRID, {300, -30, 0}, {300, -30, -17.788869857788086}},
        Move{"BeforeTheDateLine", WORLD + GEOID_GRID, WORLD, {-351, 50, 100}, {-351, 50, 100 + GEOID}},
        Move{"OfBothBeyondTheDateLine",
             WORLD + GEOID_GRID,
             WORLD + GEOID_GRID + " +pm=1",
             {369, 50, 100},
             {368, 50, 100}},
        Move{"BehindThePrimeMeridian", WORLD + GEOID_GRID + " +pm=4", WORLD, {5, 50, 100}, {9, 50, 100 + GEOID}},
        Move{"InVerticalUnits", WORLD + GEOID_GRID + " +vunits=km", WORLD, {9, 50, 0.1}, {9, 50, 100 + GEOID}},
        Move{"WithoutAnOptionalGrid", WORLD + " +geoidgrids=@missing.gtx", WORLD, HERE, HERE},
        Move{"BehindAnOptionalGrid",
             WORLD + " +geoidgrids=@missing.gtx,egm96_15.gtx",
             WORLD,
             HERE,
             {9, 50, 100 + GEOID}}),
    nameOfMove);

// A transformation equals the sequence of its steps, and the other tests compare each step with published figures: the
// source's coordinates become geodetic; then the geoid of the source, the datum shift, the geoid of the target and the
// target's coordinates follow.
struct Way {
    const char* name;
    std::string source;
    std::vector<std::string> steps;
    std::string target;
};

void PrintTo(const Way& way, std::ostream* stream) { *stream << way.source << " to " << way.target; }

class WayTest : public testing::TestWithParam<Way> {
protected:
    void SetUp() override { searchOnlyIn({}); }
};

TEST_P(WayTest, LeadsWhereItsStepsDo) {
    std::string at = GetParam().steps.front();
    const Point start = moved(at, GetParam().source, HERE);
    Point expected = HERE;
    for (const std::string& step : GetParam().steps) expected = moved(std::exchange(at, step), step, expected);
    expectNear(moved(GetParam().source, GetParam().target, start), moved(at, GetParam().target, expected));
}

const std::string SHIFTED_DATUM = " +ellps=bessel +towgs84=598.1,73.7,418.2,0.202,0.045,-2.455,6.7";
const std::string SHIFTED = "+proj=longlat" + SHIFTED_DATUM;
const std::string SHIFTED_TMERC = "+proj=tmerc +lon_0=9" + SHIFTED_DATUM;
const std::string GRIDDED = "+proj=longlat +ellps=bessel +nadgrids=BETA2007.gsb";
const std::string GRIDDED_TMERC = "+proj=tmerc +lon_0=9 +ellps=bessel +nadgrids=BETA2007.gsb";
const std::string OTHER_GRIDS = " +a=6378249.2 +b=6356515 +nadgrids=ntf_r93.gsb";
const std::string NULL_GRID = "+proj=longlat +ellps=bessel +nadgrids=@null";
const std::string WORLD_UTM = "+proj=utm +zone=32 +datum=WGS84";

INSTANTIATE_TEST_SUITE_P(
    Datums, WayTest,
    testing::Values(
        Way{"OneShift", SHIFTED_TMERC, {SHIFTED}, "+proj=utm +zone=31" + SHIFTED_DATUM},
        Way{"Shift", SHIFTED_TMERC, {SHIFTED, WORLD}, WORLD_UTM},
        Way{"ShiftBackwards", WORLD_UTM, {WORLD, SHIFTED}, SHIFTED_TMERC},
        Way{"OneListOfGrids", GRIDDED_TMERC, {GRIDDED}, "+proj=utm +zone=31 +ellps=bessel +nadgrids=BETA2007.gsb"},
        Way{"Grids", GRIDDED_TMERC, {GRIDDED, WORLD}, WORLD_UTM},
        Way{"GridsOfBoth",
            GRIDDED_TMERC,
            {GRIDDED, WORLD, "+proj=longlat" + OTHER_GRIDS},
            "+proj=utm +zone=31" + OTHER_GRIDS},
        Way{"GridsBesideAShift", GRIDDED_TMERC, {GRIDDED, WORLD, SHIFTED}, SHIFTED_TMERC},
        Way{"ShiftBesideGrids", SHIFTED_TMERC, {SHIFTED, WORLD, GRIDDED}, GRIDDED_TMERC},
        Way{"NullGridBesideAShift", NULL_GRID, {NULL_GRID, WORLD}, SHIFTED_TMERC},
        Way{"NullGridBesideGrids", NULL_GRID, {NULL_GRID, WORLD}, GRIDDED_TMERC}),
    [](const auto& way) { return std::string(way.param.name); });

INSTANTIATE_TEST_SUITE_P(Geoids, WayTest,
                         testing::Values(Way{"BesideAShift",
                                             SHIFTED_TMERC + GEOID_GRID,
                                             {SHIFTED + GEOID_GRID, SHIFTED, WORLD, WORLD + GEOID_GRID},
                                             WORLD_UTM + GEOID_GRID},
                                         Way{"BesideGrids",
                                             GRIDDED_TMERC + GEOID_GRID,
                                             {GRIDDED + GEOID_GRID, GRIDDED, WORLD, WORLD + GEOID_GRID},
                                             WORLD_UTM + GEOID_GRID}),
                         [](const auto& way) { return std::string(way.param.name); });

// At the poles GRS 80 and WGS 84 are a tenth of a millimetre apart.
TEST(EllipsoidOfADatumTest, IsThatOfItsDefinitionOnEitherSide) {
    const std::string europe = "+proj=longlat +ellps=GRS80 +towgs84=0,0,0";
    const Point onWgs84 = moved(GRIDDED, WORLD, HERE);
    const Point onGrs80 = moved(GRIDDED, europe, HERE);
    EXPECT_LT(distance(geocentric(GRS80, onGrs80), geocentric(WGS84, onWgs84)), LENGTH_TOLERANCE) << onGrs80;
    const Point onBessel = moved(europe, SHIFTED, HERE);
    const Point expected = shiftedBack({598.1, 73.7, 418.2, 0.202, 0.045, -2.455, 6.7}, geocentric(GRS80, HERE));
    EXPECT_LT(distance(geocentric(BESSEL, onBessel), expected), LENGTH_TOLERANCE) << onBessel;
}

TEST(GeoidOfFlatPointsTest, HasNoMeaning) {
    const Point there = moved(WORLD + GEOID_GRID, WORLD, {9, 50, 7}, Heights::WITHOUT);
    expectNear(there, {9, 50, 7}, ANGLE_TOLERANCE);
}

TEST(GeoidOfFlatPointsTest, MayEvenBeMissing) {
    const std::string missing = WORLD + " +geoidgrids=missing.gtx";
    for (const auto& [source, target] : {std::pair(missing, WORLD), std::pair(WORLD, missing)}) {
        Point point = HERE;
        EXPECT_EQ(move(source, target, point, Heights::WITHOUT), 0);
        EXPECT_NE(move(source, target, point, Heights::WITH), 0);
    }
}

}  // namespace
}  // namespace ClassicProj
