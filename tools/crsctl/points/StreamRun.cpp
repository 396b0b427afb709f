#include "tools/crsctl/points/StreamRun.h"

#include <array>
#include <cerrno>
#include <cmath>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <unistd.h>

#include "tools/common/Process.h"
#include "tools/common/Text.h"
#include "tools/crsctl/points/BlockThreads.h"
#include "tools/crsctl/start/Failures.h"

namespace crsctl {

using Tools::grouped;
using Tools::signalToFinish;
using Tools::writeAll;
using Tools::WriteOutcome;

namespace {

// On a terminal that shows the result too, a bar would be in its way.
bool isProgressWanted(const BlockReader& reader) {
    return reader.bytesInAll().has_value() && isatty(STDOUT_FILENO) == 0;
}

std::string rate(std::uint64_t lines, double seconds) {
    const long long perSecond = seconds > 0 ? std::llround(static_cast<double>(lines) / seconds) : 0;
    return grouped(static_cast<std::uint64_t>(perSecond)) + " lines/s";
}

}  // namespace

std::string summaryLine(const Counts& counts, double seconds) {
    std::array<char, 32> elapsed{};
    std::snprintf(elapsed.data(), elapsed.size(), "%.3f s", seconds);
    return grouped(counts.lines) + (counts.lines == 1 ? " line: " : " lines: ") + grouped(counts.transformed) +
           " transformed, " + grouped(counts.refused) + " refused, " + grouped(counts.passedOver) + " passed over; " +
           elapsed.data() + ", " + rate(counts.lines, seconds);
}

StreamRun::StreamRun(BlockReader& blockReader)
    : reader(blockReader), progress(stderr, "", blockReader.bytesInAll().value_or(0), isProgressWanted(blockReader)) {}

// What was read before a failure is still to be delivered.
Next StreamRun::nextBlock(Block& block) {
    try {
        return pipeClosed ? Next::END : reader.next(block);
    } catch (const SetUpError& failure) {
        readingFailure = failure.what();
        return Next::END;
    }
}

// A result is waited for only when no further block fits, so that all threads are at work in the meantime.
void StreamRun::process(BlockThreads& threads) {
    Block block;
    for (;;) {
        const Next next = nextBlock(block);
        if (next == Next::BLOCK) {
            if (threads.isFull() && !deliver(threads.take())) return;
            threads.submit(block);
            continue;
        }
        if (!deliverAll(threads) || next == Next::END) return;
        reader.wait();
    }
}

bool StreamRun::deliverAll(BlockThreads& threads) {
    while (!threads.isEmpty())
        if (!deliver(threads.take())) return false;
    return true;
}

void StreamRun::write(std::string_view text) {
    const WriteOutcome outcome = writeAll(STDOUT_FILENO, text);
    if (outcome == WriteOutcome::FAILED) throw SetUpError(std::string("standard output: ") + std::strerror(errno));
    pipeClosed = pipeClosed || outcome == WriteOutcome::PIPE_CLOSED;
}

bool StreamRun::deliver(const BlockResult& result) {
    counts += result.counts;
    write(result.output.view());
    report(result.reports.view());
    progress.advanceTo(reader.bytesConsumed(), rate(counts.lines, stopwatch.seconds()));
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
