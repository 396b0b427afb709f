#include <cstddef>
#include <regex>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "names/CrsName.h"

namespace CoordinateTransformation {
namespace {

using namespace std::string_literals;

const NameTexts* textsOf(const ParsedName& parsed) { return std::get_if<NameTexts>(&parsed); }

static_assert(sizeof(OGC_DEFINITIONS_HOST) - 1 == 15);

// Empty for a name without a version.
std::string secondOf(const NameTexts& texts) { return texts.second ? texts.second->text : ""; }

bool isOgcBody(const std::string& name, std::size_t start) { return textsOf(parseOgcBody(name, start)) != nullptr; }

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

// The grammar of the parser as a regular expression.
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

    // The words of a name with one of them removed, repeated or replaced by another.
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
