#include "tools/projdir/Helmert.h"

#include <cmath>

#include <Eigen/Geometry>

#include "text/NumericText.h"

namespace ProjDir {

using CoordinateTransformation::writeDouble;

namespace {

// Never a negative zero, which would be written with its sign.
double roundTo(double value, double stepsPerUnit) { return std::round(value * stepsPerUnit) / stepsPerUnit + 0.0; }

Vector roundTo(const Vector& vector, double stepsPerUnit) {
    return vector.unaryExpr([stepsPerUnit](double value) { return roundTo(value, stepsPerUnit); });
}

std::string writeVector(const Vector& vector) {
    return writeDouble(vector.x() + 0.0) + "," + writeDouble(vector.y() + 0.0) + "," + writeDouble(vector.z() + 0.0);
}

// What a helmert does to a difference of two points.
Vector rotateAndScale(const Helmert& helmert, const Vector& vector) {
    const Vector rotated = vector + RADIANS_PER_ARC_SECOND * helmert.rotation.cross(vector);
    return (1 + helmert.scale / MILLION) * rotated;
}

}  // namespace

Vector Helmert::apply(const Vector& point) const { return translation + rotateAndScale(*this, point); }

bool Helmert::isNull() const { return translation.isZero(0) && rotation.isZero(0) && scale == 0; }

Helmert compose(const Helmert& first, const Helmert& second) {
    return {second.apply(first.translation), first.rotation + second.rotation,
            first.scale + second.scale + first.scale * second.scale / MILLION};
}

Helmert invert(const Helmert& helmert) {
    Helmert inverse{Vector::Zero(), -1.0 * helmert.rotation, -helmert.scale / (1 + helmert.scale / MILLION)};
    inverse.translation = -1.0 * rotateAndScale(inverse, helmert.translation);
    return inverse;
}

Helmert roundForWriting(const Helmert& helmert) {
    return {roundTo(helmert.translation, 1e4), roundTo(helmert.rotation, 1e6), roundTo(helmert.scale, 1e6)};
}

std::string writeHelmert(const Helmert& helmert) {
    return writeVector(helmert.translation) + "," + writeVector(helmert.rotation) + "," +
           writeDouble(helmert.scale + 0.0);
}

}  // namespace ProjDir
