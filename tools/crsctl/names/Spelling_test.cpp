#include "tools/crsctl/names/Spelling.h"

#include <gtest/gtest.h>
#include <ostream>
#include <string>

namespace crsctl {
namespace {

struct Case {
    const char* name;
    Spelling spelling;
    unsigned int primary;
    unsigned int secondary;
    bool badCode;
};

void PrintTo(const Case& tried, std::ostream* stream) { *stream << '"' << tried.name << '"'; }

class Recognising : public testing::TestWithParam<Case> {};

TEST_P(Recognising, TellsTheSpellingAndItsCodes) {
    const Recognition recognition = recognise(GetParam().name);
    EXPECT_EQ(recognition.spelling, GetParam().spelling) << wordsFor(recognition.spelling);
    EXPECT_EQ(recognition.primary, GetParam().primary);
    EXPECT_EQ(recognition.secondary, GetParam().secondary);
    EXPECT_EQ(recognition.badCode, GetParam().badCode);
}

INSTANTIATE_TEST_SUITE_P(
    Accepted, Recognising,
    testing::Values(Case{"urn:ogc:def:crs:EPSG::4326", Spelling::Urn, 4326, 0, false},
                    Case{"urn:ogc:def:crs:epsg:6.12:4326", Spelling::Urn, 4326, 0, false},
                    Case{"urn:x-ogc:def:crs:EPSG:6.12:4326", Spelling::Urn, 4326, 0, false},
                    Case{"urn:ogc:def:crs,crs:EPSG::27700,crs:EPSG::5701", Spelling::Urn, 27700, 5701, false},
                    Case{"http://www.opengis.net/def/crs/EPSG/0/4326", Spelling::Url, 4326, 0, false},
                    Case{"http://www.opengis.net/def/crs,crs/EPSG/0/27700,crs/EPSG/0/5701", Spelling::Url, 27700, 5701,
                         false},
                    Case{"http://www.opengis.net/gml/srs/epsg.xml#4326", Spelling::GmlReference, 4326, 0, false},
                    Case{"epsg.xml#31467", Spelling::GmlReference, 31467, 0, false},
                    Case{"EPSG:4326", Spelling::EpsgCode, 4326, 0, false},
                    Case{"4326", Spelling::EpsgCode, 4326, 0, false},
                    Case{"27700*5701", Spelling::EpsgCode, 27700, 5701, false},
                    Case{"EPSG:27700*EPSG:5701", Spelling::EpsgCode, 27700, 5701, false},
                    Case{"urn:EPSG:geographicCRS:4326", Spelling::Wfs11Urn, 4326, 0, false}));

INSTANTIATE_TEST_SUITE_P(BadCode, Recognising,
                         testing::Values(Case{"urn:ogc:def:crs:EPSG::abc", Spelling::Urn, 0, 0, true},
                                         Case{"urn:ogc:def:crs:EPSG::4326:5783", Spelling::Urn, 0, 0, true},
                                         Case{"epsg.xml#x", Spelling::GmlReference, 0, 0, true},
                                         Case{"EPSG:", Spelling::EpsgCode, 0, 0, true},
                                         Case{"EPSG:4326*5783", Spelling::EpsgCode, 0, 0, true},
                                         Case{"4326x", Spelling::EpsgCode, 0, 0, true},
                                         Case{"12345678901234", Spelling::EpsgCode, 0, 0, true},
                                         Case{"urn:EPSG:geographicCRS:x", Spelling::Wfs11Urn, 0, 0, true}));

INSTANTIATE_TEST_SUITE_P(
    Refused, Recognising,
    testing::Values(Case{"", Spelling::None, 0, 0, false}, Case{"epsg:4326", Spelling::None, 0, 0, false},
                    Case{"https://www.opengis.net/def/crs/EPSG/0/4326", Spelling::None, 0, 0, false},
                    Case{"http://example.org/def/crs/EPSG/0/4326", Spelling::None, 0, 0, false},
                    Case{"urn:ogc:def:crs:EPSG:4326", Spelling::None, 0, 0, false},
                    Case{"urn:ogc:def:crs:OGC:1.3:CRS84", Spelling::None, 0, 0, false},
                    Case{"CRS:84", Spelling::None, 0, 0, false}));

}  // namespace
}  // namespace crsctl
