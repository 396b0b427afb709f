#include "tools/crsctl/NamesCommand.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/CrsctlSession.h"
#include "tests/support/NameTable.h"

namespace crsctl {

using testing::ElementsAreArray;

namespace {

std::vector<std::string> namesOf(const NamesOfCrs& crs) {
    std::vector<std::string> names;
    for (const RegisteredName& name : crs.names) names.push_back(name.name);
    return names;
}

std::string axisOrderOf(const NamesOfCrs& crs, const std::string& wanted) {
    for (const RegisteredName& name : crs.names)
        if (name.name == wanted) return name.axisOrder;
    return "not answered";
}

class Listing : public testing::TestWithParam<const char*> {};

TEST_P(Listing, HasEverySpellingOfACrs) {
    const std::vector<std::string> names = TestSupport::registeredNamesInTable(GetParam());
    const ConfiguredSession session("<CrsConfiguration><CRS>" + names.at(0) + "</CRS></CrsConfiguration>");
    const auto listed = registeredNames(session->config());
    ASSERT_EQ(listed.size(), 1U);
    EXPECT_EQ(listed[0].codeKey, GetParam());
    EXPECT_THAT(namesOf(listed[0]), ElementsAreArray(names));
}

INSTANTIATE_TEST_SUITE_P(CodeKeys, Listing, testing::Values("4326", "27700*5701"));

TEST(TheListOfNames, ListsAliasesUnderTheirCrsWithTheirOwnAxisOrder) {
    const ConfiguredSession session(
        "<CrsConfiguration><CRS>CRS:84</CRS><CRS>25832</CRS><CRS>4326</CRS></CrsConfiguration>");
    const auto listed = registeredNames(session->config());
    ASSERT_EQ(listed.size(), 2U);
    EXPECT_EQ(listed[0].codeKey, "4326");
    EXPECT_EQ(listed[1].codeKey, "25832");
    EXPECT_EQ(axisOrderOf(listed[0], "CRS:84"), "longitude, latitude");
    EXPECT_EQ(axisOrderOf(listed[0], "EPSG:4326"), "latitude, longitude");
    EXPECT_EQ(axisOrderOf(listed[1], "EPSG:25832"), "easting, northing");
}

// "EPSG:4326" has the axis order of the alias. The text form has that of the CRS itself.
TEST(TheListOfNames, HasTheTextFormBesideAnAliasThatEqualsTheIdentifier) {
    const ConfiguredSession session(
        "<CrsConfiguration><CRS mapToEpsgCode='4326' axisOrder='EN'>EPSG:4326</CRS></CrsConfiguration>");
    const auto listed = registeredNames(session->config());
    ASSERT_EQ(listed.size(), 1U);
    EXPECT_EQ(axisOrderOf(listed[0], "EPSG:4326"), "longitude, latitude");
    EXPECT_EQ(axisOrderOf(listed[0], "EPSG:4326;NE;1"), "latitude, longitude");
    EXPECT_EQ(axisOrderOf(listed[0], "4326"), "latitude, longitude");
}

TEST(TheListOfNames, IsEmptyWithoutAConfiguration) {
    const UnconfiguredSession session;
    EXPECT_TRUE(registeredNames(session.config()).empty());
    EXPECT_EQ(asJson(registeredNames(session.config())), Json::array());
}

TEST(TheListOfNames, NamesTheKindOfACrs) {
    const ConfiguredSession session("<CrsConfiguration><CRS>4326</CRS><CRS>25832</CRS></CrsConfiguration>");
    EXPECT_STREQ(registeredNames(session->config()).at(0).kind, "geographic");
    EXPECT_STREQ(registeredNames(session->config()).at(1).kind, "projected");
}

TEST(TheListOfNames, IsWrittenUnderEachCrs) {
    const std::vector<NamesOfCrs> listed = {{"4326", "geographic", {{"A", "latitude, longitude"}}},
                                            {"3857", "projected", {{"BB", "easting, northing"}}}};
    EXPECT_EQ(asText(listed),
              "4326, geographic\n  A  latitude, longitude\n\n3857, projected\n  BB  easting, northing\n");
    EXPECT_EQ(asJson(listed)[1]["names"][0]["name"], "BB");
}

TEST(TheListOfNames, IsWrittenAsJsonWithEveryMember) {
    const std::vector<NamesOfCrs> listed = {
        {"31467*5783", "projected", {{"A", "northing, easting"}, {"B", "easting, northing"}}}};
    EXPECT_EQ(asJson(listed), Json::parse(R"([{"crs": "31467*5783", "kind": "projected", "names": [
        {"name": "A", "axisOrder": "northing, easting"}, {"name": "B", "axisOrder": "easting, northing"}]}])"));
    EXPECT_EQ(asText(std::vector<NamesOfCrs>()), "");
}

TEST(TheListOfNames, AlignsTheNamesOfEachCrsByItself) {
    EXPECT_EQ(asText(std::vector<NamesOfCrs>{{"1", "projected", {{"A", "x"}, {"long", "y"}}},
                                             {"2", "projected", {{"a\nb", "z"}}}}),
              "1, projected\n  A     x\n  long  y\n\n2, projected\n  a\\nb  z\n");
}

TEST(TheCodeKey, HasBothCodesOfACompound) {
    const UnconfiguredSession session;
    EXPECT_EQ(codeKeyOf(*session.createFromName("EPSG:4326", true).get()), "4326");
    EXPECT_EQ(codeKeyOf(*session.createFromName("EPSG:31467*EPSG:5783", true).get()), "31467*5783");
}

class TheNamesCommand : public testing::Test {
protected:
    const TemporaryFile file{"<CrsConfiguration><CRS mapToEpsgCode='25832'>UTM32</CRS></CrsConfiguration>"};
    CommonOptions options = optionsFor();
};

TEST_F(TheNamesCommand, ListsTheNamesOfTheConfiguration) {
    options.configFile = file.path();
    const CommandResult text = namesCommand(options);
    EXPECT_EQ(text.output.rfind("25832, projected\n  ", 0), 0U) << text.output;
    EXPECT_NE(text.output.find("\n  UTM32 "), std::string::npos) << text.output;
    EXPECT_EQ(text.exitCode, EXIT_DONE);
    EXPECT_TRUE(text.notes.empty());
    options.json = true;
    EXPECT_EQ(Json::parse(namesCommand(options).output).at(0)["crs"], "25832");
}

TEST_F(TheNamesCommand, NotesThatNothingIsConfigured) {
    const CommandResult result = namesCommand(options);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.exitCode, EXIT_DONE);
    EXPECT_THAT(result.notes, testing::ElementsAre("without --config no name is registered"));
    options.json = true;
    EXPECT_EQ(namesCommand(options).output, "[]\n");
    options.quiet = true;
    EXPECT_TRUE(namesCommand(options).notes.empty());
}
}  // namespace
}  // namespace crsctl
