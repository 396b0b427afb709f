#pragma once

#include <array>
#include <optional>
#include <string>

#include <proj.h>

#include "text/ParameterList.h"

namespace ClassicProj {

using CoordinateTransformation::ParameterList;

// The figure of the earth, in metres.
struct Ellipsoid {
    double semiMajor = 0;
    double semiMinor = 0;
    double eccentricitySquared = 0;
};

bool operator==(const Ellipsoid& left, const Ellipsoid& right);

enum class DatumKind { UNKNOWN, WGS_84, HELMERT, GRIDS };

// How a CRS is tied to WGS 84.
struct Datum {
    DatumKind kind = DatumKind::UNKNOWN;
    // HELMERT: translations in metres, rotations in arc-seconds (position vector), scale in parts per million.
    std::array<double, 7> toWgs84{};
    // GRIDS: the list of "+nadgrids".
    std::string grids;
    // That of "+datum_id". Datums with one id are one, whatever their shifts are.
    std::optional<std::string> id;
    Ellipsoid ellipsoid;
    // The one that coordinates refer to where the shifts of two CRS meet: with GRIDS that of WGS 84.
    Ellipsoid meetingEllipsoid;
};

// The parameters that "+datum" of the same list stands for, behind those that are there: what the definition
// says itself wins. False when the datum has no such name.
bool expandDatum(ParameterList& parameters);

// REQUIRES: the datum has been expanded.
Datum readDatum(const ParameterList& parameters, const Ellipsoid& ellipsoid, const Ellipsoid& wgs84);

// Whether all numbers of its shift are finite.
bool isFinite(const Datum& datum);

// Whether coordinates of the two need no shift: either has no datum, or both have the same, by id or in all figures.
bool needsNoShift(const Datum& source, const Datum& target);

// A CRS of the classic interface, worked out once so that pairs of them only need joining.
struct Definition {
    bool isLongLat = false;
    bool isGeocentric = false;
    // The PROJ step from geodetic coordinates to those of the CRS; empty when they are the same.
    std::string step;
    Datum datum;
    // The list of "+geoidgrids"; empty when heights are above the ellipsoid.
    std::string geoidGrids;
};

// Works the parameters out, asking PROJ whether it can make the projection. 0, or PROJ's error number.
//
// REQUIRES: no other thread uses `proj`.
int makeDefinition(ParameterList parameters, PJ_CONTEXT* proj, Definition& definition);

}  // namespace ClassicProj
