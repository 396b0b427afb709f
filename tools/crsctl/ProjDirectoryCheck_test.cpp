#include "tools/crsctl/ProjDirectoryCheck.h"

#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/TemporaryDirectory.h"
#include "tools/common/Text.h"

namespace crsctl {

using Tools::printable;

namespace {

using Parameters = std::vector<std::pair<std::string, std::string>>;

TEST(ANumericParameter, AcceptsTheFormsOfProj) {
    for (const auto& [key, value] : Parameters{{"towgs84", "1,-2.5,+3e-2,0,0,0,0"},
                                               {"x_0", "500000.0"},
                                               {"to_meter", "12/39.37"},
                                               {"lat_0", "52d9'22.178\"N"},
                                               {"lon_0", "-9"},
                                               {"lonc", "90W"},
                                               {"lonc", "90E"},
                                               {"x_0", "1e-999"},
                                               {"ellps", "nan"},
                                               {"pm", "paris"}})
        EXPECT_FALSE(isBrokenNumber(key, value)) << key << "=" << value;
}

TEST(ANumericParameter, RefusesOtherTexts) {
    for (const auto& [key, value] : Parameters{{"towgs84", "nan"},
                                               {"towgs84", "1,2,NaN"},
                                               {"towgs84", "1,,3"},
                                               {"towgs84", ""},
                                               {"x_0", "inf"},
                                               {"x_0", "500km"},
                                               {"k", "O.9996"},
                                               {"a", "1e999"},
                                               {"x_0", "+-5"},
                                               {"to_meter", "1/"},
                                               {"zone", "thirty"},
                                               {"lat_0", "nan"},
                                               {"lon_0", "x9"},
                                               {"lon_0", "9,5"}})
        EXPECT_TRUE(isBrokenNumber(key, value)) << key << "=" << value;
}

std::string inWords(const Findings& findings) {
    constexpr const char* SEVERITIES[] = {"error", "warning", "note"};
    std::string list;
    for (const Finding& finding : findings)
        list += std::string(SEVERITIES[static_cast<int>(finding.severity)]) + " " + finding.place.file +
                std::to_string(finding.place.line) + ": " + finding.text + "\n";
    return list;
}

struct CheckedFile {
    const char* text;
    const char* findings;
};

void PrintTo(const CheckedFile& tried, std::ostream* stream) { *stream << printable(tried.text); }

class AnAxisOrderFile : public testing::TestWithParam<CheckedFile> {};

TEST_P(AnAxisOrderFile, HasTheseFindings) { EXPECT_EQ(inWords(checkAxisOrders(GetParam().text)), GetParam().findings); }

INSTANTIATE_TEST_SUITE_P(
    Lines, AnAxisOrderFile,
    testing::Values(CheckedFile{"", ""}, CheckedFile{"4326;ne\n3857;en\r\n4326;ne;\n 4326 ; ne \n", ""},
                    CheckedFile{"4326;ne\n3857;en", "warning 2: not read, because the line end is missing: 3857;en\n"},
                    CheckedFile{"4326;ne", "warning 1: not read, because the line end is missing: 4326;ne\n"},
                    CheckedFile{"4326;ne\n3857;en\n4326;en\n+04326;en\n",
                                "warning 3: ignored: 4326 has the axis order ne of line 1\n"
                                "warning 4: ignored: 4326 has the axis order ne of line 1\n"}));

class AnInitFile : public testing::TestWithParam<CheckedFile> {};

TEST_P(AnInitFile, HasTheseFindings) {
    const auto exists = [](const std::string& grid) { return grid == "there.gsb"; };
    EXPECT_EQ(inWords(checkDefinitions(GetParam().text, exists)), GetParam().findings);
}

INSTANTIATE_TEST_SUITE_P(
    Codes, AnInitFile,
    testing::Values(CheckedFile{"", ""},
                    CheckedFile{"<1> +proj=longlat +ellps=bessel <>\n<2> +proj=longlat +ellps=bessel <>\n", ""},
                    CheckedFile{"<1> +proj=utm +zone=32 <>\n# again\n<1> +proj=utm  +zone = 32 # alike\n<>\n", ""},
                    CheckedFile{"<1> +proj=utm +zone=32 <>\n\n<1> +proj=utm +zone=33 +x_0=nan <>\n",
                                "warning 3: ignored: 1 is defined differently in line 1\n"}));

INSTANTIATE_TEST_SUITE_P(
    Grids, AnInitFile,
    testing::Values(CheckedFile{"<1> +proj=longlat +nadgrids=there.gsb,@there.gsb,null,@null <>\n", ""},
                    CheckedFile{"<1> +proj=longlat +nadgrids=there.gsb,gone.gsb <>\n",
                                "error 1: 1: the grid file gone.gsb is missing\n"},
                    CheckedFile{"<1> +proj=longlat +nadgrids=@gone.gsb <>\n<2> +proj=longlat +geoidgrids=gone.gtx <>\n",
                                "note 1: 1: the grid file gone.gsb is missing, but not required\n"
                                "error 2: 2: the grid file gone.gtx is missing\n"},
                    CheckedFile{"<1> +nadgrids=g <>\n<2> +nadgrids=g <>\n<3> +nadgrids=@g <>\n<4> +geoidgrids=g <>\n",
                                "error 1: 1 and 2 more: the grid file g is missing\n"
                                "note 3: 3: the grid file g is missing, but not required\n"}));

INSTANTIATE_TEST_SUITE_P(
    Numbers, AnInitFile,
    testing::Values(CheckedFile{"<1> +proj=longlat +towgs84=1,2,3 +lat_0=10d30'N +to_meter=1/3 +pm=paris <>\n", ""},
                    CheckedFile{"\n<1> +proj=longlat\n+towgs84=nan <>\n", "error 2: 1: +towgs84=nan is not a number\n"},
                    CheckedFile{"<1> +zone= +lat_0=5 <>\n", "error 1: 1: +zone= is not a number\n"},
                    CheckedFile{"<1> +proj=utm +zone=x +k=1,5 <>\n",
                                "error 1: 1: +zone=x is not a number\nerror 1: 1: +k=1,5 is not a number\n"}));

TEST(AProjDirectory, IsCheckedFileByFile) {
    const TestSupport::TemporaryDirectory directory;
    directory.write("here.gsb", "");
    directory.write("epsg", "<1> +proj=longlat +nadgrids=here.gsb,no_such_grid.gsb <>\n");
    directory.write("epsg-axisorder.csv", "1;en");
    EXPECT_EQ(inWords(checkProjDirectory(directory.name())),
              "error " + directory.name() + "/epsg1: 1: the grid file no_such_grid.gsb is missing\n" + "warning " +
                  directory.name() + "/epsg-axisorder.csv1: not read, because the line end is missing: 1;en\n");
}

TEST(TheDeliveredProjDirectory, HasNoFindings) {
    EXPECT_EQ(inWords(checkProjDirectory(COORDTRANS_SOURCE_DIR "/data/proj")), "");
}

}  // namespace
}  // namespace crsctl
