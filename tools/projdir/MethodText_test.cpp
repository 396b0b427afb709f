#include "tools/projdir/MethodText.h"

#include <cmath>

#include <gtest/gtest.h>

#include "tools/projdir/AxisOrder.h"
#include "tools/projdir/ClassicText.h"
#include "tools/projdir/Registry.h"

namespace ProjDir {
namespace {

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

// Southing and westing of Bonne are those of its ordinary form turned round; the meridian is that of Lisbon.
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

}  // namespace
}  // namespace ProjDir
