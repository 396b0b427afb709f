#include "tools/projdir/JsonReport.h"

#include <limits>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace ProjDir {
namespace {

using nlohmann::json;

const RegistryVersion VERSION{"v1", "2022-08-31", "9.1.1"};

CrsOutcome makeOutcome() {
    CrsOutcome outcome;
    outcome.crs.code = 31467;
    outcome.crs.name = "Zone 3";
    outcome.crs.kind = CrsKind::PROJECTED;
    outcome.crs.isDeprecated = true;
    outcome.crs.area = Area{7.5, 47.3, 10.5, 55.1};
    outcome.description = {CrsKind::PROJECTED, "Germany", "metre", 1, "DHDN", "EPSG:6314", {5677, 5678}};
    outcome.definition = ClassicDefinition{"+proj=tmerc", true, {}, false};
    outcome.definition->shift.kind = ShiftKind::PUBLISHED;
    outcome.definition->shift.source = "EPSG:1777";
    outcome.shiftAccuracy = 3;
    outcome.largestDistance = 2.25;
    return outcome;
}

json readReport(const std::vector<CrsOutcome>& outcomes, const Verification& verification = {}) {
    return json::parse(writeJsonReport(VERSION, outcomes, verification));
}

TEST(JsonReportTest, NamesTheRegistryAndEveryCrs) {
    const json report = readReport({makeOutcome(), makeOutcome()});
    EXPECT_EQ(report["registry"], json::parse(R"({"dataset": "v1", "date": "2022-08-31", "proj": "9.1.1"})"));
    EXPECT_EQ(report["crs"].size(), 2U);
    EXPECT_EQ(readReport({})["crs"], json::array());
}

TEST(JsonReportTest, DescribesACrs) {
    EXPECT_EQ(readReport({makeOutcome()})["crs"][0], json::parse(R"({
        "code": 31467, "name": "Zone 3", "kind": "projected", "deprecated": true,
        "area": {"text": "Germany", "west": 7.5, "south": 47.3, "east": 10.5, "north": 55.1},
        "unit": "metre", "unit_length": 1.0, "datum": "DHDN", "datum_id": "EPSG:6314", "replaced_by": [5677, 5678],
        "definition": "+proj=tmerc", "axis_order": "ne",
        "shift": {"kind": "published", "source": "EPSG:1777", "accuracy": 3.0}, "largest_distance": 2.25})"));
}

TEST(JsonReportTest, LeavesOutWhatIsNotKnown) {
    CrsOutcome outcome;
    outcome.crs.code = 4807;
    outcome.omission = "no reason";
    EXPECT_EQ(readReport({outcome})["crs"][0],
              json::parse(R"({"code": 4807, "name": "", "kind": "other", "area": {}, "left_out": "no reason"})"));
}

TEST(JsonReportTest, StatesWhatWasMeasured) {
    const std::vector<CrsOutcome> outcomes = {makeOutcome(), makeOutcome()};
    const Verification verification = {{{outcomes.data(), 2.5, 3.5, ""}},
                                       {{{outcomes.data(), &outcomes[1], {0.0000014, ""}, 0}},
                                        {{outcomes.data(), Measurement{0.0001, ""}, {0.002, ""}, 0}}}};
    const json report = readReport(outcomes, verification);
    EXPECT_EQ(report["crs"][0]["verification"], json::parse(R"({
        "largest": 2.5, "largest_anywhere": 3.5, "proj": "PROJ knows no operation",
        "conversions": [{"to": 31467, "distance": 0.000001}],
        "round_trips": {"through_wgs84": 0.002, "within_datum": 0.0001}})"));
    EXPECT_FALSE(report["crs"][1].contains("verification"));
}

TEST(JsonReportTest, HasNullForWhatIsNotFinite) {
    const std::vector<CrsOutcome> outcomes = {makeOutcome()};
    const double nowhere = std::numeric_limits<double>::infinity();
    const json measured = readReport(
        outcomes, {{{outcomes.data(), nowhere, nowhere, "refused"}},
                   {{{outcomes.data(), outcomes.data(), {nowhere, "bad"}, 0}}, {}}})["crs"][0]["verification"];
    EXPECT_TRUE(measured["largest"].is_null());
    EXPECT_EQ(measured["failure"], "refused");
    EXPECT_EQ(measured["conversions"][0], json::parse(R"({"to": 31467, "distance": null, "failure": "bad"})"));
}

TEST(JsonReportTest, TakesNamesThatHoldAnything) {
    CrsOutcome outcome = makeOutcome();
    outcome.crs.name = "\"\\\n</script>\xff";
    EXPECT_EQ(readReport({outcome})["crs"][0]["name"], "\"\\\n</script>\xEF\xBF\xBD");
}

}  // namespace
}  // namespace ProjDir
