#pragma once

#include <optional>
#include <string>

#include "tools/projdir/Definition.h"

namespace ProjDir {

constexpr char PROGRAM_NAME[] = "crs-projdir";

// The options for making a directory.
struct Options : DefinitionOptions {
    std::string directory;
    // Empty for the whole registry.
    std::string codesFile;
    // A configuration fragment whose codes are wanted; may be empty.
    std::string configFile;
    // Only CRS whose area of use overlaps it.
    std::optional<Area> area;
    // Empty for no report.
    std::string reportFile;
    bool includeDeprecated = false;
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

// A command line: a text to write, a comparison, or a directory to make.
struct Request {
    // The start of messages: "crs-projdir" or "crs-projdir diff".
    std::string name = PROGRAM_NAME;
    // The help, the version or a completion script.
    std::optional<std::string> text;
    bool isDiff = false;
    Options options;
    DiffOptions diff;
};

// The program, its version and the options that affect the content of the files, without file names.
std::string describeOptions(const Options& options);

// Reads the command line. Tools::UsageError, after the name of the request is set, if it cannot be understood.
void readCommandLine(int argc, const char* const* argv, Request& request);

}  // namespace ProjDir
