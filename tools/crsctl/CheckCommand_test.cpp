#include "tools/crsctl/CheckCommand.h"

#include <ostream>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/CrsctlSession.h"
#include "tests/support/TemporaryDirectory.h"
#include "tests/support/TemporaryFile.h"
#include "tools/common/Text.h"

namespace crsctl {

using CoordinateTransformation::CrsDescriptions;
using testing::HasSubstr;
using Tools::printable;

namespace {

// One on WGS 84, one of 19 m, one far from PROJ in a part, one without a shift.
constexpr char DESCRIPTIONS[] =
    "code,name,kind,area,west,south,east,north,unit,unit_length,datum,datum_id,shift_source,shift_accuracy,"
    "largest_distance,replaced_by\n"
    "4298,Timbalai 1948,geographic,,109.31,0.85,119.61,7.67,degree,0.017,,EPSG:6298,EPSG:1228,19,1.96,\n"
    "4326,WGS 84,geographic,,-180,-90,180,90,degree,0.017,,EPSG:6326,,,0.00,\n"
    "6316,MGI 1901 / Balkans zone 7,projected,,19.5,40.85,22.51,46.19,metre,1,,EPSG:1031,EPSG:3962,1,1626.4,\n"
    "7777,nowhere,projected,,,,,,metre,1,,,,,,\n";

std::string unmetBy(unsigned int code, const Expectations& expected = {}) {
    const TemporaryFile file(DESCRIPTIONS);
    const CrsDescriptions descriptions(file.path());
    std::string list;
    for (const std::string& unmet : unmetExpectations(code != 7777, descriptions.find(code), expected))
        list += unmet + "\n";
    return list;
}

Expectations expectationsOf(double accuracy, const char* area = nullptr) {
    Expectations expected;
    expected.accuracy = accuracy;
    if (area != nullptr) expected.area = readBox(area);
    return expected;
}

const std::string TIMBALAI = "the shift to WGS 84 (EPSG:1228) is accurate only to 19 m\n";

TEST(AnEntrysShift, MustBeAccurateToTenMetres) {
    EXPECT_EQ(unmetBy(4326), "");
    EXPECT_EQ(unmetBy(4298), TIMBALAI);
    EXPECT_EQ(unmetBy(4298, expectationsOf(19)), "");
    EXPECT_EQ(unmetBy(4298, expectationsOf(18.9)), TIMBALAI);
}

TEST(AnEntrysShift, MustBeNearToThatOfProj) {
    EXPECT_EQ(unmetBy(6316),
              "the shift to WGS 84 leads up to 1626.4 m away from PROJ's best operation in parts of the area of use\n");
}

TEST(AnEntrysShift, IsRequired) {
    EXPECT_EQ(unmetBy(7777),
              "no shift to WGS 84 is known: coordinates are off by up to hundreds of metres in other CRS\n");
}

TEST(AnEntrysArea, MustCoverTheRequestedArea) {
    EXPECT_EQ(unmetBy(4326, expectationsOf(10, "112,1,119,7")), "");
    EXPECT_EQ(unmetBy(4298, expectationsOf(10, "112,1,119,7")), TIMBALAI);
    EXPECT_EQ(unmetBy(4298, expectationsOf(99, "112,1,120,7")),
              "the area of use (109.31,0.85,119.61,7.67) does not cover 112,1,120,7\n");
}

TEST(ACrsWithoutADescription, MeetsTheOtherExpectations) {
    EXPECT_EQ(unmetBy(25832, expectationsOf(0, "0,0,1,1")), "");
}

TEST(ADefinition, HasAShiftByItsParameters) {
    for (const char* shifted : {"+proj=longlat +datum=WGS84", "+ellps=intl +towgs84=1,2,3", "+nadgrids=@null"})
        EXPECT_TRUE(hasShiftToWgs84(shifted)) << shifted;
    for (const char* bare : {"", "+proj=longlat +ellps=intl", "+proj=longlat +ellps=intl +datum_id=EPSG:6314"})
        EXPECT_FALSE(hasShiftToWgs84(bare)) << bare;
}

TEST(ACheckedConfiguration, IsComparedWithTheDescriptionsOfItsDirectory) {
    Expectations expected;
    expected.area = readBox("6,47,15,55");
    const ConfigurationReport report = checkConfiguration(
        "crs.xml", "<SRSList>\n<SRS>4326</SRS>\n<SRS>EPSG:29873*EPSG:5701</SRS>\n</SRSList>", optionsFor(), expected);
    ASSERT_EQ(report.findings.size(), 2U);
    EXPECT_EQ(report.findings[0].text, "EPSG 29873: the shift to WGS 84 (EPSG:1228) is accurate only to 19 m");
    EXPECT_EQ(report.findings[0].place.line, 3U);
    EXPECT_EQ(report.findings[1].text,
              "EPSG 29873: the area of use (109.31,0.85,119.61,7.67) does not cover 6,47,15,55");
    EXPECT_TRUE(report.starts());
    EXPECT_EQ(report.count(Severity::ERROR), 0U);
}

ConfigurationReport reportOf(const std::string& fragment) {
    return checkConfiguration("crs.xml", fragment, optionsFor());
}

std::string findingsOf(const ConfigurationReport& report) {
    std::string list;
    for (const Finding& finding : report.findings)
        list += std::string(finding.severity == Severity::ERROR ? "error " : "warning ") +
                std::to_string(finding.place.line) + ": " + finding.text + "\n";
    return list;
}

TEST(AnEntry, IsShownInTheAxisOrderOfItsName) {
    const std::string fragment = "<SRSList><SRS>4326</SRS><SRS mapToEpsgCode='4326'>GEO</SRS></SRSList>";
    CommonOptions options = optionsFor();
    options.properties = {"AxisOrderConvention=established"};
    const Json entries = asJson(checkConfiguration("crs.xml", fragment, options))["entries"];
    EXPECT_EQ(entries[0]["axisOrder"], "longitude, latitude");
    EXPECT_EQ(entries[1]["axisOrder"], "latitude, longitude");
    EXPECT_EQ(findingsOf(checkConfiguration("crs.xml", fragment, options)), "");
}

TEST(AnEntry, IsShownWithItsEffectOnRequests) {
    const ConfigurationReport report = reportOf(
        "<CrsConfiguration>\n"
        "<CRS>4326</CRS>\n"
        "<CRS mapToEpsgCode='EPSG:25832*EPSG:5783' axisOrder='NE' numberOfDecimalPlaces='2' "
        "suppressDuplicatCoordinates='true'>UTM</CRS>\n"
        "</CrsConfiguration>");
    EXPECT_TRUE(report.starts());
    EXPECT_EQ(findingsOf(report), "");
    ASSERT_EQ(report.entries.size(), 2U);
    const Json entries = asJson(report)["entries"];
    EXPECT_EQ(entries[0], Json({{"line", 2},
                                {"element", "CRS"},
                                {"name", "EPSG:4326"},
                                {"identifier", "EPSG:4326"},
                                {"primaryCode", 4326},
                                {"secondaryCode", nullptr},
                                {"axisOrder", "latitude, longitude"},
                                {"decimals", 8},
                                {"decimalsConfigured", false},
                                {"suppressesDuplicates", false}}));
    EXPECT_EQ(entries[1], Json({{"line", 3},
                                {"element", "CRS"},
                                {"name", "UTM"},
                                {"identifier", "EPSG:25832*EPSG:5783"},
                                {"primaryCode", 25832},
                                {"secondaryCode", 5783},
                                {"axisOrder", "northing, easting"},
                                {"decimals", 2},
                                {"decimalsConfigured", true},
                                {"suppressesDuplicates", true}}));
}

TEST(Entries, ComeInTheOrderInWhichAServerTakesThem) {
    const ConfigurationReport report =
        reportOf("<SRSList><SRS>3857</SRS></SRSList><CrsConfiguration><CRS>4326</CRS></CrsConfiguration>");
    ASSERT_EQ(report.entries.size(), 2U);
    EXPECT_EQ(report.entries[0].data.getIdentifier(), "EPSG:4326");
    EXPECT_EQ(report.entries[1].data.getIdentifier(), "EPSG:3857");
}

struct Verdict {
    const char* content;  // of <CrsConfiguration>, from line 2 on
    bool starts;
    const char* findings;
};

void PrintTo(const Verdict& tried, std::ostream* stream) { *stream << printable(tried.content); }

class AConfiguration : public testing::TestWithParam<Verdict> {};

TEST_P(AConfiguration, HasTheseFindings) {
    const ConfigurationReport report =
        reportOf(std::string("<CrsConfiguration>\n") + GetParam().content + "\n</CrsConfiguration>");
    EXPECT_EQ(report.starts(), GetParam().starts) << report.failure;
    EXPECT_EQ(findingsOf(report), GetParam().findings);
}

INSTANTIATE_TEST_SUITE_P(
    WithoutFault, AConfiguration,
    testing::Values(Verdict{"", true, ""}, Verdict{"<!-- <CRS>1</CRS> -->", true, ""},
                    Verdict{"<CRS>4326<!-- WGS 84 --></CRS>", true, ""},
                    Verdict{"<CRS>4326</CRS><CRS>CRS:84</CRS>", true, ""},
                    Verdict{"<CRS mapToEpsgCode='25832'>A</CRS><CRS mapToEpsgCode='25832'>B</CRS>", true, ""},
                    Verdict{"<CRS suppressDuplicatCoordinates='0' numberOfDecimalPlaces='0'>4326</CRS>", true, ""},
                    Verdict{"<CRS suppressDuplicatCoordinates='false'>4326</CRS>", true, ""}));

INSTANTIATE_TEST_SUITE_P(
    ThatDoesNotStart, AConfiguration,
    testing::Values(
        Verdict{"<CRS>EPSG:99999</CRS>\n<CRS>nonsense</CRS>\n<CRS>4326</CRS>", false,
                "error 2: Failed to configure CRS 99999. Please ensure that the CRS is defined properly in the proj4 "
                "configuration for QuarvelServer.\n"
                "error 3: The EPSG code \"NONSENSE\" is unknown\n"},
        Verdict{
            "<CRS>urn:ogc:def:crs:EPSG::4326</CRS>", false,
            "error 2: The EPSG code \"URN:OGC:DEF:CRS:EPSG::4326\" is unknown; identifiers are converted to capitals, "
            "and a URN or URL in capitals is unknown: give the EPSG code as mapToEpsgCode and this text as the name\n"},
        Verdict{"<CRS>27700*5701</CRS>", false,
                "error 2: invalid string position; a compound is spelled EPSG:27700*EPSG:5701\n"},
        Verdict{"<CRS mapToEpsgCode=''>A</CRS>", false, "error 2: The EPSG code \"\" is unknown\n"},
        Verdict{"<CRS>crs:84</CRS>", false, "error 2: The EPSG code \"CRS:84\" is unknown\n"},
        Verdict{"<CRS>\n4326</CRS>", false,
                "warning 2: blanks around \"\\n4326\" are part of the identifier\n"
                "error 2: The EPSG code \"\n4326\" is unknown\n"},
        Verdict{"<CRS>EPSG:0</CRS>", false,
                "error 2: Text representation of an unknown or the default SRS requested.\n"}));

INSTANTIATE_TEST_SUITE_P(
    WithContestedNames, AConfiguration,
    testing::Values(
        Verdict{"<CRS>4326</CRS>\n<CRS>EPSG:4326</CRS>", true, "warning 3: dropped: repeats EPSG:4326 of line 2\n"},
        Verdict{"<CRS mapToEpsgCode='4326'>A</CRS><CRS mapToEpsgCode='25832'>A</CRS>", true,
                "warning 2: the name A is claimed twice: it answers with EPSG 4326 in the order latitude, longitude, "
                "from line 2, not with EPSG 25832 in the order easting, northing\n"},
        Verdict{"<CRS mapToEpsgCode='25832'>EPSG:4326</CRS>\n<CRS> 4326</CRS>", true,
                "warning 3: blanks around \" 4326\" are part of the identifier\n"
                "warning 3: the name EPSG:4326 is claimed twice: it answers with EPSG 25832 in the order easting, "
                "northing, from line 2, not with EPSG 4326 in the order latitude, longitude\n"},
        Verdict{
            "<CRS mapToEpsgCode='25832'>UTM</CRS>\n<CRS mapToEpsgCode='25833'>UTM</CRS>", true,
            "warning 3: the name UTM is claimed twice: it answers with EPSG 25832 in the order easting, northing, from "
            "line 2, not with EPSG 25833 in the order easting, northing\n"},
        Verdict{"<CRS mapToEpsgCode='4326' axisOrder='EN'>EPSG:4326</CRS>", true,
                "warning 2: the name EPSG:4326 is claimed twice: it answers with EPSG 4326 in the order longitude, "
                "latitude, "
                "the alias of this entry, not with EPSG 4326 in the order latitude, longitude\n"},
        Verdict{"<CRS mapToEpsgCode='25832'>EPSG:25833</CRS>\n<CRS>25833</CRS>", true,
                "warning 3: its identifier EPSG:25833 is an alias of an earlier entry: it offers EPSG 25832\n"}));

TEST(AMalformedFragment, DoesNotStart) {
    const ConfigurationReport report = reportOf("<SRSList>\n <SRS>4326</CRS></SRSList>");
    EXPECT_EQ(report.failure, "<unspecified file>(2): end tag </CRS> does not match <SRS> of line 2");
    EXPECT_EQ(findingsOf(report),
              "error 2: the fragment is malformed: end tag </CRS> does not match <SRS> of line 2\n");
    EXPECT_TRUE(report.entries.empty());
}

TEST(AProjDirectory, IsCheckedBesideTheFragment) {
    const UnconfiguredSession settlesTheUsualDirectory;
    const TestSupport::TemporaryDirectory directory;
    directory.write("epsg", "<4326> +proj=longlat +datum=WGS84 <>\n<1> +proj=longlat +nadgrids=no_such_grid <>\n");
    directory.write("epsg-axisorder.csv", "4326;ne");
    CommonOptions options = optionsFor();
    options.projDir = directory.name();
    const ConfigurationReport report = checkConfiguration("crs.xml", "<SRS/>", options);
    EXPECT_EQ(report.count(Severity::ERROR), 1U);
    EXPECT_THAT(
        asText(report),
        HasSubstr("crs.xml:1:1: warning: SRS: ignored: only CrsConfiguration and SRSList are read at this level\n" +
                  directory.name() + "/epsg:2: error: 1: the grid file no_such_grid is missing\n" + directory.name() +
                  "/epsg-axisorder.csv:1: warning: not read, because the line end is missing: 4326;ne\n"
                  "crs.xml: a server would start; 0 entries, 1 error, 2 warnings\n"));
    EXPECT_TRUE(asJson(report)["findings"][0]["file"].is_null());
    EXPECT_EQ(asJson(report)["findings"][1]["file"], directory.name() + "/epsg");
}

// The identifier fails by itself, but an earlier entry has it as its alias.
TEST(AnIdentifier, IsAnsweredByAnEarlierAlias) {
    const ConfigurationReport report =
        reportOf("<CrsConfiguration><CRS>CRS:84</CRS>\n<CRS>crs:84</CRS></CrsConfiguration>");
    EXPECT_TRUE(report.starts()) << report.failure;
    EXPECT_EQ(findingsOf(report),
              "warning 2: its identifier CRS:84 is an alias of an earlier entry: it offers EPSG 4326\n");
}

TEST(TheReport, IsWrittenAsATableAndItsFindings) {
    const std::string text = asText(reportOf("<CrsConfiguration>\n<CRS>4326</CRS>\n  <CRS>x</CRS></CrsConfiguration>"));
    EXPECT_EQ(text,
              "line  name       identifier  codes  axis order           decimals     duplicates\n"
              "2     EPSG:4326  EPSG:4326   4326   latitude, longitude  8 (default)  kept\n"
              "3     X          X           none   none                 default      kept\n"
              "\n"
              "crs.xml:3:3: error: CRS: The EPSG code \"X\" is unknown\n"
              "crs.xml: a server would not start; 2 entries, 1 error, 0 warnings\n");
}

TEST(TheReport, IsWrittenAsJson) {
    const Json json = asJson(reportOf("<CrsConfiguration>\n<CRS>4326</CRS>\n  <CRS>x</CRS></CrsConfiguration>"));
    EXPECT_EQ(json["starts"], false);
    EXPECT_EQ(json["failure"], "The EPSG code \"X\" is unknown");
    EXPECT_EQ(json["entries"][0]["primaryCode"], 4326);
    EXPECT_TRUE(json["entries"][1]["primaryCode"].is_null());
    EXPECT_EQ(json["findings"][0]["line"], 3);
    EXPECT_EQ(json["findings"][0]["column"], 3);
}

TEST(TheReport, IsEmptyForAnEmptyFragment) {
    const ConfigurationReport report = reportOf("");
    EXPECT_TRUE(report.starts()) << report.failure;
    EXPECT_EQ(asText(report), "no entries\n\ncrs.xml: a server would start; 0 entries, 0 errors, 0 warnings\n");
}

TEST(TheReport, CountsInTheSingularAndThePlural) {
    EXPECT_THAT(asText(reportOf("<SRSList><SRS>4326</SRS>\n<SRS>4326</SRS></SRSList>")),
                testing::EndsWith("crs.xml: a server would start; 1 entry, 0 errors, 1 warning\n"));
    EXPECT_THAT(asText(reportOf("<SRSList><SRS>x</SRS>\n<SRS>y</SRS></SRSList>")),
                testing::EndsWith("crs.xml: a server would not start; 2 entries, 2 errors, 0 warnings\n"));
}

TEST(TheReport, HasTheFirstFailureOfAStart) {
    const ConfigurationReport report = reportOf("<SRSList><SRS>x</SRS>\n<SRS>y</SRS></SRSList>");
    EXPECT_EQ(report.failure, "The EPSG code \"X\" is unknown");
    EXPECT_EQ(report.count(Severity::ERROR), 2U);
    EXPECT_EQ(report.count(Severity::NOTE), 0U);
}

TEST(TheReport, ShowsEachColumnOfAnEntry) {
    const std::string text = asText(
        reportOf("<CrsConfiguration><CRS mapToEpsgCode='EPSG:25832*EPSG:5783' axisOrder='NE' numberOfDecimalPlaces='2' "
                 "suppressDuplicatCoordinates='true'>UTM</CRS><CRS>25833</CRS></CrsConfiguration>"));
    EXPECT_THAT(text,
                HasSubstr("\n1     UTM         EPSG:25832*EPSG:5783  25832 and 5783  northing, easting  2           "
                          " suppressed\n"));
    EXPECT_THAT(text,
                HasSubstr("\n1     EPSG:25833  EPSG:25833            25833           easting, northing  3 (default)"
                          "  kept\n"));
}

TEST(AFinding, HasNullForAnUnknownPlace) {
    EXPECT_EQ(Json(Finding{Severity::NOTE, {0, 0, "", ""}, "a"}), Json({{"severity", "note"},
                                                                        {"file", nullptr},
                                                                        {"line", nullptr},
                                                                        {"column", nullptr},
                                                                        {"element", nullptr},
                                                                        {"text", "a"}}));
    EXPECT_EQ(
        Json(Finding{Severity::WARNING, {2, 3, "CRS", "f"}, "b"}),
        Json({{"severity", "warning"}, {"file", "f"}, {"line", 2}, {"column", 3}, {"element", "CRS"}, {"text", "b"}}));
}

TEST(AFinding, IsWrittenWithThePlaceThatIsKnown) {
    ConfigurationReport report{"crs\n.xml", nullptr};
    report.findings = {{Severity::NOTE, {0, 0, "", ""}, "one"},
                       {Severity::WARNING, {2, 0, "", "epsg"}, "two\nlines"},
                       {Severity::ERROR, {3, 4, "CRS", ""}, "three"}};
    EXPECT_EQ(asText(report),
              "no entries\n\n"
              "crs\\n.xml: note: one\n"
              "epsg:2: warning: two\\nlines\n"
              "crs\\n.xml:3:4: error: CRS: three\n"
              "crs\\n.xml: a server would start; 0 entries, 1 error, 1 warning\n");
}

TEST(AnEntrysShift, MayLeadAsFarFromThatOfProjAsItMayBeInaccurate) {
    EXPECT_EQ(unmetBy(6316, expectationsOf(1626.4)), "");
    EXPECT_NE(unmetBy(6316, expectationsOf(1626.3)), "");
}

TEST(ACrsWithoutADescription, StillNeedsAShift) {
    EXPECT_EQ(unmetExpectations(false, nullptr, {}).size(), 1U);
    EXPECT_TRUE(unmetExpectations(true, nullptr, {}).empty());
}

CommandResult resultOf(const std::string& fragment, bool json = false) {
    CommonOptions options = optionsFor();
    options.json = json;
    return checkCommand(options, TemporaryFile(fragment).path(), {});
}

TEST(Checking, AcceptsAConfigurationWithWarnings) {
    const CommandResult result = resultOf("<SRSList><SRS>4326</SRS>\n<SRS>4326</SRS></SRSList>");
    EXPECT_EQ(result.exitCode, EXIT_DONE);
    EXPECT_TRUE(result.notes.empty());
    EXPECT_THAT(result.output, HasSubstr(":2:1: warning: SRS: dropped: repeats EPSG:4326 of line 1\n"));
}

TEST(Checking, RefusesAConfigurationThatDoesNotStart) {
    const CommandResult result = resultOf("<SRSList><SRS>x</SRS></SRSList>", true);
    EXPECT_EQ(result.exitCode, EXIT_REFUSED);
    EXPECT_THAT(result.notes, testing::ElementsAre(testing::EndsWith(": The EPSG code \"X\" is unknown")));
    EXPECT_EQ(Json::parse(result.output)["starts"], false);
    EXPECT_TRUE(Json::parse(resultOf("", true).output)["failure"].is_null());
}
}  // namespace
}  // namespace crsctl
