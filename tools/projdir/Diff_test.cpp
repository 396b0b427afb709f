#include "tools/projdir/Diff.h"

#include <cmath>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "tests/support/TemporaryDirectory.h"
#include "tools/projdir/Commands.h"

namespace ProjDir {
namespace {

using nlohmann::json;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;

constexpr char INFO_HEADER[] =
    "code,name,kind,area,west,south,east,north,unit,unit_length,datum,datum_id,shift_source,shift_accuracy,"
    "largest_distance,replaced_by\n";

class DirectoryDiffTest : public testing::Test {
protected:
    std::string make(const std::string& name, const std::string& definitions, const std::string& axisOrders) const {
        work.makeDirectory(name);
        work.write(name + "/epsg", definitions);
        work.write(name + "/epsg-axisorder.csv", axisOrders);
        return work.file(name);
    }

    // For EPSG:23030 with its area in the registry.
    EntryChange measure(const std::string& before, const std::string& after) const {
        DirectoryDiff diff;
        diff.changed.push_back({23030, {before, "en"}, {after, "en"}, {}, {}});
        measureChanges(diff, {{23030, {"", Area{-6, 35, 0, 60}}}});
        return diff.changed.front();
    }

    int runDiff(const std::string& before, const std::string& after, bool asJson = false) {
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        const int exitCode = diffDirectories({before, after, asJson});
        output = testing::internal::GetCapturedStdout();
        error = testing::internal::GetCapturedStderr();
        return exitCode;
    }

    const TestSupport::TemporaryDirectory work;
    std::string output;
    std::string error;
};

constexpr char UTM_30[] = "+proj=utm +zone=30 +ellps=intl +towgs84=-87,-98,-121,0,0,0,0 +units=m +no_defs";

TEST_F(DirectoryDiffTest, ReadsADirectoryAsTheLibraryDoes) {
    const DirectoryContent content = readDirectory(make(
        "a", "# Registry 1\n<1> +proj=longlat # comment\n <>\n<2> +proj=merc <>\n<1> +proj=utm <>\n<x> +proj=merc <>\n",
        "2;ne\n2;en\n3;en\n1;en"));
    EXPECT_EQ(content.head, "Registry 1");
    ASSERT_EQ(content.entries.size(), 2U);
    EXPECT_EQ(content.entries.at(1).definition, "+proj=longlat");
    EXPECT_EQ(content.entries.at(1).axisOrder, "");
    EXPECT_EQ(content.entries.at(2).axisOrder, "ne");
}

TEST_F(DirectoryDiffTest, NamesAFileThatCannotBeRead) {
    work.makeDirectory("empty");
    try {
        readDirectory(work.file("empty"));
        FAIL();
    } catch (const FileError& failure) {
        EXPECT_THAT(failure.what(), HasSubstr(work.file("empty/epsg")));
    }
}

TEST_F(DirectoryDiffTest, ListsCodesThatCameWentAndChanged) {
    const DirectoryContent before{
        "", "", {{1, {"+a", "en"}}, {2, {"+b +c=1", "en"}}, {3, {"+a", "en"}}, {4, {"+a", "en"}}}};
    const DirectoryContent after{
        "", "", {{2, {" +c=1  +b ", "en"}}, {3, {"+b", "en"}}, {4, {"+a", "ne"}}, {5, {"+a", "en"}}}};
    const DirectoryDiff diff = compareEntries(before, after);
    EXPECT_THAT(diff.gone, ElementsAre(1U));
    EXPECT_THAT(diff.added, ElementsAre(5U));
    ASSERT_EQ(diff.changed.size(), 2U);
    EXPECT_EQ(diff.changed[0].code, 3U);
    EXPECT_EQ(diff.changed[1].code, 4U);
    EXPECT_EQ(diff.same, 1U);
    EXPECT_TRUE(compareEntries(before, before).isEmpty());
}

// Three metres along the first geocentric axis, which near the meridian of Greenwich is up and south.
TEST_F(DirectoryDiffTest, MeasuresAChangedShift) {
    const EntryChange change =
        measure(UTM_30, "+proj=utm +zone=30 +ellps=intl +towgs84=-84,-98,-121,0,0,0,0 +units=m +no_defs");
    EXPECT_NEAR(change.distance.value(), 3 * std::sin(60 / 57.29577951), 0.05);
}

TEST_F(DirectoryDiffTest, MeasuresAChangedProjection) {
    EXPECT_NEAR(measure("+proj=utm +zone=30 +datum=WGS84", "+proj=tmerc +lon_0=-3 +k=0.9996 +x_0=500002 +datum=WGS84")
                    .distance.value(),
                2, 0.01);
    EXPECT_NEAR(measure("+proj=geocent +datum=WGS84", "+proj=geocent +datum=WGS84 +no_defs").distance.value(), 0, 1e-6);
}

// The identifier only affects conversions to other CRS on the datum.
TEST_F(DirectoryDiffTest, FindsNoDistanceWhereOnlyTheDatumIsNamed) {
    EXPECT_NEAR(measure(UTM_30, UTM_30 + std::string(" +datum_id=EPSG:6230")).distance.value(), 0, 1e-6);
}

TEST_F(DirectoryDiffTest, ReportsADefinitionThatPROJRefuses) {
    const EntryChange change = measure(UTM_30, "+proj=nonsense");
    EXPECT_FALSE(change.distance);
    EXPECT_NE(change.failure, "");
}

TEST_F(DirectoryDiffTest, HasNoDistanceWithoutAnArea) {
    DirectoryDiff diff;
    diff.changed.push_back({1, {UTM_30, "en"}, {"+proj=longlat", "en"}, {}, {}});
    measureChanges(diff, {});
    EXPECT_FALSE(diff.changed.front().distance);
    EXPECT_EQ(diff.changed.front().failure, "");
}

TEST_F(DirectoryDiffTest, TakesNamesAndAreasOfTheNewDirectoryBeforeTheRegistrys) {
    const std::string directory = make("a", "", "");
    work.write("a/epsg-info.csv", std::string(INFO_HEADER) + "23030,\"Mine, own\",projected,,1,2,3,4,metre,1,,,,,,\n");
    const auto known = describeCodes(directory, {23030, 4326});
    EXPECT_EQ(known.at(23030).name, "Mine, own");
    EXPECT_EQ(known.at(23030).area->east, 3);
    EXPECT_EQ(known.at(4326).name, "WGS 84");
    EXPECT_EQ(describeCodes(directory, {23030}).size(), 1U);
}

TEST_F(DirectoryDiffTest, ComparesTwoDirectories) {
    const std::string before = make(
        "a", "# Old\n<4326> +proj=longlat +datum=WGS84 <>\n<23030> " + std::string(UTM_30) + " <>\n<7> +proj=merc <>\n",
        "4326;ne\n23030;en\n");
    const std::string after =
        make("b",
             "# New\n<4326> +proj=longlat +datum=WGS84 <>\n<23030> +proj=utm +zone=30 +ellps=intl "
             "+towgs84=-84,-98,-121,0,0,0,0 +units=m +no_defs <>\n<25832> +proj=utm +zone=32 +ellps=GRS80 <>\n",
             "4326;ne\n23030;ne\n25832;en\n");
    // At the north-western corner three metres along the first geocentric axis are 0.31 eastwards and 2.94 southwards.
    work.write("b/epsg-info.csv", std::string(INFO_HEADER) + "23030,Zone 30,projected,,-6,35,0,80,metre,1,,,,,,\n");
    EXPECT_EQ(runDiff(before, after), 1);
    EXPECT_EQ(error, "");
    EXPECT_EQ(output, "old " + before + ": 3 definitions; Old\nnew " + after +
                          ": 3 definitions; New\n"
                          "\nadded: 1\n  EPSG:25832 ETRS89 / UTM zone 32N\n\ngone: 1\n  EPSG:7\n\nchanged: 1\n"
                          "         2.955 m  EPSG:23030 Zone 30\n"
                          "      - +towgs84=-87,-98,-121,0,0,0,0; axis order en\n"
                          "      + +towgs84=-84,-98,-121,0,0,0,0; axis order ne\n\nthe same: 1\n");
    EXPECT_EQ(runDiff(after, after), 0);
    EXPECT_THAT(output, HasSubstr("changed: 0\n\nthe same: 3\n"));
}

TEST_F(DirectoryDiffTest, WritesJson) {
    const std::string before = make("a", "<4326> +proj=longlat +datum=WGS84 <>\n<9> +proj=longlat <>\n", "4326;ne\n");
    const std::string after =
        make("b", "<4326> +proj=longlat +datum=WGS84 +no_defs <>\n<10> +proj=longlat <>\n", "4326;ne\n");
    EXPECT_EQ(runDiff(before, after, true), 1);
    const json diff = json::parse(output);
    EXPECT_EQ(diff["old"]["definitions"], 2);
    EXPECT_EQ(diff["added"], json::parse(R"([{"code": 10, "name": ""}])"));
    EXPECT_EQ(diff["gone"][0]["code"], 9);
    EXPECT_EQ(diff["changed"][0]["name"], "WGS 84");
    EXPECT_NEAR(diff["changed"][0]["distance"].get<double>(), 0, 1e-6);
    EXPECT_EQ(diff["changed"][0]["old"],
              json::parse(R"({"definition": "+proj=longlat +datum=WGS84", "axis_order": "ne"})"));
    EXPECT_EQ(diff["same"], 0);
}

TEST_F(DirectoryDiffTest, FailsForADirectoryThatIsNotThere) {
    EXPECT_EQ(runDiff(work.file("none"), work.file("none")), 2);
    EXPECT_EQ(output, "");
    EXPECT_THAT(error, AllOf(testing::StartsWith("crs-projdir diff: cannot read \""), HasSubstr("none/epsg")));
}

}  // namespace
}  // namespace ProjDir
