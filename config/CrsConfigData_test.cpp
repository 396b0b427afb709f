#include "CoordinateTransformation/CrsConfigData.h"

#include <locale>
#include <sstream>
#include <string>
#include <type_traits>

#include <boost/optional/optional_io.hpp>
#include <boost/property_tree/xml_parser.hpp>
#include <gtest/gtest.h>

#include "tests/support/GroupingLocale.h"

namespace CoordinateTransformation {
namespace {

static_assert(!std::is_polymorphic_v<CrsConfigData>);

using boost::none;
using boost::optional;

CrsConfigData givenEntry(const std::string& xml) {
    std::istringstream stream(xml);
    boost::property_tree::ptree document;
    boost::property_tree::read_xml(stream, document);
    return CrsConfigData(document.front());
}

struct Mapping {
    const char* name;
    const char* mapToEpsgCode;
    const char* identifier;
    const char* alias;
    optional<bool> eastNorth;
};

void PrintTo(const Mapping& mapping, std::ostream* stream) {
    *stream << '"' << mapping.name << "\" to \"" << mapping.mapToEpsgCode << '"';
}

class MappingTest : public testing::TestWithParam<Mapping> {};

TEST_P(MappingTest, GivesIdentifierAliasAndAxisOrder) {
    const CrsConfigData entry(GetParam().name, GetParam().mapToEpsgCode);
    EXPECT_EQ(entry.getIdentifier(), GetParam().identifier);
    EXPECT_EQ(entry.getAlias(), GetParam().alias);
    EXPECT_EQ(entry.getAxisOrderEastNorthOrLonLat(), GetParam().eastNorth);
}

TEST_P(MappingTest, LeavesTheOutputSettingsAlone) {
    const CrsConfigData entry(GetParam().name, GetParam().mapToEpsgCode);
    EXPECT_EQ(entry.getNumberOfDecimalPlaces(), none);
    EXPECT_FALSE(entry.getPreventDoubleCoordinateOutput());
}

INSTANTIATE_TEST_SUITE_P(
    NamesAndMappings, MappingTest,
    testing::Values(Mapping{"CRS:84", "", "EPSG:4326", "CRS:84", true},
                    Mapping{"CRS:84", "4258", "EPSG:4326", "CRS:84", true}, Mapping{"crs:84", "", "crs:84", "", none},
                    Mapping{" CRS:84", "", " CRS:84", "", none}, Mapping{"crs:84", "4326", "EPSG:4326", "crs:84", none},
                    Mapping{"4326", "", "4326", "", none}, Mapping{"epsg:4326", "", "epsg:4326", "", none},
                    Mapping{"EPSG:4326", "", "EPSG:4326", "", none}, Mapping{"", "", "", "", none},
                    Mapping{"MyAlias", "31467", "EPSG:31467", "MyAlias", none},
                    Mapping{"MyAlias", "epsg:31467", "EPSG:31467", "MyAlias", none},
                    Mapping{"MyAlias", " 31467", " 31467", "MyAlias", none},
                    Mapping{"MyAlias", "CRS:84", "CRS:84", "MyAlias", none},
                    Mapping{"MyAlias", "urn:ogc:def:crs:epsg::4326", "URN:OGC:DEF:CRS:EPSG::4326", "MyAlias", none},
                    Mapping{"", "31467", "EPSG:31467", "", none}));

TEST(NameWithoutMappingTest, NeedsNoSecondArgument) {
    EXPECT_EQ(CrsConfigData("epsg:25832").getIdentifier(), "epsg:25832");
    EXPECT_EQ(CrsConfigData("CRS:84").getIdentifier(), "EPSG:4326");
}

struct Element {
    const char* xml;
    const char* identifier;
    const char* alias;
};

void PrintTo(const Element& element, std::ostream* stream) { *stream << element.xml; }

class ElementTest : public testing::TestWithParam<Element> {
protected:
    const CrsConfigData entry = givenEntry(GetParam().xml);
};

TEST_P(ElementTest, GivesIdentifierAndAlias) {
    EXPECT_EQ(entry.getIdentifier(), GetParam().identifier);
    EXPECT_EQ(entry.getAlias(), GetParam().alias);
}

TEST_P(ElementTest, IsMappedByANonEmptyAlias) {
    const std::string alias = GetParam().alias;
    EXPECT_EQ(entry.isMapped(), !alias.empty());
    EXPECT_EQ(entry.getAliasOrIdentifier(), alias.empty() ? GetParam().identifier : alias);
}

INSTANTIATE_TEST_SUITE_P(
    Texts, ElementTest,
    testing::Values(Element{"<CRS>4326</CRS>", "EPSG:4326", ""}, Element{"<CRS>EPSG:4326</CRS>", "EPSG:4326", ""},
                    Element{"<CRS>epsg:4326</CRS>", "EPSG:4326", ""}, Element{"<CRS>crs:84</CRS>", "CRS:84", ""},
                    Element{"<CRS>CRS:84</CRS>", "EPSG:4326", "CRS:84"},
                    Element{"<CRS>urn:ogc:def:crs:epsg::4326</CRS>", "URN:OGC:DEF:CRS:EPSG::4326", ""},
                    Element{"<CRS>27700*5701</CRS>", "EPSG:27700*5701", ""}, Element{"<CRS>9</CRS>", "EPSG:9", ""},
                    Element{"<CRS>-1</CRS>", "-1", ""}, Element{"<CRS></CRS>", "", ""}, Element{"<CRS/>", "", ""},
                    Element{"<SRS>4326</SRS>", "EPSG:4326", ""}, Element{"<AnyName>4326</AnyName>", "EPSG:4326", ""}));

INSTANTIATE_TEST_SUITE_P(
    WhitespaceIsKept, ElementTest,
    testing::Values(Element{"<CRS> 4326</CRS>", " 4326", ""}, Element{"<CRS>4326 </CRS>", "EPSG:4326 ", ""},
                    Element{"<CRS>\n4326\n</CRS>", "\n4326\n", ""},
                    Element{"<CRS>\tepsg:4326</CRS>", "\tEPSG:4326", ""},
                    Element{"<CRS> CRS:84 </CRS>", " CRS:84 ", ""},
                    Element{"<CRS mapToEpsgCode=' 4326'> My Alias </CRS>", " 4326", " My Alias "}));

INSTANTIATE_TEST_SUITE_P(
    Mappings, ElementTest,
    testing::Values(Element{"<CRS mapToEpsgCode='31467'>MyAlias</CRS>", "EPSG:31467", "MyAlias"},
                    Element{"<CRS mapToEpsgCode='epsg:31467'>MyAlias</CRS>", "EPSG:31467", "MyAlias"},
                    Element{"<CRS mapToEpsgCode='EPSG:25832*EPSG:5783'>UTM</CRS>", "EPSG:25832*EPSG:5783", "UTM"},
                    Element{"<CRS mapToEpsgCode='crs:84'>MyAlias</CRS>", "CRS:84", "MyAlias"},
                    Element{"<CRS mapToEpsgCode=''>MyAlias</CRS>", "", "MyAlias"},
                    Element{"<CRS mapToEpsgCode='4326'></CRS>", "EPSG:4326", ""},
                    Element{"<CRS mapToEpsgCode='4326'>4326</CRS>", "EPSG:4326", "4326"},
                    Element{"<CRS maptoepsgcode='31467'>4326</CRS>", "EPSG:4326", ""},
                    Element{"<CRS MapToEpsgCode='31467'>4326</CRS>", "EPSG:4326", ""}));

INSTANTIATE_TEST_SUITE_P(MarkupAroundTheText, ElementTest,
                         testing::Values(Element{"<CRS><!-- WGS 84 -->4326</CRS>", "EPSG:4326", ""},
                                         Element{"<CRS>43<!-- in the middle -->26</CRS>", "EPSG:4326", ""},
                                         Element{"<CRS><![CDATA[epsg:4326]]></CRS>", "EPSG:4326", ""},
                                         Element{"<CRS mapToEpsgCode='4326'>A &amp; B</CRS>", "EPSG:4326", "A & B"},
                                         Element{"<CRS>4326<mapToEpsgCode>31467</mapToEpsgCode></CRS>", "EPSG:4326",
                                                 ""},
                                         Element{"<CRS><Name>31467</Name>4326</CRS>", "EPSG:4326", ""}));

TEST(Crs84Test, IgnoresItsAttributes) {
    const CrsConfigData entry = givenEntry(
        "<CRS mapToEpsgCode='4258' axisOrder='NE' numberOfDecimalPlaces='2' suppressDuplicatCoordinates='true'>"
        "CRS:84</CRS>");
    EXPECT_EQ(entry.getIdentifier(), "EPSG:4326");
    EXPECT_EQ(entry.getAlias(), "CRS:84");
    EXPECT_EQ(entry.getAxisOrderEastNorthOrLonLat(), true);
    EXPECT_EQ(entry.getNumberOfDecimalPlaces(), none);
    EXPECT_FALSE(entry.getPreventDoubleCoordinateOutput());
}

template <typename T>
struct Attribute {
    const char* text;
    optional<T> value;
};

CrsConfigData givenAttribute(const std::string& name, const std::string& text) {
    return givenEntry("<CRS " + name + "=\"" + text + "\">4326</CRS>");
}

TEST(AttributesTest, TakeAnIntegerForTheDecimalPlacesOnly) {
    const Attribute<int> texts[] = {{"0", 0},
                                    {"8", 8},
                                    {"-2", -2},
                                    {"2147483647", 2147483647},
                                    {"abc", none},
                                    {"", none},
                                    {"-2147483648", -2147483647 - 1},
                                    {"3.0", none},
                                    {"3 places", none},
                                    {"1.000", none},
                                    {"0x10", none},
                                    {"2147483648", none}};
    for (const auto& [text, value] : texts)
        EXPECT_EQ(givenAttribute("numberOfDecimalPlaces", text).getNumberOfDecimalPlaces(), value) << text;
}

TEST(AttributesTest, TakeABooleanForTheSuppressionInItsOddSpelling) {
    const Attribute<bool> texts[] = {{"true", true},  {"false", false}, {"1", true},  {"0", false},
                                     {"TRUE", false}, {"yes", false},   {"2", false}, {"", false}};
    for (const auto& [text, value] : texts)
        EXPECT_EQ(givenAttribute("suppressDuplicatCoordinates", text).getPreventDoubleCoordinateOutput(), value)
            << text;
    EXPECT_FALSE(givenAttribute("suppressDuplicateCoordinates", "true").getPreventDoubleCoordinateOutput());
}

TEST(AttributesTest, TakeOneOfTwoWordsForTheAxisOrder) {
    const Attribute<bool> texts[] = {{"EN", true}, {"NE", false}, {"en", none},  {"ne", none},
                                     {"", none},   {" EN", none}, {"ENU", none}, {"true", none}};
    for (const auto& [text, value] : texts)
        EXPECT_EQ(givenAttribute("axisOrder", text).getAxisOrderEastNorthOrLonLat(), value) << text;
}

TEST(AttributesTest, AreReadTogether) {
    const CrsConfigData entry = givenEntry(
        "<CRS axisOrder='NE' suppressDuplicatCoordinates='1' numberOfDecimalPlaces='4' "
        "mapToEpsgCode='25832'>UTM</CRS>");
    EXPECT_EQ(entry.getIdentifier(), "EPSG:25832");
    EXPECT_EQ(entry.getAxisOrderEastNorthOrLonLat(), false);
    EXPECT_EQ(entry.getNumberOfDecimalPlaces(), 4);
    EXPECT_TRUE(entry.getPreventDoubleCoordinateOutput());
}

TEST(AttributesTest, AreAllOptional) {
    const CrsConfigData entry = givenEntry("<CRS>4326</CRS>");
    EXPECT_EQ(entry.getAxisOrderEastNorthOrLonLat(), none);
    EXPECT_EQ(entry.getNumberOfDecimalPlaces(), none);
    EXPECT_FALSE(entry.getPreventDoubleCoordinateOutput());
}

TEST(AttributesTest, AreReadWithoutTheGlobalLocale) {
    const GroupingLocale locale;
    EXPECT_EQ(givenAttribute("numberOfDecimalPlaces", "1234").getNumberOfDecimalPlaces(), 1234);
    EXPECT_EQ(givenAttribute("numberOfDecimalPlaces", "12.34").getNumberOfDecimalPlaces(), none);
    EXPECT_TRUE(givenAttribute("suppressDuplicatCoordinates", "true").getPreventDoubleCoordinateOutput());
}

// A locale with unusual capitals: a umlaut of Latin 1 has one, x has none, and the capital of # is 4.
class OddCapitals : public std::ctype<char> {
protected:
    char do_toupper(char character) const override {
        switch (character) {
            case '\xe4':
                return '\xc4';
            case 'x':
                return 'x';
            case '#':
                return '4';
            default:
                return std::ctype<char>::do_toupper(character);
        }
    }
    const char* do_toupper(char* character, const char* end) const override {
        for (; character != end; ++character) *character = do_toupper(*character);
        return end;
    }
};

class UpperCaseTest : public testing::Test {
protected:
    UpperCaseTest() : previous(std::locale::global(std::locale(std::locale::classic(), new OddCapitals))) {}
    ~UpperCaseTest() override { std::locale::global(previous); }

private:
    std::locale previous;
};

TEST_F(UpperCaseTest, IsThatOfTheGlobalLocale) {
    EXPECT_EQ(givenEntry("<CRS>l\xe4rm-xyz</CRS>").getIdentifier(), "L\xc4RM-xYZ");
    EXPECT_EQ(givenEntry("<CRS mapToEpsgCode='l\xe4rm-xyz'>alias-\xe4</CRS>").getIdentifier(), "L\xc4RM-xYZ");
    EXPECT_EQ(CrsConfigData("alias", "l\xe4rm-xyz").getIdentifier(), "L\xc4RM-xYZ");
}

TEST_F(UpperCaseTest, LeavesAliasesAlone) {
    EXPECT_EQ(givenEntry("<CRS mapToEpsgCode='4326'>alias-\xe4</CRS>").getAlias(), "alias-\xe4");
    EXPECT_EQ(CrsConfigData("alias-\xe4", "4326").getAlias(), "alias-\xe4");
}

TEST_F(UpperCaseTest, PrecedesTheCheckOfTheFirstCharacter) {
    EXPECT_EQ(givenEntry("<CRS>#326</CRS>").getIdentifier(), "EPSG:4326");
}

TEST(UpperCaseInTheClassicLocaleTest, TouchesLettersOfAsciiOnly) {
    EXPECT_EQ(givenEntry("<CRS>l\xe4rm-x#1</CRS>").getIdentifier(), "L\xe4RM-X#1");
}

struct EntryPair {
    const char* behaviour;
    CrsConfigData first;
    CrsConfigData second;
    bool same;
};

void PrintTo(const EntryPair& pair, std::ostream* stream) { *stream << pair.behaviour; }

class SameIdentifierAndAliasTest : public testing::TestWithParam<EntryPair> {};

TEST_P(SameIdentifierAndAliasTest, RequiresBothToBeEqual) {
    EXPECT_EQ(GetParam().first.sameIdentifierOrAliases(GetParam().second), GetParam().same);
    EXPECT_EQ(GetParam().second.sameIdentifierOrAliases(GetParam().first), GetParam().same);
}

INSTANTIATE_TEST_SUITE_P(
    Pairs, SameIdentifierAndAliasTest,
    testing::Values(
        EntryPair{"other decimal places", CrsConfigData("EPSG:4326"),
                  givenEntry("<CRS numberOfDecimalPlaces='3'>4326</CRS>"), true},
        EntryPair{"other axis order and suppression", CrsConfigData("EPSG:4326"),
                  givenEntry("<CRS axisOrder='EN' suppressDuplicatCoordinates='1'>4326</CRS>"), true},
        EntryPair{"mapping written otherwise", CrsConfigData("A", "4326"), CrsConfigData("A", "EPSG:4326"), true},
        EntryPair{"other alias", CrsConfigData("A", "4326"), CrsConfigData("B", "4326"), false},
        EntryPair{"alias in other case", CrsConfigData("A", "4326"), CrsConfigData("a", "4326"), false},
        EntryPair{"other code under the alias", CrsConfigData("A", "4326"), CrsConfigData("A", "4258"), false},
        EntryPair{"with and without alias", CrsConfigData("A", "4326"), CrsConfigData("EPSG:4326"), false},
        EntryPair{"identifier in other case", CrsConfigData("EPSG:4326"), CrsConfigData("epsg:4326"), false},
        EntryPair{"other code", CrsConfigData("EPSG:4326"), CrsConfigData("EPSG:4258"), false}));

TEST(DefaultDecimalPlacesTest, ArePublished) {
    EXPECT_EQ(CrsConfigData::DEFAULT_NUMBER_OF_PLACES_DEGREE, 8);
    EXPECT_EQ(CrsConfigData::DEFAULT_NUMBER_OF_PLACES_METER, 3);
}

}  // namespace
}  // namespace CoordinateTransformation
