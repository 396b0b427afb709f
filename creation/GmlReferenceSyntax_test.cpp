#include <cstddef>
#include <gtest/gtest.h>
#include <string>

#include "creation/CrsNameSyntax.h"
#include "tests/support/FakeCrs.h"

namespace CoordinateTransformation {
namespace {

using namespace std::string_literals;

constexpr std::size_t MEGABYTE = 1 << 20;

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
    for (const auto& row : accepted) EXPECT_EQ(parseGmlReference(row.name), row.code) << row.name.substr(0, 60);
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
    for (const std::string& name : refused) EXPECT_EQ(parseGmlReference(name), std::nullopt) << name.substr(0, 60);
}

TEST(GmlReferenceRoundTripTest, ReadsReferencesThatAreWritten) {
    const TestSupport::FakeTransformer transformer;
    const TestSupport::FakeCreator creator;
    const TestSupport::FakeCrs crs(creator, transformer, 4326, 0);
    const CRSindicationFormatInfo reference{1, "", "http://www.opengis.net/gml/srs/epsg.xml", "\1", "\1"};
    EXPECT_EQ(parseGmlReference(crs.getAliasOrAsFormat(reference, false)), "4326");
}

}  // namespace
}  // namespace CoordinateTransformation
