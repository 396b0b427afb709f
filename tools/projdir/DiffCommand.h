#pragma once

#include <string>

namespace ProjDir {

// What the user wants compared.
struct DiffOptions {
    std::string before;
    std::string after;
    bool asJson = false;
};

// The word that the command line begins with when two directories are to be compared.
constexpr char DIFF_COMMAND[] = "diff";

// Whether the command line begins with it.
bool isDiffCommand(int argc, const char* const* argv);

// Reads the command line behind that word. When there is nothing to do, after --help or a usage error, it has printed
// what there is to say, returns false and leaves the exit code, 2 after a usage error.
bool readDiffOptions(int argc, const char* const* argv, DiffOptions& options, int& exitCode);

// Compares the directories and prints the difference. 0 when they are the same, 1 when they differ, 2 after a failure,
// whose message is on the standard error output.
int diffDirectories(const DiffOptions& options);

}  // namespace ProjDir
