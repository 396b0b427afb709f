#pragma once

#include <deque>

namespace ClassicProj {

// How many forks lie between this process and the one that loaded the library. Changes in the child of a fork, while it
// has one thread.
extern unsigned int forksSinceLoad;

// What a process makes for itself at first use. A child of a fork makes its own and never touches what it has
// inherited. Nothing is ever released.
//
// Not thread-safe: its lock must be one of those that are held across a fork.
template <typename T>
class PerProcess {
public:
    explicit PerProcess(T (*function)()) : make(function) {}

    T& get() {
        if (current == nullptr || madeAfter != forksSinceLoad) renew();
        return *current;
    }

    // The next get() makes another.
    void abandon() { current = nullptr; }

private:
    void renew() {
        // Earlier ones stay within the reach of leak checkers.
        current = &all.emplace_back(make());
        madeAfter = forksSinceLoad;
    }

    T (*make)();
    std::deque<T> all;
    T* current = nullptr;
    unsigned int madeAfter = 0;
};

}  // namespace ClassicProj
