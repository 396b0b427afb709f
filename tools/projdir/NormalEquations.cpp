#include "tools/projdir/NormalEquations.h"

#include <algorithm>
#include <cmath>

namespace ProjDir {
namespace {

constexpr std::size_t SIZE = NormalEquations::SIZE;
using Coefficients = NormalEquations::Coefficients;
using Matrix = std::array<Coefficients, SIZE>;

Matrix identity() {
    Matrix matrix{};
    for (std::size_t i = 0; i < SIZE; ++i) matrix[i][i] = 1;
    return matrix;
}

void rotate(double& first, double& second, double sine, double cosine) {
    const double kept = first;
    first = cosine * kept - sine * second;
    second = sine * kept + cosine * second;
}

// One step of Jacobi's method: the rotation in the plane (p, q) that makes element (p, q) zero.
void eliminate(Matrix& matrix, Matrix& vectors, std::size_t p, std::size_t q) {
    if (matrix[p][q] == 0) return;
    const double theta = (matrix[q][q] - matrix[p][p]) / (2 * matrix[p][q]);
    const double tangent = (theta < 0 ? -1 : 1) / (std::fabs(theta) + std::sqrt(theta * theta + 1));
    const double cosine = 1 / std::sqrt(tangent * tangent + 1);
    const double sine = tangent * cosine;
    for (std::size_t i = 0; i < SIZE; ++i) rotate(matrix[i][p], matrix[i][q], sine, cosine);
    for (std::size_t i = 0; i < SIZE; ++i) rotate(matrix[p][i], matrix[q][i], sine, cosine);
    for (std::size_t i = 0; i < SIZE; ++i) rotate(vectors[i][p], vectors[i][q], sine, cosine);
}

// Leaves the eigenvalues on the diagonal of `matrix`; returns the eigenvectors as columns. The method doubles
// the digits with every round, so this many are always enough for seven unknowns.
Matrix diagonalise(Matrix& matrix) {
    constexpr int ROUNDS = 30;
    Matrix vectors = identity();
    for (int round = 0; round < ROUNDS; ++round)
        for (std::size_t p = 0; p < SIZE; ++p)
            for (std::size_t q = p + 1; q < SIZE; ++q) eliminate(matrix, vectors, p, q);
    return vectors;
}

double dotColumn(const Matrix& vectors, std::size_t column, const Coefficients& row) {
    double sum = 0;
    for (std::size_t i = 0; i < SIZE; ++i) sum += vectors[i][column] * row[i];
    return sum;
}

double largestOnDiagonal(const Matrix& matrix) {
    double largest = 0;
    for (std::size_t i = 0; i < SIZE; ++i) largest = std::max(largest, matrix[i][i]);
    return largest;
}

}  // namespace

void NormalEquations::addEquation(const Coefficients& coefficients, double value, double weight) {
    for (std::size_t i = 0; i < SIZE; ++i) {
        for (std::size_t j = 0; j < SIZE; ++j) matrix[i][j] += weight * coefficients[i] * coefficients[j];
        rightSide[i] += weight * coefficients[i] * value;
    }
}

NormalEquations::Unknowns NormalEquations::solve(double cutOff) const {
    Matrix values = matrix;
    const Matrix vectors = diagonalise(values);
    const double least = cutOff * largestOnDiagonal(values);
    Unknowns solution{};
    for (std::size_t k = 0; k < SIZE; ++k) {
        if (values[k][k] <= least) continue;
        const double amount = dotColumn(vectors, k, rightSide) / values[k][k];
        for (std::size_t i = 0; i < SIZE; ++i) solution[i] += amount * vectors[i][k];
    }
    return solution;
}

}  // namespace ProjDir
