#include "tools/projdir/HelmertFit.h"

#include <algorithm>
#include <cmath>

#include "tools/projdir/SymmetricSystem.h"

namespace ProjDir {

namespace {

constexpr double RADIANS_PER_ARC_SECOND = RADIANS_PER_DEGREE / 3600;
constexpr double MILLION = 1e6;
// Rotations and scale are solved for as metres on the ground, so that all unknowns are of a size.
constexpr double EARTH_RADIUS = 6371000;
// Three parameters have little left open for heights to settle, and would be pulled away by wrong ones.
constexpr double HEIGHT_WEIGHT_OF_THREE = 1e-6;
constexpr double HEIGHT_WEIGHT_OF_SEVEN = 1e-4;
constexpr double CUT_OFF = 1e-6;

// The part of the movement along `direction` that each unknown causes:
//   X' = T + (1 + S) X + Q x X  with  Q = (1 + S) R,  in which everything is linear
SymmetricSystem::Row writeRow(const ShiftSample& sample, const Vector& direction, FitParameters parameters) {
    SymmetricSystem::Row row{direction.x, direction.y, direction.z};
    if (parameters == FitParameters::TRANSLATION) return row;
    const Vector turned = cross(sample.source, direction);
    row[3] = turned.x / EARTH_RADIUS;
    row[4] = turned.y / EARTH_RADIUS;
    row[5] = turned.z / EARTH_RADIUS;
    row[6] = dot(sample.source, direction) / EARTH_RADIUS;
    return row;
}

void addSample(SymmetricSystem& system, const ShiftSample& sample, FitParameters parameters, const Helmert& start) {
    const Vector missing = sample.target - start.apply(sample.source);
    const auto add = [&](const Vector& direction, double weight) {
        system.addEquation(writeRow(sample, direction, parameters), dot(missing, direction), weight);
    };
    add(sample.directions.east, 1);
    add(sample.directions.north, 1);
    add(sample.directions.up,
        parameters == FitParameters::TRANSLATION ? HEIGHT_WEIGHT_OF_THREE : HEIGHT_WEIGHT_OF_SEVEN);
}

Helmert addSolution(const Helmert& start, const SymmetricSystem::Row& solution) {
    const double startFactor = 1 + start.scale / MILLION;
    const double factor = startFactor + solution[6] / EARTH_RADIUS;
    const Vector turned{solution[3], solution[4], solution[5]};
    const Vector rotation = startFactor * start.rotation + (1 / (EARTH_RADIUS * RADIANS_PER_ARC_SECOND)) * turned;
    return {start.translation + Vector{solution[0], solution[1], solution[2]}, (1 / factor) * rotation,
            start.scale + solution[6] / EARTH_RADIUS * MILLION};
}

double missHorizontally(const Helmert& shift, const ShiftSample& sample) {
    const Vector missing = sample.target - shift.apply(sample.source);
    return std::hypot(dot(missing, sample.directions.east), dot(missing, sample.directions.north));
}

}  // namespace

ShiftSample makeShiftSample(const Ellipsoid& sourceEllipsoid, const LonLat& source, const LonLat& target) {
    return {toGeocentric(sourceEllipsoid, source), toGeocentric(WGS_84_ELLIPSOID, target), directionsAt(target)};
}

void takeHeights(std::vector<ShiftSample>& samples, const Helmert& shift) {
    for (ShiftSample& sample : samples) {
        const Vector& up = sample.directions.up;
        sample.target = sample.target + dot(shift.apply(sample.source) - sample.target, up) * up;
    }
}

Residual measureResidual(const Helmert& shift, const std::vector<ShiftSample>& samples) {
    Residual residual;
    const auto count = static_cast<double>(samples.size());
    double squares = 0;
    for (const ShiftSample& sample : samples) {
        const double distance = missHorizontally(shift, sample);
        residual.mean += distance / count;
        squares += distance * distance / count;
        residual.largest = std::max(residual.largest, distance);
    }
    residual.rootMeanSquare = std::sqrt(squares);
    return residual;
}

Helmert fitHelmert(const std::vector<ShiftSample>& samples, FitParameters parameters, const Helmert& start) {
    SymmetricSystem system;
    for (const ShiftSample& sample : samples) addSample(system, sample, parameters, start);
    return addSolution(start, system.solve(CUT_OFF));
}

}  // namespace ProjDir
