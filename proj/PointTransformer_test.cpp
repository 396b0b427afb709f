#include "CoordinateTransformation/PointTransformer.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <limits>
#include <memory>
#include <mutex>
#include <new>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "CoordinateTransformation/TransExecException.h"
#include "proj/classic/OperationPool.h"
#include "tests/support/Bits.h"
#include "tests/support/Geodesy.h"
#include "tests/support/Proj4Test.h"

namespace CoordinateTransformation {
namespace {

constexpr double NOT_A_NUMBER = std::numeric_limits<double>::quiet_NaN();
// No projection of these tests can project this point.
constexpr double NOWHERE = 1e30;

using TestSupport::haveSameBits;
using PointXyz = std::array<double, 3>;

class PointTransformerTest : public TestSupport::Proj4Test {
protected:
    PointTransformerTest() {
        givenEpsg(
            "<4326> +proj=longlat +datum=WGS84 +no_defs <>\n<4979> +proj=longlat +datum=WGS84 +no_defs <>\n"
            "<4978> +proj=geocent +datum=WGS84 +no_defs <>\n"
            "<3857> +proj=merc +a=6378137 +b=6378137 +units=m +nadgrids=@null +no_defs <>\n"
            "<3413> +proj=stere +lat_0=90 +lat_ts=70 +lon_0=-45 +datum=WGS84 +units=m +no_defs <>\n"
            "<25832> +proj=utm +zone=32 +ellps=GRS80 +towgs84=0,0,0 +units=m +no_defs <>\n"
            "<31467> +proj=tmerc +lat_0=0 +lon_0=9 +k=1 +x_0=3500000 +y_0=0 +ellps=bessel "
            "+towgs84=598.1,73.7,418.2,0.202,0.045,-2.455,6.7 +units=m +no_defs <>\n"
            "<5773> +proj=longlat +datum=WGS84 +geoidgrids=egm96_15.gtx +no_defs <>\n"
            "<5774> +proj=longlat +datum=WGS84 +geoidgrids=missing.gtx +no_defs <>\n"
            "<5775> +proj=longlat +ellps=bessel +nadgrids=missing.gsb +no_defs <>\n"
            "<5776> +proj=longlat +ellps=bessel +nadgrids=BETA2007.gsb +no_defs <>\n"
            "<4230> +proj=longlat +ellps=intl +towgs84=-89.5,-93.8,-123.1,0,0,-0.156,1.2 +datum_id=EPSG:6230 "
            "+no_defs <>\n"
            "<23030> +proj=utm +zone=30 +ellps=intl +towgs84=-84,-107,-120 +datum_id=EPSG:6230 +units=m +no_defs "
            "<>\n");
    }
};

struct PairOfCodes {
    const char* name;
    unsigned int source;
    unsigned int target;
    PointXyz point;
};

void PrintTo(const PairOfCodes& pair, std::ostream* stream) { *stream << pair.name; }

const PairOfCodes PAIRS[] = {
    {"ToUtm", 4326, 25832, {50.1, 9.2, 100}},
    {"FromUtm", 25832, 4326, {512345.6, 5556789.1, 100}},
    {"OverADatum", 31467, 25832, {5550000, 3512345, 100}},
    {"ToGeocentric", 4326, 4978, {50.1, 9.2, 100}},
    {"FromGeocentric", 4978, 25832, {4047000, 655000, 4870000}},
    {"OfOneCode", 4326, 4979, {50.1, 9.2, 100}},
    {"OfTheSame", 25832, 25832, {512345.6, 5556789.1, 100}},
    {"OverAGeoid", 5773, 25832, {9.2, 50.1, 100}},
    {"ToAGeoid", 25832, 5773, {512345.6, 5556789.1, 100}},
    {"WithoutItsGeoid", 5774, 25832, {9.2, 50.1, 100}},
    {"ThroughAGrid", 5776, 25832, {9.2, 50.1, 100}},
    {"ToMercator", 4326, 3857, {50.1, 9.2, 100}},
    {"WithinADatum", 4230, 23030, {-3, 40, 100}},
};

// The failures and the resulting points.
struct Outcome {
    std::vector<PointXyz> points;
    std::vector<bool> failed;
};

Outcome movedByTransformTo(const AbstractCrs& source, const AbstractCrs& target, std::vector<PointXyz> points,
                           bool withHeights) {
    std::vector<bool> failed;
    for (PointXyz& point : points) {
        const PointXyz before = point;
        failed.push_back(false);
        try {
            if (withHeights)
                source.transformTo(&target, point[0], point[1], point[2]);
            else
                source.transformTo(&target, point[0], point[1]);
        } catch (const TransExecException&) {
            failed.back() = true;
            point = {NOT_A_NUMBER, NOT_A_NUMBER, withHeights ? NOT_A_NUMBER : before[2]};
        }
    }
    return {points, failed};
}

Outcome movedByTransformer(PointTransformer& transformer, std::vector<PointXyz> points, bool withHeights) {
    const std::unique_ptr<bool[]> failed(new bool[points.size()]);
    const std::size_t failures = transformer.transform(points.size(), &points[0][0], &points[0][1],
                                                       withHeights ? &points[0][2] : nullptr, 3, failed.get());
    const Outcome outcome{points, std::vector<bool>(failed.get(), failed.get() + points.size())};
    EXPECT_EQ(failures, static_cast<std::size_t>(std::count(outcome.failed.begin(), outcome.failed.end(), true)));
    return outcome;
}

void expectSame(const Outcome& actual, const Outcome& expected) {
    EXPECT_EQ(actual.failed, expected.failed);
    for (std::size_t i = 0; i < expected.points.size(); ++i)
        for (std::size_t ordinate = 0; ordinate < 3; ++ordinate) {
            const double value = actual.points[i][ordinate];
            const double wanted = expected.points[i][ordinate];
            EXPECT_TRUE(haveSameBits(value, wanted) || (std::isnan(value) && std::isnan(wanted)))
                << i << " " << ordinate << " " << value << " " << wanted;
        }
}

// Hundreds of points; some of them fail or have no height.
std::vector<PointXyz> pointsAround(const PointXyz& point) {
    constexpr double BAD[] = {NOWHERE, NOT_A_NUMBER, std::numeric_limits<double>::infinity()};
    std::vector<PointXyz> points;
    for (std::size_t i = 0; i < 300; ++i) {
        const double far = static_cast<double>(i) * 0.001;
        points.push_back({point[0] + far, point[1] - far, 1000 * far});
        if (i % 7 == 0) points.back()[i / 7 % 3] = BAD[i / 21 % 3];
    }
    return points;
}

// Pairs in all axis orders, with and without scale factors, with and without heights.
class SamePointTest : public PointTransformerTest, public testing::WithParamInterface<PairOfCodes> {
protected:
    void expectTheSame(const Proj4Crs& source, const Proj4Crs& target, bool withHeights) {
        const std::vector<PointXyz> points = pointsAround(GetParam().point);
        PointTransformer transformer(source, target);
        expectSame(movedByTransformer(transformer, points, withHeights),
                   movedByTransformTo(source, target, points, withHeights));
    }
};

INSTANTIATE_TEST_SUITE_P(Pairs, SamePointTest, testing::ValuesIn(PAIRS),
                         [](const auto& pair) { return std::string(pair.param.name); });

TEST_P(SamePointTest, IsWhatTransformToGives) {
    for (const bool sourceEastNorth : {true, false})
        for (const bool targetEastNorth : {true, false})
            for (const bool withHeights : {true, false})
                for (const double factor : {1.0, 0.3048}) {
                    Proj4Crs source = crsInOrder(GetParam().source, sourceEastNorth);
                    Proj4Crs target = crsInOrder(GetParam().target, targetEastNorth);
                    source.setScaleFactors(factor, 0.5);
                    target.setScaleFactors(1 / factor, 2);
                    SCOPED_TRACE(testing::Message() << sourceEastNorth << targetEastNorth << withHeights << factor);
                    expectTheSame(source, target, withHeights);
                }
}

TEST_P(SamePointTest, NeedsNeitherCrsAfterwards) {
    auto source = std::make_unique<Proj4Crs>(crsOf(GetParam().source));
    auto target = std::make_unique<Proj4Crs>(crsOf(GetParam().target));
    const std::vector<PointXyz> points = pointsAround(GetParam().point);
    const Outcome wanted = movedByTransformTo(*source, *target, points, true);
    PointTransformer transformer(*source, *target);
    source->setScaleFactors(7, 7);
    source->forceWmsAxisOrder();
    source.reset();
    target.reset();
    expectSame(movedByTransformer(transformer, points, true), wanted);
}

// 40 N on the central meridian of the UTM zone, in CRS of one datum with two shifts to WGS 84.
TEST_F(PointTransformerTest, ShiftsNothingWithinADatum) {
    const double northing = 0.9996 * TestSupport::meridianArc(TestSupport::INTERNATIONAL, 40);
    const Proj4Crs source = crsInOrder(4230, true);
    const Proj4Crs target = crsInOrder(23030, true);
    PointTransformer transformer(source, target);
    for (const Outcome& moved : {movedByTransformer(transformer, {{-3, 40, 100}}, true),
                                 movedByTransformTo(source, target, {{-3, 40, 100}}, true)}) {
        EXPECT_NEAR(moved.points.front()[0], 500000, 1e-6);
        EXPECT_NEAR(moved.points.front()[1], northing, 1e-6);
        EXPECT_EQ(moved.points.front()[2], 100);
    }
    const Bounds box = transformer.transformBounds({-3, 40, -3, 40});
    EXPECT_NEAR(box.minX, 500000, 1e-6);
    EXPECT_NEAR(box.maxY, northing, 1e-6);
}

TEST_F(PointTransformerTest, TakesArraysOfTheirOwnAndPointsThatStandTogether) {
    const Proj4Crs source = crsOf(4326);
    const Proj4Crs target = crsOf(25832);
    PointTransformer transformer(source, target);
    double x[] = {50, 51, 52};
    double y[] = {9, 10, 11};
    double z[] = {1, 2, 3};
    double together[] = {50, 9, 1, -1, 51, 10, 2, -1, 52, 11, 3, -1};
    EXPECT_EQ(transformer.transform(3, x, y, z), 0U);
    EXPECT_EQ(transformer.transform(3, together, together + 1, together + 2, 4), 0U);
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_TRUE(haveSameBits(x[i], together[4 * i]));
        EXPECT_TRUE(haveSameBits(y[i], together[4 * i + 1]));
        EXPECT_TRUE(haveSameBits(z[i], together[4 * i + 2]));
        EXPECT_EQ(together[4 * i + 3], -1);
    }
}

TEST_F(PointTransformerTest, WalksBackwardsToo) {
    const Proj4Crs source = crsOf(4326);
    const Proj4Crs target = crsOf(25832);
    PointTransformer transformer(source, target);
    double forwards[] = {50, 9, 51, 10};
    double backwards[] = {51, 10, 50, 9};
    transformer.transform(2, forwards, forwards + 1, nullptr, 2);
    transformer.transform(2, backwards + 2, backwards + 3, nullptr, -2);
    EXPECT_TRUE(haveSameBits(forwards[0], backwards[2]));
    EXPECT_TRUE(haveSameBits(forwards[3], backwards[1]));
}

TEST_F(PointTransformerTest, DoesNothingWithoutPoints) {
    PointTransformer transformer(crsOf(4326), crsOf(25832));
    EXPECT_EQ(transformer.transform(0, nullptr, nullptr), 0U);
}

TEST_F(PointTransformerTest, GoesOnAfterItHasBeenMoved) {
    PointTransformer first(crsOf(4326), crsOf(25832));
    PointTransformer second(std::move(first));
    PointTransformer third(crsOf(25832), crsOf(4326));
    third = std::move(second);
    double x = 50;
    double y = 9;
    EXPECT_EQ(third.transform(1, &x, &y), 0U);
    EXPECT_NEAR(x, 500000, 1e-6);
}

TEST_F(PointTransformerTest, ReportsWhyProjCannotMakeTheOperation) {
    const Proj4Crs source = crsOf(5775);
    const Proj4Crs target = crsOf(25832);
    double x = 50;
    double y = 9;
    std::string reason;
    try {
        source.transformTo(&target, x, y);
    } catch (const TransExecException& failure) {
        reason = failure.what();
    }
    ASSERT_NE(reason, "");
    try {
        const PointTransformer transformer(source, target);
        ADD_FAILURE() << "made";
    } catch (const TransExecException& failure) {
        EXPECT_EQ(failure.what(), reason);
    }
}

TEST_F(PointTransformerTest, LacksHeightsAloneWithoutTheirGeoid) {
    PointTransformer transformer(crsOf(5774), crsOf(25832));
    PointXyz point = {9, 50, 100};
    EXPECT_EQ(transformer.transform(1, &point[0], &point[1]), 0U);
    EXPECT_NEAR(point[0], 500000, 1e-6);
    EXPECT_EQ(transformer.transform(1, &point[0], &point[1], &point[2]), 1U);
    EXPECT_TRUE(std::isnan(point[0]));
}

TEST_F(PointTransformerTest, LeavesErrnoAlone) {
    errno = 77;
    {
        PointTransformer transformer(crsOf(4326), crsOf(25832));
        double x = NOWHERE;
        double y = NOWHERE;
        transformer.transform(1, &x, &y);
    }
    EXPECT_EQ(errno, 77);
}

TEST_F(PointTransformerTest, ComesBackToThePoolWithItsOperation) {
    const Proj4Crs source = crsOf(4326);
    const Proj4Crs target = crsOf(25832);
    { const PointTransformer transformer(source, target); }
    const auto before = ClassicProj::countPooledOperations();
    { const PointTransformer transformer(source, target); }
    EXPECT_EQ(ClassicProj::countPooledOperations().made, before.made);
    EXPECT_EQ(ClassicProj::countPooledOperations().idle, before.idle);
    {
        const PointTransformer one(source, target);
        const PointTransformer two(source, target);
    }
    EXPECT_EQ(ClassicProj::countPooledOperations().made, before.made + 1);
    EXPECT_EQ(ClassicProj::countPooledOperations().idle, before.idle + 1);
}

// A host's own CRS, whose transformer adds to the coordinates and refuses one point.
class HostTransformer : public CoordTransformer {
public:
    void transformCoordinates(const AbstractCrs*, const AbstractCrs*, double& x, double& y, double* z) const override {
        if (x == NOWHERE) throw std::runtime_error("nowhere");
        x += 1;
        y += 2;
        if (z != nullptr) *z += 3;
    }
};

TEST_F(PointTransformerTest, ServesHostsByTheirOwnTransformTo) {
    const HostTransformer host;
    PointTransformer transformer(Proj4Crs(creator, host, 25832, 0, true), crsOf(31467));
    double points[] = {10, 20, 30, NOWHERE, 20, 30, 11, 21, 31};
    bool failed[3];
    EXPECT_EQ(transformer.transform(3, points, points + 1, points + 2, 3, failed), 1U);
    EXPECT_EQ(points[0], 11);
    EXPECT_EQ(points[1], 22);
    EXPECT_EQ(points[2], 33);
    for (int i = 3; i < 6; ++i) EXPECT_TRUE(std::isnan(points[i]));
    EXPECT_EQ(points[6], 12);
    EXPECT_FALSE(failed[0]);
    EXPECT_TRUE(failed[1]);
    EXPECT_FALSE(failed[2]);
}

TEST_F(PointTransformerTest, DoesNotWaitForTransformTo) {
    PointTransformer transformer(crsOf(4326), crsOf(25832));
    const std::lock_guard<SpinningMutex> guard(proj4TransformLock);
    double x = 50;
    double y = 9;
    std::thread([&] { EXPECT_EQ(transformer.transform(1, &x, &y), 0U); }).join();
    EXPECT_NEAR(x, 500000, 1e-6);
}

TEST_F(PointTransformerTest, TakesHeightsThatAreMissingHereAndThere) {
    const Proj4Crs source = crsOf(5773);
    const Proj4Crs target = crsOf(25832);
    std::vector<PointXyz> points = pointsAround({9.2, 50.1, 100});
    for (std::size_t i = 0; i < points.size(); ++i)
        if (i % 5 < 2) points[i][2] = NOT_A_NUMBER;
    PointTransformer transformer(source, target);
    expectSame(movedByTransformer(transformer, points, true), movedByTransformTo(source, target, points, true));
}

TEST_F(PointTransformerTest, AllowsForNoFlags) {
    PointTransformer transformer(crsOf(4326), crsOf(25832));
    double x[] = {50, 99, 51};
    double y[] = {9, 9, 9};
    EXPECT_EQ(transformer.transform(3, x, y), 1U);
    EXPECT_NEAR(y[0], 5538630.703, 1e-3);
    EXPECT_TRUE(std::isnan(x[1]));
    EXPECT_TRUE(std::isnan(y[1]));
    EXPECT_NEAR(x[2], 500000, 1e-6);
}

TEST_F(PointTransformerTest, GivesBackItsOperationWhenItIsAssignedTo) {
    PointTransformer transformer(crsOf(4326), crsOf(25832));
    const std::size_t idle = ClassicProj::countPooledOperations().idle;
    transformer = PointTransformer(crsOf(4326), crsOf(4979));
    EXPECT_EQ(ClassicProj::countPooledOperations().idle, idle + 1);
}

// A CRS with operations of its own.
class DerivedCrs : public Proj4Crs {
public:
    using Proj4Crs::Proj4Crs;
    AbstractCrs* copy() const override { return new DerivedCrs(*this); }
    bool isGeographic() const override { return false; }
};

TEST_F(PointTransformerTest, LetsClassesOfAHostAnswerForThemselves) {
    const DerivedCrs radians(creator, *getProj4Transformer(), 4326, 0, false);
    PointTransformer transformer(radians, crsOf(25832));
    double x = 9 / 57.29577951308232;
    double y = 50 / 57.29577951308232;
    EXPECT_EQ(transformer.transform(1, &x, &y), 0U);
    EXPECT_NEAR(x, 500000, 1e-6);
}

class ExhaustedTransformer : public CoordTransformer {
public:
    void transformCoordinates(const AbstractCrs*, const AbstractCrs*, double&, double&, double*) const override {
        throw std::bad_alloc();
    }
};

TEST_F(PointTransformerTest, PassesTheEndOfMemoryInAHostOn) {
    const ExhaustedTransformer host;
    PointTransformer transformer(Proj4Crs(creator, host, 25832, 0, true), crsOf(31467));
    double x = 1;
    double y = 2;
    EXPECT_THROW(transformer.transform(1, &x, &y), std::bad_alloc);
}

TEST_F(PointTransformerTest, GivesTheSameInManyThreads) {
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i)
        threads.emplace_back([this, i] {
            const PairOfCodes& pair = PAIRS[static_cast<std::size_t>(i) % std::size(PAIRS)];
            const Proj4Crs source = crsOf(pair.source);
            const Proj4Crs target = crsOf(pair.target);
            const Outcome wanted = movedByTransformTo(source, target, {pair.point}, true);
            for (int turn = 0; turn < 50; ++turn) {
                PointTransformer transformer(source, target);
                expectSame(movedByTransformer(transformer, {pair.point}, true), wanted);
            }
        });
    for (std::thread& thread : threads) thread.join();
}

}  // namespace
}  // namespace CoordinateTransformation
