#include "tools/projdir/CrsUnderTest.h"

#include <cmath>

#include "text/ParameterList.h"
#include "tools/projdir/Geodesy.h"

namespace ProjDir {

using CoordinateTransformation::AbstractCrs;
using CoordinateTransformation::CrsCreator;
using CoordinateTransformation::ParameterList;

namespace {

constexpr unsigned int NO_SECOND_CODE = 0;

const RegistryCrs& horizontalPartOf(const RegistryCrs& entry) {
    return entry.horizontal == nullptr ? entry : *entry.horizontal;
}

// On the datum of the CRS: a shift would lead away from it.
std::string withoutShift(const std::string& definition) {
    return ParameterList(definition).without({"towgs84", "nadgrids", "datum_id"}).toText();
}

// With the height: without it a point does not come back from another ellipsoid to where it was.
Coordinates moveBetween(const AbstractCrs& source, const AbstractCrs& target, Coordinates coordinates) {
    auto& [x, y, z] = coordinates;
    source.transformTo(&target, x, y, z);
    return coordinates;
}

}  // namespace

CrsUnderTest::CrsUnderTest(ProjContext& context, const CrsCreator& creator, const CrsOutcome& crsOutcome)
    : tested(crsOutcome),
      projection(context, createCrs(context, horizontalPartOf(crsOutcome.crs).code).get(),
                 withoutShift(crsOutcome.definition->text), crsOutcome.definition->isNorthFirst),
      crs(creator.createFromCode(crsOutcome.crs.code, NO_SECOND_CODE, true)) {}

double CrsUnderTest::distanceBetween(const Coordinates& left, const Coordinates& right) const {
    if (tested.crs.kind == CrsKind::GEOCENTRIC)
        return std::hypot(left[0] - right[0], left[1] - right[1], left[2] - right[2]);
    return distanceInMetres(placeOf(left), placeOf(right));
}

Coordinates CrsUnderTest::move(const Coordinates& coordinates, const AbstractCrs& target) const {
    return moveBetween(*crs, target, coordinates);
}

Coordinates CrsUnderTest::moveFrom(const AbstractCrs& source, const Coordinates& coordinates) const {
    return moveBetween(source, *crs, coordinates);
}

}  // namespace ProjDir
