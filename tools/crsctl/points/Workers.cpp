#include "tools/crsctl/points/Workers.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tools/crsctl/start/Failures.h"
#include "tools/crsctl/start/Signals.h"

namespace crsctl {
namespace {

// What goes before the bytes of a block and of a result. Both ends are the same program.
struct BlockHead {
    std::uint64_t size;
    std::uint64_t firstLine;
    std::uint32_t input;
    bool tooLong;
};

struct ResultHead {
    std::uint64_t outputSize;
    std::uint64_t reportsSize;
    Counts counts;
    bool stopped;
};

bool sendBytes(int socket, const void* bytes, std::size_t size) {
    const auto* next = static_cast<const char*>(bytes);
    while (size > 0) {
        const ssize_t count = ::send(socket, next, size, MSG_NOSIGNAL);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return false;
        next += count;
        size -= static_cast<std::size_t>(count);
    }
    return true;
}

bool receiveBytes(int socket, void* bytes, std::size_t size) {
    auto* next = static_cast<char*>(bytes);
    while (size > 0) {
        const ssize_t count = ::recv(socket, next, size, MSG_WAITALL);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return false;
        next += count;
        size -= static_cast<std::size_t>(count);
    }
    return true;
}

bool receiveText(int socket, std::string& text, std::uint64_t size) {
    text.resize(size);
    return receiveBytes(socket, text.data(), size);
}

bool sendResult(int socket, const BlockResult& result) {
    const ResultHead head{result.output.size(), result.reports.size(), result.counts, result.stopped};
    return sendBytes(socket, &head, sizeof head) && sendBytes(socket, result.output.data(), result.output.size()) &&
           sendBytes(socket, result.reports.data(), result.reports.size());
}

void answerBlocks(int socket, const Workers::MakeProcessor& makeProcessor) {
    std::unique_ptr<BlockProcessor> processor;
    std::string lines;
    BlockHead head{};
    while (receiveBytes(socket, &head, sizeof head) && receiveText(socket, lines, head.size)) {
        if (!processor) processor = makeProcessor();
        if (!sendResult(socket, processor->process({lines, head.firstLine, head.input, head.tooLong}))) return;
    }
}

// The parent starts the library as well and says what is wrong. Nothing that the parent had open or was about to
// write is touched on the way out.
[[noreturn]] void runWorker(int socket, const Workers::MakeProcessor& makeProcessor) {
    ignoreSignals();
    try {
        answerBlocks(socket, makeProcessor);
    } catch (const std::exception&) {
        _exit(EXIT_SET_UP);
    }
    _exit(EXIT_DONE);
}

[[noreturn]] void failFor(const char* what) { throw SetUpError(std::string(what) + ": " + std::strerror(errno)); }

[[noreturn]] void failForLostWorker() { throw SetUpError("a worker process has ended unexpectedly"); }

}  // namespace

Workers::Workers(std::size_t count, const MakeProcessor& makeProcessor) {
    workers.reserve(count);
    while (workers.size() < count) start(makeProcessor);
}

void Workers::start(const MakeProcessor& makeProcessor) {
    std::array<int, 2> ends{};
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0) failFor("cannot start a worker");
    const pid_t process = fork();
    if (process < 0) failFor("cannot start a worker");
    if (process == 0) {
        // Were they left open, no worker would see the parent go.
        for (const Worker& other : workers) close(other.socket);
        close(ends[0]);
        runWorker(ends[1], makeProcessor);
    }
    close(ends[1]);
    workers.push_back({process, ends[0], {}, {}});
}

Workers::~Workers() {
    for (const Worker& worker : workers) close(worker.socket);
    for (const Worker& worker : workers)
        while (waitpid(worker.process, nullptr, 0) < 0 && errno == EINTR) continue;
}

void Workers::send(std::size_t worker, const Block& block) {
    const BlockHead head{block.lines.size(), block.firstLine, block.input, block.tooLong};
    const int socket = workers[worker].socket;
    if (!sendBytes(socket, &head, sizeof head) || !sendBytes(socket, block.lines.data(), block.lines.size()))
        failForLostWorker();
}

BlockResult Workers::receive(std::size_t worker) {
    Worker& from = workers[worker];
    ResultHead head{};
    if (!receiveBytes(from.socket, &head, sizeof head) || !receiveText(from.socket, from.output, head.outputSize) ||
        !receiveText(from.socket, from.reports, head.reportsSize))
        failForLostWorker();
    return {from.output, from.reports, head.counts, head.stopped};
}

}  // namespace crsctl
