#pragma once

#include <condition_variable>
#include <cstddef>
#include <exception>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "tools/crsctl/points/Block.h"

namespace crsctl {

// Threads that process blocks side by side. A thread starts when a block would wait otherwise, and makes its own
// processor with its first block. Results come in the order of the blocks.
class BlockThreads {
public:
    using MakeProcessor = std::function<ProcessBlock()>;

    BlockThreads(std::size_t mostThreads, MakeProcessor makeProcessor);
    // Blocks that no thread has begun are dropped.
    ~BlockThreads();
    BlockThreads(const BlockThreads&) = delete;
    BlockThreads& operator=(const BlockThreads&) = delete;

    // Whether no result is due.
    bool isEmpty() const { return taken == submitted; }
    bool isFull() const { return submitted - taken == jobs.size(); }
    // Copies the block. REQUIRES: it is not full. SetUpError when the system has no thread to give.
    void submit(const Block& block);
    // Waits for the oldest result, which holds until the next block is submitted. Raises what its processor raised.
    // REQUIRES: it is not empty.
    const BlockResult& take();

private:
    struct Job {
        std::string lines;
        Block block;
        BlockResult result;
        std::exception_ptr failure;
        bool done = false;
    };

    Job& jobNumber(std::size_t number) { return jobs[number % jobs.size()]; }
    void startThread();
    void work();
    void run(Job& job, ProcessBlock& process) const;

    const std::size_t most;
    const MakeProcessor make;
    // Used in a ring. A job belongs to the thread that has begun it until it is done, otherwise to the caller.
    std::vector<Job> jobs;
    std::size_t taken = 0;

    std::mutex mutex;  // of what follows and of `done`
    std::condition_variable blockIsThere;
    std::condition_variable resultIsThere;
    std::size_t submitted = 0;
    std::size_t begun = 0;
    std::size_t idleThreads = 0;
    bool ending = false;

    std::vector<std::thread> threads;
};

}  // namespace crsctl
