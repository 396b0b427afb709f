#pragma once

#include <vector>

#include "tools/projdir/CommandLine.h"
#include "tools/projdir/Registry.h"

namespace ProjDir {

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
