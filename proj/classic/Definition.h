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

// The relation of a CRS to WGS 84.
struct Datum {
    DatumKind kind = DatumKind::UNKNOWN;
    // HELMERT: translations in metres, rotations in arc-seconds (position vector), scale in parts per million.
    std::array<double, 7> toWgs84{};
    // GRIDS: the list of "+nadgrids".
    std::string grids;
    // The value of "+datum_id". Datums with the same id are one datum, whatever their shifts are.
    std::optional<std::string> id;
    Ellipsoid ellipsoid;
    // The ellipsoid of the coordinates between the shifts of two CRS; for GRIDS the one of WGS 84.
    Ellipsoid meetingEllipsoid;
};

// Appends the parameters of the datum that "+datum" names; parameters of the definition itself take precedence. Returns
// false when the datum name is unknown.
bool expandDatum(ParameterList& parameters);

// REQUIRES: the datum has been expanded.
Datum readDatum(const ParameterList& parameters, const Ellipsoid& ellipsoid, const Ellipsoid& wgs84);

// Whether all numbers of the shift are finite.
bool isFinite(const Datum& datum);

// Whether coordinates need no shift between the two: one of them has no datum, or both have the same, by id or in all
// figures.
bool needsNoShift(const Datum& source, const Datum& target);

// A CRS of the classic interface, prepared so that a pair of them only needs to be joined.
struct Definition {
    bool isLongLat = false;
    bool isGeocentric = false;
    // The PROJ step from geodetic coordinates to those of the CRS; empty when they are the same.
    std::string step;
    Datum datum;
    // The list of "+geoidgrids"; empty when heights refer to the ellipsoid.
    std::string geoidGrids;
};

// Makes a definition of the parameters and lets PROJ check the projection. Returns 0 or PROJ's error number.
//
// REQUIRES: no other thread uses `proj`.
int makeDefinition(ParameterList parameters, PJ_CONTEXT* proj, Definition& definition);

}  // namespace ClassicProj
