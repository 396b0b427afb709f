#include <cstddef>
#include <gtest/gtest.h>
#include <string>

#include "QuarvelSrv/SrsFormattingOptions.h"
#include "creation/CrsNameSyntax.h"
#include "crs/OgcDefinitionsHost.h"
#include "tests/support/FakeCrs.h"

namespace CoordinateTransformation {
namespace {

using namespace std::string_literals;

constexpr std::size_t MEGABYTE = 1 << 20;
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

TEST(OgcHeadRoundTripTest, ReadsTheHeadsThatAreWritten) {
    const TestSupport::FakeTransformer transformer;
    const TestSupport::FakeCreator creator;
    const TestSupport::FakeCrs crs(creator, transformer, 27700, 5701);
    const QuarvelSrv::SrsFormattingOptions asUrl{"", "", 2};
    const std::string urn = crs.getAliasOrAsOgcURN(nullptr, false);
    const std::string url = crs.getAliasOrAsOgcURN(&asUrl, false);
    EXPECT_EQ(urn.substr(skipOgcUrnHead(urn).value()), "def:crs,crs:EPSG::27700,crs:EPSG::5701");
    EXPECT_EQ(url.substr(skipOgcUrlHead(url).value()), "def/crs,crs/EPSG/0/27700,crs/EPSG/0/5701");
}

}  // namespace
}  // namespace CoordinateTransformation
