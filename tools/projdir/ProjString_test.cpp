#include "tools/projdir/ProjString.h"

#include <cmath>
#include <optional>
#include <ostream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tools/projdir/Registry.h"

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

void PrintTo(const InexpressibleCrs& crs, std::ostream* stream) { *stream << crs.code; }

class InexpressibleCrsTest : public testing::TestWithParam<InexpressibleCrs> {};

TEST_P(InexpressibleCrsTest, GivesTheReason) {
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

// Newer versions of PROJ have more methods. This one will not be among them.
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

TEST(ClassicProjectionTest, ConvertsToLongitudeAndLatitude) {
    ProjContext context;
    const ClassicProjection utm(context, "+proj=utm +zone=32 +ellps=GRS80 +units=m +no_defs");
    EXPECT_NEAR(utm.toGeodetic({500000, 5538630.703, 0}).latitude, 50, 1e-8);
    EXPECT_NEAR(utm.toGeodetic({500000, 5538630.703, 0}).longitude, 9, 1e-12);
}

TEST(ClassicProjectionTest, ConvertsFromLongitudeAndLatitude) {
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

constexpr double DEGREES = 1 / RADIANS_PER_DEGREE;

double toDegrees(double degrees, double minutes, double seconds) { return degrees + minutes / 60 + seconds / 3600; }

class MethodTextTest : public testing::Test {
protected:
    Coordinates project(unsigned int code, const LonLat& place) {
        const ProjPtr<PJ> crs = createCrs(context, code);
        RegistryCrs entry;
        entry.kind = CrsKind::PROJECTED;
        return ClassicProjection(context, writeClassicText(context, crs.get(), entry).write("")).fromGeodetic(place);
    }

    ProjContext context;
};

// The worked example of Polar Stereographic (variant C) in IOGP Publication 373-7-2.
TEST_F(MethodTextTest, PutsTheFalseOriginOnTheStandardParallel) {
    const Coordinates point = project(2985, {toDegrees(140, 4, 17.040), -toDegrees(66, 36, 18.820)});
    EXPECT_NEAR(point[0], 303169.52, 0.01);
    EXPECT_NEAR(point[1], 244055.72, 0.01);
}

// Lambert Conic Conformal with one standard parallel, by the formulas of IOGP Publication 373-7-2: the one that counts
// westwards is W = FE - r sin(theta).
struct ConicConformal {
    double semiMajor, inverseFlattening, latitude, longitude;

    double eccentricity() const {
        const double f = 1 / inverseFlattening;
        return std::sqrt(2 * f - f * f);
    }
    double t(double phi) const {
        const double e = eccentricity();
        const double s = e * std::sin(phi);
        return std::tan(std::acos(-1) / 4 - phi / 2) / std::pow((1 - s) / (1 + s), e / 2);
    }
    double m(double phi) const {
        const double s = eccentricity() * std::sin(phi);
        return std::cos(phi) / std::sqrt(1 - s * s);
    }
    // Eastwards and northwards from the origin.
    std::pair<double, double> project(const LonLat& place) const {
        const double phi0 = latitude / DEGREES;
        const double n = std::sin(phi0);
        const double factor = semiMajor * m(phi0) / (n * std::pow(t(phi0), n));
        const double r = factor * std::pow(t(place.latitude / DEGREES), n);
        const double theta = n * (place.longitude - longitude) / DEGREES;
        return {r * std::sin(theta), factor * std::pow(t(phi0), n) - r * std::cos(theta)};
    }
};

TEST_F(MethodTextTest, CountsLambertConicConformalWestwards) {
    const LonLat reykjavik{-21.9, 64.15};
    const auto [east, north] = ConicConformal{6378388, 297, 65, -18}.project(reykjavik);
    const Coordinates hjorsey = project(3053, reykjavik);  // westing, northing
    EXPECT_NEAR(hjorsey[0], 500000 - east, 0.001);
    EXPECT_NEAR(hjorsey[1], 500000 + north, 0.001);
    EXPECT_GT(hjorsey[0], 500000);
    const LonLat torshavn{-6.77, 62.01};
    const auto [faroeEast, faroeNorth] = ConicConformal{6378137, 298.257222101, 62, -9}.project(torshavn);
    const Coordinates faroe = project(3145, torshavn);  // northing, westing
    EXPECT_NEAR(faroe[0], 500000 + faroeNorth, 0.001);
    EXPECT_NEAR(faroe[1], 500000 - faroeEast, 0.001);
}

// Southing and westing of Bonne are the negative northing and easting of its ordinary form. The meridian is Lisbon's.
TEST_F(MethodTextTest, CountsBonneSouthwardsAndWestwards) {
    const ClassicProjection bonne(
        context, "+proj=bonne +lat_1=39.6666666666667 +lon_0=1 +x_0=0 +y_0=0 +ellps=bessel +pm=lisbon +no_defs");
    const LonLat place{-8, 41};
    const Coordinates eastNorth = bonne.fromGeodetic(place);
    const Coordinates southWest = project(2963, place);
    EXPECT_NEAR(southWest[0], -eastNorth[1], 0.001);
    EXPECT_NEAR(southWest[1], -eastNorth[0], 0.001);
    EXPECT_LT(southWest[0], 0);
}

TEST_F(MethodTextTest, KeepsTheOrderOfTheAxes) {
    EXPECT_EQ(writeAxisDirections(context, createCrs(context, 3053).get()), "+axis=wnu");
    EXPECT_EQ(writeAxisDirections(context, createCrs(context, 3145).get()), "+axis=nwu");
    EXPECT_EQ(writeAxisDirections(context, createCrs(context, 2963).get()), "+axis=swu");
    for (const unsigned int code : {3053U, 3145U, 2963U, 2985U})
        EXPECT_FALSE(isNorthAxisFirst(context, createCrs(context, code).get())) << code;
}

TEST_F(MethodTextTest, LeavesOtherMethodsToPROJ) {
    EXPECT_FALSE(writeMethodText(context, createCrs(context, 25832).get()));
    EXPECT_FALSE(writeMethodText(context, createCrs(context, 22300).get()));
    EXPECT_FALSE(writeMethodText(context, createCrs(context, 4326).get()));
}

struct NamedFigure {
    unsigned int code;
    const char* text;
};

void PrintTo(const NamedFigure& figure, std::ostream* stream) { *stream << figure.code; }

class EllipsoidTextTest : public testing::TestWithParam<NamedFigure> {};

TEST_P(EllipsoidTextTest, NamesTheFigureOfACrs) {
    const ProjContext context;
    EXPECT_EQ(writeEllipsoid(readEllipsoid(context, createCrs(context, GetParam().code).get())), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(Crs, EllipsoidTextTest,
                         testing::Values(NamedFigure{4326, "+ellps=WGS84"}, NamedFigure{4258, "+ellps=GRS80"},
                                         NamedFigure{27700, "+ellps=airy"}, NamedFigure{31467, "+ellps=bessel"},
                                         NamedFigure{4267, "+ellps=clrk66"}, NamedFigure{27572, "+ellps=clrk80ign"},
                                         NamedFigure{4978, "+ellps=WGS84"},
                                         NamedFigure{2001, "+a=6378249.145 +rf=293.465"},
                                         NamedFigure{30200, "+a=6378293.645208759 +rf=294.260676369"}));

TEST(EllipsoidTextTest, WritesASphereByItsRadius) {
    EXPECT_EQ(writeEllipsoid({6371228, 6371228}), "+R=6371228");
    EXPECT_EQ(writeEllipsoid({6370997, 6370997}), "+ellps=sphere");
}

// A millimetre is a difference; rounding is not.
TEST(EllipsoidTextTest, NamesOnlyTheVerySameFigure) {
    EXPECT_EQ(writeEllipsoid({6378137, 6356752.314245179}), "+ellps=WGS84");
    EXPECT_EQ(writeEllipsoid({6378137, 6356752.3142452}), "+ellps=WGS84");
    EXPECT_EQ(writeEllipsoid({6378137, 6356752.315}).substr(0, 18), "+a=6378137 +rf=298");
}

struct RegistryAxisOrder {
    unsigned int code;
    bool isNorthFirst;
    const char* directions;
};

void PrintTo(const RegistryAxisOrder& row, std::ostream* stream) { *stream << row.code; }

class RegistryAxisOrderTest : public testing::TestWithParam<RegistryAxisOrder> {};

TEST_P(RegistryAxisOrderTest, IsTheRegistrys) {
    const ProjContext context;
    const ProjPtr<PJ> crs = createCrs(context, GetParam().code);
    EXPECT_EQ(isNorthAxisFirst(context, crs.get()), GetParam().isNorthFirst);
    EXPECT_EQ(writeAxisDirections(context, crs.get()), GetParam().directions);
}

// Whether PROJ's operations exchange the coordinates, regardless of the names of the axes.
bool exchangesCoordinates(const ProjContext& context, unsigned int code, const PJ_COORD& place) {
    const std::string name = "EPSG:" + std::to_string(code);
    const ProjPtr<PJ> plain(proj_create_crs_to_crs(context.get(), "EPSG:4326", name.c_str(), nullptr));
    const ProjPtr<PJ> normalised(proj_normalize_for_visualization(context.get(), plain.get()));
    const PJ_COORD first = proj_trans(plain.get(), PJ_FWD, place);
    const PJ_COORD second = proj_trans(normalised.get(), PJ_FWD, proj_coord(place.xy.y, place.xy.x, 0, HUGE_VAL));
    EXPECT_TRUE(std::fabs(first.xy.x - second.xy.x) < 1e-6 || std::fabs(first.xy.x - second.xy.y) < 1e-6) << code;
    return std::fabs(first.xy.x - second.xy.x) > 1e-6;
}

TEST(AxisOrderOfOperationsTest, IsTheSame) {
    const ProjContext context;
    const struct {
        unsigned int code;
        double latitude, longitude;
    } rows[] = {{25832, 50, 8},  {31467, 50, 8},  {27700, 52, -1}, {2053, -28, 28.5}, {5513, 50, 15},
                {32661, 80, 30}, {3031, -75, 40}, {2180, 52, 20},  {3035, 50, 15},    {27572, 46, 3}};
    for (const auto& row : rows)
        EXPECT_EQ(isNorthAxisFirst(context, createCrs(context, row.code).get()),
                  exchangesCoordinates(context, row.code, proj_coord(row.latitude, row.longitude, 0, HUGE_VAL)))
            << row.code;
}

INSTANTIATE_TEST_SUITE_P(
    Crs, RegistryAxisOrderTest,
    testing::Values(RegistryAxisOrder{4326, true, ""}, RegistryAxisOrder{25832, false, ""},
                    RegistryAxisOrder{31467, true, ""}, RegistryAxisOrder{27700, false, ""},
                    // Northing first, both axes pointing south; easting first, both pointing north.
                    RegistryAxisOrder{32661, true, ""}, RegistryAxisOrder{3031, false, ""},
                    // Westing and southing; southing and westing.
                    RegistryAxisOrder{2053, false, "+axis=wsu"}, RegistryAxisOrder{5513, false, "+axis=swu"},
                    RegistryAxisOrder{8044, false, "+axis=swu"},
                    // Longitude first; three axes; geocentric.
                    RegistryAxisOrder{7035, false, ""}, RegistryAxisOrder{4979, true, ""},
                    RegistryAxisOrder{4978, false, ""}));

struct RegistryPoint {
    unsigned int code;
    Coordinates coordinates;
    LonLat place;
    double tolerance;
};

void PrintTo(const RegistryPoint& row, std::ostream* stream) { *stream << row.code; }

class RegistryProjectionTest : public testing::TestWithParam<RegistryPoint> {};

TEST_P(RegistryProjectionTest, ConvertsToTheDatum) {
    ProjContext context;
    const RegistryProjection projection(context, createCrs(context, GetParam().code).get(), "", false);
    const LonLat place = projection.toGeodetic(GetParam().coordinates);
    EXPECT_NEAR(place.longitude, GetParam().place.longitude, GetParam().tolerance);
    EXPECT_NEAR(place.latitude, GetParam().place.latitude, GetParam().tolerance);
}

TEST_P(RegistryProjectionTest, ConvertsFromTheDatum) {
    ProjContext context;
    const RegistryProjection projection(context, createCrs(context, GetParam().code).get(), "", false);
    const Coordinates coordinates = projection.fromGeodetic(projection.toGeodetic(GetParam().coordinates));
    EXPECT_NEAR(coordinates[0], GetParam().coordinates[0], 1e-6);
    EXPECT_NEAR(coordinates[1], GetParam().coordinates[1], 1e-6);
}

// UTM's origin; the worked example of Transverse Mercator in IOGP Guidance Note 7-2 (27700); latitude and longitude
// without a conversion; 50 grads of latitude on the meridian of Paris.
INSTANTIATE_TEST_SUITE_P(Crs, RegistryProjectionTest,
                         testing::Values(RegistryPoint{25832, {500000, 0, 0}, {9, 0}, 1e-9},
                                         RegistryPoint{27700, {577274.99, 69740.50, 0}, {0.5, 50.5}, 2e-7},
                                         RegistryPoint{4277, {50.5, 0.5, 0}, {0.5, 50.5}, 1e-12},
                                         RegistryPoint{4807, {50, 0, 0}, {2.33722917, 45}, 1e-8}));

}  // namespace
}  // namespace ProjDir
