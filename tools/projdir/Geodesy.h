#pragma once

#include <Eigen/Core>

#include "tools/projdir/Area.h"

namespace ProjDir {

constexpr double RADIANS_PER_DEGREE = 0.017453292519943295;

// The semi-axes of a figure of the earth, in metres.
struct ReferenceEllipsoid {
    double semiMajor = 0;
    double semiMinor = 0;
};

constexpr ReferenceEllipsoid WGS_84_ELLIPSOID{6378137.0, 6356752.314245179};

using Vector = Eigen::Vector3d;

// Geocentric coordinates of a point at `height` metres above the ellipsoid.
Vector toGeocentric(const ReferenceEllipsoid& ellipsoid, const LonLat& point, double height = 0);

// The local east-north-up frame of a place: unit vectors in the geocentric axes.
struct LocalFrame {
    Vector east = Vector::Zero();
    Vector north = Vector::Zero();
    Vector up = Vector::Zero();
};

LocalFrame localFrameAt(const LonLat& point);

// Metres along the straight line between two points on the ellipsoid of WGS 84. As good as the way along the
// ground below some kilometres, at the poles and across the 180th meridian alike.
double distanceInMetres(const LonLat& left, const LonLat& right);

}  // namespace ProjDir
