// Boxes through the program, as lines and as arguments.

#include <ostream>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/CrsctlProgram.h"

namespace crsctl {
namespace {

// 9 degrees east is the central meridian.
std::vector<std::string> boundsToUtm(const std::vector<std::string>& more) {
    std::vector<std::string> arguments = {"transform", "--from", "EPSG:4326", "--to", "EPSG:25832", "--bounds"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return arguments;
}

struct BoundsCase {
    std::vector<std::string> arguments;
    std::string input;
    const char* output;
    int exitCode;
};

void PrintTo(const BoundsCase& bounds, std::ostream* stream) {
    for (const std::string& argument : bounds.arguments) *stream << argument << " ";
}

class TheBoundsOfABox : public testing::TestWithParam<BoundsCase> {};

TEST_P(TheBoundsOfABox, AreTransformed) {
    const Outcome outcome = run(boundsToUtm(GetParam().arguments), GetParam().input);
    EXPECT_EQ(outcome.output, GetParam().output);
    EXPECT_EQ(outcome.exitCode, GetParam().exitCode) << outcome.errors;
}

INSTANTIATE_TEST_SUITE_P(
    Commands, TheBoundsOfABox,
    testing::Values(
        BoundsCase{{}, "50 9 51 9 A\n", "500000.000 5538630.703 500000.000 5649824.888 A\n", 0},
        BoundsCase{{"50", "9", "51", "9"}, "", "500000.000 5538630.703 500000.000 5649824.888\n", 0},
        BoundsCase{{"50", "9", "50", "9", "51", "9", "51", "9"},
                   "",
                   "500000.000 5538630.703 500000.000 5538630.703\n500000.000 5649824.888 500000.000 5649824.888\n",
                   0},
        BoundsCase{{"-.5", "9", "-0", "9"}, "", "500000.000 -55265.037 500000.000 0.000\n", 0},
        BoundsCase{{"--output", "csv", "50", "9", "51", "9"}, "", "500000.000,5538630.703,500000.000,5649824.888\n", 0},
        BoundsCase{{"--json", "--decimals", "0", "50", "9", "51", "9"},
                   "",
                   "{\"minx\":500000,\"miny\":5538631,\"maxx\":500000,\"maxy\":5649825}\n",
                   0},
        BoundsCase{{"--header", "--columns", "id,miny,minx,maxy,maxx", "--output", "csv"},
                   "no;w;s;e;n\nA;9;50;9;51\n",
                   "no,miny,minx,maxy,maxx\nA,5538630.703,500000.000,5649824.888,500000.000\n",
                   0},
        BoundsCase{{"--inverse", "500000", "5538630.703", "500000", "5538630.703"},
                   "",
                   "50.00000000 9.00000000 50.00000000 9.00000000\n",
                   0},
        BoundsCase{{}, "95 9 99 9 A\n50 9 50 9 B\n", "* * * * A\n500000.000 5538630.703 500000.000 5538630.703 B\n", 1},
        BoundsCase{{"--errors", "stop", "95", "9", "99", "9"}, "", "", 1}, BoundsCase{{"/no/such/file"}, "", "", 2}));

TEST(TheBoundsOfABox, ThatFailsAreReportedWithTheMessageOfTheLibrary) {
    const Outcome outcome = run(boundsToUtm({"95", "6", "99", "15"}));
    EXPECT_THAT(
        outcome.errors,
        testing::StartsWith("crsctl transform: --bounds:1: BoundingBox: out of bounds! No point of 95, 6, 99, 15 "
                            "can be transformed: 95 6 99 15\ncrsctl transform: 1 line: 0 transformed, 1 refused, "));
}

TEST(TheBoundsOfABox, HaveFourNumbers) {
    const Outcome outcome = run(boundsToUtm({"50", "9", "51", "9", "52"}));
    EXPECT_EQ(outcome.exitCode, 2);
    EXPECT_EQ(outcome.errors, "crsctl transform: --bounds: a box has four numbers\n");
}

}  // namespace
}  // namespace crsctl
