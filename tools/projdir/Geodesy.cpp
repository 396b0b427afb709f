#include "tools/projdir/Geodesy.h"

#include <cmath>

#include <Eigen/Geometry>

namespace ProjDir {

LocalFrame localFrameAt(const LonLat& point) {
    const double longitude = point.longitude * RADIANS_PER_DEGREE;
    const double latitude = point.latitude * RADIANS_PER_DEGREE;
    const Vector east{-std::sin(longitude), std::cos(longitude), 0};
    const Vector up{std::cos(latitude) * std::cos(longitude), std::cos(latitude) * std::sin(longitude),
                    std::sin(latitude)};
    return {east, up.cross(east), up};
}

Vector toGeocentric(const ReferenceEllipsoid& ellipsoid, const LonLat& point, double height) {
    const Vector up = localFrameAt(point).up;
    const double a = ellipsoid.semiMajor;
    const double ratio = ellipsoid.semiMinor / a;
    const double curvature = a / std::sqrt(1 - (1 - ratio * ratio) * up.z() * up.z());
    return {(curvature + height) * up.x(), (curvature + height) * up.y(),
            (curvature * ratio * ratio + height) * up.z()};
}

double distanceInMetres(const LonLat& left, const LonLat& right) {
    return (toGeocentric(WGS_84_ELLIPSOID, left) - toGeocentric(WGS_84_ELLIPSOID, right)).norm();
}

}  // namespace ProjDir
