#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <sys/types.h>
#include <vector>

#include "tools/crsctl/points/Block.h"

namespace crsctl {

// Processes that transform blocks side by side: the library passes points to PROJ one at a time, so that threads
// would wait for each other. Each worker starts the library for itself, with its own first block.
//
// Made before the library is started in this process: files and connections that PROJ has open are not to be
// shared. A worker ends when its parent ends, whatever the cause.
class Workers {
public:
    using MakeProcessor = std::function<std::unique_ptr<BlockProcessor>()>;

    // SetUpError when the system has no process or no socket to give.
    Workers(std::size_t count, const MakeProcessor& makeProcessor);
    ~Workers();
    Workers(const Workers&) = delete;
    Workers& operator=(const Workers&) = delete;

    std::size_t size() const { return workers.size(); }
    // REQUIRES: the worker owes no result. SetUpError when it has gone.
    void send(std::size_t worker, const Block& block);
    // Waits for the result of the block sent last; holds until the next call for that worker. SetUpError when the
    // worker has gone.
    BlockResult receive(std::size_t worker);

private:
    struct Worker {
        pid_t process;
        int socket;
        std::string output;
        std::string reports;
    };

    void start(const MakeProcessor& makeProcessor);

    std::vector<Worker> workers;
};

}  // namespace crsctl
