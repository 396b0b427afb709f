// How pj_transform iterates over points, and how it treats points that fail.

#include <array>
#include <cmath>
#include <limits>
#include <vector>

#include <gtest/gtest.h>
#include <proj.h>

#include "proj/classic/ClassicProj.h"
#include "tests/support/ClassicMoves.h"

namespace ClassicProj {
namespace {

using namespace TestSupport;

const std::string LONG_LAT = "+proj=longlat +R=1000 ";
const std::string MERCATOR = "+proj=merc +R=1000 ";

class PointsTest : public testing::Test {
protected:
    static double northing(double latitude) { return 1000 * mercatorNorthing(latitude / RADIANS); }

    const projPJ longLat = define(LONG_LAT);
    const projPJ mercator = define(MERCATOR);
    std::vector<double> x{0.1, 0.2, 0.3, 0.4};
    std::vector<double> y{0.5, 0.6, 0.7, 0.8};
    std::vector<double> z{1, 2, 3, 4};
};

TEST_F(PointsTest, AreTransformedInTurn) {
    ASSERT_EQ(pj_transform(longLat, mercator, 4, 1, x.data(), y.data(), z.data()), 0);
    for (std::size_t i = 0; i < 4; ++i) {
        EXPECT_NEAR(x[i], 100.0 * static_cast<double>(i + 1), 1e-9);
        EXPECT_NEAR(y[i], northing(0.5 + 0.1 * static_cast<double>(i)), 1e-9);
        EXPECT_EQ(z[i], static_cast<double>(i + 1));
    }
}

TEST_F(PointsTest, AreCounted) {
    ASSERT_EQ(pj_transform(longLat, mercator, 2, 1, x.data(), y.data(), nullptr), 0);
    EXPECT_NEAR(x[1], 200, 1e-9);
    EXPECT_EQ(x[2], 0.3);
    EXPECT_EQ(y[2], 0.7);
    ASSERT_EQ(pj_transform(longLat, mercator, 0, 1, x.data(), y.data(), nullptr), 0);
    EXPECT_NEAR(x[0], 100, 1e-9);
}

TEST_F(PointsTest, MayStandTogetherInOneArray) {
    std::array<double, 9> points{0.1, 0.5, 1, 0.2, 0.6, 2, 0.3, 0.7, 3};
    ASSERT_EQ(pj_transform(longLat, define(MERCATOR + "+vunits=km"), 3, 3, points.data(), &points[1], &points[2]), 0);
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_NEAR(points[3 * i], 100.0 * static_cast<double>(i + 1), 1e-9);
        EXPECT_NEAR(points[3 * i + 1], northing(0.5 + 0.1 * static_cast<double>(i)), 1e-9);
        EXPECT_NEAR(points[3 * i + 2], 0.001 * static_cast<double>(i + 1), 1e-12);
    }
}

TEST_F(PointsTest, StandingBetweenOthersLeaveThemAlone) {
    ASSERT_EQ(pj_transform(longLat, mercator, 2, 2, x.data(), y.data(), z.data()), 0);
    EXPECT_NEAR(x[2], 300, 1e-9);
    EXPECT_EQ(x[1], 0.2);
    EXPECT_EQ(y[3], 0.8);
}

TEST_F(PointsTest, BeforeAFailingOneAreTransformedAndThoseBehindItAreNot) {
    y[1] = 2;
    EXPECT_NE(pj_transform(longLat, mercator, 4, 1, x.data(), y.data(), z.data()), 0);
    EXPECT_NEAR(x[0], 100, 1e-9);
    EXPECT_NEAR(y[0], northing(0.5), 1e-9);
    EXPECT_EQ(std::vector<double>(x.begin() + 1, x.end()), (std::vector<double>{0.2, 0.3, 0.4}));
    EXPECT_EQ(std::vector<double>(y.begin() + 1, y.end()), (std::vector<double>{2, 0.7, 0.8}));
}

TEST_F(PointsTest, NeedTwoDefinitions) {
    const auto valuesBefore = x;
    EXPECT_NE(pj_transform(nullptr, mercator, 1, 1, x.data(), y.data(), z.data()), 0);
    EXPECT_NE(pj_transform(longLat, nullptr, 1, 1, x.data(), y.data(), z.data()), 0);
    EXPECT_NE(pj_transform(nullptr, nullptr, 1, 1, x.data(), y.data(), nullptr), 0);
    EXPECT_EQ(x, valuesBefore);
}

constexpr double NOT_A_NUMBER = std::numeric_limits<double>::quiet_NaN();

TEST_F(PointsTest, MustBeFinite) {
    const double infinity = std::numeric_limits<double>::infinity();
    for (const double bad : {HUGE_VAL, -infinity, NOT_A_NUMBER}) {
        for (std::size_t which = 0; which < (std::isnan(bad) ? 2 : 3); ++which) {
            std::array<double, 3> point{0.1, 0.2, 0.3};
            const std::size_t other = (which + 1) % 3;
            const double valueOfOther = point[other];
            point[which] = bad;
            EXPECT_NE(pj_transform(longLat, mercator, 1, 1, point.data(), &point[1], &point[2]), 0) << bad << which;
            EXPECT_NE(pj_transform(longLat, longLat, 1, 1, point.data(), &point[1], &point[2]), 0) << bad << which;
            EXPECT_EQ(point[other], valueOfOther);
        }
    }
}

TEST_F(PointsTest, MoveWithoutAHeightThatIsNotANumber) {
    const projPJ utm = define("+proj=utm +zone=32 +ellps=GRS80 +towgs84=0,0,0");
    const projPJ shifted = define("+proj=tmerc +lon_0=9 +ellps=bessel +towgs84=598.1,73.7,418.2,0.2,0.04,-2.4,6.7");
    const projPJ gridded = define("+proj=longlat +ellps=bessel +nadgrids=BETA2007.gsb");
    const projPJ geoid = define("+proj=longlat +datum=WGS84 +geoidgrids=egm96_15.gtx");
    const projPJ feet = define("+proj=longlat +datum=WGS84 +vunits=us-ft");
    for (const projPJ target : {longLat, utm, shifted, gridded, geoid, feet}) {
        double flat[] = {9 * RADIANS, 50 * RADIANS};
        double point[] = {9 * RADIANS, 50 * RADIANS, NOT_A_NUMBER};
        ASSERT_EQ(pj_transform(longLat, target, 1, 1, &flat[0], &flat[1], nullptr), 0);
        EXPECT_EQ(pj_transform(longLat, target, 1, 1, &point[0], &point[1], &point[2]), 0);
        EXPECT_EQ(point[0], flat[0]);
        EXPECT_EQ(point[1], flat[1]);
        EXPECT_TRUE(std::isnan(point[2]));
    }
}

TEST_F(PointsTest, MayHaveHeightsAndNoneInTurn) {
    const projPJ geoid = define("+proj=longlat +datum=WGS84 +geoidgrids=egm96_15.gtx");
    double heights[] = {0, NOT_A_NUMBER, 0};
    double longitudes[] = {0, 0, 0};
    double latitudes[] = {0, 0, 0};
    EXPECT_EQ(pj_transform(longLat, geoid, 3, 1, longitudes, latitudes, heights), 0);
    EXPECT_NEAR(heights[0], -17.16, 0.01);
    EXPECT_TRUE(std::isnan(heights[1]));
    EXPECT_EQ(heights[2], heights[0]);
}

TEST_F(PointsTest, OfAGeocentricCrsNeedTheirZ) {
    const projPJ geocentricCrs = define("+proj=geocent +R=1000");
    for (const auto& [source, target] : {std::pair(longLat, geocentricCrs), std::pair(geocentricCrs, longLat),
                                         std::pair(geocentricCrs, geocentricCrs)}) {
        double a = 0.1;
        double b = 0.2;
        EXPECT_NE(pj_transform(source, target, 1, 1, &a, &b, nullptr), 0);
        double height = NOT_A_NUMBER;
        EXPECT_NE(pj_transform(source, target, 1, 1, &a, &b, &height), 0);
        EXPECT_EQ(a, 0.1);
        EXPECT_EQ(b, 0.2);
    }
}

// A point that fails and one that succeeds between the same two CRS; angles in degrees.
struct Failure {
    const char* name;
    std::string source;
    std::string target;
    Point failing;
    Point working;
};

void PrintTo(const Failure& failure, std::ostream* stream) { *stream << failure.source << " to " << failure.target; }

class FailureTest : public testing::TestWithParam<Failure> {
protected:
    void SetUp() override { searchOnlyIn({}); }
    const Failure& failure = GetParam();
};

TEST_P(FailureTest, GivesAnErrorNumberWithItsText) {
    Point point = failure.failing;
    const int error = move(failure.source, failure.target, point);
    ASSERT_NE(error, 0) << point;
    EXPECT_STRNE(pj_strerrno(error), "");
}

TEST_P(FailureTest, LeavesThePointAlone) {
    Point point = failure.failing;
    move(failure.source, failure.target, point);
    EXPECT_DOUBLE_EQ(point.x, failure.failing.x);
    EXPECT_DOUBLE_EQ(point.y, failure.failing.y);
    EXPECT_EQ(point.z, failure.failing.z);
}

TEST_P(FailureTest, DoesNotTouchTheNextPoint) {
    const projPJ source = define(failure.source);
    const projPJ target = define(failure.target);
    const double in = pj_is_latlong(source) != 0 ? RADIANS : 1;
    const auto transform = [&](const Point& from, Point& to) {
        to = {from.x * in, from.y * in, from.z};
        return pj_transform(source, target, 1, 1, &to.x, &to.y, &to.z);
    };
    Point before{};
    Point between{};
    Point after{};
    ASSERT_EQ(transform(failure.working, before), 0);
    ASSERT_NE(transform(failure.failing, between), 0);
    ASSERT_EQ(transform(failure.working, after), 0);
    EXPECT_EQ(before.x, after.x);
    EXPECT_EQ(before.y, after.y);
    EXPECT_EQ(before.z, after.z);
}

const Point HERE{9, 50, 100};

INSTANTIATE_TEST_SUITE_P(
    OutsideAProjection, FailureTest,
    testing::Values(
        Failure{"NorthOfThePole", LONG_LAT, MERCATOR, {9, 91, 1}, HERE},
        Failure{"SouthOfThePole", LONG_LAT, MERCATOR, {9, -91, 1}, HERE},
        Failure{"ManyTurns", LONG_LAT, MERCATOR, {1000, 50, 1}, HERE},
        Failure{"FarFromTheMeridian",
                "+proj=longlat +ellps=bessel",
                "+proj=tmerc +lon_0=9 +ellps=bessel",
                {99, 0, 1},
                HERE},
        Failure{"BeyondTheHorizon", LONG_LAT, "+proj=ortho +R=1000", {179, 0, 1}, HERE},
        Failure{"BehindThePlane", LONG_LAT, "+proj=gnom +R=1000", {120, 0, 1}, HERE},
        Failure{"Antipode", LONG_LAT, "+proj=stere +lat_0=50 +lon_0=9 +R=1000", {-171, -50, 1}, HERE},
        Failure{"OppositePoleOfACone", LONG_LAT, "+proj=lcc +lat_1=50 +R=1000", {9, -90, 1}, HERE},
        Failure{"OutsideTheDisc", "+proj=ortho +R=1000", LONG_LAT, {1001, 0, 1}, {500, 0, 1}},
        Failure{"OutsideTheEllipse", "+proj=laea +R=1000", LONG_LAT, {2001, 0, 1}, {500, 0, 1}},
        Failure{"OverflowingCoordinates", "+proj=merc +R=1000 +units=km", LONG_LAT, {1e308, 0, 1}, {0.5, 0, 1}}),
    [](const auto& failure) { return std::string(failure.param.name); });

INSTANTIATE_TEST_SUITE_P(OutsideAGrid, FailureTest,
                         testing::Values(Failure{"OfTheSource",
                                                 "+proj=longlat +ellps=bessel +nadgrids=BETA2007.gsb",
                                                 "+proj=utm +zone=32 +datum=WGS84",
                                                 {9, 60, 1},
                                                 HERE},
                                         Failure{"OfTheTarget",
                                                 "+proj=longlat +datum=WGS84",
                                                 "+proj=tmerc +lon_0=9 +ellps=bessel +nadgrids=BETA2007.gsb",
                                                 {9, 60, 1},
                                                 HERE}),
                         [](const auto& failure) { return std::string(failure.param.name); });

TEST(ImpossiblePairTest, FailsEveryTimeAndLeavesThePointAlone) {
    const struct {
        const char* source;
        const char* target;
    } pairs[] = {
        {"+proj=airy +ellps=bessel", "+proj=longlat +ellps=bessel"},
        {"+proj=airy +ellps=bessel", "+proj=utm +zone=32 +ellps=bessel"},
        {"+proj=longlat +ellps=bessel +nadgrids=missing.gsb", "+proj=longlat +datum=WGS84"},
        {"+proj=longlat +datum=WGS84", "+proj=utm +zone=32 +ellps=bessel +nadgrids=missing.gsb"},
        {"+proj=longlat +datum=WGS84 +geoidgrids=missing.gtx", "+proj=longlat +datum=WGS84"},
    };
    for (const auto& [source, target] : pairs) {
        for (int attempt = 0; attempt < 3; ++attempt) {
            Point point{0.1, 0.2, 0.3};
            const int error = move(source, target, point);
            EXPECT_NE(error, 0) << source << " to " << target;
            EXPECT_STRNE(pj_strerrno(error), "");
            EXPECT_DOUBLE_EQ(point.x, 0.1);
            EXPECT_DOUBLE_EQ(point.y, 0.2);
            EXPECT_EQ(point.z, 0.3);
        }
    }
}

TEST(ImpossiblePairTest, DoesNotTouchOtherPairs) {
    Point point{0.1, 0.2, 0.3};
    EXPECT_NE(move("+proj=airy +R=1000", LONG_LAT, point), 0);
    EXPECT_NEAR(moved(LONG_LAT, MERCATOR, HERE).x, 1000 * 9 * RADIANS, 1e-9);
    EXPECT_NE(move("+proj=airy +R=1000", LONG_LAT, point), 0);
}

TEST(SilenceTest, HoldsWhateverFails) {
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    Point point{9, 91, 0};
    move(LONG_LAT, MERCATOR, point);
    move("+proj=longlat +ellps=bessel +nadgrids=missing.gsb", "+proj=longlat +datum=WGS84", point);
    move("+proj=longlat +ellps=bessel +nadgrids=BETA2007.gsb", "+proj=longlat +datum=WGS84", point);
    move("+proj=airy +R=1000", LONG_LAT, point);
    for (const char* text : {"+proj=nonsense", "+proj=utm +zone=99", "+init=missing:1", "+proj=longlat +ellps=nobody"})
        pj_init_plus_ctx(nullptr, text);
    const std::string errors = testing::internal::GetCapturedStderr();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(errors, "");
}

}  // namespace
}  // namespace ClassicProj
