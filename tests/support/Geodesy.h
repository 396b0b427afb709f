#pragma once

#include <array>
#include <cmath>
#include <ostream>

// Textbook geodesy for expected values. Nothing here calls PROJ.
namespace TestSupport {

constexpr double PI = 3.14159265358979323846;
constexpr double RADIANS = PI / 180;

// Longitude, latitude and height, or the coordinates of a CRS. Angles are in degrees.
struct Point {
    double x;
    double y;
    double z;
};

inline std::ostream& operator<<(std::ostream& stream, const Point& point) {
    const auto precision = stream.precision(15);
    stream << "(" << point.x << ", " << point.y << ", " << point.z << ")";
    stream.precision(precision);
    return stream;
}

inline double distance(const Point& left, const Point& right) {
    return std::sqrt(std::pow(left.x - right.x, 2) + std::pow(left.y - right.y, 2) + std::pow(left.z - right.z, 2));
}

// An ellipsoid: its semi-major axis in metres and its flattening.
struct Figure {
    double a;
    double f;
    double eccentricitySquared() const { return f * (2 - f); }
};

// From the table of ellipsoids in the EPSG Geodetic Parameter Dataset.
constexpr Figure WGS84{6378137.0, 1 / 298.257223563};
constexpr Figure GRS80{6378137.0, 1 / 298.257222101};
constexpr Figure BESSEL{6377397.155, 1 / 299.1528128};
constexpr Figure AIRY{6377563.396, 1 / 299.3249646};
constexpr Figure CLARKE_1880_IGN{6378249.2, (6378249.2 - 6356515.0) / 6378249.2};
constexpr Figure CLARKE_1866{6378206.4, (6378206.4 - 6356583.8) / 6378206.4};
constexpr Figure INTERNATIONAL{6378388.0, 1 / 297.0};

// Defined by the minor axis in PROJ's list, which is 2 mm shorter than that of the dataset.
constexpr Figure AIRY_MODIFIED{6377340.189, (6377340.189 - 6356034.446) / 6377340.189};

// Converts geodetic to geocentric coordinates (IOGP 373-7-2).
inline Point geocentric(const Figure& figure, const Point& geodetic) {
    const double sine = std::sin(geodetic.y * RADIANS);
    const double cosine = std::cos(geodetic.y * RADIANS);
    const double es = figure.eccentricitySquared();
    const double normal = figure.a / std::sqrt(1 - es * sine * sine);
    return {(normal + geodetic.z) * cosine * std::cos(geodetic.x * RADIANS),
            (normal + geodetic.z) * cosine * std::sin(geodetic.x * RADIANS), (normal * (1 - es) + geodetic.z) * sine};
}

// Translations in metres, rotations in arc-seconds, scale in parts per million.
using Shift = std::array<double, 7>;

// Applies a position vector transformation with rotations as small angles (IOGP 373-7-2).
inline Point shifted(const Shift& shift, const Point& point) {
    const double second = RADIANS / 3600;
    const double rx = shift[3] * second;
    const double ry = shift[4] * second;
    const double rz = shift[5] * second;
    const double scale = 1 + shift[6] * 1e-6;
    return {shift[0] + scale * (point.x - rz * point.y + ry * point.z),
            shift[1] + scale * (rz * point.x + point.y - rx * point.z),
            shift[2] + scale * (-ry * point.x + rx * point.y + point.z)};
}

// Reverses shifted(): removes translation and scale, then applies the rotations with opposite signs. This is not the
// exact inverse of the small-angle form, but the classic interface has always computed it so.
inline Point shiftedBack(const Shift& shift, const Point& point) {
    const double scale = 1 + shift[6] * 1e-6;
    const Point unscaled{(point.x - shift[0]) / scale, (point.y - shift[1]) / scale, (point.z - shift[2]) / scale};
    return shifted({0, 0, 0, -shift[3], -shift[4], -shift[5], 0}, unscaled);
}

// Length in metres of the meridian from the equator, by Simpson's rule over the radius of curvature.
inline double meridianArc(const Figure& figure, double latitude) {
    constexpr int STEPS = 20000;
    const double es = figure.eccentricitySquared();
    const auto radius = [&figure, es](double phi) {
        return figure.a * (1 - es) / std::pow(1 - es * std::sin(phi) * std::sin(phi), 1.5);
    };
    const double width = latitude * RADIANS / STEPS;
    double sum = radius(0) + radius(latitude * RADIANS);
    for (int i = 1; i < STEPS; ++i) sum += radius(i * width) * (i % 2 == 0 ? 2 : 4);
    return sum * width / 3;
}

// Northing of the Mercator projection per metre of radius on a sphere (Snyder, PP 1395, 7-2).
inline double mercatorNorthing(double latitude) { return std::log(std::tan(PI / 4 + latitude * RADIANS / 2)); }

}  // namespace TestSupport
