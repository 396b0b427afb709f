#include "tools/crsctl/points/BlockThreads.h"

#include <system_error>
#include <utility>

#include "tools/common/Process.h"
#include "tools/crsctl/start/Failures.h"

namespace crsctl {

using Tools::leaveSignalsToOthers;

namespace {

// So that no thread runs out of blocks while the oldest result is written.
constexpr std::size_t BLOCKS_AHEAD = 2;

}  // namespace

BlockThreads::BlockThreads(std::size_t mostThreads, MakeProcessor makeProcessor)
    : most(mostThreads), make(std::move(makeProcessor)), jobs(mostThreads + BLOCKS_AHEAD) {}

BlockThreads::~BlockThreads() {
    {
        const std::lock_guard<std::mutex> lock(mutex);
        ending = true;
    }
    blockIsThere.notify_all();
    for (std::thread& thread : threads) thread.join();
}

void BlockThreads::submit(const Block& block) {
    Job& job = jobNumber(submitted);
    job.lines = block.lines;
    job.block = block;
    job.block.lines = job.lines;
    job.result.clear();
    job.done = false;
    bool isThreadNeeded = false;
    {
        const std::lock_guard<std::mutex> lock(mutex);
        ++submitted;
        isThreadNeeded = submitted - begun > idleThreads && threads.size() < most;
    }
    blockIsThere.notify_one();
    if (isThreadNeeded) startThread();
}

void BlockThreads::startThread() {
    try {
        threads.emplace_back([this] { work(); });
    } catch (const std::system_error& failure) {
        throw SetUpError("cannot start a thread: " + failure.code().message());
    }
}

const BlockResult& BlockThreads::take() {
    Job& job = jobNumber(taken);
    std::unique_lock<std::mutex> lock(mutex);
    resultIsThere.wait(lock, [&job] { return job.done; });
    ++taken;
    if (job.failure) std::rethrow_exception(std::exchange(job.failure, nullptr));
    return job.result;
}

void BlockThreads::work() {
    leaveSignalsToOthers();
    ProcessBlock process;
    std::unique_lock<std::mutex> lock(mutex);
    for (;;) {
        ++idleThreads;
        blockIsThere.wait(lock, [this] { return ending || begun < submitted; });
        --idleThreads;
        if (ending) return;
        Job& job = jobNumber(begun++);
        lock.unlock();
        run(job, process);
        lock.lock();
        job.done = true;
        resultIsThere.notify_one();
    }
}

void BlockThreads::run(Job& job, ProcessBlock& process) const {
    try {
        if (!process) process = make();
        process(job.block, job.result);
    } catch (...) {
        job.failure = std::current_exception();
    }
}

}  // namespace crsctl
