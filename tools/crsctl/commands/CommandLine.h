#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tools/crsctl/check/DescriptionCheck.h"
#include "tools/crsctl/commands/TransformCommand.h"
#include "tools/crsctl/find/CrsSearch.h"
#include "tools/crsctl/start/Session.h"

namespace crsctl {

// What the command line asks for.
struct CommandRequest {
    std::string command;              // "resolve", ...; empty when `text` says it all
    std::optional<std::string> text;  // to be written instead: help, version or a manual page
    CommonOptions common;
    std::vector<std::string> arguments;  // names of resolve, the file of check
    Expectations expected;
    SearchedCrs searched;
    TransformOptions transform;
};

// Reads the command line. SetUpError, which names what is wrong, for one that cannot be understood. `commandName`
// becomes the name under which errors are reported ("crsctl resolve"), as soon as it is known.
CommandRequest readCommandLine(int argc, const char* const* argv, std::string& commandName);

}  // namespace crsctl
