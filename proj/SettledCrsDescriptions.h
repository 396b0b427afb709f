#pragma once

#include <string>

#include "CoordinateTransformation/CrsDescriptions.h"

namespace CoordinateTransformation {

// What CrsDescriptions::ofProjDirectory gives. Written once, on one thread, when the directory is settled; only read
// afterwards, by any number of threads.
CrsDescriptions& getSettledCrsDescriptions();

// The descriptions in the file at `path`, or none if nothing is there. Misconfigured for a file that is not as it
// should be, QSHelpers::FileNotFoundException for what is no regular file. Failures of the query itself are the
// filesystem library's.
CrsDescriptions readCrsDescriptionsIfThere(const std::string& path);

}  // namespace CoordinateTransformation
