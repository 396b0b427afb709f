#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <vector>

#include <Eigen/Core>

namespace ProjDir {

constexpr double RADIANS_PER_DEGREE = 0.017453292519943295;
constexpr double RADIANS_PER_ARC_SECOND = RADIANS_PER_DEGREE / 3600;
constexpr double MILLION = 1e6;

// Degrees, east of Greenwich and north of the equator.
struct LonLat {
    double longitude = 0;
    double latitude = 0;
};

// Coordinates of a CRS. The axis order and the units depend on the function.
using Coordinates = std::array<double, 3>;

bool isFinite(const LonLat& place);
bool isFinite(const Coordinates& coordinates);

// With the longitude between -180 and 180. REQUIRES: at most a full turn away from there.
LonLat foldLongitude(const LonLat& place);

// An area of use. It crosses the 180th meridian when `west` is greater than `east`.
struct Area {
    double west = 0;
    double south = 0;
    double east = 0;
    double north = 0;
};

// Whether the place is in the area. Borders count, with a margin for the rounding of a projection and its inverse.
bool contains(const Area& area, const LonLat& place);

// Whether the two have a point in common. Borders count.
bool overlap(const Area& left, const Area& right);

// The size of the intersection, in proportion to its size on the ground: degrees of longitude times the difference of
// the sines of the latitudes.
double commonExtent(const Area& left, const Area& right);

// A grid of perSide * perSide points over the area, with its borders, from the south-west. REQUIRES: perSide >= 2.
std::vector<LonLat> sampleArea(const Area& area, int perSide);

LonLat centreOf(const Area& area);

// The semi-axes in metres.
struct ReferenceEllipsoid {
    double semiMajor = 0;
    double semiMinor = 0;
};

constexpr ReferenceEllipsoid WGS_84_ELLIPSOID{6378137.0, 6356752.314245179};

using Vector = Eigen::Vector3d;

// The geocentric coordinates of a point `height` metres above the ellipsoid.
Vector toGeocentric(const ReferenceEllipsoid& ellipsoid, const LonLat& point, double height = 0);

// The local east-north-up frame of a place: unit vectors along the geocentric axes.
struct LocalFrame {
    Vector east = Vector::Zero();
    Vector north = Vector::Zero();
    Vector up = Vector::Zero();
};

LocalFrame localFrameAt(const LonLat& point);

// The straight distance in metres between two points on the ellipsoid of WGS 84. Up to some kilometres it equals the
// geodesic, also at the poles and across the 180th meridian.
double distanceInMetres(const LonLat& left, const LonLat& right);

// A datum shift between two geocentric systems, as "+towgs84" defines it: position vector convention, small angles,
// X' = T + (1 + S) (X + R x X).
struct Helmert {
    Vector translation = Vector::Zero();  // metres
    Vector rotation = Vector::Zero();     // arc-seconds
    double scale = 0;                     // parts per million

    Vector apply(const Vector& point) const;
    bool isNull() const;
};

// `second` after `first`, to first order. The terms of second order are below a millimetre for real datums.
Helmert compose(const Helmert& first, const Helmert& second);

// To first order.
Helmert invert(const Helmert& helmert);

// Rounded to 0.1 mm, 0.000001 arc-seconds and 0.000001 ppm, which is below anything measurable.
Helmert roundForWriting(const Helmert& helmert);

// The seven values of "+towgs84".
std::string writeHelmert(const Helmert& helmert);

// A point in the geocentric system of its own datum and in that of WGS 84.
struct ShiftSample {
    Vector source = Vector::Zero();
    Vector target = Vector::Zero();
    // At the target.
    LocalFrame frame;
};

ShiftSample makeShiftSample(const ReferenceEllipsoid& sourceEllipsoid, const LonLat& source, const LonLat& target);

// Moves the targets to the heights that `shift` gives.
void adoptHeights(std::vector<ShiftSample>& samples, const Helmert& shift);

// Horizontal distances in metres.
struct Residual {
    double mean = 0;
    double rootMeanSquare = 0;
    double largest = 0;
};

// The horizontal distances between the shifted sources and the targets.
Residual measureResidual(const Helmert& shift, const std::vector<ShiftSample>& samples);

// The number of samples whose horizontal distance is greater than `metres`.
std::size_t countBeyond(const Helmert& shift, const std::vector<ShiftSample>& samples, double metres);

enum class FitParameters { TRANSLATION, ALL_SEVEN };

// The least-squares fit of a shift to the samples. Heights have a very small weight: they only settle what horizontal
// distances leave open. Parameters that neither determines, as in a small area, keep their values of `start`.
Helmert fitHelmert(const std::vector<ShiftSample>& samples, FitParameters parameters, const Helmert& start);

}  // namespace ProjDir
