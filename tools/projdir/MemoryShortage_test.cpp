// A program of its own: it replaces the global allocation functions.

#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <new>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>
#include <proj.h>

#include "tests/support/ProjFaults.h"
#include "tests/support/TemporaryDirectory.h"
#include "tools/projdir/Commands.h"
#include "tools/projdir/Registry.h"

namespace {

constexpr long NEVER = -1;

std::atomic<long> allocations{0};
std::atomic<long> failing{NEVER};

bool isWhereProjDoesNotSurvive() {
    return TestSupport::isWithin(TestSupport::FATAL_FUNCTION) || TestSupport::isWithin(TestSupport::TRIAL_FUNCTION);
}

// The standard requires that the handler is called before the allocation fails.
void* allocate(std::size_t size) {
    if (allocations++ == failing && !isWhereProjDoesNotSurvive()) {
        if (const std::new_handler handler = std::get_new_handler()) handler();
        throw std::bad_alloc();
    }
    void* const memory = std::malloc(size != 0 ? size : 1);
    if (memory == nullptr) throw std::bad_alloc();
    return memory;
}

void* allocateOrNull(std::size_t size) noexcept {
    try {
        return allocate(size);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

// Not inlined, as the compiler would report a release that does not match its allocation.
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

namespace ProjDir {
namespace {

class MemoryShortageTest : public testing::Test {
protected:
    MemoryShortageTest() {
        options.directory = work.file("out");
        options.codesFile = work.write("codes", "4326\n25832\n27700\n");
    }

    int runHere() {
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        allocations = 0;
        const int exitCode = makeDirectory(options);
        failing = NEVER;
        testing::internal::GetCapturedStdout();
        error = testing::internal::GetCapturedStderr();
        return exitCode;
    }

    // In a process of its own. The status is that of waitpid.
    int runInChild(long failingAllocation) {
        const pid_t child = fork();
        if (child == 0) {
            failing = failingAllocation;
            const int exitCode = runHere();
            work.write("error", error);
            _exit(exitCode);
        }
        int status = 0;
        waitpid(child, &status, 0);
        error = work.read("error");
        return status;
    }

    // PROJ does not survive a failure while it lists the registry.
    static long allocationsOfTheList() {
        allocations = 0;
        const ProjContext context;
        readRegistryVersion(context);
        readRegistry(context);
        return allocations;
    }

    std::string made() const { return work.read("out/epsg") + work.read("out/epsg-axisorder.csv"); }

    TestSupport::TemporaryDirectory work;
    Options options;
    std::string error;
};

// PROJ 9.6 ends the process when memory ends in one of its functions that may not throw; PROJ 9.1 does not.
bool mayBeEndedByProj(int status) {
    const bool isNewer = proj_info().major > 9 || (proj_info().major == 9 && proj_info().minor > 1);
    return isNewer && WIFSIGNALED(status) && WTERMSIG(status) == SIGABRT;
}

TEST_F(MemoryShortageTest, EndsTheRunWhereverItComes) {
    ASSERT_EQ(runHere(), 0) << error;
    const long all = allocations;
    const std::string expected = made();
    std::filesystem::remove_all(options.directory);
    const long first = allocationsOfTheList() + 100;
    int shortages = 0;
    for (int i = 0; i < 16; ++i) {
        const int status = runInChild(first + (all - first) * i / 16);
        if (status == 0) {
            EXPECT_EQ(made(), expected);
        } else {
            ++shortages;
            EXPECT_FALSE(std::filesystem::exists(options.directory));
            EXPECT_TRUE(mayBeEndedByProj(status) || error == "crs-projdir: out of memory\n") << error;
        }
        std::filesystem::remove_all(options.directory);
    }
    EXPECT_GT(shortages, 8);
}

}  // namespace
}  // namespace ProjDir

// PROJ's static destructors may wait for ever after a failed allocation.
int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    const int exitCode = RUN_ALL_TESTS();
    std::fflush(nullptr);
    std::_Exit(exitCode);
}
