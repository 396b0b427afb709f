#pragma once

#include <string>

#include "tools/projdir/ProjContext.h"

namespace ProjDir {

// Whether the registry puts northing or latitude first: whether PROJ, to show coordinates on a map, exchanges
// the first two axes. False for a CRS whose westing or southing comes first and for a geocentric one; their
// definitions have the registry's order themselves.
bool isNorthAxisFirst(const ProjContext& context, const PJ* crs);

// "+axis=wsu" for a projected CRS that counts westwards and southwards, and so on; empty for one that counts
// eastwards and northwards, and at a pole, where both axes point along meridians.
std::string writeAxisDirections(const ProjContext& context, const PJ* crs);

}  // namespace ProjDir
