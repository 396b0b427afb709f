// The reports of the program on names and configurations.

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

TEST(Resolving, ShowsTheCrsOfAName) {
    const Outcome outcome = run({"resolve", "urn:ogc:def:crs:EPSG::25832"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.errors, "");
    EXPECT_THAT(outcome.output,
                StartsWith("urn:ogc:def:crs:EPSG::25832\n  spelling    OGC URN\n  codes       25832\n"));
    EXPECT_THAT(outcome.output, HasSubstr("  axis order  easting, northing\n"));
}

TEST(Resolving, ReportsEveryNameEvenIfOneIsRefused) {
    const Outcome outcome = run({"resolve", "epsg:4326", "EPSG:25832"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_THAT(outcome.output, HasSubstr("  try       EPSG:4326 (as an EPSG code)\n"));
    EXPECT_THAT(outcome.output, HasSubstr("\nEPSG:25832\n"));
    EXPECT_EQ(outcome.errors, "crsctl resolve: epsg:4326: refused with qvCrsUnavailable, unknown syntax\n");
}

TEST(Resolving, WritesJson) {
    const TemporaryFile config(CONFIGURATION);
    const Outcome outcome = run({"resolve", "--config", config.path(), "--json", "UTM32", "EPSG:3857"});
    const auto json = nlohmann::json::parse(outcome.output);
    EXPECT_EQ(json[0]["spelling"], "configured name");
    EXPECT_EQ(json[0]["offered"], true);
    EXPECT_EQ(json[1]["accepted"], false);
    EXPECT_EQ(json[1]["serviceExceptionCode"], "qvCrsUnavailable");
}

TEST(Checking, ReportsWhetherAServerWouldStart) {
    const TemporaryFile good(CONFIGURATION);
    const Outcome accepted = run({"check", good.path()});
    EXPECT_EQ(accepted.exitCode, 0);
    EXPECT_EQ(accepted.errors, "");
    EXPECT_THAT(accepted.output, HasSubstr(": a server would start; 3 entries, 0 errors, 0 warnings\n"));
    const TemporaryFile bad("<CrsConfiguration>\n<CRS>nonsense</CRS>\n</CrsConfiguration>");
    const Outcome refused = run({"check", bad.path()});
    EXPECT_EQ(refused.exitCode, 1);
    EXPECT_THAT(refused.output, HasSubstr(bad.path() + ":2:1: error: CRS: The EPSG code \"NONSENSE\" is unknown\n"));
    EXPECT_EQ(refused.errors, "crsctl check: " + bad.path() + ": The EPSG code \"NONSENSE\" is unknown\n");
}

TEST(Checking, ReadsStandardInput) {
    const Outcome outcome = run({"check", "-", "--json"}, CONFIGURATION);
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(nlohmann::json::parse(outcome.output)["file"], "standard input");
}

TEST(Checking, RefusesAnEndlessFile) {
    const Outcome outcome = run({"check", "/dev/zero"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_THAT(outcome.output,
                HasSubstr("/dev/zero:1:1: error: the fragment is malformed: the fragment is larger than "
                          "256 MB\n"));
    EXPECT_EQ(outcome.errors, "crsctl check: /dev/zero: <unspecified file>(1): the fragment is larger than 256 MB\n");
}

// A server would start with this PROJ directory, although it has an error.
TEST(Checking, FailsForAnErrorInTheProjDirectory) {
    const TestSupport::TemporaryDirectory directory;
    directory.write("epsg", "<1> +proj=longlat +nadgrids=no_such_grid <>\n");
    directory.write("epsg-axisorder.csv", "1;en\n");
    const Outcome outcome = run({"check", "--proj-dir", directory.name(), "-"}, "<SRSList/>");
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_THAT(outcome.output, HasSubstr("a server would start; 0 entries, 1 error, 0 warnings\n"));
    EXPECT_EQ(outcome.errors, "crsctl check: standard input: the PROJ directory has errors\n");
}

TEST(Naming, ListsTheRegisteredNames) {
    const TemporaryFile config(CONFIGURATION);
    const Outcome outcome = run({"names", "--config", config.path()});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_THAT(outcome.output, HasSubstr("25832, projected\n"));
    EXPECT_THAT(outcome.output, HasSubstr("  UTM32 "));
}

}  // namespace
}  // namespace crsctl
