#include <cstddef>
#include <gtest/gtest.h>
#include <regex>
#include <string>
#include <vector>

#include "names/CrsName.h"

namespace CoordinateTransformation {
namespace {

using namespace std::string_literals;

constexpr std::size_t MEGABYTE = 1 << 20;

const NameTexts* textsOf(const ParsedName& parsed) { return std::get_if<NameTexts>(&parsed); }

const std::string HOST = OGC_DEFINITIONS_HOST;

static_assert(sizeof(OGC_DEFINITIONS_HOST) - 1 == 15);

struct Head {
    std::string name;
    std::size_t end;
};

TEST(OgcUrnHeadTest, EndsBehindTheNamespace) {
    const Head accepted[] = {
        {"urn:ogc:def:crs:EPSG::4326", 8},
        {"urn:x-ogc:def:crs:EPSG::4326", 10},
        {"urn:ogc:", 8},
        {"urn:x-ogc:", 10},
        {"urn:ogc::::", 8},
        {"urn:ogc:\0"s, 8},
        {"urn:ogc:" + std::string(MEGABYTE, ':'), 8},
    };
    for (const Head& head : accepted) EXPECT_EQ(skipOgcUrnHead(head.name), head.end) << head.name.substr(0, 40);
}

TEST(OgcUrnHeadTest, EndsWithTheNameWhenNoColonFollowsTheNamespace) {
    EXPECT_EQ(skipOgcUrnHead("urn:ogc"), 7U);
    EXPECT_EQ(skipOgcUrnHead("urn:x-ogc"), 9U);
}

TEST(OgcUrnHeadTest, RefusesEverythingElse) {
    const std::string refused[] = {
        "",
        ":",
        "::",
        "urn",
        "urn:",
        "urn::",
        "urn::ogc:",
        ":urn:ogc:",
        "URN:ogc:def",
        "Urn:ogc:def",
        "URN:OGC:def",
        "urn:OGC:def",
        "urn:X-OGC:def",
        "urn:x-Ogc:def",
        "urn:x_ogc:def",
        "urn:xogc:def",
        "urn:og:def",
        "urn:ogcs:def",
        "urns:ogc:def",
        "ur:ogc:def",
        " urn:ogc:def",
        "urn :ogc:def",
        "urn: ogc:def",
        "urn:ogc :def",
        "urn/ogc/def",
        "urn:ogc/def:crs",
        "urn:EPSG:geographicCRS:4326",
        "http://" + HOST + "/def/crs/EPSG/0/4326",
        "\xC3\xBCrn:ogc:def",
        "urn:\xC3\xB6gc:def",
        "\xEF\xBB\xBFurn:ogc:def",
        "urn\0:ogc:def"s,
        "urn:ogc\0:def"s,
        "\0urn:ogc:def"s,
        std::string(MEGABYTE, ':'),
        std::string(MEGABYTE, 'u'),
        "urn:" + std::string(MEGABYTE, 'o'),
    };
    for (const std::string& name : refused) EXPECT_EQ(skipOgcUrnHead(name), std::nullopt) << name.substr(0, 40);
}

TEST(OgcUrlHeadTest, EndsBehindTheSlashAfterTheHost) {
    const Head accepted[] = {
        {"http://" + HOST + "/def/crs/EPSG/0/4326", 23},
        {"http:" + HOST + "/def", 21},
        {"http:/" + HOST + "/def", 22},
        {"http:////" + HOST + "/def", 25},
        {"http://" + HOST + "/", 23},
        {"http://" + HOST + "//def", 23},
        {"http://" + HOST + "/\0"s, 23},
        {"http:" + std::string(MEGABYTE, '/') + HOST + "/def", MEGABYTE + 21},
    };
    for (const Head& head : accepted) EXPECT_EQ(skipOgcUrlHead(head.name), head.end) << head.name.substr(0, 40);
}

TEST(OgcUrlHeadTest, EndsWithTheNameWhenNoSlashFollowsTheHost) { EXPECT_EQ(skipOgcUrlHead("http://" + HOST), 22U); }

TEST(OgcUrlHeadTest, RefusesEverythingElse) {
    const std::string refused[] = {
        "",
        ":",
        "/",
        "http",
        "http:",
        "http://",
        "http:///",
        "https://" + HOST + "/def",
        "HTTP://" + HOST + "/def",
        "Http://" + HOST + "/def",
        "ftp://" + HOST + "/def",
        "://" + HOST + "/def",
        "http//" + HOST + "/def",
        "http::" + HOST + "/def",
        "//" + HOST + "/def",
        HOST,
        HOST + "/def",
        "http://WWW.OPENGIS.NET/def",
        "http://opengis.net/def",
        "http://www.opengis.ne/def",
        "http://www.opengis.nett/def",
        "http://www.opengis.org/def",
        "http://example.org/def",
        "http://" + HOST + ":80/def",
        "http://" + HOST + ".example.org/def",
        "http://user@" + HOST + "/def",
        " http://" + HOST + "/def",
        "http ://" + HOST + "/def",
        "http:// " + HOST + "/def",
        "http://" + HOST + " /def",
        "http:\\\\" + HOST + "\\def",
        "http\0://"s + HOST + "/def",
        "http://"s + HOST + "\0/def"s,
        "http://\0"s + HOST + "/def",
        "http://\xEF\xBC\xB7ww.opengis.net/def",
        "http:" + std::string(MEGABYTE, '/'),
        "http://" + std::string(MEGABYTE, 'w'),
        std::string(MEGABYTE, '/'),
    };
    for (const std::string& name : refused) EXPECT_EQ(skipOgcUrlHead(name), std::nullopt) << name.substr(0, 40);
}

// Empty for a name without one.
std::string secondOf(const NameTexts& texts) { return texts.second ? texts.second->text : ""; }

bool isOgcBody(const std::string& name, std::size_t start) { return textsOf(parseOgcBody(name, start)) != nullptr; }

struct Body {
    std::string name;
    std::string firstCode;
    std::string secondCode;
    std::string version;
};

void expectParsed(const Body& expected) {
    SCOPED_TRACE(expected.name.substr(0, 60));
    const ParsedName parsed = parseOgcBody(expected.name, 0);
    const NameTexts* const texts = textsOf(parsed);
    ASSERT_NE(texts, nullptr);
    EXPECT_EQ(texts->first.text, expected.firstCode);
    EXPECT_EQ(secondOf(*texts), expected.secondCode);
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
    for (const std::string& name : refused) EXPECT_FALSE(isOgcBody(name, 0)) << name.substr(0, 60);
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
    for (const std::string& name : refused) EXPECT_FALSE(isOgcBody(name, 0)) << name;
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
    for (const std::string& name : refused) EXPECT_FALSE(isOgcBody(name, 0)) << name;
}

TEST(OgcUrnBodyTest, RefusesAThirdComponent) {
    EXPECT_FALSE(isOgcBody("def:crs:EPSG::1,crs:EPSG::2,crs:EPSG::3", 0));
    EXPECT_FALSE(isOgcBody("def:crs,crs,crs:EPSG::1,crs:EPSG::2,crs:EPSG::3", 0));
    EXPECT_FALSE(isOgcBody("def:crs:EPSG::1,crs:EPSG::2,", 0));
    EXPECT_FALSE(isOgcBody("def:crs:EPSG::1,crs:EPSG::,", 0));
}

TEST(OgcUrnBodyTest, BeginsAtTheStartPosition) {
    const std::string name = "def:x:def:crs:EPSG::4326";
    EXPECT_FALSE(isOgcBody(name, 0));
    EXPECT_FALSE(isOgcBody(name, 5));
    ASSERT_TRUE(isOgcBody(name, 6));
    EXPECT_EQ(textsOf(parseOgcBody(name, 6))->first.text, "4326");
}

TEST(OgcUrnBodyTest, RefusesAStartOutsideTheName) {
    const std::string name = "def:crs:EPSG::4326";
    for (const std::size_t start : {name.size(), name.size() + 1, std::string::npos})
        EXPECT_FALSE(isOgcBody(name, start)) << start;
    EXPECT_FALSE(isOgcBody("", 0));
}

// The grammar above the parser, as one expression.
class OgcUrnBodyGrammarTest : public testing::Test {
protected:
    void expectReadByTheGrammar(const std::string& name) {
        std::smatch parts;
        const bool expected = std::regex_match(name, parts, grammar);
        const ParsedName parsed = parseOgcBody(name, 0);
        const NameTexts* const texts = textsOf(parsed);
        ASSERT_EQ(texts != nullptr, expected) << name;
        ++(expected ? accepted : refused);
        if (!expected) return;
        EXPECT_EQ(texts->version, parts.str(1) + parts.str(3)) << name;
        EXPECT_EQ(texts->first.text, parts.str(2)) << name;
        EXPECT_EQ(secondOf(*texts), parts.str(4)) << name;
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

}  // namespace
}  // namespace CoordinateTransformation
