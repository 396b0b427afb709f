#include "text/ParameterList.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace CoordinateTransformation {
namespace {

using testing::ElementsAre;
using testing::Pair;

TEST(ParameterListTest, ReadsKeysAndValuesInOrder) {
    const struct {
        const char* text;
        const char* read;
    } texts[] = {
        {"", ""},
        {"  \t\r\n\v\f", ""},
        {"+proj=utm +zone=32", " +proj=utm +zone=32"},
        {"proj=utm zone=32", " +proj=utm +zone=32"},
        {"\n+proj=utm\r\n\t+zone=32\v+south\f", " +proj=utm +zone=32 +south"},
        {"+no_defs", " +no_defs"},
        {"+no_defs=", " +no_defs"},
        {"+title=a=b", " +title=a=b"},
        {"+", ""},
        {"+ proj=utm", " +proj=utm"},
        {"=5 +=6", ""},
        {"+zone=32 +proj=utm +zone=33", " +zone=32 +proj=utm +zone=33"},
        {"+proj=utm+zone=32", " +proj=utm+zone=32"},
    };
    for (const auto& [text, read] : texts) EXPECT_EQ(ParameterList(text).toText(), read) << text;
}

TEST(ParameterListTest, SkipsBlanksAroundCommasAndEqualsSigns) {
    const struct {
        const char* text;
        const char* read;
    } texts[] = {
        {"+towgs84=598.1, 73.7, 418.2 +units=m", " +towgs84=598.1,73.7,418.2 +units=m"},
        {"+towgs84=598.1 ,73.7 , 418.2", " +towgs84=598.1,73.7,418.2"},
        {"+towgs84 = 598.1,73.7\t= 5", " +towgs84=598.1,73.7=5"},
        {"+towgs84=1,\n  2,\r\n\t3\n+units=m", " +towgs84=1,2,3 +units=m"},
        {"+towgs84=1,,\v 3", " +towgs84=1,,3"},
        {"+towgs84=, 2", " +towgs84=,2"},
        {"+nadgrids=@a , @null +proj = utm +zone= 32", " +nadgrids=@a,@null +proj=utm +zone=32"},
        {"proj = utm zone = 32", " +proj=utm +zone=32"},
        {"+x_0= +500 +towgs84=1, +2, +.5", " +x_0=+500 +towgs84=1,+2,+.5"},
        {"+south= +zone=32", " +south +zone=32"},
        {"+towgs84=1,2, +zone=32", " +towgs84=1,2, +zone=32"},
        {"+towgs84=1,2,", " +towgs84=1,2,"},
        {"+zone= ", " +zone"},
        {"+zone= +", " +zone=+"},
        {" = 5 +zone=32", " +zone=32"},
    };
    for (const auto& [text, read] : texts) EXPECT_EQ(ParameterList(text).toText(), read) << text;
}

TEST(ParameterListTest, KnowsOfANulByte) {
    const std::string nul(1, '\0');
    for (const std::string& text :
         {"+proj=u" + nul + "tm", nul + "+proj=utm", "+proj=utm +zone=32 +zone" + nul + "=33"}) {
        EXPECT_TRUE(ParameterList(text).hasNul());
        EXPECT_TRUE(ParameterList(text).without({"zone"}).hasNul());
        EXPECT_TRUE(ParameterList(text).only({"zone"}).hasNul());
        ParameterList added("+proj=utm +zone=1");
        added.addDefaults(ParameterList(text));
        EXPECT_TRUE(added.hasNul());
    }
    EXPECT_FALSE(ParameterList("+proj=utm \\0 0").hasNul());
}

TEST(ParameterListTest, KnowsNumbersThatAreNotFinite) {
    for (const char* value : {"nan", "-NaN", "inf", "+INF", "infinity", "1e309", "-1e309"})
        EXPECT_TRUE(ParameterList(std::string("+a=5 +k=") + value).hasInfinity()) << value;
    for (const char* value : {"", "1", "1e308", "1e-400", "utm", "n", "intl", "na", "natearth", "1,inf"})
        EXPECT_FALSE(ParameterList(std::string("+a=5 +k=") + value).hasInfinity()) << value;
}

TEST(ParameterListTest, DistinguishesAParameterWithoutValueFromAMissingOne) {
    const ParameterList parameters("+south +zone=32");
    EXPECT_TRUE(parameters.has("south"));
    EXPECT_EQ(parameters.get("south"), "");
    EXPECT_FALSE(parameters.has("north"));
    EXPECT_EQ(parameters.get("north"), "");
}

TEST(ParameterListTest, CanBeWalkedThrough) {
    const ParameterList parameters(" +proj=utm zone=32  +south\n+x= ");
    EXPECT_THAT(std::vector(parameters.begin(), parameters.end()),
                ElementsAre(Pair("proj", "utm"), Pair("zone", "32"), Pair("south", ""), Pair("x", "")));
    const ParameterList none(" \n");
    EXPECT_EQ(none.begin(), none.end());
}

TEST(ParameterListTest, GrowsAtItsEnd) {
    ParameterList parameters("+a=1");
    parameters.add({"b", "2"});
    parameters.add({"a", "3"});
    EXPECT_EQ(parameters.toText(), " +a=1 +b=2 +a=3");
    EXPECT_EQ(parameters.get("a"), "1");
}

TEST(ParameterListTest, KnowsWholeKeysOnly) {
    const ParameterList parameters("+lat_0=50");
    EXPECT_FALSE(parameters.has("lat"));
    EXPECT_FALSE(parameters.has("lat_00"));
    EXPECT_FALSE(parameters.has("LAT_0"));
    EXPECT_FALSE(parameters.has(""));
}

TEST(ParameterListTest, CountsTheFirstOfTwoParametersWithOneKey) {
    EXPECT_EQ(ParameterList("+zone=32 +zone=33").get("zone"), "32");
    EXPECT_EQ(ParameterList("+zone +zone=33").get("zone"), "");
}

TEST(ParameterListTest, FindsAnyOfSeveralKeys) {
    const ParameterList parameters("+b=2");
    EXPECT_TRUE(parameters.hasAnyOf({"a", "b"}));
    EXPECT_FALSE(parameters.hasAnyOf({"a", "c"}));
    EXPECT_FALSE(parameters.hasAnyOf({}));
}

TEST(ParameterListTest, AddsOnlyDefaultsThatAreNotThereYet) {
    const struct {
        const char* own;
        const char* defaults;
        const char* both;
    } additions[] = {
        {"+a=1", "+b=2", " +a=1 +b=2"}, {"+a=1", "+a=2", " +a=1"},       {"+a", "+a=2", " +a"},
        {"", "+a=1 +a=2", " +a=1"},     {"+a=1 +a=2", "", " +a=1 +a=2"},
    };
    for (const auto& [own, defaults, both] : additions) {
        ParameterList parameters(own);
        parameters.addDefaults(ParameterList(defaults));
        EXPECT_EQ(parameters.toText(), both) << own << " with " << defaults;
    }
}

TEST(ParameterListTest, SelectsByKeyAndKeepsTheOrder) {
    const ParameterList parameters("+c=3 +a=1 +b=2 +a=4");
    EXPECT_EQ(parameters.only({"a", "c"}).toText(), " +c=3 +a=1 +a=4");
    EXPECT_EQ(parameters.without({"a", "c"}).toText(), " +b=2");
    EXPECT_EQ(parameters.only({}).toText(), "");
    EXPECT_EQ(parameters.without({}).toText(), parameters.toText());
}

}  // namespace
}  // namespace CoordinateTransformation
