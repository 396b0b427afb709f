#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tools/common/ProgressBar.h"
#include "tools/crsctl/BlockTransformer.h"
#include "tools/crsctl/Blocks.h"
#include "tools/crsctl/Session.h"

namespace crsctl {

// The last line of a run: counts, seconds and rate.
std::string summaryLine(const Counts& counts, double seconds);

// Takes blocks from the reader through threads to standard output in the order of the input, and what is refused to
// standard error. Whatever was read is answered before further input is waited for. Ends at the end of the input, at a
// refused line that is to stop it, on a signal and when nobody reads any more.
class StreamRun {
public:
    // A quiet run writes neither progress nor a summary.
    StreamRun(BlockReader& blockReader, bool isQuiet);

    // An input that cannot be read ends the run behind what was read before it; SetUpError when writing fails.
    void process(BlockThreads& threads);
    // Writes `text` to standard output before any block.
    void write(std::string_view text);

    // Writes to standard error what ended the run early, the hint if most points look exchanged, and the summary.
    // Returns the exit code of the run.
    int finish(const std::string& exchangedHint);

private:
    Next nextBlock(Block& block);
    // Whether the run goes on.
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

// Runs the transformation to its end; the exit code.
int transformCommand(const CommonOptions& common, TransformOptions options);

}  // namespace crsctl
