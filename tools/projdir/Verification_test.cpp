#include "tools/projdir/Verification.h"

#include <cmath>
#include <limits>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/TemporaryDirectory.h"
#include "text/InitFile.h"

namespace ProjDir {
namespace {

using CoordinateTransformation::AXIS_ORDER_FILE;
using CoordinateTransformation::INIT_FILE;
using testing::HasSubstr;

constexpr double NOWHERE = std::numeric_limits<double>::infinity();

// ED50 with three shifts that differ by metres; the last CRS does not name its datum. Zone 32 has an easting that is a
// metre off; 25833 is on a datum of its own.
constexpr char DEFINITIONS[] =
    "<0> +proj=longlat +datum=WGS84 +no_defs <>\n"
    "<4230> +proj=longlat +ellps=intl +towgs84=-87,-98,-121,0,0,0,0 +datum_id=EPSG:6230 +no_defs <>\n"
    "<23030> +proj=utm +zone=30 +ellps=intl +towgs84=-84,-107,-120,0,0,0,0 +datum_id=EPSG:6230 +units=m +no_defs <>\n"
    "<23031> +proj=utm +zone=31 +ellps=intl +towgs84=-131,-100.3,-163.4,-1.244,-0.02,-1.144,9.39 "
    "+datum_id=EPSG:6230 +units=m +no_defs <>\n"
    "<23032> +proj=tmerc +lon_0=9 +k=0.9996 +x_0=500001 +ellps=intl +towgs84=-87,-98,-121,0,0,0,0 "
    "+datum_id=EPSG:6230 +units=m +no_defs <>\n"
    "<23033> +proj=utm +zone=33 +ellps=intl +towgs84=-84,-107,-120,0,0,0,0 +units=m +no_defs <>\n"
    "<25833> +proj=utm +zone=33 +ellps=GRS80 +towgs84=0,0,0 +units=m +no_defs <>\n";
constexpr char AXIS_ORDERS[] = "0;en\n4230;ne\n23030;en\n23031;en\n23032;en\n23033;en\n25833;en\n";

CrsOutcome makeOutcome(unsigned int code, CrsKind kind, const Area& area) {
    CrsOutcome outcome;
    outcome.crs.code = code;
    outcome.crs.kind = kind;
    outcome.crs.geodeticCode = code / 1000 == 25 ? 4258 : 4230;
    outcome.crs.area = area;
    outcome.definition = ClassicDefinition{};
    outcome.definition->text = "+proj=longlat +ellps=intl";
    ProjContext context;
    const RegistryProjection projection(context, createCrs(context, code).get(), "", false);
    for (const LonLat& place : sampleArea(area, 3))
        outcome.checkPoints.push_back({projection.fromGeodetic(place), place, true});
    return outcome;
}

std::vector<CrsOutcome> makeOutcomes() {
    return {makeOutcome(4230, CrsKind::GEOGRAPHIC, {-10, 34, 30, 70}),
            makeOutcome(23030, CrsKind::PROJECTED, {-6, 36, 0, 60}),
            makeOutcome(23031, CrsKind::PROJECTED, {0, 38, 6, 60}),
            makeOutcome(23032, CrsKind::PROJECTED, {6, 36, 12, 60}),
            makeOutcome(23033, CrsKind::PROJECTED, {12, 36, 18, 60}),
            makeOutcome(25833, CrsKind::PROJECTED, {12, 46, 18, 84})};
}

// Made once, as the library accepts one directory in a process.
class DatumConversionsTest : public testing::Test {
protected:
    static Verification verify(const std::vector<CrsOutcome>& outcomes) {
        static const TestSupport::TemporaryDirectory directory;
        directory.write(INIT_FILE, DEFINITIONS);
        directory.write(AXIS_ORDER_FILE, AXIS_ORDERS);
        return verifyDirectory(directory.name(), outcomes, [] {});
    }

    static const Measurement& find(const Verification& verification, unsigned int source, unsigned int target) {
        for (const Conversion& one : verification.conversions)
            if (one.source->crs.code == source && one.target->crs.code == target) return one.measured;
        throw std::out_of_range("no such conversion");
    }

    const std::vector<CrsOutcome> outcomes = makeOutcomes();
};

TEST_F(DatumConversionsTest, ComparesEachProjectedCrsWithItsBaseAndItsNeighbourOnIt) {
    std::vector<std::pair<unsigned int, unsigned int>> pairs;
    for (const Conversion& one : verify(outcomes).conversions)
        pairs.emplace_back(one.source->crs.code, one.target->crs.code);
    EXPECT_THAT(
        pairs, testing::ElementsAre(testing::Pair(23030, 4230), testing::Pair(23031, 4230), testing::Pair(23031, 23030),
                                    testing::Pair(23032, 4230), testing::Pair(23032, 23031), testing::Pair(23033, 4230),
                                    testing::Pair(23033, 23032)));
}

TEST_F(DatumConversionsTest, IsExactOnOneDatumWithDifferentShifts) {
    const Verification verification = verify(outcomes);
    EXPECT_LT(find(verification, 23030, 4230).distance, 1e-6);
    EXPECT_LT(find(verification, 23031, 4230).distance, 1e-6);
    EXPECT_LT(find(verification, 23031, 23030).distance, 1e-6);
}

// The third and the fourth definition differ by 3 m, 9 m and 1 m in the geocentric axes.
TEST_F(DatumConversionsTest, NoticesAShiftWithinADatum) {
    const Verification verification = verify(outcomes);
    EXPECT_NEAR(find(verification, 23033, 4230).distance, 9, 2);
    EXPECT_FALSE(isAccepted(verification));
}

TEST_F(DatumConversionsTest, NoticesAProjectionThatIsElsewhere) {
    EXPECT_NEAR(find(verify(outcomes), 23032, 4230).distance, 1, 0.01);
}

TEST_F(DatumConversionsTest, ReportsACrsThatTheDirectoryLacks) {
    std::vector<CrsOutcome> more = outcomes;
    more.push_back(makeOutcome(25834, CrsKind::PROJECTED, {18, 46, 24, 84}));
    const RoundTrip trip = verify(more).roundTrips.back();
    EXPECT_EQ(trip.throughWgs84.distance, NOWHERE);
    EXPECT_THAT(trip.throughWgs84.failure, HasSubstr("25834"));
    EXPECT_FALSE(isAccepted(trip));
}

TEST_F(DatumConversionsTest, BringsPointsBack) {
    const std::vector<CrsOutcome> some = {outcomes[0], outcomes[1], outcomes[3], outcomes[5]};
    const Verification verification = verify(some);
    for (const RoundTrip& trip : verification.roundTrips) {
        EXPECT_EQ(trip.throughBase.has_value(), trip.outcome->crs.code / 1000 == 23) << trip.outcome->crs.code;
        EXPECT_LT(trip.throughBase.value_or(Measurement{}).distance, 1e-6) << trip.outcome->crs.code;
        EXPECT_LT(trip.throughWgs84.distance, 1e-4) << trip.outcome->crs.code;
    }
}

TEST_F(DatumConversionsTest, NoticesAPointThatDoesNotComeBack) {
    std::vector<CrsOutcome> one = {outcomes[5]};
    one.front().checkPoints.push_back({{NOWHERE, 0, 0}, {}, true});
    EXPECT_FALSE(isAccepted(verify(one).roundTrips.front()));
}

TEST(RoundTripTest, AllowsTheErrorOfSmallAngles) {
    CrsOutcome outcome;
    outcome.definition = ClassicDefinition{};
    EXPECT_TRUE(isAccepted(RoundTrip{&outcome, Measurement{0.001, ""}, {0.001, ""}, 0}));
    EXPECT_FALSE(isAccepted(RoundTrip{&outcome, Measurement{0.0011, ""}, {0, ""}, 0}));
    EXPECT_FALSE(isAccepted(RoundTrip{&outcome, Measurement{0, ""}, {0.0011, ""}, 0}));
    // The square of a rotation of ten arc-seconds, times the radius of the earth.
    outcome.definition->shift.helmert.rotation = {6, 0, 8};
    EXPECT_TRUE(isAccepted(RoundTrip{&outcome, Measurement{0, ""}, {0.0159, ""}, 0}));
    EXPECT_FALSE(isAccepted(RoundTrip{&outcome, Measurement{0, ""}, {0.0161, ""}, 0}));
}

TEST(RoundTripTest, AllowsTheErrorOfPROJsInverse) {
    CrsOutcome outcome;
    outcome.definition = ClassicDefinition{};
    EXPECT_TRUE(isAccepted(RoundTrip{&outcome, Measurement{0.043, ""}, {0.043, ""}, 0.042}));
    EXPECT_FALSE(isAccepted(RoundTrip{&outcome, Measurement{0.0431, ""}, {0, ""}, 0.042}));
    EXPECT_FALSE(isAccepted(RoundTrip{&outcome, Measurement{0, ""}, {0.0431, ""}, 0.042}));
    EXPECT_FALSE(isAccepted(RoundTrip{&outcome, Measurement{0.2, ""}, {0, ""}, 0.2}));
}

TEST(ConversionTest, AllowsTheErrorOfPROJsInverse) {
    const CrsOutcome crs;
    EXPECT_TRUE(isAccepted(Conversion{&crs, &crs, {0.001, ""}, 0}));
    EXPECT_FALSE(isAccepted(Conversion{&crs, &crs, {0.0011, ""}, 0}));
    EXPECT_TRUE(isAccepted(Conversion{&crs, &crs, {0.003, ""}, 0.002}));
    EXPECT_FALSE(isAccepted(Conversion{&crs, &crs, {0.2, ""}, 0.2}));
}

}  // namespace
}  // namespace ProjDir
