#pragma once

#include <string>
#include <vector>

#include "tools/projdir/Registry.h"
#include "tools/projdir/Verification.h"

namespace ProjDir {

// Every CRS of the outcomes as JSON, one a line. docs/proj-directory.md names the members. What is not known is left
// out; a distance that is not finite is null.
std::string writeJsonReport(const RegistryVersion& version, const std::vector<CrsOutcome>& outcomes,
                            const Verification& verification);

}  // namespace ProjDir
