#include "tools/crsctl/points/StreamRun.h"

#include <cerrno>
#include <csignal>
#include <cstring>
#include <deque>
#include <unistd.h>

#include "tools/crsctl/points/Workers.h"
#include "tools/crsctl/start/Descriptor.h"
#include "tools/crsctl/start/Failures.h"
#include "tools/crsctl/start/Signals.h"

namespace crsctl {
namespace {

// On a terminal that shows the result as well, a bar would stand in its way.
bool isProgressWanted(const BlockReader& reader) {
    return reader.bytesInAll().has_value() && isatty(STDERR_FILENO) != 0 && isatty(STDOUT_FILENO) == 0;
}

}  // namespace

StreamRun::StreamRun(BlockReader& blockReader) : reader(blockReader), progress(isProgressWanted(blockReader)) {}

// What was read before a failure is still to be delivered.
bool StreamRun::nextBlock(Block& block) {
    try {
        return !pipeClosed && reader.next(block);
    } catch (const SetUpError& failure) {
        readingFailure = failure.what();
        return false;
    }
}

void StreamRun::process(BlockProcessor& processor) {
    Block block;
    while (nextBlock(block))
        if (!deliver(processor.process(block))) return;
}

// Workers take turns, so that results come in the order of the blocks. A worker is waited for only before it gets
// its next block: the others are at work in the meantime.
void StreamRun::process(Workers& workers) {
    Block block;
    std::deque<std::size_t> atWork;
    for (std::size_t turn = 0; nextBlock(block); turn = (turn + 1) % workers.size()) {
        if (atWork.size() == workers.size()) {
            atWork.pop_front();
            if (!deliver(workers.receive(turn))) return;
        }
        workers.send(turn, block);
        atWork.push_back(turn);
    }
    for (const std::size_t worker : atWork)
        if (!deliver(workers.receive(worker))) return;
}

void StreamRun::write(std::string_view text) {
    const WriteOutcome outcome = writeAll(STDOUT_FILENO, text);
    if (outcome == WriteOutcome::FAILED) throw SetUpError(std::string("standard output: ") + std::strerror(errno));
    pipeClosed = pipeClosed || outcome == WriteOutcome::PIPE_CLOSED;
}

bool StreamRun::deliver(const BlockResult& result) {
    counts += result.counts;
    write(result.output);
    report(result.reports);
    progress.update({reader.bytesConsumed(), reader.bytesInAll().value_or(0), counts.lines, stopwatch.seconds()});
    return !result.stopped && !pipeClosed;
}

void StreamRun::report(std::string_view reports) {
    if (reports.empty()) return;
    progress.clear();
    writeAll(STDERR_FILENO, reports);
}

int StreamRun::finish() {
    progress.clear();
    if (!readingFailure.empty()) writeAll(STDERR_FILENO, "crsctl transform: " + readingFailure + "\n");
    writeAll(STDERR_FILENO, "crsctl transform: " + summaryLine(counts, stopwatch.seconds()) + "\n");
    if (!readingFailure.empty()) return EXIT_SET_UP;
    const int signal = signalToFinish();
    if (signal == SIGINT) return EXIT_INTERRUPTED;
    return signal != 0 || pipeClosed || counts.refused != 0 ? EXIT_REFUSED : EXIT_DONE;
}

}  // namespace crsctl
