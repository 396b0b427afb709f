#pragma once

#include <memory>
#include <optional>
#include <stdexcept>
#include <string>

#include "text/ParameterList.h"
#include "tools/projdir/Registry.h"

namespace ProjDir {

using CoordinateTransformation::ParameterList;

// The classic definition language cannot express a CRS; what() is the reason.
class NotExpressible : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// "+proj=utm +zone=32".
std::string writeParameters(const ParameterList& parameters);

// Whether the text is valid between "<code>" and "<>": no character of it ends the definition.
bool isWholeDefinition(const std::string& text);

// Whether the first axis of the registry is northing or latitude, which PROJ exchanges with the second to show
// coordinates on a map. False for westing or southing and for geocentric axes: the definition itself has their order.
bool isNorthAxisFirst(const ProjContext& context, const PJ* crs);

// "+axis=wsu" for a projected CRS with westings and southings, and so on. Empty for eastings and northings, and at a
// pole, where both axes point along meridians.
std::string writeAxisDirections(const ProjContext& context, const PJ* crs);

// The ellipsoid of a geodetic or projected CRS.
ReferenceEllipsoid readEllipsoid(const ProjContext& context, const PJ* crs);

// "+ellps=..." if PROJ has a name for exactly this ellipsoid, "+R=..." for a sphere, else "+a=... +rf=...".
std::string writeEllipsoid(const ReferenceEllipsoid& ellipsoid);

// "+proj=..." for a projected CRS whose method the classic language can express although PROJ does not write it;
// nothing for any other CRS. Westings and southings need "+axis" as well.
std::optional<std::string> writeMethodText(const ProjContext& context, const PJ* crs);

// A CRS in the classic definition language, except for its datum shift.
struct ClassicText {
    std::string projection;        // "+proj=tmerc +lat_0=49 ..."
    std::string figure;            // "+ellps=airy"
    std::string unitsAndMeridian;  // "+units=m", "+pm=paris"; may be empty
    ReferenceEllipsoid ellipsoid;
    // Whether the datum is that of EPSG:4326.
    bool isWgs84 = false;
    std::string datumId;  // "EPSG:6230"; may be empty

    // The definition with the parameter of its datum shift, which may be empty.
    std::string write(const std::string& datumShift) const;
};

// NotExpressible for a kind of CRS that has no classic definition.
void requireExpressibleKind(CrsKind kind);

// NotExpressible for a kind of CRS, a projection method or an angular unit that the language does not have.
ClassicText writeClassicText(ProjContext& context, const PJ* crs, const RegistryCrs& entry);

// The base CRS of a projected CRS; any other CRS itself.
ProjPtr<PJ> createGeodeticCrs(const ProjContext& context, const PJ* crs);

// Converts between the coordinates of a definition, in its own axis order and units, and longitude and latitude on its
// ellipsoid.
//
// One thread at a time. Borrows the context.
class ClassicProjection {
public:
    // NotExpressible when PROJ cannot make the definition.
    ClassicProjection(ProjContext& context, const std::string& definition);

    // Not finite where PROJ has no result.
    LonLat toGeodetic(const Coordinates& coordinates) const;
    Coordinates fromGeodetic(const LonLat& place) const;

private:
    ProjPtr<PJ> projection;
    // Geographic coordinates are in degrees; PROJ's bare operations take radians.
    double unit;
};

// The axes of a geodetic CRS: geocentric, or an order, an angular unit and a prime meridian.
//
// A plain value.
class GeodeticAxes {
public:
    GeodeticAxes(const ProjContext& context, const PJ* geodeticCrs);

    // The coordinates of a place at height 0.
    Coordinates write(const LonLat& place) const;
    // REQUIRES: geographic axes.
    LonLat read(const Coordinates& coordinates) const;

private:
    bool isGeocentric = false;
    bool isLatitudeFirst = false;
    double degreesPerUnit = 1;
    double meridian = 0;
    ReferenceEllipsoid ellipsoid;
};

// Converts between the coordinates of a CRS, in the registry's axis order and units, and longitude and latitude of its
// datum. It uses PROJ's operation for the registry's conversion; where PROJ has none, a definition.
//
// One thread at a time. Borrows the context.
class RegistryProjection {
public:
    // NotExpressible when PROJ has no operation and cannot make the definition either. `isNorthFirst` is the registry's
    // axis order.
    RegistryProjection(ProjContext& context, const PJ* crs, const std::string& definition, bool isNorthFirst);

    // Not finite where PROJ has no result.
    Coordinates fromGeodetic(const LonLat& place) const;
    // Not finite where PROJ has no result. REQUIRES: not geocentric.
    LonLat toGeodetic(const Coordinates& coordinates) const;
    // Whether PROJ has an operation.
    bool isRegistrys() const { return classic == nullptr; }

private:
    GeodeticAxes axes;
    ProjPtr<PJ> operation;
    std::unique_ptr<ClassicProjection> classic;
    bool northFirst;
};

}  // namespace ProjDir
