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
    // Of the datum, "EPSG:6230"; may be empty.
    std::string datumId;

    // The definition with the text of its datum shift, which may be empty.
    std::string write(const std::string& datumShift) const;
};

// NotExpressible for a kind of CRS that has no classic definition.
void requireExpressibleKind(CrsKind kind);

// NotExpressible for a CRS of a kind that has no classic definition, for a projection method or an angular unit
// that the language does not know.
ClassicText writeClassicText(ProjContext& context, const PJ* crs, const RegistryCrs& entry);

// The CRS that a projected CRS is based on; the CRS itself for a geodetic one.
ProjPtr<PJ> createGeodeticCrs(const ProjContext& context, const PJ* crs);

using Coordinates = std::array<double, 3>;

// Leads between coordinates in a definition's own axis order and units and longitude and latitude on its
// ellipsoid.
//
// Borrows the context. One thread at a time.
class ClassicProjection {
public:
    // NotExpressible when PROJ cannot make the definition.
    ClassicProjection(ProjContext& context, const std::string& definition);

    // Longitudes east of Greenwich. Not finite where PROJ finds none.
    LonLat toGeodetic(const Coordinates& coordinates) const;
    Coordinates fromGeodetic(const LonLat& place) const;

private:
    ProjPtr<PJ> projection;
    // Geographic coordinates come in degrees; PROJ's bare operations take radians.
    double unit;
};

}  // namespace ProjDir
