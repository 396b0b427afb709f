#include "proj/classic/OperationPool.h"

#include <cmath>
#include <cstring>
#include <filesystem>
#include <iterator>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <proj.h>

#include "proj/classic/Definition.h"
#include "tests/support/ClassicMoves.h"
#include "tests/support/TemporaryDirectory.h"

namespace ClassicProj {
namespace {

using TestSupport::define;
using TestSupport::RADIANS;

constexpr char GEOGRAPHIC[] = "+proj=longlat +datum=WGS84";
constexpr char UTM[] = "+proj=utm +zone=32 +datum=WGS84";
constexpr char WITH_GRID[] = "+proj=longlat +ellps=bessel +nadgrids=BETA2007.gsb";
constexpr char WITHOUT_ITS_GRID[] = "+proj=longlat +ellps=bessel +nadgrids=missing.gsb";
constexpr char WITHOUT_ITS_GEOID[] = "+proj=longlat +datum=WGS84 +geoidgrids=missing.gtx";

Position at(double longitude, double latitude, double z = 0) {
    return {longitude * RADIANS, latitude * RADIANS, z, NO_TIME};
}

std::ptrdiff_t openFiles() {
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), std::filesystem::directory_iterator());
}

// Makes the definition unusable for new operations, so only an idle operation can be leased.
void spoil(projPJ definition) { definition->step = "+proj=nonsense"; }

class OperationPoolTest : public testing::Test {
protected:
    void SetUp() override { TestSupport::searchOnlyIn({}); }

    const projPJ geographic = define(GEOGRAPHIC);
    const projPJ utm = define(UTM);
};

TEST_F(OperationPoolTest, MovesPointsThereAndBack) {
    const OperationLease lease(geographic, utm);
    ASSERT_TRUE(lease.isUsable());
    Position points[] = {at(9, 50), at(10, 51)};
    lease.moveFlat(points, 2);
    EXPECT_NEAR(points[0].x, 500000, 1e-6);
    EXPECT_GT(points[1].x, 560000);
    lease.moveBack(points[0]);
    EXPECT_NEAR(points[0].x, 9 * RADIANS, 1e-12);
    EXPECT_NEAR(points[0].y, 50 * RADIANS, 1e-12);
}

TEST_F(OperationPoolTest, LeavesFailingPointsNotFiniteAndOthersAlone) {
    const OperationLease lease(geographic, utm);
    Position points[] = {at(9, 99), at(9, 50), at(9, std::nan("")), at(9, 50)};
    lease.moveFlat(points, 4);
    for (const int failing : {0, 2}) EXPECT_FALSE(points[failing].isFinite()) << failing;
    for (const int good : {1, 3}) EXPECT_NEAR(points[good].x, 500000, 1e-6) << good;
    Position outside = {1e30, 1e30, 0, NO_TIME};
    lease.moveBack(outside);
    EXPECT_FALSE(outside.isFinite());
}

TEST_F(OperationPoolTest, HasNoGeocentricPointsWithoutHeights) {
    const projPJ geocentric = define("+proj=geocent +datum=WGS84");
    for (const auto& [source, target] : {std::pair(geographic, geocentric), std::pair(geocentric, utm)}) {
        const OperationLease lease(source, target);
        ASSERT_TRUE(lease.isUsable());
        Position point = at(9, 50);
        lease.moveFlat(&point, 1);
        EXPECT_FALSE(point.isFinite());
    }
    const OperationLease lease(geographic, geocentric);
    Position point = at(0, 0, 100);
    lease.move(&point, 1);
    EXPECT_NEAR(point.x, 6378237, 1e-6);
}

TEST_F(OperationPoolTest, LacksHeightsAloneWithoutTheirGeoid) {
    const OperationLease lease(define(WITHOUT_ITS_GEOID), utm);
    ASSERT_TRUE(lease.isUsable());
    Position point = at(9, 50);
    lease.moveFlat(&point, 1);
    EXPECT_NEAR(point.x, 500000, 1e-6);
    point = at(9, 50);
    lease.move(&point, 1);
    EXPECT_FALSE(point.isFinite());
}

TEST_F(OperationPoolTest, GivesTheErrorOfAPairThatCannotBeMade) {
    const projPJ incomplete = define(WITHOUT_ITS_GRID);
    double x = 9 * RADIANS;
    double y = 50 * RADIANS;
    const int expected = pj_transform(incomplete, utm, 1, 1, &x, &y, nullptr);
    ASSERT_NE(expected, 0);
    for (int attempt = 0; attempt < 2; ++attempt) {
        const OperationLease lease(incomplete, utm);
        EXPECT_EQ(lease.makeError(), expected);
        EXPECT_FALSE(lease.isUsable());
    }
    EXPECT_EQ(OperationLease(nullptr, utm).makeError(), PROJ_ERR_OTHER_API_MISUSE);
    EXPECT_EQ(OperationLease(utm, nullptr).makeError(), PROJ_ERR_OTHER_API_MISUSE);
    EXPECT_FALSE(OperationLease(nullptr, nullptr).isUsable());
    EXPECT_EQ(OperationLease(geographic, utm).makeError(), 0);
}

TEST_F(OperationPoolTest, GivesAnOperationToOneAtATime) {
    const std::size_t before = countPooledOperations().made;
    OperationLease one(geographic, utm);
    const OperationLease two(geographic, utm);
    EXPECT_EQ(countPooledOperations().idle + 2, countPooledOperations().made);
    one = OperationLease(geographic, utm);
    EXPECT_LE(countPooledOperations().made, before + 3);
}

TEST_F(OperationPoolTest, TakesBackWhatALeaseLeavesForAnother) {
    OperationLease lease(geographic, utm);
    const std::size_t idle = countPooledOperations().idle;
    lease = OperationLease(utm, geographic);
    EXPECT_EQ(countPooledOperations().idle, idle + 1);
    OperationLease moved(std::move(lease));
    EXPECT_EQ(countPooledOperations().idle, idle + 1);
    ASSERT_TRUE(moved.isUsable());
}

TEST_F(OperationPoolTest, ServesTheNextWithAnOperationThatCameBack) {
    { const OperationLease lease(geographic, utm); }
    spoil(utm);
    const std::size_t made = countPooledOperations().made;
    EXPECT_TRUE(OperationLease(geographic, utm).isUsable());
    EXPECT_EQ(countPooledOperations().made, made);
    EXPECT_FALSE(OperationLease(utm, geographic).isUsable());
}

TEST_F(OperationPoolTest, RenewsALeaseInPlace) {
    OperationLease lease(geographic, utm);
    lease.renew();
    ASSERT_TRUE(lease.isUsable());
    Position point = at(9, 50);
    lease.moveFlat(&point, 1);
    EXPECT_NEAR(point.x, 500000, 1e-6);
}

// Uses the pairs one after the other, so the first is the least recently used.
std::vector<projPJ> givenFullPool(projPJ source) {
    std::vector<projPJ> targets;
    for (std::size_t i = 0; i < OperationLease::MOST_IDLE; ++i) targets.push_back(define(UTM));
    for (const projPJ target : targets) EXPECT_TRUE(OperationLease(source, target).isUsable());
    EXPECT_EQ(countPooledOperations().idle, OperationLease::MOST_IDLE);
    return targets;
}

TEST_F(OperationPoolTest, GivesUpTheOperationThatWasUsedLeastRecently) {
    const std::vector<projPJ> targets = givenFullPool(geographic);
    { const OperationLease usedAgain(geographic, targets[0]); }
    for (const projPJ target : targets) spoil(target);
    for (const char* const text : {UTM, UTM, UTM}) EXPECT_TRUE(OperationLease(geographic, define(text)).isUsable());
    EXPECT_EQ(countPooledOperations().idle, OperationLease::MOST_IDLE);
    EXPECT_TRUE(OperationLease(geographic, targets[0]).isUsable());
    EXPECT_TRUE(OperationLease(geographic, targets[4]).isUsable());
    for (const int left : {1, 2, 3})
        EXPECT_FALSE(OperationLease(geographic, targets[static_cast<std::size_t>(left)]).isUsable()) << left;
}

TEST_F(OperationPoolTest, UsesTheContextsOfOperationsThatItGivesUp) {
    givenFullPool(geographic);
    { const OperationLease oneMore(geographic, define(UTM)); }
    const std::size_t made = countPooledOperations().made;
    for (int i = 0; i < 20; ++i) {
        const OperationLease lease(geographic, define(UTM));
        Position point = at(9, 50);
        lease.moveFlat(&point, 1);
        EXPECT_NEAR(point.x, 500000, 1e-6);
    }
    EXPECT_EQ(countPooledOperations().made, made);
    EXPECT_EQ(countPooledOperations().idle, OperationLease::MOST_IDLE);
}

TEST_F(OperationPoolTest, MakesAsManyAsAreInUse) {
    std::vector<OperationLease> leases;
    for (std::size_t i = 0; i < OperationLease::MOST_IDLE + 20; ++i) leases.emplace_back(geographic, utm);
    for (const OperationLease& lease : leases) ASSERT_TRUE(lease.isUsable());
    leases.clear();
    EXPECT_EQ(countPooledOperations().idle, OperationLease::MOST_IDLE);
}

TEST_F(OperationPoolTest, OpensAGridOnceForAllLeases) {
    const projPJ german = define(WITH_GRID);
    std::vector<OperationLease> leases;
    leases.emplace_back(german, utm);
    const std::ptrdiff_t afterFirst = openFiles();
    for (int i = 0; i < 50; ++i) {
        leases.emplace_back(german, utm);
        Position point = at(9, 50);
        leases.back().moveFlat(&point, 1);
        // The grid moves the point 75 m to the west.
        EXPECT_NEAR(point.x, 499925, 5);
    }
    EXPECT_EQ(openFiles(), afterFirst);
}

TEST_F(OperationPoolTest, ClosesAGridWithTheLastOperationThatIsGivenUp) {
    const TestSupport::TemporaryDirectory directory;
    std::filesystem::copy_file("/usr/share/proj/BETA2007.gsb", directory.file("own.gsb"));
    TestSupport::searchOnlyIn({directory.name()});
    givenFullPool(geographic);
    const std::ptrdiff_t before = openFiles();
    const projPJ german = define("+proj=longlat +ellps=bessel +nadgrids=own.gsb");
    {
        const OperationLease held(german, utm);
        { const OperationLease givenUp(german, utm); }
        givenFullPool(geographic);
        EXPECT_EQ(openFiles(), before + 1);
        Position point = at(9, 50);
        held.moveFlat(&point, 1);
        EXPECT_NEAR(point.x, 499925, 5);
    }
    givenFullPool(geographic);
    EXPECT_EQ(openFiles(), before);
}

}  // namespace
}  // namespace ClassicProj
