#pragma once

#include <atomic>
#include <chrono>
#include <thread>

namespace CoordinateTransformation {

// A lock for work that takes less time than putting a thread to sleep and waking it. A thread that finds it held
// retries after ever longer pauses, then yields, and finally sleeps, because the holder may be opening a file or may
// not be running at all.
//
// Lockable, neither recursive nor fair. Has a cache line of its own, so that waiting slows down no other data. Needs no
// initialisation at run time, so a host's static initialisers can use it.
class alignas(64) SpinningMutex {
public:
    constexpr SpinningMutex() = default;
    SpinningMutex(const SpinningMutex&) = delete;
    SpinningMutex& operator=(const SpinningMutex&) = delete;

    void lock() {
        if (!held.exchange(true, std::memory_order_acquire)) return;
        while (!lockBeforeSleep()) std::this_thread::sleep_for(SLEEP);
    }

    // Reads before it writes, because writing takes the cache line from the holder.
    bool try_lock() { return !held.load(std::memory_order_relaxed) && !held.exchange(true, std::memory_order_acquire); }

    void unlock() { held.store(false, std::memory_order_release); }

private:
    // The length of a pause, some 5 to 70 nanoseconds depending on the processor. Long pauses let the holder process
    // many points before another thread takes the lock and, with it, the points' data out of the holder's cache.
    static constexpr int LONGEST_PAUSE = 1024;
    // Each with a pause: a yield returns at once if no other thread is ready.
    static constexpr int YIELDS = 100;
    static constexpr int PAUSE_AFTER_YIELD = 64;
    static constexpr std::chrono::microseconds SLEEP{100};

    bool lockBeforeSleep() {
        for (int length = 1; length <= LONGEST_PAUSE; length *= 2) {
            pause(length);
            if (try_lock()) return true;
        }
        for (int i = 0; i < YIELDS; ++i) {
            std::this_thread::yield();
            pause(PAUSE_AFTER_YIELD);
            if (try_lock()) return true;
        }
        return false;
    }

    // Meanwhile the other thread of the same core gets its resources.
    static void pause(int length) {
        for (int i = 0; i < length; ++i) {
#if defined(__x86_64__) || defined(__i386__)
            __builtin_ia32_pause();
#elif defined(__aarch64__)
            __asm__ volatile("isb" ::: "memory");
#else
            std::atomic_signal_fence(std::memory_order_seq_cst);
#endif
        }
    }

    std::atomic<bool> held{false};
};

}  // namespace CoordinateTransformation
