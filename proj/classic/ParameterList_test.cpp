#include "proj/classic/ParameterList.h"

#include <gtest/gtest.h>

namespace ClassicProj {
namespace {

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

TEST(ParameterListTest, TellsAParameterWithoutValueFromAMissingOne) {
    const ParameterList parameters("+south +zone=32");
    EXPECT_TRUE(parameters.has("south"));
    EXPECT_EQ(parameters.get("south"), "");
    EXPECT_FALSE(parameters.has("north"));
    EXPECT_EQ(parameters.get("north"), "");
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
}  // namespace ClassicProj
