#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tools/projdir/Registry.h"

namespace ProjDir {

// The options for making a directory.
struct Options {
    std::string directory;
    // Empty for the whole registry.
    std::string codesFile;
    // A configuration fragment whose codes are wanted; may be empty.
    std::string configFile;
    // Only CRS whose area of use overlaps it.
    std::optional<Area> area;
    // In metres. A CRS whose shift is farther off in much of its area is left out.
    double worst = 100;
    // Empty for no report.
    std::string reportFile;
    bool includeDeprecated = false;
    bool useGrids = false;
    bool fit = false;
    bool verify = false;
    bool force = false;
    bool quiet = false;
};

// The options for comparing two directories.
struct DiffOptions {
    std::string before;
    std::string after;
    bool asJson = false;
    bool quiet = false;
};

// The program, its version and the options that affect the content of the files, without file names.
std::string describeOptions(const Options& options);

// Reads the command line. Returns false if there is nothing to do, after the help, the version or a usage error. It has
// then printed its answer, and set the exit code: 2 after a usage error.
bool readOptions(int argc, const char* const* argv, Options& options, int& exitCode);
// The same for a command line whose first argument is "diff".
bool readDiffOptions(int argc, const char* const* argv, DiffOptions& options, int& exitCode);

// The CRS of the registry that every option selects. FileError for a list that cannot be read or has a code that is not
// usable, and if no CRS remains.
std::vector<RegistryCrs> selectCrs(const Options& options, const std::vector<RegistryCrs>& registry);

// Makes a directory. Returns 0, or 1 after a failure or for a verification that finds a fault. A failure leaves no file
// behind, and its message is on standard error.
int makeDirectory(const Options& options);

// Compares two directories and prints the difference. Returns 0 if they are the same, 1 if they differ, 2 after a
// failure, whose message is on standard error.
int diffDirectories(const DiffOptions& options);

// Runs the program and returns its exit code.
int runProgram(int argc, const char* const* argv);

}  // namespace ProjDir
