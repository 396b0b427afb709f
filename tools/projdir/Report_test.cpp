#include "tools/projdir/Report.h"

#include <limits>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace ProjDir {
namespace {

using nlohmann::json;
using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

// By a Helmert transformation.
OperationShare makeShare(const std::string& source, std::size_t points) {
    return {{source, false, "", {}, Helmert{}}, points};
}

OperationShare makeGridShare(const std::string& source, std::size_t points, const std::string& grid) {
    return {{source, false, grid}, points};
}

// By an offset of longitude and latitude.
OperationShare makeOffsetShare(const std::string& source, std::size_t points) { return {{source, false, ""}, points}; }

OperationShare makeBallparkShare(std::size_t points) { return {{"none", true, "", {}, Helmert{}}, points}; }

CrsOutcome makeOutcome(unsigned int code, const std::string& name, std::vector<OperationShare> shares) {
    CrsOutcome outcome;
    outcome.crs.code = code;
    outcome.crs.name = name;
    outcome.definition = ClassicDefinition{};
    outcome.shares = std::move(shares);
    return outcome;
}

std::string explanationFor(const std::vector<OperationShare>& shares, const std::string& failure = "") {
    const CrsOutcome outcome = makeOutcome(1, "Name", shares);
    return explain({&outcome, 20, 20, failure});
}

TEST(ReportTest, ExplainsLargeDistances) {
    EXPECT_EQ(
        explanationFor({makeShare("EPSG:1", 50), makeShare("EPSG:2", 30), makeShare("EPSG:3", 1)}),
        "PROJ changes between 3 operations in the area: EPSG:1 (50 points), EPSG:2 (30 points), EPSG:3 (1 point); "
        "only a definition of its own for each region would follow them");
    EXPECT_EQ(explanationFor({makeGridShare("EPSG:1", 81, "a.gsb")}),
              "PROJ uses the grid a.gsb (EPSG:1), which no parameters follow more closely; --grids uses it");
    EXPECT_EQ(explanationFor({makeOffsetShare("EPSG:1", 81)}),
              "PROJ uses EPSG:1, which is not a shift of geocentric coordinates; the definition language has no other");
    EXPECT_THAT(explanationFor({makeGridShare("EPSG:1", 50, "a.gsb"), makeShare("EPSG:2", 31)}),
                HasSubstr("the grid does not reach all over it"));
    EXPECT_EQ(explanationFor({makeShare("EPSG:1", 1)}, "bad"), "the library refuses it: bad");
}

TEST(ReportTest, LeavesOutBallparkTransformations) {
    EXPECT_EQ(explanationFor({makeBallparkShare(60), makeShare("EPSG:2", 21)}), "PROJ uses EPSG:2");
    EXPECT_EQ(explanationFor({makeBallparkShare(81)}), "PROJ knows no operation");
}

TEST(ReportTest, ShowsFourOperationsAtMost) {
    std::vector<OperationShare> shares;
    for (const char* source : {"EPSG:1", "EPSG:2", "EPSG:3", "EPSG:4", "EPSG:5"})
        shares.push_back(makeShare(source, 9));
    EXPECT_THAT(explanationFor(shares), HasSubstr("between 5 operations"));
    EXPECT_THAT(explanationFor(shares), HasSubstr("EPSG:4 (9 points), ..."));
    EXPECT_THAT(explanationFor(shares), Not(HasSubstr("EPSG:5")));
}

TEST(ReportTest, CountsDistancesByClass) {
    const double nowhere = std::numeric_limits<double>::infinity();
    EXPECT_EQ(countByClass({0, 0.01, 0.02, 1, 1.5, 2, 5, 9.9, 10, 10.1, nowhere}), (Distribution{2, 2, 2, 1, 2, 2}));
    EXPECT_EQ(countByClass({}), Distribution{});
}

TEST(ReportTest, CountsDefinitionsByTheirShift) {
    std::vector<CrsOutcome> outcomes = {makeOutcome(1, "A", {}), makeOutcome(2, "B", {}), makeOutcome(3, "C", {})};
    outcomes[0].definition->shift.kind = ShiftKind::FITTED;
    outcomes[1].definition->shift.kind = ShiftKind::FITTED;
    outcomes[2].definition.reset();
    const std::string summary = writeSummary(outcomes);
    EXPECT_THAT(summary, HasSubstr("     2 definitions\n"));
    EXPECT_THAT(summary, HasSubstr("     2 with a fitted shift\n"));
    EXPECT_THAT(summary, HasSubstr("     0 with a grid\n"));
    EXPECT_THAT(summary, HasSubstr("     1 CRS left out\n"));
}

TEST(ReportTest, StatesTheDistributionAndTheWorst) {
    const CrsOutcome good = makeOutcome(1, "Good", {makeShare("EPSG:1", 81)});
    const CrsOutcome bad = makeOutcome(2, "Bad", {makeOffsetShare("EPSG:1", 81)});
    const std::string text = writeAgreement({{&good, 0.5, 70, ""}, {&bad, 12.3456, 12.3456, ""}});
    EXPECT_THAT(text, HasSubstr("  within 1 cm        0   0.00 %\n  within 1 m         1  50.00 %\n"));
    EXPECT_THAT(text, HasSubstr("  beyond 10 m        1  50.00 %\nAnywhere"));
    EXPECT_THAT(text, HasSubstr("  beyond 10 m        2 100.00 %\nThe worst"));
    EXPECT_LT(text.find("12.346 m  EPSG:2 Bad"), text.find("0.500 m  EPSG:1 Good"));
}

Verification withConversion(const CrsOutcome& source, const CrsOutcome& target, double distance,
                            const std::string& failure = "", double inverse = 0) {
    return {{}, {{&source, &target, {distance, failure}, inverse}}, {}};
}

TEST(ReportTest, NamesConversionsWithinADatumThatAreNotExact) {
    const CrsOutcome source = makeOutcome(1, "One", {});
    const CrsOutcome target = makeOutcome(2, "Two", {});
    EXPECT_THAT(writeVerification(withConversion(source, target, 0.001)),
                AllOf(HasSubstr("     1 conversions\n     1 within 1 mm\nRound"), Not(HasSubstr("EPSG:"))));
    EXPECT_THAT(writeVerification(withConversion(source, target, 0.0011)),
                HasSubstr("     0 within 1 mm\n         0.001 m  EPSG:1 One to EPSG:2 Two\n"));
    EXPECT_THAT(writeVerification(withConversion(source, target, std::numeric_limits<double>::infinity(), "bad")),
                HasSubstr("  no coordinates  EPSG:1 One to EPSG:2 Two: bad\n"));
    EXPECT_THAT(writeVerification(withConversion(source, target, 0.02, "", 0.02)),
                HasSubstr("0.020 m  EPSG:1 One to EPSG:2 Two (PROJ's own inverse is no better)\n"));
}

TEST(ReportTest, NamesRoundTripsThatAreNotExact) {
    const CrsOutcome outcome = makeOutcome(1, "One", {});
    const std::string text = writeVerification({{}, {}, {{&outcome, Measurement{0.0004, ""}, {0.002, ""}, 0}}});
    EXPECT_THAT(text, HasSubstr("of the datum and back: 1, largest distance 0.400 mm\n"));
    EXPECT_THAT(text, HasSubstr("to be small: 1, largest distance 2.000 mm\n"));
    EXPECT_THAT(text, EndsWith("  0.002 m  EPSG:1 One to WGS 84 and back\n"));
    EXPECT_THAT(writeVerification({{}, {}, {{&outcome, Measurement{0.002, ""}, {0, ""}, 0}}}),
                EndsWith("  0.002 m  EPSG:1 One to its datum and back\n"));
}

TEST(ReportTest, CountsDistancesWithoutGrids) {
    std::vector<CrsOutcome> outcomes(4, makeOutcome(1, "One", {}));
    outcomes[0].largestDistance = 1.5;
    outcomes[1].largestDistance = 0;
    outcomes[2].definition.reset();
    outcomes[2].largestDistance = 11;
    const std::string text = writeDistances(outcomes);
    EXPECT_THAT(text, HasSubstr("  within 1 m         1  50.00 %\n  within 2 m         2 100.00 %\n"));
    EXPECT_THAT(text, HasSubstr("  beyond 10 m        0   0.00 %\n     1 where PROJ knows none, or with a grid\n"));
}

TEST(ReportTest, CountsShiftsByTheAccuracyThatTheRegistryStates) {
    std::vector<CrsOutcome> outcomes(4, makeOutcome(1, "One", {}));
    for (std::size_t i = 0; i < 3; ++i) outcomes[i].definition->shift.kind = ShiftKind::PUBLISHED;
    outcomes[0].definition->shift.accuracy = 1;
    outcomes[1].definition->shift.accuracy = 44;
    const std::string text = writeAccuracies(outcomes);
    EXPECT_THAT(text, HasSubstr("  within 1 m         1  50.00 %\n"));
    EXPECT_THAT(text, HasSubstr("  beyond 10 m        1  50.00 %\n     1 without a statement\n"));
}

TEST(ReportTest, ListsTwentyOfTheWorst) {
    const CrsOutcome outcome = makeOutcome(1, "Name", {});
    const std::string text = writeAgreement(std::vector<Agreement>(30, Agreement{&outcome, 3, 3, ""}));
    std::size_t lines = 0;
    for (std::size_t at = text.find("EPSG:1"); at != std::string::npos; at = text.find("EPSG:1", at + 1)) ++lines;
    EXPECT_EQ(lines, 20U);
}

TEST(ReportTest, ListsEveryCodeBeyondTenMetresAndEveryOneLeftOut) {
    std::vector<CrsOutcome> outcomes = {makeOutcome(1, "Far", {makeOffsetShare("EPSG:9", 81)}),
                                        makeOutcome(2, "Partly", {makeShare("EPSG:9", 81)}),
                                        makeOutcome(3, "Gone", {})};
    outcomes[2].definition.reset();
    outcomes[2].omission = "no reason";
    const std::string text = writeReport({"v1", "2022-08-31", "9.1.1"}, outcomes,
                                         {{{outcomes.data(), 11, 11, ""}, {&outcomes[1], 1, 99, ""}}, {}, {}});
    EXPECT_THAT(text, HasSubstr("v1 of 2022-08-31"));
    EXPECT_THAT(
        text, HasSubstr("\nBeyond ten metres\n\n        11.000 m  EPSG:1 Far: PROJ uses EPSG:9, which is not a shift"));
    EXPECT_THAT(text, HasSubstr("knows no operation\n\n        99.000 m  EPSG:2 Partly\n"));
    EXPECT_THAT(text, HasSubstr("\nLeft out\n\n  EPSG:3 Gone: no reason\n"));
}

TEST(ReportTest, HasOneLineForEachCrsWithAnyName) {
    std::vector<CrsOutcome> outcomes = {makeOutcome(1, "Far\naway", {makeOffsetShare("EPSG:9\n", 81)}),
                                        makeOutcome(2, "Partly\rfar", {makeShare("EPSG:9", 81)}),
                                        makeOutcome(3, "Gone\n  EPSG:4 Made up", {})};
    outcomes[2].definition.reset();
    outcomes[2].omission = "no\nreason";
    const std::string text =
        writeReport({"v1\n", "2022-08-31", "9.1.1"}, outcomes,
                    {{{outcomes.data(), 11, 11, ""}, {&outcomes[1], 1, 99, "refused\nagain"}}, {}, {}});
    EXPECT_THAT(text, HasSubstr("        11.000 m  EPSG:1 Far away: PROJ uses EPSG:9 , which is not a shift"));
    EXPECT_THAT(text, HasSubstr("        99.000 m  EPSG:2 Partly far\n"));
    EXPECT_THAT(text, HasSubstr(": refused again\n"));
    EXPECT_THAT(text, HasSubstr("\n  EPSG:3 Gone   EPSG:4 Made up: no reason\n"));
    EXPECT_THAT(text, HasSubstr("Dataset v1  of 2022-08-31"));
}

TEST(ReportTest, MarksEmptyLists) {
    const std::string text = writeReport({}, {makeOutcome(1, "Good", {})}, {});
    EXPECT_THAT(text, HasSubstr("\nLeft out\n\n  none\n"));
    EXPECT_THAT(text, Not(HasSubstr("Beyond")));
}

const RegistryVersion REPORTED{"v1", "2022-08-31", "9.1.1"};

CrsOutcome makeZone() {
    CrsOutcome outcome;
    outcome.crs.code = 31467;
    outcome.crs.name = "Zone 3";
    outcome.crs.kind = CrsKind::PROJECTED;
    outcome.crs.isDeprecated = true;
    outcome.crs.area = Area{7.5, 47.3, 10.5, 55.1};
    outcome.crs.areaName = "Germany";
    outcome.crs.datum = {"EPSG:6314", "DHDN"};
    outcome.unit = "metre";
    outcome.unitLength = 1;
    outcome.replacedBy = {5677, 5678};
    outcome.definition = ClassicDefinition{"+proj=tmerc", true, {}, false};
    outcome.definition->shift.kind = ShiftKind::PUBLISHED;
    outcome.definition->shift.source = "EPSG:1777";
    outcome.definition->shift.accuracy = 3;
    outcome.largestDistance = 2.25;
    return outcome;
}

json readReport(const std::vector<CrsOutcome>& outcomes, const Verification& verification = {}) {
    return json::parse(writeJsonReport(REPORTED, outcomes, verification));
}

TEST(JsonReportTest, NamesTheRegistryAndEveryCrs) {
    const json report = readReport({makeZone(), makeZone()});
    EXPECT_EQ(report["registry"], json::parse(R"({"dataset": "v1", "date": "2022-08-31", "proj": "9.1.1"})"));
    EXPECT_EQ(report["crs"].size(), 2U);
    EXPECT_EQ(readReport({})["crs"], json::array());
}

TEST(JsonReportTest, DescribesACrs) {
    EXPECT_EQ(readReport({makeZone()})["crs"][0], json::parse(R"({
        "code": 31467, "name": "Zone 3", "kind": "projected", "deprecated": true,
        "area": {"text": "Germany", "west": 7.5, "south": 47.3, "east": 10.5, "north": 55.1},
        "unit": "metre", "unit_length": 1.0, "datum": "DHDN", "datum_id": "EPSG:6314", "replaced_by": [5677, 5678],
        "definition": "+proj=tmerc", "axis_order": "ne",
        "shift": {"kind": "published", "source": "EPSG:1777", "accuracy": 3.0}, "largest_distance": 2.25})"));
}

TEST(JsonReportTest, LeavesOutUnknownValues) {
    CrsOutcome outcome;
    outcome.crs.code = 4807;
    outcome.omission = "no reason";
    EXPECT_EQ(readReport({outcome})["crs"][0],
              json::parse(R"({"code": 4807, "name": "", "kind": "other", "area": {}, "left_out": "no reason"})"));
}

TEST(JsonReportTest, StatesTheMeasurements) {
    const std::vector<CrsOutcome> outcomes = {makeZone(), makeZone()};
    const Verification verification = {{{outcomes.data(), 2.5, 3.5, ""}},
                                       {{outcomes.data(), &outcomes[1], {0.0000014, ""}, 0}},
                                       {{outcomes.data(), Measurement{0.0001, ""}, {0.002, ""}, 0}}};
    const json report = readReport(outcomes, verification);
    EXPECT_EQ(report["crs"][0]["verification"], json::parse(R"({
        "largest": 2.5, "largest_anywhere": 3.5, "proj": "PROJ knows no operation",
        "conversions": [{"to": 31467, "distance": 0.000001}],
        "round_trips": {"through_wgs84": 0.002, "within_datum": 0.0001}})"));
    EXPECT_FALSE(report["crs"][1].contains("verification"));
}

TEST(JsonReportTest, HasNullForInfiniteDistances) {
    const std::vector<CrsOutcome> outcomes = {makeZone()};
    const double nowhere = std::numeric_limits<double>::infinity();
    const json measured = readReport(
        outcomes,
        {{{outcomes.data(), nowhere, nowhere, "refused"}},
         {{outcomes.data(), outcomes.data(), {nowhere, "bad"}, 0}},
         {{outcomes.data(), Measurement{nowhere, "worse"}, {nowhere, "worst"}, 0}}})["crs"][0]["verification"];
    EXPECT_TRUE(measured["largest"].is_null());
    EXPECT_EQ(measured["failure"], "refused");
    EXPECT_EQ(measured["conversions"][0], json::parse(R"({"to": 31467, "distance": null, "failure": "bad"})"));
    EXPECT_EQ(measured["round_trips"], json::parse(R"({"through_wgs84": null, "through_wgs84_failure": "worst",
                                                       "within_datum": null, "within_datum_failure": "worse"})"));
}

TEST(JsonReportTest, AcceptsNamesWithAnyBytes) {
    CrsOutcome outcome = makeZone();
    outcome.crs.name = "\"\\\n</script>\xff";
    EXPECT_EQ(readReport({outcome})["crs"][0]["name"], "\"\\\n</script>\xEF\xBF\xBD");
}

// The element that begins with the tag, up to the end of the next script.
std::string partFrom(const std::string& page, const std::string& tag) {
    const std::size_t start = page.find(tag);
    return page.substr(start, page.find("</script>", start) - start);
}

TEST(HtmlReportTest, HoldsDataStyleScriptAndCoastline) {
    const std::string page = writeHtmlReport("{\"crs\": [1]}");
    EXPECT_THAT(page, StartsWith("<!DOCTYPE html>"));
    EXPECT_THAT(partFrom(page, "<script type=\"application/json\" id=\"data\">"), HasSubstr("{\"crs\": [1]}"));
    EXPECT_THAT(page, AllOf(HasSubstr("prefers-color-scheme: dark"), HasSubstr("@media print"),
                            HasSubstr("\"use strict\";"), HasSubstr(" d=\"M163 1686l")));
    EXPECT_THAT(page, Not(HasSubstr("<!--[")));
}

TEST(HtmlReportTest, NeedsNothingFromElsewhere) {
    const std::string page = writeHtmlReport("{}");
    EXPECT_THAT(page, AllOf(Not(HasSubstr(" src=")), Not(HasSubstr("url(")), Not(HasSubstr("@import")),
                            Not(HasSubstr("<link")), Not(HasSubstr("fetch("))));
    EXPECT_THAT(page, HasSubstr("default-src 'none'"));
}

TEST(HtmlReportTest, KeepsMarkupInTheData) {
    const std::string page = writeHtmlReport("{\"name\": \"</script><script>alert(1)<!--[STYLE]-->\"}");
    EXPECT_THAT(page, HasSubstr("\"\\u003c/script>\\u003cscript>alert(1)\\u003c!--[STYLE]-->\""));
    EXPECT_THAT(page, Not(HasSubstr("<script>alert")));
}

}  // namespace
}  // namespace ProjDir
