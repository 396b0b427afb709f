#include "proj/Proj4Transformer.h"

#include <chrono>
#include <future>
#include <thread>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "CoordinateTransformation/Misconfigured.h"
#include "CoordinateTransformation/TransExecException.h"
#include "tests/support/Geodesy.h"
#include "tests/support/Proj4Test.h"

namespace CoordinateTransformation {
namespace {

constexpr double RADIANS = 0.017453292519943295;
constexpr bool EAST_NORTH = true;
constexpr bool NORTH_EAST = false;

// On the central meridian of a UTM zone the northing is 0.9996 times the length of the meridian.
constexpr double LONGITUDE = 9;
constexpr double LATITUDE = 50;
constexpr double EASTING = 500000;
const double NORTHING = 0.9996 * TestSupport::meridianArc(TestSupport::GRS80, LATITUDE);

class Proj4TransformerTest : public TestSupport::Proj4Test {};

// All four combinations of axis orders.
class AxisExchangeTest : public Proj4TransformerTest, public testing::WithParamInterface<std::pair<bool, bool>> {
protected:
    static std::pair<double, double> inOrder(bool eastNorth, double east, double north) {
        return eastNorth ? std::pair(east, north) : std::pair(north, east);
    }
    const bool sourceOrder = GetParam().first;
    const bool targetOrder = GetParam().second;
};

INSTANTIATE_TEST_SUITE_P(All, AxisExchangeTest,
                         testing::Values(std::pair(EAST_NORTH, EAST_NORTH), std::pair(EAST_NORTH, NORTH_EAST),
                                         std::pair(NORTH_EAST, EAST_NORTH), std::pair(NORTH_EAST, NORTH_EAST)));

TEST_P(AxisExchangeTest, MovesAGeographicPointToAProjectedCrs) {
    const Proj4Crs source = crsInOrder(4326, sourceOrder);
    const Proj4Crs target = crsInOrder(25832, targetOrder);
    auto [x, y] = inOrder(sourceOrder, LONGITUDE, LATITUDE);
    const auto [expectedX, expectedY] = inOrder(targetOrder, EASTING, NORTHING);
    source.transformTo(&target, x, y);
    EXPECT_NEAR(x, expectedX, 0.001);
    EXPECT_NEAR(y, expectedY, 0.001);
}

TEST_P(AxisExchangeTest, MovesAProjectedPointToAGeographicCrs) {
    const Proj4Crs source = crsInOrder(25832, sourceOrder);
    const Proj4Crs target = crsInOrder(4326, targetOrder);
    auto [x, y] = inOrder(sourceOrder, EASTING, NORTHING);
    const auto [expectedX, expectedY] = inOrder(targetOrder, LONGITUDE, LATITUDE);
    double z = 100;
    source.transformTo(&target, x, y, z);
    EXPECT_NEAR(x, expectedX, 1e-8);
    EXPECT_NEAR(y, expectedY, 1e-8);
    EXPECT_NEAR(z, 100, 1e-3);
}

// The example of IOGP 373-7-2 for the Lambert azimuthal equal area projection, published to the centimetre.
TEST_P(AxisExchangeTest, GivesThePublishedCoordinates) {
    const Proj4Crs geographic = crsInOrder(4258, sourceOrder);
    const Proj4Crs projected = crsInOrder(3035, targetOrder);
    const auto [longitudeOrLatitude, theOther] = inOrder(sourceOrder, 5, 50);
    const auto [eastingOrNorthing, otherwise] = inOrder(targetOrder, 3962799.45, 2999718.85);
    double x = longitudeOrLatitude;
    double y = theOther;
    geographic.transformTo(&projected, x, y);
    EXPECT_NEAR(x, eastingOrNorthing, 0.01);
    EXPECT_NEAR(y, otherwise, 0.01);
    projected.transformTo(&geographic, x = eastingOrNorthing, y = otherwise);
    EXPECT_NEAR(x, longitudeOrLatitude, 1e-7);
    EXPECT_NEAR(y, theOther, 1e-7);
}

TEST_P(AxisExchangeTest, TakesAnglesInRadiansItself) {
    const Proj4Crs source = crsInOrder(4326, sourceOrder);
    const Proj4Crs target = crsInOrder(25832, targetOrder);
    auto [x, y] = inOrder(sourceOrder, LONGITUDE * RADIANS, LATITUDE * RADIANS);
    const auto [expectedX, expectedY] = inOrder(targetOrder, EASTING, NORTHING);
    theProj4Transformer->transformCoordinates(&source, &target, x, y, nullptr);
    EXPECT_NEAR(x, expectedX, 0.001);
    EXPECT_NEAR(y, expectedY, 0.001);
}

// PROJ leaves a failing point unchanged. The exchange of the target's axes still happens, and nothing else.
TEST_P(AxisExchangeTest, LeavesIntermediateValuesAfterAFailure) {
    Proj4Crs source = crsInOrder(4326, sourceOrder);
    source.setPrimaryScaleFactor(2);
    Proj4Crs target = crsInOrder(25832, targetOrder);
    target.setPrimaryScaleFactor(10);
    auto [x, y] = inOrder(sourceOrder, 18.0, 190.0);
    double z = 7;
    EXPECT_THROW(source.transformTo(&target, x, y, z), TransExecException);
    const auto [expectedX, expectedY] = inOrder(targetOrder, 18.0 / 2 * RADIANS, 190.0 / 2 * RADIANS);
    EXPECT_EQ(x, expectedX);
    EXPECT_EQ(y, expectedY);
    EXPECT_EQ(z, 7);
}

TEST_F(Proj4TransformerTest, DividesByTheFactorOfAProjectedTarget) {
    const Proj4Crs source = crsInOrder(4326, NORTH_EAST);
    Proj4Crs target = crsInOrder(25832, EAST_NORTH);
    target.setPrimaryScaleFactor(10);
    double x = LATITUDE;
    double y = LONGITUDE;
    source.transformTo(&target, x, y);
    EXPECT_NEAR(x, EASTING / 10, 0.0001);
    EXPECT_NEAR(y, NORTHING / 10, 0.0001);
}

TEST_F(Proj4TransformerTest, MovesHeightsThroughTheFactorsOfBothSides) {
    Proj4Crs source = crsOf(4326, 5783);
    source.setScaleFactors(1, 2);
    Proj4Crs target = crsOf(25832, 5783);
    target.setScaleFactors(1, 5);
    double x = LATITUDE;
    double y = LONGITUDE;
    double z = 100;
    source.transformTo(&target, x, y, z);
    EXPECT_NEAR(z, 1000, 1e-3);
}

TEST_F(Proj4TransformerTest, NamesAMissingCrsByNothing) {
    const Proj4Crs crs = crsOf(4326);
    const std::pair<const AbstractCrs*, const AbstractCrs*> pairs[] = {
        {nullptr, &crs}, {&crs, nullptr}, {nullptr, nullptr}};
    for (const auto& [source, target] : pairs) {
        double x = 1;
        double y = 2;
        try {
            theProj4Transformer->transformCoordinates(source, target, x, y, nullptr);
            ADD_FAILURE();
        } catch (const Misconfigured& failure) {
            EXPECT_STREQ(failure.what(), "No PROJ4 definition for CRS  found");
        }
        EXPECT_EQ(x, 1);
        EXPECT_EQ(y, 2);
    }
}

class FailingPointTest : public Proj4TransformerTest {
protected:
    // Beyond the north pole: no projection accepts it.
    void transformFailing() const {
        double x = 9;
        double y = 95;
        source.transformTo(&target, x, y);
    }
    const Proj4Crs source = crsInOrder(4326, EAST_NORTH);
    const Proj4Crs target = crsInOrder(25832, EAST_NORTH);
};

TEST_F(FailingPointTest, FailsWithTheTextOfProjAlone) {
    double x = 9 * RADIANS;
    double y = 95 * RADIANS;
    const int error =
        ClassicProj::pj_transform(static_cast<ClassicProj::projPJ>(source.getProjDef()),
                                  static_cast<ClassicProj::projPJ>(target.getProjDef()), 1, 1, &x, &y, nullptr);
    ASSERT_NE(error, 0);
    try {
        transformFailing();
        ADD_FAILURE();
    } catch (const TransExecException& failure) {
        EXPECT_STREQ(failure.what(), ClassicProj::pj_strerrno(error));
        EXPECT_EQ(failure.getServiceExceptionCode(), "qvUnexpectedException");
    }
}

TEST_F(FailingPointTest, MayLieInAPairThatProjRejects) {
    givenEpsg("<1> +proj=longlat +ellps=bessel +nadgrids=missing.gsb <>\n<2> +proj=longlat +datum=WGS84 <>");
    const Proj4Crs gridded = crsOf(1);
    const Proj4Crs world = crsOf(2);
    for (int attempt = 0; attempt < 2; ++attempt) {
        double x = 9;
        double y = 50;
        EXPECT_THROW(gridded.transformTo(&world, x, y), TransExecException);
    }
}

TEST_F(Proj4TransformerTest, WaitsForTheLock) {
    const Proj4Crs source = crsInOrder(4326, EAST_NORTH);
    const Proj4Crs target = crsInOrder(25832, EAST_NORTH);
    std::unique_lock<SpinningMutex> held(proj4TransformLock);
    const auto transformation = std::async(std::launch::async, [&source, &target] {
        double x = LONGITUDE;
        double y = LATITUDE;
        source.transformTo(&target, x, y);
    });
    EXPECT_EQ(transformation.wait_for(std::chrono::milliseconds(50)), std::future_status::timeout);
    held.unlock();
    EXPECT_EQ(transformation.wait_for(std::chrono::seconds(60)), std::future_status::ready);
}

TEST_F(Proj4TransformerTest, ServesAnyNumberOfThreads) {
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back([this, thread] {
            const Proj4Crs source = crsInOrder(4326, EAST_NORTH);
            const Proj4Crs target = crsInOrder(thread % 2 == 0 ? 25832 : 25833, EAST_NORTH);
            const double meridian = thread % 2 == 0 ? 9 : 15;
            for (int i = 0; i < 500; ++i) {
                double x = meridian;
                double y = LATITUDE;
                source.transformTo(&target, x, y);
                ASSERT_NEAR(x, EASTING, 0.001);
                ASSERT_NEAR(y, NORTHING, 0.001);
                target.transformTo(&source, x, y);
                ASSERT_NEAR(x, meridian, 1e-8);
                y = 95;
                ASSERT_THROW(source.transformTo(&target, x, y), TransExecException);
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
}

}  // namespace
}  // namespace CoordinateTransformation
