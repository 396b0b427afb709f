#pragma once

#include <vector>

#include "tools/projdir/DefinitionMaker.h"
#include "tools/projdir/Progress.h"

namespace ProjDir {

// Makes every CRS of the list, in its order, on `threads` threads. The outcomes do not depend on their number.
//
// REQUIRES: threads >= 1.
std::vector<Outcome> makeAll(const std::vector<RegistryCrs>& list, const MakingRules& rules, unsigned int threads,
                             Progress& progress);

}  // namespace ProjDir
