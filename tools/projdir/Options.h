#pragma once

#include <optional>
#include <string>

#include "tools/projdir/Area.h"

namespace ProjDir {

// What the user asked for.
struct Options {
    std::string directory;
    // Empty for the whole registry.
    std::string codesFile;
    // A configuration fragment whose codes are wanted; empty for none.
    std::string configFile;
    // Only CRS whose area of use overlaps it.
    std::optional<Area> area;
    // In metres: a CRS whose shift is farther off in much of its area is left out.
    double worst = 100;
    // Empty for no report.
    std::string reportFile;
    bool includeDeprecated = false;
    bool useGrids = false;
    bool fit = false;
    bool verify = false;
    bool force = false;
};

// The program, and those options that the content of the files depends on, without the names of files.
std::string describeOptions(const Options& options);

// Reads the command line. When there is nothing to do, after --help, --version or a usage error, it has printed
// what there is to say, returns false and leaves the exit code, 2 after a usage error.
bool readOptions(int argc, const char* const* argv, Options& options, int& exitCode);

}  // namespace ProjDir
