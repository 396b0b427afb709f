// The effect of each parameter of a definition on pj_transform.

#include <gtest/gtest.h>

#include "proj/classic/ClassicProj.h"
#include "tests/support/ClassicMoves.h"

namespace ClassicProj {
namespace {

using namespace TestSupport;

// The Mercator projection on a sphere is easy to compute by hand, and these definitions have no datum.
constexpr double RADIUS = 6371000;
const std::string SPHERE = "+R=6371000 ";
const std::string LONG_LAT = "+proj=longlat " + SPHERE;
const std::string MERCATOR = "+proj=merc " + SPHERE;

constexpr double LONGITUDE = 9;
constexpr double LATITUDE = 50;
const double EASTING = RADIUS * LONGITUDE * RADIANS;
const double NORTHING = RADIUS * mercatorNorthing(LATITUDE);

const Point HERE{LONGITUDE, LATITUDE, 100};
const Point THERE{EASTING, NORTHING, 100};

constexpr double US_FOOT = 1200.0 / 3937.0;
constexpr double FOOT = 0.3048;

double dms(double degrees, double minutes, double seconds) { return degrees + minutes / 60 + seconds / 3600; }

class ParameterTest : public testing::TestWithParam<Move> {
protected:
    void SetUp() override { searchOnlyIn({}); }
};

TEST_P(ParameterTest, HasItsClassicMeaning) {
    const Move& row = GetParam();
    const bool toAngles = pj_is_latlong(define(row.target)) != 0;
    expectNear(moved(row.source, row.target, row.from), row.to, toAngles ? ANGLE_TOLERANCE : LENGTH_TOLERANCE);
}

INSTANTIATE_TEST_SUITE_P(
    Projection, ParameterTest,
    testing::Values(Move{"LongLat", LONG_LAT, MERCATOR, HERE, THERE},
                    Move{"LatLong", "+proj=latlong +R=6371000", MERCATOR, HERE, THERE},
                    Move{"LonLat", "+proj=lonlat +R=6371000", MERCATOR, HERE, THERE},
                    Move{"LatLon", "+proj=latlon +R=6371000", MERCATOR, HERE, THERE},
                    Move{"Mercator", MERCATOR, LONG_LAT, THERE, HERE},
                    Move{"Lon0OfLongLat", LONG_LAT + "+lon_0=9", LONG_LAT + "+lon_0=-20", HERE, HERE},
                    Move{"X0OfLongLat", LONG_LAT + "+x_0=9 +k=2", LONG_LAT + "+y_0=5", HERE, HERE},
                    Move{"Lon0OfMercator", LONG_LAT, MERCATOR + "+lon_0=9", HERE, {0, NORTHING, 100}}),
    nameOfMove);

INSTANTIATE_TEST_SUITE_P(
    PrimeMeridian, ParameterTest,
    testing::Values(
        Move{"OfTheSource", LONG_LAT + "+pm=2.5", LONG_LAT, {9, 50, 1}, {11.5, 50, 1}},
        Move{"OfTheTarget", LONG_LAT, LONG_LAT + "+pm=2.5", {9, 50, 1}, {6.5, 50, 1}},
        Move{"OfBoth",
             LONG_LAT + "+pm=paris",
             LONG_LAT + "+pm=ferro",
             {9, 50, 1},
             {9 + dms(2, 20, 14.025) + dms(17, 40, 0), 50, 1}},
        Move{"InDegreesAndMinutes", LONG_LAT + "+pm=17d40w", LONG_LAT, {9, 50, 1}, {9 - dms(17, 40, 0), 50, 1}},
        Move{"OfAProjectedTarget", LONG_LAT, MERCATOR + "+pm=9", HERE, {0, NORTHING, 100}},
        Move{"OfAProjectedSource", MERCATOR + "+pm=9", LONG_LAT, {0, NORTHING, 100}, HERE},
        Move{"BesideLon0", LONG_LAT, MERCATOR + "+pm=4 +lon_0=5", HERE, {0, NORTHING, 100}},
        Move{"BeyondTheDateLine", LONG_LAT + "+pm=20", LONG_LAT, {170, 50, 1}, {190, 50, 1}}),
    nameOfMove);

INSTANTIATE_TEST_SUITE_P(
    Axes, ParameterTest,
    testing::Values(
        Move{"WestSouthOfAGeographicSource", LONG_LAT + "+axis=wsu", MERCATOR, {-9, -50, 100}, THERE},
        Move{"NorthEastOfAGeographicSource", LONG_LAT + "+axis=neu", MERCATOR, {50, 9, 100}, THERE},
        Move{"NorthEastOfAGeographicTarget", MERCATOR, LONG_LAT + "+axis=neu", THERE, {50, 9, 100}},
        Move{"OfTwoGeographicCrs", LONG_LAT + "+axis=neu", LONG_LAT + "+axis=wsu", {50, 9, 100}, {-9, -50, 100}},
        Move{"WestSouthOfAProjectedTarget", LONG_LAT, MERCATOR + "+axis=wsu", HERE, {-EASTING, -NORTHING, 100}},
        Move{"WestSouthOfAProjectedSource", MERCATOR + "+axis=wsu", LONG_LAT, {-EASTING, -NORTHING, 100}, HERE},
        Move{"NorthEastOfAProjectedTarget", LONG_LAT, MERCATOR + "+axis=neu", HERE, {NORTHING, EASTING, 100}},
        Move{"OfTwoProjectedCrs",
             MERCATOR + "+axis=neu",
             MERCATOR + "+axis=wsu",
             {NORTHING, EASTING, 100},
             {-EASTING, -NORTHING, 100}},
        Move{"Downwards", LONG_LAT, MERCATOR + "+axis=end", HERE, {EASTING, NORTHING, -100}},
        Move{"InTheUsualOrder", LONG_LAT + "+axis=enu", MERCATOR + "+axis=enu", HERE, THERE},
        Move{"BesideUnitsAndFalseOrigin",
             LONG_LAT,
             MERCATOR + "+axis=neu +x_0=1000 +units=km",
             HERE,
             {NORTHING / 1000, EASTING / 1000 + 1, 0.1}}),
    nameOfMove);

// Units apply to heights too, unless the definition has vertical units.
Point there(double unit) { return {EASTING / unit, NORTHING / unit, 100 / unit}; }

INSTANTIATE_TEST_SUITE_P(
    Units, ParameterTest,
    testing::Values(Move{"UsFeetOfTheTarget", LONG_LAT, MERCATOR + "+units=us-ft", HERE, there(US_FOOT)},
                    Move{"UsFeetOfTheSource", MERCATOR + "+units=us-ft", LONG_LAT, there(US_FOOT), HERE},
                    Move{"Feet", LONG_LAT, MERCATOR + "+units=ft", HERE, there(FOOT)},
                    Move{"Kilometres", LONG_LAT, MERCATOR + "+units=km", HERE, there(1000)},
                    Move{"Metres", LONG_LAT, MERCATOR + "+units=m", HERE, THERE},
                    Move{"OfBoth", MERCATOR + "+units=km", MERCATOR + "+units=ft", there(1000), there(FOOT)},
                    Move{"ToMeter", LONG_LAT, MERCATOR + "+to_meter=0.5", HERE, there(0.5)},
                    Move{"ToMeterOfTheSource", MERCATOR + "+to_meter=20.116756", LONG_LAT, there(20.116756), HERE},
                    Move{"UnitsBeforeToMeter", LONG_LAT, MERCATOR + "+to_meter=7 +units=km", HERE, there(1000)},
                    Move{"FalseOriginInMetres",
                         LONG_LAT,
                         MERCATOR + "+x_0=500000 +y_0=-1000 +units=km",
                         HERE,
                         {EASTING / 1000 + 500, NORTHING / 1000 - 1, 0.1}}),
    nameOfMove);

INSTANTIATE_TEST_SUITE_P(
    UnitsOfGeographicHeights, ParameterTest,
    testing::Values(Move{"OfTheTarget", LONG_LAT, LONG_LAT + "+units=km", HERE, {9, 50, 0.1}},
                    Move{"OfTheSource", LONG_LAT + "+units=us-ft", LONG_LAT, {9, 50, 100 / US_FOOT}, HERE},
                    Move{"FromAProjection", MERCATOR, LONG_LAT + "+units=ft", THERE, {9, 50, 100 / FOOT}},
                    Move{"ToAProjection", "+proj=latlon +R=6371000 +units=km", MERCATOR, {9, 50, 0.1}, THERE},
                    Move{"ToMeterOfTheTarget", LONG_LAT, LONG_LAT + "+to_meter=0.5", HERE, {9, 50, 200}},
                    Move{"ToMeterOfTheSource", LONG_LAT + "+to_meter=0.5", LONG_LAT, HERE, {9, 50, 50}},
                    Move{"UnitsBeforeToMeter", LONG_LAT, LONG_LAT + "+to_meter=7 +units=km", HERE, {9, 50, 0.1}},
                    Move{"Metres", LONG_LAT, LONG_LAT + "+units=m", {9, 91, 100}, {9, 91, 100}},
                    Move{"BesideVerticalUnits", LONG_LAT, LONG_LAT + "+units=km +vunits=ft", HERE, {9, 50, 100 / FOOT}},
                    Move{"BesideVerticalMetres", LONG_LAT + "+to_meter=2 +vunits=m", LONG_LAT, HERE, HERE},
                    Move{"BesideAPrimeMeridian", LONG_LAT, LONG_LAT + "+units=km +pm=2", HERE, {7, 50, 0.1}},
                    Move{"BesideAnAxisOrder", LONG_LAT, LONG_LAT + "+units=km +axis=neu", HERE, {50, 9, 0.1}},
                    Move{"BeyondTheDateLine", LONG_LAT, LONG_LAT + "+units=km", {200, 50, 100}, {200, 50, 0.1}}),
    nameOfMove);

// A rotation about the pole itself changes only the longitude. Coordinates are in radians unless the definition has
// units.
const std::string ROTATED = "+proj=ob_tran +o_proj=longlat +o_lat_p=90 +o_lon_p=0 +lon_0=4 " + SPHERE;
constexpr double ROTATED_LONGITUDE = 5 * RADIANS;
constexpr double ROTATED_LATITUDE = 50 * RADIANS;
const std::string DEGREES = " +to_meter=0.017453292519943295 ";

const double GEOGRAPHIC_LATITUDE = std::atan(std::tan(50 * RADIANS) / (1 - WGS84.eccentricitySquared()));

INSTANTIATE_TEST_SUITE_P(
    RotatedPole, ParameterTest,
    testing::Values(
        Move{"InRadians", LONG_LAT, ROTATED, HERE, {ROTATED_LONGITUDE, ROTATED_LATITUDE, 100}},
        Move{"OfTheSource", ROTATED, LONG_LAT, {ROTATED_LONGITUDE, ROTATED_LATITUDE, 100}, HERE},
        Move{"InDegrees", LONG_LAT, ROTATED + DEGREES, HERE, {5, 50, 100 / RADIANS}},
        Move{"InDegreesOfTheSource", ROTATED + DEGREES, LONG_LAT, {5, 50, 100 / RADIANS}, HERE},
        Move{"InDegreesAndMetres", LONG_LAT, ROTATED + DEGREES + "+vunits=m", HERE, {5, 50, 100}},
        Move{"InDegreesAndMetresOfTheSource", ROTATED + DEGREES + "+vunits=m", LONG_LAT, {5, 50, 100}, HERE},
        Move{"InNamedUnits",
             LONG_LAT,
             ROTATED + "+units=km",
             HERE,
             {ROTATED_LONGITUDE / 1000, ROTATED_LATITUDE / 1000, 0.1}},
        Move{"ByAnyNameOfLongLat",
             LONG_LAT,
             "+proj=ob_tran +o_proj=latlon +o_lat_p=90 +o_lon_p=0 +lon_0=4 +R=6371000 +vunits=m" + DEGREES,
             HERE,
             {5, 50, 100}},
        Move{"WithAFalseOrigin",
             LONG_LAT,
             ROTATED + "+x_0=1 +y_0=-2 +z_0=5 +to_meter=0.5",
             HERE,
             {2 * (ROTATED_LONGITUDE + 1), 2 * (ROTATED_LATITUDE - 2), 200}},
        Move{"WithAnAxisOrder", LONG_LAT, ROTATED + DEGREES + "+vunits=m +axis=nwu", HERE, {50, -5, 100}},
        Move{"BesideAnotherPrimeMeridian", LONG_LAT, ROTATED + DEGREES + "+vunits=m +pm=2", HERE, {3, 50, 100}},
        Move{"OnAnEllipsoid",
             "+proj=longlat +ellps=WGS84",
             "+proj=ob_tran +o_proj=longlat +o_lat_p=90 +o_lon_p=0 +lon_0=4 +ellps=WGS84 +vunits=m" + DEGREES,
             HERE,
             {5, 50, 100}},
        Move{"OfGeocentricLatitudes",
             "+proj=longlat +ellps=WGS84",
             "+proj=ob_tran +o_proj=longlat +o_lat_p=90 +o_lon_p=0 +lon_0=4 +ellps=WGS84 +geoc",
             HERE,
             {ROTATED_LONGITUDE, GEOGRAPHIC_LATITUDE, 100}},
        Move{"BeforeAProjection", ROTATED + DEGREES + "+vunits=m", MERCATOR, {5, 50, 100}, THERE}),
    nameOfMove);

// Computed by pj_transform of PROJ 7.2.1.
TEST(RotatedPoleTest, IsWhereTheClassicLibraryHasIt) {
    const std::string rotated =
        "+proj=ob_tran +o_proj=longlat +o_lon_p=0 +o_lat_p=39.25 +lon_0=18 +R=6371000 +vunits=m "
        "+to_meter=0.0174532925199433";
    expectNear(moved(LONG_LAT, rotated, HERE), {-5.77122127583427, -0.39885179978241275, 100}, ANGLE_TOLERANCE);
    expectNear(moved(rotated, LONG_LAT, {-5.77122127583427, -0.39885179978241275, 100}), HERE, ANGLE_TOLERANCE);
}

INSTANTIATE_TEST_SUITE_P(
    VerticalUnits, ParameterTest,
    testing::Values(
        Move{"OfTheTarget", LONG_LAT, MERCATOR + "+vunits=ft", HERE, {EASTING, NORTHING, 100 / FOOT}},
        Move{"OfTheSource", MERCATOR + "+vunits=us-ft", LONG_LAT, THERE, {9, 50, 100 * US_FOOT}},
        Move{"OfAGeographicTarget", MERCATOR, LONG_LAT + "+vunits=ft", THERE, {9, 50, 100 / FOOT}},
        Move{"OfAGeographicSource", LONG_LAT + "+vunits=km", LONG_LAT, {9, 50, 0.1}, HERE},
        Move{"OfBoth", LONG_LAT + "+vunits=km", MERCATOR + "+vunits=ft", {9, 50, 0.1}, {EASTING, NORTHING, 100 / FOOT}},
        Move{"ToMeter", LONG_LAT, MERCATOR + "+vto_meter=2", HERE, {EASTING, NORTHING, 50}},
        Move{"ToMeterOfAGeographicSource", LONG_LAT + "+vto_meter=2", MERCATOR, HERE, {EASTING, NORTHING, 200}},
        Move{"BesideHorizontalUnits",
             LONG_LAT,
             MERCATOR + "+units=km +vunits=ft",
             HERE,
             {EASTING / 1000, NORTHING / 1000, 100 / FOOT}}),
    nameOfMove);

INSTANTIATE_TEST_SUITE_P(
    LongitudeRange, ParameterTest,
    testing::Values(
        Move{"WrapsWesternLongitudes", LONG_LAT, LONG_LAT + "+lon_wrap=180", {-10, 50, 1}, {350, 50, 1}},
        Move{"WrapsAroundZero", LONG_LAT, LONG_LAT + "+lon_wrap=0", {350, 50, 1}, {-10, 50, 1}},
        Move{"LeavesLongitudesInTheRange", LONG_LAT, LONG_LAT + "+lon_wrap=180", {190, 50, 1}, {190, 50, 1}},
        Move{"WrapsBehindThePrimeMeridian", LONG_LAT, LONG_LAT + "+lon_wrap=180 +pm=20", {10, 50, 1}, {350, 50, 1}},
        Move{"WrapsFromAProjection", MERCATOR, LONG_LAT + "+lon_wrap=180", {-EASTING, NORTHING, 100}, {351, 50, 100}},
        Move{"HasNoMeaningForASource", LONG_LAT + "+lon_wrap=180", LONG_LAT, {-10, 50, 1}, {-10, 50, 1}},
        Move{"HasNoMeaningForAProjectedCrs",
             LONG_LAT,
             MERCATOR + "+lon_wrap=180",
             {-9, 50, 100},
             {-EASTING, NORTHING, 100}},
        Move{"StaysAsItIsWithoutOne", LONG_LAT, LONG_LAT + "+pm=0.5", {200, 50, 1}, {199.5, 50, 1}},
        Move{"OverOfLongLatChangesNothing",
             LONG_LAT + "+over",
             LONG_LAT + "+over +pm=0.5",
             {200, 50, 1},
             {199.5, 50, 1}},
        Move{"ProjectionsFoldAtTheDateLine",
             LONG_LAT,
             MERCATOR,
             {190, 50, 100},
             {RADIUS * -170 * RADIANS, NORTHING, 100}},
        Move{"OverRunsOnToTheEast",
             LONG_LAT,
             MERCATOR + "+over",
             {190, 50, 100},
             {RADIUS * 190 * RADIANS, NORTHING, 100}},
        Move{"OverRunsOnToTheWest",
             LONG_LAT,
             MERCATOR + "+over",
             {-190, 50, 100},
             {RADIUS * -190 * RADIANS, NORTHING, 100}},
        Move{"OverOfTheSource", MERCATOR + "+over", LONG_LAT, {RADIUS * 190 * RADIANS, NORTHING, 100}, {190, 50, 100}},
        Move{"WithoutOverOfTheSource", MERCATOR, LONG_LAT, {RADIUS * 190 * RADIANS, NORTHING, 100}, {-170, 50, 100}}),
    nameOfMove);

const Point ON_WGS_84 = geocentric(WGS84, HERE);

INSTANTIATE_TEST_SUITE_P(
    Geocentric, ParameterTest,
    testing::Values(
        Move{"OfTheTarget", "+proj=longlat +datum=WGS84", "+proj=geocent +datum=WGS84", HERE, ON_WGS_84},
        Move{"OfTheSource", "+proj=geocent +datum=WGS84", "+proj=longlat +datum=WGS84", ON_WGS_84, {9, 50, 100.0}},
        Move{"OfBoth", "+proj=geocent +datum=WGS84", "+proj=geocent +datum=WGS84", ON_WGS_84, ON_WGS_84},
        Move{"WithoutACentralMeridian", "+proj=longlat +datum=WGS84", "+proj=geocent +datum=WGS84 +lon_0=30", HERE,
             ON_WGS_84},
        Move{"WithoutACentralMeridianOfTheSource", "+proj=geocent +datum=WGS84 +lon_0=30", "+proj=longlat +datum=WGS84",
             ON_WGS_84, HERE},
        Move{"WithoutGeocentricLatitudes", "+proj=longlat +datum=WGS84", "+proj=geocent +datum=WGS84 +geoc", HERE,
             ON_WGS_84},
        Move{"FromAPrimeMeridian", LONG_LAT, "+proj=geocent +R=6371000 +pm=2 +lon_0=1", {92, 0, 0}, {0, RADIUS, 0}},
        Move{"OnASphere", LONG_LAT, "+proj=geocent +R=6371000", {90, 0, 1000}, {0, RADIUS + 1000, 0}},
        Move{"UnitsOfTheTarget", LONG_LAT, "+proj=geocent +R=6371000 +units=km", {90, 0, 1000}, {0, 6372, 0}},
        Move{"UnitsOfTheSource",
             "+proj=geocent +R=6371000 +units=km",
             MERCATOR,
             {0, 6371, 0},
             {RADIUS * 90 * RADIANS, 0, 0}}),
    nameOfMove);

// These projections are computed on the sphere of the semi-major axis, whatever the ellipsoid is.
const double PLATE_EASTING = WGS84.a * LONGITUDE * RADIANS;
const double PLATE_NORTHING = WGS84.a * LATITUDE * RADIANS;

INSTANTIATE_TEST_SUITE_P(PlateCarree, ParameterTest,
                         testing::Values(Move{"OfTheTarget",
                                              "+proj=longlat +ellps=WGS84",
                                              "+proj=eqc +ellps=WGS84",
                                              HERE,
                                              {PLATE_EASTING, PLATE_NORTHING, 100}},
                                         Move{"OfTheSource",
                                              "+proj=eqc +ellps=WGS84",
                                              "+proj=longlat +ellps=WGS84",
                                              {PLATE_EASTING, PLATE_NORTHING, 100},
                                              HERE},
                                         Move{"WithAStandardParallel",
                                              "+proj=longlat +ellps=WGS84",
                                              "+proj=eqc +ellps=WGS84 +lat_ts=60",
                                              HERE,
                                              {PLATE_EASTING / 2, PLATE_NORTHING, 100}},
                                         Move{"ByAxes",
                                              "+proj=longlat +ellps=WGS84",
                                              "+proj=eqc +a=6378137 +b=6356752 +units=km",
                                              HERE,
                                              {PLATE_EASTING / 1000, PLATE_NORTHING / 1000, 0.1}},
                                         Move{"OfGeocentricLatitudes",
                                              "+proj=longlat +ellps=WGS84",
                                              "+proj=eqc +ellps=WGS84 +geoc",
                                              HERE,
                                              {PLATE_EASTING, PLATE_NORTHING, 100}},
                                         Move{"BehindARotation",
                                              "+proj=longlat +ellps=WGS84",
                                              "+proj=ob_tran +o_proj=eqc +o_lat_p=90 +o_lon_p=0 +ellps=WGS84",
                                              HERE,
                                              {PLATE_EASTING, PLATE_NORTHING, 100}}),
                         nameOfMove);

const double TANGENT_EASTING = WGS84.a * std::tan(LONGITUDE * RADIANS);
const double TANGENT_NORTHING = WGS84.a * std::tan(LATITUDE * RADIANS) / std::cos(LONGITUDE * RADIANS);

// Wagner's sixth projection at the scale that it has in PROJ up to 9.6.
const double WAGNER_NORTHING = 0.94745 * PLATE_NORTHING;
const double WAGNER_EASTING = 0.94745 * PLATE_EASTING * std::sqrt(1 - 3 * std::pow(LATITUDE / 180, 2));

INSTANTIATE_TEST_SUITE_P(OnTheSphere, ParameterTest,
                         testing::Values(Move{"Gnomonic",
                                              "+proj=longlat +ellps=WGS84",
                                              "+proj=gnom +ellps=WGS84",
                                              HERE,
                                              {TANGENT_EASTING, TANGENT_NORTHING, 100}},
                                         Move{"GnomonicOfTheSource",
                                              "+proj=gnom +ellps=WGS84",
                                              "+proj=longlat +ellps=WGS84",
                                              {TANGENT_EASTING, TANGENT_NORTHING, 100},
                                              HERE},
                                         Move{"WagnerVi",
                                              "+proj=longlat +ellps=WGS84",
                                              "+proj=wag6 +ellps=WGS84",
                                              HERE,
                                              {WAGNER_EASTING, WAGNER_NORTHING, 100}},
                                         Move{"WagnerViOfTheSource",
                                              "+proj=wag6 +ellps=WGS84",
                                              "+proj=longlat +ellps=WGS84",
                                              {WAGNER_EASTING, WAGNER_NORTHING, 100},
                                              HERE},
                                         Move{"WagnerViInUnits",
                                              LONG_LAT,
                                              "+proj=wag6 +R=6371000 +units=km +x_0=1000",
                                              {0, 50, 100},
                                              {1, 0.94745 * RADIUS* LATITUDE* RADIANS / 1000, 0.1}}),
                         nameOfMove);

// Computed by pj_transform of PROJ 7.2.1; later versions have constants with more digits.
TEST(IcosahedronTest, IsOnTheSphere) {
    const Point there = moved("+proj=longlat +ellps=WGS84", "+proj=isea +ellps=WGS84", HERE);
    expectNear(there, {-153297.320166902, 8984662.679199906, 100}, 0.01);
}

const Point AT_THE_POLE{0, 90, 0};
const Point AT_THE_EQUATOR{0, 0, 0};

Point pole(const Figure& figure) { return {0, 0, figure.a * (1 - figure.f)}; }

// The semi-minor axis is the geocentric z of the pole, the semi-major axis the x of the equator.
INSTANTIATE_TEST_SUITE_P(Ellipsoid, ParameterTest,
                         testing::Values(Move{"ByName", "+proj=longlat +ellps=bessel", "+proj=geocent +ellps=bessel",
                                              AT_THE_POLE, pole(BESSEL)},
                                         Move{"ByAxes",
                                              "+proj=longlat +a=6378206.4 +b=6356583.8",
                                              "+proj=geocent +a=6378206.4 +b=6356583.8",
                                              AT_THE_POLE,
                                              {0, 0, 6356583.8}},
                                         Move{"ByReciprocalFlattening", "+proj=longlat +a=6377397.155 +rf=299.1528128",
                                              "+proj=geocent +a=6377397.155 +rf=299.1528128", AT_THE_POLE,
                                              pole(BESSEL)},
                                         Move{"ByFlattening",
                                              "+proj=longlat +a=6000000 +f=0.01",
                                              "+proj=geocent +a=6000000 +f=0.01",
                                              AT_THE_POLE,
                                              {0, 0, 5940000}},
                                         Move{"ByTheMajorAxisAlone",
                                              "+proj=longlat +a=6000000",
                                              "+proj=geocent +a=6000000",
                                              AT_THE_POLE,
                                              {0, 0, 6000000}},
                                         Move{"MajorAxis",
                                              "+proj=longlat +ellps=bessel",
                                              "+proj=geocent +ellps=bessel",
                                              AT_THE_EQUATOR,
                                              {BESSEL.a, 0, 0}},
                                         Move{"RadiusBeforeName",
                                              "+proj=longlat +R=6000000 +ellps=bessel",
                                              "+proj=geocent +R=6000000 +ellps=bessel",
                                              AT_THE_POLE,
                                              {0, 0, 6000000}},
                                         Move{"ByDefault", "+proj=longlat", "+proj=geocent", AT_THE_POLE, pole(GRS80)},
                                         Move{"OfADatum", "+proj=longlat +datum=WGS84", "+proj=geocent +datum=WGS84",
                                              AT_THE_POLE, pole(WGS84)}),
                         nameOfMove);

// Snyder, PP 1395, 3-13.
double radiusOfEqualArea(const Figure& figure) {
    const double e = std::sqrt(figure.eccentricitySquared());
    return figure.a * std::sqrt(0.5 * (1 + (1 - e * e) / (2 * e) * std::log((1 + e) / (1 - e))));
}

// Within a millimetre: PROJ computes the radius from a series of three terms.
TEST(SphereOfEqualAreaTest, TakesThePlaceOfTheEllipsoid) {
    const double radius = radiusOfEqualArea(BESSEL);
    const std::string geographic = "+proj=longlat +ellps=bessel +R_A";
    EXPECT_NEAR(moved(geographic, "+proj=geocent +ellps=bessel +R_A", AT_THE_POLE).z, radius, 1e-3);
    const Point there = moved(geographic, "+proj=merc +ellps=bessel +R_A", HERE);
    EXPECT_NEAR(there.x, radius * LONGITUDE * RADIANS, 1e-3);
    EXPECT_NEAR(there.y, radius * mercatorNorthing(LATITUDE), 1e-3);
}

// proj.org, "Prime meridian" of PROJ 7.
TEST(PrimeMeridianTest, HasANameForThirteenCities) {
    const struct {
        const char* name;
        double longitude;
    } meridians[] = {
        {"greenwich", 0},
        {"lisbon", -dms(9, 7, 54.862)},
        {"paris", dms(2, 20, 14.025)},
        {"bogota", -dms(74, 4, 51.3)},
        {"madrid", -dms(3, 41, 16.58)},
        {"rome", dms(12, 27, 8.4)},
        {"bern", dms(7, 26, 22.5)},
        {"jakarta", dms(106, 48, 27.79)},
        {"ferro", -dms(17, 40, 0)},
        {"brussels", dms(4, 22, 4.71)},
        {"stockholm", dms(18, 3, 29.8)},
        {"athens", dms(23, 42, 58.815)},
        {"oslo", dms(10, 43, 22.5)},
    };
    for (const auto& [name, longitude] : meridians)
        EXPECT_NEAR(moved(LONG_LAT + "+pm=" + name, LONG_LAT, {0, 0, 0}).x, longitude, ANGLE_TOLERANCE) << name;
}

TEST(VerticalUnitTest, HasNoMeaningWithoutHeights) {
    expectNear(moved(LONG_LAT + "+vunits=ft", MERCATOR + "+vunits=km", HERE, Heights::WITHOUT), THERE);
}

// The meridian in the middle of a zone is straight, so its length gives the northing.
TEST(ProjectedTest, TakesZoneAndHemisphere) {
    const double northing = 0.9996 * meridianArc(WGS84, 50);
    const std::string zone = "+proj=utm +zone=32 +datum=WGS84";
    expectNear(moved("+proj=longlat +datum=WGS84", zone, {9, 50, 5}), {500000, northing, 5}, 1e-4);
    expectNear(moved("+proj=longlat +datum=WGS84", zone + " +south", {9, -50, 5}), {500000, 1e7 - northing, 5}, 1e-4);
}

}  // namespace
}  // namespace ClassicProj
