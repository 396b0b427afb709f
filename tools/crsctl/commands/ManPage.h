#pragma once

#include <string>

#include "tools/crsctl/commands/CommandTexts.h"

namespace crsctl {

// The manual page of a command, in the language of man pages.
std::string manPage(const CommandText& command);

}  // namespace crsctl
