#include "tools/projdir/AxisOrder.h"

#include <cmath>

#include <gtest/gtest.h>

#include "tools/projdir/Registry.h"

namespace ProjDir {
namespace {

struct RegistryAxisOrder {
    unsigned int code;
    bool isNorthFirst;
    const char* directions;
};

void PrintTo(const RegistryAxisOrder& row, std::ostream* stream) { *stream << row.code; }

class RegistryAxisOrderTest : public testing::TestWithParam<RegistryAxisOrder> {};

TEST_P(RegistryAxisOrderTest, IsTheRegistrys) {
    const ProjContext context;
    const ProjPtr<PJ> crs = createCrs(context, GetParam().code);
    EXPECT_EQ(isNorthAxisFirst(context, crs.get()), GetParam().isNorthFirst);
    EXPECT_EQ(writeAxisDirections(context, crs.get()), GetParam().directions);
}

// What PROJ's operations do with coordinates, whatever the names of axes.
bool exchangesCoordinates(const ProjContext& context, unsigned int code, const PJ_COORD& place) {
    const std::string name = "EPSG:" + std::to_string(code);
    const ProjPtr<PJ> plain(proj_create_crs_to_crs(context.get(), "EPSG:4326", name.c_str(), nullptr));
    const ProjPtr<PJ> normalised(proj_normalize_for_visualization(context.get(), plain.get()));
    const PJ_COORD first = proj_trans(plain.get(), PJ_FWD, place);
    const PJ_COORD second = proj_trans(normalised.get(), PJ_FWD, proj_coord(place.xy.y, place.xy.x, 0, HUGE_VAL));
    EXPECT_TRUE(std::fabs(first.xy.x - second.xy.x) < 1e-6 || std::fabs(first.xy.x - second.xy.y) < 1e-6) << code;
    return std::fabs(first.xy.x - second.xy.x) > 1e-6;
}

TEST(AxisOrderOfOperationsTest, IsTheSame) {
    const ProjContext context;
    const struct {
        unsigned int code;
        double latitude, longitude;
    } rows[] = {{25832, 50, 8},  {31467, 50, 8},  {27700, 52, -1}, {2053, -28, 28.5}, {5513, 50, 15},
                {32661, 80, 30}, {3031, -75, 40}, {2180, 52, 20},  {3035, 50, 15},    {27572, 46, 3}};
    for (const auto& row : rows)
        EXPECT_EQ(isNorthAxisFirst(context, createCrs(context, row.code).get()),
                  exchangesCoordinates(context, row.code, proj_coord(row.latitude, row.longitude, 0, HUGE_VAL)))
            << row.code;
}

INSTANTIATE_TEST_SUITE_P(
    Crs, RegistryAxisOrderTest,
    testing::Values(RegistryAxisOrder{4326, true, ""}, RegistryAxisOrder{25832, false, ""},
                    RegistryAxisOrder{31467, true, ""}, RegistryAxisOrder{27700, false, ""},
                    // Northing first, both axes pointing south; easting first, both pointing north.
                    RegistryAxisOrder{32661, true, ""}, RegistryAxisOrder{3031, false, ""},
                    // Westing and southing; southing and westing.
                    RegistryAxisOrder{2053, false, "+axis=wsu"}, RegistryAxisOrder{5513, false, "+axis=swu"},
                    RegistryAxisOrder{8044, false, "+axis=swu"},
                    // Longitude first; three axes; geocentric.
                    RegistryAxisOrder{7035, false, ""}, RegistryAxisOrder{4979, true, ""},
                    RegistryAxisOrder{4978, false, ""}));

}  // namespace
}  // namespace ProjDir
