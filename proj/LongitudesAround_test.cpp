#include "proj/LongitudesAround.h"

#include <ostream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace CoordinateTransformation {
namespace {

struct Ring {
    const char* name;
    std::vector<double> longitudes;
    double western;
    double eastern;
};

void PrintTo(const Ring& ring, std::ostream* stream) { *stream << ring.name; }

const Ring RINGS[] = {
    {"OneLongitude", {7}, 7, 7},
    {"Box", {5, 5, 8, 8}, 5, 8},
    {"BoxFromTheEast", {8, 8, 5, 5}, 5, 8},
    {"AcrossTheAntimeridian", {178, 178, -178, -178}, 178, -178},
    {"AcrossFromTheEast", {-178, -178, 178, 178}, 178, -178},
    {"ThereAndBackAcross", {170, 175, -175, -170, -175, 175}, 170, -170},
    {"WideBox", {-100, 0, 90, 0}, -100, 90},
    {"AroundAPoleToTheEast", {-150, -60, 30, 120}, -180, 180},
    {"AroundAPoleToTheWest", {120, 30, -60, -150}, -180, 180},
    {"WholeEarth", {-180, -60, 60, 180, 180, 60, -60, -180}, -180, 180},
    {"StepsOfTwoHundredDegrees", {-100, 100}, -100, 100},
    {"StepsOfTwoHundredAndForty", {120, -120}, 120, -120},
    {"OnTheAntimeridian", {180, -180, 180}, 180, 180},
};

class LongitudesAroundTest : public testing::TestWithParam<Ring> {};

INSTANTIATE_TEST_SUITE_P(Rings, LongitudesAroundTest, testing::ValuesIn(RINGS),
                         [](const auto& ring) { return std::string(ring.param.name); });

TEST_P(LongitudesAroundTest, AreFromTheWesternmostToTheEasternmost) {
    for (const double degree : {1.0, 0.25}) {
        LongitudesAround around(degree);
        for (const double longitude : GetParam().longitudes) around.add(longitude * degree);
        const Range range = around.close();
        EXPECT_EQ(range.least, GetParam().western * degree);
        EXPECT_EQ(range.greatest, GetParam().eastern * degree);
    }
}

TEST(NoLongitudesAroundTest, AreEmpty) { EXPECT_TRUE(LongitudesAround(1).close().isEmpty()); }

}  // namespace
}  // namespace CoordinateTransformation
