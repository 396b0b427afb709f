#pragma once

#include <proj.h>
#include <string>

#include "proj/classic/Datum.h"

namespace ClassicProj {

struct Context {
    int error = 0;
};

// A CRS of the classic interface, worked out once so that pairs of them only need joining.
struct Definition {
    bool isLongLat = false;
    bool isGeocentric = false;
    // The PROJ step from geodetic coordinates to those of the CRS; empty when they are the same.
    std::string step;
    Datum datum;
    // The list of "+geoidgrids"; empty when heights are above the ellipsoid.
    std::string geoidGrids;
    const Context* context = nullptr;
};

// Works the parameters out, asking PROJ whether it can make the projection. 0, or PROJ's error number.
//
// REQUIRES: no other thread uses `proj`.
int makeDefinition(ParameterList parameters, PJ_CONTEXT* proj, Definition& definition);

}  // namespace ClassicProj
