#pragma once

#include <string>

#include "tools/crsctl/commands/CommandTexts.h"

namespace crsctl {

// What --help writes, 80 columns wide.
std::string helpText(const CommandText& command);

}  // namespace crsctl
