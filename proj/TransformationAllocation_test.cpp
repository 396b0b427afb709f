// A program of its own: it replaces the global allocation functions.

#include <cstdlib>
#include <gtest/gtest.h>
#include <new>

#include "tests/support/Proj4Test.h"

namespace {

thread_local long allocations = 0;

void* allocateOrNull(std::size_t size) {
    ++allocations;
    return std::malloc(size != 0 ? size : 1);
}

void* allocate(std::size_t size) {
    void* const memory = allocateOrNull(size);
    if (memory == nullptr) throw std::bad_alloc();
    return memory;
}

// Not inlined: the compiler would take it for a release that does not fit its allocation.
[[gnu::noinline]] void release(void* memory) { std::free(memory); }

}  // namespace

void* operator new(std::size_t size) { return allocate(size); }
void* operator new[](std::size_t size) { return allocate(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return allocateOrNull(size); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return allocateOrNull(size); }
void operator delete(void* memory) noexcept { release(memory); }
void operator delete[](void* memory) noexcept { release(memory); }
void operator delete(void* memory, std::size_t) noexcept { release(memory); }
void operator delete[](void* memory, std::size_t) noexcept { release(memory); }
void operator delete(void* memory, const std::nothrow_t&) noexcept { release(memory); }
void operator delete[](void* memory, const std::nothrow_t&) noexcept { release(memory); }

namespace CoordinateTransformation {
namespace {

class TransformationAllocationTest : public TestSupport::Proj4Test {
protected:
    // Allocations for `points` points that go from `source` to `target`.
    static long allocationsFor(const AbstractCrs& source, const AbstractCrs& target, double longitude, int points) {
        const long before = allocations;
        for (int i = 0; i < points; ++i) {
            double x = longitude;
            double y = 50 + i * 0.001;
            double z = 100;
            source.transformTo(&target, x, y, z);
            source.transformTo(&target, x = longitude, y = 50);
        }
        return allocations - before;
    }
};

TEST_F(TransformationAllocationTest, HappensForTheFirstPointOfAPairAlone) {
    Proj4Crs source = crsOf(4326);
    source.forceWmsAxisOrder();
    for (const unsigned int code : {25832U, 31467U, 4258U}) {
        const Proj4Crs target = crsOf(code);
        allocationsFor(source, target, 9, 1);
        EXPECT_EQ(allocationsFor(source, target, 9, 1000), 0) << code;
    }
}

TEST_F(TransformationAllocationTest, HappensOnceForPairsThatTakeTurns) {
    Proj4Crs source = crsOf(4326);
    source.forceWmsAxisOrder();
    const Proj4Crs first = crsOf(25832);
    const Proj4Crs second = crsOf(31467);
    EXPECT_GT(allocationsFor(source, first, 9, 1) + allocationsFor(source, second, 9, 1), 0);
    for (int turn = 0; turn < 100; ++turn)
        EXPECT_EQ(allocationsFor(source, first, 9, 1) + allocationsFor(source, second, 9, 1), 0) << turn;
}

TEST_F(TransformationAllocationTest, NeverHappensBetweenCrsOfOneCode) {
    const Proj4Crs source = crsOf(4326);
    Proj4Crs scaled = crsOf(4979);
    scaled.setPrimaryScaleFactor(2);
    EXPECT_EQ(allocationsFor(source, scaled, 9, 1000), 0);
    EXPECT_EQ(allocationsFor(scaled, source, 9, 1000), 0);
}

}  // namespace
}  // namespace CoordinateTransformation
