#pragma once

#include <deque>

namespace ClassicProj {

// The number of forks between the process that loaded the library and this one. It changes in the child of a fork,
// which has one thread then.
extern unsigned int forksSinceLoad;

// An object that each process makes for itself at first use. The child of a fork makes its own and never touches the
// inherited one. Nothing is ever released.
//
// Not thread-safe: its lock must be one of those that are held during a fork.
template <typename T>
class PerProcess {
public:
    explicit PerProcess(T (*function)()) : make(function) {}

    T& get() {
        if (current == nullptr || madeAfter != forksSinceLoad) renew();
        return *current;
    }

    // Makes the next get() make another object.
    void abandon() { current = nullptr; }

private:
    void renew() {
        // Earlier objects, kept reachable for leak checkers.
        current = &all.emplace_back(make());
        madeAfter = forksSinceLoad;
    }

    T (*make)();
    std::deque<T> all;
    T* current = nullptr;
    unsigned int madeAfter = 0;
};

}  // namespace ClassicProj
