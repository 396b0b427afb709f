#include "tools/crsctl/names/Suggestion.h"

#include <gtest/gtest.h>
#include <ostream>

#include "names/CrsName.h"
#include "tools/crsctl/text/Printable.h"

namespace crsctl {
namespace {

bool isUnderstood(const std::string& name) {
    using CoordinateTransformation::NameExplanation;
    const auto acceptNothing = [](const char* /*property*/) { return false; };
    return CoordinateTransformation::explainName(name, acceptNothing).fault == NameExplanation::Fault::NONE;
}

struct Case {
    const char* refused;
    const char* suggested;
};

void PrintTo(const Case& tried, std::ostream* stream) { *stream << printable(tried.refused); }

class Suggesting : public testing::TestWithParam<Case> {};

TEST_P(Suggesting, FindsTheOneChangeThatHelps) {
    const auto suggestion = suggest(GetParam().refused, {}, isUnderstood);
    ASSERT_TRUE(suggestion);
    EXPECT_EQ(suggestion->name, GetParam().suggested);
    EXPECT_FALSE(suggestion->change.empty());
}

INSTANTIATE_TEST_SUITE_P(
    Names, Suggesting,
    testing::Values(
        Case{"epsg:4326", "EPSG:4326"}, Case{"Epsg:4326", "EPSG:4326"}, Case{"\tEPSG:4326\n", "EPSG:4326"},
        Case{"epsg:27700*epsg:5701", "EPSG:27700*EPSG:5701"},
        Case{"https://www.opengis.net/def/crs/EPSG/0/4326", "http://www.opengis.net/def/crs/EPSG/0/4326"},
        Case{"http://opengis.net/def/crs/EPSG/0/4326", "http://www.opengis.net/def/crs/EPSG/0/4326"},
        Case{"http://www.opengis.net/def/crs/EPSG/4326", "http://www.opengis.net/def/crs/EPSG/0/4326"},
        Case{"http://www.opengis.net/def/crs/EPSG/0/4326/", "http://www.opengis.net/def/crs/EPSG/0/4326"},
        Case{"HTTP://WWW.OPENGIS.NET/DEF/CRS/EPSG/0/4326", "http://www.opengis.net/def/crs/EPSG/0/4326"},
        Case{"EPSG4326", "EPSG:4326"}, Case{"epsg 4326", "EPSG:4326"}, Case{"EPSG-4326", "EPSG:4326"},
        Case{"EPSG_4326", "EPSG:4326"}, Case{"EPSG/4326", "EPSG:4326"}, Case{"EPSG::4326", "EPSG:4326"},
        Case{"urn:ogc:def:crs:EPSG:4326", "urn:ogc:def:crs:EPSG::4326"},
        Case{"urn:ogc:def:crs,crs:EPSG:27700,crs:EPSG:5701", "urn:ogc:def:crs,crs:EPSG::27700,crs:EPSG::5701"},
        Case{"URN:OGC:DEF:CRS:EPSG::4326", "urn:ogc:def:crs:EPSG::4326"},
        Case{"urn:ogc:crs:EPSG::4326", "urn:ogc:def:crs:EPSG::4326"},
        Case{"urn:ogc:def:EPSG::4326", "urn:ogc:def:crs:EPSG::4326"},
        Case{"ogc:def:crs:EPSG::4326", "urn:ogc:def:crs:EPSG::4326"}, Case{"EPSG:27700*5701", "EPSG:27700*EPSG:5701"},
        Case{"EPSG:27700+5701", "EPSG:27700*EPSG:5701"}, Case{"EPSG:27700,EPSG:5701", "EPSG:27700*EPSG:5701"},
        Case{"urn:epsg:geographiccrs:4326", "urn:EPSG:geographicCRS:4326"}, Case{"EPSG.XML#4326", "epsg.xml#4326"}));

class NotSuggesting : public testing::TestWithParam<std::string> {};

TEST_P(NotSuggesting, WhereNoSmallChangeHelps) { EXPECT_FALSE(suggest(GetParam(), {}, isUnderstood)); }

INSTANTIATE_TEST_SUITE_P(Names, NotSuggesting,
                         testing::Values("", " ", "WGS84", "EPSG:abc", "urn:ogc:def:crs:OGC:1.3:CRS84", "CRS:84",
                                         "http://example.org/4326", std::string(5000, 'x')));

TEST(ASuggestion, KnowsTheNamesOfTheConfiguration) {
    const auto isConfigured = [](const std::string& name) { return name == "UTM32" || name == "CRS:84"; };
    EXPECT_EQ(suggest("utm32", {"UTM32"}, isConfigured)->name, "UTM32");
    EXPECT_EQ(suggest("urn:ogc:def:crs:OGC:1.3:CRS84", {"UTM32"}, isConfigured)->name, "CRS:84");
    EXPECT_EQ(suggest("crs:84", {"CRS:84"}, isConfigured)->name, "CRS:84");
}

TEST(ASuggestion, IsMadeOnlyWhenTheServerAcceptsIt) {
    EXPECT_FALSE(suggest("epsg:4326", {"EPSG:4326"}, [](const std::string&) { return false; }));
}

TEST(ASuggestion, SaysWhatToChange) {
    EXPECT_EQ(suggest("epsg:4326", {}, isUnderstood)->change, "with the prefix in capitals");
    EXPECT_EQ(suggest("https://www.opengis.net/def/crs/EPSG/0/4326", {}, isUnderstood)->change,
              "with http in place of https");
    EXPECT_EQ(suggest("urn:ogc:def:crs:EPSG:4326", {}, isUnderstood)->change, "with the missing colon before the code");
}

}  // namespace
}  // namespace crsctl
