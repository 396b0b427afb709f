#include "tools/projdir/HelmertFit.h"

#include <algorithm>
#include <cmath>

#include <Eigen/Eigenvalues>
#include <Eigen/Geometry>

namespace ProjDir {
namespace {

// Rotations and scale are solved for as metres on the ground, so that all unknowns are of a size.
constexpr double EARTH_RADIUS = 6371000;
// Three parameters have little left open for heights to settle, and would be pulled away by wrong ones.
constexpr double HEIGHT_WEIGHT_OF_THREE = 1e-6;
constexpr double HEIGHT_WEIGHT_OF_SEVEN = 1e-4;
constexpr double CUT_OFF = 1e-6;

constexpr int UNKNOWN_COUNT = 7;
using Unknowns = Eigen::Matrix<double, UNKNOWN_COUNT, 1>;

// The normal equations of a least-squares problem.
struct NormalEquations {
    Eigen::Matrix<double, UNKNOWN_COUNT, UNKNOWN_COUNT> matrix = decltype(matrix)::Zero();
    Unknowns rightSide = Unknowns::Zero();

    void addEquation(const Unknowns& coefficients, double value, double weight) {
        matrix += weight * coefficients * coefficients.transpose();
        rightSide += weight * value * coefficients;
    }

    // The solution of least length among those that fit best. Directions in which the equations say less than the
    // CUT_OFFth part of what they say in the strongest stay zero.
    Unknowns solve() const {
        const Eigen::SelfAdjointEigenSolver<decltype(matrix)> eigen(matrix);
        const double least = CUT_OFF * eigen.eigenvalues().maxCoeff();
        const Unknowns amounts = eigen.eigenvectors().transpose() * rightSide;
        const Unknowns kept =
            (eigen.eigenvalues().array() > least).select(amounts.cwiseQuotient(eigen.eigenvalues()), Unknowns::Zero());
        return eigen.eigenvectors() * kept;
    }
};

// The part of the movement along `direction` that each unknown causes:
//   X' = T + (1 + S) X + Q x X  with  Q = (1 + S) R,  in which everything is linear
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

double horizontalResidual(const Helmert& shift, const ShiftSample& sample) {
    const Vector misclosure = sample.target - shift.apply(sample.source);
    return std::hypot(misclosure.dot(sample.frame.east), misclosure.dot(sample.frame.north));
}

}  // namespace

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
        const double distance = horizontalResidual(shift, sample);
        residual.mean += distance / count;
        squares += distance * distance / count;
        residual.largest = std::max(residual.largest, distance);
    }
    residual.rootMeanSquare = std::sqrt(squares);
    return residual;
}

std::size_t countBeyond(const Helmert& shift, const std::vector<ShiftSample>& samples, double metres) {
    return static_cast<std::size_t>(std::count_if(samples.begin(), samples.end(), [&](const ShiftSample& sample) {
        return horizontalResidual(shift, sample) > metres;
    }));
}

Helmert fitHelmert(const std::vector<ShiftSample>& samples, FitParameters parameters, const Helmert& start) {
    NormalEquations equations;
    for (const ShiftSample& sample : samples) addSample(equations, sample, parameters, start);
    return addSolution(start, equations.solve());
}

}  // namespace ProjDir
