#include "tools/projdir/Generation.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <map>
#include <mutex>
#include <thread>
#include <utility>

namespace ProjDir {
namespace {

// What the threads share.
struct SharedWork {
    const std::vector<RegistryCrs>& list;
    const DefinitionOptions& options;
    Tools::ProgressBar& progress;
    // Indices of CRS on one geodetic CRS.
    std::vector<std::vector<std::size_t>> groups;
    std::vector<CrsOutcome> outcomes;
    std::atomic<std::size_t> next{0};
    std::atomic<bool> isStopped{false};
    std::mutex failureLock;
    std::exception_ptr failure;
};

// The largest groups first, so that no thread is left with one of them at the end.
std::vector<std::vector<std::size_t>> groupByGeodeticCrs(const std::vector<RegistryCrs>& list) {
    std::map<unsigned int, std::vector<std::size_t>> byCode;
    for (std::size_t i = 0; i < list.size(); ++i) byCode[list[i].geodeticCode].push_back(i);
    std::vector<std::vector<std::size_t>> groups;
    groups.reserve(byCode.size());
    for (auto& [code, group] : byCode) groups.push_back(std::move(group));
    std::stable_sort(groups.begin(), groups.end(), [](const auto& a, const auto& b) { return a.size() > b.size(); });
    return groups;
}

void makeShare(SharedWork& work) {
    DefinitionMaker maker(work.options);
    for (std::size_t group = work.next++; group < work.groups.size(); group = work.next++)
        for (const std::size_t i : work.groups[group]) {
            if (work.isStopped) return;
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
        work.isStopped = true;
        work.next = work.groups.size();
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
                                unsigned int threads, Tools::ProgressBar& progress) {
    SharedWork work{list, options, progress, groupByGeodeticCrs(list), std::vector<CrsOutcome>(list.size()), {},
                    {},   {},      {}};
    std::vector<std::thread> helpers = startHelpers(work, threads - 1);
    makeShareSafely(work);
    for (std::thread& helper : helpers) helper.join();
    if (work.failure) std::rethrow_exception(work.failure);
    return std::move(work.outcomes);
}

}  // namespace ProjDir
