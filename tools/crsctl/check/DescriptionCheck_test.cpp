#include "tools/crsctl/check/DescriptionCheck.h"

#include <string>

#include <gtest/gtest.h>

#include "tests/support/CrsctlSession.h"
#include "tests/support/TemporaryFile.h"
#include "tools/crsctl/check/ConfigurationCheck.h"

namespace crsctl {
namespace {

using CoordinateTransformation::CrsDescriptions;

// One on WGS 84, one of 19 m, one far from PROJ in a part, one without a shift.
constexpr char DESCRIPTIONS[] =
    "code,name,kind,area,west,south,east,north,unit,unit_length,datum,datum_id,shift_source,shift_accuracy,"
    "largest_distance,replaced_by\n"
    "4298,Timbalai 1948,geographic,,109.31,0.85,119.61,7.67,degree,0.017,,EPSG:6298,EPSG:1228,19,1.96,\n"
    "4326,WGS 84,geographic,,-180,-90,180,90,degree,0.017,,EPSG:6326,,,0.00,\n"
    "6316,MGI 1901 / Balkans zone 7,projected,,19.5,40.85,22.51,46.19,metre,1,,EPSG:1031,EPSG:3962,1,1626.4,\n"
    "7777,nowhere,projected,,,,,,metre,1,,,,,,\n";

CheckedEntry entryFor(unsigned int code, std::size_t line) {
    CheckedEntry entry;
    entry.place.line = line;
    entry.primary = code;
    return entry;
}

std::string findingsFor(const std::vector<CheckedEntry>& entries, const Expectations& expected = {}) {
    const TemporaryFile file(DESCRIPTIONS);
    std::string list;
    for (const Finding& finding : checkDescriptions(
             entries, CrsDescriptions(file.path()), [](unsigned int code) { return code != 7777; }, expected)) {
        EXPECT_EQ(finding.severity, Severity::WARNING);
        list += std::to_string(finding.place.line) + ": " + finding.text + "\n";
    }
    return list;
}

Expectations expectationsOf(double accuracy, const char* area = nullptr) {
    Expectations expected;
    expected.accuracy = accuracy;
    if (area != nullptr) expected.area = readBox(area);
    return expected;
}

const std::string TIMBALAI = "3: EPSG 4298: the shift to WGS 84 (EPSG:1228) is accurate to 19 m only\n";

TEST(AnEntrysShift, IsExpectedToBeAccurateToTenMetres) {
    EXPECT_EQ(findingsFor({entryFor(4326, 2), entryFor(4298, 3)}), TIMBALAI);
    EXPECT_EQ(findingsFor({entryFor(4298, 3)}, expectationsOf(19)), "");
    EXPECT_EQ(findingsFor({entryFor(4298, 3)}, expectationsOf(18.9)), TIMBALAI);
}

TEST(AnEntrysShift, IsExpectedToBeNearToProj) {
    EXPECT_EQ(findingsFor({entryFor(6316, 2)}),
              "2: EPSG 6316: the shift to WGS 84 leads up to 1626.4 m away from PROJ's best operation in parts of the "
              "area of use\n");
}

TEST(AnEntrysShift, IsExpectedToBeThere) {
    EXPECT_EQ(findingsFor({entryFor(7777, 2)}),
              "2: EPSG 7777: no shift to WGS 84 is known: coordinates are off by up to hundreds of metres in other "
              "CRS\n");
}

TEST(AnEntrysArea, IsExpectedToCoverTheOneThatIsGiven) {
    const Expectations expected = expectationsOf(10, "112,1,119,7");
    EXPECT_EQ(findingsFor({entryFor(4326, 2), entryFor(4298, 3)}, expected), TIMBALAI);
    EXPECT_EQ(findingsFor({entryFor(4298, 4)}, expectationsOf(99, "112,1,120,7")),
              "4: EPSG 4298: the area of use (109.31,0.85,119.61,7.67) does not cover 112,1,120,7\n");
}

TEST(AnEntryThatIsNotDescribed, IsExpectedNothingOf) {
    CheckedEntry withoutCode;
    EXPECT_EQ(findingsFor({withoutCode, entryFor(25832, 2)}, expectationsOf(0, "0,0,1,1")), "");
}

TEST(ADefinition, HasAShiftByItsParameters) {
    for (const char* shifted : {"+proj=longlat +datum=WGS84", "+ellps=intl +towgs84=1,2,3", "+nadgrids=@null"})
        EXPECT_TRUE(hasShiftToWgs84(shifted)) << shifted;
    for (const char* bare : {"", "+proj=longlat +ellps=intl", "+proj=longlat +ellps=intl +datum_id=EPSG:6314"})
        EXPECT_FALSE(hasShiftToWgs84(bare)) << bare;
}

TEST(ACheckedConfiguration, IsHeldToTheDescriptionsOfItsDirectory) {
    Expectations expected;
    expected.area = readBox("6,47,15,55");
    const ConfigurationReport report = checkConfiguration(
        "crs.xml", "<SRSList>\n<SRS>4326</SRS>\n<SRS>EPSG:29873*EPSG:5701</SRS>\n</SRSList>", optionsFor(), expected);
    ASSERT_EQ(report.findings.size(), 2U);
    EXPECT_EQ(report.findings[0].text, "EPSG 29873: the shift to WGS 84 (EPSG:1228) is accurate to 19 m only");
    EXPECT_EQ(report.findings[0].place.line, 3U);
    EXPECT_EQ(report.findings[1].text,
              "EPSG 29873: the area of use (109.31,0.85,119.61,7.67) does not cover 6,47,15,55");
    EXPECT_TRUE(report.starts);
    EXPECT_FALSE(report.hasErrors);
}

}  // namespace
}  // namespace crsctl
