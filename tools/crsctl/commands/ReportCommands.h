#pragma once

#include <string>
#include <vector>

#include "tools/crsctl/check/DescriptionCheck.h"
#include "tools/crsctl/find/CrsSearch.h"
#include "tools/crsctl/start/Session.h"

namespace crsctl {

// The commands that write one report. Each gives what is to be written on standard output and the exit code.
struct CommandResult {
    std::string output;
    int exitCode = 0;
    std::vector<std::string> notes;  // lines for standard error
};

CommandResult resolveCommand(const CommonOptions& common, const std::vector<std::string>& names);
CommandResult checkCommand(const CommonOptions& common, const std::string& file, const Expectations& expected);
CommandResult findCommand(const CommonOptions& common, const SearchedCrs& searched);
CommandResult namesCommand(const CommonOptions& common);

}  // namespace crsctl
