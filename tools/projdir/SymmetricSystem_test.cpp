#include "tools/projdir/SymmetricSystem.h"

#include <gtest/gtest.h>

namespace ProjDir {
namespace {

using Row = SymmetricSystem::Row;

// Equations of a full system, made from the known unknowns 1 to 7.
Row makeRow(std::size_t i) {
    Row row{};
    for (std::size_t j = 0; j < row.size(); ++j) row[j] = i == j ? 3.0 : 1.0 / static_cast<double>(1 + i + j);
    return row;
}

double valueOf(const Row& row) {
    double value = 0;
    for (std::size_t j = 0; j < row.size(); ++j) value += row[j] * static_cast<double>(j + 1);
    return value;
}

TEST(SymmetricSystemTest, SolvesAFullSystem) {
    SymmetricSystem system;
    for (std::size_t i = 0; i < 10; ++i) system.addEquation(makeRow(i), valueOf(makeRow(i)), 1);
    const Row solution = system.solve(1e-12);
    for (std::size_t j = 0; j < solution.size(); ++j) EXPECT_NEAR(solution[j], static_cast<double>(j + 1), 1e-9);
}

TEST(SymmetricSystemTest, WeighsEquationsThatContradictEachOther) {
    SymmetricSystem system;
    system.addEquation({1}, 10, 3);
    system.addEquation({1}, 20, 1);
    EXPECT_NEAR(system.solve(1e-9)[0], 12.5, 1e-12);
}

TEST(SymmetricSystemTest, LeavesUnusedUnknownsAtZero) {
    SymmetricSystem system;
    system.addEquation({1, 0, 0}, 5, 1);
    system.addEquation({0, 1, 0}, 6, 1);
    EXPECT_EQ(system.solve(1e-9), (Row{5, 6, 0, 0, 0, 0, 0}));
}

TEST(SymmetricSystemTest, TakesTheShortestOfManySolutions) {
    SymmetricSystem system;
    system.addEquation({1, 1}, 4, 1);
    const Row solution = system.solve(1e-9);
    EXPECT_NEAR(solution[0], 2, 1e-12);
    EXPECT_NEAR(solution[1], 2, 1e-12);
}

TEST(SymmetricSystemTest, IgnoresWhatIsHardlyTold) {
    SymmetricSystem system;
    system.addEquation({1, 0}, 1, 1);
    system.addEquation({0, 1e-4}, 1, 1);
    EXPECT_EQ(system.solve(1e-6)[1], 0);
    EXPECT_NEAR(system.solve(1e-9)[1], 1e4, 1e-3);
}

TEST(SymmetricSystemTest, SolvesNothingWithZeros) { EXPECT_EQ(SymmetricSystem().solve(1e-9), Row{}); }

}  // namespace
}  // namespace ProjDir
