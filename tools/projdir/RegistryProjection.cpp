#include "tools/projdir/RegistryProjection.h"

#include <cmath>
#include <utility>

#include "tools/projdir/AxisOrder.h"
#include "tools/projdir/EllipsoidText.h"

namespace ProjDir {
namespace {

double readDegreesPerUnit(const ProjContext& context, const PJ* geodeticCrs) {
    const ProjPtr<PJ> axes(proj_crs_get_coordinate_system(context.get(), geodeticCrs));
    double radians = RADIANS_PER_DEGREE;
    if (axes != nullptr)
        proj_cs_get_axis_info(context.get(), axes.get(), 0, nullptr, nullptr, nullptr, &radians, nullptr, nullptr,
                              nullptr);
    return radians / RADIANS_PER_DEGREE;
}

double readMeridian(const ProjContext& context, const PJ* geodeticCrs) {
    const ProjPtr<PJ> meridian(proj_get_prime_meridian(context.get(), geodeticCrs));
    double longitude = 0;
    double radians = RADIANS_PER_DEGREE;
    if (meridian != nullptr)
        proj_prime_meridian_get_parameters(context.get(), meridian.get(), &longitude, &radians, nullptr);
    return longitude * radians / RADIANS_PER_DEGREE;
}

Coordinates toCoordinates(const PJ_COORD& point) { return {point.xyz.x, point.xyz.y, point.xyz.z}; }

Coordinates exchangeIf(bool exchange, Coordinates coordinates) {
    if (exchange) std::swap(coordinates[0], coordinates[1]);
    return coordinates;
}

// PROJ also makes operations of methods that it cannot carry out.
bool isCarriedOut(const ProjContext& context, const PJ* crs) {
    if (proj_get_type(crs) != PJ_TYPE_PROJECTED_CRS) return true;
    const ProjPtr<PJ> conversion(proj_crs_get_coordoperation(context.get(), crs));
    return proj_as_proj_string(context.get(), conversion.get(), PJ_PROJ_5, nullptr) != nullptr;
}

ProjPtr<PJ> makeOperation(const ProjContext& context, const PJ* crs) {
    if (!isCarriedOut(context, crs)) return nullptr;
    const ProjPtr<PJ> geodeticCrs = createGeodeticCrs(context, crs);
    return ProjPtr<PJ>(proj_create_crs_to_crs_from_pj(context.get(), crs, geodeticCrs.get(), nullptr, nullptr));
}

}  // namespace

GeodeticAxes::GeodeticAxes(const ProjContext& context, const PJ* geodeticCrs)
    : isGeocentric(proj_get_type(geodeticCrs) == PJ_TYPE_GEOCENTRIC_CRS),
      isLatitudeFirst(isNorthAxisFirst(context, geodeticCrs)),
      degreesPerUnit(isGeocentric ? 1 : readDegreesPerUnit(context, geodeticCrs)),
      meridian(readMeridian(context, geodeticCrs)),
      ellipsoid(readEllipsoid(context, geodeticCrs)) {}

PJ_COORD GeodeticAxes::write(const LonLat& place) const {
    if (isGeocentric) {
        const Vector point = toGeocentric(ellipsoid, place);
        return proj_coord(point.x(), point.y(), point.z(), HUGE_VAL);
    }
    const double longitude = (place.longitude - meridian) / degreesPerUnit;
    const double latitude = place.latitude / degreesPerUnit;
    return isLatitudeFirst ? proj_coord(latitude, longitude, 0, HUGE_VAL)
                           : proj_coord(longitude, latitude, 0, HUGE_VAL);
}

LonLat GeodeticAxes::read(const PJ_COORD& coordinates) const {
    LonLat place{coordinates.xy.x, coordinates.xy.y};
    if (isLatitudeFirst) std::swap(place.longitude, place.latitude);
    return {place.longitude * degreesPerUnit + meridian, place.latitude * degreesPerUnit};
}

RegistryProjection::RegistryProjection(const ProjContext& context, const PJ* crs)
    : axes(context, createGeodeticCrs(context, crs).get()), operation(makeOperation(context, crs)) {}

RegistryProjection::RegistryProjection(ProjContext& context, const PJ* crs, const std::string& definition,
                                       bool isNorthFirst)
    : RegistryProjection(context, crs) {
    northFirst = isNorthFirst;
    if (operation == nullptr) classic = std::make_unique<ClassicProjection>(context, definition);
}

Coordinates RegistryProjection::fromGeodetic(const LonLat& place) const {
    if (classic != nullptr) return exchangeIf(northFirst, classic->fromGeodetic(place));
    if (operation == nullptr) return {HUGE_VAL, HUGE_VAL, HUGE_VAL};
    return toCoordinates(proj_trans(operation.get(), PJ_INV, axes.write(place)));
}

LonLat RegistryProjection::toGeodetic(const Coordinates& coordinates) const {
    if (classic != nullptr) return classic->toGeodetic(exchangeIf(northFirst, coordinates));
    if (operation == nullptr) return {HUGE_VAL, HUGE_VAL};
    return axes.read(
        proj_trans(operation.get(), PJ_FWD, proj_coord(coordinates[0], coordinates[1], coordinates[2], HUGE_VAL)));
}

}  // namespace ProjDir
