#include "tools/projdir/CodeList.h"

#include <sstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace ProjDir {
namespace {

using testing::ElementsAre;

std::vector<unsigned int> readCodes(const std::string& text) {
    std::istringstream lines(text);
    std::vector<unsigned int> codes;
    for (const ListedCode& listed : readCodeList(lines, "list")) codes.push_back(listed.code);
    return codes;
}

std::string refusalOf(const std::string& text) {
    try {
        readCodes(text);
    } catch (const CodeListError& refusal) {
        return refusal.what();
    }
    return "accepted";
}

TEST(CodeListTest, ReadsACodeALine) {
    EXPECT_THAT(readCodes("4326\n25832\n"), ElementsAre(4326, 25832));
    EXPECT_THAT(readCodes("4326"), ElementsAre(4326));
    EXPECT_THAT(readCodes(" EPSG:4326 # WGS 84\r\n\n# nothing\n\t25832\n"), ElementsAre(4326, 25832));
}

std::vector<unsigned int> readConfiguration(const std::string& entries) {
    std::vector<unsigned int> codes;
    for (const ListedCode& listed :
         readConfigurationCodes("<CrsConfiguration>" + entries + "</CrsConfiguration>", "crs.xml"))
        codes.push_back(listed.code);
    return codes;
}

TEST(CodeListTest, ReadsTheCodesOfAConfiguration) {
    EXPECT_THAT(readConfiguration("<CRS>4326</CRS><CRS>EPSG:27700*EPSG:5701</CRS><CRS>CRS:84</CRS>"
                                  "<CRS mapToEpsgCode=\"25832\">Lagestatus 489</CRS>"),
                ElementsAre(4326, 27700, 4326, 25832));
    EXPECT_EQ(readConfigurationCodes("<SRSList><SRS>2056</SRS></SRSList>", "crs.xml").front().place,
              "crs.xml, entry EPSG:2056");
}

TEST(CodeListTest, RefusesWhatIsNoConfiguration) {
    EXPECT_THROW(readConfiguration(""), CodeListError);
    EXPECT_THROW(readConfiguration("<CRS>nonsense</CRS>"), CodeListError);
    EXPECT_THROW(readConfiguration("<CRS>4326"), CodeListError);
}

struct RefusedList {
    const char* text;
    const char* message;
};

class RefusedListTest : public testing::TestWithParam<RefusedList> {};

TEST_P(RefusedListTest, NamesLineAndText) { EXPECT_EQ(refusalOf(GetParam().text), GetParam().message); }

INSTANTIATE_TEST_SUITE_P(
    Texts, RefusedListTest,
    testing::Values(RefusedList{"4326\nabc\n", "list, line 2: \"abc\" is not an EPSG code"},
                    RefusedList{"4326;en\n", "list, line 1: \"4326;en\" is not an EPSG code"},
                    RefusedList{"-1\n", "list, line 1: \"-1\" is not an EPSG code"},
                    RefusedList{"4326 25832\n", "list, line 1: \"4326 25832\" is not an EPSG code"},
                    RefusedList{"EPSG:\n", "list, line 1: \"EPSG:\" is not an EPSG code"},
                    RefusedList{"99999999999\n", "list, line 1: \"99999999999\" is not an EPSG code"},
                    RefusedList{"", "list names no code"}, RefusedList{"# only this\n", "list names no code"}));

RegistryCrs makeCrs(unsigned int code, bool isDeprecated) {
    RegistryCrs crs;
    crs.code = code;
    crs.isDeprecated = isDeprecated;
    return crs;
}

const std::vector<RegistryCrs> REGISTRY = {makeCrs(10, false), makeCrs(20, true), makeCrs(30, false)};

std::vector<unsigned int> codesOf(const std::vector<RegistryCrs>& list) {
    std::vector<unsigned int> codes;
    for (const RegistryCrs& crs : list) codes.push_back(crs.code);
    return codes;
}

TEST(CodeSelectionTest, KeepsTheOrderOfTheRegistry) {
    EXPECT_THAT(codesOf(selectListed(REGISTRY, {{30, ""}, {10, ""}, {30, ""}}, false)), ElementsAre(10, 30));
}

TEST(CodeSelectionTest, TakesWhatOverlaps) {
    std::vector<RegistryCrs> list = REGISTRY;
    list[0].area = Area{0, 0, 10, 10};
    list[1].area = Area{20, 20, 30, 30};
    EXPECT_THAT(codesOf(selectOverlapping(list, {5, 5, 6, 6})), ElementsAre(10));
}

TEST(CodeSelectionTest, TakesWhatIsInBothLists) {
    EXPECT_THAT(
        codesOf(selectCommon({makeCrs(10, false), makeCrs(20, false)}, {makeCrs(20, false), makeCrs(30, false)})),
        ElementsAre(20));
}

TEST(CodeSelectionTest, TakesDeprecatedOnesOnlyWhenAdmitted) {
    EXPECT_THAT(codesOf(selectAll(REGISTRY, false)), ElementsAre(10, 30));
    EXPECT_THAT(codesOf(selectAll(REGISTRY, true)), ElementsAre(10, 20, 30));
    EXPECT_THAT(codesOf(selectListed(REGISTRY, {{20, ""}}, true)), ElementsAre(20));
}

TEST(CodeSelectionTest, NamesACodeThatIsUnknownOrDeprecated) {
    const auto refusal = [](unsigned int code) -> std::string {
        try {
            selectListed(REGISTRY, {{code, "list, line 7"}}, false);
        } catch (const CodeListError& failure) {
            return failure.what();
        }
        return "accepted";
    };
    EXPECT_EQ(refusal(15), "list, line 7: the registry has no CRS EPSG:15");
    EXPECT_EQ(refusal(99), "list, line 7: the registry has no CRS EPSG:99");
    EXPECT_EQ(refusal(20), "list, line 7: EPSG:20 is deprecated; --include-deprecated admits it");
}

}  // namespace
}  // namespace ProjDir
