#include "tools/crsctl/points/CrsPair.h"

#include <ostream>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/CrsctlSession.h"
#include "tools/crsctl/start/Failures.h"

namespace crsctl {
namespace {

using testing::Each;
using testing::ElementsAre;

constexpr char CONFIGURED_DECIMALS[] =
    "<CrsConfiguration>"
    "<CRS>4326</CRS><CRS numberOfDecimalPlaces='5'>4258</CRS><CRS>CRS:84</CRS><CRS "
    "numberOfDecimalPlaces='1'>25832</CRS>"
    "<CRS mapToEpsgCode='25832' numberOfDecimalPlaces='2'>UTM32</CRS><CRS mapToEpsgCode='25832'>PLAIN32</CRS>"
    "<CRS mapToEpsgCode='25833' numberOfDecimalPlaces='4'>UTM33</CRS>"
    "<CRS numberOfDecimalPlaces='-2'>25831</CRS><CRS numberOfDecimalPlaces='99'>25830</CRS>"
    "</CrsConfiguration>";

struct DecimalsCase {
    const char* target;
    int horizontal;
    int height;
};

void PrintTo(const DecimalsCase& decimals, std::ostream* stream) { *stream << decimals.target; }

class TheDecimals : public testing::TestWithParam<DecimalsCase> {};

TEST_P(TheDecimals, AreThoseOfTheEntryThatFitsBest) {
    const ConfiguredSession session(CONFIGURED_DECIMALS);
    const CrsPair pair(*session, "4326", GetParam().target);
    const int horizontal = GetParam().horizontal;
    const Decimals ofPoints = pair.decimals(Shape::POINT);
    EXPECT_THAT(std::vector<int>(ofPoints.begin(), ofPoints.begin() + 3),
                ElementsAre(horizontal, horizontal, GetParam().height));
    EXPECT_THAT(pair.decimals(Shape::BOX), Each(horizontal));
}

INSTANTIATE_TEST_SUITE_P(Targets, TheDecimals,
                         testing::Values(DecimalsCase{"4326", 8, 3}, DecimalsCase{"CRS:84", 8, 3},
                                         DecimalsCase{"4258", 5, 3}, DecimalsCase{"EPSG:25832", 1, 1},
                                         DecimalsCase{"UTM32", 2, 2}, DecimalsCase{"PLAIN32", 3, 3},
                                         DecimalsCase{"urn:ogc:def:crs:EPSG::25832", 1, 1},
                                         DecimalsCase{"epsg.xml#25832", 1, 1}, DecimalsCase{"25833", 4, 4},
                                         DecimalsCase{"25831", 3, 3}, DecimalsCase{"25830", 3, 3}));

TEST(ARefusedPoint, HasTheReasonOfTheLibrary) {
    const ConfiguredSession session(CONFIGURED_DECIMALS);
    const CrsPair pair(*session, "4326", "UTM32");
    for (const std::size_t count : {2U, 3U}) {
        const CoordinateLine noSuchLatitude{{95, 9, 0, 0}, {}, count, ' '};
        EXPECT_EQ(pair.refusalOf(noSuchLatitude), "Invalid coordinate");
        const CoordinateLine accepted{{50, 9, 0, 0}, {}, count, ' '};
        EXPECT_EQ(pair.refusalOf(accepted), "the result is not finite");
    }
}

TEST(ARefusedCrs, EndsTheTransformationWithTheServersWords) {
    const ConfiguredSession session(CONFIGURED_DECIMALS);
    try {
        const CrsPair pair(*session, "CRS:84", "EPSG:3857");
        FAIL() << "3857 is not offered";
    } catch (const InputRefused& refused) {
        EXPECT_STREQ(refused.what(),
                     "EPSG:3857: qvCrsUnavailable: The requested CRS EPSG:3857 is not set up in the configuration "
                     "(known, but not offered)");
    }
}

}  // namespace
}  // namespace crsctl
