#include "tools/projdir/ClassicText.h"

#include <cmath>
#include <optional>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace ProjDir {
namespace {

using testing::HasSubstr;

RegistryCrs findEntry(const ProjContext& context, unsigned int code) {
    for (const RegistryCrs& crs : readRegistry(context))
        if (crs.code == code) return crs;
    throw std::runtime_error("no CRS " + std::to_string(code));
}

ClassicText makeText(unsigned int code) {
    ProjContext context;
    const ProjPtr<PJ> crs = createCrs(context, code);
    return writeClassicText(context, crs.get(), findEntry(context, code));
}

struct ClassicCrs {
    unsigned int code;
    const char* text;
};

void PrintTo(const ClassicCrs& row, std::ostream* stream) { *stream << row.code; }

class ClassicTextTest : public testing::TestWithParam<ClassicCrs> {};

TEST_P(ClassicTextTest, IsTheDefinitionWithoutItsShift) {
    EXPECT_EQ(makeText(GetParam().code).write(""), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(
    Crs, ClassicTextTest,
    testing::Values(
        ClassicCrs{4258, "+proj=longlat +ellps=GRS80 +datum_id=EPSG:6258 +no_defs"},
        ClassicCrs{4936, "+proj=geocent +ellps=GRS80 +datum_id=EPSG:6258 +units=m +no_defs"},
        ClassicCrs{4937, "+proj=longlat +ellps=GRS80 +datum_id=EPSG:6258 +no_defs"},
        ClassicCrs{25832, "+proj=utm +zone=32 +ellps=GRS80 +datum_id=EPSG:6258 +units=m +no_defs"},
        // PROJ's own text has a named datum with grids here.
        ClassicCrs{4267, "+proj=longlat +ellps=clrk66 +datum_id=EPSG:6267 +no_defs"},
        ClassicCrs{32040,
                   "+proj=lcc +lat_0=27.8333333333333 +lon_0=-99 +lat_1=28.3833333333333 +lat_2=30.2833333333333 "
                   "+x_0=609601.219202438 +y_0=0 +ellps=clrk66 +datum_id=EPSG:6267 +units=us-ft +no_defs"},
        ClassicCrs{3857, "+proj=webmerc +ellps=WGS84 +datum_id=EPSG:6326 +units=m +no_defs"},
        ClassicCrs{2053,
                   "+proj=tmerc +lat_0=0 +lon_0=29 +k=1 +x_0=0 +y_0=0 +axis=wsu +ellps=WGS84 "
                   "+datum_id=EPSG:6148 +units=m +no_defs"},
        ClassicCrs{
            27572,
            "+proj=lcc +lat_1=46.8 +lat_0=46.8 +lon_0=0 +k_0=0.99987742 +x_0=600000 +y_0=2200000 +ellps=clrk80ign "
            "+datum_id=EPSG:6275 +pm=paris +units=m +no_defs"},
        ClassicCrs{30200,
                   "+proj=cass +lat_0=10.4416666666667 +lon_0=-61.3333333333333 +x_0=86501.46392052 +y_0=65379.0134283 "
                   "+a=6378293.645208759 +rf=294.260676369 +datum_id=EPSG:6302 +to_meter=0.201166195164 +no_defs"}));

TEST(ClassicTextTest, PutsTheShiftBehindTheFigure) {
    EXPECT_EQ(makeText(27572).write("+towgs84=1,2,3"),
              "+proj=lcc +lat_1=46.8 +lat_0=46.8 +lon_0=0 +k_0=0.99987742 +x_0=600000 +y_0=2200000 +ellps=clrk80ign "
              "+towgs84=1,2,3 +datum_id=EPSG:6275 +pm=paris +units=m +no_defs");
    EXPECT_EQ(makeText(4326).write("+datum=WGS84"), "+proj=longlat +datum=WGS84 +datum_id=EPSG:6326 +no_defs");
}

TEST(ClassicTextTest, KnowsWgs84InItsThreeForms) {
    for (const unsigned int code : {4326U, 4978U, 4979U, 3857U, 32632U}) EXPECT_TRUE(makeText(code).isWgs84) << code;
    for (const unsigned int code : {4258U, 9057U, 25832U}) EXPECT_FALSE(makeText(code).isWgs84) << code;
}

struct InexpressibleCrs {
    unsigned int code;
    const char* reason;
};

class InexpressibleCrsTest : public testing::TestWithParam<InexpressibleCrs> {};

TEST_P(InexpressibleCrsTest, SaysWhy) {
    try {
        makeText(GetParam().code);
        FAIL() << "accepted";
    } catch (const NotExpressible& refusal) {
        EXPECT_THAT(refusal.what(), HasSubstr(GetParam().reason));
    }
}

INSTANTIATE_TEST_SUITE_P(Crs, InexpressibleCrsTest,
                         testing::Values(InexpressibleCrs{4807, "its angular unit is the grad"},
                                         InexpressibleCrs{5701, "a vertical CRS"},
                                         InexpressibleCrs{7405, "a compound CRS"},
                                         InexpressibleCrs{22300, "Tunisia Mining Grid"},
                                         InexpressibleCrs{32600, "Transverse Mercator Zoned Grid System"}));

// Newer versions of PROJ have more methods; this one none will have.
TEST(InexpressibleCrsTest, NamesTheMethodThatPROJDoesNotHave) {
    ProjContext context;
    const ProjPtr<PJ> crs(proj_create(context.get(), R"(PROJCRS["map",
        BASEGEOGCRS["WGS 84", DATUM["World Geodetic System 1984", ELLIPSOID["WGS 84", 6378137, 298.257223563]]],
        CONVERSION["map", METHOD["Invented Projection"]],
        CS[Cartesian, 2], AXIS["easting", east], AXIS["northing", north], LENGTHUNIT["metre", 1]])"));
    RegistryCrs entry;
    entry.kind = CrsKind::PROJECTED;
    try {
        writeClassicText(context, crs.get(), entry);
        FAIL() << "accepted";
    } catch (const NotExpressible& refusal) {
        EXPECT_THAT(refusal.what(), HasSubstr("Invented Projection"));
    }
}

TEST(ClassicProjectionTest, LeadsBackToLongitudeAndLatitude) {
    ProjContext context;
    const ClassicProjection utm(context, "+proj=utm +zone=32 +ellps=GRS80 +units=m +no_defs");
    EXPECT_NEAR(utm.toGeodetic({500000, 5538630.703, 0}).latitude, 50, 1e-8);
    EXPECT_NEAR(utm.toGeodetic({500000, 5538630.703, 0}).longitude, 9, 1e-12);
}

TEST(ClassicProjectionTest, LeadsThereAgain) {
    ProjContext context;
    const ClassicProjection west(context, "+proj=lcc +lat_1=65 +lat_0=65 +lon_0=-18 +axis=wnu +ellps=intl +no_defs");
    const LonLat place = west.toGeodetic(west.fromGeodetic({-20, 64}));
    EXPECT_NEAR(place.longitude, -20, 1e-11);
    EXPECT_NEAR(place.latitude, 64, 1e-11);
}

TEST(ClassicProjectionTest, CountsFromGreenwich) {
    ProjContext context;
    const ClassicProjection paris(context, "+proj=longlat +ellps=clrk80ign +pm=paris +no_defs");
    EXPECT_NEAR(paris.toGeodetic({0, 48, 0}).longitude, 2.33722917, 1e-8);
    EXPECT_NEAR(paris.toGeodetic({0, 48, 0}).latitude, 48, 1e-12);
}

TEST(ClassicProjectionTest, TakesGeocentricCoordinates) {
    ProjContext context;
    const ClassicProjection geocentric(context, "+proj=geocent +ellps=WGS84 +units=m +no_defs");
    EXPECT_NEAR(geocentric.toGeodetic({0, 6378137, 0}).longitude, 90, 1e-12);
}

TEST(ClassicProjectionTest, FindsNothingOutsideAProjection) {
    ProjContext context;
    const ClassicProjection stereographic(context, "+proj=laea +lat_0=52 +lon_0=10 +ellps=GRS80 +units=m +no_defs");
    EXPECT_FALSE(std::isfinite(stereographic.toGeodetic({1e9, 1e9, 0}).latitude));
}

TEST(ClassicProjectionTest, RefusesWhatPROJCannotMake) {
    ProjContext context;
    EXPECT_THROW(ClassicProjection(context, "+proj=nosuch +ellps=GRS80"), NotExpressible);
}

}  // namespace
}  // namespace ProjDir
