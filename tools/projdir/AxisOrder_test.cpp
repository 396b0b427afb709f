#include "tools/projdir/AxisOrder.h"

#include <cmath>
#include <gtest/gtest.h>

#include "tools/projdir/Registry.h"

namespace ProjDir {
namespace {

struct Order {
    unsigned int code;
    bool isNorthFirst;
    const char* directions;
};

void PrintTo(const Order& row, std::ostream* stream) { *stream << row.code; }

class AxisOrderTest : public testing::TestWithParam<Order> {};

TEST_P(AxisOrderTest, IsTheRegistrys) {
    const ProjContext context;
    const PjPtr crs = openCrs(context, GetParam().code);
    EXPECT_EQ(comesNorthFirst(context, crs.get()), GetParam().isNorthFirst);
    EXPECT_EQ(writeAxisDirections(context, crs.get()), GetParam().directions);
}

// What PROJ's operations do with coordinates, whatever the names of axes.
bool exchangesCoordinates(const ProjContext& context, unsigned int code, const PJ_COORD& place) {
    const std::string name = "EPSG:" + std::to_string(code);
    const PjPtr plain(proj_create_crs_to_crs(context.get(), "EPSG:4326", name.c_str(), nullptr));
    const PjPtr shown(proj_normalize_for_visualization(context.get(), plain.get()));
    const PJ_COORD first = proj_trans(plain.get(), PJ_FWD, place);
    const PJ_COORD second = proj_trans(shown.get(), PJ_FWD, proj_coord(place.xy.y, place.xy.x, 0, HUGE_VAL));
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
        EXPECT_EQ(comesNorthFirst(context, openCrs(context, row.code).get()),
                  exchangesCoordinates(context, row.code, proj_coord(row.latitude, row.longitude, 0, HUGE_VAL)))
            << row.code;
}

INSTANTIATE_TEST_SUITE_P(
    Crs, AxisOrderTest,
    testing::Values(Order{4326, true, ""}, Order{25832, false, ""}, Order{31467, true, ""}, Order{27700, false, ""},
                    // Northing first, both axes pointing south; easting first, both pointing north.
                    Order{32661, true, ""}, Order{3031, false, ""},
                    // Westing and southing; southing and westing.
                    Order{2053, false, "+axis=wsu"}, Order{5513, false, "+axis=swu"}, Order{8044, false, "+axis=swu"},
                    // Longitude first; three axes; geocentric.
                    Order{7035, false, ""}, Order{4979, true, ""}, Order{4978, false, ""}));

}  // namespace
}  // namespace ProjDir
