#pragma once

#include <functional>
#include <string>

#include "tools/crsctl/check/Finding.h"

namespace crsctl {

// What the files of a PROJ directory hold and a start passes over in silence. Places have no file.

// "epsg-axisorder.csv": a last line that is not read because its line end is missing, and codes that stand there with
// both axis orders.
Findings checkAxisOrders(const std::string& text);

// "epsg": codes that are defined twice in different ways, grid files that `isThere` denies, and parameters that should
// be numbers and are not.
Findings checkDefinitions(const std::string& text, const std::function<bool(const std::string& grid)>& isThere);

// Both files of `directory`, with their paths. Grid files are looked for there and in PROJ's own directories.
Findings checkProjDirectory(const std::string& directory);

}  // namespace crsctl
