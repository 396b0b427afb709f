#include "tools/projdir/NormalEquations.h"

#include <gtest/gtest.h>

namespace ProjDir {
namespace {

using Coefficients = NormalEquations::Coefficients;
using Unknowns = NormalEquations::Unknowns;

// Equations of full rank, made from the known unknowns 1 to 7.
Coefficients makeCoefficients(std::size_t i) {
    Coefficients coefficients{};
    for (std::size_t j = 0; j < coefficients.size(); ++j)
        coefficients[j] = i == j ? 3.0 : 1.0 / static_cast<double>(1 + i + j);
    return coefficients;
}

double valueOf(const Coefficients& coefficients) {
    double value = 0;
    for (std::size_t j = 0; j < coefficients.size(); ++j) value += coefficients[j] * static_cast<double>(j + 1);
    return value;
}

TEST(NormalEquationsTest, SolvesFullEquations) {
    NormalEquations equations;
    for (std::size_t i = 0; i < 10; ++i) equations.addEquation(makeCoefficients(i), valueOf(makeCoefficients(i)), 1);
    const Unknowns solution = equations.solve(1e-12);
    for (std::size_t j = 0; j < solution.size(); ++j) EXPECT_NEAR(solution[j], static_cast<double>(j + 1), 1e-9);
}

TEST(NormalEquationsTest, WeighsEquationsThatContradictEachOther) {
    NormalEquations equations;
    equations.addEquation({1}, 10, 3);
    equations.addEquation({1}, 20, 1);
    EXPECT_NEAR(equations.solve(1e-9)[0], 12.5, 1e-12);
}

TEST(NormalEquationsTest, LeavesUnusedUnknownsAtZero) {
    NormalEquations equations;
    equations.addEquation({1, 0, 0}, 5, 1);
    equations.addEquation({0, 1, 0}, 6, 1);
    EXPECT_EQ(equations.solve(1e-9), (Unknowns{5, 6, 0, 0, 0, 0, 0}));
}

TEST(NormalEquationsTest, TakesTheShortestOfManySolutions) {
    NormalEquations equations;
    equations.addEquation({1, 1}, 4, 1);
    const Unknowns solution = equations.solve(1e-9);
    EXPECT_NEAR(solution[0], 2, 1e-12);
    EXPECT_NEAR(solution[1], 2, 1e-12);
}

TEST(NormalEquationsTest, IgnoresWhatTheEquationsHardlyDetermine) {
    NormalEquations equations;
    equations.addEquation({1, 0}, 1, 1);
    equations.addEquation({0, 1e-4}, 1, 1);
    EXPECT_EQ(equations.solve(1e-6)[1], 0);
    EXPECT_NEAR(equations.solve(1e-9)[1], 1e4, 1e-3);
}

TEST(NormalEquationsTest, SolvesNothingWithZeros) { EXPECT_EQ(NormalEquations().solve(1e-9), Unknowns{}); }

}  // namespace
}  // namespace ProjDir
