#pragma once

#include <optional>
#include <string>

#include "tools/projdir/ProjContext.h"

namespace ProjDir {

// The EPSG code of a projected CRS's method; empty for any other CRS.
std::string methodOf(const ProjContext& context, const PJ* crs);

// "+proj=..." of a projected CRS by one of the methods that the classic language can express although PROJ has no text
// for them. Nothing for any other method. Axes that count westwards or southwards need "+axis" beside it.
std::optional<std::string> writeMethodText(const ProjContext& context, const PJ* crs);

}  // namespace ProjDir
