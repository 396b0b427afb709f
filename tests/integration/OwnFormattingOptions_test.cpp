// A server with its own definition of SrsFormattingOptions. It has its own program, because a program may have only
// one.

#include <string>

#include "CoordinateTransformation/CoordinateTransformation.h"

namespace QuarvelSrv {

struct SrsFormattingOptions {
    std::string version;
    std::string codePrefix;
    int style;
};

}  // namespace QuarvelSrv

#include <gtest/gtest.h>

#include "tests/support/IntegrationServer.h"

namespace IntegrationTest {
namespace {

TEST(OwnFormattingOptionsTest, AreReadByTheLibrary) {
    const Server server;
    const Crs crs = server.request("EPSG:4326");
    const struct {
        QuarvelSrv::SrsFormattingOptions options;
        const char* written;
    } CASES[] = {
        {{"", "", 0}, "urn:ogc:def:crs:EPSG::4326"},
        {{"6.12", "", 0}, "urn:ogc:def:crs:EPSG:6.12:4326"},
        {{"6.12", "", 2}, "http://www.opengis.net/def/crs/EPSG/6.12/4326"},
        {{"6.12", "A prefix that no short text holds:", 2}, "A prefix that no short text holds:4326"},
    };
    for (const auto& c : CASES) EXPECT_EQ(crs->getAliasOrAsOgcURN(&c.options, false), c.written);
}

}  // namespace
}  // namespace IntegrationTest
