#pragma once

#include <string>
#include <vector>

#include "tools/projdir/DefinitionMaker.h"
#include "tools/projdir/Registry.h"

namespace ProjDir {

// The names of the two files of a PROJ directory.
constexpr char INIT_FILE[] = "epsg";
constexpr char AXIS_ORDER_FILE[] = "epsg-axisorder.csv";

// The content of "epsg": the entry of code 0, then those of the outcomes that have a definition, in their order.
std::string writeInitFile(const RegistryVersion& version, const std::vector<Outcome>& outcomes);

// The content of "epsg-axisorder.csv", a line for each entry of "epsg".
std::string writeAxisOrderFile(const std::vector<Outcome>& outcomes);

}  // namespace ProjDir
