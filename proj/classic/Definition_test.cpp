#include "proj/classic/Definition.h"

#include <cmath>
#include <string>

#include <gtest/gtest.h>

#include "tests/support/GroupingLocale.h"

namespace ClassicProj {
namespace {

using Shift = std::array<double, 7>;

Ellipsoid ellipsoidOf(double semiMajor, double eccentricitySquared) {
    return {semiMajor, semiMajor * std::sqrt(1 - eccentricitySquared), eccentricitySquared};
}

// Computed from the inverse flattenings in the EPSG Geodetic Parameter Dataset: 298.257223563, 298.257222101,
// 299.1528128.
const Ellipsoid WGS_84 = ellipsoidOf(6378137.0, 0.0066943799901413);
const Ellipsoid GRS_80 = ellipsoidOf(6378137.0, 0.0066943800229008);
const Ellipsoid BESSEL = ellipsoidOf(6377397.155, 0.0066743722318021);

Datum datumOf(const std::string& text, const Ellipsoid& ellipsoid) {
    return readDatum(ParameterList(text), ellipsoid, WGS_84);
}

std::string expanded(const std::string& text) {
    ParameterList parameters(text);
    return expandDatum(parameters) ? parameters.toText() : "refused";
}

// proj.org, "Geodetic datums" of PROJ 7.
TEST(NamedDatumTest, HasItsShiftAndEllipsoid) {
    const struct {
        const char* name;
        const char* parameters;
    } datums[] = {
        {"WGS84", " +towgs84=0,0,0 +ellps=WGS84"},
        {"GGRS87", " +towgs84=-199.87,74.79,246.62 +ellps=GRS80"},
        {"NAD83", " +towgs84=0,0,0 +ellps=GRS80"},
        {"NAD27", " +nadgrids=@conus,@alaska,@ntv2_0.gsb,@ntv1_can.dat +ellps=clrk66"},
        {"potsdam", " +nadgrids=@BETA2007.gsb +ellps=bessel"},
        {"carthage", " +towgs84=-263.0,6.0,431.0 +ellps=clrk80ign"},
        {"hermannskogel", " +towgs84=577.326,90.129,463.919,5.137,1.474,5.297,2.4232 +ellps=bessel"},
        {"ire65", " +towgs84=482.530,-130.596,564.557,-1.042,-0.214,-0.631,8.15 +ellps=mod_airy"},
        {"nzgd49", " +towgs84=59.47,-5.04,187.44,0.47,-0.1,1.024,-4.5993 +ellps=intl"},
        {"OSGB36", " +towgs84=446.448,-125.157,542.060,0.1502,0.2470,0.8421,-20.4894 +ellps=airy"},
    };
    for (const auto& [name, parameters] : datums) {
        const std::string datum = std::string("+datum=") + name;
        EXPECT_EQ(expanded(datum), " " + datum + parameters);
    }
}

TEST(NamedDatumTest, GivesWayToTheParametersOfTheDefinition) {
    EXPECT_EQ(expanded("+datum=NAD83 +ellps=bessel"), " +datum=NAD83 +ellps=bessel +towgs84=0,0,0");
    EXPECT_EQ(expanded("+towgs84=1,2,3 +datum=NAD83"), " +towgs84=1,2,3 +datum=NAD83 +ellps=GRS80");
}

TEST(NamedDatumTest, IsRefusedWhenNobodyKnowsIt) {
    for (const char* name : {"nowhere", "wgs84", "WGS84x", "NAD", "=WGS84", ""})
        EXPECT_EQ(expanded(std::string("+datum=") + name), "refused") << name;
}

TEST(NamedDatumTest, IsNotNeeded) { EXPECT_EQ(expanded("+proj=utm"), " +proj=utm"); }

TEST(DatumTest, ReadsUpToSevenShiftParameters) {
    const struct {
        const char* text;
        Shift values;
    } shifts[] = {
        {"598.1,73.7,418.2,0.202,0.045,-2.455,6.7", {598.1, 73.7, 418.2, 0.202, 0.045, -2.455, 6.7}},
        {"674.374,15.056,405.346", {674.374, 15.056, 405.346, 0, 0, 0, 0}},
        {"1", {1, 0, 0, 0, 0, 0, 0}},
        {"1,2", {1, 2, 0, 0, 0, 0, 0}},
        {"1,2,3,4", {1, 2, 3, 4, 0, 0, 0}},
        {"1,,3", {1, 0, 3, 0, 0, 0, 0}},
        {"1,2,3,", {1, 2, 3, 0, 0, 0, 0}},
        {",,,,,,7", {0, 0, 0, 0, 0, 0, 7}},
        {"1,2,3,4,5,6,7,8", {1, 2, 3, 4, 5, 6, 7}},
        {"+1,-2,1e2,.5,5.,-0.25,1E-1", {1, -2, 100, 0.5, 5, -0.25, 0.1}},
        {"1m,x2,--3", {1, 0, 0, 0, 0, 0, 0}},
    };
    for (const auto& [text, values] : shifts) {
        const Datum datum = datumOf(std::string("+towgs84=") + text, BESSEL);
        EXPECT_EQ(datum.toWgs84, values) << text;
        EXPECT_EQ(datum.kind, DatumKind::HELMERT) << text;
    }
}

TEST(DatumTest, IsFiniteWhenAllOfItsShiftIs) {
    for (const char* text : {"nan", "0,inf,0", "1,2,3,4,5,6,-inf", "1e309,0,0", "0,-1e400"})
        EXPECT_FALSE(isFinite(datumOf(std::string("+towgs84=") + text, BESSEL))) << text;
    for (const char* text : {"", "1,2,3", "1e-400", "x2", "1,2,3,4,5,6,7,nan"})
        EXPECT_TRUE(isFinite(datumOf(std::string("+towgs84=") + text, BESSEL))) << text;
    EXPECT_TRUE(isFinite(datumOf("+nadgrids=nan", BESSEL)));
}

TEST(DatumTest, HasTheFirstIdOfItsParameters) {
    EXPECT_EQ(datumOf("+towgs84=1,2,3 +datum_id=EPSG:6314", BESSEL).id, "EPSG:6314");
    EXPECT_EQ(datumOf("+datum_id=EPSG:6314 +datum_id=EPSG:6326", BESSEL).id, "EPSG:6314");
    EXPECT_EQ(datumOf("+datum_id", BESSEL).id, "");
    EXPECT_EQ(datumOf("+datum=potsdam", BESSEL).id, std::nullopt);
}

TEST(DatumTest, ReadsNumbersInAnyLocale) {
    const GroupingLocale locale;
    EXPECT_EQ(datumOf("+towgs84=1234.5,0.25,0", BESSEL).toWgs84, (Shift{1234.5, 0.25, 0, 0, 0, 0, 0}));
}

TEST(DatumTest, IsUnknownWithoutShiftAndGrids) {
    EXPECT_EQ(datumOf("+proj=longlat +ellps=WGS84", WGS_84).kind, DatumKind::UNKNOWN);
}

TEST(DatumTest, IsWgs84WhenNothingShiftsWgs84OrGrs80) {
    for (const char* zeros : {"", "0", "0,0,0", "0,0,0,0,0,0,0", "-0,0.0,0e5"}) {
        const std::string text = std::string("+towgs84=") + zeros;
        EXPECT_EQ(datumOf(text, WGS_84).kind, DatumKind::WGS_84) << zeros;
        EXPECT_EQ(datumOf(text, GRS_80).kind, DatumKind::WGS_84) << zeros;
        EXPECT_EQ(datumOf(text, BESSEL).kind, DatumKind::HELMERT) << zeros;
    }
    EXPECT_EQ(datumOf("+towgs84=0,0,0,0,0,0,0.1", WGS_84).kind, DatumKind::HELMERT);
}

TEST(DatumTest, TakesEllipsoidsForWgs84WithinAToleranceOfTheSquaredEccentricity) {
    const auto kindAt = [](double semiMajor, double eccentricitySquared) {
        return datumOf("+towgs84=0,0,0", ellipsoidOf(semiMajor, eccentricitySquared)).kind;
    };
    EXPECT_EQ(kindAt(6378137.0, 0.006694379990 + 4.9e-11), DatumKind::WGS_84);
    EXPECT_EQ(kindAt(6378137.0, 0.006694379990 - 4.9e-11), DatumKind::WGS_84);
    EXPECT_EQ(kindAt(6378137.0, 0.006694379990 + 5.1e-11), DatumKind::HELMERT);
    EXPECT_EQ(kindAt(6378137.0, 0.006694379990 - 5.1e-11), DatumKind::HELMERT);
    EXPECT_EQ(kindAt(6378137.001, 0.006694379990), DatumKind::HELMERT);
}

TEST(DatumTest, PrefersGridsToAShift) {
    const Datum datum = datumOf("+towgs84=1,2,3 +nadgrids=@a,b", BESSEL);
    EXPECT_EQ(datum.kind, DatumKind::GRIDS);
    EXPECT_EQ(datum.grids, "@a,b");
    EXPECT_EQ(datum.toWgs84, Shift{});
}

TEST(DatumTest, MeetsOthersOnWgs84OnlyThroughGrids) {
    EXPECT_EQ(datumOf("+nadgrids=a", BESSEL).meetingEllipsoid, WGS_84);
    EXPECT_EQ(datumOf("+nadgrids=a", BESSEL).ellipsoid, BESSEL);
    EXPECT_EQ(datumOf("+towgs84=1,2,3", BESSEL).meetingEllipsoid, BESSEL);
    EXPECT_EQ(datumOf("", BESSEL).meetingEllipsoid, BESSEL);
}

struct DatumSide {
    const char* text;
    const Ellipsoid& ellipsoid;
};

struct DatumPair {
    const char* name;
    DatumSide left;
    DatumSide right;
    bool needsNoShift;
};

void PrintTo(const DatumPair& pair, std::ostream* stream) { *stream << pair.name; }

class DatumPairTest : public testing::TestWithParam<DatumPair> {};

TEST_P(DatumPairTest, NeedsAShiftOrNone) {
    const Datum left = datumOf(GetParam().left.text, GetParam().left.ellipsoid);
    const Datum right = datumOf(GetParam().right.text, GetParam().right.ellipsoid);
    EXPECT_EQ(needsNoShift(left, right), GetParam().needsNoShift);
    EXPECT_EQ(needsNoShift(right, left), GetParam().needsNoShift);
}

// Ellipsoids near Bessel's, inside and outside the tolerance.
const Ellipsoid NEARLY_BESSEL = ellipsoidOf(6377397.155, 0.0066743722318021 + 4.9e-11);
const Ellipsoid NOT_BESSEL = ellipsoidOf(6377397.155, 0.0066743722318021 + 5.1e-11);
const Ellipsoid LARGER_BESSEL = ellipsoidOf(6377397.156, 0.0066743722318021);

INSTANTIATE_TEST_SUITE_P(
    All, DatumPairTest,
    testing::Values(
        DatumPair{"BothWithout", {"", WGS_84}, {"", BESSEL}, true},
        DatumPair{"OneWithout", {"", WGS_84}, {"+towgs84=1,2,3", BESSEL}, true},
        DatumPair{"OneWithoutBesideGrids", {"", BESSEL}, {"+nadgrids=a", BESSEL}, true},
        DatumPair{"BothWgs84", {"+towgs84=0,0,0", WGS_84}, {"+towgs84=0,0,0", WGS_84}, true},
        DatumPair{"Wgs84AndGrs80", {"+towgs84=0,0,0", WGS_84}, {"+towgs84=0,0,0", GRS_80}, true},
        DatumPair{"Wgs84AndShift", {"+towgs84=0,0,0", WGS_84}, {"+towgs84=1,2,3", WGS_84}, false},
        DatumPair{"ZeroShiftOfAnotherEllipsoid", {"+towgs84=0,0,0", WGS_84}, {"+towgs84=0,0,0", BESSEL}, false},
        DatumPair{"SameShift", {"+towgs84=1,2,3", BESSEL}, {"+towgs84=1,2,3,0,0,0,0", BESSEL}, true},
        DatumPair{"OtherShift", {"+towgs84=1,2,3", BESSEL}, {"+towgs84=1,2,3.0001", BESSEL}, false},
        DatumPair{"OtherRotation", {"+towgs84=1,2,3,4,5,6,7", BESSEL}, {"+towgs84=1,2,3,4,5,6.5,7", BESSEL}, false},
        DatumPair{"NearlySameEllipsoid", {"+towgs84=1,2,3", BESSEL}, {"+towgs84=1,2,3", NEARLY_BESSEL}, true},
        DatumPair{"OtherEccentricity", {"+towgs84=1,2,3", BESSEL}, {"+towgs84=1,2,3", NOT_BESSEL}, false},
        DatumPair{"OtherSemiMajorAxis", {"+towgs84=1,2,3", BESSEL}, {"+towgs84=1,2,3", LARGER_BESSEL}, false},
        DatumPair{"SameGrids", {"+nadgrids=a,b", BESSEL}, {"+nadgrids=a,b", BESSEL}, true},
        DatumPair{"GridsInAnotherOrder", {"+nadgrids=a,b", BESSEL}, {"+nadgrids=b,a", BESSEL}, false},
        DatumPair{"SameGridsOnAnotherEllipsoid", {"+nadgrids=a", BESSEL}, {"+nadgrids=a", WGS_84}, false},
        DatumPair{"GridsAndWgs84", {"+nadgrids=a", BESSEL}, {"+towgs84=0,0,0", WGS_84}, false},
        DatumPair{"GridsAndShift", {"+nadgrids=a", BESSEL}, {"+towgs84=1,2,3", BESSEL}, false}),
    [](const auto& pair) { return std::string(pair.param.name); });

}  // namespace
}  // namespace ClassicProj
