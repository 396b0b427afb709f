#include "proj/classic/PairOperations.h"

#include <cmath>
#include <filesystem>
#include <iterator>
#include <limits>
#include <sys/resource.h>
#include <sys/stat.h>

#include <gtest/gtest.h>

#include "proj/classic/ProjObjects.h"
#include "tests/support/Geodesy.h"
#include "tests/support/TemporaryDirectory.h"

namespace ClassicProj {
namespace {

using TestSupport::RADIANS;
using TestSupport::TemporaryDirectory;

// Contexts are never released, as in the library.
PJ_CONTEXT* projContext() {
    static PJ_CONTEXT* const context = makeContext();
    return context;
}

Definition definitionOf(const std::string& text) {
    Definition definition;
    EXPECT_EQ(makeDefinition(ParameterList(text), projContext(), definition), 0) << text;
    return definition;
}

// Makes the definition unusable for new operations, so only an existing operation can be found.
void spoil(Definition& definition) { definition.step = "+proj=nonsense"; }

void copyGrid(const std::string& file) { std::filesystem::copy_file("/usr/share/proj/BETA2007.gsb", file); }

std::ptrdiff_t openFiles() {
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), std::filesystem::directory_iterator());
}

using Clock = PairOperations::Clock;

// A clock that the tests advance.
Clock::time_point currentTime;
Clock::time_point now() { return currentTime; }

class PairOperationsTest : public testing::Test {
protected:
    void SetUp() override { setSearchDirectories({}); }
    void TearDown() override { setSearchDirectories({}); }

    const PairOperation* find(const Definition& source, const Definition& target, bool withHeights = false) {
        error = 0;
        return operations.find(source, target, withHeights, error);
    }
    bool isKept(const Definition& source, const Definition& target) { return find(source, target) != nullptr; }

    Definition geographic = definitionOf("+proj=longlat +datum=WGS84");
    Definition utm31 = definitionOf("+proj=utm +zone=31 +datum=WGS84");
    Definition utm32 = definitionOf("+proj=utm +zone=32 +datum=WGS84");
    Definition utm33 = definitionOf("+proj=utm +zone=33 +datum=WGS84");
    PairOperations operations{projContext, 2, now};
    int error = 0;
};

TEST_F(PairOperationsTest, FindsAPairAgain) {
    const PairOperation* const found = find(geographic, utm32);
    ASSERT_NE(found, nullptr);
    EXPECT_EQ(find(geographic, utm32), found);
    EXPECT_NE(find(utm32, geographic), found);
    EXPECT_EQ(find(geographic, utm32), found);
    EXPECT_EQ(operations.size(), 2U);
}

TEST_F(PairOperationsTest, KeepsNoMorePairsThanItsBound) {
    for (const Definition* target : {&utm31, &utm32, &utm33, &utm31, &utm32, &utm33}) {
        EXPECT_NE(find(geographic, *target), nullptr);
        EXPECT_LE(operations.size(), 2U);
    }
    EXPECT_EQ(operations.size(), 2U);
}

TEST_F(PairOperationsTest, GivesUpTheLeastRecentlyUsedPair) {
    find(geographic, utm31);
    find(geographic, utm32);
    find(geographic, utm31);
    find(geographic, utm33);
    for (Definition* definition : {&utm31, &utm32, &utm33}) spoil(*definition);
    EXPECT_TRUE(isKept(geographic, utm31));
    EXPECT_FALSE(isKept(geographic, utm32));
    EXPECT_TRUE(isKept(geographic, utm33));
}

TEST_F(PairOperationsTest, GivesUpNothingForAPairThatCannotBeMade) {
    find(geographic, utm31);
    find(geographic, utm32);
    spoil(utm33);
    EXPECT_EQ(find(geographic, utm33), nullptr);
    EXPECT_NE(error, 0);
    for (Definition* definition : {&utm31, &utm32}) spoil(*definition);
    EXPECT_TRUE(isKept(geographic, utm31));
    EXPECT_TRUE(isKept(geographic, utm32));
}

TEST_F(PairOperationsTest, DistinguishesPairsWithGeoidsByTheirHeights) {
    const Definition geoid = definitionOf("+proj=longlat +datum=WGS84 +geoidgrids=egm96_15.gtx");
    const PairOperation* const withHeights = find(geoid, utm32, true);
    ASSERT_NE(withHeights, nullptr);
    const PairOperation* const flat = find(geoid, utm32, false);
    EXPECT_NE(flat, withHeights);
    EXPECT_EQ(find(geoid, utm32, true), withHeights);
}

TEST_F(PairOperationsTest, KeepsOneOperationForPointsWithAndWithoutHeightsWhereThereIsNoGeoid) {
    EXPECT_EQ(find(geographic, utm32, true), find(geographic, utm32, false));
    EXPECT_EQ(operations.size(), 1U);
}

TEST_F(PairOperationsTest, MovesPointsOfPairsInTurn) {
    for (int turn = 0; turn < 3; ++turn) {
        for (const auto& [utm, centre] : {std::pair(&utm31, 3.0), std::pair(&utm32, 9.0), std::pair(&utm33, 15.0)}) {
            double x = centre * RADIANS;
            double y = 0;
            ASSERT_EQ(find(geographic, *utm)->transform(x, y, nullptr), 0);
            EXPECT_NEAR(x, 500000, 1e-6);
            EXPECT_NEAR(y, 0, 1e-6);
        }
    }
}

TEST_F(PairOperationsTest, TriesAgainAfterASecondWhenAGridWasMissing) {
    const TemporaryDirectory directory;
    setSearchDirectories({directory.name()});
    const Definition german = definitionOf("+proj=longlat +ellps=bessel +nadgrids=later.gsb");
    EXPECT_EQ(find(german, utm32), nullptr);
    EXPECT_NE(error, 0);
    EXPECT_EQ(operations.size(), 0U);
    const int missing = error;
    copyGrid(directory.file("later.gsb"));
    currentTime += std::chrono::milliseconds(999);
    EXPECT_EQ(find(german, utm32), nullptr);
    EXPECT_EQ(error, missing);
    currentTime += std::chrono::milliseconds(1);
    EXPECT_NE(find(german, utm32), nullptr);
}

TEST_F(PairOperationsTest, RemembersAFailureForItsPairAlone) {
    const Definition german = definitionOf("+proj=longlat +ellps=bessel +nadgrids=missing.gsb");
    EXPECT_EQ(find(german, utm32), nullptr);
    EXPECT_NE(find(geographic, utm32), nullptr);
    EXPECT_NE(find(utm32, geographic), nullptr);
    EXPECT_EQ(find(german, utm31), nullptr);
    EXPECT_EQ(operations.failureCount(), 2U);
}

TEST_F(PairOperationsTest, RemembersNoMoreThanAThousandAndTwentyFourFailures) {
    std::vector<Definition> targets(1100, utm32);
    for (Definition& target : targets) {
        spoil(target);
        EXPECT_EQ(find(geographic, target), nullptr);
        EXPECT_LE(operations.failureCount(), 1024U);
    }
    EXPECT_EQ(find(geographic, targets.back()), nullptr);
    EXPECT_NE(find(geographic, utm32), nullptr);
}

TEST_F(PairOperationsTest, ForgetsAFailureWhenThePairIsMade) {
    Definition spoilt = utm32;
    spoil(spoilt);
    EXPECT_EQ(find(geographic, spoilt), nullptr);
    spoilt = utm32;
    currentTime += std::chrono::seconds(1);
    EXPECT_NE(find(geographic, spoilt), nullptr);
    EXPECT_EQ(operations.failureCount(), 0U);
}

// Opening it for reading would wait for a writer.
TEST_F(PairOperationsTest, FailsForAPipeInPlaceOfAGrid) {
    const TemporaryDirectory directory;
    ASSERT_EQ(mkfifo(directory.file("pipe.gsb").c_str(), 0600), 0);
    setSearchDirectories({directory.name()});
    for (const std::string& name : {std::string("pipe.gsb"), directory.file("pipe.gsb")}) {
        EXPECT_EQ(find(definitionOf("+proj=longlat +ellps=bessel +nadgrids=" + name), utm32), nullptr) << name;
        EXPECT_EQ(find(definitionOf("+proj=longlat +ellps=bessel +geoidgrids=" + name), utm32, true), nullptr) << name;
    }
}

// If the process has used a grid before, PROJ opens it only when the first point arrives. If that fails, PROJ applies
// no shift.
TEST_F(PairOperationsTest, FailsForAGridThatHasGone) {
    const TemporaryDirectory directory;
    copyGrid(directory.file("gone.gsb"));
    setSearchDirectories({directory.name()});
    const Definition german = definitionOf("+proj=longlat +ellps=bessel +nadgrids=gone.gsb");
    ASSERT_NE(find(german, utm32), nullptr);
    std::filesystem::remove(directory.file("gone.gsb"));
    PairOperations others(projContext, 2, now);
    for (int attempt = 0; attempt < 3; ++attempt) {
        EXPECT_EQ(others.find(german, utm32, false, error), nullptr);
        EXPECT_NE(error, 0);
        currentTime += std::chrono::seconds(1);
    }
}

// Without descriptors PROJ takes an existing grid for a missing one.
TEST_F(PairOperationsTest, KeepsNothingThatLacksAGridForWantOfDescriptors) {
    const Definition german = definitionOf("+proj=longlat +ellps=bessel +nadgrids=@BETA2007.gsb,null");
    rlimit before{};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &before), 0);
    const rlimit none{3, before.rlim_max};
    // A sanitizer needs descriptors to examine the test itself.
    PairOperations& pairs = operations;
    int ignored = 0;
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
    const PairOperation* const starved = pairs.find(german, geographic, false, ignored);
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &before), 0);
    EXPECT_EQ(starved, nullptr);

    currentTime += std::chrono::seconds(1);
    const PairOperation* const made = find(german, geographic);
    ASSERT_NE(made, nullptr);
    double x = 9 * RADIANS;
    double y = 50 * RADIANS;
    EXPECT_EQ(made->transform(x, y, nullptr), 0);
    EXPECT_GT(std::abs(x - 9 * RADIANS), 1e-6);
}

TEST_F(PairOperationsTest, OpensAGridOnceForAllPairs) {
    const Definition german = definitionOf("+proj=longlat +ellps=bessel +nadgrids=BETA2007.gsb");
    std::vector<Definition> targets;
    for (int zone = 1; zone <= 60; ++zone)
        targets.push_back(definitionOf("+proj=utm +datum=WGS84 +zone=" + std::to_string(zone)));
    PairOperations many(projContext, 1000);
    std::ptrdiff_t afterFirstPair = 0;
    for (const Definition& target : targets) {
        double x = 9 * RADIANS;
        double y = 50 * RADIANS;
        const PairOperation* const there = many.find(german, target, false, error);
        ASSERT_NE(there, nullptr);
        there->transform(x, y, nullptr);
        ASSERT_NE(many.find(target, german, false, error), nullptr);
        if (afterFirstPair == 0) afterFirstPair = openFiles();
    }
    EXPECT_EQ(many.size(), 120U);
    EXPECT_EQ(openFiles(), afterFirstPair);
}

class PairOperationTest : public PairOperationsTest {};

TEST_F(PairOperationTest, LeavesAFailingPointAlone) {
    double x = 0;
    double y = 91 * RADIANS;
    double z = 7;
    EXPECT_NE(find(geographic, utm32)->transform(x, y, &z), 0);
    EXPECT_EQ(x, 0);
    EXPECT_EQ(y, 91 * RADIANS);
    EXPECT_EQ(z, 7);
}

TEST_F(PairOperationTest, MovesTheNextPointAfterAFailure) {
    const PairOperation* const operation = find(geographic, utm32);
    double x = 0;
    double y = 91 * RADIANS;
    EXPECT_NE(operation->transform(x, y, nullptr), 0);
    x = 9 * RADIANS;
    y = 0;
    EXPECT_EQ(operation->transform(x, y, nullptr), 0);
    EXPECT_NEAR(x, 500000, 1e-6);
}

// The easting overflows, and PROJ has no error of its own for that.
TEST_F(PairOperationTest, ReportsNoErrorOfAnEarlierOne) {
    const Definition overflowing = definitionOf("+proj=utm +zone=32 +datum=WGS84 +to_meter=1e-305");
    const PairOperation* const operation = find(geographic, overflowing);
    ASSERT_NE(operation, nullptr);
    double x = 9 * RADIANS;
    double y = 50 * RADIANS;
    const int ownError = operation->transform(x, y, nullptr);
    EXPECT_NE(ownError, 0);

    Definition spoilt = utm31;
    spoil(spoilt);
    EXPECT_EQ(find(geographic, spoilt), nullptr);
    EXPECT_NE(error, ownError);
    EXPECT_EQ(find(geographic, overflowing)->transform(x, y, nullptr), ownError);

    double outside = 91 * RADIANS;
    EXPECT_EQ(find(geographic, utm32)->transform(x, outside, nullptr), PROJ_ERR_COORD_TRANSFM_INVALID_COORD);
    EXPECT_EQ(find(geographic, overflowing)->transform(x, y, nullptr), ownError);
}

TEST_F(PairOperationTest, RefusesCoordinatesThatAreNotFinite) {
    const double infinity = std::numeric_limits<double>::infinity();
    for (const double bad : {infinity, -infinity, std::numeric_limits<double>::quiet_NaN()}) {
        for (int which = 0; which < 3; ++which) {
            double point[] = {0.1, 0.2, 0.3};
            point[which] = bad;
            EXPECT_NE(find(geographic, utm32)->transform(point[0], point[1], &point[2]), 0) << bad << " at " << which;
            EXPECT_NE(find(geographic, geographic)->transform(point[0], point[1], &point[2]), 0)
                << bad << " at " << which;
            EXPECT_EQ(std::isfinite(point[which]), false);
        }
    }
}

TEST_F(PairOperationTest, LeavesPointsAsTheyAreWhereNothingChanges) {
    double x = 200 * RADIANS;
    double y = 95 * RADIANS;
    EXPECT_EQ(find(geographic, geographic)->transform(x, y, nullptr), 0);
    EXPECT_EQ(x, 200 * RADIANS);
    EXPECT_EQ(y, 95 * RADIANS);
}

std::vector<Position> givenPoints() {
    std::vector<Position> points;
    for (int i = 0; i < 10; ++i)
        points.push_back({(9 + 0.1 * i) * RADIANS, (50 - 0.1 * i) * RADIANS, 7.0 * i, NO_TIME});
    points[3].y = 91 * RADIANS;
    points[5].x = std::numeric_limits<double>::infinity();
    points[9].y = 91 * RADIANS;
    return points;
}

// A projection alone, a datum shift, a grid, and no operation at all.
TEST_F(PairOperationTest, MovesManyPointsAsItMovesOne) {
    Definition bessel = definitionOf("+proj=tmerc +lon_0=9 +ellps=bessel +towgs84=598.1,73.7,418.2,0.2,0.04,-2.4,6");
    Definition german = definitionOf("+proj=longlat +ellps=bessel +nadgrids=BETA2007.gsb");
    for (const auto& [source, target] : {std::pair(&geographic, &utm32), std::pair(&geographic, &bessel),
                                         std::pair(&german, &utm32), std::pair(&geographic, &geographic)}) {
        const PairOperation* const operation = find(*source, *target);
        ASSERT_NE(operation, nullptr);
        std::vector<Position> points = givenPoints();
        operation->move(points.data(), points.size());
        for (std::size_t i = 0; i < points.size(); ++i) {
            Position one = givenPoints()[i];
            EXPECT_EQ(operation->transform(one.x, one.y, &one.z) == 0, points[i].isFinite()) << i;
            if (!points[i].isFinite()) continue;
            EXPECT_TRUE(one.x == points[i].x && one.y == points[i].y && one.z == points[i].z) << i;
        }
    }
}

TEST_F(PairOperationTest, ComesBackThroughAllOfIt) {
    Definition bessel = definitionOf("+proj=tmerc +lon_0=9 +ellps=bessel +towgs84=598.1,73.7,418.2,0.2,0.04,-2.4,6");
    Definition german = definitionOf("+proj=longlat +ellps=bessel +nadgrids=BETA2007.gsb");
    for (const Definition* const source : {&geographic, &german}) {
        const PairOperation* const operation = find(*source, bessel);
        Position point{9.5 * RADIANS, 50.5 * RADIANS, 0, NO_TIME};
        operation->move(&point, 1);
        EXPECT_GT(point.x, 1000);
        point.z = 0;
        operation->moveBack(point);
        EXPECT_NEAR(point.x, 9.5 * RADIANS, 1e-9);
        EXPECT_NEAR(point.y, 50.5 * RADIANS, 1e-9);
    }
}

TEST_F(PairOperationTest, LeavesNoErrorOfAPointWithItsContext) {
    const PairOperation* const operation = find(geographic, utm32);
    for (int i = 0; i < 10; ++i) {
        Position bad = givenPoints()[3];
        operation->move(&bad, 1);
        EXPECT_EQ(proj_context_errno(projContext()), 0);
        bad = {1e30, 1e30, 0, NO_TIME};
        operation->moveBack(bad);
        EXPECT_FALSE(bad.isFinite());
        EXPECT_EQ(proj_context_errno(projContext()), 0);
    }
}

}  // namespace
}  // namespace ClassicProj
