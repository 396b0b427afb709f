#pragma once

#include <vector>

#include "tools/projdir/BestOperation.h"
#include "tools/projdir/ClassicText.h"
#include "tools/projdir/ProjContext.h"

namespace ProjDir {

// The registry's own way from coordinates of a CRS, in its axis order and units, to longitude and latitude of its
// datum.
//
// Borrows the context. One thread at a time.
class RegistryProjection {
public:
    RegistryProjection(const ProjContext& context, const PJ* crs);

    // Longitude east of Greenwich, both in degrees. Not finite where PROJ finds none.
    LonLat toGeodetic(const Coordinates& coordinates) const;

private:
    ProjPtr<PJ> operation;
    bool isLatitudeFirst = false;
    double degreesPerUnit = 1;
    double meridian = 0;
};

}  // namespace ProjDir
