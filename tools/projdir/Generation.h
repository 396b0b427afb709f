#pragma once

#include <vector>

#include "tools/common/ProgressBar.h"
#include "tools/projdir/DefinitionMaker.h"

namespace ProjDir {

// Makes every CRS of the list, in its order, on `threads` threads. The outcomes do not depend on their number.
//
// REQUIRES: threads >= 1.
std::vector<CrsOutcome> makeAll(const std::vector<RegistryCrs>& list, const DefinitionOptions& options,
                                unsigned int threads, Tools::ProgressBar& progress);

}  // namespace ProjDir
