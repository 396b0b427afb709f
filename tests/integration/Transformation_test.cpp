#include <cmath>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/IntegrationServer.h"

// Transforms points between requested CRS: axis orders, heights, scale factors, published coordinates and failures.
namespace IntegrationTest {
namespace {

constexpr double METRES_PER_DEGREE = 111319.4907931134;

struct Point {
    double x;
    double y;
};

Point transformed(const AbstractCrs& source, const AbstractCrs& target, Point point) {
    source.transformTo(&target, point.x, point.y);
    return point;
}

struct Move {
    const char* source;
    Point from;
    const char* target;
    Point to;
    double tolerance;
    double toleranceBack;
};

void PrintTo(const Move& move, std::ostream* stream) { *stream << move.source << " to " << move.target; }

class AxisOrderOfRequestsTest : public testing::TestWithParam<Move> {
protected:
    const Server server;
    const Crs source = server.request(GetParam().source);
    const Crs target = server.request(GetParam().target);
};

TEST_P(AxisOrderOfRequestsTest, HoldsForwards) {
    const Point point = transformed(*source.get(), *target.get(), GetParam().from);
    EXPECT_NEAR(point.x, GetParam().to.x, GetParam().tolerance);
    EXPECT_NEAR(point.y, GetParam().to.y, GetParam().tolerance);
}

TEST_P(AxisOrderOfRequestsTest, HoldsBackwards) {
    const Point point = transformed(*target.get(), *source.get(), GetParam().to);
    EXPECT_NEAR(point.x, GetParam().from.x, GetParam().toleranceBack);
    EXPECT_NEAR(point.y, GetParam().from.y, GetParam().toleranceBack);
}

Move toMetres(const char* source, Point from, const char* target, Point to) {
    return {source, from, target, to, 1e-5, 1e-10};
}

// The expected values are from Krueger's series for UTM zone 32 on GRS 80, to the sixth power of the third flattening.
INSTANTIATE_TEST_SUITE_P(
    Utm32, AxisOrderOfRequestsTest,
    testing::Values(toMetres("urn:ogc:def:crs:EPSG::4326", {50.5, 7.25}, "EPSG:25832", {375891.804452, 5595688.088063}),
                    toMetres("CRS:84", {7.25, 50.5}, "EPSG:25832", {375891.804452, 5595688.088063}),
                    toMetres("urn:ogc:def:crs:OGC:1.3:CRS84", {7.25, 50.5}, "UTM32", {375891.804452, 5595688.088063}),
                    toMetres("EPSG:4326", {50.5, 7.25}, "UTM32-NE", {5595688.088063, 375891.804452}),
                    toMetres("CRS:84", {7.25, 50.5}, "UTM32-NE", {5595688.088063, 375891.804452}),
                    toMetres("http://www.opengis.net/def/crs/EPSG/0/4326", {52, 9},
                             "https://www.opengis.net/def/crs/EPSG/0/25832", {500000, 5761038.212467}),
                    toMetres("EPSG:4258", {48.137, 11.575}, "25832", {691567.326386, 5334734.330360})));

// The expected values are those of a sphere with the radius of WGS 84. The easting is the radius times the longitude,
// and the northing is 0 on the equator.
INSTANTIATE_TEST_SUITE_P(PseudoMercator, AxisOrderOfRequestsTest,
                         testing::Values(toMetres("EPSG:4326", {0, 1}, "EPSG:3857", {METRES_PER_DEGREE, 0}),
                                         toMetres("CRS:84", {1, 0}, "EPSG:900913", {METRES_PER_DEGREE, 0})));

INSTANTIATE_TEST_SUITE_P(SameCode, AxisOrderOfRequestsTest,
                         testing::Values(Move{"EPSG:4326", {52, 9}, "CRS:84", {9, 52}, 0, 0},
                                         Move{"EPSG:4979", {52, 9}, "CRS:84", {9, 52}, 0, 0},
                                         Move{"UTM32", {1, 2}, "UTM32-NE", {2, 1}, 0, 0},
                                         Move{"EPSG:25832", {1, 2}, "UTM32", {1, 2}, 0, 0},
                                         Move{"urn:ogc:def:crs:EPSG:6.12:4326", {52, 9}, "4326", {52, 9}, 0, 0}));

struct ControlPoint {
    std::string name;
    std::string source;
    double latitude;
    double longitude;
    std::string target;
    double easting;
    double northing;
    double tolerance;
};

void PrintTo(const ControlPoint& point, std::ostream* stream) { *stream << point.name; }

std::vector<std::string> splitLine(const std::string& line) {
    std::vector<std::string> cells;
    std::istringstream stream(line);
    for (std::string cell; std::getline(stream, cell, ';');) cells.push_back(cell);
    return cells;
}

std::vector<ControlPoint> readControlPoints() {
    std::istringstream file = readSourceFile("data/control-points.csv");
    std::vector<ControlPoint> points;
    std::string line;
    std::getline(file, line);
    while (std::getline(file, line)) {
        const std::vector<std::string> cell = splitLine(line);
        points.push_back({cell.at(0), cell.at(1), std::stod(cell.at(2)), std::stod(cell.at(3)), cell.at(4),
                          std::stod(cell.at(5)), std::stod(cell.at(6)), std::stod(cell.at(7))});
    }
    return points;
}

// Returns the point in the axis order of the CRS.
Point ordered(const AbstractCrs& crs, double eastOrLon, double northOrLat) {
    return crs.isAxisOrderEastNorthOrLonLat() ? Point{eastOrLon, northOrLat} : Point{northOrLat, eastOrLon};
}

class ControlPointTest : public testing::TestWithParam<ControlPoint> {
protected:
    const Server server;
    const Crs source = server.request("urn:ogc:def:crs:EPSG::" + GetParam().source);
    const Crs target = server.request("urn:ogc:def:crs:EPSG::" + GetParam().target);
    const Point geographic = ordered(*source.get(), GetParam().longitude, GetParam().latitude);
    const Point projected = ordered(*target.get(), GetParam().easting, GetParam().northing);
};

TEST_P(ControlPointTest, MatchesInTheProjectedCrs) {
    const Point point = transformed(*source.get(), *target.get(), geographic);
    EXPECT_NEAR(point.x, projected.x, GetParam().tolerance);
    EXPECT_NEAR(point.y, projected.y, GetParam().tolerance);
}

TEST_P(ControlPointTest, MatchesInTheGeographicCrs) {
    const Point point = transformed(*target.get(), *source.get(), projected);
    const Point back = ordered(*source.get(), point.x, point.y);
    const double metresOfLongitude = METRES_PER_DEGREE * std::cos(GetParam().latitude / 180 * std::acos(-1.0));
    EXPECT_NEAR((back.x - GetParam().longitude) * metresOfLongitude, 0, GetParam().tolerance);
    EXPECT_NEAR((back.y - GetParam().latitude) * METRES_PER_DEGREE, 0, GetParam().tolerance);
}

INSTANTIATE_TEST_SUITE_P(Published, ControlPointTest, testing::ValuesIn(readControlPoints()));

TEST(ControlPointsTest, AreTwelve) { EXPECT_EQ(readControlPoints().size(), 12U); }

class HeightTest : public testing::Test {
protected:
    void transform(const AbstractCrs& source, const AbstractCrs& target) { source.transformTo(&target, x, y, z); }
    void transform(const std::string& source, const std::string& target) {
        transform(*server.request(source).get(), *server.request(target).get());
    }

    const Server server;
    double x = 52;
    double y = 9;
    double z = 137.5;
};

TEST_F(HeightTest, StaysInACompoundOnTheSameDatum) {
    transform("EPSG:4979", "UTM32-DHHN92");
    EXPECT_NEAR(x, 500000, 1e-5);
    EXPECT_NEAR(y, 5761038.212467, 1e-5);
    EXPECT_NEAR(z, 137.5, 1e-9);
    transform("UTM32-DHHN92", "EPSG:4979");
    EXPECT_NEAR(x, 52, 1e-10);
    EXPECT_NEAR(y, 9, 1e-10);
    EXPECT_NEAR(z, 137.5, 1e-9);
}

TEST_F(HeightTest, StaysTheSameBetweenVerticalCrs) {
    transform("urn:ogc:def:crs,crs:EPSG::25832,crs:EPSG::5783", "EPSG:25832*EPSG:5701");
    EXPECT_EQ(z, 137.5);
    EXPECT_EQ(x, 52);
    EXPECT_EQ(y, 9);
}

// The point is at latitude 50.5, longitude 9 and height 100 of DHDN. Its northing is the meridian arc on Bessel's
// ellipsoid. The expected point on WGS 84 follows from the seven parameters of 31467 with rotations as small angles.
TEST_F(HeightTest, ChangesWithTheDatum) {
    x = 5595890.158971;
    y = 3500000;
    z = 100;
    transform("EPSG:31467*EPSG:5783", "EPSG:4979");
    EXPECT_NEAR(x, 50.498795954473, 1e-10);
    EXPECT_NEAR(y, 8.998956288073, 1e-10);
    EXPECT_NEAR(z, 148.119010, 1e-4);
    transform("EPSG:4979", "EPSG:31467*EPSG:5783");
    EXPECT_NEAR(x, 5595890.158971, 1e-3);
    EXPECT_NEAR(y, 3500000, 1e-3);
    EXPECT_NEAR(z, 100, 1e-3);
}

class ScaleFactorTest : public HeightTest {
protected:
    std::unique_ptr<AbstractCrs> read(const std::string& text) const {
        return std::unique_ptr<AbstractCrs>(server.creator().createFromSpecialTextFormat(text));
    }
};

TEST_F(ScaleFactorTest, DividesTheCoordinatesOfATarget) {
    transform(*server.request("EPSG:4326").get(), *read("EPSG:25832;EN;10"));
    EXPECT_NEAR(x, 50000, 1e-6);
    EXPECT_NEAR(y, 576103.8212467, 1e-6);
}

TEST_F(ScaleFactorTest, DividesTheCoordinatesOfASourceToo) {
    x = 5000000;
    y = 57610382.12467;
    transform(*read("EPSG:25832;EN;10"), *server.request("EPSG:4326").get());
    EXPECT_NEAR(x, 52, 1e-10);
    EXPECT_NEAR(y, 9, 1e-10);
}

TEST_F(ScaleFactorTest, MultipliesByTheQuotientBetweenCrsOfOneCode) {
    transform(*read("EPSG:25832;EN;10"), *read("EPSG:25832;NE;5"));
    EXPECT_EQ(x, 4.5);
    EXPECT_EQ(y, 26);
    EXPECT_EQ(z, 137.5);
}

TEST_F(ScaleFactorTest, OfTheVerticalPartMultipliesHeightsBothWays) {
    const std::unique_ptr<AbstractCrs> scaled = read("EPSG:25832*EPSG:5783;EN;1;2");
    const Crs wgs84 = server.request("EPSG:4979");
    transform(*wgs84.get(), *scaled);
    EXPECT_NEAR(x, 500000, 1e-5);
    EXPECT_NEAR(z, 275, 1e-9);
    transform(*scaled, *wgs84.get());
    EXPECT_NEAR(x, 52, 1e-10);
    EXPECT_NEAR(z, 550, 1e-9);
}

TEST_F(ScaleFactorTest, OfAThreeDimensionalCrsAppliesToHeights) {
    transform(*server.request("EPSG:4326").get(), *read("EPSG:4979;NE;10"));
    EXPECT_EQ(x, 520);
    EXPECT_EQ(y, 90);
    EXPECT_EQ(z, 1375);
}

TEST_F(ScaleFactorTest, LeavesTheConfiguredCrsAlone) {
    read("EPSG:25832;NE;10");
    EXPECT_EQ(server.request("EPSG:25832")->getPrimaryScaleFactor(), 1.0);
    EXPECT_TRUE(server.request("EPSG:25832")->isAxisOrderEastNorthOrLonLat());
}

struct OutOfReach {
    const char* source;
    Point point;
    const char* target;
};

void PrintTo(const OutOfReach& point, std::ostream* stream) {
    *stream << point.source << " at " << point.point.x << " " << point.point.y << " to " << point.target;
}

class PointOutOfReachTest : public testing::TestWithParam<OutOfReach> {
protected:
    Raised raisedByThePoint() const {
        return raisedBy([this] { transformed(*source.get(), *target.get(), GetParam().point); });
    }

    const Server server;
    const Crs source = server.request(GetParam().source);
    const Crs target = server.request(GetParam().target);
};

TEST_P(PointOutOfReachTest, RaisesTransExecExceptionWithAText) {
    const Raised raised = raisedByThePoint();
    EXPECT_EQ(raised.type, "TransExecException");
    EXPECT_EQ(raised.code, "qvUnexpectedException");
    EXPECT_FALSE(raised.text.empty());
}

TEST_P(PointOutOfReachTest, DoesNotAffectTheNextPoint) {
    EXPECT_EQ(raisedByThePoint().type, "TransExecException");
    const Point next = transformed(*server.request("EPSG:4326").get(), *server.request("EPSG:25832").get(), {52, 9});
    EXPECT_NEAR(next.x, 500000, 1e-5);
    EXPECT_NEAR(next.y, 5761038.212467, 1e-5);
    EXPECT_EQ(raisedByThePoint(), raisedByThePoint());
}

constexpr double NOT_A_NUMBER = std::numeric_limits<double>::quiet_NaN();
constexpr double INFINITE = std::numeric_limits<double>::infinity();

INSTANTIATE_TEST_SUITE_P(Points, PointOutOfReachTest,
                         testing::Values(OutOfReach{"EPSG:4326", {95, 9}, "EPSG:25832"},
                                         OutOfReach{"EPSG:4326", {0, 99}, "EPSG:25832"},
                                         OutOfReach{"EPSG:4326", {-90, 3}, "EPSG:2154"},
                                         OutOfReach{"EPSG:3035", {1e10, 1e10}, "CRS:84"},
                                         OutOfReach{"EPSG:25832", {1e30, 1e30}, "UTM33"},
                                         OutOfReach{"EPSG:3857", {NOT_A_NUMBER, 0}, "EPSG:4326"},
                                         OutOfReach{"EPSG:3857", {0, INFINITE}, "EPSG:4326"}));

// After a failure, the arguments hold the point in radians and in the axis order of the target.
TEST(FailedPointTest, HoldsIntermediateValuesInTheOrderOfTheTarget) {
    const Server server;
    double x = 0;
    double y = 99;
    const Raised raised =
        raisedBy([&] { server.request("EPSG:4326")->transformTo(server.request("EPSG:25832").get(), x, y); });
    EXPECT_EQ(raised.type, "TransExecException");
    EXPECT_DOUBLE_EQ(x, 99 * 0.017453292519943295);
    EXPECT_EQ(y, 0);
}

}  // namespace
}  // namespace IntegrationTest
