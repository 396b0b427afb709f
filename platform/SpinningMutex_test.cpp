#include "platform/SpinningMutex.h"

#include <chrono>
#include <fstream>
#include <future>
#include <mutex>
#include <string>
#include <sys/syscall.h>
#include <thread>
#include <unistd.h>
#include <vector>

#include <gtest/gtest.h>

namespace CoordinateTransformation {
namespace {

TEST(SpinningMutexTest, IsHeldByOneThreadAtATime) {
    SpinningMutex mutex;
    long sum = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i)
        threads.emplace_back([&] {
            for (int j = 0; j < 5000; ++j) {
                const std::lock_guard<SpinningMutex> guard(mutex);
                ++sum;
            }
        });
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(sum, 40000);
}

TEST(SpinningMutexTest, IsNotTakenWhileItIsHeld) {
    SpinningMutex mutex;
    EXPECT_TRUE(mutex.try_lock());
    EXPECT_FALSE(mutex.try_lock());
    mutex.unlock();
    EXPECT_TRUE(mutex.try_lock());
}

// Depending on the time, the waiting thread pauses, yields or sleeps.
TEST(SpinningMutexTest, LetsAWaitingThreadInOnceItIsFree) {
    for (const int microseconds : {0, 10, 300, 3000, 30000}) {
        SpinningMutex mutex;
        bool isFree = false;
        mutex.lock();
        std::thread waiting([&] {
            const std::lock_guard<SpinningMutex> guard(mutex);
            EXPECT_TRUE(isFree) << microseconds;
        });
        std::this_thread::sleep_for(std::chrono::microseconds(microseconds));
        isFree = true;
        mutex.unlock();
        waiting.join();
    }
}

// The number of voluntary context switches of the thread.
long countSleeps(pid_t thread) {
    std::ifstream status("/proc/self/task/" + std::to_string(thread) + "/status");
    const std::string key = "voluntary_ctxt_switches:";
    std::string line;
    while (std::getline(status, line))
        if (line.compare(0, key.size(), key) == 0) return std::stol(line.substr(key.size()));
    return -1;
}

TEST(SpinningMutexTest, SleepsWhenTheHolderTakesLong) {
    SpinningMutex mutex;
    mutex.lock();
    std::promise<pid_t> started;
    std::thread waiting([&] {
        started.set_value(static_cast<pid_t>(syscall(SYS_gettid)));
        const std::lock_guard<SpinningMutex> guard(mutex);
    });
    const pid_t thread = started.get_future().get();
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::minutes(1);
    const long before = countSleeps(thread);
    // The thread may still be leaving `set_value`, which can put it to sleep once.
    while (countSleeps(thread) < before + 3 && std::chrono::steady_clock::now() < deadline)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    EXPECT_GE(countSleeps(thread), before + 3);
    mutex.unlock();
    waiting.join();
}

TEST(SpinningMutexTest, HasACacheLineOfItsOwn) {
    EXPECT_EQ(alignof(SpinningMutex), 64U);
    EXPECT_EQ(sizeof(SpinningMutex), 64U);
}

}  // namespace
}  // namespace CoordinateTransformation
