#include "tools/crsctl/FragmentCheck.h"

#include <ostream>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include "tools/common/Text.h"

namespace crsctl {

using CoordinateTransformation::CrsConfig;
using CoordinateTransformation::CrsConfigData;
using Tools::printable;

namespace {

CheckedFragment fragmentOf(const std::string& text) {
    CrsConfig config;
    return checkFragment(text, config);
}

std::string findingsIn(const CheckedFragment& fragment) {
    std::string list;
    for (const Finding& finding : fragment.findings) {
        EXPECT_EQ(finding.severity, Severity::WARNING);
        list += std::to_string(finding.place.line) + ": " + finding.text + "\n";
    }
    return list;
}

struct Content {
    const char* text;  // of <CrsConfiguration>, from line 2 on
    const char* findings;
};

void PrintTo(const Content& tried, std::ostream* stream) { *stream << printable(tried.text); }

class AContainer : public testing::TestWithParam<Content> {};

TEST_P(AContainer, HasTheseFindings) {
    const CheckedFragment fragment =
        fragmentOf(std::string("<CrsConfiguration>\n") + GetParam().text + "\n</CrsConfiguration>");
    EXPECT_EQ(fragment.failure, "");
    EXPECT_EQ(findingsIn(fragment), GetParam().findings);
}

INSTANTIATE_TEST_SUITE_P(
    WithoutFault, AContainer,
    testing::Values(Content{"", ""}, Content{"<!-- <CRS>1</CRS> -->", ""}, Content{"<CRS>4326<!-- a --></CRS>", ""},
                    Content{"<CRS>4326</CRS><CRS>CRS:84</CRS>", ""}, Content{"<CRS>nonsense</CRS>", ""},
                    Content{"<CRS mapToEpsgCode='25832'>A</CRS><CRS mapToEpsgCode='25832'>B</CRS>", ""},
                    Content{"<CRS mapToEpsgCode='25832' axisOrder='NE'>A</CRS>", ""},
                    Content{"<CRS suppressDuplicatCoordinates='0' numberOfDecimalPlaces='18'>4326</CRS>", ""},
                    Content{"<CRS suppressDuplicatCoordinates='true' numberOfDecimalPlaces='0'>4326</CRS>", ""}));

INSTANTIATE_TEST_SUITE_P(
    WithSettingsThatAreIgnored, AContainer,
    testing::Values(
        Content{"<CRS numberOfDecimalPlaces='abc'>4326</CRS>",
                "2: numberOfDecimalPlaces=\"abc\" is ignored: it is not an integer\n"},
        Content{"<CRS numberOfDecimalPlaces='-2'>4326</CRS>",
                "2: numberOfDecimalPlaces=\"-2\" is out of range: 0 to 18 places can be written\n"},
        Content{"<CRS numberOfDecimalPlaces='19'>4326</CRS>",
                "2: numberOfDecimalPlaces=\"19\" is out of range: 0 to 18 places can be written\n"},
        Content{"<CRS axisOrder='EN' axisOrder='NE' mapToEpsgCode='4326'>A</CRS>",
                "2: the second attribute axisOrder is ignored\n"},
        Content{"<CRS suppressDuplicatCoordinates='yes'>4326</CRS>",
                "2: suppressDuplicatCoordinates=\"yes\" is ignored: neither true, false, 1 nor 0\n"},
        Content{"<CRS suppressDuplicateCoordinates='true'>4326</CRS>",
                "2: attribute suppressDuplicateCoordinates is ignored: it is spelled "
                "suppressDuplicatCoordinates\n"},
        Content{"<CRS AxisOrder='EN' colour='red'>4326</CRS>",
                "2: attribute AxisOrder is ignored: it is spelled axisOrder\n"
                "2: attribute colour is ignored\n"},
        Content{"<CRS axisOrder='en' mapToEpsgCode='4326'>A</CRS>",
                "2: axisOrder=\"en\" is ignored: neither EN nor NE\n"},
        Content{"<CRS axisOrder='EN'>4326</CRS>",
                "2: axisOrder=\"EN\" has no effect: it applies to an alias, and an entry without mapToEpsgCode "
                "has none\n"},
        Content{"<CRS axisOrder='NE' mapToEpsgCode='4258'>CRS:84</CRS>",
                "2: attribute axisOrder is ignored: the entry CRS:84 takes no attributes\n"
                "2: attribute mapToEpsgCode is ignored: the entry CRS:84 takes no attributes\n"},
        Content{"<CRS mapToEpsgCode='4326'></CRS>", "2: mapToEpsgCode without a text: the entry has no alias\n"},
        Content{"<CRS> 4326</CRS>", "2: blanks around \" 4326\" are part of the identifier\n"},
        Content{"<CRS mapToEpsgCode='4326 '>A</CRS>", "2: mapToEpsgCode=\"4326 \" has blanks around its code\n"},
        Content{"<CRS mapToEpsgCode='4326'> A</CRS>", "2: blanks around \" A\" are part of the alias\n"},
        Content{"<CRS>4326<b/></CRS>", "2: elements inside an entry are ignored\n"}));

INSTANTIATE_TEST_SUITE_P(WithElementsThatAreIgnored, AContainer,
                         testing::Values(Content{"<SRS>4326</SRS>\n<crs>4326</crs>",
                                                 "2: ignored: entries of CrsConfiguration are called CRS\n"
                                                 "3: ignored: entries of CrsConfiguration are called CRS\n"},
                                         Content{"<Group><CRS>4326</CRS></Group>\n<SRS/>",
                                                 "2: ignored: entries of CrsConfiguration are called CRS\n"
                                                 "3: ignored: entries of CrsConfiguration are called CRS\n"},
                                         Content{"4326", "1: text outside its entries is ignored\n"}));

INSTANTIATE_TEST_SUITE_P(
    WithRepetitions, AContainer,
    testing::Values(Content{"<CRS>4326</CRS>\n<CRS>EPSG:4326</CRS>", "3: dropped: repeats EPSG:4326 of line 2\n"},
                    Content{"<CRS>4326</CRS>\n<CRS numberOfDecimalPlaces='3'>4326</CRS>",
                            "3: dropped: repeats EPSG:4326 of line 2, and its other settings are lost\n"}));

TEST(ASecondContainer, IsIgnoredWithItsEntries) {
    const CheckedFragment fragment = fragmentOf(
        "<CrsConfiguration><CRS>4326</CRS></CrsConfiguration>\n<CrsConfiguration "
        "x='1'><CRS>1</CRS></CrsConfiguration>\n"
        "<SRSList y='2'>\n<CRS>4326</CRS></SRSList>");
    EXPECT_EQ(findingsIn(fragment),
              "2: ignored with all its entries: only the first CrsConfiguration is read\n"
              "3: attribute y is ignored: a container has none\n"
              "4: ignored: entries of SRSList are called EPSGCode or SRS\n");
    EXPECT_EQ(fragment.entries.size(), 1U);
}

TEST(AnUnknownContainer, IsIgnored) {
    const CheckedFragment fragment = fragmentOf("<Configuration><CRS>4326</CRS></Configuration>\n<SRSList/>");
    EXPECT_EQ(findingsIn(fragment), "1: ignored: only CrsConfiguration and SRSList are read at this level\n");
}

struct Malformed {
    std::string fragment;
    const char* finding;  // "line:column: text"
    const char* failure;
};

void PrintTo(const Malformed& tried, std::ostream* stream) { *stream << printable(tried.fragment); }

class AMalformedFragment : public testing::TestWithParam<Malformed> {};

TEST_P(AMalformedFragment, IsReportedWithItsPlace) {
    const CheckedFragment fragment = fragmentOf(GetParam().fragment);
    EXPECT_EQ(fragment.failure, GetParam().failure);
    ASSERT_EQ(fragment.findings.size(), 1U);
    const Finding& finding = fragment.findings.front();
    EXPECT_EQ(finding.severity, Severity::ERROR);
    EXPECT_EQ(std::to_string(finding.place.line) + ":" + std::to_string(finding.place.column) + ": " + finding.text,
              std::string(GetParam().finding));
}

std::string nested(std::size_t depth) {
    std::string elements;
    for (std::size_t i = 0; i < depth; ++i) elements += "<a>";
    return elements;
}

INSTANTIATE_TEST_SUITE_P(
    Faults, AMalformedFragment,
    testing::Values(
        Malformed{"<CrsConfiguration>\n<CRS>4326\n</CrsConfiguration>",
                  "3:1: the fragment is malformed: end tag </CrsConfiguration> does not match <CRS> of line 2",
                  "<unspecified file>(3): unexpected end of data"},
        Malformed{"<SRSList>\n <SRS>4326</CRS></SRSList>",
                  "2:11: the fragment is malformed: end tag </CRS> does not match <SRS> of line 2",
                  "<unspecified file>(2): end tag </CRS> does not match <SRS> of line 2"},
        Malformed{"<SRSList>\n <SRS>A&B</SRS></SRSList>",
                  "2:8: the fragment is malformed: an & does not begin an entity; write &amp;",
                  "<unspecified file>(2): an & does not begin an entity; write &amp;"},
        Malformed{std::string("<SRSList/>\n\0", 12), "2:1: the fragment is malformed: the text has a NUL byte",
                  "<unspecified file>(2): the text has a NUL byte"},
        Malformed{"<SRSList>\n" + nested(300),
                  "2:766: the fragment is malformed: elements are nested more than 256 deep",
                  "<unspecified file>(2): elements are nested more than 256 deep"}));

TEST(Entries, AreAddedAsByTheLibrary) {
    const std::string text =
        "<SRSList><SRS>3857</SRS><EPSGCode>25832</EPSGCode><SRS>3857</SRS></SRSList><SRSList><SRS>1</SRS></SRSList>"
        "<a/><CrsConfiguration><SRS>2</SRS><CRS mapToEpsgCode='4326'>A</CRS><CRS>CRS:84</CRS></CrsConfiguration>";
    CrsConfig checked;
    const CheckedFragment fragment = checkFragment(text, checked);
    CrsConfig configured;
    std::istringstream document(text);
    configured.configure(document);
    ASSERT_EQ(checked.getConfiguredCrs()->size(), 4U);
    ASSERT_EQ(configured.getConfiguredCrs()->size(), 4U);
    ASSERT_EQ(fragment.entries.size(), 4U);
    auto entry = fragment.entries.begin();
    auto added = checked.getConfiguredCrs()->begin();
    for (const CrsConfigData& expected : *configured.getConfiguredCrs()) {
        EXPECT_TRUE(expected.sameIdentifierOrAliases(entry++->data));
        EXPECT_TRUE(expected.sameIdentifierOrAliases(*added++));
    }
}

TEST(Entries, HaveTheirPlaces) {
    const CheckedFragment fragment = fragmentOf(
        "<a><b/></a>\n<SRSList> <SRS>1</SRS>\n</SRSList><CrsConfiguration>\n\n  <CRS>2</CRS></CrsConfiguration>");
    ASSERT_EQ(fragment.entries.size(), 2U);
    EXPECT_EQ(fragment.entries[0].place.line, 5U);
    EXPECT_EQ(fragment.entries[0].place.column, 3U);
    EXPECT_EQ(fragment.entries[0].place.element, "CRS");
    EXPECT_EQ(fragment.entries[1].place.line, 2U);
    EXPECT_EQ(fragment.entries[1].place.column, 11U);
    EXPECT_EQ(fragment.entries[1].place.element, "SRS");
}

}  // namespace
}  // namespace crsctl
