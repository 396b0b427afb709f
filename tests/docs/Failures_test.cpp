#include <cmath>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "tests/support/FailureTable.h"

// Provokes the failures of requests and of configurations.
namespace DocsTest {
namespace {

using CoordinateTransformation::AbstractCrs;
using CoordinateTransformation::Bounds;
using CoordinateTransformation::CrsConfig;
using CoordinateTransformation::PointTransformer;

const char OFFER[] = "<SRSList><SRS>4326</SRS><SRS>4978</SRS><SRS>25832</SRS></SRSList>";
const Bounds BEYOND_THE_POLE{91, 8, 95, 10};

void givenMappedCode(const std::string& code) {
    givenServer("<SRSList><SRS mapToEpsgCode=\"" + code + "\">WGS84</SRS></SRSList>");
}

class FailuresTest : public testing::Test {
protected:
    std::unique_ptr<AbstractCrs> unknown() const {
        return std::unique_ptr<AbstractCrs>(server.creator().createUnknown());
    }
    std::unique_ptr<AbstractCrs> fromText(const std::string& text) const {
        return std::unique_ptr<AbstractCrs>(server.creator().createFromSpecialTextFormat(text));
    }
    void transform(const std::string& target, double x, double y) const {
        server.request("EPSG:4326")->transformTo(server.request(target).get(), x, y);
    }
    void transformBox(const std::string& target, const Bounds& box) const {
        PointTransformer(*server.request("EPSG:4326").get(), *server.request(target).get()).transformBounds(box);
    }

    const Server server = givenServer(OFFER);
};

TEST_F(FailuresTest, OfRequestsAreThoseOfTheTable) {
    expectFailures(failuresOf("request"),
                   {
                       {"unknown name", [this] { server.request("epsg:4326"); }},
                       {"CRS not offered", [this] { server.request("EPSG:3395"); }},
                       {"undefined code", [this] { server.request("EPSG:99999"); }},
                       {"bad code in a URN or URL", [this] { server.request("urn:ogc:def:crs:EPSG::abc"); }},
                       {"second prefix missing", [this] { server.request("EPSG:4326*5783"); }},
                       {"name not in the cache", [this] { server.config->getFromNameCache("UTM32", true); }},
                       {"text form of a CRS that is not offered", [this] { fromText("EPSG:3395;EN;1"); }},
                       {"bad scale factor in a text form", [this] { fromText("EPSG:4326;EN;one"); }},
                       {"point outside the projection", [this] { transform("EPSG:25832", 99, 9); }},
                       {"coordinate that is not finite", [this] { transform("EPSG:25832", std::nan(""), 9); }},
                       {"geocentric point without a height", [this] { transform("EPSG:4978", 50, 9); }},
                       {"box outside the projection", [this] { transformBox("EPSG:25832", BEYOND_THE_POLE); }},
                       {"URL of an unknown CRS", [this] { unknown()->getAsURL("a", "b", "c"); }},
                       {"text form of an unknown CRS", [this] { unknown()->getAsText(); }},
                   });
}

TEST_F(FailuresTest, OfConfigurationsAreThoseOfTheTable) {
    expectFailures(
        failuresOf("start"),
        {
            {"unknown subsystem", [] { CrsConfig::createConfigFromId("other"); }},
            {"no creator", [] { CrsConfig().init(); }},
            {"fragment that breaks off", [] { givenServer("<SRSList>\n<SRS>4326</SRS>\n"); }},
            {"end tag that does not match", [] { givenServer("<SRSList>\n<SRS>4326</CRS>\n</SRSList>\n"); }},
            {"entry in an unknown spelling",
             [] { givenServer("<SRSList><SRS>urn:ogc:def:crs:EPSG::4326</SRS></SRSList>"); }},
            {"mapped code in an unknown spelling", [] { givenMappedCode("urn:ogc:def:crs:EPSG::4326"); }},
            {"empty mapped code", [] { givenMappedCode(""); }},
            {"CRS:84 in small letters", [] { givenServer("<SRSList><SRS>crs:84</SRS></SRSList>"); }},
            {"entry with an undefined code", [] { givenServer("<SRSList><SRS>99999</SRS></SRSList>"); }},
            {"compound entry without prefixes", [] { givenServer("<SRSList><SRS>27700*5701</SRS></SRSList>"); }},
            {"entry for code 0", [] { givenServer("<SRSList><SRS>0</SRS></SRSList>"); }},
        });
}

}  // namespace
}  // namespace DocsTest
