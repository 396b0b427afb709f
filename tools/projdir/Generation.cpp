#include "tools/projdir/Generation.h"

#include <atomic>
#include <exception>
#include <mutex>
#include <thread>
#include <utility>

namespace ProjDir {
namespace {

// What the threads share.
struct SharedWork {
    const std::vector<RegistryCrs>& list;
    const DefinitionOptions& options;
    PercentBar& progress;
    std::vector<CrsOutcome> outcomes;
    std::atomic<std::size_t> next{0};
    std::mutex failureLock;
    std::exception_ptr failure;
};

void makeShare(SharedWork& work) {
    DefinitionMaker maker(work.options);
    for (std::size_t i = work.next++; i < work.list.size(); i = work.next++) {
        work.outcomes[i] = maker.make(work.list[i]);
        work.progress.advance();
    }
}

// No exception may leave a thread; the first one stops the others.
void makeShareSafely(SharedWork& work) {
    try {
        makeShare(work);
    } catch (...) {
        const std::lock_guard<std::mutex> guard(work.failureLock);
        if (!work.failure) work.failure = std::current_exception();
        work.next = work.list.size();
    }
}

// A system that gives no more threads, or no memory for them, leaves more work to those that are there.
std::vector<std::thread> startHelpers(SharedWork& work, unsigned int count) {
    std::vector<std::thread> helpers;
    helpers.reserve(count);
    try {
        while (helpers.size() < count) helpers.emplace_back([&work] { makeShareSafely(work); });
    } catch (const std::exception&) {
    }
    return helpers;
}

}  // namespace

std::vector<CrsOutcome> makeAll(const std::vector<RegistryCrs>& list, const DefinitionOptions& options,
                                unsigned int threads, PercentBar& progress) {
    SharedWork work{list, options, progress, std::vector<CrsOutcome>(list.size()), {}, {}, {}};
    std::vector<std::thread> helpers = startHelpers(work, threads - 1);
    makeShareSafely(work);
    for (std::thread& helper : helpers) helper.join();
    if (work.failure) std::rethrow_exception(work.failure);
    return std::move(work.outcomes);
}

}  // namespace ProjDir
