#pragma once

#include <string>
#include <vector>

#include "text/InitFile.h"
#include "tools/projdir/DefinitionMaker.h"
#include "tools/projdir/Registry.h"

namespace ProjDir {

using CoordinateTransformation::AXIS_ORDER_FILE;
using CoordinateTransformation::INIT_FILE;

// The content of "epsg": the entry of code 0, then those of the outcomes that have a definition, in their order.
std::string writeInitFile(const RegistryVersion& version, const std::vector<CrsOutcome>& outcomes);

// The content of "epsg-axisorder.csv", a line for each entry of "epsg".
std::string writeAxisOrderFile(const std::vector<CrsOutcome>& outcomes);

}  // namespace ProjDir
