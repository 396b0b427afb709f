#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tools/crsctl/BlockTransformer.h"
#include "tools/crsctl/Session.h"

namespace crsctl {

// Returns the last line of a run: counts, seconds and rate.
std::string summaryLine(const Counts& counts, double seconds);

// The options of a transformation.
struct TransformOptions {
    std::string from;
    std::string to;
    bool inverse = false;
    std::string columns;
    Separator separator = Separator::AUTOMATIC;
    bool header = false;
    std::optional<OutputFormat> output;  // by default text, or JSON with --json
    std::optional<int> decimals;
    bool bounds = false;
    LineOptions lines;
    unsigned int jobs = 0;           // 0: not given
    std::vector<std::string> files;  // or the numbers of boxes
};

// Runs the transformation to its end and returns the exit code.
int transformCommand(const CommonOptions& common, TransformOptions options);

}  // namespace crsctl
