#pragma once

#include <string>

#include "tools/projdir/Geodesy.h"
#include "tools/projdir/ProjContext.h"

namespace ProjDir {

// The ellipsoid of a geodetic or projected CRS.
ReferenceEllipsoid readEllipsoid(const ProjContext& context, const PJ* crs);

// "+ellps=" with PROJ's name for the very same figure, "+a=... +rf=..." for one without a name, "+R=..." for a
// sphere.
std::string writeEllipsoid(const ReferenceEllipsoid& ellipsoid);

}  // namespace ProjDir
