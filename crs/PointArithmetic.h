#pragma once

#include <utility>

// The arithmetic on a point before and after PROJ. `Side` is a CRS or a caller's record of one: its scale factors, its
// axis order and whether it is geographic.
namespace CoordinateTransformation {

constexpr double RADIANS_PER_DEGREE = 0.017453292519943295;
constexpr double DEGREES_PER_RADIAN = 57.29577951308232;

// Nearly every CRS has the factor 1. Dividing by 1 is exact, so the division can be omitted.
inline void divide(double& x, double& y, double factor) {
    if (factor == 1.0) return;
    x /= factor;
    y /= factor;
}

inline void multiply(double& x, double& y, double factor) {
    x *= factor;
    y *= factor;
}

// Intended: scale factors work differently between CRS of the same code, and before and after the transformation.
template <typename Side>
void moveBetweenCompatible(const Side& source, const Side& target, double& x, double& y, double* z) {
    if (source.isAxisOrderEastNorthOrLonLat() != target.isAxisOrderEastNorthOrLonLat()) std::swap(x, y);
    multiply(x, y, target.getPrimaryScaleFactor() / source.getPrimaryScaleFactor());
    if (z != nullptr) *z *= target.getCompoundScaleFactor() / source.getCompoundScaleFactor();
}

template <typename Side>
void bringIntoProjForm(const Side& source, double& x, double& y, double* z) {
    divide(x, y, source.getPrimaryScaleFactor());
    if (z != nullptr) *z *= source.getCompoundScaleFactor();
    if (source.isGeographic()) multiply(x, y, RADIANS_PER_DEGREE);
}

template <typename Side>
void bringOutOfProjForm(const Side& target, double& x, double& y, double* z) {
    divide(x, y, target.getPrimaryScaleFactor());
    if (z != nullptr) *z *= target.getCompoundScaleFactor();
    if (target.isGeographic()) multiply(x, y, DEGREES_PER_RADIAN);
}

// Converts a point in PROJ's form to coordinates of the source.
template <typename Side>
void undoBringIntoProjForm(const Side& source, double& x, double& y) {
    if (source.isGeographic()) multiply(x, y, DEGREES_PER_RADIAN);
    multiply(x, y, source.getPrimaryScaleFactor());
}

// Converts coordinates of the target to PROJ's form.
template <typename Side>
void undoBringOutOfProjForm(const Side& target, double& x, double& y) {
    if (target.isGeographic()) multiply(x, y, RADIANS_PER_DEGREE);
    multiply(x, y, target.getPrimaryScaleFactor());
}

}  // namespace CoordinateTransformation
