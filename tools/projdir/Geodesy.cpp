#include "tools/projdir/Geodesy.h"

#include <cmath>

namespace ProjDir {

Vector operator+(const Vector& left, const Vector& right) {
    return {left.x + right.x, left.y + right.y, left.z + right.z};
}

Vector operator-(const Vector& left, const Vector& right) { return left + -1.0 * right; }

Vector operator*(double factor, const Vector& vector) {
    return {factor * vector.x, factor * vector.y, factor * vector.z};
}

double dot(const Vector& left, const Vector& right) { return left.x * right.x + left.y * right.y + left.z * right.z; }

Vector cross(const Vector& left, const Vector& right) {
    return {left.y * right.z - left.z * right.y, left.z * right.x - left.x * right.z,
            left.x * right.y - left.y * right.x};
}

double lengthOf(const Vector& vector) { return std::sqrt(dot(vector, vector)); }

LocalFrame localFrameAt(const LonLat& point) {
    const double longitude = point.longitude * RADIANS_PER_DEGREE;
    const double latitude = point.latitude * RADIANS_PER_DEGREE;
    const Vector east{-std::sin(longitude), std::cos(longitude), 0};
    const Vector up{std::cos(latitude) * std::cos(longitude), std::cos(latitude) * std::sin(longitude),
                    std::sin(latitude)};
    return {east, cross(up, east), up};
}

Vector toGeocentric(const ReferenceEllipsoid& ellipsoid, const LonLat& point, double height) {
    const Vector up = localFrameAt(point).up;
    const double a = ellipsoid.semiMajor;
    const double ratio = ellipsoid.semiMinor / a;
    const double curvature = a / std::sqrt(1 - (1 - ratio * ratio) * up.z * up.z);
    return {(curvature + height) * up.x, (curvature + height) * up.y, (curvature * ratio * ratio + height) * up.z};
}

double distanceInMetres(const LonLat& left, const LonLat& right) {
    return lengthOf(toGeocentric(WGS_84_ELLIPSOID, left) - toGeocentric(WGS_84_ELLIPSOID, right));
}

}  // namespace ProjDir
