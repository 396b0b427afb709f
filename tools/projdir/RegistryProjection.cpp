#include "tools/projdir/RegistryProjection.h"

#include <cmath>
#include <utility>

#include "tools/projdir/AxisOrder.h"

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

}  // namespace

RegistryProjection::RegistryProjection(const ProjContext& context, const PJ* crs) {
    const ProjPtr<PJ> geodeticCrs = createGeodeticCrs(context, crs);
    operation.reset(proj_create_crs_to_crs_from_pj(context.get(), crs, geodeticCrs.get(), nullptr, nullptr));
    isLatitudeFirst = isNorthAxisFirst(context, geodeticCrs.get());
    degreesPerUnit = readDegreesPerUnit(context, geodeticCrs.get());
    meridian = readMeridian(context, geodeticCrs.get());
}

LonLat RegistryProjection::toGeodetic(const Coordinates& coordinates) const {
    if (operation == nullptr) return {HUGE_VAL, HUGE_VAL};
    const PJ_COORD moved =
        proj_trans(operation.get(), PJ_FWD, proj_coord(coordinates[0], coordinates[1], coordinates[2], HUGE_VAL));
    LonLat place{moved.xy.x, moved.xy.y};
    if (isLatitudeFirst) std::swap(place.longitude, place.latitude);
    return {place.longitude * degreesPerUnit + meridian, place.latitude * degreesPerUnit};
}

}  // namespace ProjDir
