// "+datum_id": nothing is shifted between definitions on one datum, whatever their shifts to WGS 84 are.

#include <ostream>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "proj/classic/ClassicProj.h"
#include "tests/support/ClassicMoves.h"

namespace ClassicProj {
namespace {

using namespace TestSupport;

const std::string WORLD = "+proj=longlat +datum=WGS84";
const std::string WORLD_GEOCENTRIC = "+proj=geocent +datum=WGS84";

// ED50 with two of the registry's shifts: EPSG:1311 (common offshore) and EPSG:1145 (Portugal and Spain).
const std::string ED50 = "+proj=longlat +ellps=intl +towgs84=-89.5,-93.8,-123.1,0,0,-0.156,1.2 +no_defs";
const std::string ED50_UTM30 = "+proj=utm +zone=30 +ellps=intl +towgs84=-84,-107,-120,0,0,0,0 +units=m +no_defs";
const std::string ED50_ID = " +datum_id=EPSG:6230";

const Point SPAIN{-3, 40, 650};
// On the central meridian the northing is 0.9996 times the length of the meridian.
const Point SPAIN_IN_UTM30{500000, 0.9996 * meridianArc(INTERNATIONAL, 40), 650};

const std::string NTF = "+proj=longlat +a=6378249.2 +b=6356515 +towgs84=-168,-60,320 +no_defs";
const std::string NTF_PARIS = "+proj=longlat +a=6378249.2 +b=6356515 +pm=paris +nadgrids=ntf_r93.gsb +no_defs";
const std::string NTF_PARIS_LAMBERT =
    "+proj=lcc +lat_1=46.8 +lat_0=46.8 +lon_0=0 +k_0=0.99987742 +x_0=600000 +y_0=2200000 +a=6378249.2 +b=6356515 "
    "+pm=paris +nadgrids=ntf_r93.gsb +no_defs";
const std::string NTF_ID = " +datum_id=EPSG:6275";
// The meridian of Paris, 2 degrees 20' 14.025" east of Greenwich.
constexpr double PARIS = 2 + 20.0 / 60 + 14.025 / 3600;

class OneDatumTest : public testing::TestWithParam<Move> {
protected:
    void SetUp() override { searchOnlyIn({}); }
};

double toleranceOf(const std::string& definition) {
    return pj_is_latlong(define(definition)) != 0 ? ANGLE_TOLERANCE : LENGTH_TOLERANCE;
}

TEST_P(OneDatumTest, LeavesPositionsOnItsEllipsoid) {
    const auto& [name, source, target, from, to] = GetParam();
    expectNear(moved(source, target, from), to, toleranceOf(target));
    expectNear(moved(target, source, to), from, toleranceOf(source));
}

INSTANTIATE_TEST_SUITE_P(
    All, OneDatumTest,
    testing::Values(
        Move{"UnlikeShifts", ED50 + ED50_ID, ED50_UTM30 + ED50_ID, SPAIN, SPAIN_IN_UTM30},
        Move{"AShiftBesideGrids",
             "+proj=longlat +ellps=bessel +towgs84=598.1,73.7,418.2 +datum_id=EPSG:6314",
             "+proj=longlat +ellps=bessel +nadgrids=BETA2007.gsb +datum_id=EPSG:6314",
             {9, 50, 100},
             {9, 50, 100}},
        Move{"AShiftBesideMissingGrids",
             "+proj=longlat +ellps=bessel +towgs84=598.1,73.7,418.2 +datum_id=EPSG:6314",
             "+proj=longlat +ellps=bessel +nadgrids=missing.gsb +datum_id=EPSG:6314",
             {9, 50, 100},
             {9, 50, 100}},
        Move{"OutsideOfItsGrids",
             "+proj=longlat +ellps=bessel +towgs84=598.1,73.7,418.2 +datum_id=EPSG:6314",
             "+proj=longlat +ellps=bessel +nadgrids=BETA2007.gsb +datum_id=EPSG:6314",
             {-60, -30, 0},
             {-60, -30, 0}},
        Move{"AShiftBesideWgs84", ED50 + " +datum_id=A:1", WORLD + " +datum_id=A:1", SPAIN, SPAIN},
        Move{"AShiftBesideNone", ED50 + ED50_ID, "+proj=longlat +ellps=intl" + ED50_ID, SPAIN, SPAIN},
        Move{"UnlikeFigures", "+proj=longlat +ellps=bessel +towgs84=1,2,3 +datum_id=A:1",
             "+proj=longlat +ellps=intl +towgs84=4,5,6 +datum_id=A:1", SPAIN, SPAIN},
        Move{"UnlikePrimeMeridians", NTF + NTF_ID, NTF_PARIS + NTF_ID, {3, 46.8, 100}, {3 - PARIS, 46.8, 100}},
        Move{"APrimeMeridianOfAProjection",
             NTF + NTF_ID,
             NTF_PARIS_LAMBERT + NTF_ID,
             {PARIS, 46.8, 100},
             {600000, 2200000, 100}},
        Move{"GeocentricCoordinates", ED50 + ED50_ID, "+proj=geocent +ellps=intl +towgs84=-84,-107,-120" + ED50_ID,
             SPAIN, geocentric(INTERNATIONAL, SPAIN)}),
    nameOfMove);

TEST(OneDatumIdTest, LeavesHeightsAloneWhereverTheyAreMissing) {
    const Point there = moved(ED50 + ED50_ID, ED50_UTM30 + ED50_ID, SPAIN, Heights::WITHOUT);
    expectNear(there, SPAIN_IN_UTM30);
}

TEST(OneDatumIdTest, LeavesGeoidsTheirPart) {
    const std::string geoid = " +geoidgrids=egm96_15.gtx";
    const Point expected = moved(WORLD + geoid, WORLD, SPAIN);
    expectNear(moved(ED50 + ED50_ID + geoid, ED50 + " +units=m" + ED50_ID, SPAIN), expected, ANGLE_TOLERANCE);
}

// Two definitions with more than 20 m of shift between them unless their ids are the same.
using Ids = std::pair<const char*, const char*>;

class IdsTest : public testing::TestWithParam<Ids> {
protected:
    const std::string first = std::string("+proj=longlat +ellps=intl +towgs84=-89.5,-93.8,-123.1 ") + GetParam().first;
    const std::string second = std::string("+proj=longlat +ellps=intl +towgs84=-84,-107,-120 ") + GetParam().second;
};

class SameIdsTest : public IdsTest {};

TEST_P(SameIdsTest, MeanOneDatum) {
    expectNear(moved(first, second, SPAIN), SPAIN, ANGLE_TOLERANCE);
    expectNear(moved(second, first, SPAIN), SPAIN, ANGLE_TOLERANCE);
}

INSTANTIATE_TEST_SUITE_P(All, SameIdsTest,
                         testing::Values(Ids("+datum_id=EPSG:6230", "datum_id=EPSG:6230"),
                                         Ids("+datum_id = EPSG:6230", "+datum_id=EPSG:6230"),
                                         Ids("+datum_id=EPSG:6230 +datum_id=EPSG:6231", "+datum_id=EPSG:6230"),
                                         Ids("+datum_id=inf", "+datum_id=inf"), Ids("+datum_id=6230", "+datum_id=6230"),
                                         Ids("+datum_id=:", "+datum_id=:"), Ids("+datum_id=", "+datum_id")));

class UnlikeIdsTest : public IdsTest {};

TEST_P(UnlikeIdsTest, MeanTheShiftsOfTheDefinitions) {
    const Point withoutIds = moved("+proj=longlat +ellps=intl +towgs84=-89.5,-93.8,-123.1",
                                   "+proj=longlat +ellps=intl +towgs84=-84,-107,-120", SPAIN);
    EXPECT_GT(distance(geocentric(INTERNATIONAL, withoutIds), geocentric(INTERNATIONAL, SPAIN)), 10);
    expectNear(moved(first, second, SPAIN), withoutIds, 0);
}

INSTANTIATE_TEST_SUITE_P(All, UnlikeIdsTest,
                         testing::Values(Ids("+datum_id=EPSG:6230", ""), Ids("", "+datum_id=EPSG:6230"),
                                         Ids("+datum_id=EPSG:6230", "+datum_id=EPSG:6231"),
                                         Ids("+datum_id=EPSG:6230", "+datum_id=epsg:6230"),
                                         Ids("+datum_id=EPSG:6230", "+datum_id=EPSG:06230"),
                                         Ids("+datum_id=EPSG:6230 +datum_id=EPSG:6231", "+datum_id=EPSG:6231"),
                                         Ids("+datum_id=", ""), Ids("+datum_id=EPSG:6230", "+datum_id=6230"),
                                         Ids("+DATUM_ID=EPSG:6230", "+DATUM_ID=EPSG:6230")));

// An id does not affect the shift to other datums, and PROJ never receives it.
TEST(DatumIdTest, LeavesTheShiftToOtherDatumsAsItIs) {
    for (const std::string& text : {ED50, ED50_UTM30, NTF, NTF_PARIS, NTF_PARIS_LAMBERT}) {
        const Point there = moved("+proj=longlat +ellps=WGS84 +no_defs", text, {3, 46.8, 100});
        const Point expected = moved(text, WORLD_GEOCENTRIC, there);
        expectNear(moved(text + " +datum_id=A:1", WORLD_GEOCENTRIC + " +datum_id=A:2", there), expected, 0);
        expectNear(moved(text + " +datum_id=A:1", WORLD_GEOCENTRIC, there), expected, 0);
    }
}

TEST(DatumIdTest, IsNoParameterOfAnyProjection) {
    for (const char* projection : {"+proj=longlat", "+proj=geocent", "+proj=utm +zone=30", "+proj=eqc", "+proj=wag6",
                                   "+proj=webmerc", "+proj=ob_tran +o_proj=longlat +o_lon_p=0 +o_lat_p=40",
                                   "+proj=ob_tran +o_proj=moll +o_lon_p=0 +o_lat_p=40"}) {
        const std::string text = std::string(projection) + " +ellps=WGS84";
        expectNear(moved("+proj=longlat +ellps=WGS84", text + " +datum_id=EPSG:6326", SPAIN),
                   moved("+proj=longlat +ellps=WGS84", text, SPAIN), 0);
    }
}

}  // namespace
}  // namespace ClassicProj
