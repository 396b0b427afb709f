#pragma once

#include <functional>
#include <string>
#include <vector>

#include "tools/crsctl/CheckCommand.h"
#include "tools/crsctl/FindCommand.h"
#include "tools/crsctl/Session.h"
#include "tools/crsctl/TransformCommand.h"

namespace crsctl {

// A command line that was understood.
struct CommandRequest {
    // The name under which errors are reported: "crsctl resolve".
    std::string commandName = "crsctl";
    // Runs the command and returns the exit code of the program.
    std::function<int(const CommandRequest& request)> run;
    std::string text;  // help, version or completion, where one of them is asked for
    CommonOptions common;
    std::vector<std::string> names;  // of resolve
    std::string file;                // of check
    Expectations expected;
    SearchedCrs searched;
    TransformOptions transform;
};

// Reads the command line into `request`. SetUpError, with the name of the command in place, for one that cannot be
// understood.
void readCommandLine(int argc, const char* const* argv, CommandRequest& request);

}  // namespace crsctl
