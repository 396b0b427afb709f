#include "tools/projdir/HelmertFit.h"

#include <algorithm>
#include <cmath>

#include "tools/projdir/NormalEquations.h"

namespace ProjDir {
namespace {

// Rotations and scale are solved for as metres on the ground, so that all unknowns are of a size.
constexpr double EARTH_RADIUS = 6371000;
// Three parameters have little left open for heights to settle, and would be pulled away by wrong ones.
constexpr double HEIGHT_WEIGHT_OF_THREE = 1e-6;
constexpr double HEIGHT_WEIGHT_OF_SEVEN = 1e-4;
constexpr double CUT_OFF = 1e-6;

// The part of the movement along `direction` that each unknown causes:
//   X' = T + (1 + S) X + Q x X  with  Q = (1 + S) R,  in which everything is linear
NormalEquations::Coefficients coefficientsAlong(const ShiftSample& sample, const Vector& direction,
                                                FitParameters parameters) {
    NormalEquations::Coefficients coefficients{direction.x, direction.y, direction.z};
    if (parameters == FitParameters::TRANSLATION) return coefficients;
    const Vector rotated = cross(sample.source, direction);
    coefficients[3] = rotated.x / EARTH_RADIUS;
    coefficients[4] = rotated.y / EARTH_RADIUS;
    coefficients[5] = rotated.z / EARTH_RADIUS;
    coefficients[6] = dot(sample.source, direction) / EARTH_RADIUS;
    return coefficients;
}

void addSample(NormalEquations& equations, const ShiftSample& sample, FitParameters parameters, const Helmert& start) {
    const Vector misclosure = sample.target - start.apply(sample.source);
    const auto add = [&](const Vector& direction, double weight) {
        equations.addEquation(coefficientsAlong(sample, direction, parameters), dot(misclosure, direction), weight);
    };
    add(sample.frame.east, 1);
    add(sample.frame.north, 1);
    add(sample.frame.up, parameters == FitParameters::TRANSLATION ? HEIGHT_WEIGHT_OF_THREE : HEIGHT_WEIGHT_OF_SEVEN);
}

Helmert addSolution(const Helmert& start, const NormalEquations::Unknowns& solution) {
    const double startFactor = 1 + start.scale / MILLION;
    const double factor = startFactor + solution[6] / EARTH_RADIUS;
    const Vector correction{solution[3], solution[4], solution[5]};
    const Vector rotation = startFactor * start.rotation + (1 / (EARTH_RADIUS * RADIANS_PER_ARC_SECOND)) * correction;
    return {start.translation + Vector{solution[0], solution[1], solution[2]}, (1 / factor) * rotation,
            start.scale + solution[6] / EARTH_RADIUS * MILLION};
}

double horizontalResidual(const Helmert& shift, const ShiftSample& sample) {
    const Vector misclosure = sample.target - shift.apply(sample.source);
    return std::hypot(dot(misclosure, sample.frame.east), dot(misclosure, sample.frame.north));
}

}  // namespace

ShiftSample makeShiftSample(const ReferenceEllipsoid& sourceEllipsoid, const LonLat& source, const LonLat& target) {
    return {toGeocentric(sourceEllipsoid, source), toGeocentric(WGS_84_ELLIPSOID, target), localFrameAt(target)};
}

void adoptHeights(std::vector<ShiftSample>& samples, const Helmert& shift) {
    for (ShiftSample& sample : samples) {
        const Vector& up = sample.frame.up;
        sample.target = sample.target + dot(shift.apply(sample.source) - sample.target, up) * up;
    }
}

Residual measureResidual(const Helmert& shift, const std::vector<ShiftSample>& samples) {
    Residual residual;
    const auto count = static_cast<double>(samples.size());
    double squares = 0;
    for (const ShiftSample& sample : samples) {
        const double distance = horizontalResidual(shift, sample);
        residual.mean += distance / count;
        squares += distance * distance / count;
        residual.largest = std::max(residual.largest, distance);
    }
    residual.rootMeanSquare = std::sqrt(squares);
    return residual;
}

Helmert fitHelmert(const std::vector<ShiftSample>& samples, FitParameters parameters, const Helmert& start) {
    NormalEquations equations;
    for (const ShiftSample& sample : samples) addSample(equations, sample, parameters, start);
    return addSolution(start, equations.solve(CUT_OFF));
}

}  // namespace ProjDir
