#include <cstddef>
#include <gtest/gtest.h>
#include <stdexcept>
#include <string>

#include "creation/CrsNameSyntax.h"
#include "tests/support/FakeCrs.h"

namespace CoordinateTransformation {
namespace {

using namespace std::string_literals;

constexpr std::size_t MEGABYTE = 1 << 20;

struct EpsgName {
    std::string name;
    std::string firstCode;
    std::optional<std::string> secondCode;
};

void expectParsed(const EpsgName& expected) {
    SCOPED_TRACE(expected.name.substr(0, 40));
    const std::optional<EpsgNameTexts> texts = parseEpsgName(expected.name);
    ASSERT_TRUE(texts.has_value());
    EXPECT_EQ(texts->firstCode, expected.firstCode);
    EXPECT_EQ(texts->secondCode, expected.secondCode);
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
    EXPECT_FALSE(parseEpsgName("12345678901234"));
    EXPECT_FALSE(parseEpsgName("1234567*123456"));
    EXPECT_FALSE(parseEpsgName("epsg:123456789"));
    EXPECT_FALSE(parseEpsgName(std::string(14, '\0')));
    EXPECT_FALSE(parseEpsgName(std::string(MEGABYTE, '*')));
    EXPECT_FALSE(parseEpsgName(" EPSG:27700*EPSG:5701"));
}

TEST(EpsgNameTest, SetsNoLimitToAPrefixedName) {
    const std::string zeros(MEGABYTE, '0');
    expectParsed({"EPSG:12345678901234567890", "12345678901234567890", std::nullopt});
    expectParsed({"EPSG:" + zeros, zeros, std::nullopt});
    expectParsed({"EPSG:" + zeros + "*EPSG:" + zeros, zeros, zeros});
}

TEST(EpsgNameTest, RaisesOutOfRangeWhenTheSecondCodeWouldBeginBeyondTheEnd) {
    for (const std::string name : {"EPSG:4326*5783", "EPSG:4326*", "EPSG:*", "EPSG:1*EPSG", "EPSG:abc*1"}) {
        try {
            parseEpsgName(name);
            ADD_FAILURE() << name << " read";
        } catch (const std::out_of_range& error) {
            EXPECT_STREQ(error.what(), "invalid string position") << name;
        }
    }
}

TEST(EpsgNameRoundTripTest, ReadsIdentifiersThatAreWritten) {
    const TestSupport::FakeTransformer transformer;
    const TestSupport::FakeCreator creator;
    const TestSupport::FakeCrs simple(creator, transformer, 4326, 0);
    const TestSupport::FakeCrs compound(creator, transformer, 27700, 5701);
    expectParsed({simple.getAliasOrIdentifier(false), "4326", std::nullopt});
    expectParsed({compound.getAliasOrIdentifier(false), "27700", "5701"});
}

}  // namespace
}  // namespace CoordinateTransformation
