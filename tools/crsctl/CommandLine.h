#pragma once

#include <functional>
#include <string>
#include <vector>

#include "tools/crsctl/CheckCommand.h"
#include "tools/crsctl/FindCommand.h"
#include "tools/crsctl/Session.h"
#include "tools/crsctl/TransformCommand.h"

namespace crsctl {

// A parsed command line.
struct CommandRequest {
    // The name under which errors are reported: "crsctl resolve".
    std::string commandName = "crsctl";
    // Runs the command and returns the exit code of the program.
    std::function<int(const CommandRequest& request)> run;
    std::string text;  // the help, the version or the completion script, if it is requested
    CommonOptions common;
    std::vector<std::string> names;  // of resolve
    std::string file;                // of check
    Expectations expected;
    SearchedCrs searched;
    TransformOptions transform;
};

// Reads the command line into `request`, its `commandName` first. Throws SetUpError if the command line is wrong.
void readCommandLine(int argc, const char* const* argv, CommandRequest& request);

}  // namespace crsctl
