#pragma once

#include <string>
#include <vector>

#include "tools/crsctl/start/Session.h"

namespace crsctl {

// What the command line says about a transformation, word by word.
struct TransformOptions {
    std::string from;
    std::string to;
    bool inverse = false;
    std::string columns;
    std::string separator = "auto";
    bool header = false;
    std::string comment = "#";
    std::string output;  // empty: text, or JSON where JSON is asked for in general
    int decimals = -1;   // negative: not given
    std::string errors = "mark";
    bool bounds = false;
    unsigned int pointsPerEdge = 21;
    unsigned int jobs = 0;           // 0: not given
    std::vector<std::string> files;  // or the numbers of boxes
};

// Runs the transformation to its end; the exit code.
int transformCommand(const CommonOptions& common, TransformOptions options);

}  // namespace crsctl
