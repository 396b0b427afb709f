#pragma once

#include <string>
#include <vector>

#include "text/InitFile.h"
#include "tools/projdir/DefinitionMaker.h"
#include "tools/projdir/Registry.h"

namespace ProjDir {

using CoordinateTransformation::AXIS_ORDER_FILE;
using CoordinateTransformation::DESCRIPTION_FILE;
using CoordinateTransformation::INIT_FILE;

// The grid files that definitions name; with grids only.
constexpr char GRIDS_FILE[] = "epsg-grids.csv";

// The content of "epsg": its origin, the entry of code 0, then those of the outcomes that have a definition, in their
// order. `maker` is the program with its options, as describeOptions writes it; empty for no line of it.
std::string writeInitFile(const RegistryVersion& version, const std::vector<CrsOutcome>& outcomes,
                          const std::string& maker = "");

// The content of "epsg-axisorder.csv", a line for each entry of "epsg".
std::string writeAxisOrderFile(const std::vector<CrsOutcome>& outcomes);

// The content of "epsg-info.csv", a line for each entry of "epsg" but code 0, in comma-separated values as RFC 4180 has
// them, with a head.
std::string writeDescriptionFile(const std::vector<CrsOutcome>& outcomes);

}  // namespace ProjDir
