// A server forks workers after it has started.

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>
#include <system_error>
#include <unistd.h>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/ForkingServer.h"

namespace ProcessTest {
namespace {

constexpr int POINTS = 2000;
using Heights = std::array<double, POINTS>;

double heightAboveGeoid(double latitude, double longitude) {
    const Crs source = server().getCreator().createFromName("EPSG:4326", true, false);
    const Crs target = server().getCreator().createFromName("EPSG:5798", true, false);
    double x = latitude;
    double y = longitude;
    double z = 0;
    source->transformTo(target.get(), x, y, z);
    return z;
}

// Computes the heights of points all over the world, beginning with number `first`. Consecutive points are far apart.
void computeHeights(Heights& heights, int first) {
    for (int i = 0; i < POINTS; ++i) {
        const int point = (first + i) % POINTS;
        heights[static_cast<std::size_t>(point)] = heightAboveGeoid(point * 37 % 179 - 89, point * 53 % 359 - 179);
    }
}

class Pipe {
public:
    Pipe() { EXPECT_EQ(pipe(ends.data()), 0); }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;
    ~Pipe() {
        close(ends[0]);
        close(ends[1]);
    }

    template <typename T>
    bool send(const T& value) const {
        std::size_t done = 0;
        while (done < sizeof(T)) {
            const ssize_t count = write(ends[1], reinterpret_cast<const char*>(&value) + done, sizeof(T) - done);
            if (count <= 0) return false;
            done += static_cast<std::size_t>(count);
        }
        return true;
    }
    template <typename T>
    bool receive(T& value) const {
        std::size_t done = 0;
        while (done < sizeof(T)) {
            const ssize_t count = read(ends[0], reinterpret_cast<char*>(&value) + done, sizeof(T) - done);
            if (count <= 0) return false;
            done += static_cast<std::size_t>(count);
        }
        return true;
    }

private:
    std::array<int, 2> ends{};
};

// Computes heights in eight workers at the same time, and passes the heights of each worker to `check`.
template <typename Check>
void computeInEightWorkers(Check check) {
    constexpr int WORKERS = 8;
    const Pipe start;
    std::array<Pipe, WORKERS> results;
    std::vector<Child> workers;
    for (int worker = 0; worker < WORKERS; ++worker)
        workers.emplace_back([&start, &result = results[static_cast<std::size_t>(worker)], worker] {
            Heights heights;
            char signal = 0;
            if (!start.receive(signal)) return false;
            computeHeights(heights, worker * 211);
            return result.send(heights);
        });
    EXPECT_TRUE(start.send(std::array<char, WORKERS>()));
    for (const Pipe& result : results) {
        Heights heights;
        ASSERT_TRUE(result.receive(heights));
        check(heights);
    }
    for (Child& worker : workers) EXPECT_TRUE(worker.succeeds());
}

// A shared file position causes wrong results only if two workers read at the same time, so the test runs several
// rounds.
TEST(ForkTest, LetsEightWorkersUseAnOpenGridOfTheServer) {
    // In EGM96 the geoid is 17.2 m above the ellipsoid at 0 N 0 E.
    EXPECT_NEAR(heightAboveGeoid(0, 0), -17.2, 0.05);
    std::vector<Heights> workerHeights;
    for (int round = 0; round < 5; ++round)
        computeInEightWorkers([&workerHeights](const Heights& heights) { workerHeights.push_back(heights); });
    Heights serverHeights;
    computeHeights(serverHeights, 0);
    EXPECT_EQ(workerHeights.size(), 40U);
    EXPECT_TRUE(std::all_of(workerHeights.begin(), workerHeights.end(),
                            [&serverHeights](const Heights& heights) { return heights == serverHeights; }));
}

TEST(ForkTest, LetsTheChildOfAChildWork) {
    EXPECT_TRUE(servesEveryRequest());
    const double height = heightAboveGeoid(10, 20);
    const auto grandchild = [height] {
        return servesEveryRequest() && heightAboveGeoid(10, 20) == height && Child(servesEveryRequest).succeeds();
    };
    const auto child = [height, &grandchild] {
        return heightAboveGeoid(10, 20) == height && Child(grandchild).succeeds() && servesEveryRequest();
    };
    EXPECT_TRUE(Child(child).succeeds());
    EXPECT_TRUE(servesEveryRequest());
}

TEST(ForkTest, LetsAChildUseTheTransformersOfItsParent) {
    PointTransformer inherited = transformerOf("EPSG:4314", "EPSG:25832");
    EXPECT_TRUE(movesThroughTheGrid(inherited));
    const auto grandchild = [&inherited] { return movesThroughTheGrid(inherited); };
    const auto child = [&inherited, &grandchild] {
        return movesThroughTheGrid(inherited) && Child(grandchild).succeeds() && movesThroughTheGrid(inherited) &&
               transformsArrays();
    };
    for (int i = 0; i < 3; ++i) EXPECT_TRUE(Child(child).succeeds());
    EXPECT_TRUE(movesThroughTheGrid(inherited));
}

TEST(ForkTest, LetsAChildTransformABoxFirst) {
    PointTransformer inherited = transformerOf("EPSG:25832", "EPSG:4314");
    const auto child = [&inherited] {
        const auto box = inherited.transformBounds({400000, 5400000, 600000, 5600000});
        return box.minX > 48 && box.maxX < 51 && box.minY > 7 && box.maxY < 11;
    };
    EXPECT_TRUE(Child(child).succeeds());
}

TEST(ForkTest, LetsAChildReleaseTheTransformersOfItsParent) {
    auto inherited = std::make_unique<PointTransformer>(transformerOf("EPSG:4314", "EPSG:25832"));
    PointTransformer another = transformerOf("EPSG:4314", "EPSG:25832");
    const auto child = [&inherited, &another] {
        inherited.reset();
        another = transformerOf("EPSG:4314", "EPSG:25832");
        return transformsArrays() && movesThroughTheGrid(another);
    };
    EXPECT_TRUE(Child(child).succeeds());
    EXPECT_TRUE(movesThroughTheGrid(*inherited));
}

// Returns whether `transformer` fails with a message, and leaves the point unchanged.
bool failsWithoutItsGrid(PointTransformer& transformer) {
    double x = GRIDDED_LONGITUDE;
    double y = GRIDDED_LATITUDE;
    try {
        transformer.transform(1, &x, &y);
    } catch (const CoordinateTransformation::TransExecException& failure) {
        return failure.getCatalogMessage() != nullptr && x == GRIDDED_LONGITUDE;
    }
    return false;
}

TEST(ForkTest, FailsInAChildWhenTheGridsOfItsParentAreGone) {
    server();
    const std::string grid = projDirectory() + "/gone.gsb";
    std::filesystem::copy_file("/usr/share/proj/BETA2007.gsb", grid);
    PointTransformer inherited = transformerOf("EPSG:4313", "EPSG:25832");
    std::filesystem::remove(grid);
    const auto child = [&inherited] { return failsWithoutItsGrid(inherited) && failsWithoutItsGrid(inherited); };
    EXPECT_TRUE(Child(child).succeeds());
    double x = GRIDDED_LONGITUDE;
    double y = GRIDDED_LATITUDE;
    EXPECT_EQ(inherited.transform(1, &x, &y), 0U);
}

std::string filesOfThisProcess() {
    std::string names;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        std::error_code error;
        names += std::filesystem::read_symlink(entry, error).string() + "\n";
    }
    return names;
}

std::string outputOf(const char* command) {
    std::FILE* const stream = popen(command, "r");
    std::string output;
    for (int c = std::fgetc(stream); c != EOF; c = std::fgetc(stream)) output += static_cast<char>(c);
    EXPECT_EQ(pclose(stream), 0);
    return output;
}

TEST(ForkTest, HidesOpenFilesFromProgramsThatTheServerStarts) {
    heightAboveGeoid(0, 0);
    servesEveryRequest();
    const std::string here = filesOfThisProcess();
    const std::string there = outputOf("ls -l /proc/self/fd");
    for (const char* const file : {"egm96_15.gtx", "BETA2007.gsb", "proj.db"}) {
        EXPECT_NE(here.find(file), std::string::npos) << file;
        EXPECT_EQ(there.find(file), std::string::npos) << file;
    }
}

TEST(ForkTest, ClosesTheGridsOfTheParentInAChild) {
    heightAboveGeoid(0, 0);
    EXPECT_TRUE(Child([] { return filesOfThisProcess().find("egm96_15.gtx") == std::string::npos; }).succeeds());
    EXPECT_NE(filesOfThisProcess().find("egm96_15.gtx"), std::string::npos);
}

}  // namespace
}  // namespace ProcessTest
