// A program of its own: it replaces the global allocation functions.

#include <cstdlib>
#include <gtest/gtest.h>
#include <new>
#include <string>

#include "CoordinateTransformation/Misconfigured.h"
#include "CoordinateTransformation/TransExecException.h"
#include "CoordinateTransformation/structured_exception.h"
#include "QSHelpers/ConversionError.h"

namespace {

constexpr int NEVER = -1;

thread_local int allocationsUntilFailure = NEVER;
thread_local long outstanding = 0;

void* allocate(std::size_t size) {
    if (allocationsUntilFailure == 0) throw std::bad_alloc();
    allocationsUntilFailure -= allocationsUntilFailure > 0 ? 1 : 0;
    void* const memory = std::malloc(size != 0 ? size : 1);
    if (memory == nullptr) throw std::bad_alloc();
    ++outstanding;
    return memory;
}

void release(void* memory) {
    outstanding -= memory != nullptr ? 1 : 0;
    std::free(memory);
}

}  // namespace

void* operator new(std::size_t size) { return allocate(size); }
void* operator new[](std::size_t size) { return allocate(size); }
void operator delete(void* memory) noexcept { release(memory); }
void operator delete[](void* memory) noexcept { release(memory); }
void operator delete(void* memory, std::size_t) noexcept { release(memory); }
void operator delete[](void* memory, std::size_t) noexcept { release(memory); }

namespace {

using CoordinateTransformation::Misconfigured;
using CoordinateTransformation::TransExecException;

const std::string LONG_TEXT(200, 'x');

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

// Lets `action` fail at each of its allocations in turn, until it gets through. Returns how many there are.
template <typename Action>
int allocationsOf(Action action) {
    int allocations = 0;
    for (bool succeeded = false; !succeeded; ++allocations) {
        const long before = outstanding;
        succeeded = succeedsWith(allocations, action);
        EXPECT_EQ(outstanding, before) << "after " << allocations << " allocations";
    }
    return allocations - 1;
}

TEST(AllocationFailureTest, LosesNothingWhenARootIsBuilt) {
    const char* const list[] = {"a", nullptr, "b"};
    const auto build = [&list] { structured_exception("text", true, "sub", "sit", 3, list, true); };
    EXPECT_EQ(allocationsOf(build), 5);
}

TEST(AllocationFailureTest, LosesNothingWhenAnExceptionOfABranchIsBuilt) {
    EXPECT_GE(allocationsOf([] { const Misconfigured exception(LONG_TEXT); }), 4);
    EXPECT_GE(allocationsOf([] { const TransExecException exception(LONG_TEXT); }), 5);
    EXPECT_GE(allocationsOf([] { const QSHelpers::ConversionError exception(LONG_TEXT); }), 4);
}

TEST(AllocationFailureTest, LosesNothingWhenAnExceptionIsCopied) {
    const TransExecException source(LONG_TEXT);
    EXPECT_GE(allocationsOf([&source] { const TransExecException copy(source); }), 5);
}

TEST(AllocationFailureTest, LeavesNoParametersWhenTheNewOnesCannotBeHad) {
    const char* const list[] = {"c", "d"};
    for (int allocations = 0; allocations < 3; ++allocations) {
        structured_exception exception("text", false, "sub", "sit", 1, list, true);
        EXPECT_FALSE(succeedsWith(allocations, [&exception, &list] { exception.setParameters(2, list); }));
        EXPECT_EQ(exception.getParameterCount(), 0U);
    }
}

TEST(AllocationFailureTest, LeavesAnExceptionAloneWhenAnAssignmentFails) {
    TransExecException target("target");
    const TransExecException source(LONG_TEXT);
    EXPECT_FALSE(succeedsWith(0, [&target, &source] { target = source; }));
    EXPECT_STREQ(target.what(), "target");
    EXPECT_EQ(target.getParameterCount(), 1U);
    EXPECT_EQ(target.getReserveBuffer()[4095], '\0');
}

}  // namespace
