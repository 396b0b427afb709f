#pragma once

#include <vector>

#include "tools/projdir/DefinitionMaker.h"
#include "tools/projdir/PercentBar.h"

namespace ProjDir {

// Makes every CRS of the list, in its order, on `threads` threads. The outcomes do not depend on their number.
//
// REQUIRES: threads >= 1.
std::vector<CrsOutcome> makeAll(const std::vector<RegistryCrs>& list, const DefinitionOptions& options,
                                unsigned int threads, PercentBar& progress);

}  // namespace ProjDir
