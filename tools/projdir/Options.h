#pragma once

#include <string>

namespace ProjDir {

// What the user asked for.
struct Options {
    std::string directory;
    // Empty for the whole registry.
    std::string codesFile;
    // Empty for no report.
    std::string reportFile;
    bool includeDeprecated = false;
    bool useGrids = false;
    bool verify = false;
    bool force = false;
};

// Reads the command line. When there is nothing to do, after --help, --version or a usage error, it has printed
// what there is to say, returns false and leaves the exit code, 2 after a usage error.
bool readOptions(int argc, const char* const* argv, Options& options, int& exitCode);

}  // namespace ProjDir
