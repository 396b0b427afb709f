#pragma once

#include <array>
#include <stdexcept>
#include <string>

#include "tools/projdir/Geodesy.h"
#include "tools/projdir/ProjContext.h"
#include "tools/projdir/Registry.h"

namespace ProjDir {

// A CRS that the classic definition language cannot express; what() says why.
class NotExpressible : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// A CRS in the classic definition language, all but its datum shift.
struct ClassicText {
    // "+proj=tmerc +lat_0=49 ..."
    std::string projection;
    // "+ellps=airy"
    std::string figure;
    // "+units=m", "+pm=paris"; may be empty.
    std::string unitsAndMeridian;
    ReferenceEllipsoid ellipsoid;
    // The datum is that of EPSG:4326.
    bool isWgs84 = false;

    // The definition with the text of its datum shift, which may be empty.
    std::string write(const std::string& datumShift) const;
};

// NotExpressible for a CRS of a kind that has no classic definition, for a projection method or an angular unit
// that the language does not know.
ClassicText writeClassicText(ProjContext& context, const PJ* crs, const RegistryCrs& entry);

// The CRS that a projected CRS is based on; the CRS itself for any other.
ProjPtr<PJ> createGeodeticCrs(const ProjContext& context, const PJ* crs);

using Coordinates = std::array<double, 3>;

// Leads from coordinates in a definition's own axis order and units back to longitude and latitude on its
// ellipsoid.
//
// Borrows the context. One thread at a time.
class ClassicInverse {
public:
    // NotExpressible when PROJ cannot make the definition.
    ClassicInverse(ProjContext& context, const std::string& definition);

    // Longitude east of Greenwich. Not finite where PROJ finds none.
    LonLat operator()(const Coordinates& coordinates) const;

private:
    ProjPtr<PJ> projection;
    // Geographic coordinates come in degrees; PROJ's bare operations take radians.
    double unit;
};

}  // namespace ProjDir
