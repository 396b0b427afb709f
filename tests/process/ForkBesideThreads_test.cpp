// A server forks while its threads are running.

#include <atomic>
#include <exception>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/ForkingServer.h"

namespace ProcessTest {
namespace {

// Threads that do the work of requests until the object is destroyed.
class BusyThreads {
public:
    BusyThreads() {
        server();
        run([] { moved(server(), "EPSG:4314", "EPSG:25832", {GRIDDED_LATITUDE, GRIDDED_LONGITUDE}); });
        run([] { moved(server(), "urn:ogc:def:crs:EPSG::4277", "EPSG:3857", {50, 9}); });
        run([] { EXPECT_TRUE(transformsArrays()); });
        run([] {
            static thread_local PointTransformer held = transformerOf("EPSG:4314", "EPSG:25832");
            EXPECT_TRUE(movesThroughTheGrid(held));
        });
        run([] {
            EXPECT_TRUE(rejectsAnInvalidPoint());
            EXPECT_THROW(moved(server(), "EPSG:9999", "EPSG:4326", {0, 0}), std::exception);
        });
        while (running < static_cast<int>(threads.size())) std::this_thread::yield();
    }
    BusyThreads(const BusyThreads&) = delete;
    BusyThreads& operator=(const BusyThreads&) = delete;
    ~BusyThreads() {
        stopped = true;
        for (std::thread& thread : threads) thread.join();
    }

private:
    void run(void (*work)()) {
        threads.emplace_back([this, work] {
            work();
            ++running;
            while (!stopped) work();
        });
    }

    std::atomic<bool> stopped{false};
    std::atomic<int> running{0};
    std::vector<std::thread> threads;
};

TEST(ForkBesideThreadsTest, LetsAHundredChildrenWork) {
    const BusyThreads threads;
    for (int child = 0; child < 100; ++child) ASSERT_TRUE(Child(servesEveryRequest).succeedsBesideThreads()) << child;
}

// The parent has no threads: ThreadSanitizer does not support new threads in the child of a multithreaded process.
TEST(ForkBesideThreadsTest, LetsAWorkerStartThreadsAndChildren) {
    EXPECT_TRUE(servesEveryRequest());
    const auto worker = [] {
        const BusyThreads threads;
        return servesEveryRequest() && Child(servesEveryRequest).succeedsBesideThreads() && servesEveryRequest();
    };
    EXPECT_TRUE(Child(worker).succeeds());
    EXPECT_TRUE(servesEveryRequest());
}

}  // namespace
}  // namespace ProcessTest
