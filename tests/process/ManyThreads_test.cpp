// Threads transform points with every interface, while codes are bound, operations leave the pool, and the server
// forks.

#include <algorithm>
#include <array>
#include <atomic>
#include <iterator>
#include <limits>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/Bits.h"
#include "tests/support/ForkingServer.h"

namespace ProcessTest {
namespace {

using CoordinateTransformation::AbstractCrs;
using CoordinateTransformation::TransExecException;

constexpr int THREADS = 8;
constexpr int ROUNDS = 6;
constexpr int CHILDREN = 10;

struct Place {
    const char* crs;
    Point point;
};

// The same place on Earth in every CRS of the server.
const Place PLACES[] = {{"EPSG:4326", {50, 9}},
                        {"EPSG:4314", {50, 9}},
                        {"EPSG:4277", {50, 9}},
                        {"EPSG:4258", {9, 50}},
                        {"EPSG:25832", {500000, 5538630}},
                        {"EPSG:3857", {1001875, 6446275}},
                        {"EPSG:5798", {9, 50}}};

struct Pair {
    Place source;
    std::string target;
};

// Returns pairs of each CRS with the next one in the table, then with the one after that, and so on. The table wraps
// around.
std::vector<Pair> twentyPairs() {
    constexpr std::size_t COUNT = std::size(PLACES);
    std::vector<Pair> pairs;
    for (std::size_t i = 0; pairs.size() < 20; ++i)
        pairs.push_back({PLACES[i % COUNT], PLACES[(i + 1 + i / COUNT) % COUNT].crs});
    return pairs;
}

constexpr std::size_t POINTS = 5;
// x, y and height of each point.
using Points = std::array<double, 3 * POINTS>;

// The third point is invalid for a projection.
Points pointsAt(const Point& point) {
    Points points{};
    for (std::size_t i = 0; i < POINTS; ++i) {
        points[3 * i] = point.x * (1 + 0.001 * static_cast<double>(i));
        points[3 * i + 1] = i == 2 ? 1e30 : point.y;
        points[3 * i + 2] = 100.0 * static_cast<double>(i);
    }
    return points;
}

Points movedByTransformTo(const AbstractCrs& source, const AbstractCrs& target, Points points) {
    for (std::size_t i = 0; i < POINTS; ++i) try {
            source.transformTo(&target, points[3 * i], points[3 * i + 1], points[3 * i + 2]);
        } catch (const TransExecException&) {
            for (std::size_t k = 0; k < 3; ++k) points[3 * i + k] = std::numeric_limits<double>::quiet_NaN();
        }
    return points;
}

Points movedByTransformer(PointTransformer& transformer, Points points) {
    transformer.transform(POINTS, &points[0], &points[1], &points[2], 3);
    return points;
}

bool areSame(const Points& left, const Points& right) {
    return std::equal(left.begin(), left.end(), right.begin(), TestSupport::haveSameBits);
}

Crs crsOf(const std::string& name) { return server().getCreator().createFromName(name, true, false); }

Points answer(const Pair& pair) {
    const Crs source = crsOf(pair.source.crs);
    const Crs target = crsOf(pair.target);
    return movedByTransformTo(*source.get(), *target.get(), pointsAt(pair.source.point));
}

bool answersAs(const Points& expected, const Pair& pair, PointTransformer& held) {
    const Crs source = crsOf(pair.source.crs);
    const Crs target = crsOf(pair.target);
    const Points points = pointsAt(pair.source.point);
    PointTransformer transformer(*source.get(), *target.get());
    return areSame(movedByTransformer(transformer, points), expected) &&
           areSame(movedByTransformer(held, points), expected) &&
           areSame(movedByTransformTo(*source.get(), *target.get(), points), expected);
}

// Binds a code to PROJ, and transforms with two new pairs.
bool bindsACode(int number) {
    const std::string code = "EPSG:" + std::to_string(FIRST_SPARE_CODE + number);
    PointTransformer there = transformerOf("EPSG:4326", code);
    PointTransformer back = transformerOf(code, "EPSG:4326");
    double x = 50;
    double y = 9;
    return there.transform(1, &x, &y) == 0 && back.transform(1, &x, &y) == 0 && std::abs(x - 50) < 1e-6 &&
           std::abs(y - 9) < 1e-6;
}

class ManyThreadsTest : public testing::Test {
protected:
    ManyThreadsTest() {
        for (const Pair& pair : pairs) expected.push_back(answer(pair));
    }

    // Fills the pool, so that each operation that is returned displaces another one.
    static void fillPool() {
        std::vector<PointTransformer> many;
        for (int i = 0; i < 520; ++i) many.push_back(transformerOf("EPSG:4258", "EPSG:25832"));
    }

    bool answersAll() const {
        for (std::size_t i = 0; i < pairs.size(); ++i) {
            PointTransformer held = transformerOf(pairs[i].source.crs, pairs[i].target);
            if (!answersAs(expected[i], pairs[i], held)) return false;
        }
        return true;
    }

    void serve(int thread) {
        for (int round = 0; round < ROUNDS || !stopped; ++round) {
            EXPECT_TRUE(answersAll());
            EXPECT_TRUE(bindsACode(thread * ROUNDS + round % ROUNDS));
            EXPECT_TRUE(rejectsAnInvalidPoint());
        }
    }

    const std::vector<Pair> pairs = twentyPairs();
    std::vector<Points> expected;
    std::atomic<bool> stopped{false};
};

TEST_F(ManyThreadsTest, GetTheSameBitsFromEveryInterfaceWhileTheServerForks) {
    ASSERT_EQ(pairs.size(), 20U);
    fillPool();
    std::vector<std::thread> threads;
    for (int thread = 0; thread < THREADS; ++thread) threads.emplace_back([this, thread] { serve(thread); });
    for (int child = 0; child < CHILDREN; ++child)
        EXPECT_TRUE(Child([this] { return answersAll(); }).succeedsBesideThreads());
    stopped = true;
    for (std::thread& thread : threads) thread.join();
    EXPECT_TRUE(answersAll());
}

}  // namespace
}  // namespace ProcessTest
