#pragma once

#include <string>

#include "CoordinateTransformation/CrsDescriptions.h"

namespace CoordinateTransformation {

// The descriptions that CrsDescriptions::ofProjDirectory returns. One thread writes them once, when the directory is
// settled. Afterwards any number of threads may read them.
CrsDescriptions& getSettledCrsDescriptions();

// The descriptions in the file at `path`, or none if the file does not exist. Throws Misconfigured for a malformed file
// and QSHelpers::FileNotFoundException if `path` is not a regular file. Failures of the query itself are those of the
// filesystem library.
CrsDescriptions readCrsDescriptionsIfThere(const std::string& path);

}  // namespace CoordinateTransformation
