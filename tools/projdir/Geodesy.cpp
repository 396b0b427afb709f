#include "tools/projdir/Geodesy.h"

#include <algorithm>
#include <cmath>

#include <Eigen/Eigenvalues>
#include <Eigen/Geometry>

#include "text/NumericText.h"

namespace ProjDir {

using CoordinateTransformation::writeDouble;

namespace {

constexpr double FULL_TURN = 360;
// In degrees.
constexpr double BORDER_MARGIN = 1e-7;

// Rotations and scale are solved for as metres on the ground, so that all unknowns have the same magnitude.
constexpr double EARTH_RADIUS = 6371000;
// With three parameters there is little for heights to settle, and wrong heights would distort the result.
constexpr double HEIGHT_WEIGHT_OF_THREE = 1e-6;
constexpr double HEIGHT_WEIGHT_OF_SEVEN = 1e-4;
// Eigenvalues below this part of the largest one count as zero.
constexpr double CUT_OFF = 1e-6;

double fold(double longitude) {
    if (longitude > FULL_TURN / 2) return longitude - FULL_TURN;
    return longitude < -FULL_TURN / 2 ? longitude + FULL_TURN : longitude;
}

double unfoldedEast(const Area& area) { return area.east < area.west ? area.east + FULL_TURN : area.east; }

// The common width in degrees of longitude when `right` is turned by `turn` degrees. Negative when there is none.
double commonWidth(const Area& left, const Area& right, double turn) {
    return std::min(unfoldedEast(left), unfoldedEast(right) + turn) - std::max(left.west, right.west + turn);
}

constexpr std::array<double, 3> TURNS = {0.0, FULL_TURN, -FULL_TURN};

// The sum turns a negative zero, which would be written with its sign, into zero.
double roundTo(double value, double stepsPerUnit) { return std::round(value * stepsPerUnit) / stepsPerUnit + 0.0; }

Vector roundTo(const Vector& vector, double stepsPerUnit) {
    return vector.unaryExpr([stepsPerUnit](double value) { return roundTo(value, stepsPerUnit); });
}

Vector rotateAndScale(const Helmert& helmert, const Vector& vector) {
    const Vector rotated = vector + RADIANS_PER_ARC_SECOND * helmert.rotation.cross(vector);
    return (1 + helmert.scale / MILLION) * rotated;
}

constexpr int UNKNOWN_COUNT = 7;
using Unknowns = Eigen::Matrix<double, UNKNOWN_COUNT, 1>;

struct NormalEquations {
    Eigen::Matrix<double, UNKNOWN_COUNT, UNKNOWN_COUNT> matrix = decltype(matrix)::Zero();
    Unknowns rightSide = Unknowns::Zero();

    void addEquation(const Unknowns& coefficients, double value, double weight) {
        matrix += weight * coefficients * coefficients.transpose();
        rightSide += weight * value * coefficients;
    }

    // The shortest of the best solutions: directions with a negligible eigenvalue stay zero.
    Unknowns solve() const {
        const Eigen::SelfAdjointEigenSolver<decltype(matrix)> eigen(matrix);
        const double least = CUT_OFF * eigen.eigenvalues().maxCoeff();
        const Unknowns amounts = eigen.eigenvectors().transpose() * rightSide;
        const Unknowns kept =
            (eigen.eigenvalues().array() > least).select(amounts.cwiseQuotient(eigen.eigenvalues()), Unknowns::Zero());
        return eigen.eigenvectors() * kept;
    }
};

// The partial derivatives, along `direction`, of X' = T + (1 + S) X + Q x X with Q = (1 + S) R, which is linear.
Unknowns coefficientsAlong(const ShiftSample& sample, const Vector& direction, FitParameters parameters) {
    Unknowns coefficients = Unknowns::Zero();
    coefficients.head<3>() = direction;
    if (parameters == FitParameters::TRANSLATION) return coefficients;
    coefficients.segment<3>(3) = sample.source.cross(direction) / EARTH_RADIUS;
    coefficients[6] = sample.source.dot(direction) / EARTH_RADIUS;
    return coefficients;
}

void addSample(NormalEquations& equations, const ShiftSample& sample, FitParameters parameters, const Helmert& start) {
    const Vector misclosure = sample.target - start.apply(sample.source);
    const auto add = [&](const Vector& direction, double weight) {
        equations.addEquation(coefficientsAlong(sample, direction, parameters), misclosure.dot(direction), weight);
    };
    add(sample.frame.east, 1);
    add(sample.frame.north, 1);
    add(sample.frame.up, parameters == FitParameters::TRANSLATION ? HEIGHT_WEIGHT_OF_THREE : HEIGHT_WEIGHT_OF_SEVEN);
}

Helmert addSolution(const Helmert& start, const Unknowns& solution) {
    const double startFactor = 1 + start.scale / MILLION;
    const double factor = startFactor + solution[6] / EARTH_RADIUS;
    const Vector correction = solution.segment<3>(3);
    const Vector rotation = startFactor * start.rotation + (1 / (EARTH_RADIUS * RADIANS_PER_ARC_SECOND)) * correction;
    return {start.translation + solution.head<3>(), (1 / factor) * rotation,
            start.scale + solution[6] / EARTH_RADIUS * MILLION};
}

double horizontalDistance(const Helmert& shift, const ShiftSample& sample) {
    const Vector misclosure = sample.target - shift.apply(sample.source);
    return std::hypot(misclosure.dot(sample.frame.east), misclosure.dot(sample.frame.north));
}

}  // namespace

bool isFinite(const LonLat& place) { return std::isfinite(place.longitude) && std::isfinite(place.latitude); }

bool isFinite(const Coordinates& coordinates) {
    return std::all_of(coordinates.begin(), coordinates.end(), [](double value) { return std::isfinite(value); });
}

LonLat foldLongitude(const LonLat& place) { return {fold(place.longitude), place.latitude}; }

bool contains(const Area& area, const LonLat& place) {
    if (place.latitude < area.south - BORDER_MARGIN || place.latitude > area.north + BORDER_MARGIN) return false;
    const bool isEast = place.longitude >= area.west - BORDER_MARGIN;
    const bool isWest = place.longitude <= area.east + BORDER_MARGIN;
    return area.west <= area.east ? isEast && isWest : isEast || isWest;
}

bool overlap(const Area& left, const Area& right) {
    return left.south <= right.north && right.south <= left.north &&
           std::any_of(TURNS.begin(), TURNS.end(), [&](double turn) { return commonWidth(left, right, turn) >= 0; });
}

double commonExtent(const Area& left, const Area& right) {
    const double south = std::max(left.south, right.south);
    const double north = std::min(left.north, right.north);
    if (south >= north) return 0;
    double width = 0;
    for (const double turn : TURNS) width += std::max(0.0, commonWidth(left, right, turn));
    const auto sine = [](double degrees) { return std::sin(degrees * std::acos(-1) / (FULL_TURN / 2)); };
    return width * (sine(north) - sine(south));
}

std::vector<LonLat> sampleArea(const Area& area, int perSide) {
    const auto between = [perSide](double first, double last, int i) {
        return first + (last - first) * i / (perSide - 1);
    };
    std::vector<LonLat> points;
    for (int row = 0; row < perSide; ++row)
        for (int column = 0; column < perSide; ++column)
            points.push_back(
                {fold(between(area.west, unfoldedEast(area), column)), between(area.south, area.north, row)});
    return points;
}

LonLat centreOf(const Area& area) { return sampleArea(area, 3)[4]; }

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
    std::string text;
    for (const Vector& vector : {helmert.translation, helmert.rotation})
        for (const double value : vector) text += writeDouble(value + 0.0) + ",";
    return text + writeDouble(helmert.scale + 0.0);
}

ShiftSample makeShiftSample(const ReferenceEllipsoid& sourceEllipsoid, const LonLat& source, const LonLat& target) {
    return {toGeocentric(sourceEllipsoid, source), toGeocentric(WGS_84_ELLIPSOID, target), localFrameAt(target)};
}

void adoptHeights(std::vector<ShiftSample>& samples, const Helmert& shift) {
    for (ShiftSample& sample : samples) {
        const Vector& up = sample.frame.up;
        sample.target = sample.target + (shift.apply(sample.source) - sample.target).dot(up) * up;
    }
}

Residual measureResidual(const Helmert& shift, const std::vector<ShiftSample>& samples) {
    Residual residual;
    const auto count = static_cast<double>(samples.size());
    double squares = 0;
    for (const ShiftSample& sample : samples) {
        const double distance = horizontalDistance(shift, sample);
        residual.mean += distance / count;
        squares += distance * distance / count;
        residual.largest = std::max(residual.largest, distance);
    }
    residual.rootMeanSquare = std::sqrt(squares);
    return residual;
}

std::size_t countBeyond(const Helmert& shift, const std::vector<ShiftSample>& samples, double metres) {
    return static_cast<std::size_t>(std::count_if(samples.begin(), samples.end(), [&](const ShiftSample& sample) {
        return horizontalDistance(shift, sample) > metres;
    }));
}

Helmert fitHelmert(const std::vector<ShiftSample>& samples, FitParameters parameters, const Helmert& start) {
    NormalEquations equations;
    for (const ShiftSample& sample : samples) addSample(equations, sample, parameters, start);
    return addSolution(start, equations.solve());
}

}  // namespace ProjDir
