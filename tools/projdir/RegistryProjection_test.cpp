#include "tools/projdir/RegistryProjection.h"

#include <gtest/gtest.h>

#include "tools/projdir/Registry.h"

namespace ProjDir {
namespace {

struct RegistryPoint {
    unsigned int code;
    Coordinates coordinates;
    LonLat place;
    double tolerance;
};

void PrintTo(const RegistryPoint& row, std::ostream* stream) { *stream << row.code; }

class RegistryProjectionTest : public testing::TestWithParam<RegistryPoint> {};

TEST_P(RegistryProjectionTest, LeadsToTheDatumsOwnCoordinates) {
    const ProjContext context;
    const RegistryProjection projection(context, createCrs(context, GetParam().code).get());
    const LonLat place = projection.toGeodetic(GetParam().coordinates);
    EXPECT_NEAR(place.longitude, GetParam().place.longitude, GetParam().tolerance);
    EXPECT_NEAR(place.latitude, GetParam().place.latitude, GetParam().tolerance);
}

TEST_P(RegistryProjectionTest, LeadsBack) {
    const ProjContext context;
    const RegistryProjection projection(context, createCrs(context, GetParam().code).get());
    const Coordinates coordinates = projection.fromGeodetic(projection.toGeodetic(GetParam().coordinates));
    EXPECT_NEAR(coordinates[0], GetParam().coordinates[0], 1e-6);
    EXPECT_NEAR(coordinates[1], GetParam().coordinates[1], 1e-6);
}

// UTM's own origin; the worked example of Transverse Mercator in IOGP Guidance Note 7-2 (27700); latitude and
// longitude as they stand; 50 grads of latitude and none of longitude at the meridian of Paris.
INSTANTIATE_TEST_SUITE_P(Crs, RegistryProjectionTest,
                         testing::Values(RegistryPoint{25832, {500000, 0, 0}, {9, 0}, 1e-9},
                                         RegistryPoint{27700, {577274.99, 69740.50, 0}, {0.5, 50.5}, 2e-7},
                                         RegistryPoint{4277, {50.5, 0.5, 0}, {0.5, 50.5}, 1e-12},
                                         RegistryPoint{4807, {50, 0, 0}, {2.33722917, 45}, 1e-8}));

}  // namespace
}  // namespace ProjDir
