#pragma once

#include <string>

#include "tools/common/ProgressBar.h"
#include "tools/crsctl/points/Block.h"
#include "tools/crsctl/points/BlockReader.h"

namespace crsctl {

class BlockThreads;

// The last line of a run: counts, seconds and rate.
std::string summaryLine(const Counts& counts, double seconds);

// Takes blocks from the reader through threads to standard output in the order of the input, and what is refused to
// standard error. Whatever was read is answered before further input is waited for. Ends at the end of the input, at a
// refused line that is to stop it, on a signal and when nobody reads any more.
class StreamRun {
public:
    explicit StreamRun(BlockReader& blockReader);

    // An input that cannot be read ends the run behind what was read before it; SetUpError when writing fails.
    void process(BlockThreads& threads);
    // Writes `text` to standard output before any block.
    void write(std::string_view text);

    // What ended the run early, then counts, seconds and rate on standard error; the exit code of the run.
    int finish();

private:
    Next nextBlock(Block& block);
    // Whether the run goes on.
    bool deliver(const BlockResult& result);
    bool deliverAll(BlockThreads& threads);
    void report(std::string_view reports);

    BlockReader& reader;
    Tools::Stopwatch stopwatch;
    Tools::ProgressBar progress;
    Counts counts;
    bool pipeClosed = false;
    std::string readingFailure;
};

}  // namespace crsctl
