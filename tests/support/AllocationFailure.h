#pragma once

#include <cstdlib>
#include <limits>
#include <new>

#include <gtest/gtest.h>

// Replaces the global allocation functions. The replacements count allocations and fail on request. A program may
// include this header in one source only.

namespace TestSupport {

constexpr long NEVER = std::numeric_limits<long>::max();

// Counters of this thread. `allocations` includes those that failed. Allocations with a number from `firstFailure` to
// `lastFailure` fail. `outstanding` is the number of allocations that are not released yet.
inline thread_local long allocations = 0;
inline thread_local long firstFailure = NEVER;
inline thread_local long lastFailure = NEVER;
inline thread_local long outstanding = 0;
// Returns whether the current allocation must succeed. Called only for allocations that would fail.
inline bool (*isSpared)() = nullptr;

inline bool fails() {
    const long number = allocations++;
    return number >= firstFailure && number <= lastFailure && (isSpared == nullptr || !isSpared());
}

inline void* allocateOrNull(std::size_t size) noexcept {
    void* const memory = fails() ? nullptr : std::malloc(size != 0 ? size : 1);
    outstanding += memory != nullptr ? 1 : 0;
    return memory;
}

inline void* allocate(std::size_t size) {
    void* const memory = allocateOrNull(size);
    if (memory == nullptr) throw std::bad_alloc();
    return memory;
}

// Not inlined: the compiler would see memory from operator new reach std::free, and would warn.
[[gnu::noinline]] inline void release(void* memory) {
    outstanding -= memory != nullptr ? 1 : 0;
    std::free(memory);
}

// Runs `action` and fails `howMany` of its allocations, beginning with number `first`. Returns whether it succeeds.
template <typename Action>
bool succeedsWithout(long first, long howMany, Action action) {
    allocations = 0;
    firstFailure = first;
    lastFailure = first + howMany - 1;
    bool failed = false;
    try {
        action();
    } catch (const std::bad_alloc&) {
        failed = true;
    }
    firstFailure = NEVER;
    return !failed;
}

// Runs `action` and fails all allocations after the first `before`. Returns whether it succeeds.
template <typename Action>
bool succeedsWith(long before, Action action) {
    return succeedsWithout(before, NEVER - before, action);
}

// Runs `action` once for each of its allocations and fails only that allocation. The action must fail, or `isRight`
// must return true afterwards. Returns the number of allocations.
template <typename Action, typename Check>
long expectAllOrNothing(Action action, Check isRight) {
    long failing = -1;
    do {
        const bool succeeded = succeedsWithout(++failing, 1, action);
        EXPECT_TRUE(!succeeded || isRight()) << "without allocation " << failing;
    } while (allocations > failing);
    return failing;
}

// Runs `action` on a new state with 0, 1, 2 and more allocations until it succeeds. Each run must release all that it
// allocates. Returns the number of allocations that `action` needs.
template <typename Prepare, typename Action>
long allocationsOf(Prepare prepare, Action action) {
    long before = -1;
    for (bool succeeded = false; !succeeded && !testing::Test::HasFailure();) {
        const long outstandingBefore = outstanding;
        {
            auto state = prepare();
            succeeded = succeedsWith(++before, [&] { action(state); });
        }
        EXPECT_EQ(outstanding, outstandingBefore) << "after " << before << " allocations";
    }
    return before;
}

template <typename Action>
long allocationsOf(Action action) {
    return allocationsOf([] { return 0; }, [&action](int) { action(); });
}

}  // namespace TestSupport

void* operator new(std::size_t size) { return TestSupport::allocate(size); }
void* operator new[](std::size_t size) { return TestSupport::allocate(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return TestSupport::allocateOrNull(size); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return TestSupport::allocateOrNull(size); }
void operator delete(void* memory) noexcept { TestSupport::release(memory); }
void operator delete[](void* memory) noexcept { TestSupport::release(memory); }
void operator delete(void* memory, std::size_t) noexcept { TestSupport::release(memory); }
void operator delete[](void* memory, std::size_t) noexcept { TestSupport::release(memory); }
void operator delete(void* memory, const std::nothrow_t&) noexcept { TestSupport::release(memory); }
void operator delete[](void* memory, const std::nothrow_t&) noexcept { TestSupport::release(memory); }
