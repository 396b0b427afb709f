#pragma once

#include <cstdlib>
#include <limits>
#include <new>

#include <gtest/gtest.h>

// Replaces the global allocation functions by such that count, and fail where a test wants them to. For the one source
// of a test program of its own.

namespace TestSupport {

constexpr long NEVER = std::numeric_limits<long>::max();

// Of this thread: how many allocations there were, refused ones among them; which of them fail; what is not released.
inline thread_local long allocations = 0;
inline thread_local long firstFailure = NEVER;
inline thread_local long lastFailure = NEVER;
inline thread_local long outstanding = 0;
// Whether an allocation must not fail here; asked for those alone that would.
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

// Not inlined: the compiler would take it for a release that does not fit its allocation.
[[gnu::noinline]] inline void release(void* memory) {
    outstanding -= memory != nullptr ? 1 : 0;
    std::free(memory);
}

// Lets `howMany` allocations of `action` fail, from the one of that number on. Whether it got through.
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

// The same when all allocations fail after so many.
template <typename Action>
bool succeedsWith(long before, Action action) {
    return succeedsWithout(before, NEVER - before, action);
}

// Runs `action` once for each of its allocations, which alone fails: it must fail, or `isRight` must hold afterwards.
// Returns how many allocations there are.
template <typename Action, typename Check>
long expectAllOrNothing(Action action, Check isRight) {
    long failing = -1;
    do {
        const bool succeeded = succeedsWithout(++failing, 1, action);
        EXPECT_TRUE(!succeeded || isRight()) << "without allocation " << failing;
    } while (allocations > failing);
    return failing;
}

// Lets `action` fail at each of its allocations in turn, each time with a new state, until it gets through; nothing
// may be lost. Returns how many allocations there are.
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
