#pragma once

#include <memory>

#include "CoordinateTransformation/AbstractCrs.h"
#include "CoordinateTransformation/CrsCreator.h"
#include "tools/projdir/DefinitionMaker.h"
#include "tools/projdir/RegistryProjection.h"

namespace ProjDir {

// A CRS of the finished directory as the library binds it, beside the registry's own projection of it. Coordinates are
// in the registry's axis order and units.
//
// Borrows all that it is made of. One thread at a time.
class CrsUnderTest {
public:
    // Raises what the library raises for a CRS that it does not bind.
    CrsUnderTest(ProjContext& context, const CoordinateTransformation::CrsCreator& creator,
                 const CrsOutcome& crsOutcome);

    const CrsOutcome& outcome() const { return tested; }

    // By the registry; not finite where PROJ finds none. REQUIRES: not geocentric.
    LonLat placeOf(const Coordinates& coordinates) const { return projection.toGeodetic(coordinates); }
    Coordinates coordinatesAt(const LonLat& place) const { return projection.fromGeodetic(place); }
    // In metres. Not a number where the registry has no place for one of the two.
    double distanceBetween(const Coordinates& left, const Coordinates& right) const;

    // By the library; raises what the library raises.
    Coordinates move(const Coordinates& coordinates, const CoordinateTransformation::AbstractCrs& target) const;
    Coordinates moveFrom(const CoordinateTransformation::AbstractCrs& source, const Coordinates& coordinates) const;
    const CoordinateTransformation::AbstractCrs& bound() const { return *crs; }

private:
    const CrsOutcome& tested;
    RegistryProjection projection;
    std::unique_ptr<CoordinateTransformation::AbstractCrs> crs;
};

}  // namespace ProjDir
