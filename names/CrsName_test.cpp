#include "names/CrsName.h"

#include <cstddef>
#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <vector>

namespace CoordinateTransformation {
namespace {

using namespace std::string_literals;

constexpr std::size_t MEGABYTE = 1 << 20;

const NameTexts* textsOf(const ParsedName& parsed) { return std::get_if<NameTexts>(&parsed); }

// Of a name with one code.
std::optional<std::string> codeOf(const ParsedName& parsed) {
    const NameTexts* const texts = textsOf(parsed);
    return texts == nullptr || texts->second ? std::nullopt : std::optional(texts->first.text);
}

struct EpsgName {
    std::string name;
    std::string firstCode;
    std::optional<std::string> secondCode;
};

void expectParsed(const EpsgName& expected) {
    SCOPED_TRACE(expected.name.substr(0, 40));
    const ParsedName parsed = parseEpsgName(expected.name);
    const NameTexts* const texts = textsOf(parsed);
    ASSERT_NE(texts, nullptr);
    EXPECT_EQ(texts->first.text, expected.firstCode);
    ASSERT_EQ(texts->second.has_value(), expected.secondCode.has_value());
    EXPECT_EQ(texts->second ? texts->second->text : "", expected.secondCode.value_or(""));
}

TEST(EpsgNameTest, ReadsASingleCode) {
    const EpsgName accepted[] = {
        {"EPSG:4326", "4326", std::nullopt},
        {"4326", "4326", std::nullopt},
        {"EPSG:", "", std::nullopt},
        {"", "", std::nullopt},
    };
    for (const EpsgName& name : accepted) expectParsed(name);
}

TEST(EpsgNameTest, ReadsACompoundWithItsPrefixTwiceOrNotAtAll) {
    const EpsgName accepted[] = {
        {"EPSG:27700*EPSG:5701", "27700", "5701"},
        {"27700*5701", "27700", "5701"},
        {"EPSG:4326*EPSG:5783", "4326", "5783"},
        {"EPSG:*EPSG:", "", ""},
        {"*", "", ""},
        {"4326*", "4326", ""},
        {"*5701", "", "5701"},
    };
    for (const EpsgName& name : accepted) expectParsed(name);
}

TEST(EpsgNameTest, DoesNotLookAtTheFiveCharactersOfTheSecondPrefix) {
    const EpsgName accepted[] = {
        {"EPSG:4326*XXXXX5783", "4326", "5783"},
        {"EPSG:4326*epsg:5783", "4326", "5783"},
        {"EPSG:4326******5783", "4326", "5783"},
        {"EPSG:4326*578305783", "4326", "5783"},
        {"EPSG:4326*57830", "4326", ""},
        {"EPSG:4326*\0\0\0\0\0"
         "5783"s,
         "4326", "5783"},
    };
    for (const EpsgName& name : accepted) expectParsed(name);
}

TEST(EpsgNameTest, DividesAtTheFirstStar) {
    expectParsed({"1*2*3", "1", "2*3"});
    expectParsed({"EPSG:1*EPSG:2*EPSG:3", "1", "2*EPSG:3"});
}

TEST(EpsgNameTest, LeavesCodesAsTheyStand) {
    const EpsgName accepted[] = {
        {"EPSG: 4326 ", " 4326 ", std::nullopt},
        {"EPSG:EPSG:4326", "EPSG:4326", std::nullopt},
        {"EPSG:abc", "abc", std::nullopt},
        {"EPSG:43\0"s, "43\0"s, std::nullopt},
        {"\xEF\xBC\x94", "\xEF\xBC\x94", std::nullopt},
    };
    for (const EpsgName& name : accepted) expectParsed(name);
}

TEST(EpsgNameTest, TakesANameWithoutTheExactPrefixForABareOne) {
    for (const std::string name : {"epsg:4326", "Epsg:4326", " EPSG:4326", "EPSG", "EPSG;4326", "EPSG 4326"})
        expectParsed({name, name, std::nullopt});
    expectParsed({"EPSG\0:4326"s, "EPSG\0:4326"s, std::nullopt});
}

TEST(EpsgNameTest, RefusesABareNameOfFourteenCharacters) {
    expectParsed({"1234567890123", "1234567890123", std::nullopt});
    expectParsed({"123456*123456", "123456", "123456"});
    EXPECT_EQ(textsOf(parseEpsgName("12345678901234")), nullptr);
    EXPECT_EQ(textsOf(parseEpsgName("1234567*123456")), nullptr);
    EXPECT_EQ(textsOf(parseEpsgName("epsg:123456789")), nullptr);
    EXPECT_EQ(textsOf(parseEpsgName(std::string(14, '\0'))), nullptr);
    EXPECT_EQ(textsOf(parseEpsgName(std::string(MEGABYTE, '*'))), nullptr);
    EXPECT_EQ(textsOf(parseEpsgName(" EPSG:27700*EPSG:5701")), nullptr);
}

TEST(EpsgNameTest, SetsNoLimitToAPrefixedName) {
    const std::string zeros(MEGABYTE, '0');
    expectParsed({"EPSG:12345678901234567890", "12345678901234567890", std::nullopt});
    expectParsed({"EPSG:" + zeros, zeros, std::nullopt});
    expectParsed({"EPSG:" + zeros + "*EPSG:" + zeros, zeros, zeros});
}

TEST(EpsgNameTest, NoticesThatTheSecondCodeWouldBeginBeyondTheEnd) {
    for (const std::string name : {"EPSG:4326*5783", "EPSG:4326*", "EPSG:*", "EPSG:1*EPSG", "EPSG:abc*1"}) {
        const ParsedName parsed = parseEpsgName(name);
        ASSERT_EQ(textsOf(parsed), nullptr) << name;
        EXPECT_TRUE(std::get<NameFault>(parsed).beyondTheEnd) << name;
    }
    EXPECT_FALSE(std::get<NameFault>(parseEpsgName("12345678901234")).beyondTheEnd);
}

TEST(GmlReferenceTest, ReadsWhatFollowsTheLastDictionaryName) {
    const struct {
        std::string name;
        std::string code;
    } accepted[] = {
        {"http://www.opengis.net/gml/srs/epsg.xml#4326", "4326"},
        {"https://example.org/epsg.xml#4326", "4326"},
        {"epsg.xml#4326", "4326"},
        {"xepsg.xml#4326", "4326"},
        {"x/epsg.xml#4326/epsg.xml#31467", "31467"},
        {"epsg.xml#4326epsg.xml#", ""},
        {"epsg.xml#", ""},
        {"epsg.xml##4326", "#4326"},
        {"epsg.xml#abc", "abc"},
        {"epsg.xml# 4326 ", " 4326 "},
        {"EPSG:1*epsg.xml#2", "2"},
        {"urn:ogc:def:crs:EPSG::epsg.xml#4326", "4326"},
        {"\0epsg.xml#43\0"s, "43\0"s},
        {"\xC3\xA9psg/epsg.xml#\xEF\xBC\x94", "\xEF\xBC\x94"},
        {std::string(MEGABYTE, '#') + "epsg.xml#4326", "4326"},
        {"epsg.xml#" + std::string(MEGABYTE, '#'), std::string(MEGABYTE, '#')},
    };
    for (const auto& row : accepted) EXPECT_EQ(codeOf(parseGmlReference(row.name)), row.code) << row.name.substr(0, 60);
}

TEST(GmlReferenceTest, RefusesANameWithoutTheDictionaryName) {
    const std::string refused[] = {
        "",
        "4326",
        "epsg.xml",
        "epsg.xml4326",
        "epsg.xml/#4326",
        "epsg.xml #4326",
        "epsg_xml#4326",
        "EPSG.xml#4326",
        "epsg.XML#4326",
        "Epsg.xml#4326",
        "psg.xml#4326",
        "epsg.\0xml#4326"s,
        "epsg.xml\0#4326"s,
        std::string(MEGABYTE, '#'),
        std::string(MEGABYTE, 'e'),
    };
    for (const std::string& name : refused)
        EXPECT_EQ(codeOf(parseGmlReference(name)), std::nullopt) << name.substr(0, 60);
}

const std::string WFS_1_1_HEAD = "urn:EPSG:geographicCRS:";

TEST(Wfs11UrnTest, LeavesWhateverFollowsTheHeadAsItStands) {
    const std::string codes[] = {"4326",
                                 "",
                                 " 4326 ",
                                 "abc",
                                 "27700*5701",
                                 "4326:5783",
                                 WFS_1_1_HEAD + "4326",
                                 "43\0"s,
                                 "\xEF\xBC\x94",
                                 std::string(MEGABYTE, '0'),
                                 std::string(MEGABYTE, ':')};
    for (const std::string& code : codes)
        EXPECT_EQ(codeOf(parseWfs11Urn(WFS_1_1_HEAD + code)), code) << code.substr(0, 40);
}

TEST(Wfs11UrnTest, RefusesANameThatDoesNotBeginWithTheHead) {
    const std::string refused[] = {
        "",
        "4326",
        "urn:EPSG:geographicCRS",
        "urn:EPSG:geographicCRS;4326",
        "URN:EPSG:geographicCRS:4326",
        "urn:epsg:geographicCRS:4326",
        "urn:EPSG:geographiccrs:4326",
        "urn:EPSG:GeographicCRS:4326",
        "urn:EPSG:projectedCRS:25832",
        " " + WFS_1_1_HEAD + "4326",
        "x" + WFS_1_1_HEAD + "4326",
        "urn:ogc:def:crs:EPSG::4326",
        "urn/EPSG/geographicCRS/4326",
        "urn:EPSG:geographic\0CRS:4326"s,
        "\0"s + WFS_1_1_HEAD + "4326",
        std::string(MEGABYTE, ':'),
        std::string(MEGABYTE, 'u'),
    };
    for (const std::string& name : refused) EXPECT_EQ(codeOf(parseWfs11Urn(name)), std::nullopt) << name.substr(0, 40);
}

TEST(SafeCurieTest, ReadsTheCodeBetweenPrefixAndBracket) {
    EXPECT_EQ(codeOf(parseSafeCurie("[EPSG:4326]")), "4326");
    EXPECT_EQ(codeOf(parseSafeCurie("[EPSG:]")), "");
    EXPECT_EQ(codeOf(parseSafeCurie("[EPSG:[EPSG:4326]]")), "[EPSG:4326]");
    EXPECT_EQ(codeOf(parseSafeCurie("[EPSG:27700*EPSG:5701]")), "27700*EPSG:5701");
}

TEST(SafeCurieTest, RefusesEverythingElse) {
    for (const std::string name :
         {"", "[", "]", "[]", "EPSG:4326", "[EPSG:4326", "EPSG:4326]", "[epsg:4326]", "[EPSG4326]", "[OGC:CRS84]",
          " [EPSG:4326]", "[EPSG:4326] ", "[ EPSG:4326]", "[4326]"})
        EXPECT_EQ(codeOf(parseSafeCurie(name)), std::nullopt) << name;
}

class NameSyntaxTest : public testing::TestWithParam<NameSyntax> {
protected:
    static void expectReadBack(const CodePair& codes) {
        const std::string name = GetParam().write(codes);
        const ParsedName parsed = GetParam().parse(name);
        const NameTexts* const texts = textsOf(parsed);
        ASSERT_NE(texts, nullptr) << name;
        EXPECT_EQ(readCode(texts->first.text), codes.primary) << name;
        EXPECT_EQ(name.substr(texts->first.position, texts->first.text.size()), texts->first.text);
        ASSERT_EQ(texts->second.has_value(), codes.secondary != 0) << name;
        if (codes.secondary == 0) return;
        EXPECT_EQ(readCode(texts->second->text), codes.secondary) << name;
        EXPECT_EQ(name.substr(texts->second->position, texts->second->text.size()), texts->second->text);
    }
};

TEST_P(NameSyntaxTest, ReadsWhatItWrites) {
    for (const unsigned int code : {4326U, 1U, 4294967295U}) expectReadBack({code, 0});
}

TEST_P(NameSyntaxTest, ReadsTheCompoundThatItWrites) {
    const Spelling spelling = GetParam().spelling;
    if (spelling == Spelling::OGC_URN || spelling == Spelling::OGC_URL || spelling == Spelling::EPSG_CODE)
        expectReadBack({27700, 5701});
}

TEST_P(NameSyntaxTest, HasAnExampleThatIsWhatItWrites) { EXPECT_EQ(GetParam().write({4326, 0}), GetParam().example); }

// A bare code may be any short text.
TEST_P(NameSyntaxTest, ReadsNoExampleOfAnother) {
    for (const NameSyntax& other : NAME_SYNTAXES) {
        const bool expected = other.spelling == GetParam().spelling ||
                              (GetParam().spelling == Spelling::EPSG_CODE && other.spelling == Spelling::SAFE_CURIE);
        EXPECT_EQ(textsOf(GetParam().parse(other.example)) != nullptr, expected) << other.example;
    }
}

INSTANTIATE_TEST_SUITE_P(All, NameSyntaxTest, testing::ValuesIn(NAME_SYNTAXES));

TEST(WriterTest, WritesVersionsAndPrefixes) {
    EXPECT_EQ(writeOgcUrn({4326, 0}, "6.12"), "urn:ogc:def:crs:EPSG:6.12:4326");
    EXPECT_EQ(writeOgcUrn({27700, 5701}, ""), "urn:ogc:def:crs,crs:EPSG::27700,crs:EPSG::5701");
    EXPECT_EQ(writeOgcUrl({27700, 5701}, "6.12"),
              "http://www.opengis.net/def/crs,crs/EPSG/6.12/27700,crs/EPSG/6.12/5701");
    EXPECT_EQ(writePrefixed({27700, 5701}, "x:"), "x:27700,x:5701");
    EXPECT_EQ(writeCodeKey({27700, 5701}), "27700*5701");
    EXPECT_EQ(writeEpsgName({27700, 5701}), "EPSG:27700*EPSG:5701");
}

TEST(RegisteredNamesTest, AreTheNamesOfASimpleCrs) {
    EXPECT_EQ(registeredNames({4326, 0}, {"own"}),
              (std::vector<std::string>{"own", "4326", "urn:EPSG:geographicCRS:4326", "urn:ogc:def:crs:EPSG:6.12:4326",
                                        "urn:x-ogc:def:crs:EPSG:6.12:4326", "urn:ogc:def:crs:EPSG::4326",
                                        "urn:ogc:def:crs,crs:EPSG::4326"}));
}

TEST(RegisteredNamesTest, AreTheNamesOfACompoundCrs) {
    EXPECT_EQ(
        registeredNames({27700, 5701}, {}),
        (std::vector<std::string>{
            "27700*5701", "urn:EPSG:geographicCRS:27700*5701", "urn:ogc:def:crs:EPSG:6.12:27700,crs:EPSG:6.12:5701",
            "urn:x-ogc:def:crs:EPSG:6.12:27700,crs:EPSG:6.12:5701", "urn:ogc:def:crs:EPSG::27700,crs:EPSG::5701",
            "urn:ogc:def:crs,crs:EPSG::27700,crs:EPSG::5701"}));
}

using Fault = NameExplanation::Fault;

bool acceptNothing(const char* /*property*/) { return false; }

struct Explained {
    std::string name;
    Fault fault;
    std::string text;
};

const Explained EXPLAINED[] = {
    {"urn:ogc:def:crs:EPSG::4326", Fault::NONE, "an OGC URN for EPSG:4326"},
    {"urn:ogc:def:crs,crs:EPSG:6.12:27700,crs:EPSG:6.12:5701", Fault::NONE,
     "an OGC URN for EPSG:27700*EPSG:5701, version 6.126.12"},
    {"urn:ogc:def:crs:EPSG:a\nb:4326", Fault::NONE, "an OGC URN for EPSG:4326, version a?b"},
    {"urn:ogc:def:crs:EPSG::1,crs:EPSG::", Fault::NONE, "an OGC URN for EPSG:1"},
    {"http://www.opengis.net/def/crs/EPSG/0/4326", Fault::NONE, "an OGC http URL for EPSG:4326, version 0"},
    {"x/epsg.xml#31467", Fault::NONE, "a GML reference for EPSG:31467"},
    {"urn:ogc:def/epsg.xml#31467", Fault::NONE, "a GML reference for EPSG:31467"},
    {"EPSG:27700*EPSG:5701", Fault::NONE, "an EPSG code for EPSG:27700*EPSG:5701"},
    {" 4326 ", Fault::NONE, "an EPSG code for EPSG:4326"},
    {"urn:EPSG:geographicCRS:4326", Fault::NONE, "a WFS 1.1 URN for EPSG:4326"},
    {"urn:ogc:", Fault::BAD_SYNTAX, "an OGC URN that does not go on with \"def\", at character 8"},
    {"urn:ogc:DEF:crs:EPSG::4326", Fault::BAD_SYNTAX, "an OGC URN that does not go on with \"def\", at character 9"},
    {"urn:ogc:def", Fault::BAD_SYNTAX, "an OGC URN whose type is not \"crs\", at character 11"},
    {"urn:ogc:def:CRS:EPSG::4326", Fault::BAD_SYNTAX, "an OGC URN whose type is not \"crs\", at character 13"},
    {"urn:ogc:def:crs", Fault::BAD_SYNTAX, "an OGC URN whose authority is not EPSG, at character 15"},
    {"urn:ogc:def:crs:OGC:1.3:CRS84", Fault::BAD_SYNTAX, "an OGC URN whose authority is not EPSG, at character 17"},
    {"urn:ogc:def:crs:EPSG", Fault::BAD_SYNTAX, "an OGC URN whose version is missing, at character 20"},
    {"urn:ogc:def:crs:EPSG:4326", Fault::BAD_SYNTAX, "an OGC URN whose version or code is missing, at character 25"},
    {"urn:ogc:def:crs:EPSG::", Fault::BAD_SYNTAX, "an OGC URN whose code is missing, at character 22"},
    {"urn:ogc:def:crs:EPSG::1,crs:OGC::2", Fault::BAD_SYNTAX,
     "an OGC URN whose authority is not EPSG, at character 29"},
    {"urn:ogc:def:crs:EPSG::1,crs:EPSG::2,crs:EPSG::3", Fault::BAD_SYNTAX,
     "an OGC URN with more than two components, at character 36"},
    {"urn:ogc:def:crs:EPSG::abc", Fault::BAD_CODE,
     "an OGC URN whose code is not a number from 0 to 4294967295, at character 23"},
    {"urn:ogc:def:crs:EPSG::1,crs:EPSG::b", Fault::BAD_CODE,
     "an OGC URN whose code is not a number from 0 to 4294967295, at character 35"},
    // No other spelling is tried when a URN has a bad code.
    {"urn:ogc:def:crs:EPSG::epsg.xml#4326", Fault::BAD_CODE,
     "an OGC URN whose code is not a number from 0 to 4294967295, at character 23"},
    {"http://www.opengis.net/def/crs/EPSG/0/4326x", Fault::BAD_CODE,
     "an OGC http URL whose code is not a number from 0 to 4294967295, at character 39"},
    {"epsg.xml#", Fault::BAD_CODE, "a GML reference whose code is not a number from 0 to 4294967295, at character 9"},
    {"EPSG:", Fault::BAD_CODE, "an EPSG code whose code is not a number from 0 to 4294967295, at character 5"},
    {"4326x", Fault::BAD_CODE, "an EPSG code whose code is not a number from 0 to 4294967295, at character 1"},
    {"4326*x", Fault::BAD_CODE, "an EPSG code whose code is not a number from 0 to 4294967295, at character 6"},
    {"12345678901234", Fault::BAD_CODE, "an EPSG code that is too long without its prefix, at character 14"},
    {"EPSG:4326*5783", Fault::BAD_CODE, "an EPSG code whose second prefix is missing, at character 11"},
    {"urn:EPSG:geographicCRS:x", Fault::BAD_CODE,
     "a WFS 1.1 URN whose code is not a number from 0 to 4294967295, at character 24"},
    {"[EPSG:4326]", Fault::BAD_SYNTAX, "a safe CURIE that the configuration does not accept, at character 1"},
    {"[OGC:CRS84]", Fault::BAD_SYNTAX, "a safe CURIE whose authority is not EPSG, at character 2"},
    {"[EPSG:4326", Fault::BAD_SYNTAX, "a safe CURIE without its closing bracket, at character 10"},
    {"", Fault::UNKNOWN_SPELLING, "no known spelling of a CRS"},
    {"epsg:4326", Fault::UNKNOWN_SPELLING, "no known spelling of a CRS"},
    {"CRS:84", Fault::UNKNOWN_SPELLING, "no known spelling of a CRS"},
    {"https://www.opengis.net/def/crs/EPSG/0/4326", Fault::UNKNOWN_SPELLING, "no known spelling of a CRS"},
};

TEST(ExplainNameTest, TellsWhatANameIsOrWhereItsFaultIs) {
    for (const Explained& row : EXPLAINED) {
        const NameExplanation explanation = explainName(row.name, acceptNothing);
        EXPECT_EQ(explanation.fault, row.fault) << row.name;
        EXPECT_EQ(explanation.text, row.text) << row.name;
        EXPECT_EQ(explanation.spelling.empty(), row.fault == Fault::UNKNOWN_SPELLING) << row.name;
        const bool hasPosition = row.fault == Fault::BAD_SYNTAX || row.fault == Fault::BAD_CODE;
        EXPECT_EQ(explanation.position != 0, hasPosition) << row.name;
    }
}

TEST(ExplainNameTest, GivesTheCodesAndTheVersionAsTheyAreRead) {
    const NameExplanation explanation =
        explainName("urn:ogc:def:crs,crs:EPSG:a\nb:27700,crs:EPSG:6:5701", acceptNothing);
    EXPECT_EQ(explanation.spelling, "OGC URN");
    EXPECT_EQ(explanation.primaryCode, 27700U);
    EXPECT_EQ(explanation.secondaryCode, 5701U);
    EXPECT_EQ(explanation.version, "a\nb6");
    EXPECT_EQ(explanation.position, 0U);
}

TEST(ExplainNameTest, AsksWhetherTheConfigurationAcceptsASyntax) {
    const NameExplanation explanation =
        explainName("[EPSG:4326]", [](const char* property) { return property == "AcceptSafeCuries"s; });
    EXPECT_EQ(explanation.fault, Fault::NONE);
    EXPECT_EQ(explanation.text, "a safe CURIE for EPSG:4326");
}

}  // namespace
}  // namespace CoordinateTransformation
