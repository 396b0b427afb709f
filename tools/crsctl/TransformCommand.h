#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tools/common/ProgressBar.h"
#include "tools/crsctl/BlockTransformer.h"
#include "tools/crsctl/Blocks.h"
#include "tools/crsctl/Session.h"

namespace crsctl {

// Returns the last line of a run: counts, seconds and rate.
std::string summaryLine(const Counts& counts, double seconds);

// Passes the blocks of a reader through threads. Writes the results to standard output in the order of the input, and
// reports refused lines on standard error. Writes all results before it waits for further input. The run ends at the
// end of the input, at a refused line with ErrorMode::STOP, at a signal, and if the reader of the output has ended.
class StreamRun {
public:
    // A quiet run writes no progress, no summary and no hint.
    StreamRun(BlockReader& blockReader, bool isQuiet);

    // If an input cannot be read, the run ends after the lines before the failure. Throws SetUpError if writing fails.
    void process(BlockThreads& threads);
    // Writes `text` to standard output before any block.
    void write(std::string_view text);

    // Writes to standard error the failure of an input, the hint if most points look exchanged, and the summary.
    // Returns the exit code of the run.
    int finish(const std::string& exchangedHint);

private:
    Next nextBlock(Block& block);
    // Writes a result. Returns whether the run continues.
    bool deliver(const BlockResult& result);
    bool deliverAll(BlockThreads& threads);
    void report(std::string_view reports);

    BlockReader& reader;
    const bool quiet;
    Tools::Stopwatch stopwatch;
    Tools::ProgressBar progress;
    Counts counts;
    bool pipeClosed = false;
    std::string readingFailure;
};

// The options of a transformation.
struct TransformOptions {
    std::string from;
    std::string to;
    bool inverse = false;
    std::string columns;
    Separator separator = Separator::AUTOMATIC;
    bool header = false;
    std::string comment = "#";
    std::optional<OutputFormat> output;  // by default text, or JSON with --json
    std::optional<int> decimals;
    ErrorMode errors = ErrorMode::MARK;
    bool bounds = false;
    unsigned int pointsPerEdge = 21;
    unsigned int jobs = 0;           // 0: not given
    std::vector<std::string> files;  // or the numbers of boxes
};

// Runs the transformation to its end and returns the exit code.
int transformCommand(const CommonOptions& common, TransformOptions options);

}  // namespace crsctl
