#include "tools/projdir/ShiftCandidates.h"

#include <algorithm>
#include <cmath>

#include <gtest/gtest.h>

#include "tools/projdir/Registry.h"

namespace ProjDir {
namespace {

struct Text {
    const char* name;
    std::string operation;
    // "+towgs84" of it; empty for none.
    std::string shift;
};

void PrintTo(const Text& row, std::ostream* stream) { *stream << row.name; }

class ReadShiftTest : public testing::TestWithParam<Text> {};

TEST_P(ReadShiftTest, ReadsWhatMovesTheDatum) {
    const std::optional<Helmert> shift = readShift(GetParam().operation);
    EXPECT_EQ(shift ? writeHelmert(*shift) : "", GetParam().shift);
}

constexpr char FROM[] =
    "+proj=pipeline +step +proj=axisswap +order=2,1 +step +proj=unitconvert +xy_in=deg +xy_out=rad ";
constexpr char TO[] = " +step +inv +proj=cart +ellps=WGS84 +step +proj=pop +v_3 +step +proj=axisswap +order=2,1";

INSTANTIATE_TEST_SUITE_P(
    Operations, ReadShiftTest,
    testing::Values(
        Text{"Null", "+proj=noop", "0,0,0,0,0,0,0"},
        Text{"Translation", std::string(FROM) + "+step +proj=helmert +x=-87 +y=-98 +z=-121" + TO,
             "-87,-98,-121,0,0,0,0"},
        Text{"PositionVector",
             std::string(FROM) +
                 "+step +proj=helmert +x=1 +y=2 +z=3 +rx=0.4 +ry=0.5 +rz=-0.6 +s=7 "
                 "+convention=position_vector" +
                 TO,
             "1,2,3,0.4,0.5,-0.6,7"},
        Text{"CoordinateFrame",
             std::string(FROM) +
                 "+step +proj=helmert +x=1 +y=2 +z=3 +rx=0.4 +ry=0.5 +rz=-0.6 +s=7 "
                 "+convention=coordinate_frame" +
                 TO,
             "1,2,3,-0.4,-0.5,0.6,7"},
        Text{"TurnedRound", std::string(FROM) + "+step +inv +proj=helmert +x=1 +y=2 +z=3" + TO, "-1,-2,-3,0,0,0,0"},
        Text{"OverAnotherDatum",
             std::string(FROM) + "+step +proj=helmert +x=1 +y=2 +z=3 +step +proj=helmert +x=10" + TO, "11,2,3,0,0,0,0"},
        Text{"BehindAProjection",
             "+proj=pipeline +step +inv +proj=tmerc +x_0=500000 +ellps=intl +step +proj=helmert +x=5", "5,0,0,0,0,0,0"},
        Text{"RatesOfChange", std::string(FROM) + "+step +proj=helmert +x=1 +dx=0.1 +t_epoch=2010" + TO,
             "1,0,0,0,0,0,0"},
        Text{"Grid", std::string(FROM) + "+step +proj=hgridshift +grids=a.gsb", ""},
        Text{"GridAndTranslation", std::string(FROM) + "+step +proj=hgridshift +grids=a.gsb +step +proj=helmert +x=1",
             ""},
        Text{"GeographicOffset", std::string(FROM) + "+step +proj=geogoffset +dlat=-5.86 +dlon=0.28", ""}),
    [](const auto& row) { return std::string(row.param.name); });

// The worked example of IOGP Guidance Note 7-2, La Canoa to REGVEN, which gives centimetres.
TEST(ShiftCandidatesTest, MovesThePivotOfMolodenskyBadekas) {
    const std::optional<Helmert> shift = readShift(
        "+proj=molobadekas +convention=coordinate_frame +x=-270.933 +y=115.599 +z=-360.226 +rx=-5.266 +ry=-1.238 "
        "+rz=2.381 +s=-5.109 +px=2464351.59 +py=-5783466.61 +pz=974809.81");
    ASSERT_TRUE(shift);
    const Vector moved = shift->apply({2550408.96, -5749912.26, 1054891.11});
    EXPECT_NEAR(moved.x(), 2550138.45, 0.01);
    EXPECT_NEAR(moved.y(), -5749799.87, 0.01);
    EXPECT_NEAR(moved.z(), 1054530.82, 0.01);
}

// An operation without an area of use: its centre is on the equator and the meridian of Greenwich.
TEST(ShiftCandidatesTest, LeadsTheCentreToWhereAnExactRotationLeadsIt) {
    const ProjContext context;
    const std::string text = "+proj=helmert +exact +convention=position_vector +x=10 +y=20 +z=30 +rz=1000";
    const ProjPtr<PJ> operation(proj_create(context.get(), text.c_str()));
    const std::optional<Helmert> shift = findShift(context, operation.get(), text);
    ASSERT_TRUE(shift);
    const double angle = 1000 * RADIANS_PER_ARC_SECOND;
    const double radius = WGS_84_ELLIPSOID.semiMajor;
    const Vector moved = shift->apply({radius, 0, 0});
    EXPECT_NEAR(moved.x(), 10 + radius * std::cos(angle), 1e-4);
    EXPECT_NEAR(moved.y(), 20 + radius * std::sin(angle), 1e-4);
    EXPECT_NEAR(moved.z(), 30, 1e-6);
    EXPECT_EQ(shift->rotation.z(), 1000);
    const std::string smallAngles = "+proj=helmert +convention=position_vector +x=10 +y=20 +z=30 +rz=1000";
    EXPECT_EQ(writeHelmert(*findShift(context, operation.get(), smallAngles)), "10,20,30,0,0,1000,0");
    EXPECT_FALSE(findShift(context, operation.get(), "+proj=hgridshift +grids=a.gsb"));
}

TEST(ShiftCandidatesTest, KnowsASingleGridShift) {
    EXPECT_TRUE(isGridShift("+proj=pipeline +step +inv +proj=utm +zone=32 +step +proj=hgridshift +grids=a.gsb"));
    EXPECT_FALSE(isGridShift("+proj=pipeline +step +inv +proj=hgridshift +grids=a.gsb"));
    EXPECT_FALSE(isGridShift("+proj=pipeline +step +proj=hgridshift +grids=a.gsb +step +proj=helmert +x=1"));
    EXPECT_FALSE(isGridShift("+proj=noop"));
}

std::vector<PublishedShift> publishedFor(unsigned int code) {
    const ProjContext context;
    return findPublishedShifts(context, createCrs(context, code).get());
}

const PublishedShift* findSource(const std::vector<PublishedShift>& shifts, const std::string& source) {
    const auto found = std::find_if(shifts.begin(), shifts.end(), [&](const auto& s) { return s.source == source; });
    return found == shifts.end() ? nullptr : &*found;
}

// Parameters as the EPSG dataset publishes them.
TEST(ShiftCandidatesTest, FindsWhatTheRegistryPublishes) {
    const auto shifts = publishedFor(4277);
    const PublishedShift* const petroleum = findSource(shifts, "EPSG:1314");
    ASSERT_NE(petroleum, nullptr);
    EXPECT_EQ(writeHelmert(petroleum->helmert), "446.448,-125.157,542.06,0.15,0.247,0.842,-20.489");
    const PublishedShift* const mean = findSource(shifts, "EPSG:1195");
    ASSERT_NE(mean, nullptr);
    EXPECT_EQ(writeHelmert(mean->helmert), "375,-111,431,0,0,0,0");
}

TEST(ShiftCandidatesTest, FindsShiftsOfRegionsAsWell) { EXPECT_GT(publishedFor(4230).size(), 20U); }

TEST(ShiftCandidatesTest, NamesEveryTransformationOfAWay) {
    const auto shifts = publishedFor(4805);  // MGI (Ferro): a longitude rotation comes first
    EXPECT_NE(findSource(shifts, "EPSG:3895 + EPSG:1618"), nullptr);
}

TEST(ShiftCandidatesTest, TakesNoBallparkForPublished) { EXPECT_TRUE(publishedFor(4610).empty()); }  // Xian 1980

}  // namespace
}  // namespace ProjDir
