#include "CoordinateTransformation/CrsDescriptions.h"

#include <filesystem>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "CoordinateTransformation/Misconfigured.h"
#include "tests/support/Failures.h"
#include "tests/support/GroupingLocale.h"
#include "tests/support/TemporaryDirectory.h"

namespace CoordinateTransformation {
namespace {

using namespace std::string_literals;
using testing::ElementsAre;
using testing::IsEmpty;
using Kind = CrsDescription::Kind;

const std::string HEADER =
    "code,name,kind,area,west,south,east,north,unit,unit_length,datum,datum_id,shift_source,shift_accuracy,"
    "largest_distance,replaced_by\n";
const std::string UTM =
    "25832,ETRS89 / UTM zone 32N,projected,\"Europe between 6\xC2\xB0"
    "E and 12\xC2\xB0"
    "E.\",6,36.53,12.01,84.01,"
    "metre,1,European Terrestrial Reference System 1989 ensemble,EPSG:6258,EPSG:1149,1,0.00,\n";

class CrsDescriptionsTest : public testing::Test {
protected:
    CrsDescriptions read(const std::string& text) const {
        return CrsDescriptions(directory.write("epsg-info.csv", text));
    }
    CrsDescription readLine(const std::string& line) const {
        const CrsDescriptions read = this->read(HEADER + line);
        EXPECT_EQ(read.size(), 1U) << line;
        return *read.begin();
    }
    void expectFailure(const std::string& text, int line, const std::string& fault) const {
        const std::string path = directory.write("epsg-info.csv", text);
        EXPECT_EQ(reportFor(path), "qvConfigurationError: Error in CRS description file \"" + path + "\", line " +
                                       std::to_string(line) + ": " + fault);
    }
    static std::string reportFor(const std::string& path) {
        return TestSupport::reportOf<Misconfigured>([&path] { const CrsDescriptions read(path); });
    }

    const TestSupport::TemporaryDirectory directory;
};

TEST_F(CrsDescriptionsTest, HaveWhatTheirFileHas) {
    const CrsDescription utm = readLine(UTM);
    EXPECT_EQ(utm.code, 25832U);
    EXPECT_EQ(utm.name, "ETRS89 / UTM zone 32N");
    EXPECT_EQ(utm.kind, Kind::PROJECTED);
    EXPECT_EQ(utm.area,
              "Europe between 6\xC2\xB0"
              "E and 12\xC2\xB0"
              "E.");
    ASSERT_TRUE(utm.box);
    EXPECT_EQ(utm.box->west, 6);
    EXPECT_EQ(utm.box->south, 36.53);
    EXPECT_EQ(utm.box->east, 12.01);
    EXPECT_EQ(utm.box->north, 84.01);
    EXPECT_EQ(utm.unit, "metre");
    EXPECT_EQ(utm.unitLength, 1);
    EXPECT_EQ(utm.datum, "European Terrestrial Reference System 1989 ensemble");
    EXPECT_EQ(utm.datumId, "EPSG:6258");
    EXPECT_EQ(utm.shiftSource, "EPSG:1149");
    EXPECT_EQ(utm.shiftAccuracy, 1);
    EXPECT_EQ(utm.largestDistance, 0);
    EXPECT_THAT(utm.replacedBy, IsEmpty());
}

TEST_F(CrsDescriptionsTest, LeaveOpenWhatTheRegistryLeavesOpen) {
    const CrsDescription bare = readLine("7,x,geocentric,,,,,,metre,1,,,,,,\n");
    EXPECT_EQ(bare.kind, Kind::GEOCENTRIC);
    EXPECT_EQ(bare.area + bare.datum + bare.datumId + bare.shiftSource, "");
    EXPECT_FALSE(bare.box || bare.shiftAccuracy || bare.largestDistance);
}

TEST_F(CrsDescriptionsTest, NameTheCodesThatReplaceADeprecatedOne) {
    EXPECT_THAT(readLine("7,x,geographic,,,,,,degree,0.0174532925199433,,,,,,4326 4258\n").replacedBy,
                ElementsAre(4326, 4258));
}

TEST_F(CrsDescriptionsTest, ReadNumbersInAnyLocale) {
    const GroupingLocale grouping;
    const CrsDescription fiji =
        readLine("3460,x,compound,,176.81,-20.81,-178.15,-12.42,link,0.2011684,,,,1234.5,0.25,\n");
    EXPECT_EQ(fiji.box->west, 176.81);
    EXPECT_EQ(fiji.box->east, -178.15);
    EXPECT_EQ(fiji.unitLength, 0.2011684);
    EXPECT_EQ(fiji.shiftAccuracy, 1234.5);
    EXPECT_EQ(fiji.largestDistance, 0.25);
}

TEST_F(CrsDescriptionsTest, AreFoundByTheirCodes) {
    const std::string rest = ",x,geographic,,,,,,degree,0.0174532925199433,,,,,,\n";
    const CrsDescriptions read = this->read(HEADER + "1" + rest + "4326" + rest + "4294967295" + rest);
    EXPECT_EQ(read.size(), 3U);
    std::vector<unsigned int> codes;
    for (const CrsDescription& description : read) codes.push_back(description.code);
    EXPECT_THAT(codes, ElementsAre(1, 4326, 4294967295));
    for (const unsigned int code : codes) EXPECT_EQ(read.find(code)->code, code);
    for (const unsigned int code : {0U, 2U, 4325U, 4327U, 4294967294U}) EXPECT_EQ(read.find(code), nullptr) << code;
}

TEST_F(CrsDescriptionsTest, MayBeNone) {
    for (const CrsDescriptions& none : {CrsDescriptions(), read(HEADER), read(HEADER.substr(0, HEADER.size() - 1))}) {
        EXPECT_EQ(none.size(), 0U);
        EXPECT_EQ(none.begin(), none.end());
        EXPECT_EQ(none.find(4326), nullptr);
    }
}

TEST_F(CrsDescriptionsTest, MayEndTheirLinesInEitherWay) {
    for (const char* lineEnd : {"\n", "\r\n", ""}) {
        std::string text = HEADER + UTM.substr(0, UTM.size() - 1) + lineEnd;
        EXPECT_EQ(read(text).size(), 1U) << text;
    }
}

TEST_F(CrsDescriptionsTest, AreThoseOfTheDirectoryThatIsDelivered) {
    const CrsDescriptions delivered(COORDTRANS_SOURCE_DIR "/data/proj/epsg-info.csv");
    EXPECT_EQ(delivered.size(), 72U);
    EXPECT_EQ(delivered.find(4326)->name, "WGS 84");
    EXPECT_EQ(delivered.find(23030)->datumId, delivered.find(4230)->datumId);
    EXPECT_EQ(delivered.find(27572)->datumId, delivered.find(4275)->datumId);
    EXPECT_EQ(delivered.find(0), nullptr);
}

TEST_F(CrsDescriptionsTest, BeginWithTheNamesOfTheColumns) {
    const std::string fault = "the line does not hold the names of the columns, \"code,name,...\"";
    for (const std::string& text : {""s, "\n"s, UTM, "\xEF\xBB\xBF" + HEADER, " " + HEADER, "code,name\n" + UTM})
        expectFailure(text, 1, fault);
    expectFailure("\"" + HEADER, 1, "a quotation mark is not closed");
}

TEST_F(CrsDescriptionsTest, HaveOneCellForEachColumn) {
    expectFailure(HEADER + UTM + "25833,x\n", 3, "the line has 2 cells instead of 16");
    expectFailure(HEADER + "\n", 2, "the line has 1 cells instead of 16");
    expectFailure(HEADER + UTM + UTM.substr(0, UTM.size() - 1) + ",\n", 3, "a line has too many cells");
    expectFailure(HEADER + UTM + "\"25833,x\n7,x\n", 3, "a quotation mark is not closed");
}

TEST_F(CrsDescriptionsTest, AscendByTheirCodes) {
    expectFailure(HEADER + UTM + UTM, 3, "25832 is not greater than the code of the line before");
    expectFailure(HEADER + UTM + "4326" + UTM.substr(5), 3, "4326 is not greater than the code of the line before");
}

struct BadCell {
    const char* name;
    std::string cells;
    std::string fault;
};

void PrintTo(const BadCell& cell, std::ostream* stream) { *stream << cell.cells; }

class BadCellTest : public CrsDescriptionsTest, public testing::WithParamInterface<BadCell> {};

TEST_P(BadCellTest, IsRefusedByItsColumn) {
    expectFailure(HEADER + "7,x,geographic,,,,,,degree,0.017,,,,,,\n" + GetParam().cells + "\n", 3, GetParam().fault);
}

INSTANTIATE_TEST_SUITE_P(
    All, BadCellTest,
    testing::Values(
        BadCell{"CodeOfLetters", "abc,x,projected,,,,,,metre,1,,,,,,", "code: \"abc\" is not valid"},
        BadCell{"CodeWithABlank", " 8,x,projected,,,,,,metre,1,,,,,,", "code: \" 8\" is not valid"},
        BadCell{"CodeBelowZero", "-8,x,projected,,,,,,metre,1,,,,,,", "code: \"-8\" is not valid"},
        BadCell{"CodeZero", "0,x,projected,,,,,,metre,1,,,,,,", "code: \"0\" is not valid"},
        BadCell{"CodeTooLarge", "4294967296,x,projected,,,,,,metre,1,,,,,,", "code: \"4294967296\" is not valid"},
        BadCell{"NoName", "8,,projected,,,,,,metre,1,,,,,,", "name: \"\" is not valid"},
        BadCell{"NameOfTwoLines", "8,\"x\ny\",projected,,,,,,metre,1,,,,,,", "name: a control character is in it"},
        BadCell{"OtherKind", "8,x,vertical,,,,,,metre,1,,,,,,", "kind: \"vertical\" is not valid"},
        BadCell{"HalfABox", "8,x,projected,,1,2,3,,metre,1,,,,,,", "north: \"\" is not valid"},
        BadCell{"LongitudeBeyondTheAntimeridian", "8,x,projected,,1,2,181,4,metre,1,,,,,,",
                "east: \"181\" is not valid"},
        BadCell{"LatitudeBeyondThePole", "8,x,projected,,1,-91,3,4,metre,1,,,,,,", "south: \"-91\" is not valid"},
        BadCell{"SouthBeyondNorth", "8,x,projected,,1,5,3,4,metre,1,,,,,,", "south: \"5\" is not valid"},
        BadCell{"NumberWithText", "8,x,projected,,1x,2,3,4,metre,1,,,,,,", "west: \"1x\" is not valid"},
        BadCell{"NumberThatIsNone", "8,x,projected,,nan,2,3,4,metre,1,,,,,,", "west: \"nan\" is not valid"},
        BadCell{"NoUnit", "8,x,projected,,,,,,,1,,,,,,", "unit: \"\" is not valid"},
        BadCell{"UnitWithoutLength", "8,x,projected,,,,,,metre,0,,,,,,", "unit_length: \"0\" is not valid"},
        BadCell{"UnitOfInfiniteLength", "8,x,projected,,,,,,metre,1e999,,,,,,", "unit_length: \"1e999\" is not valid"},
        BadCell{"AccuracyBelowZero", "8,x,projected,,,,,,metre,1,,,,-1,,", "shift_accuracy: \"-1\" is not valid"},
        BadCell{"DistanceInWords", "8,x,projected,,,,,,metre,1,,,,,far,", "largest_distance: \"far\" is not valid"},
        BadCell{"ReplacementWithItsAuthority", "8,x,projected,,,,,,metre,1,,,,,,EPSG:4326",
                "replaced_by: \"EPSG:4326\" is not valid"},
        BadCell{"ReplacementsWithTwoBlanks", "8,x,projected,,,,,,metre,1,,,,,,1  2", "replaced_by: \"\" is not valid"}),
    [](const auto& cell) { return std::string(cell.param.name); });

TEST_F(CrsDescriptionsTest, ReportAFileThatCannotBeOpened) {
    const std::string path = directory.file("missing");
    EXPECT_EQ(reportFor(path), "qvConfigurationError: Unable to open CRS description file \"" + path + "\"");
}

// "/proc/self/mem" is a regular file by its type, but no process can read its first byte, not even the administrator's.
TEST_F(CrsDescriptionsTest, ReportAReadThatBreaksOff) {
    const std::string path = directory.makeSymlink("epsg-info.csv", "/proc/self/mem");
    EXPECT_EQ(reportFor(path),
              "qvConfigurationError: Unable to read CRS description file \"" + path + "\": Input/output error");
}

TEST_F(CrsDescriptionsTest, ReportAFileBeyondAllMeasure) {
    const std::string path = directory.write("epsg-info.csv", HEADER);
    std::filesystem::resize_file(path, (std::uintmax_t{256} << 20) + 1);
    EXPECT_EQ(reportFor(path),
              "qvConfigurationError: Unable to read CRS description file \"" + path + "\": it is larger than 256 MB");
}

}  // namespace
}  // namespace CoordinateTransformation
