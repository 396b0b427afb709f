#pragma once

// Threads that work at the same time, and their times.

#include <algorithm>
#include <atomic>
#include <chrono>
#include <ctime>
#include <future>
#include <thread>
#include <vector>

// Times in seconds: wall time from the common start to the end of the last thread, and processor time of all threads.
struct TeamTime {
    double wall;
    double processor;
};

// Holds threads until all of them are ready.
class StartLine {
public:
    using Clock = std::chrono::steady_clock;

    void waitForStart() {
        ready.fetch_add(1);
        while (!given.load(std::memory_order_acquire)) std::this_thread::yield();
    }

    Clock::time_point start(unsigned int threads) {
        while (ready.load() < threads) std::this_thread::yield();
        const Clock::time_point now = Clock::now();
        given.store(true, std::memory_order_release);
        return now;
    }

private:
    std::atomic<unsigned int> ready{0};
    std::atomic<bool> given{false};
};

struct MemberTime {
    StartLine::Clock::time_point end;
    double processor;
};

inline double processorSecondsOfThread() {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

// Each thread calls `prepare` before the start, and the function that it returns after the start. REQUIRES: `prepare`
// does not throw.
template <typename Prepare>
TeamTime runTogether(unsigned int threads, const Prepare& prepare) {
    StartLine line;
    const auto takePart = [&line, &prepare] {
        auto work = prepare();
        line.waitForStart();
        const double before = processorSecondsOfThread();
        work();
        return MemberTime{StartLine::Clock::now(), processorSecondsOfThread() - before};
    };
    std::vector<std::future<MemberTime>> members;
    for (unsigned int i = 0; i < threads; ++i) members.push_back(std::async(std::launch::async, takePart));
    const StartLine::Clock::time_point start = line.start(threads);
    TeamTime time{0, 0};
    for (std::future<MemberTime>& member : members) {
        const MemberTime result = member.get();
        time.wall = std::max(time.wall, std::chrono::duration<double>(result.end - start).count());
        time.processor += result.processor;
    }
    return time;
}
