#pragma once

#include <string>

#include "tools/projdir/Geodesy.h"
#include "tools/projdir/ProjHandles.h"

namespace ProjDir {

// The ellipsoid of a geodetic or projected CRS.
Ellipsoid readEllipsoid(const ProjContext& context, const PJ* crs);

// "+ellps=" with PROJ's name for the very same figure, "+a=... +rf=..." for one without a name, "+R=..." for a
// sphere.
std::string writeEllipsoid(const Ellipsoid& ellipsoid);

}  // namespace ProjDir
