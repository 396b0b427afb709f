// Memory that runs out while PROJ makes something. A separate program, because it replaces the global allocation
// functions.

#include "tests/support/AllocationFailure.h"

#include <deque>
#include <string>
#include <tuple>

#include <gtest/gtest.h>
#include <proj.h>

#include "proj/classic/OperationPool.h"
#include "proj/classic/PairOperations.h"
#include "proj/classic/ProjObjects.h"
#include "tests/support/Geodesy.h"
#include "tests/support/ProjFaults.h"

namespace ClassicProj {
namespace {

using TestSupport::allocations;
using TestSupport::NEVER;
using TestSupport::RADIANS;

PJ_CONTEXT* newestContext = nullptr;
long allocationsUpToContext = 0;

PJ_CONTEXT* makeWatchedContext() {
    newestContext = makeContext();
    allocationsUpToContext = allocations;
    return newestContext;
}

// PROJ tries a text before it makes the operation. During the trial it logs only errors, into a string on its stack.
// After an exception the log still refers to that string, which no longer exists, and PROJ reports the exception into
// it. The outcome of such a failure is undefined, so no allocation of the trial fails.
bool isTrial() { return newestContext != nullptr && proj_log_level(newestContext, PJ_LOG_TELL) == PJ_LOG_ERROR; }

Definition definitionOf(const std::string& text) {
    Definition definition;
    // Contexts are never released, as in the library. This one makes a single definition.
    EXPECT_EQ(makeDefinition(ParameterList(text), makeContext(), definition), 0) << text;
    return definition;
}

// Returns whether `action` reached the failing allocations.
template <typename Action>
bool runsShort(long first, long howMany, Action action) {
    TestSupport::isSpared = [] { return isTrial() || TestSupport::isWithin(TestSupport::FATAL_FUNCTION); };
    TestSupport::succeedsWithout(first, howMany, action);
    return allocations > first;
}

struct Pair {
    const char* name;
    const char* source;
    const char* target;
};

void PrintTo(const Pair& pair, std::ostream* stream) { *stream << pair.source << " to " << pair.target; }

// The second parameter is the number of consecutive allocations that fail.
class EndOfMemoryTest : public testing::TestWithParam<std::tuple<Pair, long>> {
protected:
    int transform(PairOperations& operations) {
        point = {9.5 * RADIANS, 50.5 * RADIANS, 100};
        return operations.transform(source, target, point.x, point.y, &point.z);
    }
    // The pair's result with sufficient memory.
    void expectRight(PairOperations& operations, long after) {
        ASSERT_EQ(transform(operations), 0) << after;
        EXPECT_EQ(point.x, expected.x) << after;
        EXPECT_EQ(point.y, expected.y) << after;
        EXPECT_EQ(point.z, expected.z) << after;
    }
    void SetUp() override {
        PairOperations operations(makeWatchedContext, 2);
        ASSERT_EQ(transform(operations), 0);
        expected = point;
    }

    const Pair pair = std::get<0>(GetParam());
    const Definition source = definitionOf(pair.source);
    const Definition target = definitionOf(pair.target);
    TestSupport::Point point{};
    TestSupport::Point expected{};
};

// SetUp has used the grids before, so PROJ opens them only when the first point arrives. For lists of grids that are
// new to it, or whose names are longer than 15 characters, PROJ allocates under a lock of its own, which stays locked
// when memory runs out.
TEST_P(EndOfMemoryTest, LeavesNothingBehindThatIsHalfMade) {
    bool ranShort = true;
    long after = 0;
    for (; ranShort; ++after) {
        PairOperations operations(makeWatchedContext, 2);
        int error = 0;
        ranShort = runsShort(after, std::get<1>(GetParam()), [&] { error = transform(operations); });
        EXPECT_TRUE(error != 0 || !ranShort || point.x == expected.x || point.x == 9.5 * RADIANS) << after;
        expectRight(operations, after);
    }
    EXPECT_GT(after, 100);
}

TEST_P(EndOfMemoryTest, MakesNothingMoreInThatContext) {
    PairOperations measured(makeWatchedContext, 2);
    TestSupport::succeedsWith(NEVER, [&] { transform(measured); });
    PairOperations operations(makeWatchedContext, 2);
    EXPECT_TRUE(runsShort(allocationsUpToContext, 1, [&] { transform(operations); }));
    const PJ_CONTEXT* const contextShortOfMemory = newestContext;
    expectRight(operations, 0);
    EXPECT_NE(newestContext, contextShortOfMemory);
}

constexpr Pair PAIRS[] = {
    {"Projection", "+proj=longlat +datum=WGS84", "+proj=utm +zone=32 +datum=WGS84"},
    {"Pipeline", "+proj=longlat +datum=WGS84",
     "+proj=tmerc +lon_0=9 +ellps=bessel +towgs84=598.1,73.7,418.2,0.2,0.04,-2.4,6.7"},
    {"Geoid", "+proj=longlat +datum=WGS84", "+proj=longlat +datum=WGS84 +geoidgrids=egm96_15.gtx"},
    {"Grids", "+proj=longlat +ellps=bessel +nadgrids=@BETA2007.gsb", "+proj=utm +zone=32 +datum=WGS84"},
};

std::string nameOf(const testing::TestParamInfo<std::tuple<Pair, long>>& parameters) {
    return std::get<0>(parameters.param).name + std::to_string(std::get<1>(parameters.param));
}

INSTANTIATE_TEST_SUITE_P(Pairs, EndOfMemoryTest, testing::Combine(testing::ValuesIn(PAIRS), testing::Values(1L, 40L)),
                         nameOf);

// In the pool every pair has its own context, so the trial is recognised by its function.
bool isSparedInPool() {
    return TestSupport::isWithin(TestSupport::TRIAL_FUNCTION) || TestSupport::isWithin(TestSupport::FATAL_FUNCTION);
}

TEST(EndOfMemoryInAPoolTest, LeavesNothingBehindThatIsHalfMade) {
    const Definition source = definitionOf("+proj=longlat +datum=WGS84 +geoidgrids=egm96_15.gtx");
    const Definition target = definitionOf("+proj=tmerc +lon_0=9 +ellps=bessel +towgs84=598.1,73.7,418.2");
    TestSupport::isSpared = isSparedInPool;
    bool ranShort = true;
    long after = 0;
    for (; ranShort; ++after) {
        // Each round has a new pair, because the pool identifies a pair by its definitions and keeps it.
        static std::deque<Definition> definitions;
        Definition& newSource = definitions.emplace_back(source);
        Definition& newTarget = definitions.emplace_back(target);
        TestSupport::succeedsWithout(after, 1, [&] { const OperationLease lost(&newSource, &newTarget); });
        ranShort = allocations > after;
        const OperationLease lease(&newSource, &newTarget);
        ASSERT_TRUE(lease.isUsable()) << after;
        Position point{9 * RADIANS, 50 * RADIANS, 100, NO_TIME};
        lease.move(&point, 1);
        EXPECT_TRUE(point.isFinite()) << after;
        // This operation is in use, and another may be bound to no pair.
        EXPECT_LE(countPooledOperations().made, countPooledOperations().idle + 2) << after;
    }
    EXPECT_GT(after, 100);
}

TEST(EndOfMemoryInADefinitionTest, LeavesNothingBehindThatIsHalfMade) {
    bool ranShort = true;
    for (long after = 0; ranShort; ++after) {
        // Each round has an ellipsoid that has not been measured before.
        const std::string text = "+proj=utm +zone=32 +a=6378137 +rf=298." + std::to_string(1000 + after);
        PJ_CONTEXT* const context = makeWatchedContext();
        Definition definition;
        ranShort = runsShort(after, 1, [&] { makeDefinition(ParameterList(text), context, definition); });
        const Definition again = definitionOf(text);
        EXPECT_NEAR(again.datum.ellipsoid.semiMinor, 6378137 * (1 - 1 / 298.15), 50) << after;
    }
}

}  // namespace
}  // namespace ClassicProj
