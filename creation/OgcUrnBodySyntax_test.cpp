#include <cstddef>
#include <gtest/gtest.h>
#include <regex>
#include <string>
#include <vector>

#include "QuarvelSrv/SrsFormattingOptions.h"
#include "creation/CrsNameSyntax.h"
#include "tests/support/FakeCrs.h"

namespace CoordinateTransformation {
namespace {

using namespace std::string_literals;

constexpr std::size_t MEGABYTE = 1 << 20;

struct Body {
    std::string name;
    std::string firstCode;
    std::string secondCode;
    std::string version;
};

void expectParsed(const Body& expected) {
    SCOPED_TRACE(expected.name.substr(0, 60));
    const std::optional<OgcUrnTexts> texts = parseOgcUrnBody(expected.name, 0);
    ASSERT_TRUE(texts.has_value());
    EXPECT_EQ(texts->firstCode, expected.firstCode);
    EXPECT_EQ(texts->secondCode, expected.secondCode);
    EXPECT_EQ(texts->version, expected.version);
}

TEST(OgcUrnBodyTest, ReadsSimpleAndCompoundNames) {
    const Body accepted[] = {
        {"def:crs:EPSG::4326", "4326", "", ""},
        {"def:crs:epsg::4326", "4326", "", ""},
        {"def:crs:EPSG:6.12:4326", "4326", "", "6.12"},
        {"def/crs/EPSG/0/4326", "4326", "", "0"},
        {"def:crs,crs:EPSG::27700,crs:EPSG::5701", "27700", "5701", ""},
        {"def/crs,crs/EPSG/0/27700,crs/EPSG/0/5701", "27700", "5701", "00"},
        {"def:crs:EPSG::4326,crs:EPSG::5783", "4326", "5783", ""},
        {"def:crs:epsg::4326,crs:EPSG::5783", "4326", "5783", ""},
    };
    for (const Body& body : accepted) expectParsed(body);
}

TEST(OgcUrnBodyTest, TakesColonAndSlashForOneSeparator) {
    expectParsed({"def:crs/EPSG:/4326", "4326", "", ""});
    expectParsed({"def/crs:epsg/6.12:4326", "4326", "", "6.12"});
}

TEST(OgcUrnBodyTest, JoinsTheVersionsOfACompound) {
    expectParsed({"def:crs,crs:EPSG:6.12:27700,crs:EPSG:6.12:5701", "27700", "5701", "6.126.12"});
    expectParsed({"def:crs:EPSG:a:1,crs:EPSG:b:2", "1", "2", "ab"});
    expectParsed({"def:crs:EPSG:a:1,crs:EPSG::2", "1", "2", "a"});
}

TEST(OgcUrnBodyTest, ForgetsWhatStandsBeforeACommaInFrontOfTheKeyword) {
    const Body accepted[] = {
        {"def:,crs:EPSG::1", "1", "", ""},
        {"def:crs,crs,crs:EPSG::1", "1", "", ""},
        {"def:anything at all,crs:EPSG::1", "1", "", ""},
        {"def:crs:EPSG::1,,crs:EPSG::2", "1", "2", ""},
        {"def:crs:EPSG::1,crs,crs:EPSG::2", "1", "2", ""},
        {"def:" + std::string(MEGABYTE, ',') + "crs:EPSG::1", "1", "", ""},
    };
    for (const Body& body : accepted) expectParsed(body);
}

TEST(OgcUrnBodyTest, LeavesCodesAndVersionAsTheyStand) {
    const std::string zeros(MEGABYTE, '0');
    const Body accepted[] = {
        {"def:crs:EPSG::abc", "abc", "", ""},
        {"def:crs:EPSG::4326:5783", "4326:5783", "", ""},
        {"def:crs:EPSG::4326/5783", "4326/5783", "", ""},
        {"def:crs:EPSG:::", ":", "", ""},
        {"def:crs:EPSG::1,crs:EPSG::2:3/4", "1", "2:3/4", ""},
        {"def:crs:EPSG:6,12:4326", "4326", "", "6,12"},
        {"def:crs:EPSG: 6 : 4326 ", " 4326 ", "", " 6 "},
        {"def:crs:EPSG:6\0x:43\0"s, "43\0"s, "", "6\0x"s},
        {"def:crs:EPSG:\xC3\xA9:\xEF\xBC\x94", "\xEF\xBC\x94", "", "\xC3\xA9"},
        {"def:crs:EPSG:" + zeros + ":" + zeros, zeros, "", zeros},
        {"def:crs:EPSG::" + std::string(MEGABYTE, ':'), std::string(MEGABYTE, ':'), "", ""},
    };
    for (const Body& body : accepted) expectParsed(body);
}

TEST(OgcUrnBodyTest, TakesASecondComponentWithoutACodeForNone) {
    expectParsed({"def:crs:EPSG::1,crs:EPSG::", "1", "", ""});
    expectParsed({"def:crs:EPSG:6:1,crs:EPSG:12:", "1", "", "612"});
}

TEST(OgcUrnBodyTest, RefusesOtherKeywordsAndAuthorities) {
    const std::string refused[] = {
        "DEF:crs:EPSG::1",
        "Def:crs:EPSG::1",
        "de:crs:EPSG::1",
        "defs:crs:EPSG::1",
        " def:crs:EPSG::1",
        "def :crs:EPSG::1",
        ":def:crs:EPSG::1",
        "def,def:crs:EPSG::1",
        ",def:crs:EPSG::1",
        "def::crs:EPSG::1",
        "def:CRS:EPSG::1",
        "def:crsx:EPSG::1",
        "def:cr:EPSG::1",
        "def:crs,:EPSG::1",
        "def:crs,cs:EPSG::1",
        "def:crs::EPSG::1",
        "def:crs:Epsg::1",
        "def:crs:ePSG::1",
        "def:crs:EPSG2::1",
        "def:crs:EPS::1",
        "def:crs: EPSG::1",
        "def:crs:EPSG,EPSG::1",
        "def:crs:OGC:1.3:CRS84",
        "def:datum:EPSG::1",
        "def\0:crs:EPSG::1"s,
        "def:crs\0:EPSG::1"s,
        "def:crs:EPSG\0::1"s,
        "\xEF\xBB\xBF"
        "def:crs:EPSG::1",
        std::string(MEGABYTE, ':'),
        std::string(MEGABYTE, '/'),
        "def:" + std::string(MEGABYTE, ':'),
        "def:crs:" + std::string(MEGABYTE, ','),
    };
    for (const std::string& name : refused) EXPECT_FALSE(parseOgcUrnBody(name, 0)) << name.substr(0, 60);
}

TEST(OgcUrnBodyTest, RefusesANameThatEndsBeforeItsCode) {
    const std::string refused[] = {
        "",
        "def",
        "def:",
        "def:crs",
        "def:crs:",
        "def:crs,",
        "def:crs:EPSG",
        "def:crs:EPSG:",
        "def:crs:EPSG:6.12",
        "def:crs:EPSG::",
        "def:crs:EPSG:6.12:",
        "def:crs:EPSG::1,",
        "def:crs:EPSG::1,crs",
        "def:crs:EPSG::1,crs:",
        "def:crs:EPSG::1,crs:EPSG",
        "def:crs:EPSG::1,crs:EPSG:",
        "def:crs:EPSG::1,crs:EPSG:6.12",
        "def:crs:EPSG::,crs:EPSG::2",
        "def:crs:EPSG::,crs:EPSG::",
    };
    for (const std::string& name : refused) EXPECT_FALSE(parseOgcUrnBody(name, 0)) << name;
}

TEST(OgcUrnBodyTest, RefusesASecondComponentThatIsNoneOfEpsg) {
    const std::string refused[] = {
        "def:crs:EPSG::1,EPSG::2",
        "def:crs:EPSG::1,def:crs:EPSG::2",
        "def:crs:EPSG::1,crs:OGC::2",
        "def:crs:EPSG::1, crs:EPSG::2",
        "def:crs:EPSG::1,CRS:EPSG::2",
        "def:crs:EPSG::1,crs:Epsg::2",
        "def:crs:EPSG::1,:crs:EPSG::2",
        "def:crs:EPSG::1,2",
        "def:crs:EPSG::1,urn:ogc:def:crs:EPSG::2",
        "def:crs:OGC::1,crs:EPSG::2",
    };
    for (const std::string& name : refused) EXPECT_FALSE(parseOgcUrnBody(name, 0)) << name;
}

TEST(OgcUrnBodyTest, RefusesAThirdComponent) {
    EXPECT_FALSE(parseOgcUrnBody("def:crs:EPSG::1,crs:EPSG::2,crs:EPSG::3", 0));
    EXPECT_FALSE(parseOgcUrnBody("def:crs,crs,crs:EPSG::1,crs:EPSG::2,crs:EPSG::3", 0));
    EXPECT_FALSE(parseOgcUrnBody("def:crs:EPSG::1,crs:EPSG::2,", 0));
    EXPECT_FALSE(parseOgcUrnBody("def:crs:EPSG::1,crs:EPSG::,", 0));
}

TEST(OgcUrnBodyTest, BeginsAtTheStartPosition) {
    const std::string name = "def:x:def:crs:EPSG::4326";
    EXPECT_FALSE(parseOgcUrnBody(name, 0));
    EXPECT_FALSE(parseOgcUrnBody(name, 5));
    ASSERT_TRUE(parseOgcUrnBody(name, 6));
    EXPECT_EQ(parseOgcUrnBody(name, 6)->firstCode, "4326");
}

TEST(OgcUrnBodyTest, RefusesAStartOutsideTheName) {
    const std::string name = "def:crs:EPSG::4326";
    for (const std::size_t start : {name.size(), name.size() + 1, std::string::npos})
        EXPECT_FALSE(parseOgcUrnBody(name, start)) << start;
    EXPECT_FALSE(parseOgcUrnBody("", 0));
}

// The grammar above the parser, as one expression.
class OgcUrnBodyGrammarTest : public testing::Test {
protected:
    void expectReadByTheGrammar(const std::string& name) {
        std::smatch parts;
        const bool expected = std::regex_match(name, parts, grammar);
        const std::optional<OgcUrnTexts> texts = parseOgcUrnBody(name, 0);
        ASSERT_EQ(texts.has_value(), expected) << name;
        ++(expected ? accepted : refused);
        if (!expected) return;
        EXPECT_EQ(texts->version, parts.str(1) + parts.str(3)) << name;
        EXPECT_EQ(texts->firstCode, parts.str(2)) << name;
        EXPECT_EQ(texts->secondCode, parts.str(4)) << name;
    }

    // The words of a name with one of them left out, doubled, or exchanged for another word.
    void expectNeighboursReadByTheGrammar(std::vector<std::string> words, int changes) {
        std::string name;
        for (const std::string& word : words) name += word;
        expectReadByTheGrammar(name);
        for (std::size_t i = 0; changes > 0 && i < words.size(); ++i) {
            const std::string kept = words[i];
            for (const std::string& other : {std::string(), kept + kept, ":"s, "/"s, ","s, "crs"s, "epsg"s, "7"s}) {
                words[i] = other;
                expectNeighboursReadByTheGrammar(words, changes - 1);
            }
            words[i] = kept;
        }
    }

    static inline const std::string HEAD = "(?:[^:/,]*,)*crs[:/](?:EPSG|epsg)[:/]([^:/]*)[:/]";
    const std::regex grammar{"def[:/]" + HEAD + "([^,]+)(?:," + HEAD + "([^,]*))?"};
    int accepted = 0;
    int refused = 0;
};

TEST_F(OgcUrnBodyGrammarTest, IsWhatIsAccepted) {
    expectNeighboursReadByTheGrammar({"def", ":", "crs", ":", "EPSG", ":", "6", ":", "1"}, 2);
    expectNeighboursReadByTheGrammar({"def", "/", "x", ",",   "crs", ":",    "EPSG", "/", "0", ":", "1",
                                      ",",   "y", ",", "crs", ":",   "epsg", ":",    "6", ":", "2"},
                                     2);
    EXPECT_GT(accepted, 100);
    EXPECT_GT(refused, 1000);
}

class OgcUrnBodyRoundTripTest : public testing::Test {
protected:
    static constexpr std::size_t URN_HEAD = 8;
    static constexpr std::size_t URL_HEAD = 23;

    void expectReadBack(const std::string& name, std::size_t start, const Body& expected) {
        SCOPED_TRACE(name);
        expectParsed({name.substr(start), expected.firstCode, expected.secondCode, expected.version});
        const std::optional<OgcUrnTexts> inPlace = parseOgcUrnBody(name, start);
        ASSERT_TRUE(inPlace);
        EXPECT_EQ(inPlace->firstCode, expected.firstCode);
    }

    TestSupport::FakeTransformer transformer;
    TestSupport::FakeCreator creator;
};

TEST_F(OgcUrnBodyRoundTripTest, ReadsWhatIsWrittenForASimpleCrs) {
    TestSupport::FakeCrs crs(creator, transformer, 4326, 0);
    const QuarvelSrv::SrsFormattingOptions asUrl{"", "", 2};
    expectReadBack(crs.getAliasOrAsOgcURN(nullptr, false), URN_HEAD, {"", "4326", "", ""});
    expectReadBack(crs.getAliasOrAsOgcURN(&asUrl, false), URL_HEAD, {"", "4326", "", "0"});
    crs.setEpsgVersion("6.12");
    expectReadBack(crs.getAliasOrAsOgcURN(nullptr, false), URN_HEAD, {"", "4326", "", "6.12"});
    expectReadBack(crs.getAliasOrAsOgcURN(&asUrl, false), URL_HEAD, {"", "4326", "", "6.12"});
}

TEST_F(OgcUrnBodyRoundTripTest, ReadsWhatIsWrittenForACompoundCrs) {
    TestSupport::FakeCrs crs(creator, transformer, 27700, 5701);
    const QuarvelSrv::SrsFormattingOptions asUrl{"", "", 2};
    expectReadBack(crs.getAliasOrAsOgcURN(nullptr, false), URN_HEAD, {"", "27700", "5701", ""});
    expectReadBack(crs.getAliasOrAsOgcURN(&asUrl, false), URL_HEAD, {"", "27700", "5701", "00"});
    crs.setEpsgVersion("6.12");
    expectReadBack(crs.getAliasOrAsOgcURN(nullptr, false), URN_HEAD, {"", "27700", "5701", "6.126.12"});
}

}  // namespace
}  // namespace CoordinateTransformation
