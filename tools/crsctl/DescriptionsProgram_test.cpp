// The commands that use the descriptions of CRS: finding CRS, and checking a configuration for area and accuracy.

#include <sstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "tests/support/CrsctlProgram.h"
#include "tests/support/TemporaryDirectory.h"
#include "tests/support/TemporaryFile.h"

namespace crsctl {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

constexpr char CONFIGURATION[] =
    "<CrsConfiguration>\n<CRS>4326</CRS>\n<CRS mapToEpsgCode='25832'>UTM32</CRS>\n</CrsConfiguration>\n";

std::vector<std::string> linesOf(const std::string& text) {
    std::istringstream stream(text);
    std::vector<std::string> lines;
    for (std::string line; std::getline(stream, line);) lines.push_back(line);
    return lines;
}

TEST(Finding, ListsTheBestFirst) {
    const Outcome outcome = run({"find", "utm", "32", "--area", "9.7,53.4,10.3,53.7"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.errors, "");
    const std::vector<std::string> lines = linesOf(outcome.output);
    ASSERT_EQ(lines.size(), 3U);
    EXPECT_THAT(lines[0], StartsWith("code   kind       accuracy  name"));
    EXPECT_THAT(lines[1], StartsWith("25832  projected  1 m       ETRS89 / UTM zone 32N  Europe"));
    EXPECT_THAT(lines[2], StartsWith("32632  projected            WGS 84 / UTM zone 32N  Between"));
}

TEST(Finding, WritesJson) {
    const auto json = nlohmann::json::parse(run({"find", "--json", "WGS 84", "--kind", "geocentric"}).output);
    ASSERT_EQ(json.size(), 1U);
    EXPECT_EQ(json[0]["code"], 4978);
    EXPECT_EQ(json[0]["datumId"], "EPSG:6326");
    EXPECT_EQ(json[0]["coversArea"], true);
    EXPECT_TRUE(json[0]["shiftAccuracy"].is_null());
}

TEST(Finding, ListsOnlyCrsThatTheConfigurationOffers) {
    const TemporaryFile config(CONFIGURATION);
    const Outcome outcome = run({"find", "utm", "--config", config.path()});
    EXPECT_EQ(linesOf(outcome.output).size(), 2U);
    EXPECT_THAT(outcome.output, HasSubstr("25832"));
}

TEST(Finding, FailsWhenNothingIsFound) {
    const Outcome outcome = run({"find", "nowhere"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.output, "");
    EXPECT_EQ(outcome.errors, "crsctl find: nothing was found\n");
    EXPECT_EQ(run({"find", "nowhere", "--json"}).output, "[]\n");
}

class WithoutDescriptions : public testing::Test {
protected:
    WithoutDescriptions() {
        directory.write("epsg", "<4326> +proj=longlat +datum=WGS84 +no_defs <>\n<4139> +proj=longlat +ellps=intl <>\n");
        directory.write("epsg-axisorder.csv", "4326;ne\n");
    }

    const TestSupport::TemporaryDirectory directory;
};

TEST_F(WithoutDescriptions, FindingFails) {
    const Outcome outcome = run({"find", "x", "--proj-dir", directory.name()});
    EXPECT_EQ(outcome.exitCode, 2);
    EXPECT_EQ(outcome.errors, "crsctl find: the PROJ directory has no \"epsg-info.csv\", the file that is searched\n");
}

TEST_F(WithoutDescriptions, NamesAreStillResolved) {
    const Outcome outcome = run({"resolve", "EPSG:4326", "--proj-dir", directory.name()});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.output.find("described"), std::string::npos);
}

TEST_F(WithoutDescriptions, CheckingStillFindsMissingShifts) {
    const Outcome usual = run({"check", "-", "--proj-dir", directory.name()}, "<SRSList>\n<SRS>4139</SRS></SRSList>");
    EXPECT_EQ(usual.exitCode, 0);
    EXPECT_THAT(usual.output, HasSubstr("standard input:2:1: warning: SRS: EPSG 4139: no shift to WGS 84 is known"));
    EXPECT_EQ(usual.output.find("epsg-info.csv"), std::string::npos);
    const Outcome asked =
        run({"check", "-", "--accuracy", "1", "--proj-dir", directory.name()}, "<SRSList>\n<SRS>4326</SRS></SRSList>");
    EXPECT_EQ(asked.exitCode, 0);
    EXPECT_THAT(asked.output, HasSubstr("epsg-info.csv: note: missing: areas and accuracies are not known\n"));
}

TEST(Transforming, KnowsCrs84WithoutAConfiguration) {
    const Outcome outcome = run({"transform", "--from", "CRS:84", "--to", "EPSG:25832"}, "9 50\n");
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_THAT(outcome.output, HasSubstr("5538630.703"));
    EXPECT_EQ(run({"transform", "--from", "EPSG:4326", "--to", "OGC:CRS84"}, "50 9\n").output,
              "9.00000000\t50.00000000\n");
}

TEST(Checking, RequiresAreaAndAccuracy) {
    const std::string fragment = "<CrsConfiguration>\n<CRS>25832</CRS>\n</CrsConfiguration>";
    const Outcome outcome = run({"check", "-", "--area", "5,47,15,55", "--accuracy", "0.5"}, fragment);
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_THAT(outcome.output, HasSubstr("standard input:2:1: warning: CRS: EPSG 25832: the shift to WGS 84 "
                                          "(EPSG:1149) is accurate only to 1 m\n"));
    EXPECT_THAT(outcome.output,
                HasSubstr("EPSG 25832: the area of use (6,38.76,12.01,84.33) does not cover 5,47,15,55\n"));
    EXPECT_THAT(outcome.output, HasSubstr("0 errors, 2 warnings\n"));
}

}  // namespace
}  // namespace crsctl
