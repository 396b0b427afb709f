#pragma once

#include <cstdlib>
#include <gtest/gtest.h>
#include <new>

// Replaces the global allocation functions by such that fail where a test tells them to. For the one source of a test
// program of its own.

namespace TestSupport {

constexpr int NEVER = -1;

inline thread_local int allocationsUntilFailure = NEVER;
// Whether there is memory again after one failure, which then shows only if it is reported.
inline thread_local bool failsOnce = false;
inline thread_local long outstanding = 0;

inline void* allocate(std::size_t size) {
    if (allocationsUntilFailure == 0) {
        if (failsOnce) allocationsUntilFailure = NEVER;
        throw std::bad_alloc();
    }
    allocationsUntilFailure -= allocationsUntilFailure > 0 ? 1 : 0;
    void* const memory = std::malloc(size != 0 ? size : 1);
    if (memory == nullptr) throw std::bad_alloc();
    ++outstanding;
    return memory;
}

inline void* allocateOrNull(std::size_t size) noexcept {
    try {
        return allocate(size);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

inline void release(void* memory) {
    outstanding -= memory != nullptr ? 1 : 0;
    std::free(memory);
}

// True when `action` got through with that many allocations; else it failed with bad_alloc.
template <typename Action>
bool succeedsWith(int allocations, Action action) {
    allocationsUntilFailure = allocations;
    bool failed = false;
    try {
        action();
    } catch (const std::bad_alloc&) {
        failed = true;
    }
    allocationsUntilFailure = NEVER;
    return !failed;
}

// The same, when one allocation alone fails.
template <typename Action>
bool succeedsWithout(int allocation, Action action) {
    failsOnce = true;
    const bool succeeded = succeedsWith(allocation, action);
    failsOnce = false;
    return succeeded;
}

// Lets `action` fail at each of its allocations in turn, each time with a new state, until it gets through; nothing
// may be lost. Returns how many allocations there are.
template <typename Prepare, typename Action>
int allocationsOf(Prepare prepare, Action action) {
    int allocations = 0;
    for (bool succeeded = false; !succeeded; ++allocations) {
        const long before = outstanding;
        {
            auto state = prepare();
            succeeded = succeedsWith(allocations, [&] { action(state); });
        }
        EXPECT_EQ(outstanding, before) << "after " << allocations << " allocations";
        if (testing::Test::HasFailure()) break;
    }
    return allocations - 1;
}

template <typename Action>
int allocationsOf(Action action) {
    return allocationsOf([] { return 0; }, [&action](int) { action(); });
}

}  // namespace TestSupport

void* operator new(std::size_t size) { return TestSupport::allocate(size); }
void* operator new[](std::size_t size) { return TestSupport::allocate(size); }
void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
    return TestSupport::allocateOrNull(size);
}
void* operator new[](std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
    return TestSupport::allocateOrNull(size);
}
void operator delete(void* memory) noexcept { TestSupport::release(memory); }
void operator delete[](void* memory) noexcept { TestSupport::release(memory); }
void operator delete(void* memory, std::size_t) noexcept { TestSupport::release(memory); }
void operator delete[](void* memory, std::size_t) noexcept { TestSupport::release(memory); }
