#pragma once

#include "tools/projdir/ClassicText.h"
#include "tools/projdir/ProjContext.h"

namespace ProjDir {

// How a geodetic CRS writes a place: the order and unit of its axes and its prime meridian, or geocentric axes.
//
// A plain value.
class GeodeticAxes {
public:
    GeodeticAxes(const ProjContext& context, const PJ* geodeticCrs);

    // Longitudes east of Greenwich, in degrees, at height 0.
    PJ_COORD write(const LonLat& place) const;
    // REQUIRES: geographic axes.
    LonLat read(const PJ_COORD& coordinates) const;

private:
    bool isGeocentric = false;
    bool isLatitudeFirst = false;
    double degreesPerUnit = 1;
    double meridian = 0;
    ReferenceEllipsoid ellipsoid;
};

// The registry's own way between coordinates of a CRS, in its axis order and units, and longitude and latitude of
// its datum. A definition takes its place where PROJ has no such way.
//
// Borrows the context. One thread at a time.
class RegistryProjection {
public:
    // NotExpressible when PROJ has neither its own way nor that of the definition. `isNorthFirst` is the order of the
    // registry.
    RegistryProjection(ProjContext& context, const PJ* crs, const std::string& definition, bool isNorthFirst);
    // Without a definition to fall back on.
    RegistryProjection(const ProjContext& context, const PJ* crs);

    // Not finite where PROJ finds none.
    Coordinates fromGeodetic(const LonLat& place) const;
    // Longitude east of Greenwich, both in degrees. Not finite where PROJ finds none. REQUIRES: not geocentric.
    LonLat toGeodetic(const Coordinates& coordinates) const;
    // The way is PROJ's own.
    bool isRegistrys() const { return classic == nullptr; }

private:
    GeodeticAxes axes;
    ProjPtr<PJ> operation;
    std::unique_ptr<ClassicProjection> classic;
    bool northFirst = false;
};

}  // namespace ProjDir
